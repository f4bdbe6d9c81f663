#include "support/SceneFixture.h"
#include "visual/DynamicLines.h"
#include "visual/LineVisual.h"
#include "visual/PointsVisual.h"
#include "visual/SolidVisual.h"

#include <BRepPrimAPI_MakeSphere.hxx>
#include <Ogre.h>

#include <set>

namespace vrk::visual {
namespace {

// What draws with these has tests of its own: the corner axes, the managers of instances, the passes of the outline and of
// the shade in pockets, lines and ghosts, the background, the shadow on the ground.
const std::set<std::string> drawnElsewhere = {"BorderHighlight",
                                              "BorderHighlight/Outline",
                                              "BorderMask",
                                              "Background",
                                              "BodyOutlines/Draw",
                                              "BodyOutlines/Find",
                                              "BodyOutlines/Quad",
                                              "DepthShade/Apply",
                                              "DepthShade/Body",
                                              "DepthShade/Measure",
                                              "DepthShade/Nothing",
                                              "DepthShade/Points",
                                              "DepthShade/Quad",
                                              "DepthShade/Smooth",
                                              "Ghost/Body",
                                              "Ghost/Edges",
                                              "Ghost/Points",
                                              "GroundShadow",
                                              "GroundShadow/Body",
                                              "HoverOutline",
                                              "LineLook/AllEdges",
                                              "LineLook/AllEdgesHighlighted",
                                              "LineLook/AllEdgesSelected",
                                              "LineLook/Edges",
                                              "LineLook/EdgesHighlighted",
                                              "LineLook/EdgesSelected",
                                              "LineLook/Face",
                                              "GlobalFrame",
                                              "InstanceArrow",
                                              "InstanceFrame",
                                              "InstanceRobTarget",
                                              "InstanceRobTargetHighlight",
                                              "InstanceRobTargetSelected"};

/// Draws something in the middle of the picture with every material that the resources hold.
class MaterialPicture : public test::RenderTest {
protected:
    static std::vector<Ogre::MaterialPtr> allMaterials()
    {
        std::vector<Ogre::MaterialPtr> found;
        for (const auto& [handle, resource] : Ogre::MaterialManager::getSingleton().getResourceIterator())
            if (resource->getOrigin().starts_with("resource://") && !drawnElsewhere.contains(resource->getName()))
                found.push_back(Ogre::static_pointer_cast<Ogre::Material>(resource));
        return found;
    }
    static void setCustomParameters(Ogre::Renderable& renderable)
    {
        renderable.setCustomParameter(0, Ogre::Vector4(0.95f, 0.85f, 0.1f, 0.9f)); // a colour
        renderable.setCustomParameter(1, Ogre::Vector4(-60, -1, -60, 1));          // the box of a cloud
        renderable.setCustomParameter(2, Ogre::Vector4(60, 1, 60, 1));
        renderable.setCustomParameter(3, Ogre::Vector4(10, 0, 0, 0)); // the diameter of its points
    }
    /// Lines where the material widens them, points for the materials of points, else a ball.
    Visual* addDrawnWith(const Ogre::Material& material)
    {
        const std::string& name = material.getName();
        if (material.getTechnique(0)->getPass(0)->hasGeometryProgram())
            return addLines(name);
        if (name.starts_with("Point"))
            return addPoints(name);
        static const TopoDS_Shape ball = test::meshed(BRepPrimAPI_MakeSphere(60).Shape());
        SolidVisual* solid = SolidVisual::Build(world, ball, name);
        setCustomParameters(*solid->getEntity()->getSubEntity(0));
        return solid;
    }
    Visual* addLines(const std::string& material)
    {
        auto* visual = new LineVisual("lines", world);
        DynamicLines* lines = visual->createDynamicLine(RenderOpType::Lines);
        for (int i = -5; i <= 5; ++i) {
            lines->addPoint(-60.0f, 0.0f, 10.0f * static_cast<float>(i));
            lines->addPoint(60.0f, 0.0f, 10.0f * static_cast<float>(i));
        }
        visual->update();
        visual->setMaterial(material, material, material);
        setCustomParameters(*lines);
        return visual;
    }
    Visual* addPoints(const std::string& material)
    {
        std::vector<rob::PosTemplate<float>> points;
        for (int x = -5; x <= 5; ++x)
            for (int z = -5; z <= 5; ++z)
                points.emplace_back(10.0f * static_cast<float>(x), 0.0f, 10.0f * static_cast<float>(z));
        auto* visual = new PointsVisual(world, points);
        auto& object = dynamic_cast<Ogre::ManualObject&>(*visual->getSceneNode()->getAttachedObject(0));
        object.setMaterialName(0, material);
        for (Ogre::ManualObject::ManualObjectSection* section : object.getSections())
            setCustomParameters(*section);
        return visual;
    }
};

TEST_F(MaterialPicture, EveryMaterialDraws)
{
    const test::View view{{0, -300, 0}, {0, 0, 0}, {0, 0, 1}};
    const test::Picture empty = render(view);
    const std::vector<Ogre::MaterialPtr> materials = allMaterials();
    ASSERT_GT(materials.size(), 60u);

    for (const Ogre::MaterialPtr& material : materials) {
        SCOPED_TRACE(material->getName());
        // For quads whose corners bring more than a place; drawn by others
        if (material->getName().starts_with("Label") || material->getName() == "DimensionLine")
            continue;
        Visual* drawn = addDrawnWith(*material);

        EXPECT_GT(test::largestDifference(render(view), empty), 12);

        scene.deleteVisual(drawn);
    }
}

} // namespace
} // namespace vrk::visual
