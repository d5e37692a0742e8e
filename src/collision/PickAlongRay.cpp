/// What a pick answers is told by a walk: a small sphere goes along the ray in up to 20,000 steps
/// and stops at the first at which it touches an object. Here it skips, to the same answer, the
/// steps at which it cannot touch: the sphere's box must reach the object's, and from a step at
/// which the two are a distance apart the sphere has to move as far before they can meet (B.
/// Mirtich, J. Canny, "Impulse-based simulation of rigid bodies", 1995, on conservative
/// advancement). What remains is asked as the walk would ask it.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <queue>
#include <tuple>
#include <vector>

#include "collision/CollisionManager.h"
#include "collision/RunQuery.h"
#include "model/Group.h"
#include "model/Registries.h"
#include "model/SceneObject.h"

namespace {

using Point = std::array<float, 3>;

constexpr float kRadius = 0.05F;
/// The walk goes from 0 to 100 per cent of the ray. Each step adds to a float, with its rounding.
constexpr float kWalkEnd = 100.0F;
constexpr float kWalkStep = 0.005F;

/// Unit: size of the object and its distance. The engine's answers to its two questions, contact
/// and distance, are of one mind about one placement; about two they may differ by some multiple of
/// 1e-6. Steps within this of a contact are asked for contact; a larger value costs time alone.
constexpr double kCertain = 2e-5;

/// Where the walk can meet one object.
struct Candidate {
    std::uint32_t step;    ///< none before it touches
    std::uint32_t end;     ///< nor this one, nor any after
    std::uint32_t record;  ///< of the object, in the store
    DT_ObjectHandle object;
    double size;

    /// The sphere was made after all objects, so that of several at one step a test would report
    /// the one that entered the world first; the line's findings stand in that order.
    bool operator>(const Candidate& other) const noexcept {
        return std::tie(step, record) > std::tie(other.step, other.record);
    }
};

double Squared(double d) noexcept {
    return d * d;
}

}  // namespace

class CCollisionManager::RayWalk {
  public:
    RayWalk(const Point& start, const Point& end)
        : m_start(start),
          m_end(end),
          m_shape(DT_NewSphere(kRadius)),
          m_sphere(DT_CreateObject(nullptr, m_shape.get())) {
        m_remaining.reserve(20'100);
        for (float t = 0.0F; t < kWalkEnd; t += kWalkStep) {
            m_remaining.push_back(kWalkEnd - t);
        }
    }

    /// Takes part in the walk from now on.
    void Add(DT_ObjectHandle object, std::uint32_t record) {
        Point min;
        Point max;
        if (!DT_GetBBox(object, min.data(), max.data())) {
            return;
        }
        Candidate candidate = {0, 0, record, object, 0.0};
        for (std::size_t i = 0; i < 3; ++i) {
            candidate.size += static_cast<double>(max[i]) - static_cast<double>(min[i]);
        }
        const double around = static_cast<double>(kRadius) + kCertain * (candidate.size + 1.0);
        candidate.step = FirstStep(0, StepCount(),
                                   [&](const Point& p) { return !IsBefore(p, min, max, around); });
        candidate.end = FirstStep(candidate.step, StepCount(),
                                  [&](const Point& p) { return IsBehind(p, min, max, around); });
        if (candidate.step < candidate.end) {
            m_candidates.push(candidate);
        }
    }

    /// Walks until the sphere touches. The record of the object that it touches first, or -1 when
    /// it passes all; leaves the sphere's last position in `*point`.
    int Run(Point* point) {
        while (!m_candidates.empty()) {
            Candidate candidate = m_candidates.top();
            m_candidates.pop();
            const Point position = Position(candidate.step);
            DT_SetPosition(m_sphere.get(), position.data());
            if (DT_InContact(candidate.object, m_sphere.get())) {
                *point = position;
                return static_cast<int>(candidate.record);
            }
            candidate.step = NextStep(candidate, position);
            if (candidate.step < candidate.end) {
                m_candidates.push(candidate);
            }
        }
        *point = Position(StepCount() - 1);
        return -1;
    }

  private:
    std::uint32_t StepCount() const noexcept {
        return static_cast<std::uint32_t>(m_remaining.size());
    }

    /// Each operation is rounded to float, in this order, so that the steps are the same
    /// everywhere. Each coordinate goes one way only, as rounding keeps order.
    Point Position(std::uint32_t step) const noexcept {
        Point position;
        for (std::size_t i = 0; i < 3; ++i) {
            position[i] = m_end[i] + ((m_start[i] - m_end[i]) * m_remaining[step]) * 0.01F;
        }
        return position;
    }

    /// The first step from `from` on for which `holds(position)`, which then does for all after;
    /// `to` if there is none before.
    template <class Holds>
    std::uint32_t FirstStep(std::uint32_t from, std::uint32_t to, Holds&& holds) const {
        while (from < to) {
            const std::uint32_t middle = from + (to - from) / 2;
            if (holds(Position(middle))) {
                to = middle;
            } else {
                from = middle + 1;
            }
        }
        return from;
    }

    /// Along some axis, a box of `around` about the position has not yet reached the other box.
    bool IsBefore(const Point& position, const Point& min, const Point& max,
                  double around) const noexcept {
        return IsOff(position, min, max, around, true);
    }
    /// Along some axis, it has passed it.
    bool IsBehind(const Point& position, const Point& min, const Point& max,
                  double around) const noexcept {
        return IsOff(position, min, max, around, false);
    }
    bool IsOff(const Point& position, const Point& min, const Point& max, double around,
               bool before) const noexcept {
        for (std::size_t i = 0; i < 3; ++i) {
            const auto p = static_cast<double>(position[i]);
            const bool ascends = m_start[i] <= m_end[i];
            const bool off = ascends == before ? p + around < static_cast<double>(min[i])
                                               : p - around > static_cast<double>(max[i]);
            if (off) {
                return true;
            }
        }
        return false;
    }

    /// The first step after the candidate's at which the sphere, which stands at `position` apart
    /// from the object, may touch it.
    std::uint32_t NextStep(const Candidate& candidate, const Point& position) const {
        const auto distance = static_cast<double>(
            DT_GetClosestPair(candidate.object, m_sphere.get(), nullptr, nullptr));
        const double certain = distance - kCertain * (distance + candidate.size);
        const double square = certain > 0.0 ? Squared(certain) : 0.0;
        return FirstStep(candidate.step + 1, candidate.end, [&](const Point& p) {
            double moved = 0.0;
            for (std::size_t i = 0; i < 3; ++i) {
                moved += Squared(static_cast<double>(p[i]) - static_cast<double>(position[i]));
            }
            return moved >= square;
        });
    }

    Point m_start;
    Point m_end;
    Shape m_shape;
    Object m_sphere;
    std::vector<float> m_remaining;  ///< at each step, in per cent
    std::priority_queue<Candidate, std::vector<Candidate>, std::greater<>> m_candidates;
};

CSceneObject* CCollisionManager::PickAlongRay(int view, const Point& start, const Point& end,
                                              Point* point) {
    return RunQuery([&]() -> CSceneObject* {
        int found = 0;
        CheckLine(*g_groups.at(0), start, end, true, &found);
        if (found == 0) {
            return nullptr;
        }
        RayWalk walk(start, end);
        bool any = false;
        for (int i = 0; i < found; ++i) {
            const CSceneObject& object =
                *g_objects.at(g_collisionResults[static_cast<std::size_t>(i)].id1);
            if (object.Group()->IsVisibleInView(view)) {
                walk.Add(object.SolidObject(), static_cast<std::uint32_t>(i));
                any = true;
            }
        }
        if (!any) {
            return nullptr;
        }
        Point last;
        const int touched = walk.Run(&last);
        const CCollisionResult picked =
            g_collisionResults[static_cast<std::size_t>(std::max(touched, 0))];
        if (touched >= 0) {
            g_collisionResults.push_back(picked);
        }
        *point = last;
        return g_objects.at(picked.id1);
    });
}
