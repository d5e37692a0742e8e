#include <cstddef>
#include <cstdint>
#include <vector>

#include "nodes/NodeTree.h"

namespace nodes {
namespace {

/// Cascades on this thread that stand inside one another, and the routes that they may still try.
struct Running {
    int depth = 0;
    std::size_t steps = 0;
};

thread_local Running t_running;

}  // namespace

/// One event on its way. The routes that it has reached stand on a stack of its own, and are found
/// again by their numbers, since whoever receives an event may add or remove routes.
class NodeTree::Cascade {
  public:
    explicit Cascade(NodeTree& tree) : m_tree(tree) {
        if (t_running.depth++ == 0) {
            t_running.steps = kCascadeSteps + kCascadeStepsEach * tree.m_routes.size();
        }
    }

    ~Cascade() {
        while (!m_path.empty()) {
            leaveRoute();
            m_path.pop_back();
        }
        --t_running.depth;
    }

    Cascade(const Cascade&) = delete;
    Cascade& operator=(const Cascade&) = delete;

    void run(const Node& node, const Field& field) {
        m_path.push_back(Origin{&node, &field, {}, {}});
        while (!m_path.empty()) {
            leaveRoute();
            Route* route = nextRoute();
            if (!route) {
                m_path.pop_back();
                continue;
            }
            if (t_running.steps == 0) {
                return;
            }
            --t_running.steps;
            if (route->m_fromNode == m_path.back().node && !route->m_delivering) {
                follow(*route);
            }
        }
    }

  private:
    using Place = RouteIndex::iterator;

    /// A field whose event goes out, and the last route that was tried. PLACE is good as long as
    /// no route has been removed.
    struct Origin {
        const Node* node;
        const Field* field;
        Place place;
        std::uint64_t removals;
        std::uint64_t number = 0;
        bool inside = false;
    };

    Route* nextRoute() {
        Origin& origin = m_path.back();
        RouteIndex& routes = m_tree.m_routesFrom;
        if (origin.number > 0 && origin.removals == m_tree.m_removals) {
            ++origin.place;
        } else {
            origin.place = routes.upper_bound({origin.field, origin.number});
            origin.removals = m_tree.m_removals;
        }
        if (origin.place == routes.end() || origin.place->first.first != origin.field) {
            return nullptr;
        }
        origin.number = origin.place->first.second;
        return origin.place->second;
    }

    /// The route that the last origin's event goes along; null if it has been removed.
    Route* currentRoute() {
        const Origin& origin = m_path.back();
        if (origin.removals == m_tree.m_removals) {
            return origin.place->second;
        }
        const auto found = m_tree.m_routesFrom.find({origin.field, origin.number});
        return found == m_tree.m_routesFrom.end() ? nullptr : found->second;
    }

    void follow(Route& route) {
        Node& target = *route.m_toNode;
        const Field& field = *route.m_toField;
        route.m_delivering = true;
        m_path.back().inside = true;
        route.deliver();
        if (currentRoute()) {
            target.eventReceived();
        }
        if (currentRoute()) {
            m_path.push_back(Origin{&target, &field, {}, {}});
        }
    }

    void leaveRoute() {
        if (!m_path.back().inside) {
            return;
        }
        m_path.back().inside = false;
        if (Route* route = currentRoute()) {
            route->m_delivering = false;
        }
    }

    NodeTree& m_tree;
    std::vector<Origin> m_path;
};

void NodeTree::cascade(Node& node, Field& field) {
    if (!m_routes.empty() && t_running.depth < kNestedCascades) {
        Cascade(*this).run(node, field);
    }
}

void Node::sendEvent(Field& field) {
    if (m_scene) {
        m_scene->cascade(*this, field);
    }
}

}  // namespace nodes
