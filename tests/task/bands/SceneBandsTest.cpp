#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/Seam.h"
#include "platform/task/Task.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "task/bands/BandShapes.h"
#include "task/bands/VectorBandVisual.h"
#include "visual/MeshVisual.h"

namespace vrk::visual {
namespace {

using layout::Layout;

class SceneBands : public test::SceneFixture {
protected:
    /// A task with a run along the first edge of a box that stands 500 away.
    std::shared_ptr<task::EdgeMfgShape> addSeam()
    {
        body = test::addModelBody(test::meshedBox(100, 60, 40), "box");
        part = Layout::inst().parts.back();
        part->setPose(rob::Posed(rob::Posd(500, 0, 0), rob::Rotationd()));
        scene.addPart(part.get());
        drain();
        return addShape(task::MakeSeam(newId(), "seam", body->getShape(), body->getId(), {1}));
    }
    std::shared_ptr<task::EdgeMfgShape> addShape(std::shared_ptr<task::EdgeMfgShape> shape)
    {
        const auto program = std::make_shared<task::Task>(newId(), "weld");
        program->addMfgShape(shape);
        Layout::inst().addTask(program);
        return shape;
    }
    static unsigned newId() { return sdf::SdfManager::inst().generateId(); }
    static VectorBandVisual& bandOf(const task::EdgeMfgShape& shape)
    {
        return dynamic_cast<VectorBandVisual&>(*Scene::GetVisual(shape.getId()));
    }

    std::shared_ptr<layout::Body> body;
    std::shared_ptr<layout::Part> part;
    selection::VisualSelection& picking = *selection::VisualSelection::Get();
};

TEST_F(SceneBands, BandLiesOnTheBodyWhoseEdgeItRunsAlong)
{
    const auto seam = addSeam();

    scene.addBand(seam->getId());
    EXPECT_FALSE(Scene::HasVisual(seam->getId())) << "posted";
    drain();

    ASSERT_TRUE(Scene::HasVisual(seam->getId()));
    const VectorBandVisual& band = bandOf(*seam);
    EXPECT_EQ(band.getParent(), Scene::GetVisual(body->getId()));
    EXPECT_EQ(band.getArrow()->getParent(), Scene::GetVisual(body->getId()));
    EXPECT_EQ(band.getWorldPosition(), rob::Posf(500, 0, 0));
    EXPECT_TRUE(test::isModelFree());
}

TEST_F(SceneBands, RunOnNoBodyLiesInTheWorld)
{
    const auto seam = addShape(test::seamShape(newId()));

    scene.addBand(seam->getId());
    drain();

    EXPECT_EQ(bandOf(*seam).getParent(), world);
}

TEST_F(SceneBands, BandThatIsThereIsReplaced)
{
    const auto seam = addSeam();
    scene.addBand(seam->getId());
    drain();
    const std::size_t children = test::childrenOf(*Scene::GetVisual(body->getId())).size();
    const std::size_t below = test::childrenOf(bandOf(*seam)).size();

    for (int i = 0; i < 3; ++i)
        scene.addBand(seam->getId());
    drain();

    EXPECT_EQ(test::childrenOf(*Scene::GetVisual(body->getId())).size(), children);
    EXPECT_EQ(test::childrenOf(bandOf(*seam)).size(), below) << "no edge twice";
}

TEST_F(SceneBands, WhatIsNoRunOrHasNoBodyInTheSceneIsPassedOver)
{
    const auto seam = addSeam();
    scene.removeVisual(part->getId());
    scene.addBand(seam->getId());
    scene.addBand(part->getId());
    scene.addBand(4711);

    EXPECT_NO_THROW(drain());

    EXPECT_FALSE(Scene::HasVisual(seam->getId()));
    EXPECT_FALSE(Scene::HasVisual(part->getId()));
}

TEST_F(SceneBands, RunThatCannotBeDrawnIsLeftOutAndTheRestGoesOn)
{
    const auto bad = addShape(test::straightShape({{50, {1, 0, 0}}}, newId()));
    const auto good = addShape(test::seamShape(newId()));
    const std::size_t children = test::childrenOf(*world).size();
    scene.addBand(bad->getId());
    scene.addBand(good->getId());

    EXPECT_NO_THROW(drain());

    EXPECT_FALSE(Scene::HasVisual(bad->getId()));
    EXPECT_TRUE(Scene::HasVisual(good->getId()));
    EXPECT_EQ(test::childrenOf(*world).size(), children + 2) << "a band and its arrow";
}

TEST_F(SceneBands, GoesWithItsBodyAndIsHiddenAndSelectedByItsId)
{
    const auto seam = addSeam();
    scene.addBand(seam->getId());
    drain();
    VectorBandVisual& band = bandOf(*seam);
    BandVectorVisual* vector = band.getBandVectors().front();

    scene.setVisualVisible(part->getId(), false);
    drain();
    EXPECT_FALSE(band.isVisible());
    EXPECT_FALSE(band.getArrow()->isVisible());
    EXPECT_FALSE(picking.isEnabled(vector));
    scene.setVisualVisible(part->getId(), true);
    scene.setVisualVisible(seam->getId(), false);
    drain();
    EXPECT_TRUE(Scene::GetVisual(body->getId())->isVisible());
    EXPECT_FALSE(band.isVisible());
    EXPECT_FALSE(picking.isEnabled(vector));
    scene.setVisualVisible(seam->getId(), true);
    scene.setVisualSelected(seam->getId());
    drain();
    EXPECT_TRUE(picking.isEnabled(vector));
    EXPECT_EQ(band.getBand()->getSections()[0]->getCustomParameter(0),
              Ogre::Vector4(252 / 255.0f, 255 / 255.0f, 54 / 255.0f, 0.5f));
    EXPECT_TRUE(scene.isSelected(vector));

    scene.addBand(seam->getId());
    drain();
    EXPECT_EQ(bandOf(*seam).getBand()->getSections()[0]->getCustomParameter(0),
              Ogre::Vector4(252 / 255.0f, 255 / 255.0f, 54 / 255.0f, 0.5f))
        << "drawn anew, it is selected as it was";

    scene.removeVisual(part->getId());
    drain();
    EXPECT_FALSE(Scene::HasVisual(seam->getId()));
}

TEST_F(SceneBands, BandOfAHiddenBodyStartsHidden)
{
    const auto seam = addSeam();
    scene.setVisualVisible(part->getId(), false);
    scene.addBand(seam->getId());
    drain();

    EXPECT_FALSE(bandOf(*seam).isVisible());
    EXPECT_FALSE(bandOf(*seam).getArrow()->isVisible());
}

TEST_F(SceneBands, BodyMadeAnewKeepsItsBandsAndTheirHiding)
{
    const auto seam = addSeam();
    const auto hidden = addShape(task::MakeSeam(newId(), "hidden seam", body->getShape(), body->getId(), {2}));
    scene.addBand(seam->getId());
    scene.addBand(hidden->getId());
    scene.setVisualVisible(hidden->getId(), false);
    drain();
    const Visual* before = Scene::GetVisual(body->getId());
    const std::size_t children = test::childrenOf(*before).size();

    scene.updateSolidVisual(body.get(), body->getShape());
    drain();

    const Visual* anew = Scene::GetVisual(body->getId());
    ASSERT_TRUE(Scene::HasVisual(seam->getId()));
    ASSERT_TRUE(Scene::HasVisual(hidden->getId()));
    EXPECT_EQ(bandOf(*seam).getParent(), anew);
    EXPECT_TRUE(bandOf(*seam).isVisible());
    EXPECT_TRUE(picking.isEnabled(bandOf(*seam).getBandVectors().front()));
    EXPECT_EQ(bandOf(*hidden).getParent(), anew);
    EXPECT_FALSE(bandOf(*hidden).isVisible());
    EXPECT_FALSE(picking.isEnabled(bandOf(*hidden).getBandVectors().front()));
    EXPECT_EQ(test::childrenOf(*anew).size(), children);
}

TEST_F(SceneBands, HiddenBodyMadeAnewIsShownWithItsBand)
{
    const auto seam = addSeam();
    scene.addBand(seam->getId());
    scene.setVisualVisible(part->getId(), false);
    drain();

    scene.updateSolidVisual(body.get(), body->getShape());
    drain();

    EXPECT_TRUE(Scene::GetVisual(body->getId())->isVisible()) << "it has no state of the old one";
    ASSERT_TRUE(Scene::HasVisual(seam->getId()));
    EXPECT_TRUE(bandOf(*seam).isVisible());
}

TEST_F(SceneBands, BandThatIsNoLongerInTheModelGoesWithTheOldBody)
{
    const auto seam = addSeam();
    scene.addBand(seam->getId());
    drain();
    sdf::SdfManager::inst().remove(seam->getId());

    scene.updateSolidVisual(body.get(), body->getShape());
    drain();

    EXPECT_FALSE(Scene::HasVisual(seam->getId()));
}

TEST_F(SceneBands, VectorIsPickedWhereTheBodyStands)
{
    const auto seam = addSeam();
    scene.addBand(seam->getId());
    drain();
    const BandVectorVisual* vector = bandOf(*seam).getBandVectors().front();
    const geometry::MfgVectors& of = seam->getMfgVectors()[0];
    const rob::Posf tip(of.vectors[0].getPos(of.edge) + of.vectors[0].getDir(of.edge) * 20.0 + rob::Vec3d(500, 0, 0));
    const rob::Dirf aside(of.vectors[0].getEdgeTangent(of.edge));

    picking.update();

    EXPECT_EQ(picking.select({tip - rob::Vec3f(aside) * 50.0f, aside}).visual, vector);
}

} // namespace
} // namespace vrk::visual
