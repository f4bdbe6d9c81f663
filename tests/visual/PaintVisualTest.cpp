#include "visual/PaintVisual.h"

#include "mesh/MeshManager.h"
#include "mesh/OgreMeshes.h"
#include "mesh/paint/PaintMesh.h"
#include "platform/layout/Body.h"
#include "selection/SelectableObject.h"
#include "selection/SelectionFixture.h"
#include "selection/pick/PickQuery.h"
#include "selection/region/RegionQuery.h"
#include "visual/RenderGroups.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRep_Builder.hxx>
#include <Ogre.h>
#include <TopoDS_Compound.hxx>

#include <string>
#include <vector>

namespace vrk::visual {
namespace {

using selection::VisualSelection;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;

class PaintVisualTest : public selection::SelectionFixture {
protected:
    /// A body of the station: a cube of this side, from the origin.
    SolidVisual* addBody(const std::string& uri, double side = 60)
    {
        const TopoDS_Shape shape = test::meshedBox(side, side, side);
        const auto body = test::addModelBody(shape, uri);
        SolidVisual::Build(world, body.get(), shape);
        return static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    }
    static PaintVisual* paintOn(const Visual& body)
    {
        for (Visual* child : body.getChildren())
            if (child->getType() == VisualType::Paint)
                return dynamic_cast<PaintVisual*>(child);
        return nullptr;
    }
    static Ogre::Entity* entityOf(const Visual& visual)
    {
        return static_cast<Ogre::Entity*>(visual.getSceneNode()->getAttachedObjects().at(0));
    }
    std::size_t entities() const
    {
        return sceneManager->getMovableObjects(Ogre::EntityFactory::FACTORY_TYPE_NAME).size();
    }
    PaintVisual* spray(unsigned number, const Visual& body)
    {
        scene.createPaintVisual(number, body.getId());
        drain();
        return paintOn(body);
    }

    MeshManager& manager = *MeshManager::Get();
};

TEST_F(PaintVisualTest, LiesAsASkinOnItsBody)
{
    SolidVisual* body = addBody("cube");

    scene.createPaintVisual(7, body->getId());
    EXPECT_EQ(paintOn(*body), nullptr) << "it is posted";
    drain();

    PaintVisual* paint = paintOn(*body);
    ASSERT_NE(paint, nullptr);
    EXPECT_EQ(paint->getName(), "paint" + std::to_string(paint->getId()));
    EXPECT_EQ(Scene::GetVisual(paint->getId()), paint);
    EXPECT_EQ(paint->getSprayRefsCount(), 1u);
    EXPECT_EQ(paint->getMesh(), manager.getMesh("cube_paint"));
    EXPECT_EQ(entityOf(*paint)->getName(), "cube_paint");
    EXPECT_EQ(entityOf(*paint)->getMesh()->getName(), "cube_paint");
    EXPECT_EQ(entityOf(*paint)->getSubEntity(0)->getMaterialName(), "Spray");
    EXPECT_EQ(paint->getPaintColor().r, 0);
    EXPECT_EQ(paint->getPaintColor().a, 255);
    const Box& bounds = paint->getMesh()->getBounds();
    EXPECT_NEAR(bounds.min.x, 0, 1e-3);
    EXPECT_NEAR(bounds.max.z, 60, 1e-3);
    ASSERT_TRUE(service.hasVisual(paint));
    EXPECT_FALSE(service.isDetectable(paint));
    EXPECT_FALSE(service.getObject(paint)->priority);
}

TEST_F(PaintVisualTest, OfTheFacesThatAreShown)
{
    SolidVisual* body = addBody("cube");
    body->setFaceVisible(1, false); // the one at x = 0

    PaintVisual* paint = spray(1, *body);

    EXPECT_EQ(paint->getMesh()->name, "cube_1_paint");
    for (std::size_t i = 0; i < paint->getMesh()->indices.size(); i += 3) {
        const Mesh& skin = *paint->getMesh();
        const float x = skin.vertices[skin.indices[i]].x + skin.vertices[skin.indices[i + 1]].x +
                        skin.vertices[skin.indices[i + 2]].x;
        ASSERT_GT(x, 0.01f) << "a triangle on the hidden face";
    }
}

TEST_F(PaintVisualTest, TwoSpraysShareOneAndTheLastTakesItAlong)
{
    SolidVisual* body = addBody("cube");
    const std::size_t before = entities();

    PaintVisual* paint = spray(1, *body);
    EXPECT_EQ(spray(2, *body), paint);
    EXPECT_EQ(paint->getSprayRefsCount(), 2u);
    const unsigned id = paint->getId();

    scene.removePaintVisual(1, body->getId());
    drain();
    ASSERT_EQ(paintOn(*body), paint);
    EXPECT_EQ(paint->getSprayRefsCount(), 1u);

    scene.removePaintVisual(1, body->getId()); // the last goes whichever spray it is
    EXPECT_EQ(paintOn(*body), paint) << "it is posted";
    drain();
    EXPECT_EQ(paintOn(*body), nullptr);
    EXPECT_FALSE(Scene::HasVisual(id));
    EXPECT_EQ(entities(), before);
    EXPECT_FALSE(manager.hasMesh("cube_paint"));
    EXPECT_EQ(test::ogreMesh("cube_paint"), nullptr);
    service.update();
    EXPECT_TRUE(service.hasVisual(body));
}

TEST_F(PaintVisualTest, SprayThatIsNotKnownLeavesTwoOthersThere)
{
    SolidVisual* body = addBody("cube");
    spray(1, *body);
    PaintVisual* paint = spray(2, *body);

    scene.removePaintVisual(3, body->getId());
    drain();

    EXPECT_EQ(paint->getSprayRefsCount(), 2u);
}

TEST_F(PaintVisualTest, SprayThatIsKnownTwiceGoesWhole)
{
    PaintVisual* paint = spray(1, *addBody("cube"));
    paint->addSprayRef(1);
    paint->addSprayRef(2);

    paint->removeSprayRef(1);

    EXPECT_EQ(paint->getSprayRefsCount(), 1u);
}

TEST_F(PaintVisualTest, ReachesAllBodiesBelowAndTheirPaintIsFoundThere)
{
    auto* group = new Visual(world);
    SolidVisual* near = addBody("near");
    SolidVisual* far = addBody("far", 30);
    near->attachTo(group);
    auto* deeper = new Visual(group);
    far->attachTo(deeper);
    auto* station = addBody("station");
    scene.addTempVisual(group);
    group->attachTo(station);

    scene.createPaintVisual(1, station->getId());
    scene.setPaintColor(station->getId(), 0.25f, 0.5f, 0.75f);
    drain();

    for (const Visual* body : {static_cast<Visual*>(near), static_cast<Visual*>(far), static_cast<Visual*>(station)}) {
        ASSERT_NE(paintOn(*body), nullptr);
        EXPECT_EQ(paintOn(*body)->getPaintColor().g, 0.5f);
        EXPECT_EQ(paintOn(*body)->getPaintColor().a, 255);
    }
    scene.removePaintVisual(1, station->getId());
    drain();
    for (const Visual* body : {static_cast<Visual*>(near), static_cast<Visual*>(far), static_cast<Visual*>(station)})
        EXPECT_EQ(paintOn(*body), nullptr);
}

TEST_F(PaintVisualTest, IdWithoutVisualIsPassedOver)
{
    scene.createPaintVisual(1, 4242);
    scene.setPaintColor(4242, 1, 1, 1);
    scene.removePaintVisual(1, 4242);

    EXPECT_NO_THROW(drain());
}

TEST_F(PaintVisualTest, SolidWithoutTrianglesIsPassedOver)
{
    const TopoDS_Shape bare = BRepPrimAPI_MakeBox(10, 10, 10).Shape(); // nobody gave it triangles
    SolidVisual* body = SolidVisual::Build(world, bare, "Body");
    ASSERT_TRUE(body->hasNoEntity());

    EXPECT_EQ(spray(1, *body), nullptr);
    EXPECT_EQ(manager.createPaintMesh(body), nullptr);
}

TEST_F(PaintVisualTest, BodyOfTheLibrarysOwnMeshTakesPaint)
{
    MeshVisual* arrow = MeshVisual::BuildArrow(world, {0, 0, 0}, {0, 0, 1});
    ASSERT_FALSE(manager.hasMesh(arrow->getMeshName())) << "it is global";

    PaintVisual::Build(arrow, 1);

    ASSERT_NE(paintOn(*arrow), nullptr);
    EXPECT_THAT(paintOn(*arrow)->getMesh()->vertices, Not(IsEmpty()));
}

TEST_F(PaintVisualTest, VisualThatIsNoBodyTakesNone)
{
    auto* group = new Visual(world);

    PaintVisual::Build(group, 1);

    EXPECT_EQ(paintOn(*group), nullptr);
}

TEST_F(PaintVisualTest, BodiesOfOneMeshHavePaintOfTheirOwn)
{
    SolidVisual* first = addBody("shared");
    SolidVisual* second = addBody("shared");

    PaintVisual* one = spray(1, *first);
    PaintVisual* two = spray(1, *second);

    ASSERT_NE(one->getMesh(), two->getMesh());
    EXPECT_EQ(two->getMesh()->name, "shared_paint_" + std::to_string(second->getId()));
    EXPECT_EQ(manager.getMesh("shared_paint"), one->getMesh());
    EXPECT_NE(entityOf(*one)->getMesh(), entityOf(*two)->getMesh());
    scene.removePaintVisual(1, first->getId());
    drain();
    EXPECT_EQ(manager.getMesh(two->getMesh()->name), two->getMesh());
    EXPECT_NE(test::ogreMesh(two->getMesh()->name), nullptr);
}

TEST_F(PaintVisualTest, GoesWithItsBody)
{
    const std::size_t before = entities();
    SolidVisual* body = addBody("cube");
    const unsigned id = spray(1, *body)->getId();

    scene.removeVisual(body->getId());
    drain();

    EXPECT_FALSE(Scene::HasVisual(id));
    EXPECT_FALSE(manager.hasMesh("cube_paint"));
    EXPECT_EQ(test::ogreMesh("cube_paint"), nullptr);
    EXPECT_EQ(entities(), before);
    service.update();
    EXPECT_THAT(entered(), IsEmpty());
}

TEST_F(PaintVisualTest, OfABodyThatGetsAnotherShapeIsGone)
{
    const TopoDS_Shape shape = test::meshedBox(60, 60, 60);
    const auto node = test::addModelBody(shape, "cube");
    SolidVisual::Build(world, node.get(), shape);
    const unsigned id = spray(1, *Scene::GetVisual(node->getId()))->getId();

    scene.updateSolidVisual(node.get(), test::meshedBox(20, 20, 20));
    drain();

    EXPECT_FALSE(Scene::HasVisual(id));
    EXPECT_FALSE(manager.hasMesh("cube_paint"));
    EXPECT_NEAR(spray(1, *Scene::GetVisual(node->getId()))->getMesh()->getBounds().max.x, 20, 1e-3);
}

TEST_F(PaintVisualTest, IsNotCopiedWithItsBody)
{
    SolidVisual* body = addBody("cube");
    spray(1, *body);

    Visual* copy = *body->copy(world);

    EXPECT_EQ(paintOn(*copy), nullptr);
    EXPECT_FALSE(paintOn(*body)->copy(world).has_value());
    copy->clearCopiedChildren();
    delete copy;
    EXPECT_TRUE(manager.hasMesh("cube_paint"));
}

TEST_F(PaintVisualTest, ResetMakesAllTransparentAndKeepsTheHues)
{
    PaintVisual* paint = spray(1, *addBody("cube"));
    PaintMesh& skin = *paint->getMesh();
    for (unsigned i = 0; i < skin.colorTable.size(); i += 3)
        skin.setColor(i, {1, 0.5f, 0, 1});
    manager.updatePaintMeshColor(&skin);

    paint->reset();

    EXPECT_THAT(skin.changedColorIndexes, IsEmpty()) << "uploaded";
    for (unsigned i = 0; i < skin.colorTable.size(); ++i) {
        ASSERT_EQ(skin.color(i).a, 0) << i;
        ASSERT_EQ(skin.color(i).r, i % 3 == 0 ? 1.0f : 0.0f) << i;
    }
}

TEST_F(PaintVisualTest, PaintColorTakesItsAlphaBack)
{
    PaintVisual* paint = spray(1, *addBody("cube"));
    paint->getPaintColor().a = 0.5f;

    paint->setPaintColor(0.1f, 0.2f, 0.3f);

    EXPECT_EQ(paint->getPaintColor().b, 0.3f);
    EXPECT_EQ(paint->getPaintColor().a, 255);
}

TEST_F(PaintVisualTest, IsDrawnInTheGroupOfItsBodyWhateverCameFirst)
{
    SolidVisual* body = addBody("cube");
    body->setSelected();
    PaintVisual* paint = spray(1, *body);
    EXPECT_EQ(entityOf(*paint)->getRenderQueueGroup(), renderGroup::selected);

    body->clearHighlightOrSelect();
    EXPECT_EQ(entityOf(*paint)->getRenderQueueGroup(), renderGroup::normal);
    body->setSelected();
    EXPECT_EQ(entityOf(*paint)->getRenderQueueGroup(), renderGroup::selected);
    EXPECT_EQ(entityOf(*paint)->getSubEntity(0)->getMaterialName(), "Spray");
}

TEST_F(PaintVisualTest, ThatIsHiddenWithItsBodyCannotBePicked)
{
    SolidVisual* body = addBody("cube");
    PaintVisual* paint = spray(1, *body);

    scene.setVisualVisible(body->getId(), false);
    drain();
    EXPECT_FALSE(service.getObject(paint)->enabled);
    EXPECT_FALSE(service.getObject(body)->enabled);

    scene.setVisualVisible(body->getId(), true);
    drain();
    EXPECT_TRUE(service.getObject(paint)->enabled);
}

TEST_F(PaintVisualTest, IsPickedByAPlainQuestionAndPassedOverByOneThatExplains)
{
    SolidVisual* body = addBody("cube");
    PaintVisual* paint = spray(1, *body);
    look({{30, -500, 30}, {30, 0, 30}, {0, 0, 1}});
    service.setObjectEnabled(body, false);
    service.update();
    EXPECT_EQ(service.select(200, 150).visual, paint);
    EXPECT_THAT(service.boxSelect(150, 100, 250, 200), Contains(paint));

    service.setObjectEnabled(body, true);
    service.update();
    selection::PickQuery query;
    query.camera = selection::PickCamera::Main();
    query.x = 200;
    query.y = 150;
    for (const selection::PickCandidate& candidate : query.askAll().candidates)
        EXPECT_EQ(candidate.visual, body);
    EXPECT_EQ(query.askBest()->visual, body);
    const auto region = selection::RegionQuery::Rectangle(150, 100, 250, 200);
    const selection::RegionAnswer answer = service.askRegion(region, selection::RegionView::OfMainCamera());
    ASSERT_EQ(answer.bodies.size(), 1u);
    EXPECT_EQ(answer.bodies[0].visual, body);
}

} // namespace
} // namespace vrk::visual
