#include "model/Motion.h"

#include "model/Placement.h"

void CMotion::AddKeyState(float time, const float* pos, const float* orient, const float* scale,
                          bool isQuaternion, const MAV_matrix& pose,
                          const MAV_matrix& scaleMatrix) {
    const CKeyState* const last = Keys().empty() ? nullptr : &Keys().back();
    CKeyState key;
    key.time = time;

    if (pos)
        key.pos = mav_vectorSet(pos[0], pos[1], pos[2]);
    else
        key.pos = last ? last->pos : mav_matrixXYZGet(pose);

    if (scale)
        key.scale = mav_vectorSet(scale[0], scale[1], scale[2]);
    else
        key.scale =
            last ? last->scale : mav_vectorSet(scaleMatrix[0], scaleMatrix[5], scaleMatrix[10]);

    if (!orient)
        key.quat = last ? last->quat : mav_quaternionMatrixConvert(pose);
    else if (isQuaternion)
        key.quat = {orient[3], orient[0], orient[1], orient[2]};
    else
        key.quat =
            mav_quaternionMatrixConvert(WithAngles(MAV_ID_MATRIX, orient[0], orient[1], orient[2]));

    Append(key);
}

void CMotion::Evaluate(float time, MAV_matrix& pose, MAV_matrix& scaleMatrix) const noexcept {
    const auto [a, b, s] = Select(time);
    const auto blend = [s = s](const MAV_vector& from, const MAV_vector& to) {
        return mav_vectorAdd(mav_vectorScalar(from, 1 - s), mav_vectorScalar(to, s));
    };
    const MAV_quaternion q = mav_quaternionInterpolate(a->quat, b->quat, s);
    pose = mav_matrixXYZSet(mav_matrixQuaternionConvert(q), blend(a->pos, b->pos));
    const MAV_vector scale = blend(a->scale, b->scale);
    scaleMatrix[0] = scale.x;
    scaleMatrix[5] = scale.y;
    scaleMatrix[10] = scale.z;
}
