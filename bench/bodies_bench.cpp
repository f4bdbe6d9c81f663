// Many bodies of few geometries: what each of them costs beyond its geometry, in the view and in the picking service, and what a
// picture of a hundred fine ones takes, against the same nodes, entities and lines made by hand with OGRE alone. Needs a
// display; xvfb-run gives it one.

#include "bench/support/Contest.h"
#include "bench/support/Peak.h"
#include "bench/support/Size.h"
#include "bench/support/Started.h"

#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "scene/core/SceneCore.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"
#include "visual/Visual.h"

#include <Ogre.h>

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace vrk;
using visual::Scene;

constexpr int distinctShapes = 20;
constexpr float cell = 250; // model units from one body to the next
const int partCount = bench::sized(20'000, 500);
const int pickedCount = bench::sized(100'000, 1'000);
const int ballCount = bench::sized(100, 3);
const unsigned ballRings = bench::sized(200u, 20u); // 400 triangles to each of 200

/// All of the heap in one place, whichever thread asks for it: the count knows but that.
const int oneArena = mallopt(M_ARENA_MAX, 1);

double heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

const TopoDS_Shape& shapeOf(int index)
{
    static const std::vector<TopoDS_Shape> shapes = [] {
        std::vector<TopoDS_Shape> made;
        for (int i = 0; i < distinctShapes; ++i) {
            made.push_back(BRepPrimAPI_MakeBox(100 + i, 100, 100).Shape());
            BRepMesh_IncrementalMesh(made.back(), 0.5, false, 0.2, false);
        }
        return made;
    }();
    return shapes[static_cast<std::size_t>(index % distinctShapes)];
}

/// On a square in the plane of the floor.
rob::Posf placeOf(int index, int count)
{
    const int side = static_cast<int>(std::ceil(std::sqrt(count)));
    return {cell * static_cast<float>(index % side), cell * static_cast<float>(index / side), 0};
}

/// A binary STL file of a ball.
std::string ballFile()
{
    static const std::string file = [] {
        const std::string path = (std::filesystem::temp_directory_path() / "vrk_bench_ball.stl").string();
        std::ofstream stream(path, std::ios::binary);
        const std::string head(80, ' ');
        const std::uint32_t count = 4 * ballRings * ballRings;
        stream.write(head.data(), 80).write(reinterpret_cast<const char*>(&count), sizeof count);
        const auto corner = [](unsigned i, unsigned j) {
            const double a = M_PI * i / ballRings, b = M_PI * j / ballRings;
            return rob::Posf(
                rob::Posd(100 * std::sin(b) * std::cos(a), 100 * std::sin(b) * std::sin(a), 100 * std::cos(b)));
        };
        for (unsigned i = 0; i < 2 * ballRings; ++i)
            for (unsigned j = 0; j < ballRings; ++j) {
                const rob::Posf a = corner(i, j), b = corner(i + 1, j), c = corner(i + 1, j + 1), d = corner(i, j + 1);
                for (const auto& facet : {std::array{rob::Posf(), a, d, c}, std::array{rob::Posf(), a, c, b}})
                    stream.write(reinterpret_cast<const char*>(facet.data()), sizeof facet).write("\0", 2);
            }
        return path;
    }();
    return file;
}

using GiveGeometry = std::function<void(layout::Body&, int)>;

void giveBox(layout::Body& body, int index)
{
    body.setGeometry("box" + std::to_string(index % distinctShapes), "brep");
    body.setShape(shapeOf(index));
}

void giveBall(layout::Body& body, int)
{
    body.setGeometry(ballFile(), "stl");
}

void fillStation(int count, const GiveGeometry& give)
{
    for (int i = 0; i < count; ++i) {
        auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
        part->setPose(rob::Posed(rob::Posd(placeOf(i, count))));
        give(*part->addBody("body"), i);
        layout::Layout::inst().addPart(part);
    }
}

void emptyStation(Scene& scene)
{
    for (const auto& part : layout::Layout::inst().parts)
        scene.removeVisual(part->getId());
    scene.processMsgs();
    layout::Layout::inst().clear();
}

/// All of the square in view.
class Look {
public:
    explicit Look(int count, unsigned width = 960, unsigned height = 540, unsigned samples = 0)
        : target(width, height, samples)
    {
        const rob::Posf farthest = placeOf(count - 1, count);
        visual::Camera& camera = *visual::Camera::Get();
        camera.setRenderTarget(target.renderTarget());
        camera.setWorldPose({{farthest.x / 2, farthest.y / 2, 1.5f * farthest.length()}, rob::Rotationf()});
        camera.setClipDist(10, 10 * farthest.length());
    }
    void draw() const
    {
        Ogre::Root::getSingleton().renderOneFrame();
        target.read(); // which waits for it
    }

private:
    visual::OffscreenTarget target;
};

/// From the model to the first picture, and the first answer of the picking service.
void ours(benchmark::State& state)
{
    Scene& scene = bench::startedScene();
    const auto count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        const double empty = heapBytes();
        fillStation(count, giveBox);
        const double model = heapBytes();
        state.counters["load ms"] = bench::millisecondsOf([&] {
            Scene::LoadStation();
            scene.processMsgs();
        });
        if (Scene::GetWorldVisual()->getBodiesNum() != static_cast<unsigned>(count))
            throw std::logic_error("not every part was loaded");
        const double visuals = heapBytes();
        selection::VisualSelection& service = *selection::VisualSelection::Get();
        state.counters["picking ms"] = bench::millisecondsOf([&service] { service.update(); });
        const double picking = heapBytes();
        const rob::Posf above = placeOf(count / 2, count) + rob::Vec3f(40, 30, 1000);
        if (!service.select(visual::Ray(above, {0, 0, -1})).hit)
            throw std::logic_error("a body is not found");
        const Look look(count);
        state.counters["first frame ms"] = bench::millisecondsOf([&look] { look.draw(); });
        state.counters["next frame ms"] = bench::millisecondsOf([&look] { look.draw(); });
        state.counters["model KB"] = (model - empty) / 1024 / count;
        state.counters["visual KB"] = (visuals - model) / 1024 / count;
        state.counters["picking KB"] = (picking - visuals) / 1024 / count;
        emptyStation(scene);
        service.update();
    }
}

/// Segments whose vertices lie in a buffer that others draw, too.
class BareLines : public Ogre::SimpleRenderable {
public:
    BareLines(Ogre::VertexData* vertices, const Ogre::AxisAlignedBox& box)
    {
        mRenderOp.operationType = Ogre::RenderOperation::OT_LINE_LIST;
        mRenderOp.useIndexes = false;
        mRenderOp.vertexData = vertices;
        setBoundingBox(box);
        setRenderQueueGroup(60);
    }
    Ogre::Real getBoundingRadius() const override { return mBox.getHalfSize().length(); }
    Ogre::Real getSquaredViewDepth(const Ogre::Camera*) const override { return 0; }
};

/// For each part what ours has, and nothing else: nodes for the part, its body, its edges and its frame, which is hidden; an
/// entity; the segments of the edges, and the three axes of the frame. One mesh and one buffer of lines serve them all.
class ByHand {
public:
    /// @param meshName  of OGRE's; where it is empty, one as small as a box is made.
    ByHand(int count, const std::string& meshName)
        : manager(*visual::SceneCore::Get()->sceneManager), root(manager.getRootSceneNode()->createChildSceneNode()),
          hasOwnMesh(meshName.empty()),
          mesh(hasOwnMesh ? makeMesh() : Ogre::MeshManager::getSingleton().getByName(meshName)),
          segments(makeVertices(24))
    {
        for (int i = 0; i < count; ++i)
            addPart(placeOf(i, count));
    }
    ~ByHand()
    {
        for (Ogre::Entity* entity : entities)
            manager.destroyEntity(entity);
        lines.clear();
        root->removeAndDestroyAllChildren();
        manager.destroySceneNode(root);
        if (hasOwnMesh)
            Ogre::MeshManager::getSingleton().remove(mesh);
    }
    ByHand(const ByHand&) = delete;
    ByHand& operator=(const ByHand&) = delete;

private:
    /// As many vertices as a box has segments to its edges, or corners of the triangles of its faces; they lie on a line, which
    /// costs what any others cost until it is drawn.
    static std::unique_ptr<Ogre::VertexData> makeVertices(std::size_t vertexCount)
    {
        auto data = std::make_unique<Ogre::VertexData>();
        data->vertexCount = vertexCount;
        data->vertexDeclaration->addElement(0, 0, Ogre::VET_FLOAT3, Ogre::VES_POSITION);
        std::vector<rob::Posf> points;
        for (std::size_t i = 0; i < vertexCount; ++i)
            points.emplace_back(static_cast<float>(i % 2) * 100, static_cast<float>(i / 2 % 2) * 100,
                                static_cast<float>(i / 4 % 2) * 100);
        const auto buffer = Ogre::HardwareBufferManager::getSingleton().createVertexBuffer(
            sizeof(rob::Posf), vertexCount, Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY);
        buffer->writeData(0, vertexCount * sizeof(rob::Posf), points.data());
        data->vertexBufferBinding->setBinding(0, buffer);
        return data;
    }

    static Ogre::MeshPtr makeMesh()
    {
        Ogre::MeshPtr made = Ogre::MeshManager::getSingleton().createManual(
            "bare box", Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
        Ogre::SubMesh* part = made->createSubMesh();
        part->useSharedVertices = false;
        part->vertexData = makeVertices(36).release();
        made->_setBounds({0, 0, 0, 100, 100, 100}, false);
        made->load();
        return made;
    }

    void addPart(const rob::Posf& at)
    {
        Ogre::SceneNode* part = root->createChildSceneNode(Ogre::Vector3(at.x, at.y, at.z));
        Ogre::SceneNode* frame = part->createChildSceneNode();
        for (const char* axis : {"RedFrameLine", "GreenFrameLine", "BlueFrameLine"})
            addLines(*frame, axis);
        frame->setVisible(false);
        Ogre::SceneNode* body = part->createChildSceneNode();
        entities.push_back(manager.createEntity(mesh));
        entities.back()->setMaterialName("Mechanism"); // which wants no colours in the vertices
        body->attachObject(entities.back());
        if (hasOwnMesh) // those of files have no edges
            addLines(*body->createChildSceneNode(), "WireFrame");
    }

    void addLines(Ogre::SceneNode& node, const char* material)
    {
        lines.push_back(std::make_unique<BareLines>(segments.get(), Ogre::AxisAlignedBox(0, 0, 0, 100, 100, 100)));
        lines.back()->setMaterial(Ogre::MaterialManager::getSingleton().getByName(material));
        node.attachObject(lines.back().get());
    }

    Ogre::SceneManager& manager;
    Ogre::SceneNode* root;
    bool hasOwnMesh;
    Ogre::MeshPtr mesh;
    std::unique_ptr<Ogre::VertexData> segments;
    std::vector<Ogre::Entity*> entities;
    std::vector<std::unique_ptr<BareLines>> lines;
};

void byHand(benchmark::State& state)
{
    bench::startedScene();
    const auto count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        const double empty = heapBytes();
        std::unique_ptr<ByHand> scene;
        state.counters["load ms"] = bench::millisecondsOf([&] { scene = std::make_unique<ByHand>(count, ""); });
        state.counters["visual KB"] = (heapBytes() - empty) / 1024 / count;
        const Look look(count);
        state.counters["first frame ms"] = bench::millisecondsOf([&look] { look.draw(); });
        state.counters["next frame ms"] = bench::millisecondsOf([&look] { look.draw(); });
    }
}

/// A picture as `vrkview --shot` makes it, of balls that have one mesh.
/// @param isByHand  all but the first, which brings the mesh, are made by hand.
void drawBalls(benchmark::State& state, bool isByHand)
{
    Scene& scene = bench::startedScene();
    for (auto _ : state) {
        fillStation(1, giveBall);
        Scene::LoadStation();
        scene.processMsgs();
        std::unique_ptr<ByHand> others;
        std::optional<Look> look(std::in_place, ballCount, 3200, 2000, 4);
        look->draw();
        const bench::Peak peak;
        state.counters["load ms"] = bench::millisecondsOf([&] {
            if (isByHand) {
                others = std::make_unique<ByHand>(ballCount, ballFile());
                return;
            }
            emptyStation(scene);
            fillStation(ballCount, giveBall);
            Scene::LoadStation();
            scene.processMsgs();
        });
        state.counters["first frame ms"] = bench::millisecondsOf([&look] { look->draw(); });
        // Signed: what a process holds is told with some kB of slack.
        state.counters["peak MB"] = static_cast<double>(static_cast<std::int64_t>(peak.bytes())) / (1 << 20);
        look.reset();
        others.reset();
        emptyStation(scene);
    }
}

BENCHMARK_CAPTURE(drawBalls, ours, false)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK_CAPTURE(drawBalls, byHand, true)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(ours)->Arg(partCount)->Arg(pickedCount)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(byHand)->Arg(partCount)->Arg(pickedCount)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
