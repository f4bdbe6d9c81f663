#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "station/support/TestStation.h"
#include "visual/FrameVisual.h"
#include "visual/VisualStateManager.h"

#include <Ogre.h>

#include <random>
#include <set>

namespace vrk::visual {
namespace {

constexpr int operations = 10'000;
constexpr std::size_t mostObjects = 40; // beyond that objects are removed first

/// A station on which everything that moves, attaches, hides, marks and removes visuals is done in any order. Run it under
/// the address sanitizer as well: what dangles shows there.
class StationRandom : public test::SceneFixture {
protected:
    unsigned below(std::size_t n) { return static_cast<unsigned>(random() % n); }
    unsigned anyId()
    {
        const auto& all = SceneCore::Get()->visuals.all();
        const unsigned id = std::next(all.begin(), below(all.size()))->first;
        // The frame of the world belongs to the scene and stays out of it.
        return below(20) == 0 || id == worldFrame->getId() ? 4711 : id;
    }
    static bool isUnder(const Visual* visual, const Visual* above)
    {
        for (; visual; visual = visual->getParent())
            if (visual == above)
                return true;
        return false;
    }

    void addObject()
    {
        switch (below(4)) {
        case 0:
            parts.push_back(test::makePart("part"));
            scene.addPart(parts.back().get());
            break;
        case 1:
            assemblies.push_back(test::makeAssembly("assembly", 2));
            layout::Layout::inst().addAssembly(assemblies.back());
            scene.addAssembly(assemblies.back().get());
            break;
        case 2:
            mechanisms.push_back(test::makeArm());
            layout::Layout::inst().addMechanism(mechanisms.back());
            scene.addMechanism(mechanisms.back().get(), true);
            break;
        default:
            mechanisms.push_back(test::makeDevice());
            layout::Layout::inst().addMechanism(mechanisms.back());
            scene.addMechanism(mechanisms.back().get(), true);
            break;
        }
    }
    void doSomething()
    {
        const unsigned id = anyId();
        const rob::Posed pose(rob::Posd(below(100), below(100), below(100)));
        switch (below(14)) {
        case 0:
            if (world->getSceneNode()->numChildren() < mostObjects)
                addObject();
            else
                scene.removeVisual(id);
            break;
        case 1:
            scene.removeVisual(id);
            break;
        case 2:
            scene.addAttachment(id, anyId(), pose);
            break;
        case 3:
            scene.deleteAttachment(id, 0, below(2) ? 0 : anyId(), pose);
            break;
        case 4:
            scene.reparentVisual(id, below(2) ? 0 : anyId());
            break;
        case 5:
            scene.moveVisualToParent(id, below(2) ? 0 : anyId(), rob::Posef(pose));
            break;
        case 6:
            scene.setVisualPose(id, rob::Posef(pose));
            break;
        case 7:
            scene.setVisualVisible(id, below(2) == 0);
            break;
        case 8:
            scene.setVisualSelected(id);
            break;
        case 9:
            if (Scene::HasVisual(id))
                scene.setVisualHighlighted(id);
            break;
        case 10:
            scene.setCollision(id, below(2) == 0);
            break;
        case 11:
            scene.clearAllCollisionContacts();
            break;
        case 12:
            scene.showCopiedVisual(id, rob::Posef(pose));
            break;
        default:
            scene.deleteCopiedVisual();
            break;
        }
    }
    void collect(const Visual* visual, std::set<const Visual*>& found)
    {
        ASSERT_TRUE(found.insert(visual).second) << "a visual stands twice in the tree";
        for (const Visual* child : visual->getChildren()) {
            ASSERT_EQ(child->getParent(), visual);
            collect(child, found);
        }
    }
    void checkEverything()
    {
        std::set<const Visual*> tree;
        collect(world, tree);
        for (const auto& [id, visual] : SceneCore::Get()->visuals.all()) {
            ASSERT_TRUE(tree.contains(visual)) << "registered and not in the tree: " << id;
            ASSERT_EQ(visual->getId(), id);
        }
        for (const visual::Visual* visual : selection::VisualSelection::Get()->registeredVisuals())
            ASSERT_TRUE(tree.contains(visual)) << "pickable and not in the tree";
        for (const visual::Visual* visual : Scene::GetStateManager()->visualsWithLayers())
            ASSERT_TRUE(tree.contains(visual)) << "has layers and is not in the tree";
    }

    std::mt19937 random{20240607};
    std::vector<std::shared_ptr<layout::Part>> parts;
    std::vector<std::shared_ptr<layout::Assembly>> assemblies;
    std::vector<std::shared_ptr<layout::Mechanism>> mechanisms;
};

TEST_F(StationRandom, NothingDanglesAfterAnySequenceOfOperations)
{
    for (int i = 0; i < 4; ++i)
        addObject();
    drain();

    int refused = 0;
    for (int step = 0; step < operations; ++step) {
        SCOPED_TRACE(testing::Message() << "step " << step);
        doSomething();
        try {
            drain();
        } catch (const std::out_of_range&) {
            ++refused; // an id that has no visual
        } catch (const std::bad_optional_access&) {
            ++refused; // a kind that is not copied
        }
        checkEverything();
        if (HasFatalFailure())
            return;
    }
    EXPECT_GT(refused, operations / 100);
    EXPECT_LT(refused, operations / 2);
    scene.deleteCopiedVisual();
    drain();
}

} // namespace
} // namespace vrk::visual
