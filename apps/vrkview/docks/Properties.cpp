#include "docks/Properties.h"

#include "canvas/Contents.h"
#include "canvas/ProgramThings.h"
#include "docks/PoseText.h"
#include "docks/ProgramProperties.h"
#include "docks/StationTree.h"
#include "edit/ShowReach.h"
#include "files/ObjectNames.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

#include <QLocale>

#include <algorithm>
#include <array>
#include <cmath>
#include <shared_mutex>

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::rob::Posed;
using vrk::visual::Scene;
using vrk::visual::Visual;

void addCounts(Properties& properties, const Contents& contents)
{
    properties.addHeading("Contents");
    properties.addCount("Bodies", contents.bodies);
    properties.addCount("Faces", contents.faces);
    properties.addCount("Triangles", contents.triangles);
    properties.addCount("Curves", contents.curves);
    properties.addCount("Points", contents.points);
    if (properties.lines.back().value.isEmpty())
        properties.lines.pop_back(); // nothing to count
}

/// The file that the geometry came from; empty where there is none, as for what was made by code.
QString fileOf(const sdf::SdfObject* object)
{
    if (const auto* part = dynamic_cast<const vrk::layout::Part*>(object))
        return part->getBodies().empty() ? QString() : fileOf(part->getBodies().front().get());
    std::string uri;
    if (const auto* body = dynamic_cast<const vrk::layout::Body*>(object))
        uri = body->getGeometryUri();
    else if (const auto* cloud = dynamic_cast<const vrk::layout::PointCloud*>(object))
        uri = cloud->getGeometryUri();
    const QString file = QString::fromStdString(uri.substr(0, uri.find('#')));
    return file.contains('/') ? file : QString();
}

bool isBody(const Visual& visual)
{
    return visual.getType() == VisualType::Solid || visual.getType() == VisualType::Mesh;
}

/// Whether it is a body or holds some, however deep; what hangs on it is a thing of its own.
bool takesColor(const Visual& visual)
{
    if (isBody(visual))
        return true;
    for (const Visual* child : visual.getChildren())
        if (!child->isAttached() && takesColor(*child))
            return true;
    return false;
}

Properties ofOne(Visual& visual, const StationTree& tree)
{
    Properties properties;
    const int row = tree.find(visual.getId());
    properties.kind = visual.getType();
    properties.title = row == StationTree::none
                           ? QString::fromStdString(visual.getName())
                           : QString::fromStdString(tree.getRows()[static_cast<std::size_t>(row)].name);
    const char* kind = kindOf(visual);
    QString name = kind ? kind : "object";
    name[0] = name[0].toUpper();
    properties.subtitle = QString("%1 · id %2").arg(name).arg(visual.getId());
    properties.addPose("In the world", Posed(visual.getWorldPose()));
    if (const Visual* parent = visual.getParent(); parent && parent != Scene::GetWorldVisual()) {
        const int above = tree.find(parent->getId());
        properties.addPose(above == StationTree::none
                               ? QString("Relative")
                               : "In " + QString::fromStdString(tree.getRows()[static_cast<std::size_t>(above)].name),
                           Posed(visual.getPose()));
    }
    addCounts(properties, contentsOf(visual));
    if (isReachShown(visual.getId())) {
        properties.addHeading("Display");
        properties.addValue("Reach", "shown");
    }
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    if (const QString file = fileOf(sdf::SdfManager::inst().find(visual.getId())); !file.isEmpty()) {
        properties.addHeading("Geometry");
        properties.addValue("File", file);
    }
    properties.canBePainted = takesColor(visual);
    return properties;
}

} // namespace

QString fixedNumber(double value, int decimals)
{
    const double half = 0.5 * std::pow(10.0, -decimals);
    return QLocale::c().toString(std::abs(value) < half ? 0.0 : value, 'f', decimals);
}

void Properties::addValue(const QString& name, const QString& value)
{
    if (!value.isEmpty()) // which would be a heading
        lines.push_back({name, value, {}, {}});
}

void Properties::addCount(const QString& name, std::uint64_t count)
{
    if (count > 0)
        addValue(name, QLocale(QLocale::English).toString(static_cast<qulonglong>(count)));
}

void Properties::addPose(const QString& heading, const Posed& pose)
{
    addHeading(heading + QStringLiteral(" (mm, °)"));
    const std::array<double, 3> place = {pose.position.x, pose.position.y, pose.position.z};
    const std::array<double, 3> angles = anglesOf(pose.rotation());
    const std::array<QString, 3> axes = {"X", "Y", "Z"};
    for (std::size_t i = 0; i < axes.size(); ++i)
        lines.push_back({axes[i], fixedNumber(place[i], 3), "R" + axes[i].toLower(), fixedNumber(angles[i], 3)});
}

Properties propertiesOf(std::span<const unsigned> ids, const StationTree& tree)
{
    if (ids.size() == 1 && isOfProgram(ids.front()))
        return propertiesOfProgram(ids.front());
    std::vector<Visual*> visuals;
    std::size_t ofPrograms = 0;
    for (const unsigned id : ids)
        if (isOfProgram(id))
            ++ofPrograms;
        else if (Scene::HasVisual(id))
            visuals.push_back(Scene::GetVisual(id));
    if (visuals.size() == 1 && ofPrograms == 0)
        return ofOne(*visuals.front(), tree);

    Properties properties;
    Contents sum;
    if (visuals.empty() && ofPrograms == 0) {
        properties.title = "Nothing selected";
        properties.subtitle = "The whole station";
        sum = contentsOf(*Scene::GetWorldVisual());
    } else {
        properties.title = QString("%1 things selected").arg(visuals.size() + ofPrograms);
        properties.subtitle = "Together";
        for (Visual* visual : visuals)
            sum += contentsOf(*visual);
        properties.canBePainted =
            std::ranges::any_of(visuals, [](const Visual* visual) { return takesColor(*visual); });
    }
    addCounts(properties, sum);
    return properties;
}

} // namespace vrkview
