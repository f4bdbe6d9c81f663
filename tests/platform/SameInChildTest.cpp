#include "StepFiles.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/station/CadReader.h"
#include "platform/station/Import.h"
#include "support/TempFolder.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <BinTools.hxx>
#include <Poly_Polygon3D.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <gp.hxx>
#include <gp_Circ.hxx>

#include <gtest/gtest.h>

#include <sstream>

namespace vrk::station {
namespace {

using Parts = std::vector<std::shared_ptr<layout::Part>>;

Parts read(const std::filesystem::path& file, bool inOwnProcess)
{
    CadReaderSettings settings;
    settings.inOwnProcess = inOwnProcess;
    SetCadReaderSettings(settings);
    Parts parts = ImportFile(file);
    SetCadReaderSettings({});
    return parts;
}

/// The shapes of all bodies, as one.
TopoDS_Shape shapesOf(const Parts& parts)
{
    TopoDS_Compound all;
    const BRep_Builder builder;
    builder.MakeCompound(all);
    for (const auto& part : parts)
        for (const auto& body : part->getBodies())
            builder.Add(all, body->getShape());
    return all;
}

std::string brepOf(const TopoDS_Shape& shape)
{
    std::ostringstream text;
    BRepTools::Write(shape, text);
    return text.str();
}

void expectSameBody(const layout::Body& here, const layout::Body& child)
{
    EXPECT_EQ(child.getName(), here.getName());
    EXPECT_EQ(child.getGeometryUri(), here.getGeometryUri());
    EXPECT_EQ(child.getFileType(), here.getFileType());
    EXPECT_EQ(child.getShape().Free(), here.getShape().Free());
    EXPECT_EQ(child.getShape().Orientation(), here.getShape().Orientation());
    for (const char* key : {"visual/color", "visual/face_colors/f1", "visual/face_colors/f2", "visual/face_colors/f5"})
        EXPECT_EQ(sdf::textAt(*child.getElement(), key), sdf::textAt(*here.getElement(), key)) << key;
    ASSERT_EQ(child.getFaceMap().Extent(), here.getFaceMap().Extent());
    for (int i = 1; i <= here.getFaceMap().Extent(); ++i) {
        TopLoc_Location location;
        const auto a = BRep_Tool::Triangulation(TopoDS::Face(here.getFaceMap()(i)), location);
        const auto b = BRep_Tool::Triangulation(TopoDS::Face(child.getFaceMap()(i)), location);
        ASSERT_EQ(a.IsNull(), b.IsNull());
        if (a.IsNull())
            continue;
        ASSERT_EQ(b->NbTriangles(), a->NbTriangles());
        ASSERT_EQ(b->NbNodes(), a->NbNodes());
        ASSERT_EQ(b->HasNormals(), a->HasNormals());
        for (int node = 1; node <= a->NbNodes(); ++node) {
            ASSERT_EQ(b->Node(node).Distance(a->Node(node)), 0);
            ASSERT_EQ(b->Normal(node).Angle(a->Normal(node)), 0);
        }
    }
}

void expectSame(const std::filesystem::path& file)
{
    SCOPED_TRACE(file.string());
    const Parts here = read(file, true);
    const Parts child = read(file, false);

    ASSERT_EQ(child.size(), here.size());
    for (std::size_t i = 0; i < here.size(); ++i) {
        EXPECT_EQ(child[i]->getName(), here[i]->getName());
        EXPECT_EQ(child[i]->getPose(), here[i]->getPose());
        ASSERT_EQ(child[i]->getBodies().size(), here[i]->getBodies().size());
        for (std::size_t k = 0; k < here[i]->getBodies().size(); ++k)
            expectSameBody(*here[i]->getBodies()[k], *child[i]->getBodies()[k]);
    }
    // Geometry, triangles, edge polygons, tolerances, flags, and what is shared with what.
    EXPECT_EQ(brepOf(shapesOf(child)), brepOf(shapesOf(here)));
}

class SameInChild : public testing::Test {
protected:
    test::TempFolder folder;
    TopoDS_Shape box = BRepPrimAPI_MakeBox(10, 20, 30).Shape();
    TopoDS_Shape pin = BRepPrimAPI_MakeCylinder(2, 50).Shape();
};

TEST_F(SameInChild, AssemblyWithNamesColoursAndPlaces)
{
    test::StepDocument document;
    const TDF_Label boxes = document.addProduct(box, "Gehäuse #1");
    const TDF_Label pins = document.addProduct(pin, "pin");
    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(box, TopAbs_FACE, faces);
    document.setColor(boxes, "#ED1C24");
    document.setSubShapeColor(boxes, faces(2), "#0080FF");
    document.setSubShapeColor(boxes, faces(5), "#123456");
    const TDF_Label pair = document.addAssembly("pair");
    document.addComponent(pair, boxes, test::moved(100, 0, 0), "box_of_pair");
    document.addComponent(pair, pins, test::turnedAndMoved(0, 0, 7), "pin_of_pair");
    const TDF_Label top = document.addAssembly("top");
    document.addComponent(top, pair, test::turnedAndMoved(0, 1000, 0), "pair_1");
    const TDF_Label second = document.addComponent(top, pair, test::turnedAndMoved(0, 2000, 0), "pair_2");
    document.setColor(second, "#00FF00");
    document.write(folder / "cell.step");

    expectSame(folder / "cell.step");
}

TEST_F(SameInChild, BodiesThatShareFacesAndEdges)
{
    TopoDS_Compound all;
    const BRep_Builder builder;
    builder.MakeCompound(all);
    builder.Add(all, box);
    builder.Add(all, box.Moved(test::moved(100, 0, 0))); // the same once more
    builder.Add(all, box.Reversed());
    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(box, TopAbs_FACE, faces);
    builder.Add(all, faces(3));
    builder.Add(all, TopExp_Explorer(faces(1), TopAbs_EDGE).Current());
    builder.Add(all, pin);
    BRepTools::Write(all, (folder / "shared.brep").c_str());

    expectSame(folder / "shared.brep");
    const Parts parts = read(folder / "shared.brep", false);
    const auto& bodies = parts.at(0)->getBodies();
    EXPECT_TRUE(bodies.at(0)->getShape().IsPartner(bodies.at(1)->getShape()));
}

TEST_F(SameInChild, CurvesPointsAndRoundThings)
{
    TopoDS_Compound all;
    const BRep_Builder builder;
    builder.MakeCompound(all);
    builder.Add(all, BRepPrimAPI_MakeTorus(50, 10).Shape());
    builder.Add(all, BRepBuilderAPI_MakeEdge(gp_Circ(gp::XOY(), 10)).Edge());
    builder.Add(all, BRepBuilderAPI_MakeVertex(gp_Pnt(1, 2, 3)).Vertex());
    BRepTools::Write(all, (folder / "round.brep").c_str());
    BinTools::Write(all, (folder / "binary.brep").c_str());

    expectSame(folder / "round.brep");
    expectSame(folder / "binary.brep");
}

TEST_F(SameInChild, OneSolidAlone)
{
    BRepTools::Write(box, (folder / "box.brep").c_str());
    test::StepDocument document;
    document.addProduct(pin, "pin");
    document.write(folder / "pin.step");

    expectSame(folder / "box.brep");
    expectSame(folder / "pin.step");
}

} // namespace
} // namespace vrk::station
