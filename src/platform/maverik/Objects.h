#pragma once

/// Drawable objects and the lists of them that windows show (SMS).
///
/// No locks of their own: whoever changes an object, its record or a list excludes the collecting
/// of a frame (mav_SMSDisplay). Nothing here needs a window, and all of it may be called from any
/// thread.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/maverik/Records.h"

inline constexpr std::size_t kMostLists = 16;

/// Geometry of one object on the graphics side; made and used by the renderer alone.
struct MAV_drawing;

/// The pair of a class and a record, which stays the caller's and is read at each frame. Matrix,
/// surface, sizes and texture repeats may change at any time; after a change of vertices, counts or
/// normals mav_objectChanged must be called.
struct MAV_object {
    MAV_class shape;
    const void* record;
    /// Where the object stands in list i; -1 where it does not.
    std::array<std::int32_t, kMostLists> place;
    /// What the renderer keeps of the geometry; null until it was drawn, and after a change. The
    /// graphics memory behind it is given back on the render thread, whoever drops the object.
    std::shared_ptr<MAV_drawing> drawing;
};

/// Objects in no order. At most kMostLists lists exist at a time.
struct MAV_SMS {
    std::size_t index;
    std::vector<MAV_object*> objects;
};

MAV_object* mav_objectNew(MAV_class shape, const void* record);
/// Takes the object out of all lists and destroys it.
void mav_objectDelete(MAV_object* object) noexcept;
void mav_objectChanged(MAV_object* object) noexcept;

/// Null when there are kMostLists already.
MAV_SMS* mav_SMSObjListNew();
/// The objects in it stay.
void mav_SMSDelete(MAV_SMS* sms) noexcept;
/// Nothing if the object stands in the list already. Constant time.
void mav_SMSObjectAdd(MAV_SMS* sms, MAV_object* object);
/// Nothing if it does not. Constant time.
void mav_SMSObjectRmv(MAV_SMS* sms, MAV_object* object) noexcept;
inline bool mav_SMSHolds(const MAV_SMS* sms, const MAV_object* object) noexcept {
    return object->place[sms->index] >= 0;
}

/// A sphere around the object in the world: centre and radius. Radius below 0 for an object that
/// has no extent or whose placement is not finite.
struct MAV_bounds {
    MAV_vector centre;
    float radius;
};
MAV_bounds mav_objectBounds(const MAV_object* object) noexcept;
/// The box along the axes around the object in the world. False, and nothing written, where
/// mav_objectBounds has a radius below 0.
bool mav_objectBox(const MAV_object* object, MAV_vector& low, MAV_vector& high) noexcept;
/// The box around the boxes of all objects of the list. False, and nothing written, where none has
/// one.
bool mav_SMSBox(const MAV_SMS* sms, MAV_vector& low, MAV_vector& high) noexcept;
