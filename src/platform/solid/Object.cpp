#include "platform/solid/Object.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>

#include "platform/solid/BoxFilter.h"
#include "platform/solid/Core.h"
#include "platform/solid/RespTable.h"
#include "platform/solid/Scene.h"
#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

std::atomic<std::uint64_t> g_nextNumber{0};

}  // namespace

Object::Object(void* client, const Shape* shape)
    : m_client(client),
      m_shape(shape),
      m_number(g_nextNumber.fetch_add(1, std::memory_order_relaxed)) {}

Object::~Object() {
    if (m_scene != nullptr) {
        m_scene->Remove(*this);
    }
    while (m_more != nullptr && !m_more->empty()) {
        m_more->back().table->Forget(*this);
    }
    if (m_first.table != nullptr) {
        m_first.table->Forget(*this);
    }
}

void Object::SetMatrix(const float m[16]) noexcept {
    float columns[4][3];
    for (int c = 0; c < 4; ++c) {
        std::memcpy(columns[c], m + 4 * c, sizeof columns[c]);
    }
    if (std::memcmp(columns, m_columns, 3 * sizeof columns[0]) == 0) {
        if (std::memcmp(columns[3], m_columns[3], sizeof columns[3]) != 0) {
            SetPosition(columns[3]);
        }
        return;
    }
    std::memcpy(m_columns, columns, sizeof columns);
    Changed();
}

void Object::SetPosition(const float position[3]) noexcept {
    std::memcpy(m_columns[3], position, sizeof m_columns[3]);
    if (!StaysInRange()) {
        m_part = Part::kUnknown;
    }
    if (m_scene != nullptr) {
        m_scene->Moved(m_slot);
    }
}

bool Object::StaysInRange() const noexcept {
    if (m_part != Part::kTakes || m_traits.large) {
        return false;
    }
    const float* const p = m_columns[3];
    const Vec3 origin{static_cast<double>(p[0]), static_cast<double>(p[1]),
                      static_cast<double>(p[2])};
    const Vec3 centre = m_shape->Centre() == Vec3{} ? origin : WorldCentre(GetPlaced());
    return IsFinite(centre) && MaxNorm(centre) < kComfortableSize;
}

void Object::SetMargin(float margin) noexcept {
    m_margin = margin < 0 ? 0 : margin;
    Changed();
}

void Object::Changed() noexcept {
    m_part = Part::kUnknown;
    if (m_scene != nullptr) {
        m_scene->Moved(m_slot);
    }
}

bool Object::FindOut() const {
    // A shape that is still to be built may become something at any time.
    if (m_shape == nullptr || m_shape->IsEmpty()) {
        return false;
    }
    const Placed placed = GetPlaced();
    const bool finite =
        IsFinite(placed.placement) && std::isfinite(placed.margin) && IsFinite(m_shape->Half());
    m_part = finite ? Part::kTakes : Part::kTakesNot;
    if (finite) {
        m_traits = FindTraits(placed);
    }
    return finite;
}

Aabb Object::WorldBox() const {
    const Placed placed = GetPlaced();
    Aabb box = m_shape->WorldBox(placed.placement, placed.margin);
    // What touches within rounding must not be lost between the boxes.
    box.Grow(kBoxSlack * MaxNorm(box.HalfSize()));
    return box;
}

bool Object::InContact(const Object& a, const Object& b) {
    if (a.IsFilterable() && b.IsFilterable()) {
        const double margins = static_cast<double>(a.m_margin) + static_cast<double>(b.m_margin);
        const BoxAnswer answer = FilterBoxes(a.GetFilterBox(), b.GetFilterBox(), margins);
        if (answer != BoxAnswer::kUnknown) {
            return answer == BoxAnswer::kTouch;
        }
    }
    return solid::InContact(a.GetPlaced(), b.GetPlaced());
}

bool Object::IsFilterable() const {
    const ShapeKind kind = m_shape->Kind();
    const bool box = kind == ShapeKind::kBox || (kind == ShapeKind::kSegment &&
                                                 m_shape->Half().x == 0 && m_shape->Half().z == 0);
    return box && m_traits.rigid && !m_traits.large;
}

FilterBox Object::GetFilterBox() const {
    const Placed placed = GetPlaced();
    const bool box = m_shape->Kind() == ShapeKind::kBox;
    return {m_columns, m_shape->Half(), box ? placed.placement.origin : WorldCentre(placed)};
}

int Object::ClassInMore(const RespTable& table) const {
    if (m_more != nullptr) {
        for (const Membership& membership : *m_more) {
            if (membership.table == &table) {
                return membership.responseClass;
            }
        }
    }
    return -1;
}

Membership* Object::FindMembership(const RespTable& table) noexcept {
    if (m_first.table == &table) {
        return &m_first;
    }
    if (m_more != nullptr) {
        for (Membership& membership : *m_more) {
            if (membership.table == &table) {
                return &membership;
            }
        }
    }
    return nullptr;
}

Membership& Object::AddMembership() {
    if (m_first.table == nullptr) {
        return m_first;
    }
    if (m_more == nullptr) {
        m_more = std::make_unique<std::vector<Membership>>();
    }
    return m_more->emplace_back();
}

void Object::DropMembership(const RespTable& table) noexcept {
    if (m_first.table == &table) {
        m_first = {};
    } else if (m_more != nullptr) {
        const auto at = std::find_if(m_more->begin(), m_more->end(),
                                     [&](const Membership& m) { return m.table == &table; });
        if (at != m_more->end()) {
            *at = m_more->back();
            m_more->pop_back();
        }
        if (m_more->empty()) {
            m_more.reset();
        }
    }
}

}  // namespace solid
