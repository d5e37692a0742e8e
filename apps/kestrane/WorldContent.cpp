#include "WorldContent.h"

#include <algorithm>
#include <cmath>
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

template <class Values>
bool AreFinite(const Values& values) {
    return std::all_of(std::begin(values), std::end(values),
                       [](auto value) { return std::isfinite(value); });
}

bool HasFinitePlace(const nodes::TransformNode& transform) {
    return AreFinite(transform.translation().value()) && AreFinite(transform.scale().value()) &&
           AreFinite(transform.rotation().value());
}

bool HasFinitePoints(const nodes::Node& geometry) {
    const auto* const coordinate =
        static_cast<const nodes::CoordinateNode*>(geometry.childOfType(nodes::kCoordinate));
    return coordinate == nullptr ||
           std::all_of(coordinate->point().values().begin(), coordinate->point().values().end(),
                       [](const auto& point) { return AreFinite(point); });
}

bool HasFiniteSize(const nodes::Node& geometry) {
    switch (geometry.type()) {
        case nodes::kBox:
            return AreFinite(static_cast<const nodes::BoxNode&>(geometry).size().value());
        case nodes::kSphere:
            return std::isfinite(static_cast<const nodes::SphereNode&>(geometry).radius());
        case nodes::kCylinder: {
            const auto& cylinder = static_cast<const nodes::CylinderNode&>(geometry);
            return std::isfinite(cylinder.radius()) && std::isfinite(cylinder.height());
        }
        case nodes::kCone: {
            const auto& cone = static_cast<const nodes::ConeNode&>(geometry);
            return std::isfinite(cone.bottomRadius()) && std::isfinite(cone.height());
        }
        default:
            return HasFinitePoints(geometry);
    }
}

template <class Indices>
bool IsUnclosed(const Indices& indices) {
    return !indices.empty() && indices.back() != -1;
}

bool IsUnclosed(const nodes::Node& geometry) {
    if (geometry.isType(nodes::kIndexedFaceSet))
        return IsUnclosed(
            static_cast<const nodes::IndexedFaceSetNode&>(geometry).coordIndex().values());
    if (geometry.isType(nodes::kIndexedLineSet))
        return IsUnclosed(
            static_cast<const nodes::IndexedLineSetNode&>(geometry).coordIndex().values());
    return false;
}

/// Some of its children, but not all, are USE: they have been moved behind the others.
bool IsReordered(const nodes::Node& node) {
    bool own = false;
    bool used = false;
    for (const nodes::Node* child = node.firstChild(); child; child = child->nextSibling())
        (child->instanceOf() == nullptr ? own : used) = true;
    return own && used;
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
            content.notFinite += HasFinitePlace(transform) ? 0 : 1;
            wait(node.firstChild());
        } else if (node.isType(nodes::kGroup)) {
            wait(node.firstChild());
        } else if (node.isType(nodes::kSwitch)) {
            const auto& choice = static_cast<const nodes::SwitchNode&>(node);
            content.reordered += IsReordered(node) ? 1 : 0;
            if (const nodes::Node* chosen = node.childAt(choice.whichChoice()))
                waiting.push_back(chosen);
        } else if (node.isType(nodes::kShape)) {
            const nodes::Node* const geometry = node.geometryChild();
            if (!geometry || !HasObject(*geometry))
                continue;
            ++content.objects;
            content.unclosed += IsUnclosed(*geometry) ? 1 : 0;
            content.notFinite += HasFiniteSize(*geometry) ? 0 : 1;
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
