#include "mesh/Mesh.h"
#include "platform/geometry/MeshEdges.h"
#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "support/TempFolder.h"
#include "visual/MeshVisual.h"

#include <BRep_Builder.hxx>
#include <Ogre.h>
#include <TopoDS_Compound.hxx>

#include <malloc.h>

#include <cmath>
#include <cstring>
#include <fstream>

/// What a body costs beyond its geometry. A program of its own: it counts what is on the heap, and all of it lies in one
/// place here, whichever thread asks for it.
namespace vrk::visual {
namespace {

const int oneArena = mallopt(M_ARENA_MAX, 1);

std::size_t heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// A field of /proc/self/status that is told in kB, in bytes.
std::size_t statusBytes(const std::string& field)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(field + ":"))
            return std::stoul(line.substr(field.size() + 1)) * 1024;
    return 0;
}

/// Of 180 faces and 360 edges.
TopoDS_Shape thirtyBoxes()
{
    TopoDS_Compound all;
    BRep_Builder builder;
    builder.MakeCompound(all);
    for (int i = 0; i < 30; ++i)
        builder.Add(all, test::meshedBox(10 + i, 10, 10));
    return all;
}

/// A binary file of a ball.
void writeBall(const std::filesystem::path& file, unsigned rings)
{
    std::vector<float> corners;
    const auto add = [&](unsigned i, unsigned j) {
        const double a = 2 * M_PI * i / (2 * rings), b = M_PI * j / rings;
        for (const double v : {std::sin(b) * std::cos(a), std::sin(b) * std::sin(a), std::cos(b)})
            corners.push_back(static_cast<float>(100 * v));
    };
    for (unsigned i = 0; i < 2 * rings; ++i)
        for (unsigned j = 0; j < rings; ++j)
            for (const auto& [di, dj] : {std::pair(0u, 0u), {0u, 1u}, {1u, 1u}, {0u, 0u}, {1u, 1u}, {1u, 0u}})
                add(i + di, j + dj);
    std::ofstream stream(file, std::ios::binary);
    const std::string head(80, ' ');
    const auto count = static_cast<std::uint32_t>(corners.size() / 9);
    stream.write(head.data(), 80).write(reinterpret_cast<const char*>(&count), 4);
    for (std::size_t i = 0; i < corners.size(); i += 9) {
        char facet[50] = {};
        std::memcpy(facet + 12, &corners[i], 36);
        stream.write(facet, sizeof facet);
    }
}

class BodyCost : public test::RenderTest {
protected:
    using GiveGeometry = std::function<void(layout::Body&)>;

    void load(int count, const GiveGeometry& give)
    {
        for (int i = 0; i < count; ++i) {
            auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
            part->setPose(rob::Posed(rob::Posd(300 * (parts % 100), 300 * (parts / 100), 0)));
            ++parts;
            const auto body = part->addBody("body");
            give(*body);
            layout::Layout::inst().addPart(part);
            scene.addPart(part.get());
            if (giveEdges)
                scene.addRenderTask([this, id = body->getId()] { giveEdges(id); }, 0);
        }
        drain();
        drain(); // what these post
        selection::VisualSelection::Get()->update();
    }
    /// Bytes of each, from the model to the first pick, where there are some already.
    std::size_t costOfOneMore(const GiveGeometry& give)
    {
        constexpr int count = 2000;
        load(10, give);
        const std::size_t before = heapBytes();
        load(count, give);
        return (heapBytes() - before) / count;
    }

    int parts = 0;
    std::function<void(unsigned body)> giveEdges; ///< to each body when it is shown
    test::TempFolder folder;
};

constexpr std::size_t allowed = 12 * 1024;

TEST_F(BodyCost, OneMoreSolidOfAShapeIsBounded)
{
    const TopoDS_Shape shape = thirtyBoxes();

    const std::size_t bytes = costOfOneMore([&shape](layout::Body& body) {
        body.setGeometry("thirty boxes", "brep");
        body.setShape(shape);
    });

    EXPECT_LE(bytes, allowed);
    RecordProperty("bytes", static_cast<int>(bytes));
    EXPECT_EQ(world->getFacesNum(), 180u * 2010);
}

TEST_F(BodyCost, OneMoreMeshOfAFileIsBounded)
{
    const std::string file = (folder.path() / "ball.stl").string();
    writeBall(file, 30);

    const std::size_t bytes = costOfOneMore([&file](layout::Body& body) { body.setGeometry(file, "stl"); });

    EXPECT_LE(bytes, allowed);
    RecordProperty("bytes", static_cast<int>(bytes));
    EXPECT_EQ(world->getTrianglesNum(), 3600u * 2010);
}

TEST_F(BodyCost, OneMoreMeshWithItsEdgesIsBounded)
{
    const std::string file = (folder.path() / "coarse.stl").string();
    writeBall(file, 3); // nearly each two triangles of it are bent
    std::shared_ptr<const geometry::MeshEdges> edges;

    giveEdges = [&](unsigned body) {
        const Mesh& mesh = *dynamic_cast<const MeshVisual&>(*Scene::GetVisual(body)).getMesh();
        if (!edges)
            edges = std::make_shared<const geometry::MeshEdges>(geometry::edgesOfMesh(mesh.vertices, mesh.indices));
        scene.addMeshEdges(body, edges);
    };

    const std::size_t bytes = costOfOneMore([&file](layout::Body& body) { body.setGeometry(file, "stl"); });

    EXPECT_LE(bytes, allowed);
    RecordProperty("bytes", static_cast<int>(bytes));
    EXPECT_EQ(edges.use_count(), 2) << "all bodies have one buffer of lines";
}

/// Software drivers keep what they have not drawn yet.
TEST_F(BodyCost, PictureOfMillionsOfTrianglesIsDrawnInLittleMemory)
{
    const std::string& device = Ogre::Root::getSingleton().getRenderSystem()->getCapabilities()->getDeviceName();
    if (device.find("llvmpipe") == std::string::npos)
        GTEST_SKIP() << "a graphics card, or another driver: " << device;
    const std::string file = (folder.path() / "fine.stl").string();
    writeBall(file, 200);
    const auto give = [&file](layout::Body& body) { body.setGeometry(file, "stl"); };
    load(1, give);
    setSize(1600, 1200, 4);
    render(test::lookingAtOrigin(600));
    load(29, give);                                // 4.8 million triangles
    malloc_trim(0);                                // what other tests left
    std::ofstream("/proc/self/clear_refs") << "5"; // the high-water mark falls to what is held now
    const std::size_t before = statusBytes("VmHWM");

    render({{4500, -3000, 9000}, {4500, 0, 0}});

    EXPECT_LE(statusBytes("VmHWM") - before, std::size_t{150} << 20);
}

} // namespace
} // namespace vrk::visual
