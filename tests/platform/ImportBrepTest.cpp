#include "platform/station/Import.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "support/TempFolder.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <BinTools.hxx>
#include <Poly_Polygon3D.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <gp.hxx>
#include <gp_Circ.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <thread>

namespace vrk::station {
namespace {

using testing::ThrowsMessage;

class ImportBrepTest : public testing::Test {
protected:
    std::filesystem::path written(const TopoDS_Shape& shape) const
    {
        BRepTools::Write(shape, (folder / "thing.brep").c_str());
        return folder / "thing.brep";
    }
    void expectRefused(const std::filesystem::path& faulty, const std::string& cause) const
    {
        EXPECT_THAT([&] { ImportFile(faulty); }, ThrowsMessage<ImportError>(faulty.string() + ": " + cause));
    }

    test::TempFolder folder;
    TopoDS_Shape box = BRepPrimAPI_MakeBox(10, 20, 30).Shape();
    TopoDS_Shape pin = BRepPrimAPI_MakeCylinder(2, 50).Shape();
};

TEST_F(ImportBrepTest, SolidBecomesAPartWithOneMeshedBody)
{
    const auto parts = ImportFile(written(box));

    ASSERT_EQ(parts.size(), 1u);
    ASSERT_EQ(parts[0]->getBodies().size(), 1u);
    const std::shared_ptr<layout::Body> body = parts[0]->getBodies()[0];
    EXPECT_EQ(parts[0]->getName(), "thing");
    EXPECT_EQ(body->getName(), "thing");
    EXPECT_EQ(body->getGeometryUri(), (folder / "thing.brep").string() + "#1");
    EXPECT_EQ(body->getFileType(), "brep");
    ASSERT_EQ(body->getFaceMap().Extent(), 6);
    TopLoc_Location location;
    EXPECT_FALSE(BRep_Tool::Triangulation(TopoDS::Face(body->getFaceMap()(1)), location).IsNull());
}

TEST_F(ImportBrepTest, LongStepTellsItsProgressAndIsGivenUpByWhatTheReportThrows)
{
    TopoDS_Compound balls; // their loose faces are one body, which takes many times the interval of the reports
    const BRep_Builder builder;
    builder.MakeCompound(balls);
    for (int i = 0; i < 400; ++i)
        builder.Add(balls, TopExp_Explorer(BRepPrimAPI_MakeSphere(gp_Pnt(i, 0, 0), 50).Shape(), TopAbs_FACE).Current());
    const std::filesystem::path file = written(balls);
    struct GivenUp {};
    std::set<double> fractions;
    const std::thread::id importer = std::this_thread::get_id();

    const auto giveUp = [&](std::string_view step, double fraction) {
        EXPECT_EQ(std::this_thread::get_id(), importer) << "the mesher is at work on several threads";
        if (step != "meshing 1 of 1")
            return;
        fractions.insert(fraction);
        if (fractions.size() == 3)
            throw GivenUp();
    };

    EXPECT_THROW(ImportFile(file, giveUp), GivenUp);
    EXPECT_GE(*fractions.begin(), 0.5);
    EXPECT_LT(*fractions.rbegin(), 1);
    EXPECT_EQ(fractions.size(), 3u) << "told after it was given up";
    EXPECT_EQ(ImportFile(file).front()->getBodies().size(), 1u) << "the next import is none the worse";
}

TEST_F(ImportBrepTest, EachSolidOfACompoundIsABody)
{
    TopoDS_Compound both;
    const BRep_Builder builder;
    builder.MakeCompound(both);
    builder.Add(both, box);
    builder.Add(both, pin);

    const auto parts = ImportFile(written(both));

    ASSERT_EQ(parts.size(), 1u);
    ASSERT_EQ(parts[0]->getBodies().size(), 2u);
    EXPECT_EQ(parts[0]->getBodies()[0]->getFaceMap().Extent(), 6);
    EXPECT_EQ(parts[0]->getBodies()[1]->getFaceMap().Extent(), 3);
    EXPECT_EQ(parts[0]->getBodies()[1]->getName(), "thing.2");
    EXPECT_EQ(parts[0]->getBodies()[1]->getGeometryUri(), (folder / "thing.brep").string() + "#2");
}

TEST_F(ImportBrepTest, LooseFacesAreOneBody)
{
    TopoDS_Compound faces;
    const BRep_Builder builder;
    builder.MakeCompound(faces);
    for (TopExp_Explorer face(box, TopAbs_FACE); face.More(); face.Next())
        builder.Add(faces, face.Current());

    const auto parts = ImportFile(written(faces));

    ASSERT_EQ(parts[0]->getBodies().size(), 1u);
    EXPECT_EQ(parts[0]->getBodies()[0]->getFaceMap().Extent(), 6);
}

TEST_F(ImportBrepTest, ShapeWithoutFacesIsOneBodyAsItStands)
{
    const TopoDS_Shape edge = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(1, 0, 0)).Edge();

    const auto parts = ImportFile(written(edge));

    ASSERT_EQ(parts[0]->getBodies().size(), 1u);
    EXPECT_EQ(parts[0]->getBodies()[0]->getShape().ShapeType(), TopAbs_EDGE);
}

TEST_F(ImportBrepTest, BinaryFormIsReadToo)
{
    const std::filesystem::path file = folder / "binary.BREP";
    ASSERT_TRUE(BinTools::Write(box, file.c_str()));

    const auto parts = ImportFile(file);

    ASSERT_EQ(parts[0]->getBodies().size(), 1u);
    EXPECT_EQ(parts[0]->getBodies()[0]->getFaceMap().Extent(), 6);
}

TEST_F(ImportBrepTest, OtherContentIsRefused)
{
    expectRefused(folder.write("text.brep", "hello"), "not a BREP file");
    expectRefused(folder.write("empty.brep", ""), "the file is empty");
    expectRefused(folder / "none.brep", "no such file");
}

TEST_F(ImportBrepTest, TextFormThatIsCutShortIsRefused)
{
    const std::string bytes = test::TempFolder::Read(written(box));

    for (std::size_t length = 60; length < bytes.size() - 10; length += bytes.size() / 20)
        expectRefused(folder.write("short.brep", std::string_view(bytes).substr(0, length)),
                      "the BREP file is cut short or damaged");
}

TEST_F(ImportBrepTest, BinaryFormThatIsCutShortIsRefused)
{
    ASSERT_TRUE(BinTools::Write(box, (folder / "whole.brep").c_str()));
    const std::string bytes = test::TempFolder::Read(folder / "whole.brep");

    for (std::size_t length = 60; length < bytes.size() - 10; length += bytes.size() / 20)
        expectRefused(folder.write("short.brep", std::string_view(bytes).substr(0, length)),
                      "the BREP file is cut short or damaged");
}

TEST_F(ImportBrepTest, LooseWiresEdgesAndVerticesAreBodiesBehindTheSolids)
{
    const BRep_Builder builder;
    TopoDS_Compound inner, all;
    builder.MakeCompound(inner);
    builder.Add(inner, BRepBuilderAPI_MakeEdge(gp_Circ(gp::XOY(), 10)).Edge());
    builder.MakeCompound(all);
    builder.Add(all, BRepBuilderAPI_MakeVertex(gp_Pnt(1, 2, 3)).Vertex());
    builder.Add(all, inner);
    builder.Add(all, BRepBuilderAPI_MakePolygon(gp_Pnt(0, 0, 0), gp_Pnt(5, 0, 0), gp_Pnt(5, 5, 0)).Wire());
    builder.Add(all, box);

    const auto parts = ImportFile(written(all));

    const auto& bodies = parts[0]->getBodies();
    ASSERT_EQ(bodies.size(), 4u);
    EXPECT_EQ(bodies[0]->getShape().ShapeType(), TopAbs_SOLID);
    EXPECT_EQ(bodies[1]->getShape().ShapeType(), TopAbs_VERTEX);
    EXPECT_EQ(bodies[2]->getShape().ShapeType(), TopAbs_EDGE);
    EXPECT_EQ(bodies[3]->getShape().ShapeType(), TopAbs_WIRE);
    for (const auto& body : bodies)
        EXPECT_EQ(body->getFileType(), "brep");
    TopLoc_Location location;
    const Handle(Poly_Polygon3D) circle = BRep_Tool::Polygon3D(TopoDS::Edge(bodies[2]->getShape()), location);
    ASSERT_FALSE(circle.IsNull());
    EXPECT_GT(circle->NbNodes(), 16);
    for (TopExp_Explorer edge(bodies[3]->getShape(), TopAbs_EDGE); edge.More(); edge.Next())
        EXPECT_FALSE(BRep_Tool::Polygon3D(TopoDS::Edge(edge.Current()), location).IsNull());
}

TEST_F(ImportBrepTest, CurveIsFoundAgainByItsUri)
{
    const auto parts = ImportFile(written(BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(1, 0, 0)).Edge()));

    EXPECT_EQ(ImportShape(parts[0]->getBodies()[0]->getGeometryUri()).ShapeType(), TopAbs_EDGE);
}

TEST_F(ImportBrepTest, CompoundOfNothingIsRefused)
{
    TopoDS_Compound nothing;
    BRep_Builder().MakeCompound(nothing);

    expectRefused(written(nothing), "the BREP file holds no shapes");
}

} // namespace
} // namespace vrk::station
