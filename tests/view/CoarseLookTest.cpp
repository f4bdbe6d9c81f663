#include "PlainWindow.h"

#include "platform/layout/Body.h"
#include "scene/ViewLook.h"
#include "view/OffscreenTarget.h"
#include "view/RenderFrame.h"
#include "view/ViewTools.h"
#include "view/WindowTarget.h"
#include "visual/DynamicLines.h"
#include "visual/LineVisual.h"

#include <gmock/gmock.h>

#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace vrk::visual {
namespace {

using rob::Posf;
using test::largestDifference;
using test::Picture;
using test::PlainWindow;
using testing::IsSupersetOf;
using testing::StrEq;

// Read while the program starts, ahead of the library.
const std::string textBeforeTheStart = [] {
    try {
        SetCoarseness(Coarseness::NoEdges);
    } catch (const std::logic_error& failure) {
        return std::string(failure.what());
    }
    return std::string("nothing was thrown");
}();

constexpr unsigned width = 400;
constexpr unsigned height = 300;

/// What is drawn: edges of bodies, other lines, and the nodes of bodies.
class Drawn : public Ogre::RenderObjectListener {
public:
    void notifyRenderSingleObject(Ogre::Renderable* renderable, const Ogre::Pass*, const Ogre::AutoParamDataSource*,
                                  const Ogre::LightList*, bool) override
    {
        if (const auto* lines = dynamic_cast<const DynamicLines*>(renderable))
            ++(lines->getMaterial()->getName() == "WireFrame" ? edges : otherLines);
        if (const auto* part = dynamic_cast<const Ogre::SubEntity*>(renderable))
            bodies.insert(part->getParent()->getParentSceneNode());
    }
    int edges = 0;
    int otherLines = 0;
    std::set<const Ogre::SceneNode*> bodies;
};

/// The outline of what is selected, which is smoothed by itself: as long and as wide in both, and nothing else differs.
void expectSameButForSmoothOutline(const Picture& a, const Picture& b)
{
    const auto isMagenta = [](const test::Pixel& pixel) { return pixel.b > pixel.g + 60 && pixel.r > pixel.g + 60; };
    int inA = 0, inB = 0, unlike = 0;
    for (unsigned y = 0; y < a.height; ++y)
        for (unsigned x = 0; x < a.width; ++x) {
            inA += isMagenta(a.at(x, y)) ? 1 : 0;
            inB += isMagenta(b.at(x, y)) ? 1 : 0;
            unlike += test::difference(a.at(x, y), b.at(x, y)) > 2 ? 1 : 0;
        }
    EXPECT_GT(inA, 500);
    EXPECT_NEAR(inA, inB, 0.15 * inA);
    EXPECT_LT(unlike, 3 * inA);
}

/// Two boxes and a line in a window with four samples for each pixel.
class CoarseLookTest : public test::RenderTest {
protected:
    CoarseLookTest() : window(width, height), target(window.id, width, height, 4)
    {
        window.show();
        main.setRenderTarget(target.renderTarget());
        main.setClipDist(1, 100000);
        test::lookAlong(main, {200, -400, 300}, {-2, 4, -3});
        left = addBox("coarse-left", {-110, -50, -50}, 100);
        right = addBox("coarse-right", {10, -50, -50}, 100);
        std::vector<Posf> points{{-120, 0, 80}, {120, 0, 80}};
        LineVisual::Build(world, &points);
        drain();
    }
    ~CoarseLookTest() override
    {
        SetCoarseness(Coarseness::Whole);
        SetLineLook(LineLook::None);
        SetOutlined({});
        SetDepthShade(false);
        ResetCornerPicture();
        scene.setDisplayMode(Scene::DisplayMode::ShadedWithEdges);
        scene.setBorderHighlightEnabled(false);
        drain();
        main.setRenderTarget(nullptr);
    }

    SolidVisual* addBox(const std::string& uri, const Posf& at, double side)
    {
        const TopoDS_Shape shape = test::meshedBox(side, side, side);
        const auto body = test::addModelBody(shape, uri, "#C05030");
        SolidVisual::Build(world, body.get(), shape);
        auto* solid = static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
        solid->setPosition(at);
        return solid;
    }
    /// A floor of boxes that have some five pixels each, from corner to corner.
    std::vector<SolidVisual*> addSmallBoxes()
    {
        std::vector<SolidVisual*> boxes;
        for (int i = 0; i < 400; ++i) {
            boxes.push_back(addBox(
                "coarse-small",
                {-100.0f + 10.0f * static_cast<float>(i % 20), -100.0f + 10.0f * static_cast<float>(i / 20), -60}, 4));
        }
        return boxes;
    }
    Picture seen(Coarseness coarseness)
    {
        SetCoarseness(coarseness);
        drain();
        renderFrame();
        return window.onScreen();
    }
    Drawn drawn(Coarseness coarseness)
    {
        Drawn counter;
        sceneManager->addRenderObjectListener(&counter);
        seen(coarseness);
        sceneManager->removeRenderObjectListener(&counter);
        return counter;
    }
    /// The same into a texture.
    Picture inTexture(unsigned samples)
    {
        const OffscreenTarget texture(width, height, samples);
        main.setRenderTarget(texture.renderTarget());
        scene.setBorderHighlightEnabled(!scene.getSelectedVisuals().empty());
        drain();
        renderFrame();
        Picture picture{width, height, texture.read()};
        main.setRenderTarget(target.renderTarget());
        scene.setBorderHighlightEnabled(!scene.getSelectedVisuals().empty());
        return picture;
    }

    Camera& main = *Camera::Get();
    PlainWindow window;
    WindowTarget target;
    SolidVisual* left = nullptr;
    SolidVisual* right = nullptr;
};

const std::vector coarse{Coarseness::NoEdges, Coarseness::FewerSamples, Coarseness::FewerBodies};

TEST_F(CoarseLookTest, NeedsAStartedLibrary)
{
    EXPECT_THAT(textBeforeTheStart, StrEq("The library has not been started."));
    EXPECT_EQ(GetCoarseness(), Coarseness::Whole);
    SetCoarseness(Coarseness::FewerBodies);
    EXPECT_EQ(GetCoarseness(), Coarseness::FewerBodies);
}

TEST_F(CoarseLookTest, EdgesOfBodiesAreLeftOutAndNothingElse)
{
    const Drawn whole = drawn(Coarseness::Whole);
    EXPECT_EQ(whole.edges, 2);
    EXPECT_GE(whole.otherLines, 1);
    const Picture before = window.onScreen();
    const Posf onEdge(10, -50, 0);
    const Posf onFace(60, -50, 10);
    for (const Coarseness level : coarse) {
        const Drawn some = drawn(level);
        EXPECT_EQ(some.edges, 0);
        EXPECT_EQ(some.otherLines, whole.otherLines);
        EXPECT_EQ(some.bodies, whole.bodies);
        const Picture picture = window.onScreen();
        EXPECT_GT(test::difference(pixelAt(picture, onEdge), pixelAt(before, onEdge)), 20);
        EXPECT_LE(test::difference(pixelAt(picture, onFace), pixelAt(before, onFace)), 2);
    }
}

TEST_F(CoarseLookTest, EdgesStayWhereTheyAreAllThatIsDrawn)
{
    scene.setDisplayMode(Scene::DisplayMode::Edges);
    for (const Coarseness level : coarse)
        EXPECT_EQ(drawn(level).edges, 2);
    scene.setDisplayMode(Scene::DisplayMode::ShadedWithEdges);
    SetLineLook(LineLook::Visible);
    for (const Coarseness level : coarse)
        EXPECT_EQ(drawn(level).edges, 2);
}

TEST_F(CoarseLookTest, EdgesOfWhatTellsAStateStay)
{
    scene.setVisualsSelected({left->getId()});
    EXPECT_EQ(drawn(Coarseness::FewerBodies).edges + drawn(Coarseness::NoEdges).edges, 2) << "selected";
    scene.clearSelectedVisuals();
    drain();
    scene.setVisualHighlighted(left->getId());
    EXPECT_EQ(drawn(Coarseness::NoEdges).edges, 1) << "highlighted";
    scene.clearHighlightedVisual();
    scene.setCollision(left->getId(), true);
    EXPECT_EQ(drawn(Coarseness::NoEdges).edges, 1) << "in collision";
    scene.setCollision(left->getId(), false);
    SetOutlined({left->getId()});
    EXPECT_EQ(drawn(Coarseness::NoEdges).edges, 1) << "under the mouse";
    SetOutlined({});
    EXPECT_EQ(drawn(Coarseness::NoEdges).edges, 0);
}

TEST_F(CoarseLookTest, PictureOfFewerSamplesIsThatOfOne)
{
    scene.setDisplayMode(Scene::DisplayMode::Shaded);
    for (const bool isSelected : {false, true})
        for (const bool isOutlined : {false, true})
            for (const bool isShaded : {false, true}) {
                scene.setVisualsSelected(isSelected ? std::vector{left->getId()} : std::vector<unsigned>());
                drain();
                scene.setBorderHighlightEnabled(isSelected);
                SetOutlined(isOutlined ? std::vector{right->getId()} : std::vector<unsigned>());
                SetDepthShade(isShaded);
                SCOPED_TRACE(testing::Message() << isSelected << isOutlined << isShaded);
                const Picture ofOne = inTexture(0);
                const Picture inWindow = seen(Coarseness::FewerSamples);
                if (isSelected)
                    expectSameButForSmoothOutline(ofOne, inWindow);
                else
                    EXPECT_LE(largestDifference(ofOne, inWindow), 2);
                EXPECT_GT(largestDifference(ofOne, seen(Coarseness::NoEdges)), 20) << "with four samples";
            }
}

TEST_F(CoarseLookTest, OutlineOfWhatIsSelectedMeanwhileIsDrawn)
{
    scene.setDisplayMode(Scene::DisplayMode::Shaded);
    seen(Coarseness::FewerSamples);
    scene.setVisualsSelected({left->getId()});
    drain();
    scene.setBorderHighlightEnabled(true);
    SetDepthShade(true);
    expectSameButForSmoothOutline(inTexture(0), seen(Coarseness::FewerSamples));
    scene.setBorderHighlightEnabled(false);
    scene.clearSelectedVisuals();
    SetDepthShade(false);
    EXPECT_LE(largestDifference(inTexture(0), seen(Coarseness::FewerSamples)), 2);
}

TEST_F(CoarseLookTest, OutlineSwitchedOnAheadOfTheFirstCoarseFrameIsDrawn)
{
    scene.setDisplayMode(Scene::DisplayMode::Shaded);
    scene.setVisualsSelected({left->getId()});
    drain();
    scene.setBorderHighlightEnabled(false);
    seen(Coarseness::Whole);
    SetCoarseness(Coarseness::FewerSamples);
    scene.setBorderHighlightEnabled(true);
    const Picture inWindow = seen(Coarseness::FewerSamples);
    expectSameButForSmoothOutline(inTexture(0), inWindow);
}

TEST_F(CoarseLookTest, PictureInTheCornerStays)
{
    const std::vector<std::uint8_t> red = [] {
        std::vector<std::uint8_t> rgba;
        for (int i = 0; i < 400; ++i)
            rgba.insert(rgba.end(), {255, 0, 0, 255});
        return rgba;
    }();
    SetCornerPicture(red, 20, 20, 5);
    for (const Coarseness level : coarse)
        EXPECT_TRUE(test::isNear(seen(level).at(width - 10, height - 10), {255, 0, 0}));
}

TEST_F(CoarseLookTest, OfSmallBodiesTheSameFewAreDrawn)
{
    addSmallBoxes();
    EXPECT_EQ(drawn(Coarseness::FewerSamples).bodies.size(), 402u);
    const Drawn few = drawn(Coarseness::FewerBodies);
    EXPECT_GT(few.bodies.size(), 70u);
    EXPECT_LT(few.bodies.size(), 140u);
    EXPECT_THAT(few.bodies, IsSupersetOf({left->getSceneNode(), right->getSceneNode()}));

    test::lookAlong(main, {190, -410, 300}, {-2, 4, -3});
    EXPECT_EQ(drawn(Coarseness::FewerBodies).bodies, few.bodies);
}

TEST_F(CoarseLookTest, SmallBodiesThatTellAStateAreDrawn)
{
    const std::vector<SolidVisual*> boxes = addSmallBoxes();
    std::vector<unsigned> ids;
    std::set<const Ogre::SceneNode*> nodes;
    for (int i = 0; i < 40; ++i) {
        ids.push_back(boxes[static_cast<std::size_t>(i)]->getId());
        nodes.insert(boxes[static_cast<std::size_t>(i)]->getSceneNode());
    }
    scene.setVisualsSelected(ids);
    EXPECT_THAT(drawn(Coarseness::FewerBodies).bodies, IsSupersetOf(nodes)) << "selected";
    scene.clearSelectedVisuals();
    SetOutlined(ids);
    EXPECT_THAT(drawn(Coarseness::FewerBodies).bodies, IsSupersetOf(nodes)) << "under the mouse";
    SetOutlined({});
    EXPECT_LT(drawn(Coarseness::FewerBodies).bodies.size(), 140u);
    for (const unsigned id : ids)
        scene.setCollision(id, true);
    EXPECT_THAT(drawn(Coarseness::FewerBodies).bodies, IsSupersetOf(nodes)) << "in collision";
    for (const unsigned id : ids)
        scene.setCollision(id, false);
}

TEST_F(CoarseLookTest, WhatIsWholeAgainIsAsBefore)
{
    addSmallBoxes();
    const auto stateOf = [this] {
        std::vector<std::tuple<Ogre::uint32, bool, std::string>> states;
        for (const auto& [name, object] : sceneManager->getMovableObjects("Entity")) {
            const auto& body = static_cast<const Ogre::Entity&>(*object);
            states.emplace_back(object->getVisibilityFlags(), object->getVisible(),
                                body.getSubEntity(0)->getMaterialName());
        }
        return states;
    };
    const auto before = stateOf();
    for (const bool isSelected : {false, true}) {
        scene.setVisualsSelected(isSelected ? std::vector{left->getId()} : std::vector<unsigned>());
        drain();
        scene.setBorderHighlightEnabled(isSelected);
        const Picture whole = seen(Coarseness::Whole);
        for (const Coarseness level : coarse) {
            const auto mask = target.renderTarget()->getViewport(0)->getVisibilityMask();
            const auto states = stateOf();
            EXPECT_GT(largestDifference(whole, seen(level)), 20);
            EXPECT_EQ(stateOf(), states);
            EXPECT_EQ(target.renderTarget()->getViewport(0)->getVisibilityMask(), mask);
            EXPECT_EQ(largestDifference(whole, seen(Coarseness::Whole)), 0);
        }
    }
    scene.clearSelectedVisuals();
    drain();
    EXPECT_EQ(stateOf(), before);
}

TEST_F(CoarseLookTest, PicturesInTexturesAreWhole)
{
    addSmallBoxes();
    const Picture before = inTexture(4);
    for (const Coarseness level : coarse) {
        seen(level);
        EXPECT_EQ(largestDifference(before, inTexture(4)), 0);
        EXPECT_EQ(GetCoarseness(), level);
    }
}

TEST_F(CoarseLookTest, PictureOfAnotherSizeIsWhole)
{
    seen(Coarseness::FewerSamples);
    window.resize(300, 200);
    target.resize(300, 200);
    const Picture smaller = seen(Coarseness::FewerSamples);
    EXPECT_LE(largestDifference(smaller, seen(Coarseness::FewerSamples)), 0);
    const test::Pixel face = pixelAt(smaller, {60, -50, 10});
    EXPECT_GT(face.r, face.g + 30);
}

TEST_F(CoarseLookTest, PicksFindWhatIsLeftOut)
{
    const std::vector<SolidVisual*> boxes = addSmallBoxes();
    selection::VisualSelection& service = *selection::VisualSelection::Get();
    const Drawn few = drawn(Coarseness::FewerBodies);
    service.update();
    int found = 0;
    for (SolidVisual* box : boxes) {
        if (few.bodies.contains(box->getSceneNode()))
            continue;
        const Posf corner = box->getWorldPose().position;
        const selection::Result result = service.select(Ray(corner + rob::Vec3f(1.5f, 2.5f, 10), {0, 0, -1}));
        found += result.visual == box ? 1 : 0;
    }
    EXPECT_EQ(found, 402 - static_cast<int>(few.bodies.size()));
}

} // namespace
} // namespace vrk::visual
