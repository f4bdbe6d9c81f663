#include "docks/Properties.h"

#include "canvas/Contents.h"
#include "docks/PoseText.h"
#include "docks/StationTree.h"
#include "files/ObjectNames.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <shared_mutex>

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::rob::Posed;
using vrk::visual::Scene;
using vrk::visual::Visual;

/// Without the minus of what rounds to zero.
QString fixed(double value, int decimals)
{
    const double half = 0.5 * std::pow(10.0, -decimals);
    return QLocale::c().toString(std::abs(value) < half ? 0.0 : value, 'f', decimals);
}

void addPose(Properties& properties, const QString& heading, const Posed& pose)
{
    properties.lines.push_back({heading + QStringLiteral(" (mm, °)"), {}, {}, {}});
    const std::array<double, 3> place = {pose.position.x, pose.position.y, pose.position.z};
    const std::array<double, 3> angles = anglesOf(pose.rotation());
    const std::array<QString, 3> axes = {"X", "Y", "Z"};
    for (std::size_t i = 0; i < axes.size(); ++i)
        properties.lines.push_back({axes[i], fixed(place[i], 3), "R" + axes[i].toLower(), fixed(angles[i], 3)});
}

void addCounts(Properties& properties, const Contents& contents)
{
    properties.lines.push_back({"Contents", {}, {}, {}});
    const auto add = [&properties](const char* name, std::uint64_t count) {
        if (count > 0)
            properties.lines.push_back(
                {name, QLocale(QLocale::English).toString(static_cast<qulonglong>(count)), {}, {}});
    };
    add("Bodies", contents.bodies);
    add("Faces", contents.faces);
    add("Triangles", contents.triangles);
    add("Curves", contents.curves);
    add("Points", contents.points);
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
    addPose(properties, "In the world", Posed(visual.getWorldPose()));
    if (const Visual* parent = visual.getParent(); parent && parent != Scene::GetWorldVisual()) {
        const int above = tree.find(parent->getId());
        addPose(properties,
                above == StationTree::none
                    ? QString("Relative")
                    : "In " + QString::fromStdString(tree.getRows()[static_cast<std::size_t>(above)].name),
                Posed(visual.getPose()));
    }
    addCounts(properties, contentsOf(visual));
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    if (const QString file = fileOf(sdf::SdfManager::inst().find(visual.getId())); !file.isEmpty()) {
        properties.lines.push_back({"Geometry", {}, {}, {}});
        properties.lines.push_back({"File", file, {}, {}});
    }
    properties.canBePainted = takesColor(visual);
    return properties;
}

} // namespace

Properties propertiesOf(std::span<const unsigned> ids, const StationTree& tree)
{
    std::vector<Visual*> visuals;
    for (const unsigned id : ids)
        if (Scene::HasVisual(id))
            visuals.push_back(Scene::GetVisual(id));
    if (visuals.size() == 1)
        return ofOne(*visuals.front(), tree);

    Properties properties;
    Contents sum;
    if (visuals.empty()) {
        properties.title = "Nothing selected";
        properties.subtitle = "The whole station";
        sum = contentsOf(*Scene::GetWorldVisual());
    } else {
        properties.title = QString("%1 things selected").arg(visuals.size());
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
