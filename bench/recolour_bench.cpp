// Colours in the vertex buffer of a body of 2000 faces and 375,010 vertices: one face against the whole body. Needs a
// display; xvfb-run gives it one.

#include "bench/support/Size.h"
#include "bench/support/Started.h"
#include "bench/support/Workloads.h"

#include "mesh/MeshManager.h"
#include "platform/geometry/BodyColorTool.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace {

using namespace vrk;
using visual::MeshManager;

const unsigned solidCount = bench::sized(100u, 10u);
const unsigned faceCount = 20 * solidCount;

visual::SolidVisual& startedBody()
{
    static visual::SolidVisual* body = [] {
        bench::startedScene();
        auto* made = new visual::SolidVisual(bench::makeFineCompound(solidCount), visual::Scene::GetWorldVisual());
        MeshManager::Get()->loadShape(made, ColorInfo());
        return made;
    }();
    return *body;
}

rob::Colorf colorOf(unsigned run)
{
    return run % 2 == 0 ? rob::Colorf(1, 0, 0) : rob::Colorf(0, 0, 1);
}

/// @param state  range 0: the face. The way to its run goes over the faces before it.
void recolourFace(benchmark::State& state)
{
    visual::SolidVisual& body = startedBody();
    const auto face = static_cast<unsigned>(state.range(0));
    unsigned run = 0;
    for (auto _ : state)
        MeshManager::SetFaceColor(&body, face, colorOf(++run));
    if (!(MeshManager::GetFaceColor(body.getCurrentMeshName(), body.getShape(), face) == colorOf(run)))
        throw std::logic_error("the face has another colour");
}

void recolourBody(benchmark::State& state)
{
    visual::SolidVisual& body = startedBody();
    unsigned run = 0;
    for (auto _ : state)
        MeshManager::SetColor(body.getCurrentMeshName(), colorOf(++run));
    if (!(MeshManager::GetFaceColor(body.getCurrentMeshName(), body.getShape(), faceCount) == colorOf(run)))
        throw std::logic_error("the body has another colour");
}

/// What a change would cost without runs of vertices: the mesh made and uploaded anew.
void rebuildBody(benchmark::State& state)
{
    visual::SolidVisual& body = startedBody();
    for (auto _ : state) {
        MeshManager::Get()->removeOgreMesh(body.getCurrentMeshName());
        MeshManager::Get()->loadShape(&body, ColorInfo());
    }
}

BENCHMARK(recolourFace)->Arg(1)->Arg(faceCount / 2)->Arg(faceCount)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(recolourBody)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(rebuildBody)->Unit(benchmark::kMicrosecond)->UseRealTime();

} // namespace
