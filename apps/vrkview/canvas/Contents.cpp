#include "canvas/Contents.h"

#include "task/bands/VectorBandVisual.h"
#include "visual/MeshVisual.h"
#include "visual/PointCloudVisual.h"

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::visual::PointCloudVisual;
using vrk::visual::Visual;

/// Whether it shows how the robot works on the station, and is no piece of it: a band, and the arrow where it begins, which
/// lies beside it.
bool isOfProgram(const Visual& visual)
{
    const auto* mesh = dynamic_cast<const vrk::visual::MeshVisual*>(&visual);
    return (mesh && mesh->getMeshName() == "mfg_arrow") || dynamic_cast<const vrk::visual::VectorBandVisual*>(&visual);
}

/// The library's own sums leave out what is attached to something else.
void count(Visual& visual, Contents& contents)
{
    if (isOfProgram(visual))
        return;
    switch (visual.getType()) {
    case VisualType::Solid:
    case VisualType::Mesh:
        contents.bodies += visual.getBodiesNum();
        contents.faces += visual.getFacesNum();
        contents.triangles += visual.getTrianglesNum();
        break;
    case VisualType::Curve:
        ++contents.curves;
        return; // its arrows are no bodies
    case VisualType::Point:
        ++contents.points;
        break;
    case VisualType::PointCloud:
        contents.points += dynamic_cast<const PointCloudVisual&>(visual).getPoints().size();
        break;
    default:
        break;
    }
    for (Visual* child : visual.getChildren())
        count(*child, contents);
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
    count(visual, contents);
    return contents;
}

} // namespace vrkview
