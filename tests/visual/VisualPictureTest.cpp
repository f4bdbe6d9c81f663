#include "mesh/MeshManager.h"
#include "platform/layout/Body.h"
#include "support/SceneFixture.h"
#include "visual/MeshVisual.h"
#include "visual/SolidVisual.h"

#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <Ogre.h>

#include <cstdlib>

namespace vrk::visual {
namespace {

using test::lookingAtOrigin;
using test::Picture;
using test::Pixel;

const Pixel background{115, 115, 115}; // 0.45

class VisualPicture : public test::RenderTest {
protected:
    SolidVisual* addBody(const TopoDS_Shape& shape, const std::string& uri, const std::string& color)
    {
        const auto body = test::addModelBody(shape, uri, color);
        SolidVisual::Build(world, body.get(), shape);
        return static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    }
};

int brightness(const Pixel& pixel)
{
    return pixel.r + pixel.g + pixel.b;
}

TEST_F(VisualPicture, EmptySceneIsTheBackground)
{
    const Picture picture = render(lookingAtOrigin(600));

    EXPECT_TRUE(isNear(picture.at(0, 0), background, 1));
    EXPECT_TRUE(isNear(picture.at(200, 150), background, 1));
}

TEST_F(VisualPicture, FacesHaveTheirOwnColours)
{
    SolidVisual* box = addBody(test::meshedBox(200, 200, 200), "picture-box", "#A0A4A8");
    box->setPosition(-100, -100, -100);
    scene.selectBaseFace(box->getId(), 6);
    scene.selectSideFace(box->getId(), 3);

    const Picture picture = render(lookingAtOrigin(600));

    const Pixel top = pixelAt(picture, {0, 0, 100});
    const Pixel front = pixelAt(picture, {0, -100, 0});
    EXPECT_GT(top.g, top.r + 60);
    EXPECT_GT(front.b, front.r + 60);
    EXPECT_TRUE(matchesBaseline(picture, "box_with_selected_faces"));
}

TEST_F(VisualPicture, RoundBodiesShowTheirCurvature)
{
    addBody(test::meshed(BRepPrimAPI_MakeSphere(100).Shape()), "picture-ball", "#A0A4A8");

    const Picture picture = render(lookingAtOrigin(450));

    EXPECT_GT(brightness(pixelAt(picture, {0, 0, 99})), brightness(pixelAt(picture, {0, -60, -79})) + 60);
    EXPECT_TRUE(matchesBaseline(picture, "ball"));
}

TEST_F(VisualPicture, BackOfAnOpenBodyIsLitLikeItsFront)
{
    SolidVisual* box = addBody(test::meshedBox(200, 200, 200), "picture-open-box", "#A0A4A8");
    box->setPosition(-100, -100, -100);
    box->setFaceVisible(3, false); // the front

    const Picture picture = render(lookingAtOrigin(600));

    EXPECT_GT(brightness(pixelAt(picture, {-60, 100, 40})), 200) << "the inside of the back wall";
    EXPECT_TRUE(matchesBaseline(picture, "open_box"));
}

TEST_F(VisualPicture, StatesAreToldApart)
{
    SolidVisual* plain = addBody(test::meshed(BRepPrimAPI_MakeCylinder(50, 100).Shape()), "picture-states", "#A0A4A8");
    plain->setPosition(-150, 0, -50);
    SolidVisual* selected = addBody(plain->getShape(), "picture-states", "#A0A4A8");
    selected->setPosition(0, 0, -50);
    selected->setSelected();
    SolidVisual* highlighted = addBody(plain->getShape(), "picture-states", "#A0A4A8");
    highlighted->setPosition(150, 0, -50);
    highlighted->setHighlighted();

    const Picture picture = render({{0, -500, 350}, {0, 0, 0}, {0, 0, 1}});

    const Pixel a = pixelAt(picture, {-150, 0, 50});
    const Pixel b = pixelAt(picture, {0, 0, 50});
    const Pixel c = pixelAt(picture, {150, 0, 50});
    // By a tint, beside the outline that they have in a view.
    EXPECT_GT(difference(a, b), 12);
    EXPECT_GT(difference(a, c), 12);
    EXPECT_GT(difference(b, c), 25);
    EXPECT_TRUE(matchesBaseline(picture, "body_states"));
}

TEST_F(VisualPicture, CopyIsSeenThrough)
{
    SolidVisual* back = addBody(test::meshedBox(200, 20, 200), "picture-back", "#C03020");
    back->setPosition(-100, 100, -100);
    SolidVisual* box = addBody(test::meshedBox(100, 100, 100), "picture-source", "#A0A4A8");
    box->setPosition(-50, -50, -50);
    Visual* copy = box->copy(world).value();
    box->setVisible(false, true);

    const Picture picture = render({{0, -600, 0}, {0, 0, 0}, {0, 0, 1}});

    const Pixel through = pixelAt(picture, {0, -50, 0});
    const Pixel plain = pixelAt(picture, {80, 100, 80});
    EXPECT_GT(through.r, 60) << "the red wall behind it";
    EXPECT_GT(difference(through, plain), 15) << "not as clear as without it";
    EXPECT_TRUE(matchesBaseline(picture, "see_through_copy"));
    delete copy;
}

TEST_F(VisualPicture, MeshHasTheColourOfItsVisual)
{
    auto* first = new MeshVisual("first", world);
    first->attachMesh("mfg_arrow");
    first->setMaterial("MeshBody", "MeshBodySelected", "MeshBodyHighlighted");
    first->setColor(std::string("#2060E0"));
    first->setPosition(-10, 0, 0);
    auto* second = new MeshVisual("second", world);
    second->attachMesh("mfg_arrow");
    second->setMaterial("MeshBody", "MeshBodySelected", "MeshBodyHighlighted");
    second->setColor(std::string("#E0A020"));
    second->setPosition(10, 0, 0);

    const Picture picture = render({{0, -60, 16}, {0, 0, 16}, {0, 0, 1}});

    const Pixel blue = pixelAt(picture, {-10, 0, 27});
    const Pixel amber = pixelAt(picture, {10, 0, 27});
    EXPECT_GT(blue.b, blue.r + 40);
    EXPECT_GT(amber.r, amber.b + 40);
}

TEST_F(VisualPicture, MeshWithoutNormalsIsLitByItsTriangles)
{
    // A roof: its ridge along x, one side towards the eye and one away from it, seen from above.
    const std::vector<rob::Posf> corners{{-50, -50, 0}, {50, -50, 0}, {50, 0, 40},
                                         {-50, 0, 40},  {50, 50, 0},  {-50, 50, 0}};
    const std::vector<unsigned> triangles{0, 1, 2, 0, 2, 3, 3, 2, 4, 3, 4, 5};
    const test::View above{{-30, -40, 300}, {0, 0, 0}, {0, 1, 0}};
    const auto sidesOf = [&](const char* name, std::size_t normals) {
        auto* mesh = new Mesh(name);
        mesh->vertices = corners;
        mesh->indices = triangles;
        mesh->normals.resize(normals); // of no length
        MeshManager::Get()->addMesh(mesh);
        auto* visual = new MeshVisual(name, world);
        visual->attachMesh(name);
        visual->setMaterial("MeshBody", "MeshBodySelected", "MeshBodyHighlighted");
        visual->setColor(std::string("#A0A4A8"));
        const Picture picture = render(above);
        const std::pair sides{brightness(pixelAt(picture, {0, -25, 20})), brightness(pixelAt(picture, {0, 25, 20}))};
        delete visual;
        return sides;
    };

    const auto [front, back] = sidesOf("zero-normals", corners.size());
    EXPECT_GT(std::abs(front - back), 15) << "a flat silhouette";
    const auto [first, second] = sidesOf("no-normals", 0);
    EXPECT_EQ(first, front);
    EXPECT_EQ(second, back);
}

TEST_F(VisualPicture, BodyWithoutAColourOfItsOwnDoesNotTakeThatOfWhatIsDrawnBeforeIt)
{
    for (const float x : {-160.0f, 160.0f}) { // whichever is drawn first
        auto* arrow = new MeshVisual("arrow", world);
        arrow->attachMesh("mfg_arrow");
        arrow->setMaterial("MeshBody", {}, {});
        arrow->setColor(std::string("#FF0000"));
        arrow->setPosition(x, 0, 0);
    }
    SolidVisual::Build(world, test::meshed(BRepPrimAPI_MakeSphere(100).Shape()), "MeshBody");
    auto* mesh = new MeshVisual("mesh", world);
    mesh->attachMesh("PathStartHandle");
    mesh->setMaterial("MeshBody", {}, {});
    mesh->setScale(20, 20, 20);
    mesh->setPosition(0, -100, 160);

    const Picture picture = render({{0, -600, 0}, {0, 0, 0}, {0, 0, 1}});

    for (const rob::Posf& at : {rob::Posf(0, -100, 0), rob::Posf(0, -150, 160)}) {
        const Pixel pixel = pixelAt(picture, at);
        EXPECT_LT(std::abs(pixel.r - pixel.b), 20);
        EXPECT_GT(pixel.b, 120) << "light grey";
    }
}

class BodyStates : public VisualPicture, public testing::WithParamInterface<const char*> {};

TEST_P(BodyStates, AreToldApartInEveryColour)
{
    const std::string base = GetParam();
    const TopoDS_Shape ball = test::meshed(BRepPrimAPI_MakeSphere(40).Shape());
    float x = -100;
    for (const char* state : {"", "Selected", "Highlighted"}) {
        SolidVisual* drawn = SolidVisual::Build(world, ball, base + state);
        drawn->setBodyColor({0.63f, 0.64f, 0.66f}, 1);
        drawn->getEntity()->getSubEntity(0)->setCustomParameter(0, Ogre::Vector4(0.63f, 0.64f, 0.66f, 1));
        drawn->setPosition(x, 0, 0);
        x += 100;
    }

    const Picture picture = render({{0, -500, 0}, {0, 0, 0}, {0, 0, 1}});

    const Pixel plain = pixelAt(picture, {-100, -40, 0});
    const Pixel selected = pixelAt(picture, {0, -40, 0});
    const Pixel highlighted = pixelAt(picture, {100, -40, 0});
    // Their outlines tell them; the tint is slight, so that a body keeps its colour.
    EXPECT_GT(difference(plain, selected), 10);
    EXPECT_GT(difference(plain, highlighted), 10);
    EXPECT_GT(difference(selected, highlighted), 10);
    EXPECT_LT(difference(plain, selected), 45);
    EXPECT_LT(difference(plain, highlighted), 45);
}

INSTANTIATE_TEST_SUITE_P(Bases, BodyStates,
                         testing::Values("Body", "MeshBody", "ABB", "KUKA", "FANUC", "YASKAWA", "Mechanism"),
                         [](const auto& info) { return std::string(info.param); });

TEST_F(VisualPicture, UnknownMaterialStillDraws)
{
    SolidVisual* box = SolidVisual::Build(world, test::meshedBox(200, 200, 200), "No such material");
    box->setPosition(-100, -100, -100);

    const Picture picture = render(lookingAtOrigin(600));

    EXPECT_GT(difference(pixelAt(picture, {0, -100, 0}), background), 40);
}

class BodyMaterials : public VisualPicture, public testing::WithParamInterface<const char*> {};

TEST_P(BodyMaterials, ExistsAndDraws)
{
    SolidVisual* ball = SolidVisual::Build(world, test::meshed(BRepPrimAPI_MakeSphere(100).Shape()), GetParam());
    // Materials that take their colour from the renderable have nothing to draw with else.
    ball->getEntity()->getSubEntity(0)->setCustomParameter(0, Ogre::Vector4(0.2f, 0.4f, 0.9f, 0.6f));

    const Picture picture = render(lookingAtOrigin(450));

    EXPECT_EQ(ball->getEntity()->getSubEntity(0)->getMaterialName(), GetParam());
    EXPECT_GT(difference(pixelAt(picture, {0, 0, 90}), background), 15);
}

INSTANTIATE_TEST_SUITE_P(AllNames, BodyMaterials,
                         testing::Values("Body", "BodySelected", "BodyHighlighted", "MeshBody", "MeshBodySelected",
                                         "MeshBodyHighlighted", "TransBody", "Axis", "ABB", "ABBSelected",
                                         "ABBHighlighted", "KUKA", "KUKASelected", "KUKAHighlighted", "FANUC",
                                         "FANUCSelected", "FANUCHighlighted", "YASKAWA", "YASKAWASelected",
                                         "YASKAWAHighlighted", "Mechanism", "MechanismSelected", "MechanismHighlighted",
                                         "CollisionContact", "CollisionNearMiss", "EmphasizeCollisionGroupA",
                                         "EmphasizeCollisionGroupB", "HandleHighlight"),
                         [](const auto& info) { return std::string(info.param); });

} // namespace
} // namespace vrk::visual
