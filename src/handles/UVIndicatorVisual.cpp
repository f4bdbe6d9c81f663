#include "handles/UVIndicatorVisual.h"

#include "visual/MeshVisual.h"

#include <BRepTools.hxx>
#include <BRep_Tool.hxx>
#include <Geom_Surface.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Pnt.hxx>
#include <gp_Vec.hxx>

namespace vrk::visual {
namespace {

constexpr const char* meshName = "uv_indicator";
constexpr const char* material = "UVIndicator";
constexpr const char* color = "#B8CE8E";
constexpr float toldLength = 20; // of the arrows of the mesh

rob::Dirf directionOf(const gp_Vec& derivative)
{
    return rob::Dirf(rob::normalized(rob::Vec3d(derivative.X(), derivative.Y(), derivative.Z())));
}

} // namespace

UVIndicatorVisual::UVIndicatorVisual(const std::string& name, Visual* parent)
    : Visual(name, parent), mesh(new MeshVisual(meshName, this))
{
    mesh->attachMesh(meshName);
    mesh->setMaterial(material, material, material);
    mesh->setColor(color);
}

void UVIndicatorVisual::setLength(float length)
{
    const float scale = length / toldLength;
    setScale(scale, scale, scale);
}

void UVIndicatorVisual::show(const TopoDS_Face& face)
{
    double uMin = 0;
    double uMax = 0;
    double vMin = 0;
    double vMax = 0;
    BRepTools::UVBounds(face, uMin, uMax, vMin, vMax);
    gp_Pnt point;
    gp_Vec alongU;
    gp_Vec alongV;
    BRep_Tool::Surface(face)->D1((uMin + uMax) * 0.5, (vMin + vMax) * 0.5, point, alongU, alongV);
    const rob::Dirf du = directionOf(alongU);
    const rob::Dirf dv = directionOf(alongV);
    const rob::Vec3f normal = du.cross(dv);
    const rob::Dirf y = rob::normalized(normal.cross(du));
    setPose({rob::Posf(rob::Posd(point.X(), point.Y(), point.Z())),
             rob::Rotationf::FromAxes(du, y, rob::normalized(normal))});
    setVisible(true, true);
}

} // namespace vrk::visual
