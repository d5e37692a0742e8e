#include "model/ViewMotion.h"

void CViewMotion::AddKeyState(float time, const float* eye, const float* point, const float* up,
                              const MAV_viewParams& current) {
    const MAV_viewParams& former = Keys().empty() ? current : Keys().back().params;
    MAV_viewParams params;
    params.eye = eye ? mav_vectorSet(eye[0], eye[1], eye[2]) : former.eye;
    const MAV_vector formerView = mav_vectorDirection(former.view, MAV_vector{0, 0, -1});
    params.view = point
                      ? mav_vectorDirection(
                            mav_vectorSub(mav_vectorSet(point[0], point[1], point[2]), params.eye),
                            formerView)
                      : formerView;
    params.up = up ? mav_vectorSet(up[0], up[1], up[2]) : former.up;
    params.right = mav_vectorDirection(mav_vectorCrossProduct(params.view, params.up),
                                       mav_vectorAcross(params.view));
    params.up = mav_vectorNormalize(mav_vectorCrossProduct(params.right, params.view));
    params.fixed_up = params.up;
    params.mod = nullptr;
    Append({time, params});
}

void CViewMotion::Evaluate(float time, MAV_viewParams& params) const noexcept {
    const auto [a, b, s] = Select(time);
    params = mav_viewParamsInterpolate(a->params, b->params, s);
}
