#include "selection/ShapeParts.h"

#include "platform/common/SharedThings.h"
#include "platform/geometry/ShapeIdentity.h"
#include "selection/SensitiveFace.h"
#include "selection/ShapeBorders.h"
#include "selection/geometry/BVHBuilder.h"

#include <BRep_Tool.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>

namespace vrk::selection {
namespace {

using AllParts = common::SharedThings<geometry::ShapeIdentity, ShapeParts, geometry::ShapeIdentityHash>;

/// Never destroyed: objects may live as long as the process.
AllParts& allParts()
{
    static auto* const all = new AllParts;
    return *all;
}

Handle(Poly_Triangulation) trianglesOf(const TopoDS_Shape& face)
{
    TopLoc_Location location;
    return BRep_Tool::Triangulation(TopoDS::Face(face), location);
}

} // namespace

std::shared_ptr<const ShapeParts> ShapeParts::Of(const TopoDS_Shape& shape, const layout::FaceMap& faces)
{
    return allParts().get(
        geometry::ShapeIdentity(shape), [&](const ShapeParts& known) { return known.isMadeOf(faces); },
        [&] { return std::make_shared<const ShapeParts>(shape, faces, [](unsigned) { return true; }); });
}

ShapeParts::ShapeParts(const TopoDS_Shape& shape, const layout::FaceMap& faces, const FaceFilter& isWanted)
    : shape(shape)
{
    for (int i = 1; i <= faces.Size(); ++i) {
        const auto index = static_cast<unsigned>(i);
        if (isWanted(index) && !trianglesOf(faces(i)).IsNull())
            primitives.push_back(new SensitiveFace(faces(i), index));
    }
    bvh = BVHBuilder(this).build();
}

ShapeParts::~ShapeParts() = default;

/// A shape may be meshed anew, and its faces be exchanged, after the first body of it was made.
bool ShapeParts::isMadeOf(const layout::FaceMap& faces) const
{
    auto part = primitives.begin();
    for (int i = 1; i <= faces.Size(); ++i) {
        const Handle(Poly_Triangulation) triangles = trianglesOf(faces(i));
        if (triangles.IsNull())
            continue;
        const auto* const face = part == primitives.end() ? nullptr : static_cast<const SensitiveFace*>(*part++);
        if (!face || face->getFaceIndex() != static_cast<unsigned>(i) || !face->isMadeOf(triangles) ||
            !face->getFace().IsEqual(faces(i)))
            return false;
    }
    return part == primitives.end();
}

const ShapeBorders& ShapeParts::getBorders() const
{
    std::call_once(bordersAsked, [this] { borders = std::make_unique<const ShapeBorders>(shape, primitives); });
    return *borders;
}

} // namespace vrk::selection
