#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "nodes/Route.h"
#include "nodes/nodes/NodeClasses.h"

namespace nodes {

/// Told the number of lines or nodes done, and the caller's word.
using ProgressFn = void (*)(int count, void* userData);

/// A tree of nodes and the routes between them. It owns both. Not for use by several threads.
class NodeTree {
  public:
    NodeTree();
    NodeTree(const NodeTree&) = delete;
    NodeTree& operator=(const NodeTree&) = delete;
    virtual ~NodeTree();

    Node* firstNode() const { return m_root.firstChild(); }
    /// All nodes below the top.
    int nodeCount() const;
    /// Appends NODE at the top level and returns it.
    Node& addNode(std::unique_ptr<Node> node, bool callInitialise);
    /// Moves NODE to the end of the top level, from where it stands in this tree or another.
    void addNode(Node& node, bool callInitialise);

    /// Joins two fields of two nodes by name, the source among event-outs and exposed fields, the
    /// target among event-ins and exposed fields. Null if a node or field is not found or the nodes
    /// are the same; the route that is there already if there is an equal one.
    Route* addRoute(const char* fromName, const char* fromField, const char* toName,
                    const char* toField);
    /// As above, of nodes of this tree.
    Route* addRoute(Node& fromNode, const char* fromField, Node& toNode, const char* toField);
    Route* addRoute(Node& fromNode, Field& fromField, Node& toNode, Field& toField);
    const std::list<Route>& routes() const { return m_routes; }
    /// As clearDelivered() of each.
    void clearDelivered();
    Route* firstRoute() { return m_routes.empty() ? nullptr : &m_routes.front(); }
    Route* findRoute(const Node* fromNode, const Field* fromField, const Node* toNode,
                     const Field* toField);

    /// The first node of a name in the order of next(), or the node that it shows; null and "" find
    /// nothing. Takes time in proportion to the tree.
    Node* findNode(const char* text) const;
    /// As findNode(), the last one.
    Node* findLastNode(const char* text) const;
    Node* findNodeOfType(std::int32_t type) const;

    /// Cascades inside each other, as receivers send events of their own. A deeper event is lost.
    static constexpr int kNestedCascades = 1000;
    /// Routes that an event tries before it is lost, counted with all that it sets off: so many,
    /// and so many more for each route of the tree. Routes that fork and meet again multiply an
    /// event.
    static constexpr std::size_t kCascadeSteps = 100000;
    static constexpr std::size_t kCascadeStepsEach = 16;

    /// Delivers along each route from FIELD of NODE, tells its target, and goes on from there, one
    /// route to its end before the next. A route that is delivering does not deliver inside itself.
    /// The way may be of any length; receivers may add and remove routes and nodes.
    void cascade(Node& node, Field& field);

    /// Deletes all nodes and routes.
    virtual void clear();
    /// Moves all nodes to the end of PARENT's children, in another tree or outside of any, and
    /// the routes, which go on joining the same nodes, to that tree.
    virtual void moveTo(Node& parent);

    /// Binds or unbinds a bindable node; a tree without stacks does nothing.
    virtual void setBound(Node& node, bool state);
    /// The bound viewpoint or, where none is, one with the values of its class.
    virtual const ViewpointNode& viewer() const;

  protected:
    Node& root() { return m_root; }
    const Node& root() const { return m_root; }
    /// Moves all nodes of OTHER here in order. Its routes stay with it, for takeRoutes() alone.
    void takeNodes(NodeTree& other);
    /// Moves the routes of OTHER here, where their nodes have come by takeNodes().
    void takeRoutes(NodeTree& other);

  private:
    friend class Node;

    class Cascade;

    struct Ends {
        const Node* fromNode;
        const Field* fromField;
        const Node* toNode;
        const Field* toField;
        bool operator==(const Ends&) const = default;
    };
    struct EndsHash {
        std::size_t operator()(const Ends& ends) const;
    };
    using RouteList = std::list<Route>;
    using RouteIndex = std::map<std::pair<const Field*, std::uint64_t>, Route*>;

    /// Nodes of the tree may leave it then, and the routes stay; takeRoutes() counts them again.
    void uncountRoutes();
    /// Removes what the tree knows of TOP and all nodes below it.
    void forgetLeaving(Node& top);
    void removeRoutesOf(Node& node);
    void clearRouteIndex();

    RootNode m_root;
    RouteList m_routes;
    std::uint64_t m_lastRoute = 0;
    // How often routes have been removed, so that a cascade can tell whether its place still
    // stands.
    std::uint64_t m_removals = 0;
    std::unordered_map<Ends, Route*, EndsHash> m_routeOfEnds;
    // The routes from a field, and those of a node, at both ends, in the order of their numbers.
    RouteIndex m_routesFrom;
    std::map<std::pair<const Node*, std::uint64_t>, RouteList::iterator> m_routesOf;
    // While all nodes go to another tree, and their routes and what names them with them.
    bool m_handsOver = false;
};

}  // namespace nodes
