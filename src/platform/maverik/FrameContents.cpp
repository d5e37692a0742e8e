#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

#include "platform/maverik/FrameContentsData.h"

namespace {

using Data = FrameContents::Data;

/// Coordinates beyond this are not drawn: their squares must be floats.
constexpr double kGreatestCoordinate = 1e18;
/// A circle may be drawn with so few corners that it is nowhere farther off than this, in pixels.
constexpr double kRoundness = 0.3;
constexpr std::size_t kMostUnitShapes = 4096;
constexpr int kMostAround = 512;
constexpr Finish kMatt = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}, 0};
constexpr MAV_colour kWhite = {1, 1, 1, 1};

constexpr std::size_t kAhead = 6;
constexpr std::size_t kCacheLine = 64;

void Prefetch([[maybe_unused]] const void* address) noexcept {
#if defined(__GNUC__)
    __builtin_prefetch(address);
#endif
}

std::size_t HashWords(const void* data, std::size_t words) noexcept {
    const auto* const bytes = static_cast<const unsigned char*>(data);
    std::uint64_t hash = 0xcbf29ce484222325;
    for (std::size_t i = 0; i < 4 * words; i += 4) {
        const std::uint32_t word = static_cast<std::uint32_t>(bytes[i]) |
                                   static_cast<std::uint32_t>(bytes[i + 1]) << 8 |
                                   static_cast<std::uint32_t>(bytes[i + 2]) << 16 |
                                   static_cast<std::uint32_t>(bytes[i + 3]) << 24;
        hash = (hash ^ word) * 0x100000001b3;
        hash ^= hash >> 32;
    }
    return hash;
}

/// Planes of the view volume in eye coordinates (G. Gribb, K. Hartmann, "Fast extraction of viewing
/// frustum planes", 2001). A projection without a volume gives planes that hide nothing.
std::array<Data::Plane, 6> PlanesOf(const MAV_matrix& projection) {
    struct Side {
        std::size_t row;
        double sign;
    };
    constexpr std::array<Side, 6> kSides = {{{8, 1}, {8, -1}, {0, 1}, {0, -1}, {4, 1}, {4, -1}}};
    std::array<Data::Plane, 6> planes;
    for (std::size_t i = 0; i < planes.size(); ++i) {
        const auto [row, sign] = kSides[i];
        std::array<double, 4> p;
        for (std::size_t k = 0; k < 4; ++k) {
            p[k] = static_cast<double>(projection[12 + k]) + sign * projection[row + k];
        }
        const double length = std::hypot(p[0], p[1], p[2]);
        planes[i] = std::isfinite(length) && std::isfinite(p[3]) && length > 0
                        ? Data::Plane{p[0] / length, p[1] / length, p[2] / length, p[3] / length}
                        : Data::Plane{0, 0, 0, 0};
    }
    return planes;
}

/// The map of the rows followed by the matrix.
AffineRows Compose(const MAV_matrix& m, const AffineRows& rows) noexcept {
    AffineRows product;
    for (std::size_t i = 0; i < 12; i += 4) {
        const double a = m[i], b = m[i + 1], c = m[i + 2];
        for (std::size_t k = 0; k < 4; ++k) {
            product[i + k] = a * rows[k] + b * rows[4 + k] + c * rows[8 + k];
        }
        product[i + 3] += m[i + 3];
    }
    return product;
}

bool IsDrawable(const AffineRows& rows) noexcept {
    return std::all_of(rows.begin(), rows.end(),
                       [](double x) { return std::abs(x) < kGreatestCoordinate; });
}

/// A sphere in eye coordinates, and where it is in the view.
struct Seen {
    double x, y, z, radius;
    bool visible;
    bool beyondNear;  ///< all of it is behind the near plane, so that nothing is cut open
};

Seen Look(const Data& data, const AffineRows& toEye, const std::array<double, 3>& centre,
          double radius) noexcept {
    const auto row = [&](std::size_t i) {
        return toEye[i] * centre[0] + toEye[i + 1] * centre[1] + toEye[i + 2] * centre[2] +
               toEye[i + 3];
    };
    Seen seen = {row(0), row(4), row(8), radius, true, false};
    // The matrices of shaders are of single precision: what is seen may stand this much elsewhere.
    const double slack = 1e-5 * (std::abs(seen.x) + std::abs(seen.y) + std::abs(seen.z) + radius);
    const auto distance = [&](const Data::Plane& p) {
        return p.a * seen.x + p.b * seen.y + p.c * seen.z + p.d;
    };
    for (const Data::Plane& plane : data.planes) {
        if (distance(plane) < -radius - slack) {
            seen.visible = false;
            return seen;
        }
    }
    seen.beyondNear = distance(data.planes[0]) > radius + slack;
    return seen;
}

FrameInstance MakeInstance(const AffineRows& toEye, const MAV_colour& colour, float xTile,
                           float yTile) noexcept {
    FrameInstance instance;
    double greatest = 0;
    for (std::size_t i = 0; i < 12; ++i) {
        instance.toEye[i] = static_cast<float>(toEye[i]);
        greatest = i % 4 == 3 ? greatest : std::max(greatest, std::abs(toEye[i]));
    }
    const double scale = greatest > 0 ? 1 / greatest : 0;
    const auto& m = toEye;
    const double determinant = scale * m[0] * (scale * m[5] * m[10] - scale * m[6] * m[9]) -
                               scale * m[1] * (scale * m[4] * m[10] - scale * m[6] * m[8]) +
                               scale * m[2] * (scale * m[4] * m[9] - scale * m[5] * m[8]);
    instance.colour = {colour.r, colour.g, colour.b, colour.a};
    instance.xTile = xTile;
    instance.yTile = yTile;
    instance.normalScale = static_cast<float>(std::min(scale, 1e30));
    instance.side = determinant < 0 ? -1.0f : 1.0f;
    return instance;
}

/// Corners that are enough for a circle of a radius up to `pixels`.
struct Rounding {
    int corners;
    double pixels;
};
constexpr std::array kCorners = {6, 8, 10, 12, 14, 16, 20, 24, 32, 48, 64, 96, 128, 192, 256};

const std::array<Rounding, kCorners.size()>& Roundings() noexcept {
    static const auto kRoundings = [] {
        std::array<Rounding, kCorners.size()> table;
        for (std::size_t i = 0; i < table.size(); ++i) {
            // The middle of a chord of an n-th of the circle is r (1 - cos(pi / n)) away from it.
            table[i] = {kCorners[i], kRoundness / (1 - std::cos(std::numbers::pi / kCorners[i]))};
        }
        return table;
    }();
    return kRoundings;
}

/// What the surface of an object says, by the palette.
struct Appearance {
    MAV_colour colour;
    BatchKey key;  ///< texture, finish, lit
};

class Collector {
  public:
    Collector(Data& data, const MAV_palette& palette, bool transparency)
        : m_data(data), m_palette(palette), m_transparency(transparency) {}

    void Add(MAV_object& object) {
        SizedShape sized;
        VertexArrays arrays;
        if (ReadSizedShape(object, sized)) {
            AddSized(object, sized);
        } else if (ReadVertexArrays(object, arrays)) {
            AddVertices(object, arrays);
        }
    }

  private:
    Appearance AppearanceOf(const MAV_surfaceParams* surface) {
        const MAV_surfaceMode mode = surface != nullptr ? surface->mode : MAV_MATERIAL;
        Appearance look = {kWhite, {}};
        if (mode == MAV_COLOUR) {
            const auto i = static_cast<std::size_t>(surface->colour);
            look.colour = i < kMostColours ? m_palette.colours[i] : kWhite;
        } else if (mode == MAV_TEXTURE) {
            const auto i = static_cast<std::size_t>(surface->texture);
            look.key.lit = true;
            look.key.finish = FinishNumber(kMatt);
            if (i < kMostTextures && m_palette.textures[i].image) {
                look.key.texture = static_cast<std::uint32_t>(i + 1);
                look.colour.a = m_palette.textures[i].alpha;
            }
        } else {
            const auto i = static_cast<std::size_t>(surface != nullptr ? surface->material : 0);
            look.key.lit = true;
            if (i < m_palette.materials.size()) {
                const MAV_material& m = m_palette.materials[i];
                look.colour = m.diffuse;
                look.key.finish = FinishNumber({{m.ambient.r, m.ambient.g, m.ambient.b},
                                                {m.specular.r, m.specular.g, m.specular.b},
                                                {m.emission.r, m.emission.g, m.emission.b},
                                                m.shininess});
            } else {
                look.key.finish = FinishNumber(kMatt);
            }
        }
        if (!m_transparency || !(look.colour.a < 1)) {
            look.colour.a = 1;
        }
        return look;
    }

    std::uint32_t FinishNumber(const Finish& finish) {
        std::vector<Finish>& finishes = m_data.finishes;
        if (m_finish < finishes.size() && finishes[m_finish] == finish) {
            return m_finish;
        }
        const auto next = static_cast<std::uint32_t>(finishes.size());
        if (next == BatchKey::kMostFinishes) {
            return 0;
        }
        const auto [found, isNew] = m_data.finishNumbers.try_emplace(finish, next);
        if (isNew) {
            finishes.push_back(finish);
        }
        m_finish = found->second;
        return m_finish;
    }

    std::uint32_t ShapeNumber(const UnitShape& shape) {
        std::vector<UnitShape>& shapes = m_data.shapes;
        std::uint32_t& last = m_lastShapes[static_cast<std::size_t>(shape.shape)];
        if (last < shapes.size() && shapes[last] == shape) {
            return last;
        }
        const auto next = static_cast<std::uint32_t>(shapes.size());
        const auto [found, isNew] = m_data.shapeNumbers.try_emplace(shape, next);
        if (isNew) {
            try {
                shapes.push_back(shape);
            } catch (...) {
                // Both stand for the next frame too.
                m_data.shapeNumbers.erase(found);
                throw;
            }
        }
        last = found->second;
        return last;
    }

    void AddSized(const MAV_object& object, const SizedShape& sized) {
        const AffineRows rows = Compose(
            m_data.setup.view, ScaledRows(*sized.matrix, sized.sizeX, sized.sizeY, sized.sizeZ));
        if (!IsDrawable(rows)) {
            return;
        }
        const Seen seen = Look(m_data, rows, {0, 0, 0}, SizedRadius(object.shape, rows));
        if (!seen.visible) {
            return;
        }
        UnitShape shape;
        bool closed = true;
        float xTile = 1, yTile = 1;
        const MAV_surfaceParams* surface = nullptr;
        DescribeSized(object, sized, shape, closed, xTile, yTile, surface);
        Simplify(shape, seen);
        Appearance look = AppearanceOf(surface);
        look.key.mesh = ShapeNumber(shape);
        look.key.hideBack =
            m_data.setup.cullBackfaces || (closed && seen.beyondNear && look.colour.a >= 1);
        Store(look, rows, seen, xTile, yTile);
    }

    static void DescribeSized(const MAV_object& object, const SizedShape& sized, UnitShape& shape,
                              bool& closed, float& xTile, float& yTile,
                              const MAV_surfaceParams*& surface) {
        shape.shape = object.shape;
        const auto take = [&](const auto& record) {
            xTile = record.xTile;
            yTile = record.yTile;
            surface = record.surfaceParams;
        };
        if (object.shape == mav_class_box) {
            take(*static_cast<const MAV_box*>(object.record));
            return;
        }
        if (object.shape == mav_class_sphere) {
            const auto& sphere = *static_cast<const MAV_sphere*>(object.record);
            take(sphere);
            shape.around = std::clamp(sphere.vertexCount, 3, kMostAround);
            shape.slices = std::clamp(sphere.sliceCount, 2, kMostAround);
            return;
        }
        const auto takeRound = [&](const auto& record) {
            take(record);
            shape.around = std::clamp(record.vertexCount, 3, kMostAround);
            shape.caps = record.endCaps != 0;
        };
        if (object.shape == mav_class_cylinder) {
            takeRound(*static_cast<const MAV_cylinder*>(object.record));
        } else {
            takeRound(*static_cast<const MAV_cone*>(object.record));
        }
        shape.topRatio = static_cast<float>(sized.topRatio);
        shape.bottomRatio = static_cast<float>(sized.bottomRatio);
        closed = shape.caps;
    }

    /// Fewer corners where nobody could see the difference: shapes that are small on the screen.
    void Simplify(UnitShape& shape, const Seen& seen) const noexcept {
        if (shape.shape == mav_class_box) {
            return;
        }
        const double nearest = -seen.z - seen.radius;
        const double distance = m_data.setup.orthogonal ? 1 : nearest;
        if (!(distance > 0)) {
            return;
        }
        const double pixels = seen.radius * m_data.pixelScale / distance;
        const auto enough = std::find_if(Roundings().begin(), Roundings().end(),
                                         [&](const Rounding& r) { return pixels <= r.pixels; });
        if (enough == Roundings().end()) {
            return;
        }
        shape.around = std::min(shape.around, enough->corners);
        shape.slices = std::min(shape.slices, std::max(enough->corners / 2, 3));
    }

    void AddVertices(MAV_object& object, const VertexArrays& arrays) {
        const AffineRows rows =
            Compose(m_data.setup.view, ScaledRows(ObjectMatrix(object), 1, 1, 1));
        if (!IsDrawable(rows) || arrays.pieces <= 0) {
            return;
        }
        const GeometrySource source = SourceOf(arrays);
        if (!object.drawing || object.drawing->source != source || object.drawing->IsLost()) {
            object.drawing = NewDrawing(arrays, object.shape == mav_class_polyline);
        }
        const LocalExtent& extent = object.drawing->extent;
        if (extent.radius < 0) {
            return;
        }
        const std::array<double, 3> centre = {extent.centre.x, extent.centre.y, extent.centre.z};
        const Seen seen = Look(m_data, rows, centre, extent.radius * GreatestStretch(rows));
        if (!seen.visible) {
            return;
        }
        AffineRows centred = rows;
        centred[3] = seen.x;
        centred[7] = seen.y;
        centred[11] = seen.z;
        if (!IsDrawable(centred)) {
            return;
        }
        if (object.shape == mav_class_polyline) {
            AddLines(object, centred);
            return;
        }
        const MAV_surfaceParams* const surface =
            object.shape == mav_class_polygon
                ? static_cast<const MAV_polygon*>(object.record)->surfaceParams
                : static_cast<const MAV_polygonGrp*>(object.record)->surfaceParams;
        Appearance look = AppearanceOf(surface);
        look.key.isDrawing = true;
        look.key.mesh = static_cast<std::uint32_t>(m_data.drawings.size());
        look.key.hideBack = m_data.setup.cullBackfaces;
        m_data.drawings.push_back(object.drawing);
        Store(look, centred, seen, 1, 1);
    }

    static std::shared_ptr<MAV_drawing> NewDrawing(const VertexArrays& arrays, bool lines) {
        auto drawing = std::make_shared<MAV_drawing>();
        drawing->source = SourceOf(arrays);
        drawing->extent = ExtentOf(arrays);
        drawing->isLines = lines;
        if (drawing->extent.radius < 0) {
            return drawing;
        }
        auto geometry = std::make_unique<Geometry>();
        const std::size_t count = arrays.VertexCount();
        geometry->pieces = static_cast<std::size_t>(arrays.pieces);
        geometry->uniformCount = arrays.uniformCount;
        if (arrays.counts != nullptr) {
            geometry->counts.assign(arrays.counts, arrays.counts + arrays.pieces);
        }
        geometry->vertices.assign(arrays.vertices, arrays.vertices + count);
        if (arrays.texCoords != nullptr) {
            geometry->texCoords.assign(arrays.texCoords, arrays.texCoords + count);
        }
        // Three corners need no normal.
        if (arrays.normals != nullptr && !(arrays.counts == nullptr && arrays.uniformCount == 3)) {
            geometry->normals.assign(arrays.normals, arrays.normals + arrays.pieces);
        }
        drawing->geometry = std::move(geometry);
        return drawing;
    }

    void AddLines(const MAV_object& object, const AffineRows& toEye) {
        const auto& record = *static_cast<const MAV_polyline*>(object.record);
        const auto drawing = static_cast<std::uint32_t>(m_data.drawings.size());
        m_data.drawings.push_back(object.drawing);
        const auto surfaceOf = [&](int line) {
            return record.lineSurfaces != nullptr ? record.lineSurfaces[line]
                                                  : record.surfaceParams;
        };
        int first = 0;
        while (first < record.lineCount) {
            const MAV_surfaceParams* const surface = surfaceOf(first);
            const MAV_colour colour = AppearanceOf(surface).colour;
            int end = record.lineSurfaces != nullptr ? first + 1 : record.lineCount;
            while (end < record.lineCount &&
                   (surfaceOf(end) == surface || AppearanceOf(surfaceOf(end)).colour == colour)) {
                ++end;
            }
            m_data.lines.push_back(
                {drawing, static_cast<std::uint32_t>(m_data.instances.size()), first, end});
            m_data.instances.push_back(MakeInstance(toEye, colour, 1, 1));
            first = end;
        }
    }

    void Store(Appearance& look, const AffineRows& toEye, const Seen& seen, float xTile,
               float yTile) {
        const auto number = static_cast<std::uint32_t>(m_data.instances.size());
        const FrameInstance& instance =
            m_data.instances.emplace_back(MakeInstance(toEye, look.colour, xTile, yTile));
        look.key.mirrored = instance.side < 0;
        const FrameItem item = {look.key.Pack(), static_cast<float>(-seen.z), number};
        (look.colour.a < 1 ? m_data.transparent : m_data.opaque).push_back(item);
    }

    Data& m_data;
    const MAV_palette& m_palette;
    const bool m_transparency;
    std::uint32_t m_finish = 0;
    std::array<std::uint32_t, mav_class_cone + 1> m_lastShapes = {};
};

}  // namespace

std::size_t FinishHash::operator()(const Finish& finish) const noexcept {
    static_assert(sizeof(Finish) == 40);
    return HashWords(&finish, 10);
}

std::size_t UnitShapeHash::operator()(const UnitShape& shape) const noexcept {
    const std::array<std::uint32_t, 6> words = {static_cast<std::uint32_t>(shape.shape),
                                                static_cast<std::uint32_t>(shape.around),
                                                static_cast<std::uint32_t>(shape.slices),
                                                shape.caps,
                                                std::bit_cast<std::uint32_t>(shape.topRatio),
                                                std::bit_cast<std::uint32_t>(shape.bottomRatio)};
    return HashWords(words.data(), words.size());
}

FrameContents::FrameContents() : m_data(std::make_unique<Data>()) {}

FrameContents::~FrameContents() = default;

void FrameContents::Begin(const ViewSetup& setup, const MAV_palette& palette) {
    Data& data = *m_data;
    data.instances.clear();
    data.opaque.clear();
    data.transparent.clear();
    data.lines.clear();
    data.texts.clear();
    data.drawings.clear();
    data.finishes.clear();
    data.finishNumbers.clear();
    if (data.shapes.size() > kMostUnitShapes) {
        data.shapes.clear();
        data.shapeNumbers.clear();
    }
    data.setup = setup;
    data.lights = palette.lights;
    for (std::size_t i = 0; i < data.images.size(); ++i) {
        if (data.images[i] != palette.textures[i].image) {
            data.images[i] = palette.textures[i].image;
        }
    }
    data.planes = PlanesOf(setup.projection);
    data.pixelScale = std::max(std::abs(static_cast<double>(setup.projection[0])) * setup.width,
                               std::abs(static_cast<double>(setup.projection[5])) * setup.height) /
                      2;
}

void FrameContents::Collect(const MAV_SMS& sms, const MAV_palette& palette, bool transparency) {
    Collector collector(*m_data, palette, transparency);
    const std::vector<MAV_object*>& objects = sms.objects;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        // Objects and records lie anywhere; waiting for memory would take half of the time.
        if (i + 2 * kAhead < objects.size()) {
            Prefetch(objects[i + 2 * kAhead]);
            Prefetch(objects[i + kAhead]->record);
            Prefetch(static_cast<const char*>(objects[i + kAhead]->record) + kCacheLine);
        }
        collector.Add(*objects[i]);
    }
}

void FrameContents::AddText(const std::string& text, const MAV_colour& colour, float x, float y) {
    m_data->texts.push_back({text, colour, x, y});
}
