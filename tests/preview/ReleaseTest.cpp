#include "PreviewFixture.h"

#include "preview/marks/PickedMarks.h"
#include "preview/marks/PreviewVisualsHelper.h"
#include "scene/Init.h"

namespace vrk::visual {
namespace {

using PreviewRelease = test::WithPreviews<test::SceneFixture>;

// By itself in its program: after it there are no marks any more.
TEST_F(PreviewRelease, EndsCrossesAndLinesAndLeavesTheFrames)
{
    ASSERT_EQ(kindsOn<SelectPointVisual>(*world).size(), 6u);
    ASSERT_EQ(kindsOn<FromToLineVisual>(*world).size(), 3u);
    PreviewVisualsHelper* helper = PreviewVisualsHelper::Get();
    helper->addPrimaryTo({1, 2, 3});
    helper->removeAllVisuals();

    ReleaseResources();

    EXPECT_TRUE(kindsOn<SelectPointVisual>(*world).empty());
    EXPECT_TRUE(kindsOn<FromToLineVisual>(*world).empty());
    EXPECT_EQ(kindsOn<PreviewFrameVisual>(*world).size(), 2u);
    EXPECT_EQ(PreviewVisualsHelper::Get(), helper) << "the pointer stays as it was";
    EXPECT_NO_THROW(drain()) << "what was still posted is passed over";
    EXPECT_NO_THROW(ReleaseResources()) << "a second call ends nothing twice";
}

} // namespace
} // namespace vrk::visual
