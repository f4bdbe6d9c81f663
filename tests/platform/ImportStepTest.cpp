#include "platform/station/Import.h"

#include "StepFiles.h"
#include "platform/geometry/BodyColorTool.h"
#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "support/TempFolder.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Poly_Triangulation.hxx>
#include <TDF_LabelSequence.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <gp.hxx>
#include <gp_Circ.hxx>
#include <gp_Pln.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <regex>
#include <set>

namespace vrk::station {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::ThrowsMessage;
using testing::UnorderedElementsAre;

using Parts = std::vector<std::shared_ptr<layout::Part>>;

class ImportStepTest : public testing::Test {
protected:
    ~ImportStepTest() override { layout::Layout::inst().clear(); }

    /// Writes the document, imports it and puts the parts into the station.
    const Parts& imported(const Progress& progress = {})
    {
        document.write(file);
        parts = ImportFile(file, progress);
        for (const auto& part : parts)
            layout::Layout::inst().addPart(part);
        return parts;
    }
    std::shared_ptr<layout::Part> partOf(const std::string& name) const
    {
        for (const auto& part : parts) {
            if (part->getName() == name)
                return part;
        }
        throw std::runtime_error("no part " + name);
    }
    std::shared_ptr<layout::Body> bodyOf(const std::string& name) const { return partOf(name)->getBodies().at(0); }
    ColorInfo colorsOf(const std::string& name) const
    {
        return geometry::BodyColorTool::GetColorInfo(bodyOf(name)->getId());
    }
    void expectRefused(const std::filesystem::path& faulty, const std::string& cause) const
    {
        EXPECT_THAT([&] { ImportFile(faulty); }, ThrowsMessage<ImportError>(faulty.string() + ": " + cause));
    }

    test::TempFolder folder;
    std::filesystem::path file = folder / "thing.step";
    test::StepDocument document;
    TopoDS_Shape box = BRepPrimAPI_MakeBox(10, 20, 30).Shape();
    TopoDS_Shape pin = BRepPrimAPI_MakeCylinder(2, 50).Shape();
    Parts parts;
};

TEST_F(ImportStepTest, ProductBecomesOnePartWithOneBody)
{
    document.addProduct(box, "box");

    ASSERT_EQ(imported().size(), 1u);

    const std::shared_ptr<layout::Body> body = bodyOf("box");
    EXPECT_EQ(partOf("box")->getPose(), rob::Posed());
    EXPECT_EQ(partOf("box")->getBodies().size(), 1u);
    EXPECT_EQ(body->getName(), "box");
    EXPECT_EQ(body->getShape().ShapeType(), TopAbs_SOLID);
    EXPECT_EQ(body->getFaceMap().Extent(), 6);
    EXPECT_EQ(body->getFileType(), "brep");
    EXPECT_EQ(body->getGeometryUri(), file.string() + "#box");
    EXPECT_EQ(colorsOf("box").bodyColor, ColorInfo().bodyColor);
}

TEST_F(ImportStepTest, EveryFaceIsMeshedAndHasNormals)
{
    document.addProduct(pin, "pin");
    imported();

    const layout::FaceMap& faces = bodyOf("pin")->getFaceMap();
    ASSERT_EQ(faces.Extent(), 3);
    for (int i = 1; i <= 3; ++i) {
        TopLoc_Location location;
        const Handle(Poly_Triangulation) triangles = BRep_Tool::Triangulation(TopoDS::Face(faces(i)), location);
        ASSERT_FALSE(triangles.IsNull());
        EXPECT_GT(triangles->NbTriangles(), 0);
        EXPECT_TRUE(triangles->HasNormals());
    }
}

TEST_F(ImportStepTest, EndingMayBeInAnyCase)
{
    document.addProduct(box, "box");
    for (const char* name : {"a.STEP", "a.stp", "a.STP", "a.Step"}) {
        document.write(folder / name);
        EXPECT_EQ(ImportFile(folder / name).size(), 1u) << name;
    }
}

TEST_F(ImportStepTest, TwoLevelsOfAssemblyGiveOnePartPerOccurrenceAtItsPlace)
{
    const TDF_Label boxes = document.addProduct(box, "box");
    const TDF_Label pins = document.addProduct(pin, "pin");
    const TDF_Label pair = document.addAssembly("pair");
    document.addComponent(pair, boxes, test::moved(100, 0, 0), "box_of_pair");
    document.addComponent(pair, pins, test::moved(0, 0, 7), "pin_of_pair");
    const TDF_Label top = document.addAssembly("top");
    document.addComponent(top, pair, test::moved(0, 1000, 0), "pair_1");
    document.addComponent(top, pair, test::turnedAndMoved(0, 2000, 0), "pair_2");
    document.addComponent(top, boxes, test::moved(5, 5, 5), "single");

    imported();

    std::vector<std::string> names;
    for (const auto& part : parts)
        names.push_back(part->getName());
    EXPECT_THAT(names, ElementsAre("box_of_pair", "pin_of_pair", "box_of_pair", "pin_of_pair", "single"));
    const auto origin = [](const layout::Part& part) { return part.getPose() * rob::Posd(); };
    EXPECT_NEAR((origin(*parts[0]) - rob::Posd(100, 1000, 0)).length(), 0, 1e-9);
    EXPECT_NEAR((origin(*parts[1]) - rob::Posd(0, 1000, 7)).length(), 0, 1e-9);
    EXPECT_NEAR((origin(*parts[2]) - rob::Posd(0, 2100, 0)).length(), 0, 1e-9);
    EXPECT_NEAR((origin(*parts[3]) - rob::Posd(0, 2000, 7)).length(), 0, 1e-9);
    EXPECT_NEAR((origin(*parts[4]) - rob::Posd(5, 5, 5)).length(), 0, 1e-9);
    EXPECT_NEAR((parts[2]->getPose() * rob::Posd(1, 0, 0) - rob::Posd(0, 2101, 0)).length(), 0, 1e-9);
}

TEST_F(ImportStepTest, OccurrencesOfOneProductShareShapeAndGeometry)
{
    const TDF_Label boxes = document.addProduct(box, "box");
    const TDF_Label top = document.addAssembly("top");
    document.addComponent(top, boxes, test::moved(1, 0, 0), "first");
    document.addComponent(top, boxes, test::moved(2, 0, 0), "second");

    imported();

    EXPECT_TRUE(bodyOf("first")->getShape().IsSame(bodyOf("second")->getShape()));
    EXPECT_TRUE(bodyOf("first")->getShape().Location().IsIdentity());
    EXPECT_EQ(bodyOf("first")->getGeometryUri(), bodyOf("second")->getGeometryUri());
    EXPECT_NE(bodyOf("first")->getId(), bodyOf("second")->getId());
}

TEST_F(ImportStepTest, ProductsOfOneNameHaveGeometryOfTheirOwn)
{
    const TDF_Label top = document.addAssembly("top");
    document.addComponent(top, document.addProduct(box, "same"), test::moved(1, 0, 0), "first");
    document.addComponent(top, document.addProduct(pin, "same"), test::moved(2, 0, 0), "second");

    imported();

    EXPECT_EQ(bodyOf("first")->getGeometryUri(), file.string() + "#same");
    EXPECT_EQ(bodyOf("second")->getGeometryUri(), file.string() + "#same~2");
}

TEST_F(ImportStepTest, BodyAndFaceColoursAreKept)
{
    const TDF_Label boxes = document.addProduct(box, "box");
    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(box, TopAbs_FACE, faces);
    document.setColor(boxes, "#ED1C24");
    document.setSubShapeColor(boxes, faces(2), "#0080FF");
    document.setSubShapeColor(boxes, faces(5), "#123456");

    imported();

    const ColorInfo info = colorsOf("box");
    EXPECT_EQ(info.bodyColor, "#ED1C24");
    EXPECT_THAT(info.faceColors, UnorderedElementsAre(Pair(2u, "#0080FF"), Pair(5u, "#123456")));
}

TEST_F(ImportStepTest, FacesOfOneColourColourTheBody)
{
    const TDF_Label boxes = document.addProduct(box, "box");
    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(box, TopAbs_FACE, faces);
    for (int i = 1; i <= faces.Extent(); ++i)
        document.setSubShapeColor(boxes, faces(i), "#0080FF");

    imported();

    EXPECT_EQ(colorsOf("box").bodyColor, "#0080FF");
    EXPECT_THAT(colorsOf("box").faceColors, IsEmpty());
}

TEST_F(ImportStepTest, ColourOfAnOccurrenceOverridesItsProductsAndHasGeometryOfItsOwn)
{
    const TDF_Label boxes = document.addProduct(box, "box");
    document.setColor(boxes, "#FF0000");
    const TDF_Label top = document.addAssembly("top");
    document.addComponent(top, boxes, test::moved(1, 0, 0), "plain");
    const TDF_Label painted = document.addComponent(top, boxes, test::moved(2, 0, 0), "painted");
    document.addComponent(top, boxes, test::moved(3, 0, 0), "plain too");
    document.setColor(painted, "#0000FF");

    imported();

    EXPECT_EQ(colorsOf("plain").bodyColor, "#FF0000");
    EXPECT_EQ(colorsOf("painted").bodyColor, "#0000FF");
    EXPECT_EQ(bodyOf("plain")->getGeometryUri(), bodyOf("plain too")->getGeometryUri());
    EXPECT_NE(bodyOf("plain")->getGeometryUri(), bodyOf("painted")->getGeometryUri());
}

TEST_F(ImportStepTest, ColourOfOneOccurrenceDeepInAnAssemblyIsItsAlone)
{
    const TDF_Label boxes = document.addProduct(box, "box");
    document.setColor(boxes, "#FF0000");
    const TDF_Label pair = document.addAssembly("pair");
    const TDF_Label inner = document.addComponent(pair, boxes, test::moved(1, 0, 0), "inner");
    const TDF_Label top = document.addAssembly("top");
    document.addComponent(top, pair, test::moved(0, 100, 0), "pair_1");
    const TDF_Label second = document.addComponent(top, pair, test::moved(0, 200, 0), "pair_2");
    TDF_LabelSequence path;
    path.Append(second);
    path.Append(inner);
    document.setOccurrenceColor(path, "#00FF00");

    imported();

    ASSERT_EQ(parts.size(), 2u);
    const auto colorOf = [](const layout::Part& part) {
        return geometry::BodyColorTool::GetBodyColor(part.getBodies().at(0)->getId());
    };
    EXPECT_EQ(colorOf(*parts[0]), "#FF0000");
    EXPECT_EQ(colorOf(*parts[1]), "#00FF00");
}

TEST_F(ImportStepTest, SolidsOfAProductAreBodiesWithColoursOfTheirOwn)
{
    TopoDS_Compound both;
    const BRep_Builder builder;
    builder.MakeCompound(both);
    builder.Add(both, box);
    const TopoDS_Shape movedPin = pin.Moved(test::moved(100, 0, 0));
    builder.Add(both, movedPin);
    const TDF_Label product = document.addProduct(both, "both");
    document.setSubShapeColor(product, box, "#ED1C24");
    document.setSubShapeColor(product, movedPin, "#0080FF");

    imported();

    std::vector<std::string> colors;
    std::set<std::string> uris;
    for (const auto& part : parts) {
        for (const auto& body : part->getBodies()) {
            colors.push_back(geometry::BodyColorTool::GetBodyColor(body->getId()));
            uris.insert(body->getGeometryUri());
        }
    }
    EXPECT_THAT(colors, UnorderedElementsAre("#ED1C24", "#0080FF"));
    EXPECT_EQ(uris.size(), 2u);
}

TEST_F(ImportStepTest, FreeShellIsABody)
{
    TopTools_IndexedMapOfShape shells;
    TopExp::MapShapes(box, TopAbs_SHELL, shells);
    document.addProduct(shells(1), "skin");

    imported();

    ASSERT_EQ(parts.size(), 1u);
    EXPECT_EQ(parts[0]->getBodies().size(), 1u);
    EXPECT_EQ(parts[0]->getBodies()[0]->getFaceMap().Extent(), 6);
}

TEST_F(ImportStepTest, CurvesAndPointsAreBodiesAtTheirPlace)
{
    const BRep_Builder builder;
    TopoDS_Compound sketch;
    builder.MakeCompound(sketch);
    builder.Add(sketch, BRepBuilderAPI_MakeEdge(gp_Circ(gp::XOY(), 10)).Edge());
    builder.Add(sketch, BRepBuilderAPI_MakeVertex(gp_Pnt(1, 2, 3)).Vertex());
    document.addComponent(document.addAssembly("cell"), document.addProduct(sketch, "sketch"), test::moved(100, 0, 0),
                          "sketch at work");

    imported();

    const auto& bodies = partOf("sketch at work")->getBodies();
    EXPECT_NEAR(partOf("sketch at work")->getPose().position.x, 100, 1e-9);
    int circles = 0, points = 0;
    for (const auto& body : bodies) {
        EXPECT_EQ(body->getFileType(), "brep");
        for (TopExp_Explorer edge(body->getShape(), TopAbs_EDGE); edge.More(); edge.Next(), ++circles) {
            TopLoc_Location location;
            EXPECT_FALSE(BRep_Tool::Polygon3D(TopoDS::Edge(edge.Current()), location).IsNull());
        }
        if (body->getShape().ShapeType() == TopAbs_VERTEX) {
            ++points;
            EXPECT_NEAR(BRep_Tool::Pnt(TopoDS::Vertex(body->getShape())).Distance(gp_Pnt(1, 2, 3)), 0, 1e-6);
        }
    }
    EXPECT_EQ(circles, 1);
    EXPECT_EQ(points, 1);
}

TEST_F(ImportStepTest, NamesKeepLettersOutsideAscii)
{
    document.addProduct(box, "Gehäuse #1");

    imported();

    EXPECT_EQ(parts.at(0)->getName(), "Gehäuse #1");
    EXPECT_EQ(bodyOf("Gehäuse #1")->getGeometryUri(), file.string() + "#Gehäuse _1");
}

TEST_F(ImportStepTest, ShapeOfABodyIsFoundAgainByItsGeometry)
{
    const TDF_Label top = document.addAssembly("top");
    document.addComponent(top, document.addProduct(box, "box"), test::moved(1, 0, 0), "first");
    document.addComponent(top, document.addProduct(pin, "pin"), test::moved(2, 0, 0), "second");
    imported();

    layout::Part other(sdf::SdfManager::inst().generateId(), "other");
    const std::shared_ptr<layout::Body> body = other.addBody("again");
    body->setGeometry(bodyOf("second")->getGeometryUri(), "brep");
    body->ensureShapeLoaded();

    EXPECT_EQ(body->getFaceMap().Extent(), 3);
    EXPECT_THAT([&] { ImportShape(file.string() + "#none"); },
                ThrowsMessage<ImportError>(file.string() + ": it holds no shape for '" + file.string() + "#none'"));
}

TEST_F(ImportStepTest, NoGeometryIsCalledAsAnotherOneWithFacesHidden)
{
    const TDF_Label top = document.addAssembly("top");
    for (const char* name : {"bolt_12", "bolt", "bolt_3", "nut", "nut_1_2", "nut_1", "nut_x", "nut_", "7_7"})
        document.addComponent(top, document.addProduct(BRepPrimAPI_MakeBox(1, 2, 3).Shape(), name),
                              test::moved(1, 0, 0), name);
    imported();

    std::vector<std::string> uris;
    for (const auto& part : parts)
        for (const auto& body : part->getBodies())
            uris.push_back(body->getGeometryUri());
    ASSERT_EQ(uris.size(), 9u);
    for (const std::string& uri : uris)
        for (const std::string& other : uris)
            EXPECT_FALSE(uri != other && uri.starts_with(other) &&
                         std::regex_match(uri.substr(other.size()), std::regex("(_[0-9]+)+")))
                << uri << " and " << other;
    EXPECT_THAT(uris,
                testing::IsSupersetOf({file.string() + "#bolt_12", file.string() + "#nut", file.string() + "#nut_x",
                                       file.string() + "#nut_", file.string() + "#7_7"}));
}

TEST_F(ImportStepTest, ShapesAskedForOneByOneAreOfOneReading)
{
    const TDF_Label top = document.addAssembly("top");
    document.addComponent(top, document.addProduct(box, "box"), test::moved(1, 0, 0), "first");
    document.addComponent(top, document.addProduct(pin, "pin"), test::moved(2, 0, 0), "second");
    imported();
    const std::string uri = bodyOf("first")->getGeometryUri();

    const TopoDS_Shape first = ImportShape(uri);
    const TopoDS_Shape second = ImportShape(bodyOf("second")->getGeometryUri());

    EXPECT_TRUE(ImportShape(uri).IsEqual(first));
    EXPECT_FALSE(second.IsPartner(first));
    std::filesystem::last_write_time(file, std::filesystem::last_write_time(file) + std::chrono::seconds(5));
    EXPECT_FALSE(ImportShape(uri).IsPartner(first)) << "the file was written anew";
}

TEST_F(ImportStepTest, ProgressRunsFromReadingToTheEnd)
{
    const TDF_Label top = document.addAssembly("top");
    document.addComponent(top, document.addProduct(box, "box"), test::moved(1, 0, 0), "first");
    document.addComponent(top, document.addProduct(pin, "pin"), test::moved(2, 0, 0), "second");
    std::vector<std::string> steps;
    double last = 0;

    imported([&](std::string_view step, double fraction) {
        if (steps.empty() || steps.back() != step) // a long step is told again and again
            steps.emplace_back(step);
        EXPECT_GE(fraction, last);
        last = fraction;
    });

    EXPECT_THAT(steps, ElementsAre("reading", "transferring", "meshing 1 of 2", "meshing 2 of 2", "done"));
    EXPECT_EQ(last, 1);
}

TEST_F(ImportStepTest, OpenCascadeSaysNothingAndSpeaksAgainAfterwards)
{
    document.addProduct(box, "box");
    document.write(file);
    const int printers = Message::DefaultMessenger()->Printers().Length();

    testing::internal::CaptureStdout();
    ImportFile(file, [](std::string_view, double) { EXPECT_TRUE(Message::DefaultMessenger()->Printers().IsEmpty()); });
    const std::string said = testing::internal::GetCapturedStdout();
    EXPECT_THROW(ImportFile(folder / "none.step"), ImportError);

    EXPECT_EQ(said, "");
    EXPECT_GT(printers, 0);
    EXPECT_EQ(Message::DefaultMessenger()->Printers().Length(), printers);
}

TEST_F(ImportStepTest, MissingFileFolderAndUnknownKindAreRefused)
{
    expectRefused(folder / "none.step", "no such file");
    expectRefused(folder.path(), "it is a folder");
    expectRefused(folder.write("a.txt", "text"), "not a kind of file that can be read (.step, .stp, .igs, .iges, "
                                                 ".brep, .stl, .obj, .gltf, .glb, .3mf, .dae, .ply)");
    expectRefused(folder.write("empty.step", ""), "the file is empty");
}

TEST_F(ImportStepTest, OtherContentIsRefused)
{
    expectRefused(folder.write("text.step", "solid cube\nendsolid\n"), "not a STEP file");
    expectRefused(folder.write("broken.step", "ISO-10303-21;\nHEADER;\n((\nEND-ISO-10303-21;\n"),
                  "the STEP file is damaged");
}

TEST_F(ImportStepTest, FileThatIsCutShortIsRefused)
{
    document.addProduct(box, "box");
    document.write(file);
    const std::string bytes = test::TempFolder::Read(file);

    for (std::size_t length : {std::size_t(100), bytes.size() / 2, bytes.size() - 20})
        expectRefused(folder.write("short.step", std::string_view(bytes).substr(0, length)),
                      "the STEP file is cut short");
}

TEST_F(ImportStepTest, GeometryWithAMissingReferenceIsRefusedByItsLine)
{
    document.addProduct(box, "box");
    document.write(file);
    std::string bytes = test::TempFolder::Read(file);
    const std::size_t at = bytes.find("= LINE(");
    ASSERT_NE(at, std::string::npos);
    const std::size_t line = bytes.rfind('#', at);
    const std::string number = bytes.substr(line, bytes.find_first_of(" =", line) - line);
    bytes.replace(bytes.find('#', at), 2, "#99999");

    expectRefused(folder.write("damaged.step", bytes), "the STEP file is damaged at " + number);
}

TEST_F(ImportStepTest, FileWithoutGeometryIsRefused)
{
    document.addProduct(box, "box");
    document.write(file);
    std::string bytes = test::TempFolder::Read(file);
    const std::size_t data = bytes.find("DATA;") + 5;
    bytes.replace(data, bytes.find("ENDSEC;", data) - data, "\n#1 = CARTESIAN_POINT('',(0.,0.,0.));\n");

    expectRefused(folder.write("bare.step", bytes), "the STEP file holds no shapes");
}

} // namespace
} // namespace vrk::station
