#pragma once

#include "platform/common/Export.h"
#include "scene/math/Color.h"
#include "scene/math/Vec.h"
#include "selection/geometry/Box.h"

#include <string>
#include <utility>
#include <vector>

namespace vrk::visual {

/// Triangles in memory, under the name by which everything else knows them: the registry's key and the name of the OGRE
/// mesh made from it.
///
/// Owner: `MeshManager` once registered, else whoever made it. Units: model units.
class VRK_EXPORT Mesh {
public:
    explicit Mesh(std::string name) : name(std::move(name)) {}
    virtual ~Mesh() = default;
    Mesh(const Mesh&) = default;
    Mesh& operator=(const Mesh&) = default;
    Mesh(Mesh&&) noexcept = default;
    Mesh& operator=(Mesh&&) noexcept = default;

    /// The box of all vertices, made when it is first asked for and kept: the vertices must be final by then.
    const Box& getBounds();

    std::string name;
    std::vector<rob::PosTemplate<float>> vertices;
    std::vector<rob::Vec3Template<float>> normals; ///< one for each vertex, or none at all
    std::vector<rob::ColorTemplate<float>> colors; ///< one for each vertex, or none at all
    std::vector<unsigned> indices;                 ///< three for each triangle, into `vertices`

private:
    Box bounds;
    bool boundsValid = false;
};

} // namespace vrk::visual
