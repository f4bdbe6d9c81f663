#include "visual/VisualStateManager.h"

#include "visual/Visual.h"

#include <vector>

namespace vrk::visual {
namespace {

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
    using enum VisualStateLayer;
    // One by one: each layer is a constant in the code then. Of a loop over an array of them GCC 12 makes, at -O3, a last
    // comparison with a register that was never set.
    const auto has = [mask](VisualStateLayer layer) { return (mask & bit(layer)) != 0; };
    if (has(Selected))
        return Selected;
    if (has(Highlighted))
        return Highlighted;
    if (has(CollisionContact))
        return CollisionContact;
    if (has(CollisionNearMiss))
        return CollisionNearMiss;
    if (has(EmphasizeGroupA))
        return EmphasizeGroupA;
    if (has(EmphasizeGroupB))
        return EmphasizeGroupB;
    return has(Material) ? Material : None;
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

void VisualStateManager::refreshWithParts(Visual* visual)
{
    refresh(visual);
    if (!hasEntry(visual))
        visual->showLookOfWhole();
    refreshBelow(visual);
}

void VisualStateManager::remove(Visual* visual)
{
    entries.erase(visual);
}

} // namespace vrk::visual
