#include "bench/support/SurfacePeers.h"

#include <vtkCellArray.h>
#include <vtkFeatureEdges.h>
#include <vtkIdList.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkQuadricDecimation.h>
#include <vtkStaticCleanPolyData.h>

#include <memory>

namespace vrk::bench {
namespace {

struct Mesh {
    vtkNew<vtkPolyData> source;
    vtkNew<vtkQuadricDecimation> decimation;
};

cam::TriangleSurface surfaceOf(vtkPolyData& data)
{
    cam::TriangleSurface surface;
    for (vtkIdType i = 0; i < data.GetNumberOfPoints(); ++i) {
        const double* p = data.GetPoint(i);
        surface.vertices.emplace_back(p[0], p[1], p[2]);
    }
    vtkNew<vtkIdList> cell;
    for (vtkIdType i = 0; i < data.GetNumberOfCells(); ++i) {
        data.GetCellPoints(i, cell);
        const auto corner = [&cell](vtkIdType k) { return static_cast<std::uint32_t>(cell->GetId(k)); };
        surface.triangles.push_back({corner(0), corner(1), corner(2)});
    }
    return surface;
}

void fill(vtkPolyData& data, const cam::TriangleSurface& surface)
{
    vtkNew<vtkPoints> points;
    points->SetDataTypeToDouble();
    for (const rob::Posd& p : surface.vertices)
        points->InsertNextPoint(p.x, p.y, p.z);
    vtkNew<vtkCellArray> cells;
    for (const auto& [a, b, c] : surface.triangles)
        cells->InsertNextCell({vtkIdType{a}, vtkIdType{b}, vtkIdType{c}});
    data.SetPoints(points);
    data.SetPolys(cells);
}

struct EdgeMesh {
    vtkNew<vtkPolyData> source;
    vtkNew<vtkStaticCleanPolyData> joined;
    vtkNew<vtkFeatureEdges> edges;
};

} // namespace

SurfaceWork vtkDecimate(const cam::TriangleSurface& surface, std::size_t triangles)
{
    const auto mesh = std::make_shared<Mesh>();
    fill(*mesh->source, surface);
    mesh->decimation->SetInputData(mesh->source);
    mesh->decimation->SetTargetReduction(1 - static_cast<double>(triangles) /
                                                 static_cast<double>(surface.triangles.size()));
    return [mesh] {
        mesh->decimation->Modified(); // or it keeps what it made before
        mesh->decimation->Update();
        return [mesh] { return surfaceOf(*mesh->decimation->GetOutput()); };
    };
}

std::function<std::size_t()> vtkFeatureEdgesOf(const cam::TriangleSurface& surface, double degrees)
{
    const auto mesh = std::make_shared<EdgeMesh>();
    fill(*mesh->source, surface);
    mesh->joined->SetInputData(mesh->source);
    mesh->joined->ToleranceIsAbsoluteOn();
    mesh->joined->SetAbsoluteTolerance(0);
    mesh->edges->SetInputConnection(mesh->joined->GetOutputPort());
    mesh->edges->SetFeatureAngle(degrees);
    mesh->edges->BoundaryEdgesOn();
    mesh->edges->NonManifoldEdgesOn();
    mesh->edges->ManifoldEdgesOff();
    return [mesh] {
        mesh->joined->Modified(); // or it keeps what it made before
        mesh->edges->Update();
        return static_cast<std::size_t>(mesh->edges->GetOutput()->GetNumberOfLines());
    };
}

} // namespace vrk::bench
