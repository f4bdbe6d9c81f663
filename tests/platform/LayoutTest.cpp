#include "platform/layout/Layout.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/Import.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <TopoDS.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
