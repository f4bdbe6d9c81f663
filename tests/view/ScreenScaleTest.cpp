#include "view/ScreenScale.h"

#include "ViewTools.h"

#include "support/SceneFixture.h"
#include "view/Camera.h"

#include <vector>

namespace vrk::visual {
namespace {

using testing::ElementsAre;
using testing::FloatNear;
using testing::IsEmpty;
using testing::Not;

class ScreenScaleTest : public test::RenderTest {
protected:
    auto keepDistance()
    {
        return [this](float distance) { distances.push_back(distance); };
    }

    Visual& visual = *new Visual(world);
    std::vector<float> distances;
};

TEST_F(ScreenScaleTest, EachPictureGivesTheDistanceFromTheMainCamera)
{
    const ScreenScale scale(visual, keepDistance());

    render(test::lookingAtOrigin(1000));
    ASSERT_THAT(distances, Not(IsEmpty()));
    EXPECT_THAT(distances, testing::Each(FloatNear(1000, 0.01f)));

    distances.clear();
    render(test::lookingAtOrigin(250));
    ASSERT_THAT(distances, Not(IsEmpty()));
    EXPECT_THAT(distances, testing::Each(FloatNear(250, 0.01f)));
}

TEST_F(ScreenScaleTest, DistanceIsThatOfTheVisualInTheWorld)
{
    auto* parent = new Visual(world);
    parent->setPosition(100, 0, 0);
    visual.attachTo(parent);
    visual.setPosition(0, 0, 20);
    Camera::Get()->setWorldPosition({100, 0, 320});
    const ScreenScale scale(visual, keepDistance());

    scale.update();

    EXPECT_THAT(distances, ElementsAre(FloatNear(300, 0.001f)));
}

TEST_F(ScreenScaleTest, EndsWithItself)
{
    {
        const ScreenScale scale(visual, keepDistance());
    }

    render(test::lookingAtOrigin(1000));

    EXPECT_THAT(distances, IsEmpty());
}

} // namespace
} // namespace vrk::visual
