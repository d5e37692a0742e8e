#pragma once

#include <cstdint>

#include "nodes/fields/Field.h"

namespace nodes {

class SFVec3f;

/// The box of a set of points, along the axes.
class BoundingBox {
  public:
    BoundingBox();
    void add(const float point[3]);
    /// The eight corners of CENTER plus and minus SIZE, a half size.
    void addBox(const float center[3], const float size[3]);
    /// 0 0 0 without a point.
    void center(float out[3]) const;
    /// The half size; -1 -1 -1 without a point.
    void size(float out[3]) const;
    std::int32_t count() const { return m_count; }

  private:
    float m_min[3];
    float m_max[3];
    std::int32_t m_count = 0;
};

/// A box that holds for one pass over a tree, in which the points do not change.
struct BoundsOfPass {
    std::uint64_t pass = 0;
    BoundingBox box;
};

/// The box that a file may give to a node with children.
class BoundsInterface {
  public:
    BoundsInterface() = default;
    BoundsInterface(const BoundsInterface&) = delete;
    BoundsInterface& operator=(const BoundsInterface&) = delete;
    virtual ~BoundsInterface() = default;

    virtual SFVec3f& bboxSizeField() = 0;
    virtual void setBBoxSize(float x, float y, float z);
    virtual void setBBoxSize(const float in[3]);
    virtual void getBBoxSize(float out[3]);
    virtual SFVec3f& bboxCenterField() = 0;
    virtual void setBBoxCenter(float x, float y, float z);
    virtual void setBBoxCenter(const float in[3]);
    virtual void getBBoxCenter(float out[3]);
    virtual void setBBox(const BoundingBox& box);
    /// Takes the box of all geometry below.
    virtual void computeBBox() = 0;
};

}  // namespace nodes
