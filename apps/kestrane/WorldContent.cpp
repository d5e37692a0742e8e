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

/// The shapes that the walk comes to and that have an object.
std::size_t CountVisited(const nodes::SceneGraph& world) {
    std::size_t count = 0;
    std::vector<const nodes::Node*> waiting;
    const auto wait = [&waiting](const nodes::Node* first) {
        for (; first; first = first->nextSibling())
            waiting.push_back(first);
    };
    wait(world.firstNode());
    while (!waiting.empty()) {
        const nodes::Node& node = *waiting.back();
        waiting.pop_back();
        if (node.isType(nodes::kGroup) || node.isType(nodes::kTransform)) {
            wait(node.firstChild());
        } else if (node.isType(nodes::kSwitch)) {
            const auto& choice = static_cast<const nodes::SwitchNode&>(node);
            if (const nodes::Node* chosen = node.childAt(choice.whichChoice()))
                waiting.push_back(chosen);
        } else if (node.isType(nodes::kShape)) {
            const nodes::Node* const geometry = node.geometryChild();
            count += geometry && HasObject(*geometry) ? 1 : 0;
        }
    }
    return count;
}

}  // namespace

WorldContent ReadWorldContent(const std::string& file) {
    nodes::SceneGraph world;
    const ReaderEcho silence;
    if (!world.load(file.c_str(), true, nullptr, nullptr))
        throw Failure("cannot read " + file);
    WorldContent content;
    content.objects = CountVisited(world);
    for (const nodes::Node* node = world.firstNode(); node; node = node->next())
        content.passedOver += node->isType(nodes::kShape) && node->geometryChild() ? 1 : 0;
    content.passedOver -= content.objects;
    return content;
}
