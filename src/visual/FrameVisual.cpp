#include "visual/FrameVisual.h"

#include "platform/common/Hash.h"
#include "platform/common/SharedThings.h"
#include "platform/sdf/SdfObject.h"
#include "scene/core/OgreCompat.h"
#include "scene/core/SceneCore.h"
#include "visual/DynamicLines.h"
#include "visual/Picking.h"

#include <Ogre.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace vrk::visual {
namespace {

// A dash is to the gap behind it as the golden section is.
constexpr double dashPerGap = 1.618;
constexpr double periodPerGap = 1.0 + dashPerGap;

const rob::DirTemplate<float> axisX(1, 0, 0);
const rob::DirTemplate<float> axisY(0, 1, 0);
const rob::DirTemplate<float> axisZ(0, 0, 1);

/// Where dashes begin and end along an axis, in pairs.
std::vector<float> dashEnds(unsigned size, unsigned dashes)
{
    const double gap = size / (periodPerGap * dashes - 1.0);
    std::vector<float> ends{0.0f};
    double begin = 0;
    for (unsigned i = 1; i < dashes; ++i) {
        // Whole units on purpose.
        const double end = std::trunc(begin + dashPerGap * gap);
        begin = std::trunc(end + gap);
        ends.push_back(static_cast<float>(end));
        ends.push_back(static_cast<float>(begin));
    }
    ends.push_back(static_cast<float>(size));
    return ends;
}

/// Of how many places an axis is drawn, and how they lie.
struct Axis {
    rob::DirTemplate<float> along;
    std::vector<float> ends;

    bool operator==(const Axis&) const = default;
};

struct AxisHash {
    std::size_t operator()(const Axis& axis) const
    {
        common::Hash hash;
        hash.addNumber(axis.along);
        for (const float end : axis.ends)
            hash.addNumber(end);
        return hash.value();
    }
};

/// With which all such axes are drawn: each part of a station has a frame.
std::shared_ptr<const DynamicLines> axisLines(const Axis& axis)
{
    static auto* const all =
        new common::SharedThings<Axis, DynamicLines, AxisHash>; // frames may live as long as the process
    return all->get(
        axis, [](const DynamicLines&) { return true; },
        [&axis] {
            auto lines = std::make_shared<DynamicLines>(RenderOpType::Lines);
            for (const float end : axis.ends)
                lines->addPoint(axis.along.x * end, axis.along.y * end, axis.along.z * end);
            lines->update();
            return std::shared_ptr<const DynamicLines>(lines);
        });
}

DynamicLines* makeAxis(LineVisual& visual, const char* material, const rob::DirTemplate<float>& along,
                       const std::vector<float>& ends)
{
    DynamicLines* line = visual.createDynamicLine(RenderOpType::Lines);
    line->setMaterial(materialByName(material));
    line->drawAs(axisLines({along, ends}));
    return line;
}

VisualType frameTypeOf(VisualType wanted)
{
    return wanted == VisualType::None ? VisualType::Frame : wanted;
}

} // namespace

unsigned FrameVisual::SizeOf(VisualType type)
{
    const SceneSettings& settings = SceneCore::Get()->settings;
    switch (type) {
    case VisualType::Frame:
        return static_cast<unsigned>(settings.worldFrameSize);
    case VisualType::Tcp:
        return static_cast<unsigned>(settings.tcpFrameSize);
    case VisualType::Robtarget:
        return static_cast<unsigned>(settings.targetFrameSize);
    case VisualType::JointTarget:
        return static_cast<unsigned>(settings.jointTargetFrameSize);
    case VisualType::UserFrame:
    case VisualType::ObjectFrame:
        return static_cast<unsigned>(settings.wobjFrameSize);
    default:
        return 0;
    }
}

FrameVisual::FrameVisual(Visual* parent, const std::string& name, VisualType wantedType, unsigned dashes)
    : LineVisual(name, parent)
{
    type = frameTypeOf(wantedType);
    makeAxes(dashEnds(SizeOf(type), std::max(dashes, 1u)));
}

FrameVisual::FrameVisual(Visual* parent, unsigned givenId, const std::string& name, VisualType wantedType)
    : LineVisual(name.empty() ? fmt::format("__FRAME_{}__", givenId) : name, parent)
{
    id = givenId;
    type = frameTypeOf(wantedType);
    buildSolid(static_cast<float>(SizeOf(type)));
}

FrameVisual::FrameVisual(Visual* parent, float size) : LineVisual(parent)
{
    type = VisualType::Frame;
    buildSolid(size);
}

FrameVisual::FrameVisual(Visual* parent, sdf::SdfNode* node) : LineVisual(node, parent)
{
    type = VisualType::Frame;
    buildSolid(static_cast<float>(SizeOf(type)));
}

FrameVisual::FrameVisual(Visual* parent, const std::string& name, std::optional<float> laterSize)
    : LineVisual(name, parent), pendingSize(laterSize)
{
    id = 0;
    type = VisualType::Frame;
}

FrameVisual::FrameVisual(const FrameVisual& other) : LineVisual(other)
{
    const_cast<FrameVisual&>(other).makePendingAxes(); // of the one node of both
    lineX = other.lineX;
    lineY = other.lineY;
    lineZ = other.lineZ;
    materials = other.materials;
}

void FrameVisual::buildSolid(float size)
{
    makeAxes({0.0f, size});
}

void FrameVisual::makeAxes(const std::vector<float>& ends)
{
    lineX = makeAxis(*this, materials[0], axisX, ends);
    lineY = makeAxis(*this, materials[1], axisY, ends);
    lineZ = makeAxis(*this, materials[2], axisZ, ends);
    LineVisual::update();
}

void FrameVisual::makePendingAxes()
{
    if (!pendingSize)
        return;
    buildSolid(*std::exchange(pendingSize, std::nullopt));
    getSceneNode()->setVisible(isVisible(), false); // what is attached is shown at first
}

const std::vector<std::unique_ptr<DynamicLines>>& FrameVisual::getLines() const
{
    const_cast<FrameVisual*>(this)->makePendingAxes();
    return LineVisual::getLines();
}

void FrameVisual::setVisible(bool nowVisible, bool recursive)
{
    if (nowVisible)
        makePendingAxes();
    LineVisual::setVisible(nowVisible, recursive);
}

FrameVisual* FrameVisual::BuildHidden(Visual* parent, const std::string& name)
{
    auto* visual = new FrameVisual(parent, name, static_cast<float>(SizeOf(VisualType::Frame)));
    visual->setVisible(false, true);
    return visual;
}

FrameVisual* FrameVisual::Build(Visual* parent, unsigned dashes)
{
    auto* visual = new FrameVisual(parent, "frame", VisualType::Frame, dashes);
    visual->setSelected();
    visual->setVisible(false, false);
    return visual;
}

void FrameVisual::Build(Visual* parent, unsigned id, const rob::PoseTemplate<float>& pose)
{
    auto* visual = new FrameVisual(parent, id, "task frame for controller", VisualType::Frame);
    SceneCore::Get()->visuals.enter(visual);
    visual->setPose(pose);
}

void FrameVisual::Build(Visual* parent, sdf::SdfNode* node)
{
    auto* visual = new FrameVisual(parent, node);
    SceneCore::Get()->visuals.enter(visual);
    visual->setPose(rob::PoseTemplate<float>(node->getPose()));
    picking::addLineVisual(visual);
}

void FrameVisual::setFrameSize(unsigned size)
{
    makePendingAxes();
    const auto length = static_cast<float>(size);
    lineX->setPoint(1, {length, 0, 0});
    lineY->setPoint(1, {0, length, 0});
    lineZ->setPoint(1, {0, 0, length});
    update();
}

void FrameVisual::resetAppearance()
{
    setMaterials({"RedFrameLine", "GreenFrameLine", "BlueFrameLine"});
}

void FrameVisual::setSelected()
{
    setMaterials({"RedFrameLineSelected", "GreenFrameLineSelected", "BlueFrameLineSelected"});
}

void FrameVisual::setHighlighted()
{
    setMaterials({"WhiteFrameLine", "WhiteFrameLine", "WhiteFrameLine"});
}

void FrameVisual::setMaterials(const Materials& wanted)
{
    materials = wanted;
    if (pendingSize)
        return;
    lineX->setMaterial(materialByName(wanted[0]));
    lineY->setMaterial(materialByName(wanted[1]));
    lineZ->setMaterial(materialByName(wanted[2]));
}

} // namespace vrk::visual
