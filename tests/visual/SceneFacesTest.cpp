#include "mesh/MeshManager.h"
#include "platform/broker/SignalBroker.h"
#include "platform/layout/Body.h"
#include "support/SceneFixture.h"
#include "visual/SolidVisual.h"

#include <BRep_Tool.hxx>
#include <Standard_OutOfRange.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

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

TEST_F(SceneFaces, SelectingAFaceOfSomethingElseIsIgnored)
{
    auto* visual = new Visual(9000, world);
    scene.addRenderTask([] {}, 0);
    drain();

    EXPECT_THROW(scene.selectBaseFace(9000, 1), std::out_of_range) << "it is not registered";
    scene.deleteVisual(visual);
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
    try {
        Scene::GetBodyFace(solid->getId(), 7);
        FAIL() << "no failure";
    } catch (const Standard_OutOfRange& failure) {
        EXPECT_THAT(failure.GetMessageString(), StrEq("NCollection_IndexedMap::FindKey"));
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

} // namespace
} // namespace vrk::visual
