#include "handles/VectorHandle.h"

#include "scene/core/OgreCompat.h"
#include "visual/ManualDrawing.h"
#include "visual/RenderGroups.h"

#include <Ogre.h>

#include <cmath>
#include <numbers>

namespace vrk::visual {
namespace {

constexpr const char* handleMaterial = "Axis";
constexpr const char* highlightMaterialName = "HandleHighlight";
constexpr const char* fanMaterial = "TransparentHandle";
constexpr const char* directionMesh = "VectorDirHandle";
constexpr const char* directionColor = "#418AB4";
constexpr double fanRadius = 150.0; // of the handle's own units: as far out as the rings
constexpr double smallestFan = 1.0; // degrees
constexpr double degreesPerTriangle = 5.0;
constexpr float fanAlpha = 0.4f;

VectorHandle* instance = nullptr;

} // namespace

AngleHandle::AngleHandle(const Kind& kind, Visual* parent)
    : HandleMeshVisual(kind.name, parent), kind(kind), fan(std::make_unique<ManualDrawing>(*this))
{
    (*fan)->setRenderQueueGroup(renderGroup::handles);
    attachMesh(kind.name)->setRenderQueueGroup(renderGroup::handles);
    setMaterial(handleMaterial, "", highlightMaterialName);
}

AngleHandle::~AngleHandle() = default;

void AngleHandle::resetAppearance()
{
    getEntity()->setMaterial(materialByName(defaultMaterial));
    setColor(kind.color);
}

void AngleHandle::setHighlighted()
{
    getEntity()->setMaterial(materialByName(highlightMaterial));
}

void AngleHandle::setAngle(double radians)
{
    setPose({{}, rob::Rotationf(static_cast<float>(radians), rob::Dirf(kind.axis))});
    drawFan(radians);
}

void AngleHandle::drawFan(double radians)
{
    Ogre::ManualObject& object = **fan;
    object.clear();
    const double degrees = std::abs(radians * 180 / std::numbers::pi);
    if (!(degrees >= smallestFan) || !std::isfinite(degrees))
        return;
    const int steps = 1 + static_cast<int>(degrees / degreesPerTriangle);
    // The visual is turned by the angle already: from the handle the fan runs back to where zero is.
    const double step = -radians / steps;
    const rob::Dirf normal(-kind.axis);
    const auto addVertex = [&](const rob::Posf& position) {
        object.position(position.x, position.y, position.z);
        object.normal(normal.x, normal.y, normal.z);
    };
    object.begin(fanMaterial, Ogre::RenderOperation::OT_TRIANGLE_FAN,
                 Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
    addVertex({});
    for (int i = 0; i <= steps; ++i)
        addVertex(rob::Posf(rob::Rotationd(i * step, kind.axis) * rob::Posd(0, 0, fanRadius)));
    object.end();
    const auto share = [](int part) { return static_cast<float>(part / 255.0); };
    fan->setColor({share(kind.fanColor[0]), share(kind.fanColor[1]), share(kind.fanColor[2])}, fanAlpha);
    object.setRenderQueueGroup(renderGroup::handles);
}

TiltHandle::TiltHandle(Visual* parent) : AngleHandle({"TiltHandle", "#F20c00", {0, 1, 0}, {242, 12, 0}}, parent) {}

TwistHandle::TwistHandle(Visual* parent) : AngleHandle({"TwistHandle", "#16A951", {1, 0, 0}, {26, 251, 121}}, parent) {}

VectorHandle::VectorHandle() : FixedSizeHandle("VectorHandle", nullptr), twist(new TwistHandle(this))
{
    tilt = new TiltHandle(twist);
    dirHandle = new HandleMeshVisual(directionMesh, tilt);
    dirHandle->attachMesh(directionMesh)->setRenderQueueGroup(renderGroup::handles);
    dirHandle->setMaterial(handleMaterial, "", "");
    dirHandle->setColor(directionColor);
    if (!instance)
        instance = this;
}

VectorHandle::~VectorHandle()
{
    if (instance == this)
        instance = nullptr;
}

VectorHandle* VectorHandle::Get()
{
    return instance;
}

void VectorHandle::setTilt(double radians)
{
    tilt->setAngle(radians);
}

void VectorHandle::setTwist(double radians)
{
    twist->setAngle(radians);
}

} // namespace vrk::visual
