// Files and shapes to meshes in memory: an STL file of 5,000,000 triangles against reading it and copying its vertices,
// and a compound of 2000 faces against the triangles that Open CASCADE's own shaded presentation makes of it.

#include "bench/support/Peak.h"
#include "bench/support/Size.h"
#include "bench/support/Workloads.h"

#include "mesh/ShapeTriangles.h"
#include "mesh/StlReader.h"

#include <BRep_Tool.hxx>
#include <Graphic3d_ArrayOfTriangles.hxx>
#include <Poly_Triangulation.hxx>
#include <StdPrs_ShadedShape.hxx>
#include <TopExp.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <benchmark/benchmark.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <memory>
#include <stdexcept>
#include <unistd.h>

namespace {

using namespace vrk;

const unsigned along = bench::sized(2500u, 100u);
const unsigned around = bench::sized(1000u, 50u);
const std::size_t stlTriangles = std::size_t{2} * along * around; // 5,000,000 of the full work
const unsigned solidCount = bench::sized(100u, 10u);

// Both ways of each work get memory that the process holds already: whether glibc gives a result's memory back to the
// system and takes it anew in the next run hangs on the sizes of its blocks. Told before the first benchmark, so that
// their order does not matter.
const bool memoryIsKept = mallopt(M_MMAP_THRESHOLD, 32 << 20) == 1 && mallopt(M_TRIM_THRESHOLD, 1 << 30) == 1;

// STL

/// The big mesh as a file, written when it is first asked for and removed at the end.
class StlFile {
public:
    StlFile() { bench::writeStl(bench::makeTorusMesh(along, around), path); }
    ~StlFile() { std::filesystem::remove(path); }

    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("vrk_mesh_bench_" + std::to_string(getpid()) + ".stl");
};

const std::filesystem::path& stlFile()
{
    static const StlFile file;
    return file.path;
}

void readStl(benchmark::State& state)
{
    const std::string path = stlFile().string();
    std::size_t peak = 0;
    std::size_t arrays = 0;
    for (auto _ : state) {
        const bench::Peak memory;
        const visual::Mesh mesh = visual::readStl(path);
        benchmark::DoNotOptimize(mesh.vertices.data());
        state.PauseTiming();
        peak = memory.bytes();
        arrays = mesh.vertices.size() * sizeof(rob::Posf) + mesh.normals.size() * sizeof(rob::Vec3f) +
                 mesh.indices.size() * sizeof(unsigned);
        if (mesh.indices.size() != 3 * stlTriangles || mesh.vertices.size() != 3 * stlTriangles)
            throw std::logic_error("wrong number of triangles");
        state.ResumeTiming();
    }
    state.counters["peak/arrays"] = static_cast<double>(peak) / static_cast<double>(arrays);
}

/// The least that any reader does: the bytes into memory, the corners into an array.
void readFileAndCopyVertices(benchmark::State& state)
{
    const std::filesystem::path path = stlFile();
    const std::size_t size = std::filesystem::file_size(path);
    for (auto _ : state) {
        const std::unique_ptr<char[]> bytes(new char[size]);
        std::ifstream(path, std::ios::binary).read(bytes.get(), static_cast<std::streamsize>(size));
        const std::unique_ptr<float[]> corners(new float[9 * stlTriangles]);
        for (std::size_t i = 0; i < stlTriangles; ++i)
            std::memcpy(&corners[9 * i], &bytes[84 + 50 * i + 12], 9 * sizeof(float));
        benchmark::DoNotOptimize(corners.get());
    }
}

BENCHMARK(readStl)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(readFileAndCopyVertices)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

// Shapes

struct Compound {
    Compound() : shape(bench::makeFineCompound(solidCount))
    {
        TopExp::MapShapes(shape, TopAbs_FACE, faces);
        TopLoc_Location location;
        for (int i = 1; i <= faces.Extent(); ++i) {
            const Handle(Poly_Triangulation) mesh = BRep_Tool::Triangulation(TopoDS::Face(faces(i)), location);
            triangles += mesh->NbTriangles();
            vertices += mesh->NbNodes();
        }
        if (!bench::isSmall() && (faces.Extent() != 2000 || triangles != 548'152 || vertices != 375'010))
            throw std::logic_error("the compound is another one");
    }

    void removeNormals() const
    {
        for (int i = 1; i <= faces.Extent(); ++i) {
            TopLoc_Location location;
            BRep_Tool::Triangulation(TopoDS::Face(faces(i)), location)->RemoveNormals();
        }
    }

    TopoDS_Compound shape;
    layout::FaceMap faces;
    int triangles = 0;
    int vertices = 0;
};

const Compound& compound()
{
    static const Compound made;
    return made;
}

enum class Normals { Cold, Warm };

/// Times `run`, each time without the normals of the triangulations (cold) or with them (warm).
template <typename Run>
void timeRuns(benchmark::State& state, Normals normals, Run run)
{
    if (!memoryIsKept)
        throw std::logic_error("malloc does not take its settings");
    run();
    for (auto _ : state) {
        if (normals == Normals::Cold) {
            state.PauseTiming();
            compound().removeNormals();
            state.ResumeTiming();
        }
        run();
    }
}

void shapeMesh(benchmark::State& state, Normals normals)
{
    const ColorInfo colors;
    timeRuns(state, normals, [&] {
        const auto mesh = visual::makeShapeMesh(
            "bench", compound().faces, [](unsigned) { return true; }, &colors, "bench");
        if (std::ssize(mesh->indices) != 3 * compound().triangles ||
            std::ssize(mesh->vertices) != compound().vertices || std::ssize(mesh->colors) != compound().vertices)
            throw std::logic_error("wrong number of triangles or vertices");
        benchmark::DoNotOptimize(mesh->vertices.data());
    });
}

void fillTriangles(benchmark::State& state, Normals normals)
{
    timeRuns(state, normals, [&] {
        const Handle(Graphic3d_ArrayOfTriangles) triangles = StdPrs_ShadedShape::FillTriangles(compound().shape);
        // It leaves out some ninety triangles of no area.
        if (triangles->ItemNumber() < compound().triangles - 100 || triangles->VertexNumber() != compound().vertices)
            throw std::logic_error("wrong number of triangles or vertices");
    });
}

BENCHMARK_CAPTURE(shapeMesh, warm, Normals::Warm)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(fillTriangles, warm, Normals::Warm)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(shapeMesh, cold, Normals::Cold)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(fillTriangles, cold, Normals::Cold)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
