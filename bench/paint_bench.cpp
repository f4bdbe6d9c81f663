// A step of a spray on a skin of 200,000 vertices, of which it touches some 2,000: the coat, the colours and their upload; by the
// blocks that changed, by the prescribed form that locks all of them, and beside that what it takes to write all colours anew.
// Needs a display; xvfb-run gives it one.

#include "bench/support/Size.h"
#include "bench/support/Started.h"

#include "mesh/MeshManager.h"
#include "mesh/paint/PaintMesh.h"
#include "platform/process/Coat.h"

#include <Ogre.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace {

using namespace vrk;

const unsigned side = bench::sized(448u, 40u); // vertices; 448 x 448 are 200,704
constexpr float spacing = 5;
constexpr float wanted = 0.04f;

std::unique_ptr<visual::PaintMesh> makeSkin()
{
    auto skin = std::make_unique<visual::PaintMesh>("skin");
    for (unsigned j = 0; j < side; ++j)
        for (unsigned i = 0; i < side; ++i) {
            const float x = spacing * static_cast<float>(i), y = spacing * static_cast<float>(j);
            skin->vertices.emplace_back(x, y, 20 * std::sin(0.01f * x));
            skin->normals.emplace_back(rob::normalized(rob::Vec3f(-0.2f * std::cos(0.01f * x), 0, 1)));
            skin->addColor(0, 0, 1);
        }
    for (unsigned j = 0; j + 1 < side; ++j)
        for (unsigned i = 0; i + 1 < side; ++i) {
            const unsigned a = j * side + i;
            skin->indices.insert(skin->indices.end(), {a, a + 1, a + side + 1, a, a + side + 1, a + side});
        }
    return skin;
}

/// A skin on the GPU, and a gun that goes over it.
class Painted {
public:
    Painted()
    {
        bench::startedScene();
        skin = makeSkin().release();
        visual::MeshManager::Get()->addPaintMesh(skin);
        coat = process::Coat(skin->vertices, skin->normals);
        gun.halfAngle = 0.4;
        const double last = spacing * (side - 1);
        const double y = last / 2;
        way = std::make_unique<process::SprayWay>(
            std::vector<process::SprayPlace>{{{0, y, 300}, {0, 0, -1}}, {{last, y, 300}, {0, 0, -1}}}, 100);
    }
    ~Painted() { visual::MeshManager::Get()->deleteMesh(skin); }
    Painted(const Painted&) = delete;
    Painted& operator=(const Painted&) = delete;

    void spray()
    {
        touched.clear();
        at = at + 8 > 0.75 * way->length() ? 0.25 * way->length() : at + 8;
        coat.sprayAlong(gun, *way, at, at + 8, 8, touched);
    }
    void color()
    {
        for (const unsigned vertex : touched) {
            const float part = coat.getThickness()[vertex] / wanted;
            skin->setColor(vertex, {part, 0, 0, std::min(20 * part, 1.0f)});
        }
    }
    Ogre::HardwareVertexBufferSharedPtr buffer() const
    {
        return Ogre::MeshManager::getSingleton()
            .getByName("skin", "General")
            ->getSubMesh(0)
            ->vertexData->vertexBufferBinding->getBuffer(1);
    }
    /// Whether the GPU has what the table says.
    bool isUploaded() const
    {
        const Ogre::HardwareBufferLockGuard lock(buffer(), Ogre::HardwareBuffer::HBL_READ_ONLY);
        return std::memcmp(lock.pData, skin->colorTable.data(), skin->colorTable.size() * sizeof(visual::Color)) == 0;
    }

    visual::PaintMesh* skin = nullptr;
    process::Coat coat;
    process::SprayGun gun;
    std::unique_ptr<process::SprayWay> way;
    std::vector<unsigned> touched;
    double at = 0;
};

template <typename Upload>
void stepWith(benchmark::State& state, const Upload& upload)
{
    Painted painted;
    std::size_t touched = 0;
    for (auto _ : state) {
        painted.spray();
        painted.color();
        upload(painted);
        touched += painted.touched.size();
    }
    if (touched == 0 || !painted.isUploaded())
        state.SkipWithError("the colours on the GPU are not those of the table");
    state.counters["touched"] = static_cast<double>(touched) / static_cast<double>(state.iterations());
}

void stepByBlocks(benchmark::State& state)
{
    stepWith(state, [](Painted& painted) { visual::MeshManager::Get()->uploadPaintColors(painted.skin); });
}
BENCHMARK(stepByBlocks)->Unit(benchmark::kMicrosecond);

void stepUnderOneLock(benchmark::State& state)
{
    stepWith(state, [](Painted& painted) { visual::MeshManager::Get()->updatePaintMeshColor(painted.skin); });
}
BENCHMARK(stepUnderOneLock)->Unit(benchmark::kMicrosecond);

void stepWithAllColors(benchmark::State& state)
{
    stepWith(state, [](Painted& painted) {
        const auto& table = painted.skin->colorTable;
        painted.buffer()->writeData(0, table.size() * sizeof(visual::Color), table.data(), true);
        painted.skin->changedColorIndexes.clear();
    });
}
BENCHMARK(stepWithAllColors)->Unit(benchmark::kMicrosecond);

void coatAlone(benchmark::State& state)
{
    Painted painted;
    for (auto _ : state)
        painted.spray();
}
BENCHMARK(coatAlone)->Unit(benchmark::kMicrosecond);

void coatByALoop(benchmark::State& state)
{
    Painted painted;
    std::vector<float> thickness(painted.skin->vertices.size());
    for (auto _ : state) {
        painted.at = painted.at + 8 > 0.75 * painted.way->length() ? 0.25 * painted.way->length() : painted.at + 8;
        const process::SprayPlace place = painted.way->at(painted.at + 4);
        for (std::size_t i = 0; i < thickness.size(); ++i)
            thickness[i] += static_cast<float>(
                0.08 * painted.gun.rateAt(rob::Vec3d(painted.skin->vertices[i]) - rob::Vec3d(place.nozzle),
                                          rob::Vec3d(place.axis), rob::Vec3d(painted.skin->normals[i])));
    }
    benchmark::DoNotOptimize(thickness.data());
}
BENCHMARK(coatByALoop)->Unit(benchmark::kMicrosecond);

} // namespace
