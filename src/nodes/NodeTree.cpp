#include "nodes/NodeTree.h"

#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

namespace nodes {

NodeTree::NodeTree() {
    m_root.m_isRoot = true;
    m_root.m_scene = this;
}

NodeTree::~NodeTree() {
    NodeTree::clear();
    m_root.m_scene = nullptr;
}

int NodeTree::nodeCount() const {
    int count = 0;
    for (const Node* node = firstNode(); node; node = node->next()) {
        ++count;
    }
    return count;
}

Node& NodeTree::addNode(std::unique_ptr<Node> node, bool callInitialise) {
    return m_root.addChild(std::move(node), callInitialise);
}

void NodeTree::addNode(Node& node, bool callInitialise) {
    m_root.addChild(node, callInitialise);
}

std::size_t NodeTree::EndsHash::operator()(const Ends& ends) const {
    constexpr std::size_t kMultiplier = 0x9E3779B97F4A7C15ULL;
    std::size_t hash = 0;
    for (const void* end :
         {static_cast<const void*>(ends.fromNode), static_cast<const void*>(ends.fromField),
          static_cast<const void*>(ends.toNode), static_cast<const void*>(ends.toField)}) {
        hash = (hash ^ std::hash<const void*>()(end)) * kMultiplier;
        hash ^= hash >> 32;
    }
    return hash;
}

Route* NodeTree::addRoute(const char* fromName, const char* fromField, const char* toName,
                          const char* toField) {
    Node* from = findNode(fromName);
    Node* to = findNode(toName);
    return from && to ? addRoute(*from, fromField, *to, toField) : nullptr;
}

Route* NodeTree::addRoute(Node& fromNode, const char* fromField, Node& toNode,
                          const char* toField) {
    Field* from = fromNode.findEventOut(fromField);
    if (!from) {
        from = fromNode.findExposedField(fromField);
    }
    Field* to = toNode.findEventIn(toField);
    if (!to) {
        to = toNode.findExposedField(toField);
    }
    return from && to ? addRoute(fromNode, *from, toNode, *to) : nullptr;
}

Route* NodeTree::addRoute(Node& fromNode, Field& fromField, Node& toNode, Field& toField) {
    if (&fromNode == &toNode || fromNode.m_scene != this || toNode.m_scene != this) {
        return nullptr;
    }
    if (Route* present = findRoute(&fromNode, &fromField, &toNode, &toField)) {
        return present;
    }
    m_routes.emplace_back(fromNode, fromField, toNode, toField);
    Route& route = m_routes.back();
    route.m_number = ++m_lastRoute;
    m_routeOfEnds.emplace(Ends{&fromNode, &fromField, &toNode, &toField}, &route);
    m_routesFrom.emplace(std::pair(&fromField, route.m_number), &route);
    const auto place = std::prev(m_routes.end());
    m_routesOf.emplace(std::pair(&fromNode, route.m_number), place);
    m_routesOf.emplace(std::pair(&toNode, route.m_number), place);
    ++fromNode.m_routeEnds;
    ++toNode.m_routeEnds;
    return &route;
}

Route* NodeTree::findRoute(const Node* fromNode, const Field* fromField, const Node* toNode,
                           const Field* toField) {
    const auto found = m_routeOfEnds.find(Ends{fromNode, fromField, toNode, toField});
    return found == m_routeOfEnds.end() ? nullptr : found->second;
}

Node* NodeTree::findNode(const char* text) const {
    if (!text || !*text) {
        return nullptr;
    }
    Node* node = m_root.nextNamed(text);
    return node ? &node->holder() : nullptr;
}

Node* NodeTree::findLastNode(const char* text) const {
    if (!text || !*text) {
        return nullptr;
    }
    Node* last = nullptr;
    for (Node* node = m_root.nextNamed(text); node; node = node->nextNamed(text)) {
        last = node;
    }
    return last ? &last->holder() : nullptr;
}

Node* NodeTree::findNodeOfType(std::int32_t type) const {
    Node* node = m_root.nextOfType(type);
    return node ? &node->holder() : nullptr;
}

void NodeTree::clear() {
    uncountRoutes();
    clearRouteIndex();
    m_routes.clear();
    m_root.deleteChildren();
}

void NodeTree::setBound(Node&, bool) {}

const ViewpointNode& NodeTree::viewer() const {
    static const ViewpointNode viewpoint;
    return viewpoint;
}

void NodeTree::takeNodes(NodeTree& other) {
    other.uncountRoutes();
    other.m_handsOver = true;
    const Node* from = &other.m_root;
    if (const Node* first = other.firstNode(); first && first->isType(kXmlElement)) {
        from = first->isType(kXmlScene) ? first : first->nextOfType(kXmlScene);
    }
    while (from && from->firstChild()) {
        addNode(*from->firstChild(), false);
    }
    other.m_handsOver = false;
}

void NodeTree::moveTo(Node& parent) {
    uncountRoutes();
    m_handsOver = true;
    while (Node* node = firstNode()) {
        node->unlink();
        parent.link(*node);
    }
    m_handsOver = false;
    if (parent.m_scene) {
        parent.m_scene->takeRoutes(*this);
    } else {
        clear();
    }
}

void NodeTree::uncountRoutes() {
    for (const Route& route : m_routes) {
        route.m_fromNode->m_routeEnds = 0;
        route.m_toNode->m_routeEnds = 0;
    }
}

void NodeTree::clearDelivered() {
    for (Route& route : m_routes) {
        route.clearDelivered();
    }
}

void NodeTree::takeRoutes(NodeTree& other) {
    other.clearRouteIndex();
    for (const Route& route : std::exchange(other.m_routes, {})) {
        addRoute(*route.fromNode(), *route.fromField(), *route.toNode(), *route.toField());
    }
}

void NodeTree::clearRouteIndex() {
    ++m_removals;
    m_routeOfEnds.clear();
    m_routesFrom.clear();
    m_routesOf.clear();
}

void NodeTree::forgetLeaving(Node& top) {
    for (Node* node = &top; node; node = node->nextWithin(&top)) {
        node->forgetRoutes();
        if (!m_handsOver) {
            node->forgetNamers();
        }
    }
    for (Node* node = &top; node; node = node->nextWithin(&top)) {
        if (node->isBindable()) {
            setBound(*node, false);
        }
    }
}

void NodeTree::removeRoutesOf(Node& node) {
    ++m_removals;
    auto next = m_routesOf.lower_bound({&node, 0});
    while (next != m_routesOf.end() && next->first.first == &node) {
        const RouteList::iterator place = next->second;
        const Route& route = *place;
        const std::uint64_t number = route.m_number;
        const Node* other = route.m_fromNode == &node ? route.m_toNode : route.m_fromNode;
        // In this order: the entry of the other end may be the next one.
        m_routesOf.erase({other, number});
        next = m_routesOf.erase(next);
        m_routesFrom.erase({route.m_fromField, number});
        m_routeOfEnds.erase(
            Ends{route.m_fromNode, route.m_fromField, route.m_toNode, route.m_toField});
        --route.m_fromNode->m_routeEnds;
        --route.m_toNode->m_routeEnds;
        m_routes.erase(place);
    }
}

}  // namespace nodes
