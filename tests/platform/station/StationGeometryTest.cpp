#include "platform/station/StationFile.h"

#include "../StepFiles.h"
#include "CacheFolder.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/CadReader.h"
#include "platform/station/ImportCloud.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <TopoDS_Compound.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

namespace vrk::station {
namespace {

using layout::Body;
using layout::Layout;
using layout::Part;
using testing::HasSubstr;
using testing::Not;
using testing::StrEq;
using testing::ThrowsMessage;

class StationGeometry : public testing::Test {
protected:
    ~StationGeometry() override { Layout::inst().clear(); }

    static std::shared_ptr<Body> addBody(const std::string& uri, const std::string& type,
                                         const TopoDS_Shape& shape = {})
    {
        const auto part = std::make_shared<Part>(sdf::SdfManager::inst().generateId(), "part");
        const auto body = part->addBody("body");
        body->setGeometry(uri, type);
        body->setShape(shape);
        Layout::inst().addPart(part);
        return body;
    }
    std::string save(const std::string& name = "cell.station.json")
    {
        SaveStationFile(folder / name);
        return test::TempFolder::Read(folder / name);
    }
    std::shared_ptr<Body> loadBody(const std::string& name = "cell.station.json")
    {
        LoadStationFile(folder / name);
        return Layout::inst().parts.at(0)->getBodies().at(0);
    }
    static std::string binaryStl() { return std::string(80, ' ') + std::string("\1\0\0\0", 4) + std::string(50, '\0'); }

    test::TempFolder folder;
    test::CacheFolder cache;
};

TEST_F(StationGeometry, FilesInTheStationsFolderAreNamedRelatively)
{
    addBody(folder.write("parts/a.stl", binaryStl()).string(), "stl");

    EXPECT_THAT(save(), HasSubstr("\"uri\": \"parts/a.stl\""));
    EXPECT_EQ(loadBody()->getGeometryUri(), (folder / "parts/a.stl").string());
}

TEST_F(StationGeometry, FilesBesideTheStationsFolderAreNamedRelatively)
{
    addBody(folder.write("parts/a.stl", binaryStl()).string(), "stl");
    std::filesystem::create_directories(folder / "cells");

    EXPECT_THAT(save("cells/cell.station.json"), HasSubstr("\"uri\": \"../parts/a.stl\""));
    EXPECT_EQ(loadBody("cells/cell.station.json")->getGeometryUri(), (folder / "parts/a.stl").string());
}

TEST_F(StationGeometry, StationMovesWithItsFolder)
{
    addBody(folder.write("one/parts/a.stl", binaryStl()).string(), "stl");
    save("one/cell.station.json");

    std::filesystem::rename(folder / "one", folder / "two");

    EXPECT_EQ(loadBody("two/cell.station.json")->getGeometryUri(), (folder / "two/parts/a.stl").string());
}

TEST_F(StationGeometry, UriWithASchemeStaysAsItIs)
{
    addBody("resource://meshes/a.stl", "stl");

    EXPECT_THAT(save(), HasSubstr("\"uri\": \"resource://meshes/a.stl\""));
    EXPECT_EQ(loadBody()->getGeometryUri(), "resource://meshes/a.stl");
}

TEST_F(StationGeometry, MissingMeshIsNotSaved)
{
    addBody("/no/such/a.stl", "stl");

    EXPECT_THAT([&] { save(); },
                ThrowsMessage<StationFileError>((folder / "cell.station.json").string() +
                                                ": /parts/0/bodies/0/geometry/uri: expected a file that is there, not "
                                                "'/no/such/a.stl'"));
    EXPECT_FALSE(std::filesystem::exists(folder / "cell.station.json"));
}

TEST_F(StationGeometry, DamagedMeshIsRefusedWithItsCause)
{
    const std::filesystem::path mesh = folder.write("a.stl", binaryStl());
    addBody(mesh.string(), "stl");
    save();
    folder.write("a.stl", "no mesh");

    EXPECT_THAT([&] { loadBody(); }, ThrowsMessage<StationFileError>(
                                         (folder / "cell.station.json").string() +
                                         ": /parts/0/bodies/0/geometry/uri: expected geometry that can be read: " +
                                         mesh.string() + ": neither a binary nor an ascii STL file"));
}

TEST_F(StationGeometry, ShapeOfAStepFileIsFoundByItsName)
{
    test::StepDocument document;
    document.addProduct(BRepPrimAPI_MakeBox(10, 20, 30).Shape(), "box");
    document.addProduct(BRepPrimAPI_MakeCylinder(5, 8).Shape(), "wheel");
    document.write(folder / "parts.step");
    for (const auto& part : ImportFile(folder / "parts.step"))
        Layout::inst().addPart(part);

    const std::string text = save();
    EXPECT_THAT(text, HasSubstr("\"uri\": \"parts.step#wheel\""));
    loadBody();

    ASSERT_EQ(Layout::inst().parts.size(), 2u);
    EXPECT_EQ(Layout::inst().parts[0]->getBodies()[0]->getFaceMap().Extent(), 6);
    EXPECT_EQ(Layout::inst().parts[1]->getBodies()[0]->getFaceMap().Extent(), 3);
    EXPECT_EQ(save("again.station.json"), text);
}

TEST_F(StationGeometry, OneRunOfTheReaderServesAllBodiesOfAFileAndIsGivenUpWithTheStation)
{
    TopoDS_Compound both;
    const BRep_Builder builder;
    builder.MakeCompound(both);
    builder.Add(both, BRepPrimAPI_MakeBox(1, 2, 3).Shape());
    builder.Add(both, BRepPrimAPI_MakeBox(4, 5, 6).Shape());
    BRepTools::Write(both, (folder / "both.brep").c_str());
    addBody((folder / "both.brep").string() + "#1", "brep");
    addBody((folder / "both.brep").string() + "#2", "brep");
    save();
    CadReaderSettings settings;
    const auto use = [&](const std::string& line) {
        settings.program = folder.write("reader.sh", "#!/bin/sh\n" + line + "\n");
        std::filesystem::permissions(settings.program, std::filesystem::perms::owner_all);
        SetCadReaderSettings(settings);
    };
    use("echo run >>'" + (folder / "runs").string() + "'; exec '" + GetCadReaderPath().string() + "' \"$@\"");
    loadBody();
    EXPECT_EQ(test::TempFolder::Read(folder / "runs"), "run\n");

    struct GivenUp {};
    int calls = 0;
    use("exec sleep 100");
    const auto giveUp = [&](std::string_view, double) {
        if (++calls == 5)
            throw GivenUp();
    };
    EXPECT_THROW(ReadStationFile(folder / "cell.station.json", giveUp), GivenUp);
    SetCadReaderSettings({});
}

TEST_F(StationGeometry, ShapeOfAnotherNameIsRefused)
{
    BRepTools::Write(BRepPrimAPI_MakeBox(1, 2, 3).Shape(), (folder / "box.brep").c_str());
    addBody((folder / "box.brep").string() + "#7", "brep");
    save();

    EXPECT_THAT([&] { loadBody(); },
                ThrowsMessage<StationFileError>((folder / "cell.station.json").string() +
                                                ": /parts/0/bodies/0/geometry/uri: expected the name of a shape in its "
                                                "file, not 'box.brep#7'"));
}

TEST_F(StationGeometry, BodiesOfOneGeometryShareItsShape)
{
    BRepTools::Write(BRepPrimAPI_MakeBox(1, 2, 3).Shape(), (folder / "box.brep").c_str());
    addBody((folder / "box.brep").string() + "#1", "brep");
    addBody((folder / "box.brep").string() + "#1", "brep");
    save();

    loadBody();

    const auto& parts = Layout::inst().parts;
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_TRUE(parts[0]->getBodies()[0]->getShape().IsSame(parts[1]->getBodies()[0]->getShape()));
}

TEST_F(StationGeometry, ShapeMadeInMemoryIsWrittenBesideTheStation)
{
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(10, 20, 30).Shape();
    addBody("demo#box 1", "brep", box);
    addBody("demo#box 1", "brep", box);

    const std::string text = save();
    EXPECT_THAT(text, HasSubstr("\"uri\": \"cell.files/box_1-"));
    const auto files = std::filesystem::directory_iterator(folder / "cell.files");
    EXPECT_EQ(std::distance(begin(files), end(files)), 1);
    const auto body = loadBody();

    EXPECT_EQ(body->getFaceMap().Extent(), 6);
    EXPECT_EQ(save("cell.station.json"), text);
}

TEST_F(StationGeometry, ShapeOfSeveralSolidsComesBackAsOne)
{
    TopoDS_Compound both;
    const BRep_Builder builder;
    builder.MakeCompound(both);
    builder.Add(both, BRepPrimAPI_MakeBox(10, 20, 30).Shape());
    builder.Add(both, BRepPrimAPI_MakeCylinder(5, 8).Shape());
    addBody("demo#both", "brep", both);
    save();

    const auto body = loadBody();

    EXPECT_EQ(body->getShape().ShapeType(), TopAbs_COMPOUND);
    EXPECT_EQ(body->getFaceMap().Extent(), 9);
}

TEST_F(StationGeometry, ChangedShapeGetsAnotherFile)
{
    addBody("demo#box", "brep", BRepPrimAPI_MakeBox(10, 20, 30).Shape());
    const std::string before = save();
    Layout::inst().clear();
    addBody("demo#box", "brep", BRepPrimAPI_MakeBox(10, 20, 31).Shape());

    const std::string after = save();

    EXPECT_NE(before.find("box-"), std::string::npos);
    EXPECT_NE(before.substr(before.find("box-"), 20), after.substr(after.find("box-"), 20));
}

TEST_F(StationGeometry, ShapeThatTheFileOfItsBodyDoesNotHoldIsWrittenBesideTheStation)
{
    BRepTools::Write(BRepPrimAPI_MakeBox(10, 20, 30).Shape(), (folder / "box.brep").c_str());
    const std::string uri = (folder / "box.brep").string() + "#1";
    addBody(uri, "brep", ImportShape(uri))->setShape(BRepPrimAPI_MakeCylinder(5, 10).Shape());
    addBody(uri, "brep", ImportShape(uri));

    save();
    Layout::inst().clear();
    LoadStationFile(folder / "cell.station.json");

    EXPECT_EQ(Layout::inst().parts.at(0)->getBodies().at(0)->getFaceMap().Extent(), 3);
    EXPECT_EQ(Layout::inst().parts.at(1)->getBodies().at(0)->getFaceMap().Extent(), 6);
    EXPECT_EQ(Layout::inst().parts.at(1)->getBodies().at(0)->getGeometryUri(), uri);
}

TEST_F(StationGeometry, FileThatChangedSinceItWasReadIsReadAnew)
{
    const std::filesystem::path file = folder / "part.brep";
    BRepTools::Write(BRepPrimAPI_MakeBox(10, 20, 30).Shape(), file.c_str());
    addBody(file.string() + "#1", "brep", ImportShape(file.string() + "#1"));
    save();
    const auto old = Layout::inst().parts.at(0); // as a host keeps what can be brought back
    BRepTools::Write(BRepPrimAPI_MakeCylinder(5, 10).Shape(), file.c_str());

    Layout::inst().clear();
    const std::shared_ptr<Body> body = loadBody();

    EXPECT_EQ(body->getFaceMap().Extent(), 3);
    EXPECT_NE(body->getGeometryUri(), old->getBodies().at(0)->getGeometryUri());
}

TEST_F(StationGeometry, MeshInTheCacheIsCopiedBesideTheStation)
{
    const auto parts = ImportFile(folder.write("part.Stl", binaryStl())); // kept in the cache under another ending
    Layout::inst().addPart(parts[0]);
    const std::string cached = parts[0]->getBodies()[0]->getGeometryUri();
    ASSERT_THAT(cached, HasSubstr(cache.path().string()));

    const std::string text = save();
    EXPECT_THAT(text, HasSubstr("\"uri\": \"cell.files/part-"));
    std::filesystem::remove_all(cache.path());
    const auto body = loadBody();

    EXPECT_EQ(body->getGeometryUri(), (folder / "cell.files" / std::filesystem::path(cached).filename()).string());
    EXPECT_EQ(test::TempFolder::Read(body->getGeometryUri()).size(), 134u);
    EXPECT_EQ(save("cell.station.json"), text);
}

TEST_F(StationGeometry, ColourOfAFaceThatIsNotThereIsRefusedAndNotWritten)
{
    const auto body = addBody("", "brep", BRepPrimAPI_MakeBox(1, 2, 3).Shape());
    body->setFaceColor(6, "#ED1C24");
    body->setFaceColor(7, "#10C279");
    const std::string text = save();
    EXPECT_THAT(text, HasSubstr("\"6\": \"#ED1C24\""));
    EXPECT_THAT(text, Not(HasSubstr("#10C279")));

    folder.write("cell.station.json", std::regex_replace(text, std::regex("\"6\":"), "\"7\":"));

    EXPECT_THAT([&] { loadBody(); }, ThrowsMessage<StationFileError>(
                                         (folder / "cell.station.json").string() +
                                         ": /parts/0/bodies/0/face_colors/7: expected one of the 6 faces as the key"));
}

TEST_F(StationGeometry, MeshOfAnotherFormatIsKeptByItsOwnFileAndUnit)
{
    const auto parts =
        ImportFile(folder.write("scan.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\n"
                                            "property float y\nproperty float z\nelement face 1\nproperty "
                                            "list uchar int vertex_indices\nend_header\n0 0 0\n1 0 0\n0 1 "
                                            "0\n3 0 1 2\n"),
                   {}, LengthUnit::Metre);
    Layout::inst().addPart(parts[0]);
    const std::string uri = parts[0]->getBodies()[0]->getGeometryUri();

    const std::string text = save();
    EXPECT_THAT(text, HasSubstr("\"uri\": \"scan.ply\""));
    EXPECT_THAT(text, HasSubstr("\"file_type\": \"mesh\""));
    EXPECT_THAT(text, HasSubstr("\"unit\": \"m\""));
    EXPECT_THAT(text, HasSubstr("\"version\": 5,"));
    std::filesystem::remove_all(cache.path());
    const auto body = loadBody();

    EXPECT_EQ(body->getGeometryUri(), uri);
    EXPECT_TRUE(std::filesystem::exists(uri)) << "made anew";
    EXPECT_EQ(body->getSourceUnit(), LengthUnit::Metre);
    EXPECT_EQ(save("cell.station.json"), text);
}

TEST_F(StationGeometry, FileOfAnotherKindThanToldIsRefusedByItsPlace)
{
    addBody(folder.write("a.stl", binaryStl()).string(), "stl");
    const std::string text = save();
    const auto expectRefused = [&](const std::string& bytes, const std::string& name, const std::string& type,
                                   const std::string& what) {
        folder.write(name, bytes);
        std::string changed = std::regex_replace(text, std::regex("a\\.stl"), name);
        changed = std::regex_replace(changed, std::regex("\"stl\""), '"' + type + '"');
        folder.write("cell.station.json", changed);
        EXPECT_THAT([&] { loadBody(); }, ThrowsMessage<StationFileError>((folder / "cell.station.json").string() +
                                                                         ": /parts/0/bodies/0/geometry/uri: expected " +
                                                                         what + ", not '" + name + "'"));
    };
    std::ostringstream box;
    BRepTools::Write(BRepPrimAPI_MakeBox(1, 2, 3).Shape(), box);

    expectRefused(box.str(), "box.brep", "stl", "an STL file");
    expectRefused("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", "a.obj", "stl", "an STL file");
    expectRefused(binaryStl(), "a.stl", "mesh", "a mesh of another format than STL");
}

TEST_F(StationGeometry, MeshWhoseFileIsGoneIsKeptFromTheCache)
{
    const std::filesystem::path file = folder.write("part.stl", binaryStl());
    const auto parts = ImportFile(file, {}, LengthUnit::Inch);
    Layout::inst().addPart(parts[0]);
    std::filesystem::remove(file);

    const std::string text = save();
    std::filesystem::remove_all(cache.path());
    const auto body = loadBody();

    EXPECT_THAT(text, Not(HasSubstr("\"unit\"")));
    EXPECT_THAT(body->getGeometryUri(), HasSubstr("cell.files/part-"));
}

TEST_F(StationGeometry, CloudInAnotherUnitLiesWhereItDidWhenItIsReadAgain)
{
    const auto cloud = ImportPointCloud(folder.write("scan.xyz", "1 2 3\n"), {}, LengthUnit::Metre);
    Layout::inst().addPointCloud(cloud);
    const std::string text = save();
    EXPECT_THAT(text, HasSubstr("\"unit\": \"m\""));
    EXPECT_THAT(text, HasSubstr("\"version\": 5,"));

    LoadStationFile(folder / "cell.station.json");

    const layout::PointCloud& loaded = *Layout::inst().pointclouds.at(0);
    EXPECT_EQ(loaded.getPoints().at(0), rob::Posf(1000, 2000, 3000));
    EXPECT_EQ(loaded.getFileUnit(), LengthUnit::Metre);
    EXPECT_EQ(save("again.station.json"), text);
}

TEST_F(StationGeometry, PointCloudIsReadFromItsFile)
{
    const std::filesystem::path file = folder.write("scan.xyz", "1 2 3 0 0 1\n4 5 6 0 1 0\n");
    const auto cloud = ImportPointCloud(file);
    cloud->setPose(rob::Posed(rob::Posd(7, 7, 7)));
    Layout::inst().addPointCloud(cloud);
    const std::string text = save();
    EXPECT_THAT(text, HasSubstr("\"uri\": \"scan.xyz\""));

    LoadStationFile(folder / "cell.station.json");

    ASSERT_EQ(Layout::inst().pointclouds.size(), 1u);
    const layout::PointCloud& loaded = *Layout::inst().pointclouds[0];
    EXPECT_EQ(loaded.getId(), cloud->getId());
    EXPECT_EQ(loaded.getPoints(), cloud->getPoints());
    EXPECT_EQ(loaded.getNormals().size(), 2u);
    EXPECT_EQ(loaded.getPose(), cloud->getPose());
    EXPECT_EQ(save("again.station.json"), text);
}

TEST_F(StationGeometry, HiddenPointsAreSavedWithTheCloud)
{
    const auto cloud = ImportPointCloud(folder.write("scan.xyz", "1 2 3\n4 5 6\n7 8 9\n1 1 1\n2 2 2\n"));
    Layout::inst().addPointCloud(cloud);
    EXPECT_THAT(save(), HasSubstr("\"version\": 1,")) << "older readers open what has none";
    cloud->setHiddenPoints(layout::PointSet(std::vector<std::uint32_t>{4, 0, 1, 2}));
    const std::string text = save();
    EXPECT_THAT(text, HasSubstr("\"version\": 3,"));
    EXPECT_THAT(text, HasSubstr("\"hidden_points\": \"0-2,4\""));

    LoadStationFile(folder / "cell.station.json");

    const auto& hidden = Layout::inst().pointclouds.at(0)->getHiddenPoints();
    ASSERT_NE(hidden, nullptr);
    EXPECT_EQ(hidden->numbers(), (std::vector<std::uint32_t>{0, 1, 2, 4}));
    EXPECT_EQ(save("again.station.json"), text);
}

TEST_F(StationGeometry, HiddenPointsThatAreNoneAreRefused)
{
    const auto cloud = ImportPointCloud(folder.write("scan.xyz", "1 2 3\n4 5 6\n7 8 9\n"));
    Layout::inst().addPointCloud(cloud);
    cloud->setHiddenPoints(layout::PointSet(std::vector<std::uint32_t>{0, 2}));
    const std::string text = save();
    const auto expectRefused = [&](const std::string& points, const std::string& cause) {
        SCOPED_TRACE(points);
        folder.write("cell.station.json", std::regex_replace(text, std::regex("\"0,2\""), '"' + points + '"'));
        EXPECT_THAT([&] { LoadStationFile(folder / "cell.station.json"); },
                    ThrowsMessage<StationFileError>((folder / "cell.station.json").string() +
                                                    ": /pointclouds/0/hidden_points: expected " + cause));
    };
    for (const char* wrong : {"", ",", "1,", "2,1", "1,1", "0,1", "0-1,2", "1-1", "2-1", "-1", "1-", "a", "01", "1 ",
                              "0-4294967296", "0,99999999999999"})
        expectRefused(wrong, "numbers of points as \"0-99,105\", ascending");
    expectRefused("0,3", "numbers below 3, as the cloud has so many points");
    expectRefused("0-4294967295", "numbers below 3, as the cloud has so many points");
    folder.write("cell.station.json", std::regex_replace(text, std::regex("\"version\": 3"), "\"version\": 2"));
    EXPECT_THROW(LoadStationFile(folder / "cell.station.json"), StationFileError) << "an unknown key there";
}

TEST_F(StationGeometry, CloudThatNoFileHoldsIsWrittenBesideTheStation)
{
    const auto cloud = std::make_shared<layout::PointCloud>(sdf::SdfManager::inst().generateId(), "my scan",
                                                            layout::PointCloud::Points{{1, 2, 3}, {0.1f, 0.2f, 0.3f}},
                                                            layout::PointCloud::Normals{{0, 0, 1}, {0, 1, 0}});
    cloud->setHiddenPoints(layout::PointSet(std::vector<std::uint32_t>{1}));
    Layout::inst().addPointCloud(cloud);
    const std::string text = save();
    EXPECT_THAT(text, HasSubstr("\"uri\": \"cell.files/my_scan-"));

    LoadStationFile(folder / "cell.station.json");

    const layout::PointCloud& loaded = *Layout::inst().pointclouds.at(0);
    EXPECT_EQ(loaded.getPoints(), cloud->getPoints());
    EXPECT_EQ(loaded.getNormals(), cloud->getNormals());
    EXPECT_EQ(*loaded.getHiddenPoints(), *cloud->getHiddenPoints());
    EXPECT_EQ(save("cell.station.json"), text);
}

TEST_F(StationGeometry, MissingPointCloudIsRefused)
{
    const std::filesystem::path file = folder.write("scan.xyz", "1 2 3\n");
    Layout::inst().addPointCloud(ImportPointCloud(file));
    save();
    std::filesystem::remove(file);

    EXPECT_THAT([&] { LoadStationFile(folder / "cell.station.json"); },
                ThrowsMessage<StationFileError>((folder / "cell.station.json").string() +
                                                ": /pointclouds/0/geometry/uri: expected a file that is there, not "
                                                "'scan.xyz'"));
}

TEST_F(StationGeometry, PointCloudOfAnUnknownKindIsRefused)
{
    const auto cloud = ImportPointCloud(folder.write("scan.xyz", "1 2 3\n"));
    Layout::inst().addPointCloud(cloud);
    folder.write("cell.station.json",
                 std::regex_replace(save(), std::regex("\"file_type\": \"xyz\""), "\"file_type\": \"las\""));

    EXPECT_THAT(
        [&] { LoadStationFile(folder / "cell.station.json"); },
        ThrowsMessage<StationFileError>((folder / "cell.station.json").string() +
                                        ": /pointclouds/0/geometry/file_type: expected \"ply\", \"pcd\" or \"xyz\""));
}

TEST_F(StationGeometry, BrepFileAsAWholeIsOneShape)
{
    TopoDS_Compound both;
    const BRep_Builder builder;
    builder.MakeCompound(both);
    builder.Add(both, BRepPrimAPI_MakeBox(1, 2, 3).Shape());
    builder.Add(both, BRepPrimAPI_MakeBox(1, 2, 3).Shape());
    BRepTools::Write(both, (folder / "both.brep").c_str());

    EXPECT_EQ(ImportShape((folder / "both.brep").string()).ShapeType(), TopAbs_COMPOUND);
    EXPECT_EQ(ImportShape((folder / "both.brep").string() + "#2").ShapeType(), TopAbs_SOLID);
    const std::filesystem::path mesh = folder.write("a.stl", binaryStl());
    EXPECT_THAT([&] { ImportShape(mesh.string()); },
                ThrowsMessage<ImportError>(mesh.string() + ": only a BREP file is meant as a whole"));
}

} // namespace
} // namespace vrk::station
