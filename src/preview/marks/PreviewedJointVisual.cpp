#include "preview/marks/PreviewedJointVisual.h"

#include "scene/core/OgreCompat.h"
#include "visual/DynamicLines.h"
#include "visual/MeshVisual.h"
#include "visual/RenderGroups.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

constexpr float startReach = 1000.0f; // each way

} // namespace

PreviewedJointVisual::PreviewedJointVisual(Visual* parent)
    : Visual("previewed_joint", parent), line(std::make_unique<DynamicLines>(RenderOpType::LineStrip)),
      arrow(new MeshVisual("joint_arrow", this))
{
    line->setMaterial(materialByName("JointAxis"));
    line->addPoint(-startReach, 0, 0);
    line->addPoint(startReach, 0, 0);
    line->update();
    attachObject(line.get());
    arrow->attachMesh("joint_arrow_head")->setRenderQueueGroup(renderGroup::handles);
    arrow->setMaterial("Axis", {}, {});
    arrow->setColor("#FFA725");
}

PreviewedJointVisual::~PreviewedJointVisual() = default;

void PreviewedJointVisual::set(const rob::PosTemplate<float>& from, const rob::PosTemplate<float>& to)
{
    line->setPoint(0, rob::Vec3f(from));
    line->setPoint(1, rob::Vec3f(to));
    line->update();
    arrow->setRotation(rob::Rotationf::From2Dirs({0, 0, 1}, rob::normalized(to - from)));
    arrow->setPosition(to);
}

} // namespace vrk::visual
