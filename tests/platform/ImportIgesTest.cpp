#include "StepFiles.h"
#include "platform/geometry/BodyColorTool.h"
#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/station/Import.h"
#include "platform/station/StationFile.h"
#include "support/TempFolder.h"

#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS_Compound.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

namespace vrk::station {
namespace {

using testing::ThrowsMessage;

class ImportIgesTest : public testing::Test {
protected:
    ~ImportIgesTest() override { layout::Layout::inst().clear(); }

    void import(bool asSolids)
    {
        document.writeIges(file, asSolids);
        content = ImportAssembled(file);
        for (const auto& assembly : content.assemblies)
            layout::Layout::inst().addAssembly(assembly);
        for (const auto& part : content.parts)
            layout::Layout::inst().addPart(part);
    }
    double widthOf(const layout::Body& body) const
    {
        Bnd_Box bounds;
        BRepBndLib::Add(body.getShape(), bounds);
        return bounds.CornerMax().X() - bounds.CornerMin().X();
    }
    void expectRefused(const std::filesystem::path& faulty, const std::string& cause) const
    {
        EXPECT_THAT([&] { ImportFile(faulty); }, ThrowsMessage<ImportError>(faulty.string() + ": " + cause));
    }

    test::TempFolder folder;
    std::filesystem::path file = folder / "plate.igs";
    test::StepDocument document;
    TopoDS_Shape box = BRepPrimAPI_MakeBox(10, 20, 30).Shape();
    ImportedFile content;
};

TEST_F(ImportIgesTest, SolidIsABodyOfItsNameInMillimetres)
{
    document.addProduct(box, "bracket");

    import(true);

    ASSERT_EQ(content.allParts().size(), 1u);
    const auto part = content.allParts()[0];
    EXPECT_EQ(part->getName(), "bracket");
    ASSERT_EQ(part->getBodies().size(), 1u);
    EXPECT_EQ(part->getBodies()[0]->getFaceMap().Extent(), 6);
    EXPECT_NEAR(widthOf(*part->getBodies()[0]), 10, 1e-3);
    EXPECT_THAT(content.notes, testing::IsEmpty());
}

TEST_F(ImportIgesTest, LooseFacesAreSewnToShellsAndKeepTheirColours)
{
    const TDF_Label product = document.addProduct(box, "bracket");
    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(box, TopAbs_FACE, faces);
    document.setSubShapeColor(product, faces(2), "#0080FF");

    import(false);

    ASSERT_EQ(content.allParts().size(), 1u);
    const auto part = content.allParts()[0];
    ASSERT_EQ(part->getBodies().size(), 1u);
    const layout::Body& body = *part->getBodies()[0];
    EXPECT_EQ(body.getShape().ShapeType(), TopAbs_SHELL);
    EXPECT_TRUE(BRep_Tool::IsClosed(body.getShape()));
    EXPECT_EQ(body.getFaceMap().Extent(), 6);
    const auto colors = geometry::BodyColorTool::GetColorInfo(body.getId()).faceColors;
    ASSERT_EQ(colors.size(), 1u);
    EXPECT_EQ(colors.begin()->second, "#0080FF");
}

TEST_F(ImportIgesTest, ColourOfAProductIsThatOfItsBody)
{
    document.setColor(document.addProduct(box, "bracket"), "#ED1C24");

    import(false);

    EXPECT_EQ(geometry::BodyColorTool::GetBodyColor(content.allParts().at(0)->getBodies().at(0)->getId()), "#ED1C24");
}

TEST_F(ImportIgesTest, LengthsInInchesAreConverted)
{
    document.addProduct(box, "bracket");
    document.writeIges(file, true);
    std::string text = test::TempFolder::Read(file);
    const std::size_t unit = text.find(",2,2HMM,");
    ASSERT_NE(unit, std::string::npos);
    text.replace(unit, 8, ",1,2HIN,");
    folder.write("plate.igs", text);

    const auto parts = ImportFile(file);

    EXPECT_NEAR(widthOf(*parts.at(0)->getBodies().at(0)), 254, 1e-2);
}

TEST_F(ImportIgesTest, SeveralThingsAreInAnAssemblyOfTheFilesName)
{
    document.addProduct(box, "bracket");
    document.addProduct(BRepPrimAPI_MakeCylinder(2, 50).Shape(), "pin");

    import(true);

    ASSERT_EQ(content.assemblies.size(), 1u);
    EXPECT_EQ(content.assemblies[0]->getName(), "plate");
    EXPECT_EQ(content.allParts().size(), 2u);
}

TEST_F(ImportIgesTest, CurvesAreBodies)
{
    document.addProduct(BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(10, 0, 0)).Shape(), "line");

    import(true);

    ASSERT_EQ(content.allParts().size(), 1u);
    EXPECT_EQ(content.allParts()[0]->getName(), "plate");
    EXPECT_EQ(content.allParts()[0]->getBodies().at(0)->getFaceMap().Extent(), 0);
}

TEST_F(ImportIgesTest, StationKeepsIt)
{
    document.addProduct(box, "bracket");
    import(false);
    SaveStationFile(folder / "cell.station.json");

    LoadStationFile(folder / "cell.station.json");

    ASSERT_EQ(layout::Layout::inst().parts.size(), 1u);
    EXPECT_EQ(layout::Layout::inst().parts[0]->getBodies().at(0)->getFaceMap().Extent(), 6);
}

TEST_F(ImportIgesTest, EndingMayBeInAnyCase)
{
    document.addProduct(box, "bracket");
    for (const char* name : {"a.IGS", "a.iges", "a.IGES"}) {
        document.writeIges(folder / name, true);
        EXPECT_EQ(ImportFile(folder / name).size(), 1u) << name;
    }
}

TEST_F(ImportIgesTest, OtherContentAndFilesThatAreCutShortAreRefused)
{
    expectRefused(folder.write("a.igs", "solid cube\nendsolid\n"), "not an IGES file");
    document.addProduct(box, "bracket");
    document.writeIges(file, true);
    const std::string text = test::TempFolder::Read(file);
    for (const std::size_t length : {text.size() / 2, text.size() - 90})
        expectRefused(folder.write("short.igs", std::string_view(text).substr(0, length)),
                      "the IGES file is cut short");
}

} // namespace
} // namespace vrk::station
