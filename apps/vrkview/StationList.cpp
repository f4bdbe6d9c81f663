#include "StationList.h"

#include "Contents.h"
#include "ObjectNames.h"
#include "Station.h"

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

#include <nlohmann/json.hpp>

#include <shared_mutex>

namespace vrkview {
namespace {

using Json = nlohmann::ordered_json;
using vrk::visual::Visual;

Json counts(Visual& visual)
{
    const Contents contents = contentsOf(visual);
    return {{"bodies", contents.bodies},
            {"faces", contents.faces},
            {"triangles", contents.triangles},
            {"curves", contents.curves},
            {"points", contents.points}};
}

Json treeOf(Visual& visual);

/// Of those children that are things of the station: the frame at the origin is the scene's own.
Json treesBelow(const Visual& visual)
{
    Json trees = Json::array();
    const sdf::SdfManager& model = sdf::SdfManager::inst();
    for (Visual* child : visual.getChildren())
        if (typeName(child->getType()) && model.find(child->getId()))
            trees.push_back(treeOf(*child));
    return trees;
}

Json treeOf(Visual& visual)
{
    Json entry = {{"id", visual.getId()}, {"type", typeName(visual.getType())}, {"name", nameOf(visual)}};
    entry.update(counts(visual));
    Json children = treesBelow(visual);
    if (!children.empty())
        entry["children"] = std::move(children);
    return entry;
}

} // namespace

std::string listStation(const Station& station)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    Visual& world = *vrk::visual::Scene::GetWorldVisual();
    Json list = {{"station", station.title}};
    list.update(counts(world));
    list["tree"] = treesBelow(world);
    // Names come from files and may be in any encoding.
    return list.dump(2, ' ', false, Json::error_handler_t::replace);
}

} // namespace vrkview
