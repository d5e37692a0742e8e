#pragma once

/// A placed shape: what takes part in scenes, belongs to classes of response tables, and is asked
/// about in pairs. Holds its placement in `float`, as it was given; all arithmetic is in `double`.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/solid/BoxFilter.h"
#include "platform/solid/Narrow.h"

namespace solid {

class RespTable;
class Scene;

/// The place of an object in one response table.
struct Membership {
    RespTable* table = nullptr;
    int responseClass = -1;
    std::uint32_t index = 0;  ///< in the list that the table keeps of the objects of the class
};

class Object {
  public:
    /// `client` is opaque; `shape` must outlive the object. Without a shape it takes no part.
    Object(void* client, const Shape* shape);
    /// Leaves its scene and all its tables.
    ~Object();
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    void SetMatrix(const float m[16]) noexcept;
    void SetPosition(const float position[3]) noexcept;
    void SetMargin(float margin) noexcept;

    void* Client() const { return m_client; }
    /// Order of creation in this process. Never used twice.
    std::uint64_t Number() const { return m_number; }
    /// False while the placement, the margin or a size of the shape is not finite, or the shape is
    /// empty: such an object touches nothing and has no distance to anything.
    bool TakesPart() const { return m_part == Part::kUnknown ? FindOut() : m_part == Part::kTakes; }
    /// Only of an object that takes part, after TakesPart() was asked.
    Placed GetPlaced() const {
        const auto column = [this](int c) {
            const float* const v = m_columns[c];
            return Vec3{static_cast<double>(v[0]), static_cast<double>(v[1]),
                        static_cast<double>(v[2])};
        };
        return {m_shape,
                {{{column(0), column(1), column(2)}}, column(3)},
                static_cast<double>(m_margin),
                m_traits};
    }
    Aabb WorldBox() const;
    /// Both must take part.
    static bool InContact(const Object& a, const Object& b);

    /// Has its memory fetched, for one of the calls below soon.
    void Prefetch() const {
#if defined(__GNUC__)
        __builtin_prefetch(this);
        __builtin_prefetch(reinterpret_cast<const char*>(this) + 64);
#endif
    }
    /// The class in `table`, -1 for none.
    int ClassIn(const RespTable& table) const {
        return m_first.table == &table ? m_first.responseClass : ClassInMore(table);
    }

  private:
    friend class Scene;
    friend class RespTable;

    /// What is known of the present placement.
    enum class Part : std::uint8_t { kUnknown, kTakes, kTakesNot };

    /// A box in a rigid placement, or a segment along an axis, which is a box of no width.
    bool IsFilterable() const;
    FilterBox GetFilterBox() const;
    /// Sets m_part and m_traits; answers TakesPart().
    bool FindOut() const;
    /// Whether what is known stays true after a change of position alone.
    bool StaysInRange() const noexcept;
    int ClassInMore(const RespTable& table) const;
    Membership* FindMembership(const RespTable& table) noexcept;
    /// A place for one more table; may throw std::bad_alloc, and then nothing has changed.
    Membership& AddMembership();
    void DropMembership(const RespTable& table) noexcept;
    void Changed() noexcept;

    void* m_client;
    const Shape* m_shape;
    std::uint64_t m_number;
    Scene* m_scene = nullptr;
    Membership m_first;  ///< objects with a class in more than one table are rare
    std::unique_ptr<std::vector<Membership>> m_more;
    float m_columns[4][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}};
    float m_margin = 0;
    std::uint32_t m_slot = 0;  ///< in m_scene
    mutable Part m_part = Part::kUnknown;
    mutable Traits m_traits;
};

}  // namespace solid
