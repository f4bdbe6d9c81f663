#include "visual/ManualDrawing.h"

#include "support/SceneFixture.h"
#include "visual/Visual.h"

#include <Ogre.h>

#include <array>

namespace vrk::visual {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class ManualDrawingTest : public test::SceneFixture {
protected:
    static void addSection(ManualDrawing& drawing, const char* material)
    {
        drawing->begin(material, Ogre::RenderOperation::OT_LINE_LIST,
                       Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
        drawing->position(0, 0, 0);
        drawing->position(1, 0, 0);
        drawing->end();
    }
    const auto& objectsOf(const Visual& of) const { return of.getSceneNode()->getAttachedObjects(); }

    Visual& visual = *new Visual(world);
};

TEST_F(ManualDrawingTest, HangsOnTheNodeOfTheVisualUnderItsName)
{
    const ManualDrawing drawing(visual, "band");

    EXPECT_EQ(drawing->getName(), "band");
    ASSERT_THAT(objectsOf(visual), SizeIs(1));
    EXPECT_EQ(objectsOf(visual)[0], &*drawing);
}

TEST_F(ManualDrawingTest, SecondOneOfANameGetsAnotherName)
{
    const ManualDrawing first(visual, "band");
    const ManualDrawing second(visual, "band");

    EXPECT_EQ(first->getName(), "band");
    EXPECT_TRUE(second->getName().starts_with("band#")) << second->getName();
    EXPECT_THAT(objectsOf(visual), SizeIs(2));
}

TEST_F(ManualDrawingTest, EndTakesTheObjectOffTheNodeAndOutOfTheScene)
{
    {
        const ManualDrawing drawing(visual, "band");
        ASSERT_TRUE(sceneManager->hasManualObject("band"));
    }

    EXPECT_THAT(objectsOf(visual), IsEmpty());
    EXPECT_FALSE(sceneManager->hasManualObject("band"));
}

TEST_F(ManualDrawingTest, ColourAndMaterialReachEverySection)
{
    ManualDrawing drawing(visual, "band");
    addSection(drawing, "VertexColor");
    addSection(drawing, "TcpTrace");

    drawing.setColor({0.1f, 0.2f, 0.3f}, 0.4f);
    drawing.setMaterial("PointBase");

    ASSERT_THAT(drawing->getSections(), SizeIs(2));
    for (const auto* section : drawing->getSections()) {
        EXPECT_EQ(section->getCustomParameter(0), Ogre::Vector4(0.1f, 0.2f, 0.3f, 0.4f));
        EXPECT_EQ(section->getMaterialName(), "PointBase");
    }
}

TEST_F(ManualDrawingTest, UnknownMaterialChangesNothing)
{
    ManualDrawing drawing(visual, "band");
    addSection(drawing, "VertexColor");

    drawing.setMaterial("no such material");

    EXPECT_EQ(drawing->getSections()[0]->getMaterialName(), "VertexColor");
}

} // namespace
} // namespace vrk::visual
