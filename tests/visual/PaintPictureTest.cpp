#include "mesh/MeshManager.h"
#include "mesh/paint/PaintMesh.h"
#include "platform/layout/Body.h"
#include "support/SceneFixture.h"
#include "visual/PaintVisual.h"
#include "visual/SolidVisual.h"

#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <Ogre.h>

#include <algorithm>
#include <cmath>

namespace vrk::visual {
namespace {

using test::Picture;
using test::Pixel;

/// A bent workpiece, 200 long and 160 high about the origin: a plate with a pipe on it.
class PaintPicture : public test::RenderTest {
protected:
    PaintPicture()
    {
        const TopoDS_Shape plate = BRepPrimAPI_MakeBox(gp_Pnt(-100, -10, -80), gp_Pnt(100, 40, 80)).Shape();
        const TopoDS_Shape pipe = BRepPrimAPI_MakeCylinder(gp_Ax2({0, -10, -80}, gp_Dir(0, 0, 1)), 50, 160).Shape();
        const TopoDS_Shape shape = test::meshed(BRepAlgoAPI_Fuse(plate, pipe).Shape());
        const auto model = test::addModelBody(shape, "workpiece", "#8C9096");
        SolidVisual::Build(world, model.get(), shape);
        body = static_cast<SolidVisual*>(Scene::GetVisual(model->getId()));
        scene.setDisplayMode(Scene::DisplayMode::Shaded);
        scene.createPaintVisual(1, body->getId());
        drain();
        for (Visual* child : body->getChildren())
            if (child->getType() == VisualType::Paint)
                paint = static_cast<PaintVisual*>(child);
    }
    ~PaintPicture() override { scene.setDisplayMode(Scene::DisplayMode::ShadedWithEdges); }

    /// Paints what lies in front, the less the farther it is from the y axis.
    void sprayFromInFront(float radius)
    {
        PaintMesh& skin = *paint->getMesh();
        for (unsigned i = 0; i < skin.vertices.size(); ++i) {
            const rob::Posf& p = skin.vertices[i];
            if (skin.normals[i].y > -0.2f)
                continue;
            const float away = std::hypot(p.x, p.z) / radius;
            skin.setColor(i, {0.85f, 0.15f, 0.10f, std::clamp(1.4f * (1 - away * away), 0.0f, 1.0f)});
        }
        MeshManager::Get()->uploadPaintColors(&skin);
    }

    SolidVisual* body = nullptr;
    PaintVisual* paint = nullptr;
    const test::View front{{0, -420, 0}, {0, 0, 0}, {0, 0, 1}};
    const test::View fromAbove{{180, -420, 220}, {0, 0, 0}, {0, 0, 1}};
};

bool isRed(const Pixel& pixel)
{
    return pixel.r > pixel.g + 60 && pixel.r > pixel.b + 60;
}

TEST_F(PaintPicture, UnpaintedSkinIsNotSeen)
{
    const Picture with = render(fromAbove);
    scene.removePaintVisual(1, body->getId());
    const Picture without = render(fromAbove);

    EXPECT_TRUE(with.rgb == without.rgb);
}

TEST_F(PaintPicture, PaintIsSeenWholeOnFlatAndRoundFacesAndFadesOut)
{
    sprayFromInFront(110);

    const test::View close{{60, -120, 30}, {0, -50, 0}, {0, 0, 1}};
    const test::View fromAfar{{0, -4000, 0}, {0, 0, 0}, {0, 0, 1}};
    for (const test::View& view : {fromAbove, fromAfar}) {
        const Picture picture = render(view);
        for (float z = -50; z <= 50; z += 2.5f)
            for (float turn = -0.5f; turn <= 0.5f; turn += 0.05f) { // on the pipe
                const rob::Posf at(50 * std::sin(turn), -10 - 50 * std::cos(turn), z);
                ASSERT_TRUE(isRed(pixelAt(picture, at))) << at.x << ", " << at.z;
            }
    }
    // Where an edge of the skin is as long as many pixels, nothing of the body comes through it.
    const Picture filled = render(close);
    for (unsigned y = 0; y < filled.height; y += 3)
        for (unsigned x = 160; x < 360; x += 3)
            ASSERT_TRUE(isRed(filled.at(x, y))) << x << ", " << y;
    const Picture picture = render(fromAbove);
    EXPECT_FALSE(isRed(pixelAt(picture, {95, -10, 75})));
    EXPECT_TRUE(matchesBaseline(picture, "painted_workpiece"));
}

TEST_F(PaintPicture, PaintIsSeenOnASelectedBody)
{
    sprayFromInFront(110);
    scene.setVisualSelected(body->getId());
    scene.setBorderHighlightEnabled(false);

    const Picture picture = render(fromAbove);

    EXPECT_TRUE(isRed(pixelAt(picture, {0, -60, 0})));
    EXPECT_FALSE(isRed(pixelAt(picture, {95, -10, 75})));
}

TEST_F(PaintPicture, MapTellsThinWantedAndThickApartWithoutColour)
{
    PaintMesh& skin = *paint->getMesh();
    std::vector<float> parts;
    std::vector<unsigned> all;
    for (unsigned i = 0; i < skin.vertices.size(); ++i) { // bands across the plate: bare, thin, wanted, thick
        const float x = skin.vertices[i].x;
        parts.push_back(x < -80 ? 0.0f : x < -62 ? 0.5f : x > 80 ? 1.8f : 1.0f);
        all.push_back(i);
    }
    const Picture bare = render(front);
    paint->showThickness(0.8f, 1.2f, 2);
    paint->setThickness(parts, all);

    const Picture picture = render(front);

    // How much the brightness changes from pixel to pixel within a patch of one thickness.
    const auto roughness = [&](float x, float wide) {
        int least = 1000, most = 0;
        for (float dx = -wide; dx <= wide; dx += 0.5f)
            for (float z = -30; z <= 30; z += 0.5f) {
                const Pixel pixel = pixelAt(picture, {x + dx, -10, z});
                least = std::min(least, pixel.r + pixel.g + pixel.b);
                most = std::max(most, pixel.r + pixel.g + pixel.b);
            }
        return most - least;
    };
    EXPECT_LT(difference(pixelAt(picture, {-95, -10, 0}), pixelAt(bare, {-95, -10, 0})), 2);
    EXPECT_GT(roughness(-71, 4), 40) << "striped";
    EXPECT_LT(roughness(65, 4), 30) << "plain";
    EXPECT_GT(roughness(92, 4), 100) << "dotted";
    EXPECT_GT(pixelAt(picture, {65, -10, 0}).g, pixelAt(picture, {65, -10, 0}).r + 40) << "the middle of the scale";
    EXPECT_TRUE(matchesBaseline(picture, "painted_workpiece_thickness"));

    paint->showPaint();
    EXPECT_EQ(static_cast<Ogre::Entity*>(paint->getSceneNode()->getAttachedObjects().at(0))
                  ->getSubEntity(0)
                  ->getMaterialName(),
              "Spray");
}

TEST_F(PaintPicture, PaintIsHiddenByWhatLiesInFrontAndByItsOwnBody)
{
    sprayFromInFront(110);

    const Picture back = render({{0, 500, 0}, {0, 0, 0}, {0, 0, 1}});

    for (const float x : {-80.0f, 0.0f, 80.0f})
        EXPECT_FALSE(isRed(pixelAt(back, {x, 40, 0}))) << x;
}

} // namespace
} // namespace vrk::visual
