#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "nodes/SceneGraph.h"

namespace nodes {

template <class Class, class Parent>
Class& addTo(Parent& parent, const char* name = nullptr) {
    auto made = std::make_unique<Class>();
    made->setName(name);
    Class& node = *made;
    if constexpr (std::is_base_of_v<NodeTree, Parent>) {
        parent.addNode(std::move(made), false);
    } else {
        parent.addChild(std::move(made), false);
    }
    return node;
}

/// A node with fields "in" and "out", whose reaction to events a test gives.
class Probe final : public Node {
  public:
    using Reaction = std::function<void(Probe&)>;

    explicit Probe(Reaction reaction = {}) : Node(kRoot), m_reaction(std::move(reaction)) {
        in = &static_cast<SFInt32&>(addExposedField("in", std::make_unique<SFInt32>()));
        out = &static_cast<SFInt32&>(addExposedField("out", std::make_unique<SFInt32>()));
    }

    void eventReceived() override {
        ++events;
        if (m_reaction) {
            m_reaction(*this);
        }
    }

    SFInt32* in;
    SFInt32* out;
    int events = 0;

  private:
    Reaction m_reaction;
};

inline Probe& addProbe(NodeTree& tree, Probe::Reaction reaction = {}) {
    return static_cast<Probe&>(tree.addNode(std::make_unique<Probe>(std::move(reaction)), false));
}

inline std::array<float, 3> moved(const SFMatrix& matrix, std::array<float, 3> point) {
    matrix.transform(point.data());
    return point;
}

}  // namespace nodes
