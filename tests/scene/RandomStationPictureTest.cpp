#include "platform/layout/Body.h"
#include "scene/Scene.h"
#include "support/SceneFixture.h"
#include "visual/SolidVisual.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <Ogre.h>
#include <TopExp_Explorer.hxx>

#include <random>

namespace vrk::visual {
namespace {

using test::Picture;
using test::View;

/// Has everything drawn as its visual says: with its back faces, and with edges that are too small to be seen.
class NothingLeftOut : public Ogre::SceneManager::Listener {
public:
    void preFindVisibleObjects(Ogre::SceneManager* source, Ogre::SceneManager::IlluminationRenderStage,
                               Ogre::Viewport*) override
    {
        source->getRenderQueue()->setRenderableListener(nullptr); // the library's own was told ahead of this one
    }
};

/// A station whose bodies come and go, and change their places and looks.
class RandomStation : public test::RenderTest, public testing::WithParamInterface<unsigned> {
protected:
    RandomStation() : random(GetParam())
    {
        setSize(640, 480);
        const TopoDS_Shape box = test::meshedBox(60, 40, 50);
        const TopoDS_Shape drill = BRepPrimAPI_MakeCylinder(gp_Ax2({30, 20, -1}, gp::DZ()), 12, 100).Shape();
        shapes = {box, test::meshed(BRepAlgoAPI_Cut(test::meshedBox(60, 40, 50), drill).Shape()),
                  TopExp_Explorer(test::meshedBox(50, 50, 20), TopAbs_SHELL).Current(),
                  test::meshed(BRepPrimAPI_MakeCylinder(gp_Ax2(gp::Origin(), gp::DZ()), 20, 60).Shape())};
        for (int i = 0; i < 25; ++i)
            add();
    }
    ~RandomStation() override { scene.setDisplayMode(Scene::DisplayMode::Shaded); }

    unsigned below(unsigned count) { return std::uniform_int_distribution<unsigned>(0, count - 1)(random); }
    float between(float low, float high) { return std::uniform_real_distribution<float>(low, high)(random); }
    rob::Posf anyPlace() { return {between(-300, 300), between(-300, 300), between(-100, 100)}; }
    unsigned anyId() { return ids[below(static_cast<unsigned>(ids.size()))]; }
    SolidVisual& anyBody() { return *static_cast<SolidVisual*>(Scene::GetVisual(anyId())); }

    void add()
    {
        const unsigned kind = below(static_cast<unsigned>(shapes.size()));
        const auto body =
            test::addModelBody(shapes[kind], "random-" + std::to_string(kind), below(2) == 0 ? "#C04020" : "#3060B0");
        SolidVisual::Build(world, body.get(), shapes[kind]);
        ids.push_back(body->getId());
        Scene::GetVisual(ids.back())->setPosition(anyPlace());
    }
    void change()
    {
        switch (below(12)) {
        case 0:
            return add();
        case 1:
            return remove();
        case 2:
            return scene.setVisualsSelected({anyId(), anyId()});
        case 3:
            return scene.clearSelectedVisuals();
        case 4:
            return scene.setVisualHighlighted(anyId());
        case 5:
            return scene.clearHighlightedVisual();
        case 6:
            return scene.setVisualVisible(anyId(), below(2) == 0);
        case 7:
            return scene.setVisualColor(anyId(), between(0, 1), between(0, 1), between(0, 1));
        case 8:
            return anyBody().setFaceVisible(1 + below(3), below(2) == 0);
        case 9:
            return scene.setCollision(anyId(), below(2) == 0);
        case 10:
            return anyBody().setScale(below(2) == 0 ? -1 : 1, 1, between(0.5f, 2));
        default:
            return scene.setVisualPose(anyId(), rob::Posef(anyPlace()));
        }
    }
    void remove()
    {
        if (ids.size() < 10)
            return;
        const unsigned place = below(static_cast<unsigned>(ids.size()));
        scene.removeVisual(ids[place]);
        ids.erase(ids.begin() + place);
    }
    /// From outside of all bodies, near or far.
    View anyView()
    {
        const float distance = below(2) == 0 ? between(900, 1500) : between(2500, 6000);
        const float angle = between(0, 6.28f);
        return {{distance * std::cos(angle), distance * std::sin(angle), distance * between(-0.5f, 0.8f)}, {0, 0, 0}};
    }

    std::mt19937 random;
    std::vector<TopoDS_Shape> shapes;
    std::vector<unsigned> ids;
};

/// Three pixels by three that are all different. Where a surface turns away, its back may lie as near as its front, or be seen
/// through the seam of two triangles: those are single pixels along outlines.
int blotches(const Picture& one, const Picture& other)
{
    const auto differs = [&](unsigned x, unsigned y) { return test::difference(one.at(x, y), other.at(x, y)) > 8; };
    int count = 0;
    for (unsigned y = 1; y + 1 < one.height; ++y)
        for (unsigned x = 1; x + 1 < one.width; ++x) {
            bool all = true;
            for (unsigned i = 0; i < 9; ++i)
                all = all && differs(x - 1 + i % 3, y - 1 + i / 3);
            count += all ? 1 : 0;
        }
    return count;
}

int shownPixels(const Picture& picture)
{
    int count = 0;
    for (unsigned y = 0; y < picture.height; ++y)
        for (unsigned x = 0; x < picture.width; ++x)
            count += test::difference(picture.at(x, y), picture.at(0, 0)) > 8 ? 1 : 0;
    return count;
}

TEST_P(RandomStation, LooksAsIfNothingWereLeftOut)
{
    NothingLeftOut whole;
    for (int step = 0; step < 60; ++step) {
        for (int i = 0; i < 4; ++i) {
            change();
            drain(); // what is removed is asked for nothing
        }
        const View view = anyView();
        const Picture drawn = render(view);
        sceneManager->addListener(&whole);
        const Picture expected = render(view);
        sceneManager->removeListener(&whole);

        ASSERT_EQ(blotches(drawn, expected), 0) << "step " << step;
        ASSERT_GT(shownPixels(expected), 200) << "step " << step;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomStation, testing::Values(1u, 2u, 3u));

} // namespace
} // namespace vrk::visual
