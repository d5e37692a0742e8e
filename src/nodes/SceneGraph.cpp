#include "nodes/SceneGraph.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "nodes/nodes/ReadScope.h"

namespace nodes {
namespace {

using NodeList = std::vector<std::unique_ptr<Node>>;

/// Appends ADDED beside NODE, and takes NODE out of the tree; returns the node that stood behind
/// it. A Switch goes on choosing by the places that its children had in the file. REMOVED keeps
/// NODE, whose end might take nodes along that a walk is still to come to.
Node* replace(NodeTree& tree, Node& node, std::unique_ptr<Node> added, NodeList& removed) {
    if (Node* parent = node.parent()) {
        parent->restage(node, parent->addChild(std::move(added), false));
    } else {
        tree.addNode(std::move(added), false);
    }
    Node* behind = node.nextBehind();
    removed.push_back(node.detach());
    return behind;
}

void tellBound(Node& node, bool isBound) {
    SFBool& field = static_cast<BindableNode&>(node).isBoundField();
    field.setValue(isBound);
    node.sendEvent(field);
}

}  // namespace

SceneGraph::SceneGraph() = default;

SceneGraph::~SceneGraph() {
    SceneGraph::clear();
}

void SceneGraph::clearStacks() {
    for (BindStack* stack : {&m_backgrounds, &m_fogs, &m_navigationInfos, &m_viewpoints}) {
        stack->clear();
    }
}

void SceneGraph::clear() {
    clearStacks();
    NodeTree::clear();
}

void SceneGraph::moveTo(Node& parent) {
    clearStacks();
    NodeTree::moveTo(parent);
}

void SceneGraph::initialise(ProgressFn progressFn, void* userData) {
    const ReadScope scope(nullptr);
    ReadScope::allowInstances(*this);
    initialiseNodes(progressFn, userData);
    makeInstances();
}

bool SceneGraph::makeInstances() {
    replaceInstances();
    const bool resolved = resolveReferences();
    clearDelivered();
    return resolved;
}

void SceneGraph::initialiseNodes(ProgressFn progressFn, void* userData) {
    int count = 0;
    for (Node* node = firstNode(); node; node = node->next()) {
        if (!node->instanceOf()) {
            node->initialise();
        }
        if (progressFn) {
            progressFn(++count, userData);
        }
    }
}

void SceneGraph::replaceInstances() {
    NodeList removed;
    std::size_t& budget = ReadScope::instanceBudget();
    for (Node* node = firstNode(); node;) {
        if (!node->instanceOf() || node->isPlaceholder()) {
            node = node->next();
            continue;
        }
        for (const Node* below = node; below; below = below->nextWithin(node)) {
            ++budget;
        }
        node = replace(*this, *node, node->makeReference(), removed);
    }
}

bool SceneGraph::resolveReferences() {
    // findNode() for every name at once. What is added below stands behind the node that it shows.
    std::unordered_map<std::string_view, Node*> firstOfName;
    for (Node* node = firstNode(); node; node = node->next()) {
        if (node->hasName()) {
            firstOfName.emplace(node->nameText(), node->instanceOf() ? node->instanceOf() : node);
        }
    }
    std::size_t& budget = ReadScope::instanceBudget();
    NodeList removed;
    bool complete = true;
    for (Node* node = firstNode(); node;) {
        if (!node->isPlaceholder()) {
            node = node->next();
            continue;
        }
        const auto named = firstOfName.find(node->nameText());
        std::unique_ptr<Node> instance;
        if (named != firstOfName.end() && !named->second->isPlaceholder()) {
            instance = named->second->instantiate(this, &budget);
            complete = complete && instance;
        }
        if (!instance) {
            node = node->nextBehind();
            continue;
        }
        node = replace(*this, *node, std::move(instance), removed);
    }
    return complete;
}

SceneGraph::BindStack& SceneGraph::stackOf(const Node& node) {
    switch (node.type()) {
        case kBackground:
            return m_backgrounds;
        case kFog:
            return m_fogs;
        case kNavigationInfo:
            return m_navigationInfos;
        default:
            return m_viewpoints;
    }
}

void SceneGraph::setBound(Node& node, bool state) {
    if (!node.isBindable()) {
        return;
    }
    if (state) {
        bind(stackOf(node), node);
    } else {
        unbind(stackOf(node), node);
    }
}

void SceneGraph::bind(BindStack& stack, Node& node) {
    Node* top = boundNode(stack);
    if (top == &node) {
        return;
    }
    if (top) {
        tellBound(*top, false);
    }
    std::erase(stack, &node);
    stack.push_back(&node);
    tellBound(node, true);
}

void SceneGraph::unbind(BindStack& stack, Node& node) {
    if (boundNode(stack) != &node) {
        std::erase(stack, &node);
        return;
    }
    tellBound(node, false);
    std::erase(stack, &node);
    if (Node* top = boundNode(stack)) {
        tellBound(*top, true);
    }
}

Node* SceneGraph::boundNode(const BindStack& stack) {
    return stack.empty() ? nullptr : stack.back();
}

const ViewpointNode& SceneGraph::viewer() const {
    const Node* bound = boundNode(m_viewpoints);
    return bound ? static_cast<const ViewpointNode&>(*bound) : m_defaultViewpoint;
}

}  // namespace nodes
