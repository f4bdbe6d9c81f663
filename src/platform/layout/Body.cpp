#include "platform/layout/Body.h"

#include "platform/common/SharedThings.h"
#include "platform/geometry/EdgePolygons.h"
#include "platform/geometry/ShapeIdentity.h"
#include "platform/layout/Part.h"
#include "platform/layout/ShapeUris.h"

#include <TopAbs_ShapeEnum.hxx>
#include <TopExp.hxx>

#include <fmt/format.h>

#include <stdexcept>

namespace vrk::layout {

/// It keeps the shape, by whose identity it is known.
struct FacesOfShape {
    explicit FacesOfShape(const TopoDS_Shape& shape) : shape(shape)
    {
        if (!shape.IsNull())
            TopExp::MapShapes(shape, TopAbs_FACE, map);
    }

    TopoDS_Shape shape;
    FaceMap map;
};

namespace {

std::shared_ptr<const FacesOfShape> facesOf(const TopoDS_Shape& shape)
{
    using AllFaces = common::SharedThings<geometry::ShapeIdentity, FacesOfShape, geometry::ShapeIdentityHash>;
    static auto* const all = new AllFaces; // bodies may live as long as the process
    return all->get(
        geometry::ShapeIdentity(shape), [](const FacesOfShape&) { return true; },
        [&shape] { return std::make_shared<const FacesOfShape>(shape); });
}

} // namespace

Body::Body(unsigned id, std::string name, const Part& part)
    : SdfNode(sdf::ModelType::Body, id, std::move(name), part.getElement()->append("body")),
      claim(std::make_unique<ShapeClaim>())
{
    setParentId(part.getId());
}

Body::~Body() = default;

void Body::setShape(const TopoDS_Shape& newShape)
{
    if (newShape.IsEqual(shape))
        return;
    const bool isExchanged = !shape.IsNull();
    shape = newShape;
    faces.reset();
    if (!shape.IsNull()) {
        geometry::addEdgePolygons(shape);
        if (getGeometryUri().empty() && getFileType().empty()) {
            setGeometry(fmt::format("{}{}", madeInMemory, getId()), "brep");
            return;
        }
    }
    claimUri(isExchanged);
}

void Body::claimUri(bool isExchanged)
{
    const std::string uri = getGeometryUri();
    if (shape.IsNull() || getFileType() != "brep") {
        claim->release();
        return;
    }
    if (!isExchanged && claim->take(uri, shape))
        return;
    if (!ownUri)
        givenUri = uri;
    ownUri = true;
    std::string own = fmt::format("{}~{}", givenUri, contentOf(shape));
    getElement()->touch("geometry/uri")->set(own);
    claim->take(own, shape); // who has it has the same content
}

const FaceMap& Body::getFaceMap() const
{
    if (!faces)
        faces = facesOf(shape);
    return faces->map;
}

std::string Body::getGeometryUri() const
{
    return sdf::textAt(*getElement(), "geometry/uri");
}

std::string Body::getFileType() const
{
    return sdf::textAt(*getElement(), "geometry/file_type");
}

void Body::setGeometry(const std::string& uri, const std::string& fileType)
{
    getElement()->touch("geometry/uri")->set(uri);
    getElement()->touch("geometry/file_type")->set(fileType);
    setSource({}, LengthUnit::Millimetre);
    ownUri = false;
    claimUri(false);
}

bool Body::isMesh() const
{
    const std::string type = getFileType();
    return type == "stl" || type == "mesh";
}

std::string Body::getSourceFile() const
{
    return sdf::textAt(*getElement(), "geometry/source");
}

LengthUnit Body::getSourceUnit() const
{
    return LengthUnitNamed(sdf::textAt(*getElement(), "geometry/unit")).value_or(LengthUnit::Millimetre);
}

void Body::setSource(const std::string& file, LengthUnit unit)
{
    if (file.empty() && getSourceFile().empty())
        return; // the most bodies by far have none
    getElement()->touch("geometry/source")->set(file);
    getElement()->touch("geometry/unit")->set(std::string(NameOf(unit)));
}

std::string Body::getMaterialName() const
{
    const std::string name = sdf::textAt(*getElement(), "visual/material/name");
    if (!name.empty())
        return name;
    return isMesh() ? "MeshBody" : "Body"; // "Body" reads vertex colours, which most meshes lack
}

void Body::setMaterialName(const std::string& name)
{
    getElement()->touch("visual/material/name")->set(name);
}

void Body::setColor(const std::string& text)
{
    getElement()->touch("visual/color")->set(text);
}

void Body::setFaceColor(unsigned face, const std::string& text)
{
    getElement()->touch(fmt::format("visual/face_colors/f{}", face))->set(text);
}

} // namespace vrk::layout
