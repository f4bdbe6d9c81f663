#include "scene/core/SceneCore.h"
#include "station/support/TestCell.h"
#include "support/Allocations.h"
#include "visual/VisualStateManager.h"

#include <Ogre.h>

#include <map>

namespace vrk::visual {
namespace {

using test::Cost;
using test::costOf;

/// What a mesh is on the graphics card: its buffers and their bytes, and how often it was built.
struct MeshRecord {
    std::size_t states = 0;
    std::vector<const void*> buffers;
    std::vector<std::uint8_t> bytes;

    bool operator==(const MeshRecord&) const = default;
};

void record(Ogre::HardwareBuffer& buffer, MeshRecord& mesh)
{
    mesh.buffers.push_back(&buffer);
    const std::size_t start = mesh.bytes.size();
    mesh.bytes.resize(start + buffer.getSizeInBytes());
    buffer.readData(0, buffer.getSizeInBytes(), &mesh.bytes[start]);
}

void record(const Ogre::VertexData* vertices, MeshRecord& mesh)
{
    if (!vertices)
        return;
    for (const auto& [index, buffer] : vertices->vertexBufferBinding->getBindings())
        record(*buffer, mesh);
}

std::map<std::string, MeshRecord> allMeshes()
{
    std::map<std::string, MeshRecord> meshes;
    auto entries = Ogre::MeshManager::getSingleton().getResourceIterator();
    while (entries.hasMoreElements()) {
        const auto mesh = Ogre::static_pointer_cast<Ogre::Mesh>(entries.getNext());
        MeshRecord& found = meshes[mesh->getName()];
        found.states = mesh->getStateCount();
        record(mesh->sharedVertexData, found);
        for (const Ogre::SubMesh* part : mesh->getSubMeshes()) {
            record(part->vertexData, found);
            if (part->indexData && part->indexData->indexBuffer)
                record(*part->indexData->indexBuffer, found);
        }
    }
    return meshes;
}

class HighlightCost : public test::SceneFixture {
protected:
    HighlightCost() : cell(test::addCell()), states(*Scene::GetStateManager())
    {
        Scene::LoadStation();
        drain();
        // Once each before anything is counted: names are looked up and tables take their sizes.
        for (const unsigned id : {cell.arm->getId(), cell.table->getId(), body()})
            highlight(id);
        clear();
    }
    unsigned body() const { return test::bodyIdsOf(*cell.workpiece).front(); }
    void highlight(unsigned id)
    {
        scene.setVisualHighlighted(id);
        drain();
    }
    void clear()
    {
        scene.clearHighlightedVisual();
        drain();
    }
    /// What a layer of a visual costs by itself, nothing being shown of it.
    Cost costOfLayer(Visual* visual)
    {
        const Cost cost = costOf([&] { states.setLayer(visual, VisualStateLayer::Highlighted, true, {}); });
        states.setLayer(visual, VisualStateLayer::Highlighted, false, {});
        return cost;
    }

    test::TestCell cell;
    VisualStateManager& states;
};

TEST_F(HighlightCost, CounterSeesWhatTheLibraryAllocates)
{
    const Cost cost = costOf([&] { scene.addRenderTask([this, text = std::string(100, 'x')] { (void)text; }, 0); });

    EXPECT_GE(cost.allocations, 2u);
    EXPECT_GT(cost.kept, 100);
    EXPECT_GT(costOfLayer(Scene::GetVisual(body())).kept, 0);
}

TEST_F(HighlightCost, ShowingTheHighlightOfABodyAllocatesNothingBesideItsLayer)
{
    Visual* visual = Scene::GetVisual(body());
    const Cost layer = costOfLayer(visual);

    const Cost shown = costOf([&] {
        states.setLayer(visual, VisualStateLayer::Highlighted, true, {});
        states.refresh(visual);
    });

    EXPECT_EQ(shown, layer);
    states.setLayer(visual, VisualStateLayer::Highlighted, false, {});
    states.refresh(visual);
}

TEST_F(HighlightCost, HighlightedArmKeepsOneLayerHoweverManyBodiesItHas)
{
    const Cost layer = costOfLayer(Scene::GetVisual(cell.arm->getId()));

    const Cost shown = costOf([&] { highlight(cell.arm->getId()); });

    EXPECT_LE(shown.kept, layer.kept);
    EXPECT_EQ(states.visualsWithLayers().size(), 1u);
}

TEST_F(HighlightCost, NothingIsKeptWhenTheHighlightHasGone)
{
    const Cost cost = costOf([&] {
        for (int i = 0; i < 100; ++i) {
            highlight(i % 2 ? cell.arm->getId() : body());
            clear();
        }
    });

    EXPECT_LE(cost.kept, 0);
}

TEST_F(HighlightCost, NoMeshIsMadeOrChangedOrRebuilt)
{
    const auto before = allMeshes();
    ASSERT_GE(before.size(), 10u);

    highlight(cell.arm->getId());
    const auto ofArm = allMeshes();
    highlight(body());
    const auto ofBody = allMeshes();
    clear();

    EXPECT_TRUE(ofArm == before);
    EXPECT_TRUE(ofBody == before);
    EXPECT_TRUE(allMeshes() == before);
}

TEST_F(HighlightCost, RecordOfMeshesTellsANewColour)
{
    const auto before = allMeshes();

    scene.setVisualColor(body(), 1, 0, 0);
    drain();

    EXPECT_FALSE(allMeshes() == before);
}

} // namespace
} // namespace vrk::visual
