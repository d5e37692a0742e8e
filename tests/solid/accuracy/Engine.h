#pragma once

/// The engine under test, asked through its interface about two placed shapes.

#include "Spec.h"
#include "platform/solid/Solid.h"

namespace oracle {

class EngineObject {
  public:
    explicit EngineObject(const Spec& spec);
    ~EngineObject();
    EngineObject(const EngineObject&) = delete;
    EngineObject& operator=(const EngineObject&) = delete;

    DT_ObjectHandle Handle() const { return m_object; }
    void Place(const Matrix& matrix) { DT_SetMatrixf(m_object, matrix.data()); }

  private:
    DT_ShapeHandle m_shape;
    DT_ObjectHandle m_object;
};

struct Answers {
    bool contact = false;  ///< by a test of a scene that holds only these two
    bool inContact = false;
    float distance = 0;
    Point point1{}, point2{};
    bool hasDepth = false;
    Point depth1{}, depth2{};

    /// 0 without contact.
    double Depth() const;
    bool operator==(const Answers&) const = default;
};

Answers Ask(const EngineObject& a, const EngineObject& b);
Answers Ask(const Spec& a, const Spec& b);
/// The same answers, told of the two in the other order.
Answers Swapped(const Answers& answers);

}  // namespace oracle
