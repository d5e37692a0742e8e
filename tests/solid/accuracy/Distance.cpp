#include "Distance.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

// With d the difference of two points, one of each set, minimise |d|. The norm is written as the
// least s with |d| <= s, all constraints get their self-concordant barrier, and damped Newton steps
// follow the central path as the weight mu of the barriers goes to 0 (S. Boyd, L. Vandenberghe,
// "Convex Optimization", 2004, chapter 11). For given d the best s is known, s = mu + sqrt(mu^2 +
// |d|^2), so it never appears as an unknown. The parameters of the two sets meet in d alone: each
// Newton system comes down to one of 3 by 3, whose solution is the separating direction.

namespace oracle {

namespace {

template <class Real>
struct Vector {
    Real x = 0, y = 0, z = 0;
    Vector() = default;
    Vector(Real x_, Real y_, Real z_) : x(x_), y(y_), z(z_) {}
    explicit Vector(const Vec3& v) : x(v.x), y(v.y), z(v.z) {}
    Vector operator+(const Vector& b) const { return {x + b.x, y + b.y, z + b.z}; }
    Vector operator-(const Vector& b) const { return {x - b.x, y - b.y, z - b.z}; }
    Vector operator*(Real s) const { return {x * s, y * s, z * s}; }
    Real operator*(const Vector& b) const { return x * b.x + y * b.y + z * b.z; }
    Vec3 Rounded() const {
        return {static_cast<double>(x), static_cast<double>(y), static_cast<double>(z)};
    }
};

/// Symmetric and positive definite.
template <class Real>
struct Symmetric {
    Real xx = 0, yy = 0, zz = 0, xy = 0, xz = 0, yz = 0;

    void AddSquare(const Vector<Real>& v, Real weight) { AddProduct(v, v, weight); }
    /// weight * (a b^T + b a^T) / 2
    void AddProduct(const Vector<Real>& a, const Vector<Real>& b, Real weight) {
        xx += weight * a.x * b.x;
        yy += weight * a.y * b.y;
        zz += weight * a.z * b.z;
        xy += weight * (a.x * b.y + a.y * b.x) / 2;
        xz += weight * (a.x * b.z + a.z * b.x) / 2;
        yz += weight * (a.y * b.z + a.z * b.y) / 2;
    }
    void Add(const Symmetric& b) {
        xx += b.xx, yy += b.yy, zz += b.zz;
        xy += b.xy, xz += b.xz, yz += b.yz;
    }
    /// By Cholesky factors, a pivot lost to rounding replaced by a tiny one.
    Vector<Real> Solve(const Vector<Real>& b) const {
        const Real tiny = (xx + yy + zz) * std::numeric_limits<Real>::epsilon() / 16 +
                          std::numeric_limits<Real>::min();
        const Real d1 = std::max(xx, tiny);
        const Real l21 = xy / d1;
        const Real l31 = xz / d1;
        const Real d2 = std::max(yy - l21 * xy, tiny);
        const Real u32 = yz - l31 * xy;
        const Real l32 = u32 / d2;
        const Real d3 = std::max(zz - l31 * xz - l32 * u32, tiny);
        const Real y2 = b.y - l21 * b.x;
        const Real y3 = b.z - l31 * b.x - l32 * y2;
        Vector<Real> r;
        r.z = y3 / d3;
        r.y = y2 / d2 - l32 * r.z;
        r.x = b.x / d1 - l21 * r.y - l31 * r.z;
        return r;
    }
};

/// The parameters of one set, strictly inside their bounds, and the barrier of these bounds. The
/// point of the set is an affine function of the parameters, J its linear part, H the barrier's
/// Hessian, g its gradient.
template <class Real>
class Parameters {
  public:
    Parameters(const Convex& convex, Real scale) : m_set(convex.set) {
        if (m_set == Convex::Set::kHull) {
            for (const Vec3& v : convex.vertices) {
                m_columns.push_back(Vector<Real>(v) * scale);
            }
            m_u.assign(m_columns.size(), 1 / static_cast<Real>(m_columns.size()));
        } else {
            for (const Vec3& axis : convex.axis) {
                m_columns.push_back(Vector<Real>(axis) * scale);
            }
            m_u.assign(3, 0);
            if (m_set == Convex::Set::kCone) {
                // The second parameter is w = (1 - u_y) / 2, the radius of the cone at that height.
                m_base = m_columns[1];
                m_columns[1] = m_columns[1] * Real(-2);
                m_u[1] = Real(0.75);
            }
        }
        m_gradient.assign(m_u.size(), 0);
        m_step.assign(m_u.size(), 0);
        m_trial = m_u;
    }

    Vector<Real> Point() const {
        Vector<Real> p = m_base;
        for (std::size_t i = 0; i < m_u.size(); ++i) {
            p = p + m_columns[i] * m_u[i];
        }
        return p;
    }

    /// The barrier's parameter: the gap at the end of the path is mu times the sum of these.
    Real Degree() const {
        switch (m_set) {
            case Convex::Set::kHull:
                return static_cast<Real>(m_u.size());
            case Convex::Set::kCone:
                return 3;
            default:
                return static_cast<Real>(Balls().size());
        }
    }

    /// J H^-1 J^T; `jhg` = J H^-1 g.
    Symmetric<Real> Prepare(Vector<Real>& jhg) {
        Gradient(m_u, m_gradient);
        Symmetric<Real> m;
        if (m_set == Convex::Set::kHull) {
            // The parameters keep the sum 1: columns count relative to their weighted mean.
            Real sum = 0;
            m_mean = {};
            for (std::size_t i = 0; i < m_u.size(); ++i) {
                sum += m_u[i] * m_u[i];
                m_mean = m_mean + m_columns[i] * (m_u[i] * m_u[i]);
            }
            m_mean = m_mean * (1 / sum);
            m_meanGradient = -1 / sum;
            jhg = {};
            for (std::size_t i = 0; i < m_u.size(); ++i) {
                const Vector<Real> c = m_columns[i] - m_mean;
                m.AddSquare(c, m_u[i] * m_u[i]);
                jhg = jhg + c * (m_u[i] * m_u[i] * m_gradient[i]);
            }
            return m;
        }
        InverseHessian();
        jhg = {};
        for (std::size_t i = 0; i < 3; ++i) {
            Real hg = 0;
            for (std::size_t k = 0; k < 3; ++k) {
                m.AddProduct(m_columns[i], m_columns[k], m_inverse[i][k]);
                hg += m_inverse[i][k] * m_gradient[k];
            }
            jhg = jhg + m_columns[i] * hg;
        }
        return m;
    }

    /// Newton step H^-1 (J^T force - g); returns the part of the squared decrement, step^T H step.
    Real SetStep(const Vector<Real>& force) {
        Real decrement = 0;
        if (m_set == Convex::Set::kHull) {
            for (std::size_t i = 0; i < m_u.size(); ++i) {
                const Real r = (m_columns[i] - m_mean) * force - (m_gradient[i] - m_meanGradient);
                m_step[i] = m_u[i] * m_u[i] * r;
                decrement += m_step[i] * r;
            }
            return decrement;
        }
        Real r[3];
        for (std::size_t i = 0; i < 3; ++i) {
            r[i] = m_columns[i] * force - m_gradient[i];
        }
        for (std::size_t i = 0; i < 3; ++i) {
            m_step[i] = m_inverse[i][0] * r[0] + m_inverse[i][1] * r[1] + m_inverse[i][2] * r[2];
            decrement += m_step[i] * r[i];
        }
        return decrement;
    }

    Vector<Real> PointStep() const {
        Vector<Real> p;
        for (std::size_t i = 0; i < m_u.size(); ++i) {
            p = p + m_columns[i] * m_step[i];
        }
        return p;
    }

    /// False where the trial point leaves the bounds.
    bool Try(Real length) {
        for (std::size_t i = 0; i < m_u.size(); ++i) {
            m_trial[i] = m_u[i] + length * m_step[i];
        }
        return Slack(m_trial) > 0;
    }
    /// Slope of the barrier along the step at the trial point.
    Real TrialSlope() {
        Gradient(m_trial, m_gradient);
        Real slope = 0;
        for (std::size_t i = 0; i < m_u.size(); ++i) {
            slope += m_gradient[i] * m_step[i];
        }
        return slope;
    }
    void Accept() {
        m_u = m_trial;
        if (m_set == Convex::Set::kHull) {
            Real sum = 0;
            for (const Real u : m_u) {
                sum += u;
            }
            for (Real& u : m_u) {
                u /= sum;
            }
        }
    }

    Real Slack() const { return Slack(m_u); }

  private:
    /// The parameters that together stay in a unit ball.
    using Ball = std::vector<std::size_t>;
    const std::vector<Ball>& Balls() const {
        static const std::vector<Ball> kBox = {{0}, {1}, {2}};
        static const std::vector<Ball> kBall = {{0, 1, 2}};
        static const std::vector<Ball> kCylinder = {{0, 2}, {1}};
        return m_set == Convex::Set::kBox ? kBox : m_set == Convex::Set::kBall ? kBall : kCylinder;
    }
    static Real Square(const std::vector<Real>& u, const Ball& ball) {
        Real square = 0;
        for (const std::size_t i : ball) {
            square += u[i] * u[i];
        }
        return square;
    }
    static Real ConeSlack(const std::vector<Real>& u) {
        const Real r = std::sqrt(u[0] * u[0] + u[2] * u[2]);
        return (u[1] - r) * (u[1] + r);
    }

    /// Least distance to a bound, in units of the parameters.
    Real Slack(const std::vector<Real>& u) const {
        if (m_set == Convex::Set::kHull) {
            return *std::min_element(u.begin(), u.end());
        }
        if (m_set == Convex::Set::kCone) {
            return std::min(u[1] - std::sqrt(u[0] * u[0] + u[2] * u[2]), 1 - u[1]);
        }
        Real slack = 1;
        for (const Ball& ball : Balls()) {
            slack = std::min(slack, (1 - Square(u, ball)) / 2);
        }
        return slack;
    }

    void Gradient(const std::vector<Real>& u, std::vector<Real>& g) const {
        if (m_set == Convex::Set::kHull) {
            for (std::size_t i = 0; i < u.size(); ++i) {
                g[i] = -1 / u[i];
            }
        } else if (m_set == Convex::Set::kCone) {
            const Real q = ConeSlack(u);
            g[0] = 2 * u[0] / q;
            g[1] = -2 * u[1] / q + 1 / (1 - u[1]);
            g[2] = 2 * u[2] / q;
        } else {
            for (const Ball& ball : Balls()) {
                const Real q = 1 - Square(u, ball);
                for (const std::size_t i : ball) {
                    g[i] = 2 * u[i] / q;
                }
            }
        }
    }

    /// Not of hulls, whose Hessian is diagonal.
    void InverseHessian() {
        const std::vector<Real>& u = m_u;
        if (m_set != Convex::Set::kCone) {
            // Of -log q, q = 1 - |u|^2, over the parameters of each ball.
            for (const Ball& ball : Balls()) {
                const Real square = Square(u, ball);
                for (const std::size_t i : ball) {
                    for (const std::size_t k : ball) {
                        m_inverse[i][k] =
                            (1 - square) / 2 *
                            ((i == k ? Real(1) : Real(0)) - 2 * u[i] * u[k] / (1 + square));
                    }
                }
            }
            return;
        }
        // z z^T -+ q / 2 for the round side, then a rank-one change for the bottom.
        const Real q = ConeSlack(u);
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t k = 0; k < 3; ++k) {
                m_inverse[i][k] = u[i] * u[k];
            }
            m_inverse[i][i] += i == 1 ? -q / 2 : q / 2;
        }
        const Real bottom = (1 - u[1]) * (1 - u[1]) + m_inverse[1][1];
        const Real s[3] = {m_inverse[0][1], m_inverse[1][1], m_inverse[2][1]};
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t k = 0; k < 3; ++k) {
                m_inverse[i][k] -= s[i] * s[k] / bottom;
            }
        }
    }

    Convex::Set m_set;
    Vector<Real> m_base;
    std::vector<Vector<Real>> m_columns;
    std::vector<Real> m_u, m_trial, m_step, m_gradient;
    Real m_inverse[3][3] = {};
    Vector<Real> m_mean;
    Real m_meanGradient = 0;
};

template <class Real>
class Solver {
  public:
    Solver(const Convex& a, const Convex& b, double scale)
        : m_a(a, static_cast<Real>(scale)),
          m_b(b, static_cast<Real>(scale)),
          m_offset(Vector<Real>(a.centre - b.centre) * static_cast<Real>(scale)) {}

    void Run(Real gap) {
        const Real last = gap / (m_a.Degree() + m_b.Degree() + 2);
        for (Real mu = 1;; mu = std::max(mu / 20, last)) {
            // At the end the direction must be right too, of which the norm is a square.
            const Real enough = mu > last ? Real(0.01) : Real(1e-12);
            const int steps = mu > last ? 60 : 12;
            for (int i = 0; i < steps && !Newton(mu, enough); ++i) {
            }
            if (mu <= last) {
                return;
            }
        }
    }
    /// From b to a.
    Vector<Real> Difference() const { return m_a.Point() - m_b.Point() + m_offset; }
    /// The dual solution: of length 1 at most, along the difference.
    Vector<Real> Direction() const { return m_direction; }
    Vector<Real> Point1() const { return m_a.Point(); }
    Vector<Real> Point2() const { return m_b.Point(); }
    Real Slack() const { return std::min(m_a.Slack(), m_b.Slack()); }

  private:
    /// True when the squared decrement, a distance from the central path, was at most `enough`.
    bool Newton(Real mu, Real enough) {
        const Vector<Real> d = Difference();
        const Real root = std::sqrt(mu * mu + d * d);
        const Real s = mu + root;
        Vector<Real> forceA, forceB;
        Symmetric<Real> m = m_a.Prepare(forceA);
        m.Add(m_b.Prepare(forceB));
        m.AddSquare(d, 1);
        m.xx += mu * s, m.yy += mu * s, m.zz += mu * s;
        m_direction = m.Solve(d * root - (forceA - forceB) * mu);

        const Real weight = 1 / mu;
        Real decrement = m_a.SetStep(m_direction * -weight) + m_b.SetStep(m_direction * weight);
        const Vector<Real> step = m_a.PointStep() - m_b.PointStep();
        // Hessian of the norm's barrier at the best s, along the step.
        const Real along = d * step;
        decrement += (step * step - along * along / (d * d + mu * s)) / (mu * s);
        if (!(decrement > Real(1e-30))) {
            return true;
        }
        const Real sure = 1 / (1 + std::sqrt(decrement));
        for (Real length = 1;; length /= 2) {
            if (length < sure / 4) {
                return true;  // rounding has the last word
            }
            if (m_a.Try(length) && m_b.Try(length) && Slope(d, step, length, mu) <= 0) {
                break;
            }
            if (length <= sure && m_a.Try(length) && m_b.Try(length)) {
                break;
            }
        }
        m_a.Accept();
        m_b.Accept();
        return decrement <= enough;
    }
    Real Slope(const Vector<Real>& d, const Vector<Real>& step, Real length, Real mu) {
        const Vector<Real> there = d + step * length;
        const Real s = mu + std::sqrt(mu * mu + there * there);
        return (there * step) / (mu * s) + m_a.TrialSlope() + m_b.TrialSlope();
    }

    Parameters<Real> m_a, m_b;
    Vector<Real> m_offset;
    Vector<Real> m_direction;
};

/// Gap of the sets along the direction from b to a, from their exact extents.
double Gap(const Convex& a, const Convex& b, const Vec3& n) {
    const double length = Length(n);
    return length > 0 ? (Dot(a.centre - b.centre, n) - a.Extent(-n) - b.Extent(n)) / length : 0;
}

template <class Real>
Distance Solve(const Convex& a, const Convex& b, double gap) {
    const Vec3 offset = a.centre - b.centre;
    const double size = a.Radius() + b.Radius();
    const double reach = size + solid::MaxNorm(offset);
    Distance result;
    if (!(reach > 0)) {
        result.inside = 0;  // two points in one place
        result.point1 = a.centre;
        result.point2 = b.centre;
        return result;
    }
    Solver<Real> solver(a, b, 1 / reach);
    solver.Run(static_cast<Real>(gap));
    const Vec3 d = solver.Difference().Rounded() * reach;
    const double length = Length(d);
    const double margins = a.margin + b.margin;
    result.point1 = a.centre + solver.Point1().Rounded() * reach;
    result.point2 = b.centre + solver.Point2().Rounded() * reach;
    result.upper = std::max(0.0, length - margins);
    if (length > 0) {
        const Vec3 n = d * (1 / length);
        result.lower = std::max({0.0, Gap(a, b, n), Gap(a, b, solver.Direction().Rounded())});
        const double part = margins > length ? length / margins : 1;
        result.point1 -= n * (a.margin * part);
        result.point2 += n * (b.margin * part);
    }
    if (length < 4 * gap * reach) {
        const double slack = static_cast<double>(solver.Slack());
        result.inside = std::max(slack, std::min(1.0, margins / size));
    } else if (margins > length) {
        result.inside = (margins - length) / size;
    }
    return result;
}

}  // namespace

Distance DistanceOf(const Convex& a, const Convex& b) {
    const double reach = a.Radius() + b.Radius() + solid::MaxNorm(a.centre - b.centre);
    Distance result = Solve<double>(a, b, 1e-11);
    if (result.upper - result.lower > 2e-11 * reach && result.inside < 1e-6) {
        // Rounding spoilt the last steps: once more, with more digits.
        result = Solve<long double>(a, b, 1e-13);
    }
    return result;
}

Distance DistanceOf(const std::vector<Convex>& a, const std::vector<Convex>& b) {
    Distance best;
    best.upper = std::numeric_limits<double>::infinity();
    best.lower = best.upper;
    for (const Convex& p : a) {
        for (const Convex& q : b) {
            if (Length(p.centre - q.centre) - p.Radius() - q.Radius() > best.upper) {
                continue;
            }
            const Distance d = DistanceOf(p, q);
            const double inside = std::max(best.inside, d.inside);
            const double lower = std::min(best.lower, d.lower);
            if (d.upper < best.upper) {
                best = d;
            }
            best.inside = inside;
            best.lower = lower;
        }
    }
    return best;
}

double DistanceOfPoint(const Vec3& point, const std::vector<Convex>& pieces) {
    Convex set;
    set.centre = point;
    set.vertices = {Vec3{}};
    return DistanceOf({set}, pieces).upper;
}

}  // namespace oracle
