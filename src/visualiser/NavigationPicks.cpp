// What the mouse points at.

#include <array>

#include "collision/CollisionManager.h"
#include "model/SceneObject.h"
#include "visualiser/Navigation.h"
#include "visualiser/Visualiser.h"

namespace {

constexpr float kReach = 1000.0F;
/// As large as it fits, in the time that flights usually take.
constexpr float kFlightSize = 1.0F;
constexpr float kUsualTime = -1.0F;

/// Null if there is none. Under the model lock.
CSceneObject* PickUnderMouse(const CVisView& view, std::array<float, 3>* point) {
    MAV_vector from;
    MAV_vector direction;
    mav_mouseRay(view.m_window, &from, &direction);
    const MAV_vector to = mav_vectorAdd(from, mav_vectorScalar(direction, kReach));
    return static_cast<CCollisionManager*>(g_collision)
        ->PickAlongRay(view.m_index, {from.x, from.y, from.z}, {to.x, to.y, to.z}, point);
}

}  // namespace

void CNavigation::PickAndFly(CVisView& view) {
    std::array<float, 3> point{};
    if (const CSceneObject* const object = PickUnderMouse(view, &point)) {
        mav_viewParamsAnimateToObject(view.m_window, object->MavObject(), kFlightSize, kUsualTime);
        m_visualiser.Redraw();
    }
}

void CNavigation::PickAndSelect(CVisView& view) {
    const KstSelectCallback callback = m_visualiser.SelectCallback();
    if (callback == nullptr) {
        return;
    }
    std::array<float, 3> point{};
    if (const CSceneObject* const object = PickUnderMouse(view, &point)) {
        callback(object->Id(), point.data());
    }
}
