#pragma once

#include <string>

#include "model/Registries.h"

/// The tests of arguments that many methods of the application object share. Those on floats let
/// values pass that are not numbers.

class CGroup;
class CSceneObject;

/// Null if there is none of this id.
inline CGroup* FindGroup(int id) noexcept {
    return g_groups.Find(id);
}

/// The same for a group that is to be changed, which the root group is not.
inline CGroup* FindGroupBelowRoot(int id) noexcept {
    return id == 0 ? nullptr : FindGroup(id);
}

inline CSceneObject* FindObject(int id) noexcept {
    return g_objects.Find(id);
}

inline bool IsView(int view) noexcept {
    return view >= 0 && view < 4;
}

/// The main view is always open.
inline bool IsSecondaryView(int view) noexcept {
    return view > 0 && view < 4;
}

inline bool IsSurface(int index) noexcept {
    return index == 0 || index == 1;
}

inline bool IsTexture(int index) noexcept {
    return index >= 0 && index < 100;
}

/// A component of a colour, or an opacity.
template <class... Floats>
bool IsColor(Floats... components) noexcept {
    return !((components < 0.0F || components > 1.0F) || ...);
}

/// Radians; the upper bound is the float next to a full turn.
template <class... Floats>
bool IsOrientation(Floats... angles) noexcept {
    return !((angles < 0.0F || angles > 6.2831855F) || ...);
}

/// Sizes, scale factors and margins.
template <class... Floats>
bool IsSize(Floats... sizes) noexcept {
    return !((sizes < 0.0F) || ...);
}

inline bool IsTiling(float xTile, float yTile) noexcept {
    return !(xTile <= 0.0F || yTile <= 0.0F);
}

/// Key states: angles, where an orientation is given as such.
inline bool IsKeyOrientation(const float* orient, bool isQuaternion) noexcept {
    return orient == nullptr || isQuaternion || IsOrientation(orient[0], orient[1], orient[2]);
}
