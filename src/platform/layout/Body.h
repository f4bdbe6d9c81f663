#pragma once

#include "platform/sdf/SdfObject.h"

#include <NCollection_IndexedMap.hxx>
#include <TopTools_ShapeMapHasher.hxx>
#include <TopoDS_Shape.hxx>

#include <memory>
#include <string>

namespace vrk::layout {

class Part;
class ShapeClaim;

using FaceMap = NCollection_IndexedMap<TopoDS_Shape, TopTools_ShapeMapHasher>;

/// A piece of geometry of a part: a CAD shape or an STL mesh.
///
/// Its element lies in the part's element under "body". It holds "geometry/uri" (what the geometry is called and where
/// it lies), "geometry/file_type" ("brep" or "stl"), "visual/material/name", "visual/color" (a colour text) and
/// "visual/face_colors" with one child "f<index>" for each face of another colour.
class VRK_EXPORT Body : public sdf::SdfNode {
public:
    Body(unsigned id, std::string name, const Part& part);
    ~Body() override;

    /// Puts another shape in place; the face map is made anew when it is next asked for. Its edges get the polygons by which
    /// they are drawn, where faces of it have triangles.
    ///
    /// The view draws one mesh for a URI. So a body that had another shape, and one whose URI stands for another body's
    /// shape, gets a URI of its own, made from the one that it has and the content of the shape.
    void setShape(const TopoDS_Shape& shape);
    /// Whether the shape is no longer, or never was, what `setGeometry` was told.
    bool hasOwnUri() const { return ownUri; }
    /// The URI that `setGeometry` was told.
    std::string getGivenUri() const { return ownUri ? givenUri : getGeometryUri(); }
    const TopoDS_Shape& getShape() const { return shape; }
    /// The faces of the shape, numbered from 1. Made on first use: not to be raced for.
    const FaceMap& getFaceMap() const;
    /// Reads the shape from the geometry's file if there is none; a body made in memory has one from the start.
    /// @throws std::runtime_error naming the file and the cause.
    void ensureShapeLoaded();

    std::string getGeometryUri() const;
    std::string getFileType() const;
    /// @param uri  another one is taken if that stands for another body's shape.
    void setGeometry(const std::string& uri, const std::string& fileType);
    /// The base of the three names of the body's looks: "visual/material/name"; where that is empty "MeshBody" for STL
    /// bodies and "Body" for others.
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
    std::string givenUri; // what the body's own URI was made from
    mutable FaceMap faceMap;
};

} // namespace vrk::layout
