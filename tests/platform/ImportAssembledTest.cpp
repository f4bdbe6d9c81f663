// The assemblies that a STEP file has are assemblies of the model.

#include "StepFiles.h"
#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/Import.h"
#include "platform/station/StationFile.h"
#include "support/TempFolder.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vrk::station {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Lines = std::vector<std::string>;

/// "  box": each thing in a line, below what it is in, as deep as it lies; assemblies with a colon behind their names.
void appendTree(const sdf::SdfContainer& thing, const std::string& indent, Lines& lines)
{
    const auto* assembly = dynamic_cast<const layout::Assembly*>(&thing);
    lines.push_back(indent + thing.getName() + (assembly ? ":" : ""));
    if (assembly)
        for (const auto& member : assembly->getParts())
            appendTree(*member, indent + "  ", lines);
}

Lines treeOf(const ImportedFile& content)
{
    Lines lines;
    for (const auto& assembly : content.assemblies)
        appendTree(*assembly, "", lines);
    for (const auto& part : content.parts)
        appendTree(*part, "", lines);
    return lines;
}

rob::Posed worldPoseOf(const sdf::SdfObject& object)
{
    const sdf::SdfObject* owner = sdf::SdfManager::inst().find(object.getParentId());
    return owner ? worldPoseOf(*owner) * object.getPose() : object.getPose();
}

class ImportAssembledTest : public testing::Test {
protected:
    ~ImportAssembledTest() override { layout::Layout::inst().clear(); }

    const ImportedFile& imported()
    {
        document.write(file);
        content = ImportAssembled(file);
        return content;
    }
    void enter()
    {
        for (const auto& assembly : content.assemblies)
            layout::Layout::inst().addAssembly(assembly);
        for (const auto& part : content.parts)
            layout::Layout::inst().addPart(part);
    }
    /// Two clamps of two pins each, and a box, in a cell.
    void makeCell()
    {
        const TDF_Label pins = document.addProduct(BRepPrimAPI_MakeCylinder(2, 50).Shape(), "pin");
        const TDF_Label clamp = document.addAssembly("clamp");
        document.addComponent(clamp, pins, test::moved(100, 0, 0), "left pin");
        document.addComponent(clamp, pins, test::moved(0, 0, 7), "right pin");
        const TDF_Label top = document.addAssembly("cell");
        document.addComponent(top, clamp, test::moved(0, 1000, 0), "NAUO1");
        document.addComponent(top, box, test::moved(5, 5, 5), "NAUO2");
        document.addComponent(top, clamp, test::turnedAndMoved(0, 2000, 0), "NAUO3");
    }

    test::TempFolder folder;
    std::filesystem::path file = folder / "line.step";
    test::StepDocument document;
    TDF_Label box = document.addProduct(BRepPrimAPI_MakeBox(10, 20, 30).Shape(), "box");
    ImportedFile content;
};

TEST_F(ImportAssembledTest, AssembliesLieInEachOtherAsInTheFile)
{
    makeCell();

    EXPECT_THAT(treeOf(imported()), ElementsAre("cell:", "  clamp:", "    left pin", "    right pin", "  box",
                                                "  clamp (2):", "    left pin", "    right pin"));
    EXPECT_THAT(content.notes, IsEmpty());
}

TEST_F(ImportAssembledTest, PlacesAreThoseOfThePartsAlone)
{
    makeCell();
    imported();
    enter();

    const auto flat = ImportFile(file);
    const auto parts = content.allParts();

    ASSERT_EQ(parts.size(), flat.size());
    ASSERT_EQ(parts.size(), 5u);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        EXPECT_EQ(parts[i]->getName(), flat[i]->getName());
        for (const rob::Posd& point : {rob::Posd(), rob::Posd(1, 0, 0), rob::Posd(0, 0, 1)})
            EXPECT_NEAR((worldPoseOf(*parts[i]) * point - flat[i]->getPose() * point).length(), 0, 1e-9) << i;
    }
    EXPECT_NEAR((worldPoseOf(*parts[3]) * rob::Posd() - rob::Posd(0, 2100, 0)).length(), 0, 1e-9);
}

TEST_F(ImportAssembledTest, OneProductIsAPartWithNothingAroundIt)
{
    EXPECT_THAT(treeOf(imported()), ElementsAre("box"));
}

TEST_F(ImportAssembledTest, ThingsSideBySideAreInAnAssemblyOfTheFilesName)
{
    document.addProduct(BRepPrimAPI_MakeCylinder(2, 50).Shape(), "pin");
    document.addComponent(document.addAssembly("clamp"),
                          document.addProduct(BRepPrimAPI_MakeBox(1, 2, 3).Shape(), "jaw"), test::moved(1, 2, 3),
                          "upper jaw");

    EXPECT_THAT(treeOf(imported()), ElementsAre("line:", "  box", "  pin", "  clamp:", "    upper jaw"));
}

TEST_F(ImportAssembledTest, NamelessAssemblyIsCalledAsItsProductOrItsFile)
{
    const TDF_Label inner = document.addAssembly("ASSEMBLY");
    document.addComponent(inner, box, test::moved(1, 0, 0), "crate");
    const TDF_Label top = document.addAssembly("SOLID");
    document.addComponent(top, inner, test::moved(1, 0, 0), "=>[0:1:1:2]");

    EXPECT_THAT(treeOf(imported()), ElementsAre("line:", "  line:", "    crate"));
}

TEST_F(ImportAssembledTest, StationKeepsAssembliesNamesAndPlaces)
{
    makeCell();
    imported();
    enter();
    const Lines before = treeOf(content);
    const rob::Posed place = worldPoseOf(*content.allParts().back());
    SaveStationFile(folder / "cell.station.json");

    LoadStationFile(folder / "cell.station.json");

    const auto found = std::ranges::find_if(layout::Layout::inst().assemblies,
                                            [](const auto& assembly) { return assembly->isStandalone(); });
    ASSERT_NE(found, layout::Layout::inst().assemblies.end());
    Lines after;
    appendTree(**found, "", after);
    EXPECT_EQ(after, before);
    const auto& last = static_cast<const layout::Assembly&>(*(*found)->getParts().back()).getParts().back();
    EXPECT_NEAR((worldPoseOf(*last) * rob::Posd(1, 2, 3) - place * rob::Posd(1, 2, 3)).length(), 0, 1e-9);
    EXPECT_FALSE(static_cast<const layout::Part&>(*last).getBodies().at(0)->getShape().IsNull());
}

TEST_F(ImportAssembledTest, StationOfPartsAloneIsReadAsBefore)
{
    makeCell();
    document.write(file);
    for (const auto& part : ImportFile(file))
        layout::Layout::inst().addPart(part);
    SaveStationFile(folder / "cell.station.json");

    LoadStationFile(folder / "cell.station.json");

    EXPECT_EQ(layout::Layout::inst().parts.size(), 5u);
    EXPECT_THAT(layout::Layout::inst().assemblies, IsEmpty());
}

TEST_F(ImportAssembledTest, AssembliesThatAreTooDeepAreLeftAwayAndTheirPartsStay)
{
    TDF_Label inner = box;
    for (int i = 1; i <= 100; ++i) {
        const TDF_Label outer = document.addAssembly(fmt::format("level {}", 101 - i));
        document.addComponent(outer, inner, test::moved(1, 0, 0), "");
        inner = outer;
    }

    const Lines tree = treeOf(imported());

    EXPECT_LT(tree.size(), 80u);
    EXPECT_GT(tree.size(), 50u);
    EXPECT_THAT(tree.back(), testing::EndsWith(" box"));
    enter();
    EXPECT_NEAR(worldPoseOf(*content.allParts().at(0)).position.x, 100, 1e-9);
}

TEST_F(ImportAssembledTest, MeshIsItsPart)
{
    const auto mesh = folder.write("a.stl", "solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\n"
                                            "vertex 0 2 0\nendloop\nendfacet\nendsolid a\n");
    content = ImportAssembled(mesh);

    EXPECT_THAT(content.assemblies, IsEmpty());
    ASSERT_EQ(content.parts.size(), 1u);
    EXPECT_EQ(content.allParts(), content.parts);
}

} // namespace
} // namespace vrk::station
