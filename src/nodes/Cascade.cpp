#include <algorithm>
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
        m_path.push_back({&node, &field});
        while (!m_path.empty()) {
            leaveRoute();
            Route* route = nextRoute();
            if (route == nullptr) {
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
    /// A field whose event goes out, and the number of the last route that was tried.
    struct Origin {
        const Node* node;
        const Field* field;
        std::uint64_t number = 0;
        bool inside = false;
    };

    /// The first route of the last origin's field whose number is at least NUMBER.
    Route* routeFrom(std::uint64_t number) const {
        const auto found = m_tree.m_routesFrom.find(m_path.back().field);
        if (found == m_tree.m_routesFrom.end()) {
            return nullptr;
        }
        const auto at = std::lower_bound(
            found->second.begin(), found->second.end(), number,
            [](const Route* route, std::uint64_t wanted) { return route->m_number < wanted; });
        return at == found->second.end() ? nullptr : *at;
    }

    Route* nextRoute() {
        Route* route = routeFrom(m_path.back().number + 1);
        if (route != nullptr) {
            m_path.back().number = route->m_number;
        }
        return route;
    }

    /// The route that the last origin's event goes along, unless it has been removed.
    Route* currentRoute() const {
        const std::uint64_t number = m_path.back().number;
        Route* route = routeFrom(number);
        return route != nullptr && route->m_number == number ? route : nullptr;
    }

    void follow(Route& route) {
        Node& target = *route.m_toNode;
        const Field& field = *route.m_toField;
        route.m_delivering = true;
        m_path.back().inside = true;
        route.deliver();
        if (currentRoute() != nullptr) {
            target.eventReceived();
        }
        if (currentRoute() != nullptr) {
            m_path.push_back({&target, &field});
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
    if (t_running.depth < kNestedCascades) {
        Cascade(*this).run(node, field);
    }
}

void Node::sendEvent(Field& field) {
    if (m_scene != nullptr) {
        m_scene->cascade(*this, field);
    }
}

}  // namespace nodes
