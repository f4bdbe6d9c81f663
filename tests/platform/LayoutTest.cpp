#include "platform/layout/Layout.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/Import.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Poly_Polygon3D.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <gp_Trsf.hxx>
#include <gp_Vec.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <shared_mutex>

namespace vrk::layout {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LayoutTest : public testing::Test {
protected:
    ~LayoutTest() override { Layout::inst().clear(); }

    static std::shared_ptr<Part> newPart(const std::string& name)
    {
        return std::make_shared<Part>(sdf::SdfManager::inst().generateId(), name);
    }
    static sdf::SdfObject* find(unsigned id)
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        return sdf::SdfManager::inst().find(id);
    }
};

TEST_F(LayoutTest, NewPartIsDetectableAndStandsAtTheOrigin)
{
    const std::shared_ptr<Part> part = newPart("table");

    EXPECT_EQ(part->getModelType(), sdf::ModelType::Part);
    EXPECT_TRUE(part->isDetectable());
    EXPECT_TRUE(part->isStandalone());
    EXPECT_EQ(part->getPose(), rob::Posed());
    EXPECT_THAT(part->getBodies(), IsEmpty());
}

TEST_F(LayoutTest, DetectableIsAnElementOfThePart)
{
    const std::shared_ptr<Part> part = newPart("table");

    part->setDetectable(false);

    EXPECT_FALSE(part->isDetectable());
    EXPECT_FALSE(part->getElement()->get("detectable")->asBool());
}

TEST_F(LayoutTest, BodyLiesInItsPartsTree)
{
    const std::shared_ptr<Part> part = newPart("table");

    const std::shared_ptr<Body> top = part->addBody("top");
    const std::shared_ptr<Body> leg = part->addBody("leg");

    EXPECT_THAT(part->getBodies(), ElementsAre(top, leg));
    EXPECT_THAT(part->getObjChildren(), ElementsAre(top->getId(), leg->getId()));
    EXPECT_EQ(top->getParentId(), part->getId());
    EXPECT_FALSE(top->isStandalone());
    EXPECT_EQ(top->getModelType(), sdf::ModelType::Body);
    EXPECT_EQ(top->getElement()->getName(), "body");
    EXPECT_EQ(top->getElement()->getParent(), part->getElement());
    EXPECT_NE(top->getElement(), leg->getElement());
}

TEST_F(LayoutTest, AddedPartEntersTheTableWithItsBodies)
{
    const std::shared_ptr<Part> part = newPart("table");
    const std::shared_ptr<Body> body = part->addBody("top");
    EXPECT_EQ(find(part->getId()), nullptr);

    Layout::inst().addPart(part);

    EXPECT_THAT(Layout::inst().parts, ElementsAre(part));
    EXPECT_EQ(find(part->getId()), part.get());
    EXPECT_EQ(find(body->getId()), body.get());
}

TEST_F(LayoutTest, MemberOfAnAssemblyIsRemovedFromItAndMayBePutBack)
{
    const auto assembly = std::make_shared<Assembly>(sdf::SdfManager::inst().generateId(), "fence");
    const std::vector<std::shared_ptr<Part>> parts{newPart("first"), newPart("second"), newPart("third")};
    for (const auto& part : parts)
        assembly->addPart(part);
    Layout::inst().addAssembly(assembly);
    const unsigned second = parts[1]->getId();

    Layout::inst().remove(second);

    EXPECT_EQ(find(second), nullptr);
    EXPECT_THAT(assembly->getParts(), ElementsAre(parts[0], parts[2]));
    EXPECT_THAT(assembly->getObjChildren(), ElementsAre(parts[0]->getId(), parts[2]->getId()));
    EXPECT_THAT(Layout::inst().parts, ElementsAre(parts[0], parts[2]));

    assembly->insertMember(1, parts[1]);

    EXPECT_THAT(assembly->getParts(), ElementsAre(parts[0], parts[1], parts[2]));
    EXPECT_THAT(assembly->getObjChildren(), ElementsAre(parts[0]->getId(), second, parts[2]->getId()));
    EXPECT_FALSE(parts[1]->isStandalone());
}

TEST_F(LayoutTest, RemovedPartLeavesTheTableWithItsBodies)
{
    const std::shared_ptr<Part> kept = newPart("kept");
    const std::shared_ptr<Part> part = newPart("table");
    const std::shared_ptr<Body> body = part->addBody("top");
    Layout::inst().addPart(kept);
    Layout::inst().addPart(part);

    Layout::inst().removePart(part->getId());
    Layout::inst().removePart(part->getId()); // unknown by now

    EXPECT_THAT(Layout::inst().parts, ElementsAre(kept));
    EXPECT_EQ(find(part->getId()), nullptr);
    EXPECT_EQ(find(body->getId()), nullptr);
    EXPECT_EQ(find(kept->getId()), kept.get());
}

TEST_F(LayoutTest, ClearedStationIsEmpty)
{
    const std::shared_ptr<Part> part = newPart("table");
    const std::shared_ptr<Body> body = part->addBody("top");
    Layout::inst().addPart(part);

    Layout::inst().clear();

    EXPECT_THAT(Layout::inst().parts, IsEmpty());
    EXPECT_EQ(find(part->getId()), nullptr);
    EXPECT_EQ(find(body->getId()), nullptr);
}

TEST_F(LayoutTest, GeometryAndColoursAreElementsOfTheBody)
{
    const std::shared_ptr<Body> body = newPart("table")->addBody("top");

    body->setGeometry("/a/b.step#top", "brep");
    body->setColor("#112233");
    body->setFaceColor(3, "#445566");

    EXPECT_EQ(body->getGeometryUri(), "/a/b.step#top");
    EXPECT_EQ(body->getFileType(), "brep");
    EXPECT_EQ(sdf::textAt(*body->getElement(), "geometry/uri"), "/a/b.step#top");
    EXPECT_EQ(sdf::textAt(*body->getElement(), "geometry/file_type"), "brep");
    EXPECT_EQ(sdf::textAt(*body->getElement(), "visual/color"), "#112233");
    EXPECT_EQ(sdf::textAt(*body->getElement(), "visual/face_colors/f3"), "#445566");
}

TEST_F(LayoutTest, MaterialGoesByTheKindOfFileUntilItIsNamed)
{
    const std::shared_ptr<Body> body = newPart("table")->addBody("top");
    EXPECT_EQ(body->getMaterialName(), "Body");
    body->setGeometry("a.stl", "stl");
    EXPECT_EQ(body->getMaterialName(), "MeshBody");

    body->setMaterialName("Glass");

    EXPECT_EQ(body->getMaterialName(), "Glass");
    EXPECT_EQ(sdf::textAt(*body->getElement(), "visual/material/name"), "Glass");
}

TEST_F(LayoutTest, FacesAreNumberedFromOneAndAnewForANewShape)
{
    const std::shared_ptr<Body> body = newPart("table")->addBody("top");
    EXPECT_EQ(body->getFaceMap().Extent(), 0);

    body->setShape(BRepPrimAPI_MakeBox(1, 2, 3).Shape());
    EXPECT_EQ(body->getFaceMap().Extent(), 6);
    EXPECT_FALSE(TopoDS::Face(body->getFaceMap()(1)).IsNull());

    body->setShape(BRepPrimAPI_MakeCylinder(1, 2).Shape());
    EXPECT_EQ(body->getFaceMap().Extent(), 3);
}

TEST_F(LayoutTest, ShapeThatCannotBeCopiedIsLikeNoOther)
{
    std::vector<std::shared_ptr<Body>> bodies;
    std::set<std::string> uris;
    for (int i = 0; i < 3; ++i) {
        const TopoDS_Shape box = BRepPrimAPI_MakeBox(1, 2, 3).Shape();
        const TopoDS_Edge edge = TopoDS::Edge(TopExp_Explorer(box, TopAbs_EDGE).Current());
        BRep_Builder().Range(edge, 0, 1e308); // as a damaged file has it
        bodies.push_back(newPart("table")->addBody("top"));
        bodies.back()->setGeometry("damaged#top", "brep");
        bodies.back()->setShape(box);
        uris.insert(bodies.back()->getGeometryUri());
    }

    EXPECT_EQ(uris.size(), 3u);
    EXPECT_TRUE(uris.contains("damaged#top"));
}

TEST_F(LayoutTest, BodiesOfOneShapeShareAUri)
{
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(1, 2, 3).Shape();
    const TopoDS_Shape again = BRepPrimAPI_MakeBox(1, 2, 3).Shape(); // as of a file that is read twice
    BRepMesh_IncrementalMesh(again, 0.1);
    std::vector<std::shared_ptr<Body>> bodies; // they hold their URI as long as they live
    for (const TopoDS_Shape& shape : {box, box, again}) {
        const std::shared_ptr<Body> body = newPart("table")->addBody("top");
        body->setGeometry("shared#top", "brep");
        body->setShape(shape);
        bodies.push_back(body);

        EXPECT_EQ(body->getGeometryUri(), "shared#top");
        EXPECT_FALSE(body->hasOwnUri());
    }
}

TEST_F(LayoutTest, BodyWhoseUriIsAnotherShapesGetsOneOfItsOwn)
{
    const std::shared_ptr<Body> first = newPart("first")->addBody("top");
    first->setGeometry("taken#top", "brep");
    first->setShape(BRepPrimAPI_MakeBox(1, 2, 3).Shape());
    const TopoDS_Shape cylinder = BRepPrimAPI_MakeCylinder(1, 2).Shape();
    const std::shared_ptr<Body> uriFirst = newPart("uri first")->addBody("top");
    uriFirst->setGeometry("taken#top", "brep");
    uriFirst->setShape(cylinder);
    const std::shared_ptr<Body> shapeFirst = newPart("shape first")->addBody("top");
    shapeFirst->setShape(cylinder);
    shapeFirst->setGeometry("taken#top", "brep");

    EXPECT_EQ(first->getGeometryUri(), "taken#top");
    EXPECT_THAT(uriFirst->getGeometryUri(), testing::MatchesRegex("taken#top~[0-9a-f]{16}"));
    EXPECT_EQ(shapeFirst->getGeometryUri(), uriFirst->getGeometryUri()) << "it goes by the content";
    EXPECT_TRUE(uriFirst->hasOwnUri());
    EXPECT_EQ(uriFirst->getGivenUri(), "taken#top");
}

TEST_F(LayoutTest, BodyWhoseShapeChangesGetsAUriOfItsOwn)
{
    const std::shared_ptr<Body> body = newPart("table")->addBody("top");
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(1, 2, 3).Shape();
    body->setGeometry("changing#top", "brep");
    body->setShape(box);
    body->setShape(box);
    EXPECT_EQ(body->getGeometryUri(), "changing#top");

    body->setShape(BRepPrimAPI_MakeBox(1, 2, 4).Shape());
    const std::string longer = body->getGeometryUri();
    gp_Trsf up;
    up.SetTranslation(gp_Vec(0, 0, 1));
    body->setShape(box.Moved(up));
    const std::string moved = body->getGeometryUri();

    EXPECT_THAT(longer, testing::MatchesRegex("changing#top~[0-9a-f]{16}"));
    EXPECT_THAT(moved, testing::MatchesRegex("changing#top~[0-9a-f]{16}"));
    EXPECT_NE(longer, moved);
    body->setGeometry("named#top", "brep");
    EXPECT_EQ(body->getGeometryUri(), "named#top");
}

TEST_F(LayoutTest, UriIsFreeAgainWithTheLastOfItsBodies)
{
    {
        Part part(4001, "gone");
        const auto body = part.addBody("top");
        body->setGeometry("free#top", "brep");
        body->setShape(BRepPrimAPI_MakeBox(1, 2, 3).Shape());
    }
    const std::shared_ptr<Body> body = newPart("table")->addBody("top");
    body->setGeometry("free#top", "brep");
    body->setShape(BRepPrimAPI_MakeBox(3, 2, 1).Shape());

    EXPECT_EQ(body->getGeometryUri(), "free#top");
}

TEST_F(LayoutTest, EdgesOfAShapeGetTheirPolygonsFromTheTrianglesOfAFace)
{
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(1, 2, 3).Shape();
    BRepMesh_IncrementalMesh(box, 0.1);
    const auto polygonOf = [&box](const TopoDS_Shape& edge) {
        TopLoc_Location location;
        return BRep_Tool::Polygon3D(TopoDS::Edge(edge), location);
    };
    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(box, TopAbs_EDGE, edges);
    ASSERT_TRUE(polygonOf(edges(1)).IsNull());

    newPart("table")->addBody("top")->setShape(box);

    for (int i = 1; i <= edges.Extent(); ++i) {
        ASSERT_FALSE(polygonOf(edges(i)).IsNull()) << i;
        EXPECT_EQ(polygonOf(edges(i))->NbNodes(), 2);
    }
    const Handle(Poly_Polygon3D) before = polygonOf(edges(1));
    newPart("bench")->addBody("top")->setShape(box);
    EXPECT_EQ(polygonOf(edges(1)), before) << "once";
}

TEST_F(LayoutTest, LoadingAShapeThatIsThereReadsNoFile)
{
    const std::shared_ptr<Body> body = newPart("table")->addBody("top");
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(1, 2, 3).Shape();
    body->setGeometry("/no/such/file.step#top", "brep");
    body->setShape(box);

    body->ensureShapeLoaded();

    EXPECT_TRUE(body->getShape().IsSame(box));
}

TEST_F(LayoutTest, LoadingFromAMissingFileIsRefused)
{
    const std::shared_ptr<Body> body = newPart("table")->addBody("top");
    body->setGeometry("/no/such/file.step#top", "brep");

    EXPECT_THAT([&] { body->ensureShapeLoaded(); },
                testing::ThrowsMessage<station::ImportError>("/no/such/file.step: no such file"));
    EXPECT_TRUE(body->getShape().IsNull());
}

} // namespace
} // namespace vrk::layout
