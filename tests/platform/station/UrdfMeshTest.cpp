#include "platform/station/ImportUrdf.h"

#include "CacheFolder.h"
#include "UrdfFiles.h"

#include "platform/layout/Body.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"

#include <BRepBndLib.hxx>
#include <Bnd_Box.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace vrk::station {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::ThrowsMessage;

/// The shapes that descriptions bring, as the view will find them.
class UrdfMesh : public testing::Test {
protected:
    std::shared_ptr<layout::Body> import(const std::string& geometry)
    {
        robot = ImportUrdf(folder.write("robot.urdf", test::oneLinkUrdf(geometry)));
        return dynamic_cast<const layout::Part&>(*robot->getLinks()[0]->getParts()[0]).getBodies().at(0);
    }
    /// The twelve numbers of each triangle of a body's binary STL file.
    static std::vector<float> facetsOf(const layout::Body& body)
    {
        const std::string bytes = test::TempFolder::Read(body.getGeometryUri());
        std::vector<float> numbers;
        for (std::size_t at = 84; at + 50 <= bytes.size(); at += 50) {
            std::array<float, 12> facet{};
            std::memcpy(facet.data(), bytes.data() + at, sizeof facet);
            numbers.insert(numbers.end(), facet.begin(), facet.end());
        }
        return numbers;
    }
    static Bnd_Box boxOf(const layout::Body& body)
    {
        Bnd_Box box;
        BRepBndLib::AddOptimal(body.getShape(), box, false, false);
        return box;
    }

    test::TempFolder folder;
    test::CacheFolder cache;
    std::shared_ptr<layout::Mechanism> robot;
};

TEST_F(UrdfMesh, StlBecomesMillimetres)
{
    folder.write("a.stl", test::triangleStl());

    const auto body = import("<mesh filename=\"a.stl\"/>");

    EXPECT_THAT(facetsOf(*body), ElementsAre(0, 0, 1, 0, 0, 0, 1000, 0, 0, 0, 2000, 0));
}

TEST_F(UrdfMesh, StlIsScaled)
{
    folder.write("a.stl", test::triangleStl());

    const auto body = import("<mesh filename=\"a.stl\" scale=\"0.001 0.002 1\"/>");

    EXPECT_THAT(facetsOf(*body), ElementsAre(0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 4, 0));
}

TEST_F(UrdfMesh, MirroredMeshKeepsItsOutside)
{
    folder.write("a.stl", test::triangleStl());

    const auto body = import("<mesh filename=\"a.stl\" scale=\"-0.001 0.001 0.001\"/>");

    // Turned about, so that the normal still is the one of a right-handed triangle.
    EXPECT_THAT(facetsOf(*body), ElementsAre(0, 0, 1, 0, 0, 0, 0, 2, 0, -1, 0, 0));
}

TEST_F(UrdfMesh, AsciiStlWithCapitalsIsRead)
{
    folder.write("a.stl", "SOLID a\nFACET NORMAL 0 0 1\nOUTER LOOP\nVERTEX 0 0 0\nVERTEX 1 0 0\nVERTEX 0 1 0\nENDLOOP\n"
                          "ENDFACET\nENDSOLID a\n");

    EXPECT_THAT(facetsOf(*import("<mesh filename=\"a.stl\"/>")), ElementsAre(0, 0, 1, 0, 0, 0, 1000, 0, 0, 0, 1000, 0));
}

TEST_F(UrdfMesh, ScaleOfZeroIsRefused)
{
    const std::filesystem::path mesh = folder.write("a.stl", test::triangleStl());

    EXPECT_THAT(
        [&] { import("<mesh filename=\"a.stl\" scale=\"1 0 1\"/>"); },
        ThrowsMessage<ImportError>(mesh.string() + ": a mesh cannot be scaled by zero or by what is no number"));
}

TEST_F(UrdfMesh, ColladaIsReadInItsOwnUnitWithItsColour)
{
    folder.write("a.dae", test::triangleDae("0.01"));

    const auto body = import("<mesh filename=\"a.dae\"/>");

    const std::vector<float> expected{0, 0, 1, 0, 0, 0, 10, 0, 0, 0, 10, 0};
    EXPECT_THAT(facetsOf(*body), testing::Pointwise(testing::FloatNear(1e-4f), expected));
    EXPECT_EQ(sdf::textAt(*body->getElement(), "visual/color"), "#FF0000");
    EXPECT_EQ(body->getFileType(), "stl");
}

TEST_F(UrdfMesh, ColladaIsTakenAsItStandsWhateverAxisItCallsUp)
{
    const std::vector<float> expected{0, 0, 1, 0, 0, 0, 1000, 0, 0, 0, 1000, 0};
    for (const char* axis : {"X_UP", "Y_UP", "Z_UP"}) {
        SCOPED_TRACE(axis);
        folder.write("a.dae", test::triangleDae("1", axis));
        EXPECT_THAT(facetsOf(*import("<mesh filename=\"a.dae\"/>")),
                    testing::Pointwise(testing::FloatNear(1e-3f), expected));
    }
}

TEST_F(UrdfMesh, LinksOfOneFormShareItsShape)
{
    const std::string box = "<visual><geometry><box size=\"1 2 3\"/></geometry></visual>";
    robot = ImportUrdf(folder.write("robot.urdf", "<robot name=\"r\"><link name=\"a\">" + box +
                                                      "</link><link name=\"b\">" + box +
                                                      "</link><joint name=\"j\" type=\"fixed\"><parent link=\"a\"/>"
                                                      "<child link=\"b\"/></joint></robot>"));
    const auto bodyOf = [this](std::size_t link) {
        return dynamic_cast<const layout::Part&>(*robot->getLinks()[link]->getParts()[0]).getBodies().at(0);
    };

    EXPECT_TRUE(bodyOf(0)->getShape().IsEqual(bodyOf(1)->getShape()));
    EXPECT_EQ(bodyOf(0)->getGeometryUri(), bodyOf(1)->getGeometryUri());
    EXPECT_FALSE(bodyOf(1)->hasOwnUri());
}

TEST_F(UrdfMesh, ColladaThatIsDamagedIsRefused)
{
    folder.write("a.dae", "<COLLADA>");

    EXPECT_THAT([&] { import("<mesh filename=\"a.dae\"/>"); },
                ThrowsMessage<ImportError>(HasSubstr("a.dae: the mesh cannot be read: ")));
}

TEST_F(UrdfMesh, OtherKindOfMeshIsRefused)
{
    const std::filesystem::path mesh = folder.write("a.obj", "v 0 0 0");

    EXPECT_THAT([&] { import("<mesh filename=\"a.obj\"/>"); },
                ThrowsMessage<ImportError>(mesh.string() + ": not a kind of mesh that can be read (.stl, .dae)"));
}

TEST_F(UrdfMesh, BoxIsAShapeAboutItsCentre)
{
    const auto body = import("<box size=\"0.2 0.3 0.1\"/>");

    EXPECT_EQ(body->getFileType(), "brep");
    EXPECT_THAT(body->getGeometryUri(), HasSubstr(".brep#1"));
    EXPECT_EQ(body->getFaceMap().Extent(), 6);
    EXPECT_NEAR(boxOf(*body).CornerMin().Distance(gp_Pnt(-100, -150, -50)), 0, 1e-3);
    EXPECT_NEAR(boxOf(*body).CornerMax().Distance(gp_Pnt(100, 150, 50)), 0, 1e-3);
}

TEST_F(UrdfMesh, CylinderStandsAlongZAboutItsCentre)
{
    const auto body = import("<cylinder radius=\"0.1\" length=\"0.4\"/>");

    EXPECT_EQ(body->getFaceMap().Extent(), 3);
    EXPECT_NEAR(boxOf(*body).CornerMin().Distance(gp_Pnt(-100, -100, -200)), 0, 1e-3);
    EXPECT_NEAR(boxOf(*body).CornerMax().Distance(gp_Pnt(100, 100, 200)), 0, 1e-3);
}

TEST_F(UrdfMesh, SphereLiesAboutItsCentre)
{
    const auto body = import("<sphere radius=\"0.1\"/>");

    EXPECT_EQ(body->getFaceMap().Extent(), 1);
    EXPECT_NEAR(boxOf(*body).CornerMax().Distance(gp_Pnt(100, 100, 100)), 0, 1e-3);
}

} // namespace
} // namespace vrk::station
