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
    static const char* const kNames[kFaultCount] = {"consistency", "contact", "distance",
                                                    "points",      "depth",   "parting",
                                                    "ends",        "swap",    "moved"};
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

class PairCheck {
  public:
    PairCheck(const Pair& pair, const Answers& answers, Tally& tally)
        : m_pair(pair),
          m_answers(answers),
          m_tally(tally),
          m_reference(Widened(&pair.a.matrix[12])),
          m_a(Pieces(pair.a, m_reference)),
          m_b(Pieces(pair.b, m_reference)),
          m_size(Radius(m_a) + Radius(m_b)) {
        // Half a unit in the last place of each coordinate, of two points.
        const double reach = solid::MaxNorm(m_reference) + solid::MaxNorm(m_b[0].centre);
        m_writing = 2 * std::numeric_limits<float>::epsilon() * (reach + m_size);
    }

    void Run(bool checkDepth) {
        ++m_tally.pairs;
        m_tally.touching += m_answers.contact ? 1 : 0;
        if (m_answers.contact != (m_answers.distance == 0) ||
            m_answers.contact != m_answers.inContact || m_answers.contact != m_answers.hasDepth) {
            Report(Fault::kConsistency, 2, "the answers contradict each other");
        }
        m_truth = DistanceOf(m_a, m_b);
        Contact();
        Distances();
        if (checkDepth && m_answers.hasDepth) {
            Depths();
        }
    }
    void Swapped(const Answers& swapped) {
        Report(Fault::kSwap, swapped == oracle::Swapped(m_answers) ? 0 : 2,
               "other answers of the two in the other order");
    }
    /// The same two before a motion that made everything `scale` times as large.
    void Before(const PairCheck& unmoved, double scale) {
        const Answers& before = unmoved.m_answers;
        const double d1 = static_cast<double>(before.distance) * scale;
        const double d2 = static_cast<double>(m_answers.distance);
        Report(Fault::kMoved, std::fabs(d1 - d2),
               2 * (bar::kDistance * d1 + bar::kDistanceOfSize * m_size),
               "another distance before a motion of both");
        const double depth1 = before.Depth() * scale;
        const double depth2 = m_answers.Depth();
        const double allowed = (IsRound() ? bar::kDepthRound : bar::kDepth) * depth1;
        Report(Fault::kMoved, std::fabs(depth1 - depth2),
               allowed + bar::kDepthOfSize * m_size + m_writing + unmoved.m_writing * scale,
               "another depth before a motion of both");
    }

  private:
    bool IsRound() const {
        const auto round = [](const Convex& c) {
            return c.set == Convex::Set::kCylinder || c.set == Convex::Set::kCone;
        };
        return round(m_a[0]) || round(m_b[0]);
    }
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
        } else if (m_truth.inside > bar::kTouching && (m_answers.contact || IsDeep())) {
            Report(Fault::kContact, m_answers.contact ? 0 : 2, "no contact where shapes overlap");
        } else {
            ++m_tally.unsure;
        }
    }
    /// Flat shapes may well be inside each other and yet no further than a touch.
    bool IsDeep() const {
        double deepest = 0;
        for (const Convex& p : m_a) {
            for (const Convex& q : m_b) {
                deepest = std::max(deepest, DepthOf(p, q).value);
            }
        }
        return deepest > bar::kTouching * m_size;
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
        const Vec3 p1 = At(m_answers.point1);
        const Vec3 p2 = At(m_answers.point2);
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
        const Vec3 end1 = At(m_answers.depth1);
        const Vec3 end2 = At(m_answers.depth2);
        const Vec3 move = end2 - end1;
        const double got = Length(move);
        const double floor = bar::kDepthOfSize * m_size + m_writing;
        double deepest = 0;
        double remaining = std::numeric_limits<double>::infinity();
        for (const Convex& p : m_a) {
            for (const Convex& q : m_b) {
                if (Length(p.centre - q.centre) > (p.Radius() + q.Radius()) * 1.000001) {
                    continue;
                }
                if (m_a.size() * m_b.size() > 1 &&
                    DistanceOf(p, q).lower > bar::kTouching * m_size) {
                    continue;
                }
                const Depth depth = DepthOf(p, q, move);
                deepest = std::max(deepest, depth.value);
                remaining = std::min(remaining, Remaining(p, q, depth, move, floor));
            }
        }
        const double allowed = (IsRound() ? bar::kDepthRound : bar::kDepth) * deepest + floor;
        Report(Fault::kDepth, got - deepest, allowed, "too deep");
        // Of two convex sets, parting tells.
        if (m_a.size() * m_b.size() > 1) {
            Report(Fault::kDepth, deepest - got, allowed, "not deep enough");
        }
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
            // No search finds the narrow least of thin shapes that only touch; this does.
            const Distance d = DistanceOf(moved, q);
            remaining = std::min(remaining, d.inside * (p.Radius() + q.Radius()));
        }
        return remaining;
    }

    Vec3 At(const Point& p) const { return Widened(p.data()) - m_reference; }

    const Pair& m_pair;
    const Answers& m_answers;
    Tally& m_tally;
    Vec3 m_reference;
    std::vector<Convex> m_a, m_b;
    double m_size;
    double m_writing = 0;
    Distance m_truth;
};

}  // namespace

Answers Check(const Pair& pair, bool checkDepth, Tally& tally) {
    const EngineObject a(pair.a);
    const EngineObject b(pair.b);
    const Answers answers = Ask(a, b);
    PairCheck check(pair, answers, tally);
    check.Run(checkDepth);
    check.Swapped(Ask(b, a));
    return answers;
}

void CheckMoved(Random& random, const Pair& pair, const Answers& answers, Tally& tally) {
    const Matrix turn = RandomPlacement(random, Placement::kAligned);
    const float scale = std::ldexp(1.0F, random.Below(7) - 3);
    Pair moved = pair;
    for (Spec* spec : {&moved.a, &moved.b}) {
        const Matrix m = spec->matrix;
        for (std::size_t i = 0; i < 15; ++i) {
            const std::size_t column = i / 4 * 4;
            const std::size_t row = i % 4;
            spec->matrix[i] = scale * (m[column] * turn[row] + m[column + 1] * turn[4 + row] +
                                       m[column + 2] * turn[8 + row]);
        }
        spec->margin *= scale;
    }
    for (std::size_t i = 12; i < 15; ++i) {
        const float shift = std::ldexp(1.0F, random.Below(30) - 10);
        const auto exact = [&](float place) {
            const float sum = place + shift;
            return sum - shift == place && sum - place == shift;
        };
        if (exact(moved.a.matrix[i]) && exact(moved.b.matrix[i])) {
            moved.a.matrix[i] += shift;
            moved.b.matrix[i] += shift;
        }
    }
    const Answers again =
        random.Chance(0.5) ? Ask(moved.a, moved.b) : Swapped(Ask(moved.b, moved.a));
    const PairCheck unmoved(pair, answers, tally);
    PairCheck(moved, again, tally).Before(unmoved, static_cast<double>(scale));
}

}  // namespace oracle
