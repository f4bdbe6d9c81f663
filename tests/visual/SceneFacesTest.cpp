#include "mesh/MeshManager.h"
#include "platform/broker/SignalBroker.h"
#include "platform/geometry/BodyColorTool.h"
#include "platform/geometry/ColorText.h"
#include "platform/layout/Body.h"
#include "platform/sdf/SdfManager.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "visual/MeshVisual.h"
#include "visual/SolidVisual.h"
#include "visual/VisualStateManager.h"

#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRep_Tool.hxx>
#include <Ogre.h>
#include <Poly_Triangulation.hxx>
#include <Standard_OutOfRange.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <cmath>

namespace vrk::visual {
namespace {

using testing::StrEq;

const rob::Colorf stored(0x80 / 255.0f, 0x80 / 255.0f, 0x80 / 255.0f);
const rob::Colorf lit(0x80 / 255.0f + 0.2f, 0x80 / 255.0f + 0.2f, 0x80 / 255.0f + 0.2f);
const rob::Colorf base(0x10 / 255.0f, 0xC2 / 255.0f, 0x79 / 255.0f);
const rob::Colorf side(0x0D / 255.0f, 0x8D / 255.0f, 0xDF / 255.0f);

class SceneFaces : public test::SceneFixture {
protected:
    SceneFaces()
    {
        const TopoDS_Shape shape = test::meshedBox(10, 20, 30);
        body = test::addModelBody(shape, "faces");
        SolidVisual::Build(world, body.get(), shape);
        solid = static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    }
    rob::Colorf bufferColor(unsigned face)
    {
        drain();
        return MeshManager::GetFaceColor("faces", solid->getShape(), face);
    }

    std::shared_ptr<layout::Body> body;
    SolidVisual* solid = nullptr;
};

testing::AssertionResult same(const rob::Colorf& a, const rob::Colorf& b)
{
    if (std::abs(a.r - b.r) < 1e-6f && std::abs(a.g - b.g) < 1e-6f && std::abs(a.b - b.b) < 1e-6f)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << a.r << ", " << a.g << ", " << a.b << " is not " << b.r << ", " << b.g << ", "
                                       << b.b;
}

TEST_F(SceneFaces, HighlightMovesFromFaceToFace)
{
    scene.highlightFace(solid, 1);
    EXPECT_TRUE(same(bufferColor(1), lit));

    scene.highlightFace(solid, 2);

    EXPECT_TRUE(same(bufferColor(1), stored));
    EXPECT_TRUE(same(bufferColor(2), lit));
}

TEST_F(SceneFaces, HighlightingTheSameFaceAgainPostsNothing)
{
    scene.highlightFace(solid, 1);
    drain();
    int updates = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] { ++updates; });

    scene.highlightFace(solid, 1);

    EXPECT_EQ(updates, 0);
}

TEST_F(SceneFaces, ClearedHighlightRestoresTheColour)
{
    scene.highlightFace(solid, 1);

    scene.clearHighlightedFace();

    EXPECT_TRUE(same(bufferColor(1), stored));
}

TEST_F(SceneFaces, SelectedFaceShowsNoHighlightAndRecordsNone)
{
    scene.selectBaseFace(solid->getId(), 3);

    scene.highlightFace(solid, 3);
    EXPECT_TRUE(same(bufferColor(3), base));

    scene.clearHighlightedFace(); // nothing is recorded, so nothing is restored
    EXPECT_TRUE(same(bufferColor(3), base));
}

TEST_F(SceneFaces, HighlightThatMovesToASelectedFaceEndsWhereItWas)
{
    scene.selectBaseFace(solid->getId(), 3);
    scene.highlightFace(solid, 2);

    scene.highlightFace(solid, 3);

    EXPECT_TRUE(same(bufferColor(2), stored));
    EXPECT_TRUE(same(bufferColor(3), base));
}

TEST_F(SceneFaces, BaseAndSideFacesHaveTheirColours)
{
    scene.selectBaseFace(solid->getId(), 1);
    scene.selectSideFace(solid->getId(), 2);

    EXPECT_TRUE(same(bufferColor(1), base));
    EXPECT_TRUE(same(bufferColor(2), side));
    EXPECT_TRUE(scene.faceIsSelected(solid, 1));
    EXPECT_FALSE(scene.faceIsSelected(solid, 3));
}

TEST_F(SceneFaces, BaseFaceSelectedAsSideFaceStaysABaseFace)
{
    scene.selectBaseFace(solid->getId(), 1);

    scene.selectSideFace(solid->getId(), 1);

    EXPECT_TRUE(same(bufferColor(1), base));
}

TEST_F(SceneFaces, ClearedFaceGetsItsColourBack)
{
    scene.selectBaseFace(solid->getId(), 1);
    scene.selectBaseFace(solid->getId(), 2);

    scene.clearSelectedFace(solid->getId(), 1);

    EXPECT_TRUE(same(bufferColor(1), stored));
    EXPECT_TRUE(same(bufferColor(2), base));
    EXPECT_FALSE(scene.faceIsSelected(solid, 1));
}

TEST_F(SceneFaces, AllSelectedFacesAreClearedAtOnce)
{
    scene.selectBaseFace(solid->getId(), 1);
    scene.selectSideFace(solid->getId(), 2);

    scene.clearSelectedFaces();

    EXPECT_TRUE(same(bufferColor(1), stored));
    EXPECT_TRUE(same(bufferColor(2), stored));
}

TEST_F(SceneFaces, MarksWhoseEndWentWithAFailedBatchGoWithTheNextClearing)
{
    scene.selectBaseFace(solid->getId(), 1);
    scene.selectSideFace(solid->getId(), 2);
    scene.highlightFace(solid, 3);
    drain();
    scene.addRenderTask([] { throw std::runtime_error("broken"); }, 0);
    scene.clearSelectedFace(solid->getId(), 2);
    scene.clearSelectedFaces();
    EXPECT_THROW(drain(), std::runtime_error);
    EXPECT_TRUE(same(bufferColor(1), base));

    scene.clearSelectedFaces();

    for (const unsigned face : {1u, 2u, 3u})
        EXPECT_TRUE(same(bufferColor(face), stored)) << face;
}

TEST_F(SceneFaces, FaceMarkedAnewAfterAFailedBatchKeepsItsMark)
{
    scene.selectBaseFace(solid->getId(), 1);
    drain();
    scene.addRenderTask([] { throw std::runtime_error("broken"); }, 0);
    scene.clearSelectedFaces();
    EXPECT_THROW(drain(), std::runtime_error);

    scene.selectSideFace(solid->getId(), 1);

    EXPECT_TRUE(same(bufferColor(1), side));
}

TEST_F(SceneFaces, NumberPastTheLastFaceIsRefusedAtTheCallAndChangesNothing)
{
    scene.highlightFace(solid, 2);
    for (const unsigned face : {7u, 0x80000001u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(face);
        EXPECT_THROW(scene.selectBaseFace(solid->getId(), face), Standard_OutOfRange);
        EXPECT_THROW(scene.selectSideFace(solid->getId(), face), Standard_OutOfRange);
        EXPECT_THROW(scene.highlightFace(solid, face), Standard_OutOfRange);
        EXPECT_FALSE(scene.faceIsSelected(solid, face));
    }

    EXPECT_NO_THROW(drain());
    EXPECT_TRUE(same(bufferColor(2), lit)) << "the highlight stays where it was";
}

TEST_F(SceneFaces, FaceZeroIsRecordedAndShowsNothing)
{
    scene.selectBaseFace(solid->getId(), 0);
    EXPECT_TRUE(scene.faceIsSelected(solid, 0));
    EXPECT_NO_THROW(drain());

    scene.clearSelectedFaces();
    EXPECT_NO_THROW(drain());
    EXPECT_TRUE(same(bufferColor(1), stored));
}

TEST_F(SceneFaces, HidingAFaceKeepsTheMarksOfTheOthers)
{
    scene.selectBaseFace(solid->getId(), 1);
    scene.selectSideFace(solid->getId(), 6);
    drain();

    solid->setFaceVisible(3, false);

    // The mesh has no vertices of face 3: the fifth that is left is face 6.
    EXPECT_TRUE(same(MeshManager::GetFaceColor("faces_3", solid->getShape(), 1), base));
    EXPECT_TRUE(same(MeshManager::GetFaceColor("faces_3", solid->getShape(), 5), side));
    EXPECT_TRUE(same(MeshManager::GetFaceColor("faces_3", solid->getShape(), 4), stored));
    EXPECT_TRUE(same(MeshManager::GetFaceColor("faces", solid->getShape(), 1), stored)) << "for whoever draws it next";

    scene.clearSelectedFaces();
    drain();
    EXPECT_TRUE(same(MeshManager::GetFaceColor("faces_3", solid->getShape(), 5), stored));
}

TEST_F(SceneFaces, MarkOfAHiddenFaceComesBackWithIt)
{
    scene.selectBaseFace(solid->getId(), 3);
    drain();

    solid->setFaceVisible(3, false);
    solid->setFaceVisible(3, true);

    EXPECT_TRUE(same(bufferColor(3), base));
}

TEST_F(SceneFaces, MarksStayWhenTheWholeSolidIsShownAgain)
{
    scene.selectBaseFace(solid->getId(), 2);
    drain();
    solid->setFaceVisible(3, false);

    solid->setVisible(true, true);

    EXPECT_TRUE(same(bufferColor(2), base));
}

class SharedFaces : public SceneFaces {
protected:
    SharedFaces()
    {
        otherBody = test::addModelBody(solid->getShape(), "faces");
        SolidVisual::Build(world, otherBody.get(), solid->getShape());
        other = static_cast<SolidVisual*>(Scene::GetVisual(otherBody->getId()));
    }
    rob::Colorf sharedColor(unsigned face) { return MeshManager::GetFaceColor("faces", other->getShape(), face); }

    std::shared_ptr<layout::Body> otherBody;
    SolidVisual* other = nullptr;
};

TEST_F(SharedFaces, SolidThatDiesTakesItsMarksOffTheMesh)
{
    scene.selectBaseFace(solid->getId(), 1);
    scene.highlightFace(solid, 2);
    drain();

    scene.deleteVisual(solid);

    EXPECT_TRUE(same(sharedColor(1), stored));
    EXPECT_TRUE(same(sharedColor(2), stored));
}

TEST_F(SharedFaces, MarkThatAnotherHasOnTheSameFaceStays)
{
    scene.selectBaseFace(solid->getId(), 1);
    scene.selectSideFace(other->getId(), 1);
    scene.selectBaseFace(solid->getId(), 2);
    drain();

    scene.deleteVisual(solid);

    EXPECT_TRUE(same(sharedColor(1), side));
    EXPECT_TRUE(same(sharedColor(2), stored));
    EXPECT_TRUE(scene.faceIsSelected(other, 1));
}

TEST_F(SharedFaces, SolidThatDiesAfterItsModelObjectTakesItsMarksOffAllTheSame)
{
    scene.selectBaseFace(solid->getId(), 1);
    drain();
    sdf::SdfManager::inst().clear();
    body.reset();

    scene.deleteVisual(solid);

    EXPECT_TRUE(same(sharedColor(1), stored));
}

TEST_F(SceneFaces, SelectingAFaceOfAVisualThatIsNotRegisteredFails)
{
    auto* visual = new Visual(9000, world);

    EXPECT_THROW(scene.selectBaseFace(9000, 1), std::out_of_range);
    EXPECT_FALSE(scene.faceIsSelected(solid, 1));
    scene.deleteVisual(visual);
}

TEST_F(SceneFaces, SelectingAFaceOfSomethingElseIsIgnoredAndLeavesTheHighlight)
{
    auto* visual = new Visual(9000, world);
    SceneCore::Get()->visuals.enter(visual);
    scene.highlightFace(solid, 2);

    scene.selectBaseFace(9000, 1);
    scene.selectSideFace(9000, 1);

    EXPECT_TRUE(same(bufferColor(2), lit));
}

TEST_F(SceneFaces, VisualThatOnlySaysThatItIsASolidHasNoFaceToSelect)
{
    auto* visual = new Visual(9000, world);
    visual->setType(VisualType::Solid);
    SceneCore::Get()->visuals.enter(visual);
    scene.highlightFace(solid, 2);

    scene.selectBaseFace(9000, 1);
    scene.selectSideFace(9000, 1);
    EXPECT_TRUE(same(bufferColor(2), lit)) << "as of any other visual";

    EXPECT_NO_THROW(scene.clearSelectedFace(9000, 1));
    drain();
}

TEST_F(SceneFaces, DyingSolidLeavesTheRecords)
{
    scene.highlightFace(solid, 2);
    scene.selectBaseFace(solid->getId(), 1);
    drain();

    scene.deleteVisual(solid);
    EXPECT_FALSE(scene.faceIsSelected(solid, 1));
    int posts = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&posts] { ++posts; });
    scene.clearHighlightedFace();
    scene.clearSelectedFaces();

    EXPECT_EQ(posts, 0) << "there is no face left to give its colour back to";
    EXPECT_NO_THROW(drain());
}

TEST_F(SceneFaces, BodyFaceIsThatOfTheFaceMap)
{
    EXPECT_TRUE(Scene::GetBodyFace(solid->getId(), 2).IsSame(solid->getFace(2)));
}

TEST_F(SceneFaces, BodyFaceOutOfRangeFails)
{
    for (const unsigned face : {7u, 0u}) {
        SCOPED_TRACE(face);
        for (const bool inWorld : {false, true}) {
            try {
                if (inWorld)
                    Scene::GetBodyFaceInWorld(solid->getId(), face);
                else
                    Scene::GetBodyFace(solid->getId(), face);
                FAIL() << "no failure";
            } catch (const Standard_OutOfRange& failure) {
                EXPECT_THAT(failure.GetMessageString(), StrEq("NCollection_IndexedMap::FindKey"));
            }
        }
    }
}

TEST_F(SceneFaces, FaceInWorldLiesWhereTheVisualIs)
{
    solid->setPosition(100, 0, 0);

    const TopoDS_Face face = Scene::GetBodyFaceInWorld(solid->getId(), 1);

    EXPECT_NEAR(face.Location().Transformation().TranslationPart().X(), 100, 1e-9);
}

TEST_F(SceneFaces, FaceOfASolidThatHardlyMovedIsUnchanged)
{
    solid->setPosition(0.005f, 0, 0);

    EXPECT_TRUE(Scene::GetBodyFaceInWorld(solid->getId(), 1).IsEqual(Scene::GetBodyFace(solid->getId(), 1)));
}

struct MoveCase {
    const char* name;
    rob::Posef pose;
    bool moves;
};
class FaceInWorld : public SceneFaces, public testing::WithParamInterface<MoveCase> {};

TEST_P(FaceInWorld, FollowsTheVisualFromAHundredthOfAUnitAndAThousandthOfATurnOn)
{
    solid->setPose(GetParam().pose);

    const TopoDS_Face& local = Scene::GetBodyFace(solid->getId(), 1);
    EXPECT_EQ(Scene::GetBodyFaceInWorld(solid->getId(), 1).IsEqual(local), !GetParam().moves);
}

// A turn of 2 a has the quaternion (cos a, sin a about its axis); a half turn is the one whose w alone tells nothing.
INSTANTIATE_TEST_SUITE_P(Table, FaceInWorld,
                         testing::Values(MoveCase{"Nowhere", {}, false},
                                         MoveCase{"LittleAlongX", rob::Posef(rob::Posf(0.0099f, 0, 0)), false},
                                         MoveCase{"AlongX", rob::Posef(rob::Posf(0.011f, 0, 0)), true},
                                         MoveCase{"AlongAll", rob::Posef(rob::Posf(0.008f, 0.008f, 0.008f)), true},
                                         MoveCase{"LittleAboutX", {{}, rob::Rotationf(1, 0.0009f, 0, 0)}, false},
                                         MoveCase{"LittleAboutY", {{}, rob::Rotationf(1, 0, 0.0009f, 0)}, false},
                                         MoveCase{"LittleAboutZ", {{}, rob::Rotationf(1, 0, 0, -0.0009f)}, false},
                                         MoveCase{"AboutX", {{}, rob::Rotationf(1, 0.0012f, 0, 0)}, true},
                                         MoveCase{"AboutY", {{}, rob::Rotationf(1, 0, -0.0012f, 0)}, true},
                                         MoveCase{"AboutZ", {{}, rob::Rotationf(1, 0, 0, 0.0012f)}, true},
                                         MoveCase{"WholeTurn", {{}, rob::Rotationf(-1, 0, 0, 0)}, true}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(SceneFaces, FaceInWorldKeepsTheLocationThatItHas)
{
    gp_Trsf shift;
    shift.SetTranslation(gp_Vec(0, 0, 5));
    const TopoDS_Shape moved = test::meshedBox(1, 1, 1).Moved(TopLoc_Location(shift));
    const auto movedBody = test::addModelBody(moved, "moved-faces");
    SolidVisual::Build(world, movedBody.get(), moved);
    Visual* visual = Scene::GetVisual(movedBody->getId());
    visual->setPose({{100, 0, 0}, rob::Rotationf(std::sqrt(0.5f), std::sqrt(0.5f), 0, 0)}); // a quarter about x

    const gp_XYZ place = Scene::GetBodyFaceInWorld(movedBody->getId(), 1).Location().Transformation().TranslationPart();

    EXPECT_LT((place - gp_XYZ(100, -5, 0)).Modulus(), 1e-5) << "first its own location, then the pose of the visual";
}

// Solids made anew

TEST_F(SceneFaces, SolidMadeAnewShowsTheNewShapeAndForgetsWhatWasHiddenAndSelected)
{
    auto* owner = new Visual(world);
    owner->attachVisual(solid);
    solid->setFaceVisible(2, false);
    scene.selectBaseFace(solid->getId(), 1);
    scene.setVisualSelected(solid);
    scene.highlightFace(solid, 3);
    drain();
    body->setGeometry("faces-anew", "brep");
    const TopoDS_Shape shape = test::meshedBox(1, 2, 3);

    scene.updateSolidVisual(body.get(), shape);
    EXPECT_EQ(Scene::GetVisual(body->getId()), solid) << "it is posted";
    drain();

    auto* anew = dynamic_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    ASSERT_NE(anew, nullptr);
    EXPECT_EQ(anew->getParent(), owner);
    EXPECT_TRUE(anew->getShape().IsEqual(shape));
    EXPECT_TRUE(anew->isFaceVisible(2));
    EXPECT_FALSE(scene.faceIsSelected(anew, 1));
    EXPECT_TRUE(Scene::GetStateManager()->visualsWithLayers().empty());
    EXPECT_TRUE(selection::VisualSelection::Get()->hasVisual(anew));
}

TEST_F(SceneFaces, SolidMadeAnewShowsTheNewShapeAlsoWhereAnotherBodyShowsTheOldOne)
{
    const std::string uri = body->getGeometryUri();
    const auto other = test::addModelBody(body->getShape(), uri, "#808080");
    SolidVisual::Build(world, other.get(), other->getShape());
    ASSERT_EQ(other->getGeometryUri(), uri) << "the same shape, the same mesh";
    const TopoDS_Shape shape = test::meshed(BRepPrimAPI_MakeCylinder(5, 10).Shape());
    std::uint64_t triangles = 0;
    for (TopExp_Explorer face(shape, TopAbs_FACE); face.More(); face.Next()) {
        TopLoc_Location location;
        triangles += BRep_Tool::Triangulation(TopoDS::Face(face.Current()), location)->NbTriangles();
    }

    scene.updateSolidVisual(body.get(), shape);
    drain();

    auto* anew = dynamic_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    EXPECT_EQ(anew->getTrianglesNum(), triangles);
    EXPECT_NE(anew->getMeshName(), uri);
    EXPECT_EQ(anew->getMeshName(), body->getGeometryUri());
    EXPECT_EQ(Scene::GetVisual(other->getId())->getTrianglesNum(), 12u);
    for (unsigned face = 1; face <= 3; ++face)
        scene.highlightFace(anew, face);
    EXPECT_NO_THROW(drain());
}

TEST_F(SceneFaces, BodyThatIsShownAsAMeshIsNotMadeAnew)
{
    scene.deleteVisual(solid);
    auto* mesh = new MeshVisual(world, body.get());
    SceneCore::Get()->visuals.enter(mesh);
    int posts = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&posts] { ++posts; });

    scene.updateSolidVisual(body.get(), test::meshedBox(1, 2, 3));

    EXPECT_EQ(posts, 0);
    drain();
    EXPECT_EQ(Scene::GetVisual(body->getId()), mesh);
}

// Colours

TEST_F(SceneFaces, ResetColourReachesABodyAndTheBodiesThatAreDirectChildren)
{
    auto* owner = new Visual(world);
    SceneCore::Get()->visuals.enter(owner);
    owner->attachVisual(solid);
    const rob::Colorf painted(0.25f, 0.5f, 0.75f);
    const auto paint = [&] { solid->setBodyColor(painted, 1); };

    paint();
    scene.resetColor(owner->getId());
    EXPECT_EQ(MeshManager::GetFaceColor("faces", solid->getShape(), 1), painted) << "it is posted";
    EXPECT_TRUE(same(bufferColor(1), stored));

    paint();
    scene.resetColor(owner);
    EXPECT_TRUE(same(bufferColor(1), stored));

    paint();
    scene.resetColor(solid->getId());
    EXPECT_TRUE(same(bufferColor(1), stored));
}

TEST_F(SceneFaces, ResetColourDoesNotReachDeeperThanOneLevel)
{
    auto* assembly = new Visual(world);
    SceneCore::Get()->visuals.enter(assembly);
    auto* part = new Visual(assembly);
    part->attachVisual(solid);
    const rob::Colorf painted(0.25f, 0.5f, 0.75f);
    solid->setBodyColor(painted, 1);

    scene.resetColor(assembly->getId());

    EXPECT_EQ(bufferColor(1), painted);
}

TEST_F(SceneFaces, ResetColourReachesAMeshAmongTheChildren)
{
    auto* owner = new Visual(world);
    SceneCore::Get()->visuals.enter(owner);
    MeshVisual* mesh = MeshVisual::BuildArrow(owner, {}, {0, 0, 1});

    scene.resetColor(owner);
    drain();

    const auto modelColor = geometry::ParseColorText(geometry::BodyColorTool::GetBodyColor(mesh->getId()));
    EXPECT_EQ(mesh->getEntity()->getSubEntity(0)->getCustomParameter(0),
              Ogre::Vector4(modelColor.r, modelColor.g, modelColor.b, 1));
}

} // namespace
} // namespace vrk::visual
