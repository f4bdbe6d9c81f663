#include "platform/station/ImportUrdf.h"

#include "CacheFolder.h"
#include "Matrix.h"
#include "UrdfFiles.h"

#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/station/StationFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace vrk::station {
namespace {

using layout::JointType;
using layout::Manipulator;
using test::armUrdf;
using test::Matrix;
using test::oneLinkUrdf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using testing::StrEq;
using testing::ThrowsMessage;

class ImportUrdfTest : public testing::Test {
protected:
    ~ImportUrdfTest() override { layout::Layout::inst().clear(); }

    std::shared_ptr<layout::Mechanism> import(const std::string& text, const std::string& name = "robot.urdf") const
    {
        return ImportUrdf(folder.write(name, text));
    }
    std::shared_ptr<Manipulator> importArm(const std::string& text, const std::string& name = "robot.urdf") const
    {
        return std::dynamic_pointer_cast<Manipulator>(import(text, name));
    }
    void expectRefused(const std::string& text, const std::string& cause) const
    {
        const std::filesystem::path file = folder.write("robot.urdf", text);
        EXPECT_THAT([&] { ImportUrdf(file); }, ThrowsMessage<ImportError>(StrEq(file.string() + ": " + cause)));
    }
    static std::string jointTo(const std::string& child, const std::string& parent = "base",
                               const std::string& more = {})
    {
        return "<joint name=\"to_" + child + "\" type=\"fixed\"><parent link=\"" + parent + "\"/><child link=\"" +
               child + "\"/>" + more + "</joint>";
    }
    static const layout::Part& partOf(const layout::Mechanism& robot, std::size_t link = 0, std::size_t part = 0)
    {
        return dynamic_cast<const layout::Part&>(*robot.getLinks().at(link)->getParts().at(part));
    }

    test::TempFolder folder;
    test::CacheFolder cache;
};

TEST_F(ImportUrdfTest, RobotWithMovingJointsBecomesAManipulator)
{
    const auto arm = importArm(armUrdf());

    ASSERT_NE(arm, nullptr);
    EXPECT_EQ(arm->getName(), "test_arm");
    std::vector<std::string> links;
    for (const auto& link : arm->getLinks())
        links.push_back(link->getName());
    EXPECT_THAT(links, ElementsAre("base_link", "upper", "slider", "hand", "tool0"));
}

TEST_F(ImportUrdfTest, RobotWithoutMovingJointsBecomesADevice)
{
    const auto device =
        import("<robot name=\"table\"><link name=\"base\"/><link name=\"plate\"/>" + jointTo("plate") + "</robot>");

    EXPECT_EQ(device->getModelType(), sdf::ModelType::Device);
    EXPECT_EQ(device->getLinks().size(), 2u);
}

TEST_F(ImportUrdfTest, JointsAreInMillimetresAndRadians)
{
    const auto arm = importArm(armUrdf());

    ASSERT_EQ(arm->getJoints().size(), 4u);
    const layout::Joint& turn = arm->getJoints()[0];
    EXPECT_EQ(turn.type, JointType::Revolute);
    EXPECT_EQ(turn.lower, -1.5);
    EXPECT_EQ(turn.upper, 2);
    EXPECT_LT((turn.origin.position - rob::Posd(100, -200, 400)).length(), 1e-9);
    EXPECT_NEAR(turn.axis.length(), 1, 1e-12);
    const layout::Joint& slide = arm->getJoints()[1];
    EXPECT_EQ(slide.type, JointType::Prismatic);
    EXPECT_EQ(slide.lower, -100);
    EXPECT_EQ(slide.upper, 600);
    EXPECT_EQ(arm->getJoints()[2].type, JointType::Continuous);
    EXPECT_EQ(arm->getJoints()[3].type, JointType::Fixed);
}

TEST_F(ImportUrdfTest, EveryLinkIsWhereMatricesPutIt)
{
    const auto arm = importArm(armUrdf());
    std::mt19937 random(7);
    std::uniform_real_distribution<double> number(-1, 1);
    for (int i = 0; i < 20; ++i) {
        const double turn = 1.4 * number(random), slide = 250 + 300 * number(random), roll = 9 * number(random);

        arm->setJointValues(std::vector{turn, slide, roll});

        const Matrix upper =
            Matrix::Move(100, -200, 400) * Matrix::Rpy(0.3, -0.4, 0.5) * Matrix::Turn(turn, {1, 2, -2});
        const Matrix slider = upper * Matrix::Move(0, 0, 250) * Matrix::Rpy(1.2, 0, 0) * Matrix::Move(0, slide, 0);
        const Matrix hand = slider * Matrix::Move(300, 0, 0) * Matrix::Rpy(0, 0.7, 0) * Matrix::Turn(roll, {0, 0, 1});
        const Matrix tool = hand * Matrix::Move(0, 0, 80) * Matrix::Rpy(0, 1.5707963267948966, 0);
        const auto& links = arm->getLinks();
        EXPECT_LT(Matrix().distance(links[0]->getPose()), 1e-9);
        EXPECT_LT(upper.distance(links[1]->getPose()), 1e-9);
        EXPECT_LT(slider.distance(links[2]->getPose()), 1e-9);
        EXPECT_LT(hand.distance(links[3]->getPose()), 1e-9);
        EXPECT_LT(tool.distance(links[4]->getPose()), 1e-9);
    }
}

TEST_F(ImportUrdfTest, WristIsAtTheToolLink)
{
    const auto arm = importArm(armUrdf());

    EXPECT_EQ(arm->getWrist()->getParentId(), arm->getLinks()[4]->getId());
    EXPECT_EQ(arm->getWrist()->getPose(), rob::Posed());
}

TEST_F(ImportUrdfTest, WristIsAtTheFlangeWhereThereIsNoToolLink)
{
    std::string text = armUrdf();
    for (std::size_t at = text.find("tool0"); at != std::string::npos; at = text.find("tool0"))
        text.replace(at, 5, "flange");

    const auto arm = importArm(text);

    EXPECT_EQ(arm->getWrist()->getParentId(), arm->getLinks()[4]->getId());
}

TEST_F(ImportUrdfTest, WristIsAtTheLastMovingLinkWhereNoNameTells)
{
    std::string text = armUrdf();
    for (std::size_t at = text.find("tool0"); at != std::string::npos; at = text.find("tool0"))
        text.replace(at, 5, "extra");

    const auto arm = importArm(text);

    EXPECT_EQ(arm->getWrist()->getParentId(), arm->getLinks()[3]->getId());
}

TEST_F(ImportUrdfTest, TaskFrameIsAtTheBaseLinkOfThatName)
{
    std::string text = armUrdf();
    EXPECT_EQ(importArm(text)->getControllerTaskFrame()->getPose(), rob::Posed());
    text.insert(text.rfind("</robot>"),
                "<link name=\"base\"/>" + jointTo("base", "base_link", "<origin xyz=\"0 0 0.33\"/>"));

    EXPECT_EQ(importArm(text)->getControllerTaskFrame()->getPose().position, rob::Posd(0, 0, 330));
}

struct VendorCase {
    const char* robot;
    const char* file;
    const char* vendor;
};
class UrdfVendor : public ImportUrdfTest, public testing::WithParamInterface<VendorCase> {};
TEST_P(UrdfVendor, IsKnownFromAWordOfTheRobotOrItsFile)
{
    EXPECT_EQ(importArm(armUrdf(GetParam().robot), GetParam().file)->getVendor(), GetParam().vendor);
}
INSTANTIATE_TEST_SUITE_P(
    Table, UrdfVendor,
    testing::Values(VendorCase{"abb_irb120", "r.urdf", "abb"}, VendorCase{"KUKA KR10", "r.urdf", "kuka"},
                    VendorCase{"my-fanuc", "r.urdf", "fanuc"}, VendorCase{"motoman_gp7", "r.urdf", "yaskawa"},
                    VendorCase{"Yaskawa", "r.urdf", "yaskawa"}, VendorCase{"arm", "kuka_kr10r900_2.urdf", "kuka"},
                    VendorCase{"cabbage", "r.urdf", ""}, VendorCase{"abbot", "r.urdf", ""},
                    VendorCase{"arm", "r.urdf", ""}));

TEST_F(ImportUrdfTest, VendorIsKnownFromThePackageOfItsMeshes)
{
    folder.write("fanuc_support/meshes/a.stl", test::triangleStl());
    std::string text = armUrdf("arm");
    text.replace(text.find("<box size=\"0.2 0.3 0.1\"/>"), 25,
                 "<mesh filename=\"package://fanuc_support/meshes/a.stl\"/>");

    EXPECT_EQ(importArm(text)->getVendor(), "fanuc");
}

TEST_F(ImportUrdfTest, PartStandsAtTheOriginOfItsVisual)
{
    const auto robot =
        import(oneLinkUrdf("<sphere radius=\"0.05\"/>", "<origin xyz=\"0.1 0.2 0.3\" rpy=\"0.1 0.2 0.3\"/>"));

    const Matrix expected = Matrix::Move(100, 200, 300) * Matrix::Rpy(0.1, 0.2, 0.3);
    EXPECT_LT(expected.distance(partOf(*robot).getPose()), 1e-9);
}

TEST_F(ImportUrdfTest, EachVisualOfALinkIsAPart)
{
    const auto robot = import("<robot name=\"r\"><link name=\"body\">"
                              "<visual><geometry><box size=\"1 1 1\"/></geometry></visual>"
                              "<visual name=\"knob\"><geometry><sphere radius=\"1\"/></geometry></visual>"
                              "<visual><geometry><sphere radius=\"2\"/></geometry></visual>"
                              "<collision><geometry><box size=\"5 5 5\"/></geometry></collision></link></robot>");

    ASSERT_EQ(robot->getLinks()[0]->getParts().size(), 3u);
    EXPECT_EQ(partOf(*robot, 0, 0).getName(), "body");
    EXPECT_EQ(partOf(*robot, 0, 1).getName(), "knob");
    EXPECT_EQ(partOf(*robot, 0, 2).getName(), "body.3");
}

TEST_F(ImportUrdfTest, CollisionShapesShowWhereThereIsNoVisual)
{
    const auto robot =
        import("<robot name=\"r\"><link name=\"body\"><collision><geometry><box size=\"1 1 1\"/></geometry>"
               "</collision></link></robot>");

    EXPECT_EQ(robot->getLinks()[0]->getParts().size(), 1u);
}

TEST_F(ImportUrdfTest, MaterialGivesTheColour)
{
    const auto own =
        import(oneLinkUrdf("<sphere radius=\"1\"/>", "<material name=\"\"><color rgba=\"1 0.5 0 1\"/></material>"));
    EXPECT_EQ(sdf::textAt(*partOf(*own).getBodies()[0]->getElement(), "visual/color"), "#FF8000");

    std::string named = oneLinkUrdf("<sphere radius=\"1\"/>", "<material name=\"blue\"/>");
    named.insert(named.find("<link"), "<material name=\"blue\"><color rgba=\"0 0 1 1\"/></material>");
    EXPECT_EQ(sdf::textAt(*partOf(*import(named)).getBodies()[0]->getElement(), "visual/color"), "#0000FF");
}

TEST_F(ImportUrdfTest, MeshIsFoundRelativeToTheRobot)
{
    folder.write("meshes/a.stl", test::triangleStl());

    const auto robot = import(oneLinkUrdf("<mesh filename=\"meshes/a.stl\"/>"));

    const auto body = partOf(*robot).getBodies()[0];
    EXPECT_EQ(body->getFileType(), "stl");
    EXPECT_THAT(body->getGeometryUri(), StartsWith((cache.path() / "a-").string()));
}

TEST_F(ImportUrdfTest, MeshIsFoundInThePackageWhoseNameIsInAFolderAbove)
{
    folder.write("pkg/package.xml", "<package><name> arm_support </name></package>");
    folder.write("pkg/meshes/a.stl", test::triangleStl());

    const auto robot =
        import(oneLinkUrdf("<mesh filename=\"package://arm_support/meshes/a.stl\"/>"), "pkg/urdf/deep/robot.urdf");

    EXPECT_EQ(partOf(*robot).getBodies().size(), 1u);
}

TEST_F(ImportUrdfTest, MeshIsFoundInThePackageBesideTheRobot)
{
    folder.write("arm_support/meshes/a.stl", test::triangleStl());

    EXPECT_NO_THROW(import(oneLinkUrdf("<mesh filename=\"package://arm_support/meshes/a.stl\"/>")));
    EXPECT_NO_THROW(
        import(oneLinkUrdf("<mesh filename=\"package://arm_support/meshes/a.stl\"/>"), "other/urdf/robot.urdf"));
    EXPECT_NO_THROW(
        import(oneLinkUrdf("<mesh filename=\"package://arm_support/meshes/a.stl\"/>"), "arm_support/robot.urdf"));
}

TEST_F(ImportUrdfTest, MeshIsFoundByItsFileUri)
{
    const std::filesystem::path mesh = folder.write("a b.stl", test::triangleStl());

    EXPECT_NO_THROW(import(oneLinkUrdf("<mesh filename=\"file://" + folder.path().string() + "/a%20b.stl\"/>")));
}

TEST_F(ImportUrdfTest, MissingMeshIsToldOf)
{
    expectRefused(oneLinkUrdf("<mesh filename=\"meshes/a.stl\"/>"),
                  "the mesh 'meshes/a.stl' of the link 'body' is not there");
    expectRefused(oneLinkUrdf("<mesh filename=\"package://none/a.stl\"/>"),
                  "the mesh 'package://none/a.stl' of the link 'body' is not there");
    expectRefused(oneLinkUrdf("<mesh filename=\"package://none\"/>"),
                  "the mesh 'package://none' of the link 'body' is not there");
}

TEST_F(ImportUrdfTest, FailureIsOneLineWhateverTheNamesAre)
{
    expectRefused("<robot name=\"r\"><link name=\"a\"/><link name=\"b\"/>" + jointTo("b\n") + jointTo("b\n") +
                      "</robot>",
                  "the link 'b ' hangs on two joints");
    expectRefused(oneLinkUrdf("<mesh filename=\"a\nb.stl\"/>"), "the mesh 'a b.stl' of the link 'body' is not there");
}

TEST_F(ImportUrdfTest, DamagedMeshIsToldOf)
{
    const std::filesystem::path mesh = folder.write("a.stl", "no mesh");
    const std::filesystem::path file = folder.write("robot.urdf", oneLinkUrdf("<mesh filename=\"a.stl\"/>"));

    EXPECT_THAT([&] { ImportUrdf(file); },
                ThrowsMessage<ImportError>(mesh.string() + ": neither a binary nor an ascii STL file"));
}

TEST_F(ImportUrdfTest, ShapeThatIsNoNumberIsRefusedByTheNameOfItsLink)
{
    const std::filesystem::path file = folder.write("robot.urdf", oneLinkUrdf("<box size=\"x 1 1\"/>"));

    EXPECT_THAT([&] { ImportUrdf(file); },
                testing::Throws<ImportError>(testing::Property(
                    &ImportError::what, testing::StartsWith(file.string() + ": a shape of the link "))));
}

TEST_F(ImportUrdfTest, FloatingJointIsFixed)
{
    const auto frame =
        import("<robot name=\"r\"><link name=\"a\"/><link name=\"b\"/>"
               "<joint name=\"l\" type=\"floating\"><parent link=\"a\"/><child link=\"b\"/></joint></robot>");

    EXPECT_EQ(frame->getJoints()[0].type, JointType::Fixed);
}

TEST_F(ImportUrdfTest, JointThatMimicsAnotherFollowsIt)
{
    const auto robot =
        importArm("<robot name=\"r\"><link name=\"a\"/><link name=\"b\"/><link name=\"c\"/>"
                  "<joint name=\"k\" type=\"continuous\"><parent link=\"a\"/><child link=\"c\"/>"
                  "<mimic joint=\"j\" multiplier=\"-2\" offset=\"0.1\"/></joint>"
                  "<joint name=\"j\" type=\"continuous\"><parent link=\"a\"/><child link=\"b\"/></joint></robot>");

    robot->setJointValues(std::vector{0.5});

    for (const layout::Joint& joint : robot->getJoints())
        EXPECT_DOUBLE_EQ(joint.value, joint.name == "j" ? 0.5 : -0.9);
}

TEST_F(ImportUrdfTest, MimicOfAFingerIsInMetresPerMetre)
{
    const auto robot = importArm(
        "<robot name=\"r\"><link name=\"a\"/><link name=\"b\"/><link name=\"c\"/><link name=\"d\"/>"
        "<joint name=\"j\" type=\"prismatic\"><parent link=\"a\"/><child link=\"b\"/>"
        "<limit lower=\"0\" upper=\"0.04\" effort=\"1\" velocity=\"1\"/></joint>"
        "<joint name=\"k\" type=\"prismatic\"><parent link=\"a\"/><child link=\"c\"/>"
        "<limit lower=\"0\" upper=\"0.04\" effort=\"1\" velocity=\"1\"/><mimic joint=\"j\" offset=\"0.01\"/></joint>"
        "<joint name=\"t\" type=\"continuous\"><parent link=\"a\"/><child link=\"d\"/>"
        "<mimic joint=\"j\" multiplier=\"10\"/></joint></robot>");

    robot->setJointValues(std::vector{20.0});

    EXPECT_DOUBLE_EQ(robot->getJoints()[1].value, 30);
    EXPECT_DOUBLE_EQ(robot->getJoints()[2].value, 0.2);
    robot->setJointValues(std::vector{40.0});
    EXPECT_DOUBLE_EQ(robot->getJoints()[1].value, 40) << "held to its own limits";
}

TEST_F(ImportUrdfTest, MimicIsSavedWithTheStationAndFollowsAfterwards)
{
    const auto robot = importArm("<robot name=\"r\"><link name=\"a\"/><link name=\"b\"/><link name=\"c\"/>"
                                 "<joint name=\"j\" type=\"continuous\"><parent link=\"a\"/><child link=\"b\"/></joint>"
                                 "<joint name=\"k\" type=\"continuous\"><parent link=\"a\"/><child link=\"c\"/>"
                                 "<mimic joint=\"j\" multiplier=\"-2\" offset=\"0.1\"/></joint></robot>");
    robot->setJointValues(std::vector{0.5});
    layout::Layout::inst().addMechanism(robot);
    const std::filesystem::path file = folder / "cell.station.json";
    SaveStationFile(file);

    const layout::StationContent content = ReadStationFile(file);
    layout::Layout::inst().clear();

    ASSERT_EQ(content.manipulators.size(), 1u);
    Manipulator& read = *content.manipulators.front();
    EXPECT_EQ(read.getJoints()[1].follows, robot->getJoints()[1].follows);
    EXPECT_DOUBLE_EQ(read.getJoints()[1].value, -0.9);
    read.setJointValues(std::vector{0.0});
    EXPECT_DOUBLE_EQ(read.getJoints()[1].value, 0.1);
}

TEST_F(ImportUrdfTest, MimicOfNothingMovesByItself)
{
    const auto robot = importArm(
        "<robot name=\"r\"><link name=\"a\"/><link name=\"b\"/><link name=\"c\"/><link name=\"d\"/>"
        "<joint name=\"i\" type=\"continuous\"><parent link=\"a\"/><child link=\"b\"/>"
        "<mimic joint=\"nobody\"/></joint>"
        "<joint name=\"j\" type=\"continuous\"><parent link=\"a\"/><child link=\"c\"/><mimic joint=\"k\"/></joint>"
        "<joint name=\"k\" type=\"continuous\"><parent link=\"a\"/><child link=\"d\"/><mimic joint=\"j\"/></joint>"
        "</robot>");

    EXPECT_EQ(robot->jointValueCount(), 3u);
}

TEST_F(ImportUrdfTest, LoopOfJointsIsRefused)
{
    expectRefused("<robot name=\"r\"><link name=\"a\"/><link name=\"b\"/><link name=\"c\"/>" + jointTo("b", "c") +
                      jointTo("c", "b") + "</robot>",
                  "the joint 'to_c' closes a loop");
    expectRefused("<robot name=\"r\"><link name=\"a\"/>" + jointTo("a", "a") + "</robot>",
                  "the joint 'to_a' closes a loop");
}

TEST_F(ImportUrdfTest, LinkOnTwoJointsIsRefused)
{
    expectRefused("<robot name=\"r\"><link name=\"a\"/><link name=\"b\"/><link name=\"c\"/>" + jointTo("c", "a") +
                      jointTo("c", "b") + "</robot>",
                  "the link 'c' hangs on two joints");
}

TEST_F(ImportUrdfTest, TextThatIsNoRobotIsRefused)
{
    expectRefused("", "the file is empty");
    expectRefused("hello", "line 1: Error document empty.");
    expectRefused("<sdf/>", "not a robot description");
    expectRefused(std::string("<robot name=\"r\">\0</robot>", 25), "not a robot description");
    expectRefused("<robot name=\"r\">\n<link name=\"a\">\n", "line 3: Error reading end tag.");
}

TEST_F(ImportUrdfTest, RobotThatIsNotConnectedIsRefused)
{
    const std::filesystem::path file =
        folder.write("robot.urdf", "<robot name=\"r\"><link name=\"a\"/><link name=\"b\"/></robot>");
    EXPECT_THAT([&] { ImportUrdf(file); },
                ThrowsMessage<ImportError>(StartsWith(file.string() + ": not a robot description: ")));
}

TEST_F(ImportUrdfTest, DeepNestingIsRefused)
{
    std::string text = "<robot name=\"r\">";
    for (int i = 0; i < 100000; ++i)
        text += "<a x='/>'>";
    expectRefused(text, "not a robot description");
}

TEST_F(ImportUrdfTest, RemarksAndEmptyTagsAreNoNesting)
{
    std::string text = "<robot name=\"r\"><!-- ";
    for (int i = 0; i < 100; ++i)
        text += "<a>";
    text += " --><link name=\"a\"/>";
    for (int i = 0; i < 100; ++i)
        text += "<material name=\"m" + std::to_string(i) + "\"><color rgba=\"1 1 1 1\"/></material>";

    EXPECT_EQ(import(text + "</robot>")->getLinks().size(), 1u);
}

TEST_F(ImportUrdfTest, ShapeWithoutASizeIsRefused)
{
    for (const char* shape :
         {"<sphere radius=\"0\"/>", "<box size=\"1 -1 1\"/>", "<cylinder radius=\"1\" length=\"1e9\"/>"})
        expectRefused(oneLinkUrdf(shape), "a shape of the link 'body' has no size");
}

TEST_F(ImportUrdfTest, AxisWithoutADirectionIsRefused)
{
    std::string text = armUrdf();
    text.replace(text.find("<axis xyz=\"1 2 -2\"/>"), 21, "<axis xyz=\"0 0 0\"/>");
    expectRefused(text, "the axis of the joint 'turn' has no direction");
}

TEST_F(ImportUrdfTest, PlaceFartherOutThanAnyRobotReachesIsRefused)
{
    const std::string bare =
        "<link name=\"b\"><visual><origin xyz=\"0 0 1e20\"/><geometry><box size=\"1 1 1\"/></geometry>"
        "</visual></link>";
    expectRefused("<robot name=\"r\">" + bare + "</robot>", "something of the link 'b' lies nowhere");

    expectRefused(
        "<robot name=\"r\"><link name=\"a\"/><link name=\"b\"/><joint name=\"j\" type=\"fixed\"><parent link=\"a\"/>"
        "<child link=\"b\"/><origin xyz=\"-1e300 0 0\"/></joint></robot>",
        "something of the link 'b' lies nowhere");
}

TEST_F(ImportUrdfTest, LimitsTheWrongWayRoundAreRefused)
{
    std::string text = armUrdf();
    text.replace(text.find("lower=\"-1.5\""), 12, "lower=\"2.5\"");
    expectRefused(text, "the joint 'turn': the lower limit of a joint lies above the upper one");
}

TEST_F(ImportUrdfTest, MissingFileIsToldOf)
{
    EXPECT_THAT([&] { ImportUrdf(folder / "robot.urdf"); },
                ThrowsMessage<ImportError>((folder / "robot.urdf").string() + ": no such file"));
}

TEST_F(ImportUrdfTest, EndingIsKnownInAnyCase)
{
    EXPECT_TRUE(isUrdfFile("a/robot.URDF"));
    EXPECT_FALSE(isUrdfFile("robot.xml"));
}

TEST_F(ImportUrdfTest, RobotIsSavedWithItsShapesBesideTheStation)
{
    folder.write("meshes/a.stl", test::triangleStl());
    std::string text = armUrdf("kuka");
    text.replace(text.find("<link name=\"upper\"/>"), 20,
                 "<link name=\"upper\"><visual><geometry><mesh filename=\"meshes/a.stl\"/></geometry></visual></link>");
    layout::Layout::inst().addMechanism(import(text));

    SaveStationFile(folder / "cell.station.json");
    std::filesystem::remove_all(cache.path());
    LoadStationFile(folder / "cell.station.json");

    const Manipulator& arm = *layout::Layout::inst().manipulators.at(0);
    EXPECT_EQ(partOf(arm, 0).getBodies()[0]->getFaceMap().Extent(), 6);
    EXPECT_THAT(partOf(arm, 1).getBodies()[0]->getGeometryUri(), HasSubstr("cell.files/a-"));
    EXPECT_EQ(arm.getVendor(), "kuka");
    const std::string first = test::TempFolder::Read(folder / "cell.station.json");
    SaveStationFile(folder / "cell.station.json");
    EXPECT_EQ(test::TempFolder::Read(folder / "cell.station.json"), first);
}

} // namespace
} // namespace vrk::station
