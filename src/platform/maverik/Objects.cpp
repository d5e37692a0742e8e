#include "platform/maverik/Objects.h"

#include <algorithm>

#include "platform/maverik/Drawing.h"

namespace {

/// The lists that exist, at their indices.
std::array<MAV_SMS*, kMostLists> g_lists = {};

}  // namespace

MAV_object* mav_objectNew(MAV_class shape, const void* record) {
    auto object = std::make_unique<MAV_object>();
    object->shape = shape;
    object->record = record;
    object->place.fill(-1);
    return object.release();
}

void mav_objectDelete(MAV_object* object) noexcept {
    const std::unique_ptr<MAV_object> owner(object);
    if (object == nullptr) {
        return;
    }
    for (MAV_SMS* const list : g_lists) {
        if (list != nullptr) {
            mav_SMSObjectRmv(list, object);
        }
    }
}

void mav_objectChanged(MAV_object* object) noexcept {
    object->drawing.reset();
}

MAV_SMS* mav_SMSObjListNew() {
    const auto free = std::find(g_lists.begin(), g_lists.end(), nullptr);
    if (free == g_lists.end()) {
        return nullptr;
    }
    auto list = std::make_unique<MAV_SMS>();
    list->index = static_cast<std::size_t>(free - g_lists.begin());
    *free = list.release();
    return *free;
}

void mav_SMSDelete(MAV_SMS* sms) noexcept {
    const std::unique_ptr<MAV_SMS> owner(sms);
    if (sms == nullptr) {
        return;
    }
    for (MAV_object* const object : sms->objects) {
        object->place[sms->index] = -1;
    }
    g_lists[sms->index] = nullptr;
}

void mav_SMSObjectAdd(MAV_SMS* sms, MAV_object* object) {
    if (mav_SMSHolds(sms, object)) {
        return;
    }
    sms->objects.push_back(object);
    object->place[sms->index] = static_cast<std::int32_t>(sms->objects.size() - 1);
}

void mav_SMSObjectRmv(MAV_SMS* sms, MAV_object* object) noexcept {
    if (!mav_SMSHolds(sms, object)) {
        return;
    }
    // The last one takes the place that becomes free.
    const std::int32_t place = object->place[sms->index];
    MAV_object* const last = sms->objects.back();
    sms->objects[static_cast<std::size_t>(place)] = last;
    last->place[sms->index] = place;
    sms->objects.pop_back();
    object->place[sms->index] = -1;
}
