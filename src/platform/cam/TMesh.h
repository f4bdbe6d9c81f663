#pragma once

#include <array>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

/// Triangle meshes as the operations on machined surfaces take and give them.
namespace cadcam {

template <typename T>
struct TPoint3d {
    T x{}, y{}, z{};

    constexpr bool operator==(const TPoint3d&) const = default;
};

template <typename Point>
struct TTriangle {
    static constexpr unsigned int unset = std::numeric_limits<unsigned int>::max();

    std::array<unsigned int, 3> vertices{}; ///< positions in the mesh's vertices
    std::array<unsigned int, 3> others{unset, unset,
                                       unset}; ///< room for three more indices, all ones where nothing is told
    Point normal{};                            ///< of any length

    constexpr bool operator==(const TTriangle&) const = default;
};

/// Triangles over shared vertices. Copies share their lists; who changes one changes all of them.
///
/// Nothing is checked: an index may lie past the vertices and a coordinate need not be finite.
template <typename T>
class TMesh {
public:
    using Point = TPoint3d<T>;
    using Triangle = TTriangle<Point>;

    TMesh() : TMesh(std::vector<Point>(), std::vector<Triangle>()) {}
    /// Without normals of vertices.
    TMesh(std::vector<Point> vertices, std::vector<Triangle> triangles)
        : vertexList(std::make_shared<std::vector<Point>>(std::move(vertices))),
          triangleList(std::make_shared<std::vector<Triangle>>(std::move(triangles))),
          normalList(std::make_shared<std::vector<Point>>())
    {
    }

    /// Never null.
    const std::shared_ptr<std::vector<Point>>& vertices() const { return vertexList; }
    /// Never null.
    const std::shared_ptr<std::vector<Triangle>>& triangles() const { return triangleList; }
    /// One for each vertex, or none at all. Never null.
    const std::shared_ptr<std::vector<Point>>& normals() const { return normalList; }

private:
    std::shared_ptr<std::vector<Point>> vertexList;
    std::shared_ptr<std::vector<Triangle>> triangleList;
    std::shared_ptr<std::vector<Point>> normalList;
};

} // namespace cadcam
