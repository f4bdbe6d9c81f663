#include "platform/layout/Body.h"
#include "support/SceneFixture.h"
#include "view/Camera.h"
#include "visual/RenderGroups.h"
#include "visual/SolidVisual.h"

#include <BRepPrimAPI_MakeSphere.hxx>
#include <Ogre.h>

namespace vrk::visual {
namespace {

using test::lookingAtOrigin;
using test::Picture;
using test::Pixel;
using test::View;

const Pixel background{115, 115, 115}; // 0.45

class EnvironmentPicture : public test::RenderTest {
protected:
    SolidVisual* addBody(const TopoDS_Shape& shape, const std::string& uri, const std::string& color)
    {
        const auto body = test::addModelBody(shape, uri, color);
        SolidVisual::Build(world, body.get(), shape);
        return static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    }
};

TEST_F(EnvironmentPicture, Grid)
{
    showGrid(true);

    const Picture picture = render(lookingAtOrigin(20000));

    EXPECT_TRUE(matchesBaseline(picture, "grid_z"));
}

TEST_F(EnvironmentPicture, Axes)
{
    showCornerAxes(true);
    showGrid(true);

    const Picture picture = render(lookingAtOrigin(6000));

    EXPECT_TRUE(matchesBaseline(picture, "corner_axes_400"));
}

TEST_F(EnvironmentPicture, Border)
{
    showGrid(true);
    SolidVisual* light = addBody(test::meshedBox(200, 200, 200), "border-light", "#F0F0F0");
    light->setPosition(-250, 0, 0);
    SolidVisual* dark = addBody(test::meshedBox(200, 200, 200), "border-dark", "#101010");
    dark->setPosition(50, 0, 0);
    SolidVisual* ball = addBody(test::meshed(BRepPrimAPI_MakeSphere(100).Shape()), "border-ball", "#A0A4A8");
    ball->setPosition(0, -150, 100);
    ball->setSelected();
    scene.setBorderHighlightEnabled(true);

    const Picture picture = render(lookingAtOrigin(700));
    scene.setBorderHighlightEnabled(false);

    EXPECT_TRUE(matchesBaseline(picture, "border_highlight"));
}

} // namespace
} // namespace vrk::visual
