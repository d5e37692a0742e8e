#include "platform/solid/RespTable.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "platform/solid/Growth.h"
#include "platform/solid/Scene.h"

namespace solid {

namespace {

/// An Update may leave this many objects out of place in the tree, and twice as many more as there
/// are asking objects: looking through them then costs less than the test itself.
constexpr std::size_t kToleratedPending = 8;
constexpr std::size_t kSpareResponses = 4;

/// D. Knuth's multiplicative hashing, over whole lists.
std::uint64_t Mix(std::uint64_t hash, std::uint64_t value) {
    hash = (hash ^ value) * 0x9e3779b97f4a7c15u;
    return hash ^ (hash >> 32);
}

std::uint64_t HashList(std::uint64_t hash, const int* list, std::size_t count) {
    hash = Mix(hash, count);
    for (std::size_t i = 0; i < count; ++i) {
        hash = Mix(hash, static_cast<std::uint32_t>(list[i]));
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
    if (!IsClass(responseClass) || object.ClassIn(*this) == responseClass) {
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
    response.number = m_nextNumber++;
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

std::size_t RespTable::CountObjects(const std::vector<int>& classes) const {
    std::size_t count = 0;
    for (const int c : classes) {
        count += IsClass(c) ? m_classes[static_cast<std::size_t>(c)].objects.size() : 0;
    }
    return count;
}

void RespTable::MarkSides(const std::vector<int>& asking, const std::vector<int>& asked) {
    if (++m_stamp == 0) {
        for (Class& c : m_classes) {
            c.asking = c.asked = 0;
        }
        m_stamp = 1;
    }
    m_asking.clear();
    for (const int index : asking) {
        if (IsClass(index)) {
            Class& c = m_classes[static_cast<std::size_t>(index)];
            if (c.asking != m_stamp && !c.objects.empty()) {
                m_asking.push_back(&c);
            }
            c.asking = m_stamp;
        }
    }
    for (const int index : asked) {
        if (IsClass(index)) {
            m_classes[static_cast<std::size_t>(index)].asked = m_stamp;
        }
    }
}

void RespTable::Collect(const Response& response, Scene& scene,
                        std::vector<Candidate>& candidates) {
    const std::size_t count1 = CountObjects(response.classes1);
    const std::size_t count2 = CountObjects(response.classes2);
    if (count1 == 0 || count2 == 0) {
        return;
    }
    if (count1 <= count2) {
        MarkSides(response.classes1, response.classes2);
    } else {
        MarkSides(response.classes2, response.classes1);
    }
    const auto classOf = [this](const Object& object) -> const Class* {
        const int index = object.ClassIn(*this);
        return index < 0 ? nullptr : &m_classes[static_cast<std::size_t>(index)];
    };
    scene.Update(
        [&](const Object& object) {
            const Class* const c = classOf(object);
            return c != nullptr && c->asked == m_stamp;
        },
        2 * std::min(count1, count2) + kToleratedPending);

    for (const Class* own : m_asking) {
        const bool isAsked = own->asked == m_stamp;
        for (const Object* const object : own->objects) {
            const std::uint32_t slot = Scene::SlotOf(*object);
            const FloatBox* const box = scene.Has(*object) ? scene.Box(slot) : nullptr;
            if (box == nullptr) {
                continue;
            }
            const std::uint64_t number = object->Number();
            scene.Query(*box, [&](std::uint32_t otherSlot) {
                const Object& other = *scene.At(otherSlot);
                const Class* const c = classOf(other);
                if (c == nullptr || c->asked != m_stamp || otherSlot == slot) {
                    return;
                }
                const std::uint64_t otherNumber = other.Number();
                if (number < otherNumber) {
                    candidates.push_back({number, otherNumber, slot, otherSlot, &response});
                } else if (!isAsked || c->asking != m_stamp) {
                    // Else the other one asks too, and finds the pair.
                    candidates.push_back({otherNumber, number, otherSlot, slot, &response});
                }
            });
        }
    }
}

std::uint32_t RespTable::Report(const Scene& scene, const std::vector<Candidate>& candidates) {
    std::uint32_t calls = 0;
    const Candidate* last = nullptr;
    bool inContact = false;
    for (const Candidate& candidate : candidates) {
        const bool samePair = last != nullptr && last->number1 == candidate.number1 &&
                              last->number2 == candidate.number2;
        last = &candidate;
        const Object& object1 = *scene.At(candidate.slot1);
        const Object& object2 = *scene.At(candidate.slot2);
        if (!samePair) {
            inContact = Object::InContact(object1, object2);
        }
        if (inContact) {
            ++calls;
            const Response& response = *candidate.response;
            if (response.callback(response.client, object1.Client(), object2.Client(), nullptr) ==
                DT_DONE) {
                break;
            }
        }
    }
    return calls;
}

std::uint16_t RespTable::Test(Scene& scene) {
    // Taken out for the time of the test: a callback may ask this table about another scene.
    std::vector<Candidate> candidates = std::exchange(m_candidates, {});
    candidates.clear();
    for (const Response& response : m_responses) {
        Collect(response, scene, candidates);
    }
    std::sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
        return std::tie(a.number1, a.number2, a.response->number) <
               std::tie(b.number1, b.number2, b.response->number);
    });
    const std::uint32_t calls = Report(scene, candidates);
    m_candidates = std::move(candidates);
    return static_cast<std::uint16_t>(calls);
}

}  // namespace solid
