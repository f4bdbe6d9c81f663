#pragma once

#include "platform/layout/Body.h"
#include "visual/FacetVisual.h"

#include <TopoDS_Shape.hxx>

#include <map>
#include <vector>

class TopoDS_Face;

namespace vrk::visual {

/// A CAD shape with faces that can be hidden, coloured and highlighted one by one.
///
/// Faces are numbered from 1 in the order of the face map. Their colours lie in the vertex buffer of the mesh, so solids
/// that share a mesh, by one "geometry/uri", share the colours too.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT SolidVisual : public FacetVisual {
public:
    /// A solid of a station body, which takes `shape` for its own.
    SolidVisual(sdf::SdfNode* node, const TopoDS_Shape& shape, Visual* parent);
    /// A solid of a bare shape, its mesh named as the visual.
    SolidVisual(const TopoDS_Shape& shape, Visual* parent);
    SolidVisual(const std::string& name, const TopoDS_Shape& shape, Visual* parent);
    ~SolidVisual() override;

    // Builders: register the visual by id, load the mesh, attach an entity and set the materials. A shape without
    // triangles gives a visual without an entity. Otherwise they throw what `MeshManager::loadShape` does.

    /// A solid that cannot be picked, of one material in every state, red unless the material says otherwise.
    static SolidVisual* Build(Visual* parent, const TopoDS_Shape& shape, const std::string& material);
    /// A body of the station, in the model's colours and material, with its edges. It can be picked.
    static void Build(Visual* parent, sdf::SdfNode* node, const TopoDS_Shape& shape);
    /// A solid that can be picked, with three materials and its edges.
    static void Build(Visual* parent, const TopoDS_Shape& shape, const std::string& base, const std::string& selected,
                      const std::string& highlighted);

    std::optional<Visual*> copy(Visual* parent) override;
    unsigned getBodiesNum() override;
    unsigned getFacesNum() override;
    std::uint64_t getTrianglesNum() override;
    std::uint64_t getVerticesNum() override;
    /// Showing brings all hidden faces back. A shape without triangles stays without an entity.
    void setVisible(bool visible, bool recursive) override;
    void resetColor() override;
    /// All faces, of every solid that shares the mesh. `alpha` is not used: see-through is a matter of the material.
    void setBodyColor(const rob::ColorTemplate<float>& color, float alpha) override;
    Ogre::Entity* getEntity() const override { return entity; }
    /// The base name, without the hidden faces.
    const std::string& getMeshName() const override { return meshName; }

    // Shape and faces
    const TopoDS_Shape& getShape() const;
    const layout::FaceMap& getFaceMap() const;
    /// Null if the entry is no face.
    /// @throws Standard_OutOfRange "NCollection_IndexedMap::FindKey" past the last face.
    TopoDS_Face getFace(int index) const;
    /// The face where it lies in the world.
    /// @throws Standard_OutOfRange "NCollection_IndexedMap::FindKey" past the last face.
    TopoDS_Face getFaceInWorld(unsigned face) const;
    /// 0 for a face of another shape.
    unsigned getFaceIndex(const TopoDS_Face& face) const;
    /// Face 0, which is none, passes.
    /// @throws Standard_OutOfRange "NCollection_IndexedMap::FindKey" past the last face.
    void checkFace(std::uint64_t face) const;
    bool hasNoEntity() const { return entity == nullptr; }

    // Hidden faces

    /// `getMeshName` and "_<index>" for each hidden face, in the order in which they were hidden: the same faces hidden in
    /// another order make another mesh.
    std::string getCurrentMeshName() const;
    bool isFaceVisible(std::uint64_t face) const;
    /// Loads the mesh of the new set of faces, and makes the entity anew.
    /// Marks of other faces stay; that of a face that is hidden comes back with it.
    /// @throws NoTriangleMesh when the last face is hidden; the visual is then without entity until one is shown again.
    /// @throws Standard_OutOfRange "NCollection_IndexedMap::FindKey" past the last face; nothing is changed then.
    void setFaceVisible(std::uint64_t face, bool visible);
    void attachEntity(const std::string& mesh);
    void updateMesh();

    // Colours of faces
    void setFaceColor(unsigned face, const rob::ColorTemplate<float>& color);
    /// @param text  as in "#10C279"; throws what `geometry::ParseColorText` does.
    void setFaceColor(unsigned face, const std::string& text);
    /// A colour that the face keeps on whichever mesh the solid has, until `clearSelectedFace`. The solid takes it along
    /// when it leaves a mesh that others share, unless one of them has the same face marked.
    /// @throws as `setFaceColor` and `checkFace`.
    void markFace(unsigned face, const std::string& text);
    /// The model's colour, not the one in the buffer.
    rob::ColorTemplate<float> getFaceColor(unsigned face) const;
    void highLightFace(unsigned face);
    void clearHighLightFace(unsigned face);
    void clearSelectedFace(unsigned face);
    void clearSelectedFace(const TopoDS_Face& face);
    /// Whether a face has a colour for now: marked, or highlighted.
    bool hasMarkedFaces() const { return !selectedMarks.empty() || !highlightMarks.empty(); }

private:
    /// A face's colour that is not the model's, and where it stands in the present mesh. The place is kept, since a solid
    /// may die after the shape that it is counted in.
    struct Mark {
        rob::ColorTemplate<float> color;
        rob::ColorTemplate<float> plain;
        std::size_t firstVertex = 0;
        std::size_t vertexCount = 0;
    };
    using Marks = std::map<unsigned, Mark>; // by face

    void load(bool withModelColors);
    void destroyEntity();
    void putOn(Marks& marks, unsigned face, const rob::ColorTemplate<float>& color);
    void putMarksOn();
    void takeMarksOff() const;
    void takeOff(const Marks& marks) const;

    Ogre::Entity* entity = nullptr; // null if no mesh could be made
    std::string meshName;
    bool holdsMesh = false; // counted once as a user of the mesh without hidden faces
    Marks selectedMarks;
    Marks highlightMarks;
    std::vector<unsigned> hiddenFaces; // in the order in which they were hidden
    layout::Body* body = nullptr;      // null for a bare shape
    TopoDS_Shape shape;                // where there is no body
    mutable layout::FaceMap faceMap;   // where there is no body; filled on first need
};

} // namespace vrk::visual
