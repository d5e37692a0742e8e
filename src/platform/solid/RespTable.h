#pragma once

/// Which classes of objects are tested against each other, and what is called for those in contact.

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <vector>

#include "platform/solid/Object.h"
#include "platform/solid/Solid.h"
#include "platform/solid/SortKeys.h"

namespace solid {

class RespTable {
  public:
    RespTable() = default;
    /// Its objects live on, without a class in it.
    ~RespTable();
    RespTable(const RespTable&) = delete;
    RespTable& operator=(const RespTable&) = delete;

    /// A class without objects. May throw std::bad_alloc, and then nothing has changed.
    int GenClass();
    /// No effect on a class that still has objects, or is free.
    void FreeClass(int responseClass) noexcept;
    /// A class that is not of this table, or is free, is ignored. May throw std::bad_alloc, and
    /// then nothing has changed.
    void SetClass(Object& object, int responseClass);
    /// The object has no class in this table any more.
    void Forget(Object& object) noexcept;

    /// A response for every pair of an object of one list of classes and an object of the other.
    /// Classes that are not of this table have no objects. The same lists in the same order with
    /// the same callback again: the new client takes the place of the old one. May throw
    /// std::bad_alloc, and then nothing has changed.
    void AddResponse(const int* classes1, std::size_t count1, const int* classes2,
                     std::size_t count2, DT_ResponseCallback callback, void* client);
    /// Takes away what was added with the same arguments, if anything was.
    void RemoveResponse(const int* classes1, std::size_t count1, const int* classes2,
                        std::size_t count2, DT_ResponseCallback callback) noexcept;

    /// Calls the responses for all pairs of objects of `scene` in contact, in ascending order of
    /// the numbers of the first object, the second object, and of the responses; each response once
    /// for a pair, however often its lists name it. Costs what the lists, the objects of their
    /// smaller side and the pairs found cost. Callbacks must change neither the scene nor the
    /// table. May throw std::bad_alloc. Returns the number of callbacks made, modulo 65536.
    std::uint16_t Test(Scene& scene);
    /// The same for one response alone that is not in the table, as AddResponse takes it.
    std::uint16_t TestBetween(Scene& scene, const int* classes1, std::size_t count1,
                              const int* classes2, std::size_t count2, DT_ResponseCallback callback,
                              void* client);

  private:
    struct Class {
        std::vector<Object*> objects;
        /// Equal to m_stamp when the class is on the asking side, or the asked side, of the
        /// response being worked on. The objects of the asking side query the tree.
        std::uint32_t asking = 0;
        std::uint32_t asked = 0;
        bool free = false;
    };
    struct Response {
        std::vector<int> classes1;
        std::vector<int> classes2;
        DT_ResponseCallback callback = nullptr;
        void* client = nullptr;
        std::uint64_t hash = 0;
        Response* next = nullptr;  ///< in the same bucket
        std::list<Response>::iterator self;
    };
    /// The classes of the two sides of a response.
    struct Sides {
        const int* classes1;
        std::size_t count1;
        const int* classes2;
        std::size_t count2;
    };
    /// A pair that may be in contact. Those of one response stand behind those of the responses
    /// before.
    struct Candidate {
        std::uint64_t number1, number2;  ///< of the objects, ascending
        const Object* object1;
        const Object* object2;
        const Response* response;
    };

    /// What a test works with, kept from one to the next for its memory.
    struct Workspace {
        std::vector<const Object*> found;  ///< by the last query of a tree
        std::vector<Candidate> candidates;
        std::vector<SortKey> order;
        std::vector<SortKey> spare;
    };

    bool IsClass(int c) const { return c >= 0 && static_cast<std::size_t>(c) < m_classes.size(); }
    Response** Find(const int* classes1, std::size_t count1, const int* classes2,
                    std::size_t count2, DT_ResponseCallback callback, std::uint64_t hash) noexcept;
    void GrowBuckets();
    /// Takes the object out of the list of its class.
    void Leave(const Membership& membership) noexcept;
    /// Null for none.
    const Class* ClassOf(const Object& object) const {
        const int index = object.ClassIn(*this);
        return index < 0 ? nullptr : &m_classes[static_cast<std::size_t>(index)];
    }
    /// Sets the stamps, m_asking and m_asked.
    void MarkSides(const int* asking, std::size_t askingCount, const int* asked,
                   std::size_t askedCount);
    /// Stamps the classes of one side and lists those with objects, each once.
    void MarkSide(const int* classes, std::size_t count, std::uint32_t Class::*mark,
                  std::vector<const Class*>& marked);
    std::size_t CountObjects(const int* classes, std::size_t count) const;
    void Collect(const Sides& sides, const Response& response, Scene& scene, Workspace& workspace);
    /// All pairs, whether near or not.
    void CollectEach(const Response& response, const Scene& scene, Workspace& workspace);
    /// What the trees tell of one object of the asking side. `isAsked`: of both sides.
    void CollectOf(const Object& object, bool isAsked, const Response& response, Scene& scene,
                   Workspace& workspace);
    void AddCandidate(const Object& object, bool isAsked, const Object& other,
                      const Class& classOfOther, const Response& response,
                      Workspace& workspace) const;
    /// Calls `collect(workspace)` for the candidates, then the responses.
    template <class CollectAll>
    std::uint16_t Run(CollectAll&& collect);
    /// Returns the number of calls.
    static std::uint16_t Report(Workspace& workspace);

    std::vector<Class> m_classes;
    std::vector<int> m_freeClasses;   ///< has room for all classes
    std::list<Response> m_responses;  ///< in the order of adding
    std::list<Response> m_spare;      ///< taken away, kept for their memory
    std::vector<Response*> m_buckets;
    std::uint32_t m_stamp = 0;
    std::vector<const Class*> m_asking;  ///< classes with objects, each once
    std::vector<const Class*> m_asked;   ///< the same
    std::unique_ptr<Workspace> m_workspace;
};

}  // namespace solid
