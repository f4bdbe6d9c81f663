#pragma once

#include "visual/FacetVisual.h"

#include <memory>

namespace vrk::geometry {
struct MeshEdges;
}

namespace vrk::visual {

class Mesh;

/// A named triangle mesh: an STL file, a PLY file with faces, a gizmo's mesh, a text. Its colour lies on the visual's own renderables, as custom
/// parameter 0 of the material, and is not shared.
///
/// Owner: the parent visual. A registered mesh ends with the first of its visuals that dies. Thread: render thread.
class VRK_EXPORT MeshVisual : public FacetVisual {
public:
    MeshVisual(Visual* parent, sdf::SdfNode* node);
    MeshVisual(const std::string& name, Visual* parent);
    ~MeshVisual() override;

    /// A station body that comes as an STL or a PLY file. Its id is registered, and it can be picked. The colours of a file's
    /// points are shown where the body's material reads them and the body has no colour of its own.
    static void Build(Visual* parent, sdf::SdfNode* node);

    /// An orange arrow that stands at `position` and points along `direction`, which has unit length. Not registered.
    static MeshVisual* BuildArrow(Visual* parent, const rob::PosTemplate<float>& position,
                                  const rob::DirTemplate<float>& direction);

    /// Draws the global, registered, STL or, by the ending ".ply", PLY mesh of that name, in place of one that it drew; so the path of a file is the
    /// name of a mesh. Virtual, so that a derived visual can do more with its entity.
    /// @throws what `MeshManager::loadStl` does, or `loadPly`.
    virtual Ogre::Entity* attachMesh(const std::string& name);
    /// Draws nothing until the next `attachMesh`; the visual and its mesh stay, its edges go.
    void detachMesh();
    /// Draws the mesh with its edges, in place of those that it has: see `Scene::addMeshEdges`.
    /// @return false where nothing was changed: they are none, or not those of the mesh that is drawn.
    bool setEdges(const std::shared_ptr<const geometry::MeshEdges>& edges);

    std::optional<Visual*> copy(Visual* parent) override;
    unsigned getBodiesNum() override;
    unsigned getFacesNum() override;
    std::uint64_t getTrianglesNum() override;
    std::uint64_t getVerticesNum() override;
    void resetColor() override;
    void setBodyColor(const rob::ColorTemplate<float>& color, float alpha) override;
    Ogre::Entity* getEntity() const override { return entity; }
    /// The name held in the mesh; call it with a mesh attached.
    const std::string& getMeshName() const override;

    /// Stays until the visual dies, also where another one that draws the mesh has deleted it.
    Mesh* getMesh() const { return mesh; }
    void setColor(const rob::ColorTemplate<float>& color, float alpha);
    /// @param text  as in "#10C279", opaque. Throws what `geometry::ParseColorText` does.
    void setColor(const std::string& text);

protected:
    static constexpr const char* arrowMesh = "mfg_arrow"; ///< points along z from its origin
    static constexpr const char* arrowColor = "#FFA725";

    /// Turns this visual, which was just made, into an arrow.
    void becomeArrow(const rob::PosTemplate<float>& position, const rob::DirTemplate<float>& direction,
                     const std::string& color);

private:
    void detachEntity();
    void removeEdges();
    bool hasPointColors() const;
    void useLookOf(const char* material);

    std::string meshName;
    Ogre::Entity* entity = nullptr;
    Mesh* mesh = nullptr;
};

} // namespace vrk::visual
