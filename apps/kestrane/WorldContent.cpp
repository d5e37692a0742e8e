#include "WorldContent.h"

#include <vector>

#include "Failure.h"
#include "ReaderEcho.h"
#include "nodes/SceneGraph.h"

namespace {

bool HasObject(const nodes::Node& geometry) {
    switch (geometry.type()) {
        case nodes::kBox:
        case nodes::kSphere:
        case nodes::kCylinder:
        case nodes::kCone:
        case nodes::kExtrusion:
            return true;
        case nodes::kIndexedFaceSet:
        case nodes::kIndexedLineSet:
            return geometry.childOfType(nodes::kCoordinate) != nullptr;
        default:
            return false;
    }
}

bool IsMisplaced(const nodes::TransformNode& transform) {
    const auto& [x, y, z] = transform.scale().value();
    const bool turns = transform.rotation().value()[3] != 0;
    const bool scales = x != 1 || y != 1 || z != 1;
    const bool scalesUnevenly = x != y || y != z;
    const bool hasCenter = transform.center().value() != nodes::SFVec3f::Value{};
    return x < 0 || y < 0 || z < 0 || (hasCenter && (turns || scales)) ||
           (scalesUnevenly && transform.scaleOrientation().value()[3] != 0);
}

/// Counts the shapes that the walk comes to and that have an object, and Transforms on the way.
void CountVisited(const nodes::SceneGraph& world, WorldContent& content) {
    std::vector<const nodes::Node*> waiting;
    const auto wait = [&waiting](const nodes::Node* first) {
        for (; first; first = first->nextSibling())
            waiting.push_back(first);
    };
    wait(world.firstNode());
    while (!waiting.empty()) {
        const nodes::Node& node = *waiting.back();
        waiting.pop_back();
        if (node.isType(nodes::kTransform)) {
            const auto& transform = static_cast<const nodes::TransformNode&>(node);
            content.misplaced += IsMisplaced(transform) ? 1 : 0;
            wait(node.firstChild());
        } else if (node.isType(nodes::kGroup)) {
            wait(node.firstChild());
        } else if (node.isType(nodes::kSwitch)) {
            const auto& choice = static_cast<const nodes::SwitchNode&>(node);
            if (const nodes::Node* chosen = node.childAt(choice.whichChoice()))
                waiting.push_back(chosen);
        } else if (node.isType(nodes::kShape)) {
            const nodes::Node* const geometry = node.geometryChild();
            content.objects += geometry && HasObject(*geometry) ? 1 : 0;
        }
    }
}

}  // namespace

WorldContent ReadWorldContent(const std::string& file) {
    nodes::SceneGraph world;
    const ReaderEcho silence;
    if (!world.load(file.c_str(), true, nullptr, nullptr))
        throw Failure("cannot read " + file);
    WorldContent content;
    CountVisited(world, content);
    for (const nodes::Node* node = world.firstNode(); node; node = node->next())
        content.passedOver += node->isType(nodes::kShape) && node->geometryChild() ? 1 : 0;
    content.passedOver -= content.objects;
    return content;
}
