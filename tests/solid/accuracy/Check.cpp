#include "Check.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "Convex.h"
#include "Depth.h"
#include "Distance.h"

namespace oracle {

const char* Name(Fault fault) {
    static const char* const kNames[kFaultCount] = {"consistency", "contact", "distance", "points",
                                                    "depth",       "parting", "ends"};
    return kNames[static_cast<int>(fault)];
}

bool Tally::HasFaults() const {
    return std::any_of(faults, faults + kFaultCount, [](int count) { return count > 0; });
}

std::string Tally::Text() const {
    std::string text = std::to_string(pairs) + " pairs, " + std::to_string(touching) +
                       " touching, " + std::to_string(unsure) + " too near to tell, " +
                       std::to_string(depths) + " depths\n";
    for (int i = 0; i < kFaultCount; ++i) {
        char line[80];
        std::snprintf(line, sizeof line, "  %-12s %6d wrong, worst %.3g of what is allowed\n",
                      Name(static_cast<Fault>(i)), faults[i], worst[i]);
        text += line;
        text += first[i];
    }
    return text;
}

namespace {

Vec3 Widened(const Point& p) {
    return {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])};
}

class PairCheck {
  public:
    PairCheck(const Pair& pair, const Answers& answers, Tally& tally)
        : m_pair(pair),
          m_answers(answers),
          m_tally(tally),
          m_a(Pieces(pair.a)),
          m_b(Pieces(pair.b)),
          m_size(Radius(m_a) + Radius(m_b)) {
        // Half a unit in the last place of each coordinate, of two points.
        const double reach = std::max(solid::MaxNorm(m_a[0].centre), solid::MaxNorm(m_b[0].centre));
        m_writing = 2 * std::numeric_limits<float>::epsilon() * (reach + m_size);
    }

    void Run(const What& what) {
        ++m_tally.pairs;
        m_tally.touching += m_answers.contact ? 1 : 0;
        if (m_answers.contact != (m_answers.distance == 0) ||
            m_answers.contact != m_answers.hasDepth) {
            Report(Fault::kConsistency, 2, "contact, distance and depth contradict each other");
        }
        m_truth = DistanceOf(m_a, m_b);
        Contact();
        if (what.distance) {
            Distances();
        }
        if (what.depth && m_answers.hasDepth) {
            Depths();
        }
    }

  private:
    void Report(Fault fault, double error, double allowed, const char* text) {
        Report(fault, error <= allowed && allowed == 0 ? 0 : error / allowed, text);
    }
    /// `error` as a part of what is allowed.
    void Report(Fault fault, double error, const char* text) {
        const auto i = static_cast<std::size_t>(fault);
        m_tally.worst[i] = std::max(m_tally.worst[i], error);
        if (error <= 1) {
            return;
        }
        if (m_tally.faults[i]++ > 0) {
            return;
        }
        const Answers& g = m_answers;
        char got[512];
        std::snprintf(
            got, sizeof got,
            "  %s: error %.3g of what is allowed\n  true distance %.9g to %.9g, inside %.3g; got "
            "contact %d, distance %.9g of (%.9g %.9g %.9g) (%.9g %.9g %.9g), depth %d of (%.9g "
            "%.9g %.9g) (%.9g %.9g %.9g)\n",
            text, error, m_truth.lower, m_truth.upper, m_truth.inside, g.contact ? 1 : 0,
            static_cast<double>(g.distance), static_cast<double>(g.point1[0]),
            static_cast<double>(g.point1[1]), static_cast<double>(g.point1[2]),
            static_cast<double>(g.point2[0]), static_cast<double>(g.point2[1]),
            static_cast<double>(g.point2[2]), g.hasDepth ? 1 : 0, static_cast<double>(g.depth1[0]),
            static_cast<double>(g.depth1[1]), static_cast<double>(g.depth1[2]),
            static_cast<double>(g.depth2[0]), static_cast<double>(g.depth2[1]),
            static_cast<double>(g.depth2[2]));
        m_tally.first[i] = got + Describe(m_pair.a) + Describe(m_pair.b);
    }

    void Contact() {
        if (m_truth.lower > bar::kTouching * m_size) {
            Report(Fault::kContact, m_answers.contact ? 2 : 0, "in contact where there is a gap");
        } else if (m_truth.inside > bar::kTouching) {
            Report(Fault::kContact, m_answers.contact ? 0 : 2, "no contact where shapes overlap");
        } else {
            ++m_tally.unsure;
        }
    }

    void Distances() {
        const double got = static_cast<double>(m_answers.distance);
        if (!std::isfinite(got)) {
            Report(Fault::kDistance, got, "distance not finite");
            return;
        }
        const double allowed = bar::kDistance * m_truth.upper + bar::kDistanceOfSize * m_size;
        const double error = std::max(m_truth.lower - got, got - m_truth.upper);
        if (!m_answers.contact || m_truth.upper > bar::kTouching * m_size) {
            Report(Fault::kDistance, error, allowed, "wrong distance");
        }
        const Vec3 p1 = Widened(m_answers.point1);
        const Vec3 p2 = Widened(m_answers.point2);
        const double off = std::max(DistanceOfPoint(p1, m_a), DistanceOfPoint(p2, m_b));
        Report(Fault::kPoints, off, bar::kPoint * m_size + m_writing,
               "a closest point is off its shape");
        if (m_answers.contact) {
            Report(Fault::kPoints, m_answers.point1 == m_answers.point2 ? 0 : 2,
                   "two points instead of a common one");
        } else {
            Report(Fault::kPoints, std::fabs(Length(p1 - p2) - got),
                   bar::kDistance * got + m_writing,
                   "closest points are not as far apart as the distance says");
        }
    }

    void Depths() {
        ++m_tally.depths;
        const Vec3 end1 = Widened(m_answers.depth1);
        const Vec3 end2 = Widened(m_answers.depth2);
        const Vec3 move = end2 - end1;
        const double got = Length(move);
        const bool round = [&] {
            for (const Convex* c : {&m_a[0], &m_b[0]}) {
                if (c->set == Convex::Set::kCylinder || c->set == Convex::Set::kCone) {
                    return true;
                }
            }
            return false;
        }();
        const double floor = bar::kDepthOfSize * m_size + m_writing;
        double deepest = 0;
        double remaining = std::numeric_limits<double>::infinity();
        std::vector<double> known;
        for (const Convex& p : m_a) {
            for (const Convex& q : m_b) {
                if (Length(p.centre - q.centre) > p.Radius() + q.Radius()) {
                    continue;
                }
                if (m_a.size() * m_b.size() > 1 &&
                    DistanceOf(p, q).lower > bar::kTouching * m_size) {
                    continue;
                }
                const Depth depth = DepthOf(p, q);
                deepest = std::max(deepest, depth.value);
                remaining = std::min(remaining, Remaining(p, q, depth, move, floor));
            }
        }
        const double allowed = (round ? bar::kDepthRound : bar::kDepth) * deepest + floor;
        Report(Fault::kDepth, got - deepest, allowed, "too deep");
        Report(Fault::kDepth, deepest - got, allowed, "not deep enough");
        Report(Fault::kParting, remaining, floor, "moving by the depth leaves an overlap");
        Report(Fault::kEnds, std::max(DistanceOfPoint(end1, m_a), DistanceOfPoint(end2, m_b)),
               bar::kEnds * m_size + m_writing, "an end of the depth is off its shape");
    }
    /// Overlap after the first has moved, `floor` and below being none. Short moves in floats do
    /// not hold their direction well: then the moved two are searched for one that parts them.
    static double Remaining(const Convex& p, const Convex& q, const Depth& depth, const Vec3& move,
                            double floor) {
        double remaining = depth.value - Dot(move, depth.direction);
        const double length = Length(move);
        if (length > 0) {
            const Vec3 n = move * (1 / length);
            remaining = std::min(remaining, Overlap(p, q, n) - length);
        }
        if (remaining > floor) {
            Convex moved = p;
            moved.centre += move;
            remaining = std::min(remaining, DepthOf(moved, q).value);
        }
        return remaining;
    }

    const Pair& m_pair;
    const Answers& m_answers;
    Tally& m_tally;
    std::vector<Convex> m_a, m_b;
    double m_size;
    double m_writing = 0;
    Distance m_truth;
};

}  // namespace

void Check(const Pair& pair, const Answers& answers, const What& what, Tally& tally) {
    PairCheck(pair, answers, tally).Run(what);
}

}  // namespace oracle
