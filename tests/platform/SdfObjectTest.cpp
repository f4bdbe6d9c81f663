#include "platform/sdf/SdfObject.h"

#include "platform/sdf/SdfManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>

namespace sdf {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vrk::rob::Posd;
using vrk::rob::Posed;

TEST(SdfObject, HasWhatItWasMadeWith)
{
    SdfObject object(ModelType::Tool, 5, "gripper");
    object.setName("pliers");

    EXPECT_EQ(object.getId(), 5u);
    EXPECT_EQ(object.getName(), "pliers");
    EXPECT_EQ(object.getModelType(), ModelType::Tool);
    EXPECT_TRUE(object.asType(ModelType::Tool));
    EXPECT_FALSE(object.asType(ModelType::Part));
    EXPECT_EQ(object.getPose(), Posed());
}

TEST(SdfObject, WithItsPlaceOnAnotherStandsByItself)
{
    SdfObject object(ModelType::Frame, 5, "frame");
    EXPECT_EQ(object.getParentId(), 0u);
    EXPECT_TRUE(object.isStandalone());

    object.setParentId(3);

    EXPECT_EQ(object.getParentId(), 3u);
    EXPECT_TRUE(object.isStandalone());
}

TEST(SdfObject, OfAContainerDoesNotStandByItself)
{
    SdfContainer owner(ModelType::Assembly, 3, "assembly");
    SdfObject object(ModelType::Part, 5, "part");

    owner.addChild(object);
    EXPECT_FALSE(object.isStandalone());

    object.setParentId(0); // let go
    EXPECT_TRUE(object.isStandalone());
}

TEST(SdfContainer, ForeignChildKeepsItsParent)
{
    SdfContainer task(ModelType::Task, 3, "task");
    SdfObject item(ModelType::ToolData, 5, "tool data");
    item.setParentId(7);

    task.addForeignChild(item);

    EXPECT_EQ(item.getParentId(), 7u);
    EXPECT_THAT(task.getObjChildren(), ElementsAre(5));
}

TEST(SdfObject, GathersNothing)
{
    const SdfObject object(ModelType::Frame, 5, "frame");
    std::vector<SdfObject*> members;

    object.getMembers(members);

    EXPECT_THAT(members, IsEmpty());
}

TEST(SdfNode, PoseIsTheElementOfThatName)
{
    SdfNode node(ModelType::Frame, 5, "frame");
    EXPECT_EQ(node.getPose(), Posed());

    node.setPose(Posed(Posd(1, 2, 3)));

    EXPECT_EQ(node.getPose(), Posed(Posd(1, 2, 3)));
    EXPECT_EQ(node.getElement()->get("pose")->asPose(), Posed(Posd(1, 2, 3)));
}

class SdfContainerTest : public testing::Test {
protected:
    SdfContainerTest()
    {
        const std::unique_lock lock(SdfManager::inst().mutex());
        for (const std::shared_ptr<SdfObject>& child : {first, second}) {
            SdfManager::inst().add(child);
            container.addChild(*child);
        }
    }
    ~SdfContainerTest() override
    {
        const std::unique_lock lock(SdfManager::inst().mutex());
        SdfManager::inst().clear();
    }

    SdfContainer container{ModelType::Assembly, 10, "assembly"};
    std::shared_ptr<SdfObject> first = std::make_shared<SdfObject>(ModelType::Frame, 11, "first");
    std::shared_ptr<SdfObject> second = std::make_shared<SdfObject>(ModelType::Frame, 12, "second");
};

TEST_F(SdfContainerTest, ChildrenStandInOrderAndKnowTheirParent)
{
    EXPECT_THAT(container.getObjChildren(), ElementsAre(11, 12));
    EXPECT_THAT(container.getChildren(), ElementsAre(first.get(), second.get()));
    EXPECT_EQ(first->getParentId(), 10u);
}

TEST_F(SdfContainerTest, MembersAreAppended)
{
    SdfObject other(ModelType::Frame, 13, "other");
    std::vector<SdfObject*> members{&other};

    container.getMembers(members);

    EXPECT_THAT(members, ElementsAre(&other, first.get(), second.get()));
}

TEST_F(SdfContainerTest, ChildThatTheManagerDoesNotKnowIsLeftOut)
{
    const std::unique_lock lock(SdfManager::inst().mutex());
    SdfManager::inst().remove(11);

    EXPECT_THAT(container.getChildren(), ElementsAre(second.get()));
    EXPECT_THAT(container.getObjChildren(), ElementsAre(11, 12));
}

TEST_F(SdfContainerTest, RemovedChildIsGone)
{
    container.removeChild(11);
    container.removeChild(99);

    EXPECT_THAT(container.getObjChildren(), ElementsAre(12));
}

TEST(ModelType, NumbersThatApplicationsKnowAreFixed)
{
    const std::pair<ModelType, unsigned> fixed[] = {
        {ModelType::Assembly, 2}, {ModelType::Part, 4},        {ModelType::Manipulator, 9}, {ModelType::Tool, 10},
        {ModelType::Device, 11},  {ModelType::GroupFirst, 53}, {ModelType::GroupLast, 57}};
    for (const auto& [type, number] : fixed)
        EXPECT_EQ(static_cast<unsigned>(type), number);
}

TEST(ModelType, GroupsAreTheFiveKindsFrom53To57)
{
    EXPECT_FALSE(isGroup(ModelType(52)));
    for (unsigned code = 53; code <= 57; ++code)
        EXPECT_TRUE(isGroup(ModelType(code))) << code;
    EXPECT_FALSE(isGroup(ModelType(58)));
    EXPECT_FALSE(isGroup(ModelType::Part));
}

} // namespace
} // namespace sdf
