#include "visual/VisualStateManager.h"

#include "visual/Visual.h"

#include <array>
#include <vector>

namespace vrk::visual {
namespace {

constexpr std::array priority = {VisualStateLayer::Selected,         VisualStateLayer::Highlighted,
                                 VisualStateLayer::CollisionContact, VisualStateLayer::CollisionNearMiss,
                                 VisualStateLayer::EmphasizeGroupA,  VisualStateLayer::EmphasizeGroupB,
                                 VisualStateLayer::Material};

constexpr unsigned bit(VisualStateLayer layer)
{
    return static_cast<unsigned>(layer);
}

} // namespace

void VisualStateManager::setLayer(Visual* visual, VisualStateLayer layer, bool on, const std::string& material)
{
    if (on) {
        Entry& entry = entries[visual];
        entry.mask |= bit(layer);
        if (!material.empty())
            entry.materials[layer] = material;
        return;
    }
    const auto found = entries.find(visual);
    if (found == entries.end())
        return;
    found->second.mask &= ~bit(layer);
    found->second.materials.erase(layer);
    if (found->second.isEmpty())
        entries.erase(found);
}

void VisualStateManager::clearLayer(VisualStateLayer layer)
{
    std::vector<const Visual*> changed;
    for (auto& [visual, entry] : entries) {
        if (!(entry.mask & bit(layer)))
            continue;
        entry.mask &= ~bit(layer);
        entry.materials.erase(layer);
        changed.push_back(visual);
    }
    // Refreshed apart from the walk: what a visual does to show itself may come back here.
    for (const Visual* visual : changed)
        refresh(const_cast<Visual*>(visual)); // the key is const because the map does not change it
    std::erase_if(entries, [](const auto& item) { return item.second.isEmpty(); });
}

bool VisualStateManager::hasLayer(const Visual* visual, VisualStateLayer layer) const
{
    const auto found = entries.find(visual);
    return found != entries.end() && (found->second.mask & bit(layer)) != 0;
}

bool VisualStateManager::hasEntry(const Visual* visual) const
{
    return entries.contains(visual);
}

std::vector<const Visual*> VisualStateManager::visualsWithLayers() const
{
    std::vector<const Visual*> found;
    found.reserve(entries.size());
    for (const auto& [visual, entry] : entries)
        found.push_back(visual);
    return found;
}

VisualStateLayer VisualStateManager::pickTopLayer(unsigned mask)
{
    for (const VisualStateLayer layer : priority)
        if (mask & bit(layer))
            return layer;
    return VisualStateLayer::None;
}

void VisualStateManager::refresh(Visual* visual)
{
    visual->clearHighlightOrSelect();
    const auto found = entries.find(visual);
    if (found == entries.end())
        return;
    const VisualStateLayer top = pickTopLayer(found->second.mask);
    switch (top) {
    case VisualStateLayer::Selected:
        visual->setSelected();
        break;
    case VisualStateLayer::Highlighted:
        visual->setHighlighted();
        break;
    case VisualStateLayer::CollisionContact:
        visual->showMaterial("CollisionContact");
        break;
    case VisualStateLayer::CollisionNearMiss:
        visual->showMaterial("CollisionNearMiss");
        break;
    case VisualStateLayer::EmphasizeGroupA:
        visual->showMaterial("EmphasizeCollisionGroupA");
        break;
    case VisualStateLayer::EmphasizeGroupB:
        visual->showMaterial("EmphasizeCollisionGroupB");
        break;
    case VisualStateLayer::Material:
    case VisualStateLayer::None: {
        const auto material = found->second.materials.find(VisualStateLayer::Material);
        if (top == VisualStateLayer::Material && material != found->second.materials.end())
            visual->showMaterial(material->second);
        else
            visual->resetAppearance();
        break;
    }
    }
}

void VisualStateManager::refreshBelow(Visual* visual)
{
    if (entries.empty() || (entries.size() == 1 && entries.contains(visual)))
        return; // as with most hovers: the tree need not be walked
    for (Visual* child : visual->getChildren()) {
        if (entries.contains(child))
            refresh(child);
        refreshBelow(child);
    }
}

void VisualStateManager::remove(Visual* visual)
{
    entries.erase(visual);
}

} // namespace vrk::visual
