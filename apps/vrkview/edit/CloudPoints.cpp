#include "edit/CloudPoints.h"

#include "canvas/Counted.h"
#include "edit/ModelPlaces.h"
#include "files/StationScene.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/ExportCloud.h"
#include "scene/Scene.h"
#include "visual/PointCloudVisual.h"

#include <QObject>

#include <algorithm>
#include <functional>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <stdexcept>

namespace vrkview {
namespace {

using vrk::layout::Layout;
using vrk::layout::PointCloud;
using vrk::layout::PointSet;
using vrk::visual::PointCloudVisual;
using vrk::visual::Scene;

PointSet hiddenOf(const PointCloud& cloud)
{
    return cloud.getHiddenPoints() ? *cloud.getHiddenPoints() : PointSet();
}

/// On the render thread, among its other work, so that a picture follows; at once where there is no scene.
void runInScene(const std::function<void()>& work)
{
    Scene* scene = Scene::Get();
    if (!scene)
        return work();
    scene->processMsgs(); // what fails of earlier posts must not leave this one behind
    scene->addRenderTask(std::function<void()>(work), 0);
    scene->processMsgs();
}

PointCloudVisual* visualOfCloud(unsigned id)
{
    return Scene::Get() && Scene::HasVisual(id) ? dynamic_cast<PointCloudVisual*>(Scene::GetVisual(id)) : nullptr;
}

std::size_t countOf(const PointsOfClouds& points)
{
    std::size_t count = 0;
    for (const auto& [id, numbers] : points)
        count += numbers.size();
    return count;
}

QString pointsText(std::size_t count)
{
    return counted(count, QObject::tr("point"), QObject::tr("points"));
}

/// The cloud's points in two: those with these numbers, and all others that are finite.
std::pair<PointCloud::Content, PointCloud::Content> divided(const PointCloud& cloud, const PointSet& cut)
{
    std::pair<PointCloud::Content, PointCloud::Content> parts;
    const auto& points = cloud.getPoints();
    const auto& normals = cloud.getNormals();
    const bool withNormals = cloud.hasNormals();
    const bool withColors = cloud.hasColors();
    const PointSet hidden = hiddenOf(cloud);
    std::vector<std::uint32_t> hiddenInRest;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (!points[i].isFinite())
            continue;
        PointCloud::Content& part = cut.contains(i) ? parts.first : parts.second;
        if (&part == &parts.second && hidden.contains(i))
            hiddenInRest.push_back(static_cast<std::uint32_t>(part.points.size()));
        part.points.push_back(points[i]);
        if (withNormals)
            part.normals.push_back(normals[i]);
        if (withColors)
            part.colors.push_back(cloud.getColors()[i]);
    }
    if (!hiddenInRest.empty())
        parts.second.hidden = std::make_shared<const PointSet>(hiddenInRest);
    return parts;
}

} // namespace

std::shared_ptr<PointCloud> cloudOf(unsigned id)
{
    return std::dynamic_pointer_cast<PointCloud>(sdf::Share(id));
}

std::size_t countHiddenPoints()
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    std::size_t count = 0;
    for (const auto& cloud : Layout::inst().pointclouds)
        if (const auto& hidden = cloud->getHiddenPoints())
            count += hidden->size();
    return count;
}

std::vector<std::uint32_t> shownPointsOf(unsigned id)
{
    const std::shared_ptr<PointCloud> cloud = cloudOf(id);
    if (!cloud)
        return {};
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const PointSet hidden = hiddenOf(*cloud);
    return PointSet::AllBut(hidden.numbers(), cloud->getPoints().size()).numbers();
}

// Hiding

HidePoints::HidePoints(const QString& text, Sets wanted) : Change(text, Touched::Points), after(std::move(wanted))
{
    std::erase_if(after, [](const auto& set) { return cloudOf(set.first) == nullptr; });
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    for (const auto& cloud : Layout::inst().pointclouds)
        if (after.contains(cloud->getId()))
            before.emplace(cloud->getId(), hiddenOf(*cloud));
}

std::unique_ptr<HidePoints> HidePoints::Also(const PointsOfClouds& points)
{
    Sets sets;
    for (const auto& [id, numbers] : points) {
        const std::shared_ptr<PointCloud> cloud = cloudOf(id);
        if (!cloud)
            continue;
        PointSet set(numbers);
        set |= hiddenOf(*cloud);
        sets.emplace(id, std::move(set));
    }
    return std::unique_ptr<HidePoints>(
        new HidePoints(QObject::tr("Hide %1").arg(pointsText(countOf(points))), std::move(sets)));
}

std::unique_ptr<HidePoints> HidePoints::AllBut(const PointsOfClouds& points, const std::vector<unsigned>& shown)
{
    Sets sets;
    const auto add = [&sets](unsigned id, const std::vector<std::uint32_t>& numbers) {
        if (const std::shared_ptr<PointCloud> cloud = cloudOf(id))
            sets.emplace(id, PointSet::AllBut(numbers, cloud->getPoints().size()));
    };
    for (const auto& [id, numbers] : points)
        add(id, numbers);
    for (const unsigned id : shown)
        if (!points.contains(id))
            add(id, {});
    return std::unique_ptr<HidePoints>(
        new HidePoints(QObject::tr("Show only %1").arg(pointsText(countOf(points))), std::move(sets)));
}

std::unique_ptr<HidePoints> HidePoints::None()
{
    Sets sets;
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        for (const auto& cloud : Layout::inst().pointclouds)
            if (cloud->getHiddenPoints())
                sets.emplace(cloud->getId(), PointSet());
    }
    return std::unique_ptr<HidePoints>(new HidePoints(QObject::tr("Show all points"), std::move(sets)));
}

void HidePoints::hide(const Sets& sets)
{
    runInScene([&sets] {
        for (const auto& [id, set] : sets) {
            const std::shared_ptr<PointCloud> cloud = cloudOf(id);
            {
                const std::unique_lock lock(sdf::SdfManager::inst().mutex());
                cloud->setHiddenPoints(set);
            }
            if (PointCloudVisual* visual = visualOfCloud(id))
                visual->hidePoints(cloud->getHiddenPoints());
        }
    });
}

// Cutting

CutPoints::CutPoints(const PointsOfClouds& points)
    : Change(QObject::tr("Cut off %1").arg(pointsText(countOf(points))), {Touched::Things, Touched::Points})
{
    for (const auto& [id, numbers] : points) {
        const std::shared_ptr<PointCloud> from = cloudOf(id);
        if (!from || numbers.empty())
            continue;
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        auto [cut, rest] = divided(*from, PointSet(numbers));
        if (rest.points.empty())
            throw std::invalid_argument("all points of '" + from->getName() +
                                        "' are selected, so that nothing would be left of it");
        auto made = std::make_shared<PointCloud>(sdf::SdfManager::inst().generateId(), from->getName() + " cut",
                                                 std::move(cut.points), std::move(cut.normals), std::move(cut.colors));
        made->setPose(from->getPose());
        made->setParentId(from->getParentId());
        cuts.push_back({from, std::move(made), std::move(rest)});
    }
}

std::vector<unsigned> CutPoints::getMade() const
{
    std::vector<unsigned> ids;
    for (const Cut& cut : cuts)
        ids.push_back(cut.made->getId());
    return ids;
}

namespace {

/// The cloud of the station takes the other content, and its visual with it.
void exchange(PointCloud& cloud, PointCloud::Content& content)
{
    runInScene([&] {
        {
            const std::unique_lock lock(sdf::SdfManager::inst().mutex());
            cloud.exchange(content);
        }
        if (PointCloudVisual* visual = visualOfCloud(cloud.getId()))
            visual->takeOtherPoints(cloud.getHiddenPoints());
    });
}

} // namespace

void CutPoints::apply()
{
    for (Cut& cut : cuts) {
        exchange(*cut.from, cut.other);
        const unsigned from = cut.from->getId(), made = cut.made->getId();
        Layout& layout = Layout::inst();
        layout.addPointCloud(cut.made);
        std::optional<vrk::layout::Attachment> carrier;
        {
            const std::shared_lock lock(sdf::SdfManager::inst().mutex());
            for (const vrk::layout::Attachment& attachment : layout.attachments)
                if (attachment.child == from)
                    carrier = attachment;
        }
        if (carrier)
            layout.addAttachment(made, carrier->parent, carrier->pose);
        Scene* scene = Scene::Get();
        if (!scene)
            continue;
        addToScene(made);
        if (carrier)
            scene->addAttachment(made, carrier->parent, carrier->pose);
        scene->processMsgs();
    }
}

void CutPoints::revert()
{
    for (auto cut = cuts.rbegin(); cut != cuts.rend(); ++cut) {
        if (Scene* scene = Scene::Get()) {
            removeFromScene(cut->made->getId());
            scene->processMsgs();
        }
        Layout::inst().remove(cut->made->getId());
        exchange(*cut->from, cut->other);
    }
}

// Saving

void savePoints(const PointsOfClouds& points, const std::string& file)
{
    vrk::station::ExportedPoints all;
    bool areNormals = true, areColors = true;
    for (const auto& [id, numbers] : points) {
        const std::shared_ptr<PointCloud> cloud = cloudOf(id);
        if (!cloud)
            continue;
        const vrk::rob::Posed pose = worldPoseOfThing(id);
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        vrk::station::ExportedPoints part = vrk::station::PointsInWorld(*cloud, pose, numbers);
        areNormals = areNormals && part.normals.size() == part.points.size();
        areColors = areColors && part.colors.size() == part.points.size();
        all.points.insert(all.points.end(), part.points.begin(), part.points.end());
        all.normals.insert(all.normals.end(), part.normals.begin(), part.normals.end());
        all.colors.insert(all.colors.end(), part.colors.begin(), part.colors.end());
    }
    if (!areNormals)
        all.normals.clear(); // a file has them for all its points, or for none
    if (!areColors)
        all.colors.clear();
    vrk::station::ExportPointCloud(file, all);
}

} // namespace vrkview
