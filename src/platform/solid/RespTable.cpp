#include "platform/solid/RespTable.h"

#include <algorithm>
#include <utility>

#include "platform/solid/Growth.h"
#include "platform/solid/Scene.h"

namespace solid {

namespace {

/// An Update may leave this many objects out of place in the tree, and twice as many more as there
/// are asking objects: looking through them then costs less than the test itself.
constexpr std::size_t kToleratedPending = 8;
constexpr std::size_t kSpareResponses = 4;
/// So many pairs are asked about one by one: that costs less than boxes and trees do.
constexpr std::size_t kFewPairs = 8;

/// D. Knuth's multiplicative hashing.
std::uint64_t Mix(std::uint64_t hash, std::uint64_t value) {
    hash = (hash ^ value) * 0x9e3779b97f4a7c15u;
    return hash ^ (hash >> 32);
}

/// Of its length and ends: lists that are entered at the same time hardly differ between them
/// alone.
std::uint64_t HashList(std::uint64_t hash, const int* list, std::size_t count) {
    hash = Mix(hash, count);
    if (count > 0) {
        hash = Mix(hash, static_cast<std::uint32_t>(list[0]));
        hash = Mix(hash, static_cast<std::uint32_t>(list[count - 1]));
    }
    return hash;
}

std::uint64_t HashOf(const int* classes1, std::size_t count1, const int* classes2,
                     std::size_t count2, DT_ResponseCallback callback) {
    return HashList(HashList(reinterpret_cast<std::uintptr_t>(callback), classes1, count1),
                    classes2, count2);
}

bool SameList(const std::vector<int>& a, const int* b, std::size_t count) {
    return a.size() == count && std::equal(a.begin(), a.end(), b);
}

}  // namespace

RespTable::~RespTable() {
    for (Class& c : m_classes) {
        for (Object* object : c.objects) {
            object->DropMembership(*this);
        }
    }
}

int RespTable::GenClass() {
    if (!m_freeClasses.empty()) {
        const int responseClass = m_freeClasses.back();
        m_freeClasses.pop_back();
        m_classes[static_cast<std::size_t>(responseClass)].free = false;
        return responseClass;
    }
    GrowCapacity(m_freeClasses, m_classes.size() + 1);
    m_classes.emplace_back();
    return static_cast<int>(m_classes.size() - 1);
}

void RespTable::FreeClass(int responseClass) noexcept {
    if (!IsClass(responseClass)) {
        return;
    }
    Class& c = m_classes[static_cast<std::size_t>(responseClass)];
    if (c.free || !c.objects.empty()) {
        return;
    }
    std::vector<Object*>().swap(c.objects);
    c.free = true;
    m_freeClasses.push_back(responseClass);
}

void RespTable::SetClass(Object& object, int responseClass) {
    if (!IsClass(responseClass) || m_classes[static_cast<std::size_t>(responseClass)].free ||
        object.ClassIn(*this) == responseClass) {
        return;
    }
    std::vector<Object*>& objects = m_classes[static_cast<std::size_t>(responseClass)].objects;
    GrowCapacity(objects, objects.size() + 1);
    Membership* membership = object.FindMembership(*this);
    if (membership != nullptr) {
        Leave(*membership);
    } else {
        membership = &object.AddMembership();
    }
    *membership = {this, responseClass, static_cast<std::uint32_t>(objects.size())};
    objects.push_back(&object);
}

void RespTable::Leave(const Membership& membership) noexcept {
    std::vector<Object*>& objects =
        m_classes[static_cast<std::size_t>(membership.responseClass)].objects;
    Object* const last = objects.back();
    objects[membership.index] = last;
    last->FindMembership(*this)->index = membership.index;
    objects.pop_back();
    if (objects.empty()) {
        std::vector<Object*>().swap(objects);
    }
}

void RespTable::Forget(Object& object) noexcept {
    if (const Membership* const membership = object.FindMembership(*this)) {
        Leave(*membership);
        object.DropMembership(*this);
    }
}

RespTable::Response** RespTable::Find(const int* classes1, std::size_t count1, const int* classes2,
                                      std::size_t count2, DT_ResponseCallback callback,
                                      std::uint64_t hash) noexcept {
    Response** link = &m_buckets[hash & (m_buckets.size() - 1)];
    while (*link != nullptr && !((*link)->hash == hash && (*link)->callback == callback &&
                                 SameList((*link)->classes1, classes1, count1) &&
                                 SameList((*link)->classes2, classes2, count2))) {
        link = &(*link)->next;
    }
    return link;
}

void RespTable::GrowBuckets() {
    if (m_responses.size() < m_buckets.size()) {
        return;
    }
    m_buckets.assign(std::max<std::size_t>(4, 2 * m_buckets.size()), nullptr);
    for (Response& response : m_responses) {
        Response*& bucket = m_buckets[response.hash & (m_buckets.size() - 1)];
        response.next = std::exchange(bucket, &response);
    }
}

void RespTable::AddResponse(const int* classes1, std::size_t count1, const int* classes2,
                            std::size_t count2, DT_ResponseCallback callback, void* client) {
    if (callback == nullptr) {
        return;
    }
    GrowBuckets();
    const std::uint64_t hash = HashOf(classes1, count1, classes2, count2, callback);
    Response** const link = Find(classes1, count1, classes2, count2, callback, hash);
    if (*link != nullptr) {
        (*link)->client = client;
        return;
    }
    if (m_spare.empty()) {
        m_spare.emplace_back();
    }
    Response& response = m_spare.front();
    response.classes1.assign(classes1, classes1 + count1);
    response.classes2.assign(classes2, classes2 + count2);
    response.callback = callback;
    response.client = client;
    response.hash = hash;
    response.next = nullptr;
    response.self = m_spare.begin();
    *link = &response;
    m_responses.splice(m_responses.end(), m_spare, m_spare.begin());
}

void RespTable::RemoveResponse(const int* classes1, std::size_t count1, const int* classes2,
                               std::size_t count2, DT_ResponseCallback callback) noexcept {
    if (m_responses.empty()) {
        return;
    }
    const std::uint64_t hash = HashOf(classes1, count1, classes2, count2, callback);
    Response** const link = Find(classes1, count1, classes2, count2, callback, hash);
    Response* const response = *link;
    if (response == nullptr) {
        return;
    }
    *link = response->next;
    m_spare.splice(m_spare.begin(), m_responses, response->self);
    if (m_spare.size() > kSpareResponses) {
        m_spare.pop_back();
    }
}

std::size_t RespTable::CountObjects(const int* classes, std::size_t count) const {
    std::size_t objects = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const int c = classes[i];
        objects += IsClass(c) ? m_classes[static_cast<std::size_t>(c)].objects.size() : 0;
    }
    return objects;
}

void RespTable::MarkSides(const int* asking, std::size_t askingCount, const int* asked,
                          std::size_t askedCount) {
    if (++m_stamp == 0) {
        for (Class& c : m_classes) {
            c.asking = c.asked = 0;
        }
        m_stamp = 1;
    }
    MarkSide(asking, askingCount, &Class::asking, m_asking);
    MarkSide(asked, askedCount, &Class::asked, m_asked);
}

void RespTable::MarkSide(const int* classes, std::size_t count, std::uint32_t Class::*mark,
                         std::vector<const Class*>& marked) {
    marked.clear();
    for (std::size_t i = 0; i < count; ++i) {
        if (IsClass(classes[i])) {
            Class& c = m_classes[static_cast<std::size_t>(classes[i])];
            if (c.*mark != m_stamp && !c.objects.empty()) {
                marked.push_back(&c);
            }
            c.*mark = m_stamp;
        }
    }
}

void RespTable::Collect(const Sides& sides, const Response& response, Scene& scene,
                        Workspace& workspace) {
    const std::size_t objects1 = CountObjects(sides.classes1, sides.count1);
    const std::size_t objects2 = CountObjects(sides.classes2, sides.count2);
    if (objects1 == 0 || objects2 == 0) {
        return;
    }
    if (objects1 <= objects2) {
        MarkSides(sides.classes1, sides.count1, sides.classes2, sides.count2);
    } else {
        MarkSides(sides.classes2, sides.count2, sides.classes1, sides.count1);
    }
    if (std::max(objects1, objects2) <= kFewPairs / std::min(objects1, objects2)) {
        CollectEach(response, scene, workspace);
        return;
    }
    scene.Update(
        [&](const Object& object) {
            const Class* const c = ClassOf(object);
            return c != nullptr && c->asked == m_stamp;
        },
        2 * std::min(objects1, objects2) + kToleratedPending);
    for (const Class* own : m_asking) {
        for (const Object* const object : own->objects) {
            if (scene.Has(*object)) {
                CollectOf(*object, own->asked == m_stamp, response, scene, workspace);
            }
        }
    }
}

void RespTable::CollectEach(const Response& response, const Scene& scene, Workspace& workspace) {
    const auto takesPart = [&scene](const Object& object) {
        return scene.Has(object) && object.TakesPart();
    };
    for (const Class* own : m_asking) {
        for (const Object* const object : own->objects) {
            if (!takesPart(*object)) {
                continue;
            }
            for (const Class* others : m_asked) {
                for (const Object* const other : others->objects) {
                    if (takesPart(*other)) {
                        AddCandidate(*object, own->asked == m_stamp, *other, *others, response,
                                     workspace);
                    }
                }
            }
        }
    }
}

void RespTable::AddCandidate(const Object& object, bool isAsked, const Object& other,
                             const Class& classOfOther, const Response& response,
                             Workspace& workspace) const {
    if (&other == &object) {
        return;
    }
    const std::uint64_t number = object.Number(), otherNumber = other.Number();
    if (number < otherNumber) {
        workspace.candidates.push_back({number, otherNumber, &object, &other, &response});
    } else if (!isAsked || classOfOther.asking != m_stamp) {
        // Else the other one asks too, and finds the pair.
        workspace.candidates.push_back({otherNumber, number, &other, &object, &response});
    }
}

void RespTable::CollectOf(const Object& object, bool isAsked, const Response& response,
                          Scene& scene, Workspace& workspace) {
    QueryVolume volume;
    if (!scene.VolumeOf(object, volume)) {
        return;
    }
    // In two rounds, so that the memory of many objects is waited for at the same time.
    workspace.found.clear();
    scene.Query(volume, [&workspace](const Object& found) {
        found.Prefetch();
        workspace.found.push_back(&found);
    });
    for (const Object* const other : workspace.found) {
        const Class* const c = ClassOf(*other);
        if (c != nullptr && c->asked == m_stamp) {
            AddCandidate(object, isAsked, *other, *c, response, workspace);
        }
    }
}

std::uint16_t RespTable::Report(Workspace& workspace) {
    workspace.order.clear();
    for (const Candidate& candidate : workspace.candidates) {
        workspace.order.push_back({candidate.number1, candidate.number2, workspace.order.size()});
    }
    SortByKey(workspace.order, workspace.spare);
    std::uint32_t calls = 0;
    const Candidate* last = nullptr;
    bool inContact = false;
    for (const SortKey& key : workspace.order) {
        const Candidate& candidate = workspace.candidates[key.index];
        const bool samePair = last != nullptr && last->object1 == candidate.object1 &&
                              last->object2 == candidate.object2;
        last = &candidate;
        if (!samePair) {
            inContact = Object::InContact(*candidate.object1, *candidate.object2);
        }
        if (inContact) {
            ++calls;
            const Response& response = *candidate.response;
            if (response.callback(response.client, candidate.object1->Client(),
                                  candidate.object2->Client(), nullptr) == DT_DONE) {
                break;
            }
        }
    }
    return static_cast<std::uint16_t>(calls);
}

template <class CollectAll>
std::uint16_t RespTable::Run(CollectAll&& collect) {
    // Taken out for the time of the test: a callback may ask this table about another scene.
    std::unique_ptr<Workspace> workspace = std::move(m_workspace);
    if (workspace == nullptr) {
        workspace = std::make_unique<Workspace>();
    }
    workspace->candidates.clear();
    collect(*workspace);
    const std::uint16_t calls = Report(*workspace);
    m_workspace = std::move(workspace);
    return calls;
}

std::uint16_t RespTable::Test(Scene& scene) {
    return Run([&](Workspace& workspace) {
        for (const Response& response : m_responses) {
            const Sides sides{response.classes1.data(), response.classes1.size(),
                              response.classes2.data(), response.classes2.size()};
            Collect(sides, response, scene, workspace);
        }
    });
}

std::uint16_t RespTable::TestBetween(Scene& scene, const int* classes1, std::size_t count1,
                                     const int* classes2, std::size_t count2,
                                     DT_ResponseCallback callback, void* client) {
    Response response;
    response.callback = callback;
    response.client = client;
    return Run([&](Workspace& workspace) {
        Collect({classes1, count1, classes2, count2}, response, scene, workspace);
    });
}

}  // namespace solid
