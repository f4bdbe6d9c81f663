#include "docks/StationTree.h"

#include "files/ObjectNames.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

#include <shared_mutex>

namespace vrkview {
namespace {

using vrk::visual::Scene;
using vrk::visual::Visual;
using Children = std::unordered_map<unsigned, std::vector<const Visual*>>; // by the parent's id, 0 for the world

/// The next visual above this one that is a thing of the station; 0 for the world.
unsigned parentOf(const Visual& visual, const std::unordered_map<unsigned, std::string>& names)
{
    for (const Visual* above = visual.getParent(); above; above = above->getParent())
        if (kindOf(*above) && names.contains(above->getId()))
            return above->getId();
    return 0;
}

void appendBelow(unsigned parent, int parentRow, const Children& children,
                 const std::unordered_map<unsigned, std::string>& names, std::vector<StationTree::Row>& rows)
{
    const auto found = children.find(parent);
    if (found == children.end())
        return;
    for (const Visual* visual : found->second) {
        StationTree::Row row;
        row.id = visual->getId();
        row.kind = visual->getType();
        row.name = names.at(row.id);
        row.parent = parentRow;
        row.followsParent = !visual->isAttached() && !visual->isAnchored();
        rows.push_back(std::move(row));
        appendBelow(visual->getId(), static_cast<int>(rows.size()) - 1, children, names, rows);
    }
}

} // namespace

StationTree::StationTree(std::vector<Row> given) : rows(std::move(given))
{
    for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
        Row& row = rows[static_cast<std::size_t>(i)];
        std::vector<int>& beside = row.parent == none ? roots : rows[static_cast<std::size_t>(row.parent)].children;
        row.position = static_cast<int>(beside.size());
        beside.push_back(i);
        rowOfId[row.id] = i;
        for (int above = i; above != none; above = rows[static_cast<std::size_t>(above)].parent)
            rows[static_cast<std::size_t>(above)].end = i + 1;
    }
}

StationTree StationTree::OfScene()
{
    std::vector<std::shared_ptr<sdf::SdfObject>> objects;
    std::unordered_map<unsigned, std::string> names;
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        objects = vrk::layout::Layout::inst().objects();
        for (const auto& object : objects)
            names[object->getId()] = object->getName();
    }
    Children children;
    for (const auto& object : objects) {
        if (!Scene::HasVisual(object->getId()))
            continue;
        const Visual& visual = *Scene::GetVisual(object->getId());
        if (kindOf(visual))
            children[parentOf(visual, names)].push_back(&visual);
    }
    std::vector<Row> rows;
    appendBelow(0, none, children, names, rows);
    return StationTree(std::move(rows));
}

int StationTree::find(unsigned id) const
{
    const auto found = rowOfId.find(id);
    return found == rowOfId.end() ? none : found->second;
}

} // namespace vrkview
