#pragma once

#include "platform/sdf/SdfObject.h"

#include <NCollection_IndexedMap.hxx>
#include <TopTools_ShapeMapHasher.hxx>
#include <TopoDS_Shape.hxx>

namespace vrk::layout {

class Part;

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

    /// Puts another shape in place; the face map is made anew when it is next asked for.
    void setShape(const TopoDS_Shape& shape);
    const TopoDS_Shape& getShape() const { return shape; }
    /// The faces of the shape, numbered from 1. Made on first use: not to be raced for.
    const FaceMap& getFaceMap() const;
    /// Reads the shape from the geometry's file if there is none; a body made in memory has one from the start.
    /// @throws std::runtime_error naming the file and the cause.
    void ensureShapeLoaded();

    std::string getGeometryUri() const;
    std::string getFileType() const;
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
    TopoDS_Shape shape;
    mutable FaceMap faceMap;
};

} // namespace vrk::layout
