#pragma once

#include "scene/math/Color.h"
#include "visual/Visual.h"

#include <span>
#include <vector>

namespace Ogre {
class Entity;
}

namespace vrk::visual {

class PaintMesh;

/// The paint on a body: a skin of its own over it, with a colour for each vertex. A body has one at most, which the sprays
/// that paint it share.
///
/// Owner: the body, whose child it is. It owns its mesh, through the registry of meshes. Thread: render thread.
class VRK_EXPORT PaintVisual : public Visual {
public:
    /// Without a mesh. @param spray  the first that it knows of.
    PaintVisual(Visual* parent, unsigned spray);
    ~PaintVisual() override;

    /// Paint for a body, a solid or mesh, registered and to be picked, wholly transparent. Nothing for a visual of another
    /// kind or a body without triangles.
    /// @throws what `MeshManager::createPaintMesh` does.
    static void Build(Visual* parent, unsigned spray);

    /// What cannot be seen cannot be picked.
    void setVisible(bool visible, bool recursive) override;

    /// A spray may be known more than once.
    void addSprayRef(unsigned spray) { sprayRefs.push_back(spray); }
    /// All of that number.
    void removeSprayRef(unsigned spray);
    unsigned getSprayRefsCount() const { return static_cast<unsigned>(sprayRefs.size()); }
    PaintMesh* getMesh() { return mesh; }
    /// Draws nothing new: the entity is that of the mesh that it was built with. The visual deletes this one at its end.
    void setMesh(PaintMesh* newMesh) { mesh = newMesh; }
    /// Its alpha alone is on a scale of 0 to 255, and is 255.
    Color& getPaintColor() { return paintColor; }
    void setPaintColor(float r, float g, float b);
    /// Makes all vertices transparent; their hues stay.
    void reset();

    // A map of the thickness in place of the paint

    /// Draws how thick the paint lies, from bare to `most` times what is wanted; what is below `low` times it, and above `high`
    /// times it, is told apart by a pattern too.
    void showThickness(float low, float high, float most);
    /// Takes the thickness of these vertices, as parts of what is wanted, and uploads what changed. It allocates nothing where
    /// as many changed before.
    /// @param parts     one for each vertex of the mesh.
    /// @param vertices  of the mesh, in any order; some more than once.
    void setThickness(std::span<const float> parts, std::span<const unsigned> vertices);
    /// Draws the paint again. The colours are those of the map until they are set.
    void showPaint();

private:
    void setSkinParameter(float low, float high, float most);

    std::vector<unsigned> sprayRefs;
    PaintMesh* mesh = nullptr;
    Color paintColor{0, 0, 0, 255};
    Ogre::Entity* entity = nullptr;
};

} // namespace vrk::visual
