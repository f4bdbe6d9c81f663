#include "platform/layout/Layout.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"

#include <algorithm>
#include <mutex>

namespace vrk::layout {
namespace {

void removeObjects(const Part& part)
{
    sdf::SdfManager& manager = sdf::SdfManager::inst();
    for (const std::shared_ptr<Body>& body : part.getBodies())
        manager.remove(body->getId());
    manager.remove(part.getId());
}

} // namespace

Layout& Layout::inst()
{
    static Layout* const layout = new Layout; // never freed, like the object table
    return *layout;
}

void Layout::addPart(std::shared_ptr<Part> part)
{
    sdf::SdfManager& manager = sdf::SdfManager::inst();
    const std::unique_lock lock(manager.mutex());
    for (const std::shared_ptr<Body>& body : part->getBodies())
        manager.add(body);
    manager.add(part);
    parts.push_back(std::move(part));
}

void Layout::removePart(unsigned id)
{
    std::shared_ptr<Part> removed; // freed after the lock: shapes may be large
    const std::unique_lock lock(sdf::SdfManager::inst().mutex());
    const auto found = std::ranges::find(parts, id, [](const auto& part) { return part->getId(); });
    if (found == parts.end())
        return;
    removed = std::move(*found);
    parts.erase(found);
    removeObjects(*removed);
}

void Layout::addPointCloud(std::shared_ptr<PointCloud> cloud)
{
    sdf::SdfManager& manager = sdf::SdfManager::inst();
    const std::unique_lock lock(manager.mutex());
    manager.add(cloud);
    pointclouds.push_back(std::move(cloud));
}

void Layout::removePointCloud(unsigned id)
{
    std::shared_ptr<PointCloud> removed; // freed after the lock: clouds are large
    sdf::SdfManager& manager = sdf::SdfManager::inst();
    const std::unique_lock lock(manager.mutex());
    const auto found = std::ranges::find(pointclouds, id, [](const auto& cloud) { return cloud->getId(); });
    if (found == pointclouds.end())
        return;
    removed = std::move(*found);
    pointclouds.erase(found);
    manager.remove(id);
}

void Layout::clear()
{
    std::vector<std::shared_ptr<Part>> removed; // freed after the lock, as above
    std::vector<std::shared_ptr<PointCloud>> removedClouds;
    sdf::SdfManager& manager = sdf::SdfManager::inst();
    const std::unique_lock lock(manager.mutex());
    removed.swap(parts);
    for (const std::shared_ptr<Part>& part : removed)
        removeObjects(*part);
    removedClouds.swap(pointclouds);
    for (const std::shared_ptr<PointCloud>& cloud : removedClouds)
        manager.remove(cloud->getId());
}

} // namespace vrk::layout
