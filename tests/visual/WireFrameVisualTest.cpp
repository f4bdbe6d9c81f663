#include "visual/WireFrameVisual.h"

#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "visual/Edges.h"
#include "visual/SolidVisual.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS_Compound.hxx>

#include <limits>

namespace vrk::visual {
namespace {

using test::uploaded;
using testing::ElementsAre;

class WireFrame : public test::SceneFixture {};

TEST_F(WireFrame, BoxIsTwelveSegmentsInOneList)
{
    const WireFrameVisual* visual = WireFrameVisual::Build(world, test::meshedBox(10, 20, 30));

    const std::vector<rob::Posf> points = uploaded(visual->getLines());
    ASSERT_EQ(points.size(), 24u);
    float length = 0;
    for (std::size_t i = 0; i < points.size(); i += 2)
        length += (points[i + 1] - points[i]).length();
    EXPECT_FLOAT_EQ(length, 4 * (10 + 20 + 30)) << "each edge once, though two faces share it";
    EXPECT_EQ(visual->getLines().getRenderOpType(), RenderOpType::Lines);
    EXPECT_EQ(visual->getSceneNode()->getAttachedObjects().size(), 1u);
}

TEST_F(WireFrame, StandsInNoRegistry)
{
    WireFrameVisual* visual = WireFrameVisual::Build(world, test::meshedBox(1, 1, 1));

    EXPECT_EQ(visual->getType(), VisualType::WireFrame);
    EXPECT_EQ(visual->getName(), "WireFrame" + std::to_string(visual->getId()));
    EXPECT_FALSE(Scene::HasVisual(visual->getId()));
    EXPECT_FALSE(selection::VisualSelection::Get()->hasVisual(visual)) << "nor can it be picked";
}

TEST_F(WireFrame, LooksAreThoseOfEdges)
{
    WireFrameVisual* visual = WireFrameVisual::Build(world, test::meshedBox(1, 1, 1));

    EXPECT_EQ(test::materialOf(*visual), "WireFrame");
    visual->setSelected();
    EXPECT_EQ(test::materialOf(*visual), "BodyCurveSelected");
    visual->setHighlighted();
    EXPECT_EQ(test::materialOf(*visual), "BodyCurveHighlighted");
}

TEST_F(WireFrame, LocationsMoveTheEdges)
{
    gp_Trsf shift;
    shift.SetTranslation(gp_Vec(100, 0, 0));
    const TopoDS_Shape moved = test::meshedBox(10, 20, 30).Moved(TopLoc_Location(shift));
    const TopoDS_Edge edge = test::straightEdge({0, 0, 0}, {1, 0, 0});

    EXPECT_EQ(WireFrameVisual::Build(world, moved)->getLines().getBoundingBox(),
              Ogre::AxisAlignedBox(100, 0, 0, 110, 20, 30));
    EXPECT_THAT(uploaded(WireFrameVisual::Build(world, edge.Moved(TopLoc_Location(shift)))->getLines()),
                ElementsAre(rob::Posf(100, 0, 0), rob::Posf(101, 0, 0)));
}

TEST_F(WireFrame, OwnPolygonComesBeforeThatOfAFace)
{
    const TopoDS_Shape box = test::meshedBox(10, 20, 30);
    TopExp_Explorer edges(box, TopAbs_EDGE);
    test::withPolygon(TopoDS::Edge(edges.Current()), {{0, 0, 0}, {0, 0, 15}, {0, 0, 20}, {0, 0, 30}});

    EXPECT_EQ(uploaded(WireFrameVisual::Build(world, box)->getLines()).size(), 28u);
}

TEST_F(WireFrame, PolygonIsCutIntoSegments)
{
    const TopoDS_Edge edge = test::withPolygon(BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(3, 0, 0)).Edge(),
                                               {{0, 0, 0}, {1, 0, 0}, {3, 0, 0}});

    EXPECT_THAT(uploaded(WireFrameVisual::Build(world, edge)->getLines()),
                ElementsAre(rob::Posf(0, 0, 0), rob::Posf(1, 0, 0), rob::Posf(1, 0, 0), rob::Posf(3, 0, 0)));
}

TEST_F(WireFrame, EdgesWithoutPolygonAreLeftOut)
{
    const WireFrameVisual* visual = WireFrameVisual::Build(world, BRepPrimAPI_MakeBox(1, 1, 1).Shape());

    EXPECT_TRUE(visual->getLines().getPoints().empty());
    EXPECT_EQ(visual->getLines().getVertexBufferCapacity(), 0u);
}

TEST_F(WireFrame, ShapeWithoutEdgesDrawsNothing)
{
    TopoDS_Compound empty;
    BRep_Builder().MakeCompound(empty);

    EXPECT_TRUE(WireFrameVisual::Build(world, empty)->getLines().getPoints().empty());
    EXPECT_TRUE(WireFrameVisual::Build(world, TopoDS_Shape())->getLines().getPoints().empty());
}

TEST_F(WireFrame, PolesOfASphereAreNoEdges)
{
    const WireFrameVisual* visual = WireFrameVisual::Build(world, test::meshed(BRepPrimAPI_MakeSphere(10).Shape()));

    const std::vector<rob::Posf>& points = visual->getLines().getPoints();
    ASSERT_FALSE(points.empty()) << "the seam";
    for (std::size_t i = 0; i < points.size(); i += 2)
        EXPECT_GT((points[i + 1] - points[i]).length(), 0.0f);
}

TEST_F(WireFrame, SegmentWithACoordinateThatIsNotFiniteIsDropped)
{
    auto* visual = new WireFrameVisual(world);
    const gp_Pnt good(1, 2, 3);

    for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity(), 1e300})
        for (int i = 1; i <= 3; ++i) {
            gp_Pnt point = good;
            point.SetCoord(i, bad);
            visual->addSegment(point, good);
            visual->addSegment(good, point);
        }
    EXPECT_TRUE(visual->getLines().getPoints().empty());

    visual->addSegment(good, {4, 5, 6});
    EXPECT_THAT(visual->getLines().getPoints(), ElementsAre(rob::Posf(1, 2, 3), rob::Posf(4, 5, 6)));
}

TEST_F(WireFrame, BodyHasItsEdgesAndABareSolidOfOneMaterialHasNone)
{
    const TopoDS_Shape shape = test::meshedBox(1, 1, 1);
    const auto body = test::addModelBody(shape, "with-edges");

    SolidVisual::Build(world, body.get(), shape);
    const SolidVisual* plain = SolidVisual::Build(world, shape, "KUKA");
    SolidVisual::Build(world, shape, "Body", "BodySelected", "BodyHighlighted");

    EXPECT_EQ(test::childrenOfType(*Scene::GetVisual(body->getId()), VisualType::WireFrame).size(), 1u);
    EXPECT_TRUE(test::childrenOf(*plain).empty());
    const Visual* bare = test::childrenOf(*world).back();
    ASSERT_EQ(test::childrenOf(*bare).size(), 1u);
    EXPECT_EQ(test::materialOf(*test::childrenOf(*bare).front()), "WireFrame") << "not the material of the solid";
}

TEST_F(WireFrame, BodyWithoutTrianglesHasItsEdgesAllTheSame)
{
    const TopoDS_Edge edge = test::straightEdge({0, 0, 0}, {1, 0, 0});
    const auto body = test::addModelBody(edge, "edge-only");

    testing::internal::CaptureStdout();
    SolidVisual::Build(world, body.get(), edge);

    auto* solid = static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "no mesh: " + solid->getName() + "\n");
    EXPECT_TRUE(solid->hasNoEntity());
    EXPECT_EQ(test::childrenOfType(*solid, VisualType::WireFrame).size(), 1u);
}

TEST_F(WireFrame, CopyOfABodyHasNone)
{
    const TopoDS_Shape shape = test::meshedBox(1, 1, 1);
    const auto body = test::addModelBody(shape, "copied-edges");
    SolidVisual::Build(world, body.get(), shape);

    Visual* copy = Scene::GetVisual(body->getId())->copy(world).value();

    EXPECT_TRUE(test::childrenOf(*copy).empty());
    delete copy;
}

TEST_F(WireFrame, BodiesOfOneShapeShareTheirLinesAlsoBeyondTheFirst)
{
    const TopoDS_Shape shape = test::meshedBox(10, 20, 30);
    WireFrameVisual* first = WireFrameVisual::Build(world, shape);
    WireFrameVisual* second = WireFrameVisual::Build(world, shape);
    const WireFrameVisual* other = WireFrameVisual::Build(world, test::meshedBox(10, 20, 30));

    EXPECT_EQ(&test::vertexDataOf(first->getLines()), &test::vertexDataOf(second->getLines()));
    EXPECT_NE(&test::vertexDataOf(first->getLines()), &test::vertexDataOf(other->getLines()));
    Visual::Delete(first);

    EXPECT_EQ(uploaded(second->getLines()).size(), 24u);
    second->setSelected();
    EXPECT_EQ(test::materialOf(*other), "WireFrame");
}

TEST_F(WireFrame, SegmentAddedToOneIsNotSeenOnTheOthersOfItsShape)
{
    const TopoDS_Shape shape = test::meshedBox(10, 20, 30);
    WireFrameVisual* first = WireFrameVisual::Build(world, shape);
    const WireFrameVisual* second = WireFrameVisual::Build(world, shape);

    first->addSegment({0, 0, 0}, {10, 20, 30});
    first->update();

    EXPECT_EQ(uploaded(first->getLines()).size(), 26u);
    EXPECT_EQ(uploaded(second->getLines()).size(), 24u);
}

TEST_F(WireFrame, EdgesThatWereGivenOtherPolygonsAreDrawnByTheseFromThenOn)
{
    const TopoDS_Edge edge = test::straightEdge({0, 0, 0}, {1, 0, 0});
    const WireFrameVisual* before = WireFrameVisual::Build(world, edge);

    test::withPolygon(edge, {{0, 0, 0}, {0.5, 0, 0}, {1, 0, 0}});
    const WireFrameVisual* after = WireFrameVisual::Build(world, edge);

    EXPECT_EQ(uploaded(before->getLines()).size(), 2u);
    EXPECT_EQ(uploaded(after->getLines()).size(), 4u);
}

TEST_F(WireFrame, NothingOfAShapeIsKeptBehindItsLastBody)
{
    const TopoDS_Shape shape = test::meshedBox(10, 20, 30);
    const int before = shape.TShape()->GetRefCount();
    WireFrameVisual* first = WireFrameVisual::Build(world, shape);
    WireFrameVisual* second = WireFrameVisual::Build(world, shape);
    EXPECT_GT(shape.TShape()->GetRefCount(), before);

    Visual::Delete(first);
    Visual::Delete(second);

    EXPECT_EQ(shape.TShape()->GetRefCount(), before);
}

} // namespace
} // namespace vrk::visual
