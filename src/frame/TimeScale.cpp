#include "frame/TimeScale.h"

#include <algorithm>
#include <limits>

#include "model/Group.h"
#include "model/Registries.h"
#include "model/SceneObject.h"
#include "model/neighbours.h"

void ExtendTimeScale(float time) noexcept {
    if (time > g_timeScaleMax) {
        g_timeScaleMax = time;
        if (g_controlPanel != nullptr) {
            g_controlPanel->SetTimeRange(time);
        }
    }
}

void RecomputeTimeScale() noexcept {
    constexpr float kNone = -std::numeric_limits<float>::infinity();
    float largest = kNone;
    for (const CGroup* group : g_animatedGroups) {
        largest = std::max(largest, group->Motion()->LastTime());
    }
    for (const CSceneObject* object : g_animatedObjects) {
        largest = std::max(largest, object->Motion()->LastTime());
    }
    g_timeScaleMax = largest == kNone ? 0.0F : largest;
}
