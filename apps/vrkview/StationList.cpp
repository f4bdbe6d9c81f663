#include "StationList.h"

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
using vrk::VisualType;
using vrk::visual::Visual;

const char* typeName(VisualType type)
{
    switch (type) {
    case VisualType::Part:
        return "part";
    case VisualType::Solid:
        return "solid";
    case VisualType::Mesh:
        return "mesh";
    default:
        return "other";
    }
}

/// The model's name; that of the scene's node where the model does not know the visual.
std::string nameOf(const Visual& visual)
{
    sdf::SdfManager& model = sdf::SdfManager::inst();
    const std::shared_lock lock(model.mutex());
    const sdf::SdfObject* object = model.find(visual.getId());
    return object ? object->getName() : visual.getName();
}

Json counts(Visual& visual)
{
    return {
        {"bodies", visual.getBodiesNum()}, {"faces", visual.getFacesNum()}, {"triangles", visual.getTrianglesNum()}};
}

Json treeOf(Visual& visual)
{
    Json entry = {{"id", visual.getId()}, {"type", typeName(visual.getType())}, {"name", nameOf(visual)}};
    entry.update(counts(visual));
    Json children = Json::array();
    for (Visual* child : visual.getChildren())
        children.push_back(treeOf(*child));
    if (!children.empty())
        entry["children"] = std::move(children);
    return entry;
}

} // namespace

std::string listStation(const Station& station)
{
    Visual& world = *vrk::visual::Scene::GetWorldVisual();
    Json list = {{"station", station.title}};
    list.update(counts(world));
    list["tree"] = Json::array();
    for (Visual* child : world.getChildren())
        list["tree"].push_back(treeOf(*child));
    // Names come from files and may be in any encoding.
    return list.dump(2, ' ', false, Json::error_handler_t::replace);
}

} // namespace vrkview
