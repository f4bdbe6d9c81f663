#include "platform/station/StationFile.h"

#include "CacheFolder.h"
#include "StationModels.h"

#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <shared_mutex>

namespace vrk::station {
namespace {

using Json = nlohmann::ordered_json;
using layout::Layout;
using testing::ElementsAre;
using testing::StrEq;
using testing::ThrowsMessage;

const std::string arm = R"({"id": 1, "name": "arm", "pose": [0,0,0,1,0,0,0], "vendor": "kuka",
    "links": [{"id": 2, "name": "a", "pose": [0,0,0,1,0,0,0], "members": []},
              {"id": 3, "name": "b", "pose": [0,0,0,1,0,0,0], "members": []},
              {"id": 4, "name": "c", "pose": [0,0,0,1,0,0,0], "members": []}],
    "joints": [{"name": "j", "type": "revolute", "parent": 2, "child": 3, "origin": [0,0,0,1,0,0,0],
                "axis": [0,0,1], "limits": [-1,1], "value": 0}],
    "wrist": {"id": 5, "name": "w", "on": 3, "pose": [0,0,0,1,0,0,0]},
    "task_frame": {"id": 6, "name": "t", "pose": [0,0,0,1,0,0,0]}})";

/// A valid station of no files, with one of everything that faults are put into.
Json validStation()
{
    Json station = Json::parse(R"({"format": "vrk-station", "version": 1,
      "assemblies": [{"id": 10, "name": "s", "pose": [0,0,0,1,0,0,0],
                      "members": [{"type": "part", "id": 11, "name": "m", "pose": [0,0,0,1,0,0,0], "bodies": []}]}],
      "parts": [{"id": 20, "name": "p", "pose": [0,0,0,1,0,0,0], "bodies": []}],
      "devices": [{"id": 30, "name": "d", "pose": [0,0,0,1,0,0,0], "links": [],
                   "frames": [{"id": 31, "name": "f", "on": 30, "pose": [0,0,0,1,0,0,0]}]}],
      "frames": [{"id": 40, "name": "f", "pose": [0,0,0,1,0,0,0]}],
      "groups": [{"id": 50, "name": "g", "type": 53, "members": [20]},
                 {"id": 51, "name": "h", "type": 54, "members": [50]}],
      "components": [{"id": 60, "name": "c", "kind": "component"}],
      "tasks": [{"id": 70, "name": "t", "manipulator": 1, "data": [
        {"type": "tool", "id": 71, "name": "t", "owner": 1, "pose": [0,0,0,1,0,0,0]},
        {"type": "work_object", "id": 72, "name": "w", "pose": [0,0,0,1,0,0,0], "fixed": true,
         "object_frame": {"id": 73, "name": "o", "pose": [0,0,0,1,0,0,0]}},
        {"type": "joint_target", "id": 74, "name": "j", "pose": [0,0,0,1,0,0,0], "values": [0, 1]}]}],
      "operations": [{"id": 80, "name": "o", "members": [70]}],
      "attachments": [{"child": 20, "parent": 3, "pose": [0,0,0,1,0,0,0]}],
      "hidden": [20]})");
    station["manipulators"] = Json::array({Json::parse(arm)});
    return station;
}

struct Fault {
    const char* name;
    const char* at;       // a JSON pointer, where `value` is put
    const char* value;    // null removes
    const char* expected; // the text behind the file's name
};

class StationFault : public testing::TestWithParam<Fault> {
protected:
    ~StationFault() override { Layout::inst().clear(); }

    test::TempFolder folder;
    test::CacheFolder cache;
};

TEST_P(StationFault, IsRefusedWithItsPlaceAndTheStationStays)
{
    const Fault& fault = GetParam();
    const auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "stays");
    Layout::inst().addPart(part);
    Layout::inst().setHidden(part->getId(), true);
    Json station = validStation();
    const Json::json_pointer at(fault.at);
    if (fault.value)
        station[at] = Json::parse(fault.value);
    else
        station[at.parent_pointer()].erase(at.back());
    const std::filesystem::path file = folder.write("cell.station.json", station.dump());

    EXPECT_THAT([&] { LoadStationFile(file); },
                ThrowsMessage<StationFileError>(StrEq(file.string() + ": " + fault.expected)));

    EXPECT_THAT(Layout::inst().parts, ElementsAre(part));
    EXPECT_THAT(Layout::inst().visibilities, ElementsAre(part->getId()));
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    EXPECT_EQ(sdf::SdfManager::inst().size(), 1u);
    EXPECT_EQ(sdf::SdfManager::inst().find(part->getId()), part.get());
}

const char* const turned = "[0,0,0,1,0,0,0]";
const char* const newFrame = R"([{"id": 40, "name": "f", "parent": 41, "pose": [0,0,0,1,0,0,0]},
                                 {"id": 41, "name": "g", "pose": [0,0,0,1,0,0,0]}])";
const char* const bodyOf = R"([{"id": 21, "name": "b", "geometry": {"uri": "a.stl", "file_type": "obj"}}])";
const char* const bodyInFeet =
    R"([{"id": 21, "name": "b", "geometry": {"uri": "a.stl", "file_type": "stl", "unit": "ft"}}])";
const char* const shapeInMetres =
    R"([{"id": 21, "name": "b", "geometry": {"uri": "a.brep", "file_type": "brep", "unit": "m"}}])";
const char* const bodyAway = R"([{"id": 21, "name": "b", "geometry": {"uri": "no/a.stl", "file_type": "stl"}}])";
const char* const coloured = R"([{"id": 21, "name": "b", "color": "red",
                                  "geometry": {"uri": "resource://a.stl", "file_type": "stl"}}])";
const char* const faceZero = R"([{"id": 21, "name": "b", "face_colors": {"0": "#FFFFFF"},
                                  "geometry": {"uri": "resource://a.stl", "file_type": "stl"}}])";
const char* const jointBack = R"({"name": "k", "type": "fixed", "parent": 3, "child": 2, "origin": [0,0,0,1,0,0,0]})";
const char* const jointTwice = R"({"name": "k", "type": "fixed", "parent": 4, "child": 3, "origin": [0,0,0,1,0,0,0]})";
const char* const jointAway = R"({"name": "k", "type": "fixed", "parent": 3, "child": 20, "origin": [0,0,0,1,0,0,0]})";
const char* const fixedWithAxis = R"({"name": "k", "type": "fixed", "parent": 3, "child": 4,
                                      "origin": [0,0,0,1,0,0,0], "axis": [0,0,1]})";
const char* const carriedTwice = R"({"child": 20, "parent": 40, "pose": [0,0,0,1,0,0,0]})";
const char* const carriesItself = R"({"child": 1, "parent": 20, "pose": [0,0,0,1,0,0,0]})";
const char* const loose = R"({"type": "tool", "id": 75, "name": "t", "pose": [0,0,0,1,0,0,0]})";

INSTANTIATE_TEST_SUITE_P(
    Table, StationFault,
    testing::Values(
        Fault{"OtherFormat", "/format", "\"other\"", "/format: expected \"vrk-station\""},
        Fault{"NoFormat", "/format", nullptr, "/: expected the key 'format'"},
        Fault{"LaterVersion", "/version", "6", "/version: expected a version from 1 to 5"},
        Fault{"VersionAsText", "/version", "\"1\"", "/version: expected a version from 1 to 5"},
        Fault{"VersionWithAPart", "/version", "1.5", "/version: expected a version from 1 to 5"},
        Fault{"VersionBeyondAnyNumber", "/version", "4294967297", "/version: expected a version from 1 to 5"},
        Fault{"UnknownKey", "/robots", "[]", "/robots: expected no such key"},
        Fault{"UnknownKeyInside", "/parts/0/nmae", "\"p\"", "/parts/0/nmae: expected no such key"},
        Fault{"ListThatIsNone", "/parts", "{}", "/parts: expected an array"},
        Fault{"ObjectThatIsNone", "/parts/0", "5", "/parts/0: expected an object"},
        Fault{"NameThatIsNoText", "/parts/0/name", "5", "/parts/0/name: expected a text"},
        Fault{"NoName", "/parts/0/name", nullptr, "/parts/0: expected the key 'name'"},
        Fault{"TruthThatIsNone", "/parts/0/detectable", "1", "/parts/0/detectable: expected true or false"},
        Fault{"IdZero", "/parts/0/id", "0", "/parts/0/id: expected an id from 1 to 2147483646"},
        Fault{"IdBelowZero", "/parts/0/id", "-5", "/parts/0/id: expected an id from 1 to 2147483646"},
        Fault{"IdOfTheStation", "/parts/0/id", "2147483647", "/parts/0/id: expected an id from 1 to 2147483646"},
        Fault{"IdThatIsNotWhole", "/parts/0/id", "1.5", "/parts/0/id: expected an id from 1 to 2147483646"},
        Fault{"IdTwice", "/parts/0/id", "11", "/parts/0/id: expected an id that nothing else has, not 11"},
        Fault{"IdTwiceInside", "/tasks/0/data/1/object_frame/id", "1",
              "/tasks/0/data/1/object_frame/id: expected an id that nothing else has, not 1"},
        Fault{"PoseTooShort", "/parts/0/pose", "[0,0,0]", "/parts/0/pose: expected 7 numbers"},
        Fault{"PoseWithoutNumber", "/parts/0/pose/1", "null", "/parts/0/pose/1: expected a finite number"},
        Fault{"PoseOfAnotherLength", "/parts/0/pose/3", "2",
              "/parts/0/pose: expected a rotation of length 1 in the last four numbers"},
        Fault{"PoseTooFarOut", "/parts/0/pose/1", "-2e12",
              "/parts/0/pose: expected a place of up to 1e12 on each axis"},
        Fault{"ViewThatIsNoPose", "/view", "[]", "/view: expected 7 numbers"},
        Fault{"UnknownParent", "/parts/0/parent", "999",
              "/parts/0/parent: expected the id of an object of the station, not 999"},
        Fault{"ParentIsItself", "/assemblies/0/parent", "10",
              "/assemblies/0/parent: expected an owner that does not lie on the object itself"},
        Fault{"ParentLiesOnIt", "/assemblies/0/parent", "11",
              "/assemblies/0/parent: expected an owner that does not lie on the object itself"},
        Fault{"ParentThatIsNoId", "/parts/0/parent", "\"world\"",
              "/parts/0/parent: expected an id from 1 to 2147483646"},
        Fault{"MemberOfAnotherType", "/assemblies/0/members/0/type", "\"link\"",
              "/assemblies/0/members/0/type: expected \"part\" or \"assembly\""},
        Fault{"MemberWithAParent", "/assemblies/0/members/0/parent", "1",
              "/assemblies/0/members/0/parent: expected no such key"},
        Fault{"OtherFileType", "/parts/0/bodies", bodyOf,
              "/parts/0/bodies/0/geometry/file_type: expected \"brep\", \"stl\" or \"mesh\""},
        Fault{"OtherUnit", "/parts/0/bodies", bodyInFeet,
              "/parts/0/bodies/0/geometry/unit: expected \"mm\", \"cm\", \"m\" or \"in\""},
        Fault{"UnitOfAShape", "/parts/0/bodies", shapeInMetres,
              "/parts/0/bodies/0/geometry/unit: expected no unit, as a shape has its own"},
        Fault{"GeometryThatIsNotThere", "/parts/0/bodies", bodyAway,
              "/parts/0/bodies/0/geometry/uri: expected a file that is there, not 'no/a.stl'"},
        Fault{"ColourThatIsNone", "/parts/0/bodies", coloured,
              "/parts/0/bodies/0/color: expected a colour such as \"#ED1C24\""},
        Fault{"FaceZero", "/parts/0/bodies", faceZero,
              "/parts/0/bodies/0/face_colors/0: expected the number of a face, from 1, as the key"},
        Fault{"JointsInALoop", "/manipulators/0/joints/1", jointBack,
              "/manipulators/0/joints/1: expected a joint of its mechanism: joints must not form a loop"},
        Fault{"LinkOnTwoJoints", "/manipulators/0/joints/1", jointTwice,
              "/manipulators/0/joints/1: expected a joint of its mechanism: a link hangs on one joint only"},
        Fault{"JointElsewhere", "/manipulators/0/joints/1", jointAway,
              "/manipulators/0/joints/1: expected a joint of its mechanism: a joint connects links of its mechanism"},
        Fault{"JointOfAnotherType", "/manipulators/0/joints/0/type", "\"ball\"",
              "/manipulators/0/joints/0/type: expected \"fixed\", \"revolute\", \"continuous\" or \"prismatic\""},
        Fault{"LimitsTheWrongWayRound", "/manipulators/0/joints/0/limits", "[1,-1]",
              "/manipulators/0/joints/0: expected a joint of its mechanism: the lower limit of a joint lies above the "
              "upper one"},
        Fault{"ValueOutsideItsLimits", "/manipulators/0/joints/0/value", "1.5",
              "/manipulators/0/joints/0/value: expected a value between the limits"},
        Fault{
            "FollowerOfNobody", "/manipulators/0/joints/0",
            R"({"name": "j", "type": "revolute", "parent": 2, "child": 3, "origin": [0,0,0,1,0,0,0], "axis": [0,0,1],
                  "limits": [-1,1], "follows": {"joint": "x", "factor": 1, "offset": 0}})",
            "/manipulators/0/joints/0/follows/joint: expected the name of a joint that moves by itself, or follows one "
            "that does"},
        Fault{"FollowerWithAValue", "/manipulators/0/joints/0/follows", R"({"joint": "j", "factor": 1, "offset": 0})",
              "/manipulators/0/joints/0/value: expected no such key for a joint of this type"},
        Fault{"AxisOfAnotherLength", "/manipulators/0/joints/0/axis", "[0,0,2]",
              "/manipulators/0/joints/0: expected a joint of its mechanism: a joint's axis has length 1"},
        Fault{"FixedJointWithAnAxis", "/manipulators/0/joints/1", fixedWithAxis,
              "/manipulators/0/joints/1/axis: expected no such key for a joint of this type"},
        Fault{"WristElsewhere", "/manipulators/0/wrist/on", "20",
              "/manipulators/0/wrist/on: expected another id: the wrist lies on its manipulator or one of its links"},
        Fault{"DeviceFrameElsewhere", "/devices/0/frames/0/on", "20",
              "/devices/0/frames/0/on: expected another id: a device's frame lies on the device or one of its links"},
        Fault{"FrameOnALaterOne", "/frames", newFrame,
              "/frames/0/parent: expected the id of an object that is seen and stands before, not 41"},
        Fault{"FrameOnItself", "/frames/0/parent", "40",
              "/frames/0/parent: expected the id of an object that is seen and stands before, not 40"},
        Fault{"GroupOfAnotherKind", "/groups/0/type", "4", "/groups/0/type: expected a kind of group, from 53 to 57"},
        Fault{"UnknownMember", "/groups/0/members/0", "999",
              "/groups/0/members/0: expected the id of an object of the station, not 999"},
        Fault{"GroupsInALoop", "/groups/0/members/0", "51",
              "/groups/0/members/0: expected a member that does not lead back to the group"},
        Fault{"OperationInItself", "/operations/0/members/0", "80",
              "/operations/0/members/0: expected a member that does not lead back to the group"},
        Fault{"UnknownKindOfComponent", "/components/0/kind", "\"magic\"",
              "/components/0/kind: expected a kind of component that the application knows"},
        Fault{"TaskOfNoManipulator", "/tasks/0/manipulator", "20",
              "/tasks/0/manipulator: expected the id of a manipulator, not 20"},
        Fault{"DataOfAnotherType", "/tasks/0/data/0/type", "\"speed\"",
              "/tasks/0/data/0/type: expected \"tool\", \"work_object\" or \"joint_target\""},
        Fault{"ToolDataOnTheWorld", "/tasks/0/data/0", loose, "/tasks/0/data/0: expected an owner that is seen"},
        Fault{"ToolDataOnAGroup", "/tasks/0/data/0/owner", "50",
              "/tasks/0/data/0/owner: expected the id of an object that is seen and stands before, not 50"},
        Fault{"ValuesThatAreNone", "/tasks/0/data/2/values", "[true]",
              "/tasks/0/data/2/values/0: expected a finite number"},
        Fault{"AttachmentOfAnUnknownChild", "/attachments/0/child", "999",
              "/attachments/0/child: expected the id of an object that is seen, not 999"},
        Fault{"AttachmentToAnUnknownParent", "/attachments/0/parent", "999",
              "/attachments/0/parent: expected the id of an object that is seen, not 999"},
        Fault{"AttachmentToATask", "/attachments/0/parent", "70",
              "/attachments/0/parent: expected the id of an object that is seen, not 70"},
        Fault{"AttachmentToItself", "/attachments/0/parent", "20",
              "/attachments/0/parent: expected an object that the child does not carry itself"},
        Fault{"AttachmentsInALoop", "/attachments/1", carriesItself,
              "/attachments/1/parent: expected an object that the child does not carry itself"},
        Fault{"ChildOfTwoCarriers", "/attachments/1", carriedTwice,
              "/attachments/1/child: expected an object that nothing else carries"},
        Fault{"UnknownHiddenId", "/hidden/0", "999",
              "/hidden/0: expected the id of an object of the station, not 999"}),
    [](const auto& info) { return std::string(info.param.name); });

const char* const point = R"({"kind": "point", "object": 20, "place": [0, 0, 1]})";
const char* const onePoint = R"([{"kind": "point", "object": 20, "place": [0, 0, 1]}])";
const char* const edge = R"({"kind": "edge", "object": 20, "number": 0, "place": [0, 0, 1]})";

/// Faults of the one dimension of a station that is valid otherwise.
class DimensionFault : public StationFault {
protected:
    Json stationWithDimension() const
    {
        Json station = validStation();
        station["version"] = 4;
        station["dimensions"] = Json::array({{{"name", "d"}, {"type", "distance"}}});
        station["dimensions"][0]["ends"] = Json::array({Json::parse(point), Json::parse(point)});
        return station;
    }
};

TEST_P(DimensionFault, IsRefusedWithItsPlace)
{
    const Fault& fault = GetParam();
    Json station = stationWithDimension();
    ASSERT_NO_THROW(LoadStationFile(folder.write("cell.station.json", station.dump())));
    const Json::json_pointer at(fault.at);
    if (fault.value)
        station[at] = Json::parse(fault.value);
    else
        station[at.parent_pointer()].erase(at.back());
    const std::filesystem::path file = folder.write("cell.station.json", station.dump());

    EXPECT_THAT([&] { LoadStationFile(file); },
                ThrowsMessage<StationFileError>(StrEq(file.string() + ": " + fault.expected)));
    EXPECT_EQ(Layout::inst().dimensions.size(), 1u) << "the station that was there stays";
}

INSTANTIATE_TEST_SUITE_P(
    Table, DimensionFault,
    testing::Values(
        Fault{"EarlierVersion", "/version", "3", "/dimensions: expected no such key before version 4"},
        Fault{
            "OtherType", "/dimensions/0/type", "\"volume\"",
            "/dimensions/0/type: expected \"distance\", \"angle\", \"diameter\", \"length\", \"area\" or \"nearest\""},
        Fault{"OneEnd", "/dimensions/0/ends", onePoint, "/dimensions/0/ends: expected two ends"},
        Fault{"TwoEndsOfALength", "/dimensions/0/type", "\"length\"", "/dimensions/0/ends: expected one end"},
        Fault{"NoName", "/dimensions/0/name", nullptr, "/dimensions/0: expected the key 'name'"},
        Fault{"NoEnds", "/dimensions/0/ends", nullptr, "/dimensions/0: expected the key 'ends'"},
        Fault{"UnknownKey", "/dimensions/0/value", "5", "/dimensions/0/value: expected no such key"},
        Fault{"OtherKind", "/dimensions/0/ends/1/kind", "\"corner\"",
              "/dimensions/0/ends/1/kind: expected \"point\", \"vertex\", \"edge\", \"face\", \"body\", "
              "\"mesh_vertex\", \"cloud_point\" or \"frame\""},
        Fault{"UnknownObject", "/dimensions/0/ends/0/object", "999",
              "/dimensions/0/ends/0/object: expected the id of an object of the station, not 999"},
        Fault{"PointWithANumber", "/dimensions/0/ends/0/number", "1",
              "/dimensions/0/ends/0/number: expected no such key for an end of this kind"},
        Fault{"EdgeZero", "/dimensions/0/ends/0", edge,
              "/dimensions/0/ends/0/number: expected a number from 1 to 2147483647"},
        Fault{"PlaceOfTwoNumbers", "/dimensions/0/ends/0/place", "[0, 0]",
              "/dimensions/0/ends/0/place: expected 3 numbers"}),
    [](const auto& info) { return std::string(info.param.name); });

/// Faults of the robots whose reach is shown, in the first version that has them.
class ReachFault : public StationFault {};

TEST_P(ReachFault, IsRefusedWithItsPlace)
{
    const Fault& fault = GetParam();
    Json station = validStation();
    station["version"] = 4;
    station["reach"] = Json::array({1});
    ASSERT_NO_THROW(LoadStationFile(folder.write("cell.station.json", station.dump())));
    station[Json::json_pointer(fault.at)] = Json::parse(fault.value);
    const std::filesystem::path file = folder.write("cell.station.json", station.dump());

    EXPECT_THAT([&] { LoadStationFile(file); },
                ThrowsMessage<StationFileError>(StrEq(file.string() + ": " + fault.expected)));
    EXPECT_THAT(Layout::inst().reaches, ElementsAre(1)) << "the station that was there stays";
}

INSTANTIATE_TEST_SUITE_P(
    Table, ReachFault,
    testing::Values(
        Fault{"EarlierVersion", "/version", "3", "/reach: expected no such key before version 4"},
        Fault{"ReachOfNothing", "/reach", "[999]",
              "/reach/0: expected the id of a manipulator of the station, not 999"},
        Fault{"ReachOfADevice", "/reach", "[30]", "/reach/0: expected the id of a manipulator of the station, not 30"},
        Fault{"ReachTwice", "/reach", "[1, 1]", "/reach/1: expected a manipulator that is not listed before"},
        Fault{"ReachAsText", "/reach", "[\"1\"]", "/reach/0: expected an id from 1 to 2147483646"},
        Fault{"ReachIsNoList", "/reach", "1", "/reach: expected an array"}),
    [](const auto& info) { return std::string(info.param.name); });

class StationTextFault : public testing::Test {
protected:
    ~StationTextFault() override { Layout::inst().clear(); }

    void expectRefused(const std::string& text, const std::string& expected) const
    {
        const std::filesystem::path file = folder.write("cell.station.json", text);
        EXPECT_THAT([&] { LoadStationFile(file); },
                    ThrowsMessage<StationFileError>(StrEq(file.string() + ": " + expected)));
    }

    test::TempFolder folder;
};

TEST_F(StationTextFault, StationWithoutAFaultIsRead)
{
    const std::filesystem::path file = folder.write("cell.station.json", validStation().dump());

    LoadStationFile(file);

    EXPECT_EQ(Layout::inst().objects().size(), 21u);
}

TEST_F(StationTextFault, MissingFileIsToldOf)
{
    const std::filesystem::path file = folder / "cell.station.json";

    EXPECT_THAT([&] { LoadStationFile(file); },
                ThrowsMessage<StationFileError>(file.string() + ": /: expected a file that can be read"));
    EXPECT_THAT([&] { LoadStationFile(folder.path()); },
                ThrowsMessage<StationFileError>(folder.path().string() + ": /: expected a file that can be read"));
}

TEST_F(StationTextFault, TextThatIsNoJsonIsToldWithItsLine)
{
    expectRefused("", "/: expected JSON in line 1");
    expectRefused("{\n\"format\": \"vrk-station\",\n\"version\"", "/version: expected JSON in line 3");
    expectRefused("{\n\"parts\": [{}, {\n\"id\" 5", "/parts/1/id: expected JSON in line 3");
    expectRefused("\xFF\xFE", "/: expected JSON in line 1");
}

TEST_F(StationTextFault, NumberThatNoDoubleHoldsIsToldWithItsPlace)
{
    expectRefused(R"({"parts": [{"pose": [0, 1e999]}]})", "/parts/0/pose/1: expected a finite number");
}

TEST_F(StationTextFault, FailureIsOneLineWhateverTheKeysAre)
{
    expectRefused(R"({"format": "vrk-station", "version": 1, "a\nb": 1})", "/a b: expected no such key");
}

TEST_F(StationTextFault, KeyTwiceIsToldWithItsPlace)
{
    expectRefused(R"({"parts": [{"id": 1, "id": 2}]})", "/parts/0/id: expected no key twice");
}

TEST_F(StationTextFault, OtherValueThanAnObjectIsRefused)
{
    expectRefused("[]", "/: expected an object");
    expectRefused("5", "/: expected an object");
}

TEST_F(StationTextFault, DeepNestingIsRefused)
{
    std::string open, close;
    for (int i = 0; i < 100; ++i) {
        open += R"({"type": "assembly", "id": )" + std::to_string(100 + i) +
                R"(, "name": "a", "pose": [0,0,0,1,0,0,0], "members": [)";
        close += "]}";
    }
    const std::string text = R"({"format": "vrk-station", "version": 1, "assemblies": [{"id": 1, "name": "a",
                               "pose": [0,0,0,1,0,0,0], "members": [)" +
                             open + close + "]}]}";
    std::string path = "/assemblies/0";
    for (int i = 0; i < 65; ++i)
        path += "/members/0";
    expectRefused(text, path + ": expected no more than 64 assemblies in each other");

    path.clear();
    for (int i = 0; i < 256; ++i)
        path += "/0";
    expectRefused(std::string(100000, '['), path + ": expected no more than 256 levels");
}

} // namespace
} // namespace vrk::station
