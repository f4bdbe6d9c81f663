#include "StepFiles.h"
#include "platform/geometry/BodyColorTool.h"
#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/station/Import.h"
#include "support/TempFolder.h"

#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_Sewing.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <Bnd_Box.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Lin.hxx>
#include <gp_Pln.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vrk::station {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::ThrowsMessage;

TopoDS_Shape faceOf(double half)
{
    return BRepBuilderAPI_MakeFace(gp_Pln(), -half, half, -half, half).Shape();
}

TopoDS_Compound compoundOf(const std::vector<TopoDS_Shape>& pieces)
{
    TopoDS_Compound all;
    const BRep_Builder builder;
    builder.MakeCompound(all);
    for (const TopoDS_Shape& piece : pieces)
        builder.Add(all, piece);
    return all;
}

class EndlessFacesTest : public testing::Test {
protected:
    ~EndlessFacesTest() override { layout::Layout::inst().clear(); }

    void import(const std::filesystem::path& file)
    {
        content = ImportAssembled(file);
        for (const auto& assembly : content.assemblies)
            layout::Layout::inst().addAssembly(assembly);
        for (const auto& part : content.parts)
            layout::Layout::inst().addPart(part);
    }
    void importBrep(const TopoDS_Shape& shape)
    {
        BRepTools::Write(shape, (folder / "a.brep").c_str());
        import(folder / "a.brep");
    }
    double sizeOfAll() const
    {
        Bnd_Box box;
        for (const auto& part : content.allParts())
            for (const auto& body : part->getBodies())
                BRepBndLib::Add(body->getShape(), box);
        return box.IsOpen() ? 1e99 : box.CornerMin().Distance(box.CornerMax());
    }

    test::TempFolder folder;
    TopoDS_Shape box = BRepPrimAPI_MakeBox(10, 20, 30).Shape();
    ImportedFile content;
};

TEST_F(EndlessFacesTest, HugeFaceOfABrepFileIsLeftOutWithALine)
{
    importBrep(compoundOf({box, faceOf(1e14)}));

    EXPECT_EQ(content.parts.at(0)->getBodies().size(), 1u);
    EXPECT_LT(sizeOfAll(), 100);
    EXPECT_THAT(content.notes,
                ElementsAre("1 of 7 faces and curves is without end or larger than 1000 km and left out: of a.2"));
}

TEST_F(EndlessFacesTest, FaceAndLineWithoutEndAreLeftOut)
{
    importBrep(compoundOf({box, BRepBuilderAPI_MakeFace(gp_Pln()).Shape(),
                           BRepBuilderAPI_MakeEdge(gp_Lin(gp_Pnt(0, 0, 0), gp_Dir(1, 0, 0))).Shape()}));

    EXPECT_EQ(content.parts.at(0)->getBodies().size(), 1u);
    EXPECT_THAT(content.notes, ElementsAre(HasSubstr("2 of 8 faces and curves are without end")));
}

TEST_F(EndlessFacesTest, OthersOfTheSameBodyStayWithTheirColours)
{
    test::StepDocument document;
    BRepBuilderAPI_Sewing sewing;
    const auto strip = [](double from, double to) { return BRepBuilderAPI_MakeFace(gp_Pln(), from, to, 0, 5).Face(); };
    const TopoDS_Face other = strip(-5, 0);
    for (const TopoDS_Face& face : {strip(0, 5), strip(5, 1e14), other})
        sewing.Add(face);
    sewing.Perform();
    const TopoDS_Shape shell = sewing.SewedShape();
    ASSERT_EQ(shell.ShapeType(), TopAbs_SHELL);
    const TDF_Label sheet = document.addProduct(shell, "sheet");
    document.setSubShapeColor(sheet, sewing.ModifiedSubShape(other), "#0080FF");
    const TDF_Label top = document.addAssembly("cell");
    document.addComponent(top, sheet, test::moved(1, 0, 0), "first");
    document.addComponent(top, sheet, test::moved(2, 0, 0), "second");
    document.write(folder / "a.step");

    import(folder / "a.step");

    const auto parts = content.allParts();
    ASSERT_EQ(parts.size(), 2u);
    for (const auto& part : parts) {
        const layout::Body& body = *part->getBodies().at(0);
        EXPECT_EQ(body.getFaceMap().Extent(), 2);
        const auto colors = geometry::BodyColorTool::GetColorInfo(body.getId()).faceColors;
        ASSERT_EQ(colors.size(), 1u);
        EXPECT_EQ(colors.begin()->second, "#0080FF");
        Bnd_Box painted;
        BRepBndLib::Add(body.getFaceMap()(static_cast<int>(colors.begin()->first)), painted);
        EXPECT_LT(painted.CornerMin().X(), -4) << "the colour is on another face";
    }
    EXPECT_TRUE(parts[0]->getBodies().at(0)->getShape().IsSame(parts[1]->getBodies().at(0)->getShape()));
    EXPECT_LT(sizeOfAll(), 100);
    EXPECT_THAT(content.notes, ElementsAre(HasSubstr("1 of 3 faces and curves is without end")));
}

TEST_F(EndlessFacesTest, PartsAndAssembliesOfNothingElseGo)
{
    test::StepDocument document;
    const TDF_Label lost = document.addAssembly("lost");
    document.addComponent(lost, document.addProduct(faceOf(1e14), "huge"), test::moved(1, 0, 0), "huge");
    const TDF_Label kept = document.addAssembly("kept");
    document.addComponent(kept, document.addProduct(box, "box"), test::moved(2, 0, 0), "box");
    const TDF_Label top = document.addAssembly("cell");
    document.addComponent(top, lost, test::moved(0, 1, 0), "left");
    document.addComponent(top, kept, test::moved(0, 2, 0), "right");
    document.write(folder / "a.step");

    import(folder / "a.step");

    ASSERT_EQ(content.assemblies.size(), 1u);
    ASSERT_EQ(content.assemblies[0]->getParts().size(), 1u);
    EXPECT_EQ(content.assemblies[0]->getParts()[0]->getName(), "right");
    EXPECT_EQ(content.allParts().at(0)->getName(), "box");
}

TEST_F(EndlessFacesTest, FileOfNothingElseIsRefused)
{
    BRepTools::Write(faceOf(1e14), (folder / "a.brep").c_str());

    EXPECT_THAT(
        [&] { ImportFile(folder / "a.brep"); },
        ThrowsMessage<ImportError>((folder / "a.brep").string() +
                                   ": nothing of it can be shown: 1 of 1 faces and curves is without end or larger "
                                   "than 1000 km and left out: of a"));
}

TEST_F(EndlessFacesTest, WhatIsOnlyLargeOrFarAwayStays)
{
    importBrep(compoundOf({faceOf(1e8), box.Moved(test::moved(5e9, 0, 0))}));

    EXPECT_EQ(content.parts.at(0)->getBodies().size(), 2u);
    EXPECT_THAT(content.notes, testing::IsEmpty());
}

} // namespace
} // namespace vrk::station
