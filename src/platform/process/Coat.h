#pragma once

#include "platform/process/SprayGun.h"

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace vrk::process {

/// How thick paint lies on each vertex of a mesh. Model units; the mesh's own frame.
///
/// Vertices lie in boxes in boxes, so that a spray meets those in its cone without a look at the others.
///
/// Thread: any one at a time; it starts none.
class VRK_EXPORT Coat {
public:
    /// Of nothing.
    Coat() = default;
    /// Bare. @param normals  one for each vertex. What is not finite never takes paint.
    /// @throws std::invalid_argument for another number of normals than of vertices.
    Coat(std::span<const rob::Posf> vertices, std::span<const rob::Vec3f> normals);

    /// One for each vertex.
    const std::vector<float>& getThickness() const { return thickness; }
    /// In place of what lies there, as when a map is opened.
    /// @throws std::invalid_argument for another number than of vertices, or one that is below 0 or not finite.
    void setThickness(std::vector<float> given);
    void clear();

    /// Lets a gun paint from one place. Nothing is allocated, but for `touched` where that has no room.
    /// @param touched  the vertices that took paint are appended, each once.
    void spray(const SprayGun& gun, const SprayPlace& place, double seconds, std::vector<unsigned>& touched);
    /// Lets it paint from one way along another to the second, at the way's speed: from the middle of pieces that are no
    /// longer than `piece`.
    /// @param touched  as above; a vertex stands there once for each piece.
    /// @throws std::invalid_argument for a piece that is not above 0, or makes more than ten million of them; what
    ///         `SprayGun::check` throws.
    void sprayAlong(const SprayGun& gun, const SprayWay& way, double from, double to, double piece,
                    std::vector<unsigned>& touched);

private:
    struct Vertices;

    std::vector<float> thickness;
    std::shared_ptr<const Vertices> vertices; // never changed, so that copies may share them
};

/// Reads a coat at places on a body: at the nearest place of the skin that faces the same side. Thread: any.
class VRK_EXPORT CoatProbe {
public:
    /// @param indices  three for each triangle.
    CoatProbe(std::span<const rob::Posf> vertices, std::span<const unsigned> indices);

    struct Found {
        std::array<unsigned, 3> corners{}; ///< vertices of the triangle
        std::array<double, 3> weights{};   ///< of them; their sum is 1
        double distance = 0;               ///< from the place that was asked for; model units

        /// Between those of the corners. @param values  one for each vertex.
        double valueOf(std::span<const float> values) const;
    };
    /// @param normal  which way the body faces there; of any length.
    /// @return empty without a triangle that faces that way within `reach`.
    std::optional<Found> at(const rob::Posd& place, const rob::Vec3d& normal, double reach) const;

private:
    struct Surface;
    std::shared_ptr<const Surface> surface; // as above
};

} // namespace vrk::process
