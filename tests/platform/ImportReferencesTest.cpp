// STEP files that refer to other files, and what of a file is lost on the way.

#include "StepFiles.h"
#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/station/Import.h"
#include "platform/station/StationFile.h"
#include "support/TempFolder.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include <sys/stat.h>

namespace vrk::station {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;

class ImportReferencesTest : public testing::Test {
protected:
    ~ImportReferencesTest() override { layout::Layout::inst().clear(); }

    /// A box and two pins in a cell, in files of their own: "cell.step", "part_box.stp" and "part_pin.stp".
    ImportReferencesTest()
    {
        const TDF_Label pin = document.addProduct(BRepPrimAPI_MakeCylinder(2, 50).Shape(), "pin");
        document.addComponent(top, document.addProduct(BRepPrimAPI_MakeBox(10, 20, 30).Shape(), "box"),
                              test::moved(100, 0, 0), "the box");
        document.addComponent(top, pin, test::moved(200, 0, 0), "left pin");
        document.addComponent(top, pin, test::turnedAndMoved(300, 0, 0), "right pin");
    }
    void expectNotes(const std::vector<std::string>& parts, const std::vector<std::string>& notes) const
    {
        const ImportedFile content = ImportAssembled(file);
        std::vector<std::string> names;
        for (const auto& part : content.allParts())
            names.push_back(part->getName());
        EXPECT_EQ(names, parts);
        EXPECT_EQ(content.notes, notes);
    }
    /// Replaces what matches in a file.
    void change(const std::string& name, const std::string& pattern, const std::string& by) const
    {
        const std::string before = test::TempFolder::Read(folder / name);
        const std::string after = std::regex_replace(before, std::regex(pattern), by);
        ASSERT_NE(after, before) << pattern;
        folder.write(name, after);
    }
    void remove(const std::string& name) const { std::filesystem::remove(folder / name); }

    test::TempFolder folder;
    std::filesystem::path file = folder / "cell.step";
    test::StepDocument document;
    TDF_Label top = document.addAssembly("cell");
};

TEST_F(ImportReferencesTest, PartsInOtherFilesAreReadAndStandAtTheirPlaces)
{
    document.write(folder / "whole.step");
    document.writeInPieces(file);

    expectNotes({"the box", "left pin", "right pin"}, {});

    const auto whole = ImportFile(folder / "whole.step"), pieces = ImportFile(file);
    ASSERT_EQ(pieces.size(), whole.size());
    for (std::size_t i = 0; i < whole.size(); ++i) {
        EXPECT_NEAR((pieces[i]->getPose() * rob::Posd(1, 2, 3) - whole[i]->getPose() * rob::Posd(1, 2, 3)).length(), 0,
                    1e-6);
        EXPECT_EQ(pieces[i]->getBodies().at(0)->getFaceMap().Extent(),
                  whole[i]->getBodies().at(0)->getFaceMap().Extent());
    }
    EXPECT_EQ(pieces[1]->getBodies().at(0)->getGeometryUri(), pieces[2]->getBodies().at(0)->getGeometryUri());
}

TEST_F(ImportReferencesTest, MissingFilesAreNamedAndTheRestIsThere)
{
    document.writeInPieces(file);
    remove("part_pin.stp");

    expectNotes({"the box"}, {"2 of 3 parts refer to a file that is not there: part_pin.stp"});
}

TEST_F(ImportReferencesTest, FileOfWhichNothingIsThereIsRefusedWithTheNamesOfAll)
{
    document.writeInPieces(file);
    remove("part_pin.stp");
    remove("part_box.stp");

    EXPECT_THAT([&] { ImportAssembled(file); },
                ThrowsMessage<ImportError>(file.string() +
                                           ": nothing of it can be shown: 3 of 3 parts refer to files that "
                                           "are not there: part_box.stp, part_pin.stp"));
}

TEST_F(ImportReferencesTest, OfManyMissingFilesTheFirstAreNamed)
{
    for (int i = 1; i <= 20; ++i)
        document.addComponent(top, document.addProduct(BRepPrimAPI_MakeBox(1, 2, i).Shape(), fmt::format("x{:02}", i)),
                              test::moved(0, 10 * i, 0), "");
    document.writeInPieces(file);
    for (int i = 1; i <= 20; ++i)
        remove(fmt::format("part_x{:02}.stp", i));

    expectNotes({"the box", "left pin", "right pin"},
                {"20 of 23 parts refer to files that are not there: part_x01.stp, part_x02.stp, part_x03.stp, "
                 "part_x04.stp, part_x05.stp, part_x06.stp and 14 more"});
}

TEST_F(ImportReferencesTest, FilesThatReferBackEnd)
{
    document.writeInPieces(file);
    folder.write("part_box.stp", test::TempFolder::Read(file));

    expectNotes({"left pin", "right pin", "left pin", "right pin"},
                {"1 of 5 parts refers to a file that cannot be read: part_box.stp: it refers back to itself"});

    remove("part_box.stp");
    std::filesystem::create_symlink("cell.step", folder / "part_box.stp");
    expectNotes({"left pin", "right pin"},
                {"1 of 3 parts refers to a file that cannot be read: part_box.stp: it refers back to itself"});
}

TEST_F(ImportReferencesTest, PipesFoldersAndDamagedFilesAreTold)
{
    document.writeInPieces(file);
    remove("part_box.stp");
    ASSERT_EQ(mkfifo((folder / "part_box.stp").c_str(), 0600), 0);
    expectNotes({"left pin", "right pin"},
                {"1 of 3 parts refers to a file that cannot be read: part_box.stp: not a file "
                 "but a pipe or a device"});

    remove("part_box.stp");
    std::filesystem::create_directory(folder / "part_box.stp");
    expectNotes({"left pin", "right pin"},
                {"1 of 3 parts refers to a file that cannot be read: part_box.stp: it is a folder"});

    remove("part_box.stp");
    folder.write("part_box.stp", "solid cube\nendsolid\n");
    const std::string pins = test::TempFolder::Read(folder / "part_pin.stp");
    folder.write("part_pin.stp", std::string_view(pins).substr(0, pins.size() / 2));
    EXPECT_THAT([&] { ImportAssembled(file); },
                ThrowsMessage<ImportError>(testing::AllOf(HasSubstr("part_box.stp: not a STEP file"),
                                                          HasSubstr("part_pin.stp: the STEP file is cut short"))));
}

TEST_F(ImportReferencesTest, PlacesOfOtherMachinesAreLookedForBesideTheFile)
{
    document.writeInPieces(file);
    change("cell.step", "'part_box.stp'", R"('C:\\projects\\cell\\part_box.stp')");
    change("cell.step", "'part_pin.stp'", "'/home/somebody/part_pin.stp'");
    expectNotes({"the box", "left pin", "right pin"}, {});

    std::filesystem::create_directory(folder / "parts");
    std::filesystem::rename(folder / "part_box.stp", folder / "parts/part_box.stp");
    change("cell.step", "C:[^']*", R"(parts\\part_box.stp)");
    expectNotes({"the box", "left pin", "right pin"}, {});
}

TEST_F(ImportReferencesTest, FilesMayReferToFilesThatRefer)
{
    document.writeInPieces(file);
    folder.write("line/cells/cell.step", test::TempFolder::Read(file));
    for (const char* part : {"part_box.stp", "part_pin.stp"})
        std::filesystem::rename(folder / part, folder / "line/cells" / part);
    test::StepDocument line;
    const TDF_Label all = line.addAssembly("line");
    const TDF_Label cell = line.addProduct(BRepPrimAPI_MakeBox(1, 1, 1).Shape(), "cell");
    line.addComponent(all, cell, test::moved(0, 1000, 0), "first cell");
    line.addComponent(all, cell, test::moved(0, 2000, 0), "second cell");
    file = folder / "line/line.step";
    line.writeInPieces(file);
    change("line/line.step", "part_cell.stp", "cells/cell.step");

    expectNotes({"the box", "left pin", "right pin", "the box", "left pin", "right pin"}, {});
    const ImportedFile content = ImportAssembled(file);
    ASSERT_EQ(content.assemblies.size(), 1u);
    EXPECT_EQ(content.assemblies[0]->getParts().at(1)->getName(), "second cell");
    EXPECT_NEAR(content.assemblies[0]->getParts().at(1)->getPose().position.y, 2000, 1e-6);

    remove("line/cells/part_pin.stp");
    expectNotes({"the box", "the box"}, {"4 of 6 parts refer to a file that is not there: part_pin.stp"});
}

TEST_F(ImportReferencesTest, StationOfSeveralFilesIsReadAgain)
{
    document.writeInPieces(file);
    for (const auto& assembly : ImportAssembled(file).assemblies)
        layout::Layout::inst().addAssembly(assembly);
    SaveStationFile(folder / "cell.station.json");

    LoadStationFile(folder / "cell.station.json");

    ASSERT_EQ(layout::Layout::inst().parts.size(), 3u);
    for (const auto& part : layout::Layout::inst().parts)
        EXPECT_GE(part->getBodies().at(0)->getFaceMap().Extent(), 3) << part->getName();
}

TEST_F(ImportReferencesTest, ComponentsWithoutAPlaceAreTold)
{
    document.write(file);
    change("cell.step", R"(#\d+ = CONTEXT_DEPENDENT_SHAPE_REPRESENTATION\([^;]*;)", "");

    EXPECT_THAT([&] { ImportAssembled(file); },
                ThrowsMessage<ImportError>(HasSubstr("3 of 3 components have no place")));
}

// What is lost

TEST_F(ImportReferencesTest, FacesThatCannotBeMadeAreTold)
{
    document.write(file);
    change("cell.step", R"((CYLINDRICAL_SURFACE\('',#\d+,)2\.\))", "$01-2.)");
    const std::string text = test::TempFolder::Read(file);
    std::smatch surface, face;
    ASSERT_TRUE(std::regex_search(text, surface, std::regex(R"((#\d+) = CYLINDRICAL_SURFACE)")));
    ASSERT_TRUE(std::regex_search(text, face,
                                  std::regex("(#\\d+) = ADVANCED_FACE\\('',\\([^)]*\\)," + surface[1].str() + ",")));

    expectNotes({"the box", "left pin", "right pin"}, {"1 of 9 faces could not be transferred: " + face[1].str()});
}

TEST_F(ImportReferencesTest, RootsThatCannotBeMadeAreTold)
{
    document.addProduct(BRepPrimAPI_MakeCylinder(7, 50).Shape(), "lost");
    document.write(file);
    // All of its faces: where no plane has an axis, and the cylinder no radius.
    change("cell.step", R"((CYLINDRICAL_SURFACE\('',#\d+,)7\.\))", "$01-7.)");
    const std::string text = test::TempFolder::Read(file);
    const std::size_t lost = text.find("PRODUCT('lost'");
    ASSERT_NE(lost, std::string::npos);
    folder.write("cell.step",
                 text.substr(0, lost) + std::regex_replace(text.substr(lost), std::regex(R"(= PLANE\('',(#\d+)\);)"),
                                                           "= CYLINDRICAL_SURFACE('',$1,-1.);"));

    const ImportedFile content = ImportAssembled(file);

    EXPECT_EQ(content.allParts().size(), 3u);
    ASSERT_EQ(content.notes.size(), 2u);
    EXPECT_THAT(content.notes[0], testing::MatchesRegex("1 of 2 roots could not be transferred: #[0-9]+"));
    EXPECT_THAT(content.notes[1], testing::MatchesRegex("3 of 12 faces could not be transferred: #[0-9]+, #.*, #.*"));
}

TEST_F(ImportReferencesTest, AnnotationsAreNoDamageAndGiveNoLine)
{
    document.write(file);
    // A text, in a font that is not to be found, with a leader, in a drawing of the model; some of it beyond what is read.
    change("cell.step", "ENDSEC;\nEND-ISO", R"(#90001 = CARTESIAN_POINT('',(0.,0.,0.));
#90002 = AXIS2_PLACEMENT_3D('',#90001,$,$);
#90003 = DRAUGHTING_PRE_DEFINED_TEXT_FONT('ISO 3098');
#90004 = TEXT_LITERAL('M6 - 6H','#90001','baseline left',.RIGHT.,#90003);
#90005 = TEXT_LITERAL('deep',#90002,'baseline left',.RIGHT.,#99999);
#90006 = POLYLINE('leader',(#90001,#90001));
#90007 = GEOMETRIC_CURVE_SET('leader',(#90006));
#90008 = DRAUGHTING_ANNOTATION_OCCURRENCE('note',(),#90004);
#90009 = ANNOTATION_TEXT_OCCURRENCE('note',(#99999),#90005);
#90010 = DRAUGHTING_CALLOUT('callout',(#90009));
#90011 = ( GEOMETRIC_REPRESENTATION_CONTEXT(3) PARAMETRIC_REPRESENTATION_CONTEXT() REPRESENTATION_CONTEXT('','') );
#90012 = DRAUGHTING_MODEL('notes',(#90010),#90011);
ENDSEC;
END-ISO)");

    expectNotes({"the box", "left pin", "right pin"}, {});
}

} // namespace
} // namespace vrk::station
