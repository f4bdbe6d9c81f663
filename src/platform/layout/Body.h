#pragma once

#include "platform/geometry/LengthUnit.h"
#include "platform/sdf/SdfObject.h"

#include <NCollection_IndexedMap.hxx>
#include <TopTools_ShapeMapHasher.hxx>
#include <TopoDS_Shape.hxx>

#include <memory>
#include <string>

namespace vrk::layout {

class Part;
class ShapeClaim;
struct FacesOfShape;

using FaceMap = NCollection_IndexedMap<TopoDS_Shape, TopTools_ShapeMapHasher>;

/// A piece of geometry of a part: a CAD shape, or a mesh in an STL file or, with shared vertices and colours, a PLY file.
///
/// Its element lies in the part's element under "body". It holds "geometry/uri" (what the geometry is called and where
/// it lies), "geometry/file_type" ("brep", "stl" or "mesh"), where the geometry was made from another file "geometry/source"
/// and the "geometry/unit" of that, "visual/material/name", "visual/color" (a colour text) and
/// "visual/face_colors" with one child "f<index>" for each face of another colour.
class VRK_EXPORT Body : public sdf::SdfNode {
public:
    /// What the URI of a shape begins with that comes from no file; the id of the body that had it first follows.
    static constexpr const char* madeInMemory = "memory#";

    Body(unsigned id, std::string name, const Part& part);
    ~Body() override;

    /// Replaces the shape. The face map is made anew when it is next asked for. Edges of faces that have triangles get the
    /// polygons by which they are drawn, see `geometry::addEdgePolygons`.
    ///
    /// The view draws one mesh for each URI, so a URI must stand for one shape. A body that is given another shape, or whose
    /// URI another body uses for another shape, gets a URI of its own, made from its URI and the content of the shape. A body
    /// of no geometry becomes a "brep" one of the URI "memory#<id>".
    void setShape(const TopoDS_Shape& shape);
    /// Whether the body has a URI of its own, because the URI that was given to `setGeometry` stands for another shape.
    bool hasOwnUri() const { return ownUri; }
    /// The URI that was given to `setGeometry`, also where the body has one of its own.
    std::string getGivenUri() const { return ownUri ? givenUri : getGeometryUri(); }
    const TopoDS_Shape& getShape() const { return shape; }
    /// The faces of the shape, numbered from 1. Made on first use; two threads must not ask first at the same time.
    const FaceMap& getFaceMap() const;
    /// Reads the shape from the geometry's file if there is none. A body made in memory has one from the start; its faces that
    /// have no triangles are meshed, as `station::meshShape` does, and so are those of a shape that took the place of a file's.
    /// @throws std::runtime_error naming the file and the cause.
    void ensureShapeLoaded();

    std::string getGeometryUri() const;
    std::string getFileType() const;
    /// @param uri  where another body uses it for another shape, this body gets a URI of its own.
    void setGeometry(const std::string& uri, const std::string& fileType);
    /// Whether it is a mesh, which has no shape and no faces.
    bool isMesh() const;
    /// The file that the geometry's file was made from: a mesh of another format, or in another unit. Empty where there is
    /// none; another geometry has none until it is told.
    std::string getSourceFile() const;
    LengthUnit getSourceUnit() const;
    void setSource(const std::string& file, LengthUnit unit);
    /// The base of the three names of the body's looks: "visual/material/name"; where that is empty "MeshBody" for meshes
    /// and "Body" for others.
    std::string getMaterialName() const;
    void setMaterialName(const std::string& name);

    /// Colour texts such as "#ED1C24".
    void setColor(const std::string& text);
    /// @param face  from 1, in the order of the face map.
    void setFaceColor(unsigned face, const std::string& text);

private:
    void claimUri(bool isExchanged);

    TopoDS_Shape shape;
    std::unique_ptr<ShapeClaim> claim;
    bool ownUri = false;
    std::string givenUri;                              // what the body's own URI was made from
    mutable std::shared_ptr<const FacesOfShape> faces; // of bodies of one shape they are the same; null until asked for
};

} // namespace vrk::layout
