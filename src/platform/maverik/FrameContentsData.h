#pragma once

/// What a frame is made of, as collecting leaves it and drawing reads it.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/maverik/Bounds.h"
#include "platform/maverik/MeshBuilder.h"
#include "platform/maverik/Renderer.h"

/// One object as the shaders take it.
struct FrameInstance {
    std::array<float, 12> toEye;  ///< rows, from the mesh's coordinates to those of the eye
    std::array<float, 4> colour;
    float xTile, yTile;
    float normalScale;  ///< brings the greatest element of toEye to 1
    float side;         ///< -1 where toEye mirrors, else 1
};
inline constexpr std::size_t kInstanceFloats = sizeof(FrameInstance) / sizeof(float);
static_assert(kInstanceFloats == 20);

/// What objects that are drawn by one call have in common. As a number, so that sorting by it
/// brings these together.
struct BatchKey {
    bool isDrawing = false;  ///< the mesh is that of an object, not a unit shape
    std::uint32_t mesh = 0;  ///< number in `drawings` or `shapes`
    std::uint32_t finish = 0;
    std::uint32_t texture = 0;  ///< slot and one; 0: none
    bool lit = false;
    bool mirrored = false;
    bool hideBack = false;  ///< the backs of its faces cannot be seen, or must not

    static constexpr std::uint32_t kMostFinishes = 1u << 20;

    std::uint64_t Pack() const noexcept {
        return static_cast<std::uint64_t>(lit) << 63 | static_cast<std::uint64_t>(texture) << 56 |
               static_cast<std::uint64_t>(finish) << 36 |
               static_cast<std::uint64_t>(hideBack) << 35 |
               static_cast<std::uint64_t>(mirrored) << 34 |
               static_cast<std::uint64_t>(isDrawing) << 33 | mesh;
    }
    static BatchKey Unpack(std::uint64_t key) noexcept {
        BatchKey batch;
        batch.lit = key >> 63 & 1;
        batch.texture = key >> 56 & 0x7f;
        batch.finish = key >> 36 & (kMostFinishes - 1);
        batch.hideBack = key >> 35 & 1;
        batch.mirrored = key >> 34 & 1;
        batch.isDrawing = key >> 33 & 1;
        batch.mesh = static_cast<std::uint32_t>(key);
        return batch;
    }
};

struct FrameItem {
    std::uint64_t key;
    float depth;  ///< of the middle, in front of the eye
    std::uint32_t instance;
};

/// Lines of a polyline that follow each other and look the same.
struct FrameLines {
    std::uint32_t drawing;
    std::uint32_t instance;
    int firstLine, endLine;
};

/// What a material is but for diffuse colour and alpha.
struct Finish {
    std::array<float, 3> ambient, specular, emission;
    float shininess;
    friend bool operator==(const Finish&, const Finish&) = default;
};
struct FinishHash {
    std::size_t operator()(const Finish& finish) const noexcept;
};
struct UnitShapeHash {
    std::size_t operator()(const UnitShape& shape) const noexcept;
};

struct FrameText {
    std::string text;
    MAV_colour colour;
    float x, y;
};

struct FrameContents::Data {
    ViewSetup setup;
    std::vector<MAV_light> lights;
    std::array<std::shared_ptr<const MAV_image>, kMostTextures> images;

    std::vector<FrameInstance> instances;
    std::vector<FrameItem> opaque;
    std::vector<FrameItem> transparent;
    std::vector<FrameLines> lines;
    std::vector<FrameText> texts;
    std::vector<std::shared_ptr<MAV_drawing>> drawings;
    std::vector<Finish> finishes;
    std::unordered_map<Finish, std::uint32_t, FinishHash> finishNumbers;
    /// Kept over many frames.
    std::vector<UnitShape> shapes;
    std::unordered_map<UnitShape, std::uint32_t, UnitShapeHash> shapeNumbers;

    struct Plane {
        double a, b, c, d;  ///< of unit normal; what is in front is above 0
    };
    std::array<Plane, 6> planes;  ///< of the view, in eye coordinates; the near one is the first
    /// Pixels for a unit of length: in orthogonal views anywhere, else at distance 1.
    double pixelScale = 1;
};
