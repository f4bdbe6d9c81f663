#include "PreviewFixture.h"

#include "platform/common/Checks.h"
#include "preview/PolylineVisual.h"
#include "preview/TriangleMeshVisual.h"
#include "support/ThrowsExactly.h"
#include "task/RobtargetVisual.h"
#include "visual/MeshVisual.h"
#include "visual/PointsVisual.h"

#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

/// Faces, points, targets, meshes and polylines that are previewed.
namespace vrk::visual {
namespace {

using test::throwsExactly;
using test::uploaded;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const rob::Posef pose(rob::Posf(1, 2, 3), rob::Rotationf(0.5f, 0.5f, 0.5f, 0.5f));

std::vector<TopoDS_Face> facesOf(const TopoDS_Shape& shape)
{
    std::vector<TopoDS_Face> faces;
    for (TopExp_Explorer each(shape, TopAbs_FACE); each.More(); each.Next())
        faces.push_back(TopoDS::Face(each.Current()));
    return faces;
}

class PreviewShapes : public test::WithPreviews<test::SceneFixture> {
protected:
    ~PreviewShapes() override
    {
        scene.removePreviewFaces();
        scene.removePreviewedPoints();
        scene.removePolylines();
        drain();
    }
    static SolidVisual& faceAt(std::size_t i) { return dynamic_cast<SolidVisual&>(*listed<PreviewFaces>().at(i)); }
    static PolylineVisual& lineAt(std::size_t i) { return dynamic_cast<PolylineVisual&>(*listed<Polylines>().at(i)); }
    void expectUnknownId()
    {
        EXPECT_THAT([this] { drain(); }, throwsExactly<std::out_of_range>("invalid unordered_map<K, T> key"));
    }

    const TopoDS_Shape shape = test::meshedBox(10, 20, 30);
    const std::vector<TopoDS_Face> faces = facesOf(shape);
    std::vector<gp_Pnt> points{{1, 2, 3}, {4, 5, 6}};
};

TEST_F(PreviewShapes, FaceIsASolidOfThePreviewMaterialOnItsBody)
{
    SolidVisual* box = addBox();
    scene.previewFace(faces[0], box->getId());
    EXPECT_THAT(listed<PreviewFaces>(), IsEmpty()) << "it is posted";
    drain();

    ASSERT_THAT(listed<PreviewFaces>(), SizeIs(1));
    SolidVisual& face = faceAt(0);
    EXPECT_EQ(face.getParent(), box);
    EXPECT_EQ(face.getName(), "Visual_" + std::to_string(face.getId()));
    EXPECT_EQ(face.getEntity()->getSubEntity(0)->getMaterialName(), "PreviewFace");
    EXPECT_EQ(face.getFacesNum(), 1u);
    EXPECT_EQ(Scene::GetVisual(face.getId()), &face);
}

TEST_F(PreviewShapes, EachCallReplacesTheFaces)
{
    const unsigned id = addBox()->getId();
    scene.previewFaces(faces, id);
    drain();
    ASSERT_THAT(listed<PreviewFaces>(), SizeIs(6));
    const unsigned old = faceAt(0).getId();

    scene.previewFace(faces[1], id);
    drain();
    EXPECT_THAT(listed<PreviewFaces>(), SizeIs(1));
    EXPECT_FALSE(Scene::HasVisual(old)) << "the old ones leave the registry";

    scene.previewFaces({faces[0], faces[2]}, id);
    drain();
    EXPECT_THAT(listed<PreviewFaces>(), SizeIs(2));

    scene.removePreviewFaces();
    drain();
    EXPECT_THAT(listed<PreviewFaces>(), IsEmpty());
}

TEST_F(PreviewShapes, FaceOnNoSolidFailsAndTheOldOnesAreGone)
{
    SolidVisual* box = addBox();
    auto* plain = new Visual(box);
    SceneCore::Get()->visuals.enter(plain);
    for (const unsigned id : {0u, 4711u, plain->getId()}) {
        scene.previewFace(faces[0], box->getId());
        drain();

        scene.previewFace(faces[1], id);

        EXPECT_THAT([this] { drain(); }, throwsExactly<common::BadOptionalAccess>("Bad optional access"));
        EXPECT_THAT(listed<PreviewFaces>(), IsEmpty());
    }
}

TEST_F(PreviewShapes, NullFaceIsPassedOverAndTheLogSaysSo)
{
    scene.previewFaces({TopoDS_Face(), faces[0]}, addBox()->getId());
    drain();

    EXPECT_THAT(listed<PreviewFaces>(), SizeIs(1));
    EXPECT_THAT(lines, ElementsAre("a face is not previewed: it is empty"));
}

TEST_F(PreviewShapes, FacesGoWithTheirBody)
{
    SolidVisual* box = addBox();
    scene.previewFaces(faces, box->getId());
    drain();

    scene.removeVisual(box->getId());
    drain();

    EXPECT_THAT(listed<PreviewFaces>(), IsEmpty());
}

TEST_F(PreviewShapes, PointsLieOnTheirVisualInTheirColour)
{
    SolidVisual* box = addBox();
    scene.previewPoints(&points, box->getId(), {1, 0.5f, 0});
    EXPECT_THAT(listed<PreviewedPoints>(), IsEmpty()) << "it is posted";
    drain();

    ASSERT_THAT(listed<PreviewedPoints>(), SizeIs(1));
    const Visual* visual = listed<PreviewedPoints>().front();
    EXPECT_NE(dynamic_cast<const PointsVisual*>(visual), nullptr);
    EXPECT_EQ(visual->getParent(), box);
    auto& object = dynamic_cast<Ogre::ManualObject&>(*visual->getSceneNode()->getAttachedObjects().front());
    EXPECT_EQ(object.getBoundingBox(), Ogre::AxisAlignedBox(1, 2, 3, 4, 5, 6));
    ASSERT_THAT(object.getSections(), SizeIs(1));
    EXPECT_EQ(object.getSections().front()->getCustomParameter(0), Ogre::Vector4(1, 0.5f, 0, 1));
}

TEST_F(PreviewShapes, PointsAreAddedAndTargetsReplaceThem)
{
    const unsigned id = addBox()->getId();
    scene.previewPoints(&points, id, {});
    scene.previewPoints(&points, id, {});
    drain();
    EXPECT_THAT(listed<PreviewedPoints>(), SizeIs(2));

    scene.previewTargets({pose});
    drain();
    EXPECT_THAT(listed<PreviewedPoints>(), SizeIs(1));

    scene.previewPoints(&points, id, {});
    drain();
    EXPECT_THAT(listed<PreviewedPoints>(), SizeIs(2));

    scene.removePreviewedPoints();
    drain();
    EXPECT_THAT(listed<PreviewedPoints>(), IsEmpty());
    EXPECT_THAT(kindsOn<PointsVisual>(*Scene::GetVisual(id)), IsEmpty());
}

TEST_F(PreviewShapes, NoPointsDrawNothing)
{
    points.clear();
    scene.previewPoints(&points, addBox()->getId(), {});
    drain();

    EXPECT_THAT(listed<PreviewedPoints>(), SizeIs(1));
}

TEST_F(PreviewShapes, PointsAndMeshesOnNoVisualFailOnTheRenderThread)
{
    std::vector<std::pair<rob::Posf, rob::Posf>> segments{{{0, 0, 0}, {1, 0, 0}}};
    for (const unsigned id : {0u, 4711u}) {
        scene.previewPoints(&points, id, {});
        expectUnknownId();
        scene.previewTriangleMesh(&segments, id);
        expectUnknownId();
    }
    EXPECT_THAT(listed<PreviewedPoints>(), IsEmpty());
}

TEST_F(PreviewShapes, TargetsAreUnregisteredInstancesInTheWorld)
{
    scene.previewTargets({pose, rob::Posef(rob::Posf(9, 9, 9))});
    drain();

    ASSERT_THAT(listed<PreviewedPoints>(), SizeIs(2));
    auto* target = dynamic_cast<RobtargetVisual*>(listed<PreviewedPoints>().front());
    ASSERT_NE(target, nullptr);
    EXPECT_EQ(target->getParent(), world);
    EXPECT_EQ(target->getPose(), pose);
    EXPECT_EQ(target->getName(), "ROBTARGET_" + std::to_string(target->getId()));
    EXPECT_GE(target->getId(), 0x80000000u);
    EXPECT_FALSE(Scene::HasVisual(target->getId()));
    EXPECT_EQ(target->getFrameSize(), 50);
}

TEST_F(PreviewShapes, PointsThatWentWithTheirVisualAreForgotten)
{
    const unsigned id = addBox()->getId();
    scene.previewPoints(&points, id, {});
    scene.removeVisual(id);
    drain();

    EXPECT_THAT(listed<PreviewedPoints>(), IsEmpty());
    scene.removePreviewedPoints();
    drain();
}

TEST_F(PreviewShapes, MeshIsAListOfSegmentsThatGoesWithItsParent)
{
    SolidVisual* box = addBox();
    std::vector<std::pair<rob::Posf, rob::Posf>> segments{{{0, 0, 0}, {1, 0, 0}}, {{1, 0, 0}, {1, 1, 0}}};
    scene.previewTriangleMesh(&segments, box->getId());
    drain();

    ASSERT_THAT(kindsOn<TriangleMeshVisual>(*box), SizeIs(1));
    const TriangleMeshVisual& mesh = *kindsOn<TriangleMeshVisual>(*box).front();
    EXPECT_THAT(mesh.getName(), testing::StartsWith("previewed mesh"));
    EXPECT_EQ(test::materialOf(mesh), "PreviewCurve");
    ASSERT_THAT(mesh.getLines(), SizeIs(1));
    EXPECT_THAT(uploaded(*mesh.getLines().front()),
                ElementsAre(rob::Posf(0, 0, 0), rob::Posf(1, 0, 0), rob::Posf(1, 0, 0), rob::Posf(1, 1, 0)));
    Ogre::RenderOperation operation;
    mesh.getLines().front()->getRenderOperation(operation);
    EXPECT_EQ(operation.operationType, Ogre::RenderOperation::OT_LINE_LIST);
    EXPECT_EQ(mesh.getLines().front()->getRenderQueueGroup(), 60);

    scene.removePreviewFaces();
    scene.removePreviewCurves();
    scene.removePreviewedPoints();
    scene.removePolylines();
    drain();
    EXPECT_THAT(kindsOn<TriangleMeshVisual>(*box), SizeIs(1)) << "it stands in no list";
}

TEST_F(PreviewShapes, PolylineHasItsNameMaterialAndPoints)
{
    scene.drawPolyline({{0, 0, 0}, {1, 0, 0}, {1, 2, 0}}, 0, false);
    EXPECT_THAT(listed<Polylines>(), IsEmpty()) << "it is posted";
    drain();

    ASSERT_THAT(listed<Polylines>(), SizeIs(1));
    const PolylineVisual& line = lineAt(0);
    EXPECT_EQ(line.getName(), "polyline" + std::to_string(line.getId()));
    EXPECT_GE(line.getId(), 0x80000000u);
    EXPECT_EQ(line.getParent(), world);
    EXPECT_EQ(test::materialOf(line), "PreviewCurve");
    EXPECT_EQ(line.getLine().getRenderQueueGroup(), 60);
    EXPECT_THAT(uploaded(line.getLine()), ElementsAre(rob::Posf(0, 0, 0), rob::Posf(1, 0, 0), rob::Posf(1, 2, 0)));
    EXPECT_THAT(test::childrenOf(line), IsEmpty());
    EXPECT_FALSE(Scene::HasVisual(line.getId()));
}

TEST_F(PreviewShapes, ArrowOfAPolylineStandsAtItsFirstPointAndPointsToTheSecond)
{
    scene.drawPolyline({{1, 2, 3}, {1, 12, 3}}, 0, true);
    drain();

    ASSERT_THAT(kindsOn<MeshVisual>(lineAt(0)), SizeIs(1));
    const MeshVisual& arrow = *kindsOn<MeshVisual>(lineAt(0)).front();
    EXPECT_EQ(arrow.getPosition(), rob::Posf(1, 2, 3));
    EXPECT_LT((arrow.getPose() * rob::Dirf(0, 0, 1) - rob::Dirf(0, 1, 0)).length(), 1e-6f);
}

TEST_F(PreviewShapes, PolylinesHangOnTheirVisualAndGoWithIt)
{
    SolidVisual* box = addBox();
    scene.drawPolylines({{{0, 0, 0}, {1, 0, 0}}, {{5, 0, 0}, {6, 0, 0}}}, box->getId(), true);
    drain();
    ASSERT_THAT(listed<Polylines>(), SizeIs(2));
    EXPECT_EQ(lineAt(1).getParent(), box);
    EXPECT_THAT(kindsOn<MeshVisual>(lineAt(1)), SizeIs(1));

    scene.removeVisual(box->getId());
    drain();

    EXPECT_THAT(listed<Polylines>(), IsEmpty());
}

TEST_F(PreviewShapes, PolylinesAreAddedUntilTheyAreRemovedWithTheirArrows)
{
    scene.drawPolyline({{0, 0, 0}, {1, 0, 0}}, 0, true);
    scene.drawPolylines({{{0, 0, 0}, {1, 0, 0}}}, 0, false);
    drain();
    EXPECT_THAT(listed<Polylines>(), SizeIs(2));

    scene.removePolylines();
    drain();

    EXPECT_THAT(listed<Polylines>(), IsEmpty());
    EXPECT_THAT(addedToWorld(), IsEmpty());
}

TEST_F(PreviewShapes, ArrowsGoWithTheirPolylines)
{
    const std::size_t before = entities();
    scene.drawPolyline({{0, 0, 0}, {1, 0, 0}}, 0, true);
    scene.drawPolyline({{0, 0, 0}, {1, 0, 0}}, addBox()->getId(), true);
    drain();
    const std::size_t withBox = before + 1;
    ASSERT_EQ(entities(), withBox + 2);

    scene.removePolylines();
    drain();

    EXPECT_EQ(entities(), withBox);
}

TEST_F(PreviewShapes, ArrowBetweenEqualPointsFailsAndThePolylineStaysUnlisted)
{
    scene.drawPolyline({{1, 2, 3}, {1, 2, 3}, {4, 5, 6}}, 0, true);

    EXPECT_THAT([this] { drain(); }, throwsExactly<std::overflow_error>("0-length vector cannot be normalized."));

    EXPECT_THAT(listed<Polylines>(), IsEmpty());
    EXPECT_THAT(kindsOn<PolylineVisual>(*world), SizeIs(1));
}

TEST_F(PreviewShapes, PolylineOfOnePointDrawsNothingAndHasNoArrow)
{
    scene.drawPolyline({{1, 2, 3}}, 0, true);
    scene.drawPolyline({}, 0, false);
    drain();

    ASSERT_THAT(listed<Polylines>(), SizeIs(2));
    EXPECT_TRUE(lineAt(0).getLine().isDirty());
    EXPECT_THAT(test::childrenOf(lineAt(0)), IsEmpty());
    EXPECT_THAT(lines, ElementsAre("a polyline has no arrow: it needs two points"));
}

TEST_F(PreviewShapes, PolylineOnAnUnknownVisualFailsOnTheRenderThread)
{
    scene.drawPolyline({{0, 0, 0}, {1, 0, 0}}, 4711, false);
    expectUnknownId();
    scene.drawPolylines({{{0, 0, 0}, {1, 0, 0}}}, 4711, false);
    expectUnknownId();

    EXPECT_THAT(listed<Polylines>(), IsEmpty());
}

TEST_F(PreviewShapes, FourListsAreClearedEachByItsOwnRemoval)
{
    const unsigned id = addBox()->getId();
    const auto counts = [&] {
        drain();
        return std::vector{listed<PreviewCurves>().size(), listed<PreviewFaces>().size(),
                           listed<PreviewedPoints>().size(), listed<Polylines>().size()};
    };
    scene.previewEdge(test::straightEdge({0, 0, 0}, {1, 0, 0}), {});
    scene.previewFace(faces[0], id);
    scene.previewPoints(&points, id, {});
    scene.drawPolyline({{0, 0, 0}, {1, 0, 0}}, 0, false);
    EXPECT_THAT(counts(), ElementsAre(1, 1, 1, 1));

    scene.removePolylines();
    EXPECT_THAT(counts(), ElementsAre(1, 1, 1, 0));
    scene.removePreviewFaces();
    EXPECT_THAT(counts(), ElementsAre(1, 0, 1, 0));
    scene.removePreviewCurves();
    EXPECT_THAT(counts(), ElementsAre(0, 0, 1, 0));
    scene.removePreviewedPoints();
    EXPECT_THAT(counts(), ElementsAre(0, 0, 0, 0));
}

} // namespace
} // namespace vrk::visual
