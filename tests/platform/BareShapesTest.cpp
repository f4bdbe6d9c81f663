#include "platform/station/BareShapes.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"

#include "support/ThrowsExactly.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRep_Tool.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <gtest/gtest.h>

namespace vrk::station {
namespace {

bool isMeshed(const TopoDS_Shape& shape)
{
    TopLoc_Location location;
    for (TopExp_Explorer faces(shape, TopAbs_FACE); faces.More(); faces.Next())
        if (BRep_Tool::Triangulation(TopoDS::Face(faces.Current()), location).IsNull())
            return false;
    return true;
}

TEST(BareShapes, PartHasOneMeshedBodyWithAUriOfItsOwn)
{
    const TopoDS_Shape shape = BRepPrimAPI_MakeBox(10, 20, 30).Shape();

    const auto part = PartOf("Block", shape, "#4A6A8A");

    ASSERT_EQ(part->getBodies().size(), 1u);
    const layout::Body& body = *part->getBodies().front();
    EXPECT_EQ(part->getName(), "Block");
    EXPECT_EQ(body.getName(), "Block");
    EXPECT_TRUE(body.getShape().IsSame(shape));
    EXPECT_TRUE(isMeshed(shape));
    EXPECT_EQ(body.getFileType(), "brep");
    EXPECT_FALSE(body.getGeometryUri().empty());
}

TEST(BareShapes, BodiesOfOneNameHaveDifferentUris)
{
    layout::Part part(1, "Both");
    const auto first = AddShape(part, "Box", BRepPrimAPI_MakeBox(10, 20, 30).Shape(), "#FF0000");
    const auto second = AddShape(part, "Box", BRepPrimAPI_MakeBox(1, 2, 3).Shape(), "#00FF00");
    EXPECT_NE(first->getGeometryUri(), second->getGeometryUri());
    EXPECT_EQ(part.getBodies().size(), 2u);
}

TEST(BareShapes, NullShapeAndNoColourAreRefusedAndAppendNothing)
{
    layout::Part part(1, "None");
    EXPECT_THAT([&] { AddShape(part, "Hole", TopoDS_Shape(), "#FF0000"); },
                test::throwsExactly<std::invalid_argument>("Hole: a body needs a shape"));
    EXPECT_ANY_THROW(AddShape(part, "Grey", BRepPrimAPI_MakeBox(1, 2, 3).Shape(), "grey"));
    EXPECT_TRUE(part.getBodies().empty());
}

} // namespace
} // namespace vrk::station
