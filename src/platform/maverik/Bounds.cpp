#include "platform/maverik/Bounds.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

struct Columns {
    double xx, yy, zz, xy, xz, yz;  // products of the columns with each other
};

Columns ColumnProducts(const AffineRows& m) noexcept {
    const auto dot = [&](std::size_t i, std::size_t j) {
        return m[i] * m[j] + m[4 + i] * m[4 + j] + m[8 + i] * m[8 + j];
    };
    return {dot(0, 0),           dot(1, 1),           dot(2, 2),
            std::abs(dot(0, 1)), std::abs(dot(0, 2)), std::abs(dot(1, 2))};
}

bool IsFinite(const MAV_vector& v) noexcept {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

template <class Record>
const Record& RecordOf(const MAV_object& object) noexcept {
    return *static_cast<const Record*>(object.record);
}

/// An interval of each of the three coordinates in the world.
struct WorldBox {
    std::array<double, 3> low;
    std::array<double, 3> high;

    static WorldBox Empty() noexcept {
        constexpr double kInfinity = std::numeric_limits<double>::infinity();
        return {{kInfinity, kInfinity, kInfinity}, {-kInfinity, -kInfinity, -kInfinity}};
    }
    void Include(std::size_t axis, double from, double to) noexcept {
        low[axis] = std::min(low[axis], from);
        high[axis] = std::max(high[axis], to);
    }
};

void IncludeSized(MAV_class kind, const SizedShape& shape, const AffineRows& m,
                  WorldBox& box) noexcept {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double x = m[4 * axis], y = m[4 * axis + 1], z = m[4 * axis + 2];
        const double middle = m[4 * axis + 3];
        if (kind == mav_class_box) {
            const double reach = (std::abs(x) + std::abs(y) + std::abs(z)) / 2;
            box.Include(axis, middle - reach, middle + reach);
        } else if (kind == mav_class_sphere) {
            const double reach = std::hypot(x, y, z);
            box.Include(axis, middle - reach, middle + reach);
        } else {
            const double disc = std::hypot(x, y);
            for (const auto& [ratio, end] :
                 {std::pair(shape.topRatio, 0.5), std::pair(shape.bottomRatio, -0.5)}) {
                const double at = middle + end * z;
                box.Include(axis, at - ratio * disc, at + ratio * disc);
            }
        }
    }
}

void IncludeVertices(const VertexArrays& arrays, const AffineRows& m, WorldBox& box) noexcept {
    const std::size_t count = arrays.VertexCount();
    for (std::size_t i = 0; i < count; ++i) {
        const MAV_vector& v = arrays.vertices[i];
        if (!IsFinite(v)) {
            continue;
        }
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double at =
                m[4 * axis] * v.x + m[4 * axis + 1] * v.y + m[4 * axis + 2] * v.z + m[4 * axis + 3];
            box.Include(axis, at, at);
        }
    }
}

}  // namespace

bool IsFinite(const AffineRows& rows) noexcept {
    return std::all_of(rows.begin(), rows.end(), [](double x) { return std::isfinite(x); });
}

bool ReadSizedShape(const MAV_object& object, SizedShape& shape) noexcept {
    switch (object.shape) {
        case mav_class_box: {
            const auto& box = RecordOf<MAV_box>(object);
            shape = {box.width, box.height, box.depth, 0, 0, &box.matrix};
            return true;
        }
        case mav_class_sphere: {
            const auto& sphere = RecordOf<MAV_sphere>(object);
            shape = {sphere.radius, sphere.radius, sphere.radius, 0, 0, &sphere.matrix};
            return true;
        }
        case mav_class_cylinder: {
            const auto& cylinder = RecordOf<MAV_cylinder>(object);
            shape = {cylinder.radius, cylinder.radius, cylinder.height, 1, 1, &cylinder.matrix};
            return true;
        }
        case mav_class_cone: {
            const auto& cone = RecordOf<MAV_cone>(object);
            const double top = std::abs(cone.topRadius), bottom = std::abs(cone.bottomRadius);
            const double radius = std::isfinite(top + bottom)
                                      ? std::max(top, bottom)
                                      : std::numeric_limits<double>::quiet_NaN();
            const double by = radius > 0 ? radius : 1;
            shape = {radius, radius, cone.height, top / by, bottom / by, &cone.matrix};
            return true;
        }
        default:
            return false;
    }
}

const MAV_matrix& ObjectMatrix(const MAV_object& object) noexcept {
    switch (object.shape) {
        case mav_class_box:
            return RecordOf<MAV_box>(object).matrix;
        case mav_class_sphere:
            return RecordOf<MAV_sphere>(object).matrix;
        case mav_class_cylinder:
            return RecordOf<MAV_cylinder>(object).matrix;
        case mav_class_cone:
            return RecordOf<MAV_cone>(object).matrix;
        case mav_class_polygon:
            return RecordOf<MAV_polygon>(object).matrix;
        case mav_class_polygonGrp:
            return RecordOf<MAV_polygonGrp>(object).matrix;
        case mav_class_polyline:
            return RecordOf<MAV_polyline>(object).matrix;
    }
    return MAV_ID_MATRIX;
}

AffineRows ScaledRows(const MAV_matrix& matrix, double x, double y, double z) noexcept {
    AffineRows rows;
    for (std::size_t i = 0; i < 12; i += 4) {
        rows[i] = static_cast<double>(matrix[i]) * x;
        rows[i + 1] = static_cast<double>(matrix[i + 1]) * y;
        rows[i + 2] = static_cast<double>(matrix[i + 2]) * z;
        rows[i + 3] = static_cast<double>(matrix[i + 3]);
    }
    return rows;
}

double SizedRadius(MAV_class shape, const AffineRows& rows) noexcept {
    // |Mp|^2 = p'(M'M)p, bounded over the points p of the shape; equal where the columns of M stand
    // at right angles to each other.
    const Columns c = ColumnProducts(rows);
    switch (shape) {
        case mav_class_box:
            return std::sqrt(c.xx + c.yy + c.zz + 2 * (c.xy + c.xz + c.yz)) / 2;
        case mav_class_sphere:
            return GreatestStretch(rows);
        default:
            return std::sqrt(std::max(c.xx, c.yy) + c.xy + c.zz / 4 +
                             std::sqrt(c.xz * c.xz + c.yz * c.yz));
    }
}

double GreatestStretch(const AffineRows& rows) noexcept {
    // The greatest eigenvalue of M'M is at most the greatest sum of a row (Gershgorin 1931).
    const Columns c = ColumnProducts(rows);
    return std::sqrt(std::max({c.xx + c.xy + c.xz, c.yy + c.xy + c.yz, c.zz + c.xz + c.yz}));
}

std::size_t VertexArrays::VertexCount() const noexcept {
    if (counts == nullptr) {
        return static_cast<std::size_t>(std::max(pieces, 0)) *
               static_cast<std::size_t>(std::max(uniformCount, 0));
    }
    std::size_t sum = 0;
    for (int i = 0; i < pieces; ++i) {
        sum += static_cast<std::size_t>(std::max(counts[i], 0));
    }
    return sum;
}

bool ReadVertexArrays(const MAV_object& object, VertexArrays& arrays) noexcept {
    switch (object.shape) {
        case mav_class_polygon: {
            const auto& polygon = RecordOf<MAV_polygon>(object);
            arrays = {polygon.vertices, polygon.texCoords,   &polygon.normal,
                      nullptr,          polygon.vertexCount, 1};
            return true;
        }
        case mav_class_polygonGrp: {
            const auto& group = RecordOf<MAV_polygonGrp>(object);
            arrays = {group.vertices,    group.texCoords, group.normals, group.vertexCounts, 3,
                      group.polygonCount};
            return true;
        }
        case mav_class_polyline: {
            const auto& lines = RecordOf<MAV_polyline>(object);
            arrays = {lines.vertices, nullptr, nullptr, lines.vertexCounts, 0, lines.lineCount};
            return true;
        }
        default:
            return false;
    }
}

GeometrySource SourceOf(const VertexArrays& arrays) noexcept {
    return {arrays.vertices, arrays.counts, arrays.texCoords, arrays.pieces, arrays.uniformCount};
}

LocalExtent ExtentOf(const VertexArrays& arrays) noexcept {
    const std::size_t count = arrays.VertexCount();
    WorldBox box = WorldBox::Empty();
    IncludeVertices(arrays, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}, box);
    if (!(box.low[0] <= box.high[0])) {
        return {};
    }
    const auto middle = [&](std::size_t i) {
        return static_cast<float>((box.low[i] + box.high[i]) / 2);
    };
    const auto half = [&](std::size_t i) {
        return static_cast<float>((box.high[i] - box.low[i]) / 2);
    };
    LocalExtent extent;
    extent.centre = {middle(0), middle(1), middle(2)};
    extent.half = {half(0), half(1), half(2)};
    double farthest = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const MAV_vector& v = arrays.vertices[i];
        if (IsFinite(v)) {
            const double x = static_cast<double>(v.x) - extent.centre.x;
            const double y = static_cast<double>(v.y) - extent.centre.y;
            const double z = static_cast<double>(v.z) - extent.centre.z;
            farthest = std::max(farthest, x * x + y * y + z * z);
        }
    }
    // A little more, so that the rounding to float never leaves a vertex outside.
    extent.radius = static_cast<float>(std::sqrt(farthest) * (1 + 1e-6));
    return extent;
}

MAV_bounds mav_objectBounds(const MAV_object* object) noexcept {
    constexpr MAV_bounds kNone = {{0, 0, 0}, -1};
    SizedShape sized;
    VertexArrays arrays;
    std::array<double, 3> centre = {0, 0, 0};
    double radius = -1;
    AffineRows rows;
    if (ReadSizedShape(*object, sized)) {
        rows = ScaledRows(*sized.matrix, sized.sizeX, sized.sizeY, sized.sizeZ);
        radius = SizedRadius(object->shape, rows);
    } else if (ReadVertexArrays(*object, arrays)) {
        const MAV_drawing* const drawing = object->drawing.get();
        const LocalExtent extent = drawing != nullptr && drawing->source == SourceOf(arrays)
                                       ? drawing->extent
                                       : ExtentOf(arrays);
        rows = ScaledRows(ObjectMatrix(*object), 1, 1, 1);
        if (extent.radius < 0) {
            return kNone;
        }
        centre = {extent.centre.x, extent.centre.y, extent.centre.z};
        radius = extent.radius * GreatestStretch(rows);
    }
    const auto coordinate = [&](std::size_t i) {
        return static_cast<float>(rows[i] * centre[0] + rows[i + 1] * centre[1] +
                                  rows[i + 2] * centre[2] + rows[i + 3]);
    };
    const MAV_bounds bounds = {{coordinate(0), coordinate(4), coordinate(8)},
                               static_cast<float>(radius)};
    return IsFinite(bounds.centre) && std::isfinite(bounds.radius) ? bounds : kNone;
}

bool mav_objectBox(const MAV_object* object, MAV_vector& low, MAV_vector& high) noexcept {
    if (mav_objectBounds(object).radius < 0) {
        return false;
    }
    WorldBox box = WorldBox::Empty();
    SizedShape sized;
    VertexArrays arrays;
    if (ReadSizedShape(*object, sized)) {
        IncludeSized(object->shape, sized,
                     ScaledRows(*sized.matrix, sized.sizeX, sized.sizeY, sized.sizeZ), box);
    } else if (ReadVertexArrays(*object, arrays)) {
        IncludeVertices(arrays, ScaledRows(ObjectMatrix(*object), 1, 1, 1), box);
    }
    const auto toFloat = [](const std::array<double, 3>& v) {
        return MAV_vector{static_cast<float>(v[0]), static_cast<float>(v[1]),
                          static_cast<float>(v[2])};
    };
    low = toFloat(box.low);
    high = toFloat(box.high);
    return true;
}

bool mav_SMSBox(const MAV_SMS* sms, MAV_vector& low, MAV_vector& high) noexcept {
    bool isEmpty = true;
    for (const MAV_object* object : sms->objects) {
        MAV_vector l;
        MAV_vector h;
        if (!mav_objectBox(object, l, h)) {
            continue;
        }
        if (isEmpty) {
            low = l;
            high = h;
            isEmpty = false;
        }
        for (float MAV_vector::*axis : {&MAV_vector::x, &MAV_vector::y, &MAV_vector::z}) {
            low.*axis = std::min(low.*axis, l.*axis);
            high.*axis = std::max(high.*axis, h.*axis);
        }
    }
    return !isEmpty;
}
