#pragma once

#include "mesh/Mesh.h"

namespace vrk::visual {

/// The skin of a body that is painted: even triangles, and a colour of its own for each vertex, which is cheap to change.
///
/// A change of colour is kept here until `MeshManager::updatePaintMeshColor` or `uploadPaintColors` brings it to the GPU.
///
/// Owner: `MeshManager` once registered, else whoever made it. Thread: any one at a time; nothing here touches OGRE, and
/// nothing keeps a change apart from an upload that runs meanwhile.
class VRK_EXPORT PaintMesh : public Mesh {
public:
    PaintMesh() : Mesh(std::string()) {}
    explicit PaintMesh(std::string name) : Mesh(std::move(name)) {}

    /// Appends a vertex's colour, wholly transparent.
    void addColor(float r, float g, float b) { colorTable.push_back({r, g, b, 0}); }
    // The number of a vertex is not checked.
    const Color& color(unsigned vertex) const { return colorTable[vertex]; }
    /// Also a colour that the vertex has already counts as a change.
    void setColor(unsigned vertex, const Color& color);
    bool hasColor() const { return !colorTable.empty(); }
    /// Whoever empties it has uploaded what it names.
    std::vector<unsigned>& getChangedColorIndexes() { return changedColorIndexes; }

    std::vector<Color> colorTable; ///< one for each vertex
    std::vector<unsigned>
        changedColorIndexes; ///< since the last upload, in the order of the changes; some more than once
};

} // namespace vrk::visual
