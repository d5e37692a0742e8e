#include "platform/maverik/Triangulation.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::uint32_t kLeafSize = 8;

bool IsFinite(const MAV_vector& v) noexcept {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

/// Twice the area of the outline as a vector (M. Newell; I. Sutherland, R. Sproull, R. Schumacker,
/// "A characterization of ten hidden-surface algorithms", 1974).
std::array<double, 3> AreaVector(const MAV_vector* vertices, std::size_t count) noexcept {
    std::array<double, 3> sum = {0, 0, 0};
    const MAV_vector& o = vertices[0];
    for (std::size_t i = 1; i + 1 < count; ++i) {
        const MAV_vector &a = vertices[i], &b = vertices[i + 1];
        const double ax = static_cast<double>(a.x) - o.x, bx = static_cast<double>(b.x) - o.x;
        const double ay = static_cast<double>(a.y) - o.y, by = static_cast<double>(b.y) - o.y;
        const double az = static_cast<double>(a.z) - o.z, bz = static_cast<double>(b.z) - o.z;
        sum[0] += ay * bz - az * by;
        sum[1] += az * bx - ax * bz;
        sum[2] += ax * by - ay * bx;
    }
    return sum;
}

}  // namespace

void Triangulator::Add(const MAV_vector* vertices, std::size_t count, const MAV_vector& normal,
                       std::uint32_t first, std::vector<std::uint32_t>& triangles) {
    if (count < 3 || !std::all_of(vertices, vertices + count, IsFinite)) {
        return;
    }
    if (count == 3) {
        const std::array<double, 3> area = AreaVector(vertices, 3);
        if (area[0] != 0 || area[1] != 0 || area[2] != 0) {
            triangles.insert(triangles.end(), {first, first + 1, first + 2});
        }
        return;
    }
    if (!Project(vertices, count, normal)) {
        return;
    }
    m_first = first;
    m_triangles = &triangles;
    Link();
    BuildTree();
    Clip();
}

bool Triangulator::Project(const MAV_vector* vertices, std::size_t count,
                           const MAV_vector& normal) {
    std::array<double, 3> n = AreaVector(vertices, count);
    const auto isZero = [&] { return n[0] == 0 && n[1] == 0 && n[2] == 0; };
    if (isZero() && IsFinite(normal)) {
        n = {normal.x, normal.y, normal.z};
    }
    if (isZero()) {
        return false;
    }
    // Leaving out the coordinate that says least keeps the other two as they were given, so that
    // whether a corner is reflex is decided almost exactly.
    std::size_t axis = std::abs(n[0]) > std::abs(n[1]) ? 0 : 1;
    axis = std::abs(n[2]) > std::abs(n[axis]) ? 2 : axis;
    const bool swapped = n[axis] < 0;
    m_points.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::array<float, 3> v = {vertices[i].x, vertices[i].y, vertices[i].z};
        const double a = v[(axis + 1) % 3], b = v[(axis + 2) % 3];
        m_points[i] = swapped ? Point{b, a} : Point{a, b};
    }
    return true;
}

void Triangulator::Link() {
    const auto count = static_cast<std::uint32_t>(m_points.size());
    m_previous.resize(count);
    m_next.resize(count);
    m_isReflex.assign(count, 0);
    m_isRemoved.assign(count, 0);
    m_queue.resize(count);
    m_reflex.clear();
    for (std::uint32_t i = 0; i < count; ++i) {
        m_previous[i] = i == 0 ? count - 1 : i - 1;
        m_next[i] = i + 1 == count ? 0 : i + 1;
        m_queue[i] = i;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        if (TurnAt(i) < 0) {
            m_isReflex[i] = 1;
            m_reflex.push_back(i);
        }
    }
    m_left = count;
}

void Triangulator::Clip() {
    std::size_t head = 0;
    std::uint32_t anywhere = 0;
    while (m_left > 3) {
        std::uint32_t corner;
        if (head < m_queue.size()) {
            corner = m_queue[head++];
            if (m_isRemoved[corner] || !IsEar(corner)) {
                continue;
            }
        } else {
            while (m_isRemoved[anywhere]) {
                anywhere = anywhere + 1 == m_points.size() ? 0 : anywhere + 1;
            }
            corner = AnyCorner(anywhere);
        }
        Remove(corner);
        m_queue.push_back(m_previous[corner]);
        m_queue.push_back(m_next[corner]);
        anywhere = m_next[corner];
    }
    while (m_isRemoved[anywhere]) {
        anywhere = anywhere + 1 == m_points.size() ? 0 : anywhere + 1;
    }
    Remove(anywhere);
}

bool Triangulator::IsEar(std::uint32_t i) const {
    const double turn = TurnAt(i);
    if (turn == 0) {
        return true;  // on a straight line, or the end of a spike: goes without a triangle
    }
    return turn > 0 && !HoldsReflex({m_points[m_previous[i]], m_points[i], m_points[m_next[i]]});
}

void Triangulator::Remove(std::uint32_t i) {
    const std::uint32_t before = m_previous[i], after = m_next[i];
    if (TurnAt(i) != 0) {
        m_triangles->insert(m_triangles->end(), {m_first + before, m_first + i, m_first + after});
    }
    m_isRemoved[i] = 1;
    m_next[before] = after;
    m_previous[after] = before;
    --m_left;
    Deactivate(i);
    for (const std::uint32_t neighbour : {before, after}) {
        if (m_isReflex[neighbour] && TurnAt(neighbour) >= 0) {
            Deactivate(neighbour);
        }
    }
}

std::uint32_t Triangulator::AnyCorner(std::uint32_t from) const noexcept {
    constexpr int kTries = 64;
    std::uint32_t corner = from;
    for (int i = 0; i < kTries; ++i) {
        if (TurnAt(corner) > 0) {
            return corner;
        }
        corner = m_next[corner];
    }
    return from;
}

void Triangulator::BuildTree() {
    m_nodes.clear();
    m_leafOf.resize(m_points.size());
    if (m_reflex.empty()) {
        return;
    }
    const auto count = static_cast<std::uint32_t>(m_reflex.size());
    m_nodes.push_back({{}, {}, 0, count, 0, 0, count});
    for (std::uint32_t node = 0; node < m_nodes.size(); ++node) {
        BuildNode(node);
    }
}

void Triangulator::BuildNode(std::uint32_t index) {
    Node node = m_nodes[index];
    const auto begin = m_reflex.begin() + node.begin, end = m_reflex.begin() + node.end;
    node.low = node.high = m_points[*begin];
    for (auto i = begin; i != end; ++i) {
        const Point& p = m_points[*i];
        node.low = {std::min(node.low.x, p.x), std::min(node.low.y, p.y)};
        node.high = {std::max(node.high.x, p.x), std::max(node.high.y, p.y)};
    }
    if (node.active > kLeafSize) {
        const bool byX = node.high.x - node.low.x > node.high.y - node.low.y;
        const std::uint32_t middle = node.begin + node.active / 2;
        std::nth_element(
            begin, m_reflex.begin() + middle, end, [&](std::uint32_t a, std::uint32_t b) {
                return byX ? m_points[a].x < m_points[b].x : m_points[a].y < m_points[b].y;
            });
        node.child = static_cast<std::uint32_t>(m_nodes.size());
        m_nodes.push_back({{}, {}, node.begin, middle, index, 0, middle - node.begin});
        m_nodes.push_back({{}, {}, middle, node.end, index, 0, node.end - middle});
    } else {
        for (auto i = begin; i != end; ++i) {
            m_leafOf[*i] = index;
        }
    }
    m_nodes[index] = node;
}

void Triangulator::Deactivate(std::uint32_t i) noexcept {
    if (!m_isReflex[i]) {
        return;
    }
    m_isReflex[i] = 0;
    std::uint32_t node = m_leafOf[i];
    --m_nodes[node].active;
    while (node != 0) {
        node = m_nodes[node].parent;
        --m_nodes[node].active;
    }
}

bool Triangulator::HoldsReflex(const Corners& triangle) const {
    if (m_nodes.empty()) {
        return false;
    }
    const auto& [a, b, c] = triangle;
    // How far to the left of the side p to q the point of the rectangle is that is most so.
    const auto side = [](const Point& p, const Point& q, const Node& box) {
        const double dx = q.x - p.x, dy = q.y - p.y;
        return dx * ((dx > 0 ? box.high.y : box.low.y) - p.y) -
               dy * ((dy > 0 ? box.low.x : box.high.x) - p.x);
    };
    const Point low = {std::min({a.x, b.x, c.x}), std::min({a.y, b.y, c.y})};
    const Point high = {std::max({a.x, b.x, c.x}), std::max({a.y, b.y, c.y})};
    m_stack.assign(1, 0);
    while (!m_stack.empty()) {
        const Node& node = m_nodes[m_stack.back()];
        m_stack.pop_back();
        if (node.active == 0 || node.low.x > high.x || node.high.x < low.x || node.low.y > high.y ||
            node.high.y < low.y || side(a, b, node) < 0 || side(b, c, node) < 0 ||
            side(c, a, node) < 0) {
            continue;
        }
        if (node.child != 0) {
            m_stack.push_back(node.child);
            m_stack.push_back(node.child + 1);
            continue;
        }
        for (std::uint32_t i = node.begin; i < node.end; ++i) {
            const Point& p = m_points[m_reflex[i]];
            // One that coincides with a corner of the ear is that corner, or lies where an outline
            // touches itself, as at a bridge to a hole.
            if (m_isReflex[m_reflex[i]] && p != a && p != b && p != c && Turn(a, b, p) >= 0 &&
                Turn(b, c, p) >= 0 && Turn(c, a, p) >= 0) {
                return true;
            }
        }
    }
    return false;
}
