#pragma once

#include "model/KeyTrack.h"
#include "platform/maverik/Maverik.h"

/// The camera of a view at one time.
struct CViewKeyState {
    float time;
    MAV_viewParams params;
};

/// The track of a view.
class CViewMotion : public CKeyTrack<CViewKeyState> {
  public:
    /// Appends a key. `eye`, `point` and `up` are three floats each; what is null is taken from the
    /// last key (instead of a point, the direction), and where there is none from `current`. Times
    /// that descend make a track whose poses are not defined. Strong guarantee.
    void AddKeyState(float time, const float* eye, const float* point, const float* up,
                     const MAV_viewParams& current);
    /// The camera at `time`. Needs at least one key.
    void Evaluate(float time, MAV_viewParams& params) const noexcept;
};
