#include "Contents.h"

#include "visual/PointCloudVisual.h"

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::visual::PointCloudVisual;
using vrk::visual::Visual;

/// Of what the library has no sums for.
void countThinThings(const Visual& visual, Contents& contents)
{
    if (visual.getType() == VisualType::Curve)
        ++contents.curves;
    else if (visual.getType() == VisualType::Point)
        ++contents.points;
    else if (visual.getType() == VisualType::PointCloud)
        contents.points += dynamic_cast<const PointCloudVisual&>(visual).getPoints().size();
    for (const Visual* child : visual.getChildren())
        countThinThings(*child, contents);
}

} // namespace

Contents& Contents::operator+=(const Contents& more)
{
    bodies += more.bodies;
    faces += more.faces;
    curves += more.curves;
    triangles += more.triangles;
    points += more.points;
    return *this;
}

Contents contentsOf(Visual& visual)
{
    Contents contents;
    contents.bodies = visual.getBodiesNum();
    contents.faces = visual.getFacesNum();
    contents.triangles = visual.getTrianglesNum();
    countThinThings(visual, contents);
    return contents;
}

} // namespace vrkview
