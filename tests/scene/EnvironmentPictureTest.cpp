#include "mesh/MeshManager.h"
#include "platform/layout/Body.h"
#include "support/SceneFixture.h"
#include "view/Camera.h"
#include "visual/MeshVisual.h"
#include "visual/RenderGroups.h"
#include "visual/SolidVisual.h"

#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <Ogre.h>

namespace vrk::visual {
namespace {

using rob::Posf;
using test::lookingAtOrigin;
using test::Picture;
using test::Pixel;
using test::View;

const Pixel background{115, 115, 115}; // 0.45
const Pixel gridLine{41, 41, 41};      // 0.16
const Pixel outline{245, 36, 158};

class EnvironmentPicture : public test::RenderTest {
protected:
    ~EnvironmentPicture() override { scene.setBorderHighlightEnabled(false); }

    SolidVisual* addBody(const TopoDS_Shape& shape, const std::string& uri, const std::string& color, const Posf& at)
    {
        const auto body = test::addModelBody(shape, uri, color);
        SolidVisual::Build(world, body.get(), shape);
        auto* solid = static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
        solid->setPosition(at);
        return solid;
    }
    SolidVisual* addBox(double size, const std::string& color, const Posf& at)
    {
        return addBody(test::meshedBox(size, size, size), "environment-box-" + color, color, at);
    }
    SolidVisual* addBall(double radius, const Posf& at, const std::string& color = "#A0A4A8")
    {
        return addBody(test::meshed(BRepPrimAPI_MakeSphere(radius).Shape()), "environment-ball-" + color, color, at);
    }
};

bool isReddish(const Pixel& pixel)
{
    return pixel.r > pixel.g + 60 && pixel.r > pixel.b + 40;
}

bool isOutline(const Pixel& pixel)
{
    return isNear(pixel, outline, 60);
}

/// The share of the picture's pixels for which the test holds.
template <typename Test>
double shareOf(const Picture& picture, Test holds)
{
    unsigned count = 0;
    for (unsigned y = 0; y < picture.height; ++y)
        for (unsigned x = 0; x < picture.width; ++x)
            count += holds(picture.at(x, y));
    return static_cast<double>(count) / (picture.width * picture.height);
}

// Grid

struct GridCase {
    const char* name;
    int normal;
    View view;
    Posf onLine;
    Posf inCell;
};

class GridPicture : public EnvironmentPicture, public testing::WithParamInterface<GridCase> {
protected:
    ~GridPicture() override { scene.setGridNormalDir(2); }
};

TEST_P(GridPicture, LiesAcrossTheAxisThatIsUp)
{
    const GridCase& c = GetParam();
    showGrid(true);
    scene.setGridNormalDir(c.normal);

    const Picture picture = render(c.view);

    EXPECT_LT(pixelAt(picture, c.onLine).r, 80);
    EXPECT_TRUE(isNear(pixelAt(picture, c.inCell), background, 2));
    EXPECT_TRUE(matchesBaseline(picture, c.name));
}

INSTANTIATE_TEST_SUITE_P(
    Normals, GridPicture,
    testing::Values(GridCase{"grid_x", 0, {{7000, 8000, 10000}, {0, 0, 0}, {1, 0, 0}}, {0, 1000, 500}, {0, 500, 500}},
                    GridCase{"grid_y", 1, {{8000, 7000, 10000}, {0, 0, 0}, {0, 1, 0}}, {1000, 0, 500}, {500, 0, 500}},
                    GridCase{"grid_z", 2, {{8000, -10000, 7000}, {0, 0, 0}, {0, 0, 1}}, {1000, 500, 0}, {500, 500, 0}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(EnvironmentPicture, GridLinesAreWholeUpToTheViewer)
{
    showGrid(true);

    // Just above the floor, lines passing below and behind the camera.
    const Picture picture = render({{0, 0, 120}, {1000, 300, 0}, {0, 0, 1}});

    EXPECT_TRUE(isNear(pixelAt(picture, {1000, 300, 0}), gridLine, 40));
    EXPECT_TRUE(matchesBaseline(picture, "grid_from_inside"));
}

TEST_F(EnvironmentPicture, GridStaysLinesWhereBodiesAreDrawnAsWires)
{
    showGrid(true);
    const Picture before = render(lookingAtOrigin(9000));

    scene.setDisplayMode(Scene::DisplayMode::Wire);
    const Picture after = render(lookingAtOrigin(9000));
    scene.setDisplayMode(Scene::DisplayMode::Shaded);

    EXPECT_EQ(test::largestDifference(before, after), 0);
}

// Display modes

struct ModeCase {
    const char* name;
    Scene::DisplayMode mode;
};

class DisplayModePicture : public EnvironmentPicture, public testing::WithParamInterface<ModeCase> {
protected:
    ~DisplayModePicture() override { scene.setDisplayMode(Scene::DisplayMode::Shaded); }

    /// The edges of a box, as a body's wire frame.
    void addWires(Visual* parent, float size)
    {
        Ogre::ManualObject* lines = sceneManager->createManualObject();
        lines->begin("VertexColor", Ogre::RenderOperation::OT_LINE_LIST);
        // A little outside, so that they are not lost in the faces.
        const auto place = [size](int high) { return high ? size + 0.4f : -0.4f; };
        const auto end = [&](int corner) {
            lines->position(place(corner & 1), place(corner & 2), place(corner & 4));
            lines->colour(0.05f, 0.05f, 0.05f);
        };
        for (int corner = 0; corner < 8; ++corner)
            for (const int step : {1, 2, 4})
                if ((corner & step) == 0) {
                    end(corner);
                    end(corner | step);
                }
        lines->end();
        auto* visual = new Visual(parent);
        visual->setType(VisualType::WireFrame);
        visual->attachObject(lines);
        objects.push_back({visual, lines});
    }

private:
    std::vector<std::pair<Visual*, Ogre::ManualObject*>> objects;
};

TEST_P(DisplayModePicture, ShowsWhatItIsNamedAfter)
{
    const ModeCase& c = GetParam();
    SolidVisual* box = addBox(200, "#D8DCE0", {-240, -100, -100});
    addWires(box, 200);
    addBall(110, {150, 0, 0}, "#D8DCE0");

    scene.setDisplayMode(c.mode);
    const Picture picture = render(lookingAtOrigin(650));

    const bool filled = c.mode == Scene::DisplayMode::Shaded || c.mode == Scene::DisplayMode::ShadedWithEdges;
    EXPECT_EQ(shareOf(picture, [](const Pixel& p) { return difference(p, background) > 12; }) > 0.15, filled);
    EXPECT_TRUE(matchesBaseline(picture, std::string("display_mode_") + c.name));
}

INSTANTIATE_TEST_SUITE_P(Modes, DisplayModePicture,
                         testing::Values(ModeCase{"shaded", Scene::DisplayMode::Shaded},
                                         ModeCase{"shaded_with_edges", Scene::DisplayMode::ShadedWithEdges},
                                         ModeCase{"edges", Scene::DisplayMode::Edges},
                                         ModeCase{"wire", Scene::DisplayMode::Wire}),
                         [](const auto& info) { return std::string(info.param.name); });

// Outline

TEST_F(EnvironmentPicture, OutlineIsSeenAgainstLightAndDark)
{
    addBox(220, "#F4F4F4", {-250, 0, -110});
    addBox(220, "#0C0C0C", {30, 0, -110});
    SolidVisual* ball = addBall(90, {0, -120, 0});
    scene.setBorderHighlightEnabled(true);
    ball->setSelected();

    const View front{{0, -700, 120}, {0, 0, 0}, {0, 0, 1}};
    const Picture picture = render(front);

    EXPECT_GT(shareOf(picture, isOutline), 0.002);
    EXPECT_TRUE(matchesBaseline(picture, "border_light_and_dark"));
}

TEST_F(EnvironmentPicture, OutlineGoesAroundAllOfASelectedBodyThatIsHalfHidden)
{
    addBox(160, "#8C9096", {-160, -220, -80});
    SolidVisual* hidden =
        addBody(test::meshed(BRepPrimAPI_MakeCylinder(70, 200).Shape()), "environment-post", "#A0A4A8", {20, 60, -100});
    hidden->setSelected();
    scene.setBorderHighlightEnabled(true);

    const Picture picture = render({{60, -700, 250}, {0, 0, 0}, {0, 0, 1}});

    EXPECT_TRUE(matchesBaseline(picture, "border_half_hidden"));
}

TEST_F(EnvironmentPicture, OutlineIsTheBodysWhereTheViewShowsWires)
{
    addBall(100, {0, 0, 0})->setSelected();
    scene.setBorderHighlightEnabled(true);
    scene.setDisplayMode(Scene::DisplayMode::Wire);

    const Picture picture = render(lookingAtOrigin(450));
    scene.setDisplayMode(Scene::DisplayMode::Shaded);

    EXPECT_TRUE(matchesBaseline(picture, "border_of_wires"));
}

TEST_F(EnvironmentPicture, PictureWithNothingSelectedIsThatWithoutTheCompositor)
{
    showGrid(true);
    showCornerAxes(true);
    addBall(100, {0, 0, 0});
    const Picture without = render(lookingAtOrigin(450));

    scene.setBorderHighlightEnabled(true);
    const Picture with = render(lookingAtOrigin(450));

    EXPECT_EQ(test::largestDifference(without, with), 0);
}

TEST_F(EnvironmentPicture, OutlineGoesWhenItIsSwitchedOff)
{
    addBall(100, {0, 0, 0})->setSelected();
    const Picture without = render(lookingAtOrigin(450));
    scene.setBorderHighlightEnabled(true);
    const Picture with = render(lookingAtOrigin(450));

    scene.setBorderHighlightEnabled(false);
    const Picture after = render(lookingAtOrigin(450));

    EXPECT_GT(test::largestDifference(with, without), 100);
    EXPECT_EQ(test::largestDifference(after, without), 0);
}

// Depth

class HandlePicture : public EnvironmentPicture, public testing::WithParamInterface<bool> {};

TEST_P(HandlePicture, HandlesAreInFrontOfTheSceneAndHideEachOther)
{
    addBox(200, "#F4F4F4", {-100, -300, -100})->setSelected();
    SolidVisual* handle = addBody(test::meshedBox(60, 60, 60), "environment-handle", "#C02018", {-30, 0, -30});
    handle->getEntity()->setRenderQueueGroup(renderGroup::handles);
    SolidVisual* behind = addBody(test::meshedBox(40, 40, 40), "environment-behind", "#1840C0", {-20, 100, -20});
    behind->getEntity()->setRenderQueueGroup(renderGroup::handles);
    scene.setBorderHighlightEnabled(GetParam());

    const Picture picture = render({{0, -700, 60}, {0, 0, 0}, {0, 0, 1}});

    EXPECT_TRUE(isReddish(pixelAt(picture, {0, 0, 0})));
}

INSTANTIATE_TEST_SUITE_P(Outline, HandlePicture, testing::Bool(),
                         [](const auto& info) { return info.param ? "With" : "Without"; });

// Instances

class InstancePicture : public EnvironmentPicture {
protected:
    ~InstancePicture() override
    {
        for (const auto& [entity, node] : instances) {
            entity->_getOwner()->removeInstancedEntity(entity);
            node->getCreator()->destroySceneNode(node);
        }
    }
    Ogre::SceneNode* addInstance(const std::string& manager, const std::string& material, const Ogre::Vector3& at,
                                 float size)
    {
        Ogre::InstancedEntity* entity = Scene::GetInstanceMgr(manager)->createInstancedEntity(material);
        entity->setVisible(true);
        entity->_getOwner()->setRenderQueueGroup(renderGroup::lines);
        Ogre::SceneNode* node = sceneManager->getRootSceneNode()->createChildSceneNode(at);
        node->setScale(Ogre::Vector3(size));
        node->attachObject(entity);
        instances.push_back({entity, node});
        return node;
    }

private:
    std::vector<std::pair<Ogre::InstancedEntity*, Ogre::SceneNode*>> instances;
};

TEST_F(InstancePicture, FramesOfTargetsInTheirStates)
{
    const char* materials[][2] = {
        {"VRK_FrameInstanceManager", "InstanceRobTarget"},
        {"VRK_FrameInstanceManager", "InstanceFrame"},
        {"InstanceRobTargetHighlight", "InstanceRobTargetHighlight"},
        {"InstanceRobTargetSelected", "InstanceRobTargetSelected"},
    };
    addBox(120, "#E8E8E8", {-60, 40, -60});
    float x = -165;
    for (const auto& [manager, material] : materials) {
        Ogre::SceneNode* first = addInstance(manager, material, {x, 0, -60}, 60);
        first->yaw(Ogre::Degree(20));
        Ogre::SceneNode* second = addInstance(manager, material, {x + 20, -20, 50}, 60);
        second->pitch(Ogre::Degree(-60));
        x += 100;
    }

    const Picture picture = render({{0, -390, 150}, {0, 0, 0}, {0, 0, 1}});

    EXPECT_TRUE(matchesBaseline(picture, "instanced_frames"));
}

TEST_F(InstancePicture, FrameOfUnitSizeIsItsThreeAxes)
{
    addInstance("VRK_FrameInstanceManager", "InstanceRobTarget", {0, 0, 0}, 100);

    const Picture picture = render(lookingAtOrigin(300));

    EXPECT_TRUE(isNear(pixelAt(picture, {60, 0, 0}), {240, 13, 0}, 40));
    EXPECT_TRUE(isNear(pixelAt(picture, {0, 60, 0}), {189, 219, 33}, 40));
    EXPECT_TRUE(isNear(pixelAt(picture, {0, 0, 60}), {74, 92, 194}, 40));
    EXPECT_TRUE(isNear(pixelAt(picture, {60, 60, 60}), background, 2));
}

TEST_F(InstancePicture, ArrowsStandWhereTheirNodesDo)
{
    for (int i = 0; i < 12; ++i) {
        const Ogre::Radian angle(static_cast<float>(i) * Ogre::Math::TWO_PI / 12);
        Ogre::SceneNode* node = addInstance("InstancePathArrow", "InstanceArrow",
                                            {80 * Ogre::Math::Cos(angle), 80 * Ogre::Math::Sin(angle), 0}, 1.2f);
        // Along the circle.
        node->setOrientation(Ogre::Quaternion(angle, Ogre::Vector3::UNIT_Z) *
                             Ogre::Quaternion(Ogre::Degree(-90), Ogre::Vector3::UNIT_X));
    }

    const Picture picture = render({{0, -170, 150}, {0, 0, 0}, {0, 0, 1}});

    EXPECT_GT(difference(pixelAt(picture, {80, 8, 0}), background), 40);
    EXPECT_TRUE(isNear(pixelAt(picture, {0, 0, 0}), background, 2));
    EXPECT_TRUE(matchesBaseline(picture, "instanced_arrows"));
}

TEST_F(InstancePicture, BatchesMadeAfterACleanUpStillDraw)
{
    std::vector<Ogre::InstancedEntity*> arrows;
    for (int i = 0; i < 600; ++i)
        arrows.push_back(Scene::GetInstanceMgr("InstancePathArrow")->createInstancedEntity("InstanceArrow"));
    for (Ogre::InstancedEntity* arrow : arrows)
        arrow->_getOwner()->removeInstancedEntity(arrow);
    scene.cleanupInstanceBatches();
    drain();
    for (int i = 0; i < 600; ++i)
        addInstance("InstancePathArrow", "InstanceArrow",
                    {static_cast<float>(i % 30) * 12 - 174, 0, static_cast<float>(i / 30) * 12 - 114}, 0.5f);

    const Picture picture = render({{0, -420, 0}, {0, 0, 0}, {0, 0, 1}});

    EXPECT_GT(difference(pixelAt(picture, {-174, 0, -112}), background), 40) << "the first";
    EXPECT_GT(difference(pixelAt(picture, {174, 0, 116}), background), 40) << "the last, in the second batch";
}

// Text

class TextPicture : public EnvironmentPicture {
protected:
    ~TextPicture() override
    {
        for (Ogre::Entity* entity : entities)
            sceneManager->destroyEntity(entity);
    }
    Ogre::Entity* show(const std::string& mesh, const Ogre::Vector4& colour)
    {
        Ogre::Entity* entity = sceneManager->createEntity(mesh);
        entity->setMaterialName("UVIndicator");
        entity->getSubEntity(0)->setCustomParameter(0, colour);
        auto* visual = new Visual(world);
        visual->attachObject(entity);
        entities.push_back(entity);
        return entity;
    }

private:
    std::vector<Ogre::Entity*> entities;
};

TEST_F(TextPicture, EveryCharacterIsClean)
{
    std::string sheet;
    for (char c = '!'; c <= '~'; ++c) {
        sheet += c;
        if ((c - '!') % 16 == 15)
            sheet += '\n';
    }
    Mesh* mesh = MeshManager::CreateTextMesh(sheet, 1);
    MeshManager::Get()->addMesh(mesh);
    show(mesh->name, {1, 1, 1, 1});
    setSize(900, 500);

    const Picture picture = render({{9, -3.05f, 16.5f}, {9, -3.05f, 0}, {0, 1, 0}});

    EXPECT_TRUE(matchesBaseline(picture, "text_sheet"));
}

TEST_F(TextPicture, TextMeshIsTheCallersAndOfOneSize)
{
    const std::unique_ptr<Mesh> small(MeshManager::CreateTextMesh("Not registered", 1));
    const std::unique_ptr<Mesh> large(MeshManager::CreateTextMesh("Not registered", 20));

    EXPECT_EQ(small->name, "Not registered");
    EXPECT_EQ(small->vertices, large->vertices);
    EXPECT_FALSE(MeshManager::Get()->hasMesh("Not registered"));
    EXPECT_FALSE(Ogre::MeshManager::getSingleton().resourceExists("Not registered", "General"));
}

TEST_F(TextPicture, UVIndicatorIsComposedOfArrowsAndLetters)
{
    MeshManager& meshes = *MeshManager::Get();
    Mesh* shaft = meshes.getGlobalMesh("shaft");
    Mesh* head = meshes.getGlobalMesh("head");
    const std::unique_ptr<Mesh> u(MeshManager::CreateTextMesh("U", 1));
    const std::unique_ptr<Mesh> v(MeshManager::CreateTextMesh("V", 1));
    ASSERT_NE(shaft, nullptr);
    ASSERT_NE(head, nullptr);

    Mesh* indicator = meshes.getGlobalMesh("uv_indicator");

    ASSERT_NE(indicator, nullptr);
    EXPECT_EQ(indicator->vertices.size(),
              2 * (shaft->vertices.size() + head->vertices.size()) + u->vertices.size() + v->vertices.size());
    EXPECT_NEAR(indicator->getBounds().min.x, -2 + v->getBounds().min.x, 1e-4f);
    EXPECT_NEAR(indicator->getBounds().max.x, 20 + u->getBounds().max.x, 1e-4f);
    EXPECT_NEAR(indicator->getBounds().max.y, 20 + v->getBounds().max.y, 1e-4f);
    const auto isUploaded = [](const char* name) {
        return Ogre::MeshManager::getSingleton().resourceExists(name, "General");
    };
    EXPECT_TRUE(isUploaded("uv_indicator"));
    EXPECT_FALSE(isUploaded("shaft"));
    EXPECT_FALSE(isUploaded("head"));
}

TEST_F(TextPicture, UVIndicatorIsTwoLetteredArrows)
{
    show("uv_indicator", {0.95f, 0.55f, 0.10f, 1});

    const Picture picture = render({{12, 2, 26}, {10, 9, 0}, {0, 1, 0}});

    EXPECT_GT(difference(pixelAt(picture, {8, 0, 0.2f}), background), 40);
    EXPECT_GT(difference(pixelAt(picture, {0, 8, 0.2f}), background), 40);
    EXPECT_TRUE(matchesBaseline(picture, "uv_indicator"));
}

} // namespace
} // namespace vrk::visual
