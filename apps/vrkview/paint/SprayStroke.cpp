#include "paint/SprayStroke.h"

#include "edit/ChangeIds.h"

#include <algorithm>
#include <utility>

namespace vrkview {

SprayStroke::SprayStroke(const QString& text, BodyCoats& coats, std::vector<BodyCoats::Patch> made, double from,
                         double to, std::function<void(double)> goTo, int gesture)
    : Change(text, Touched::Nothing), coats(coats), from(from), to(to), goTo(std::move(goTo)), gesture(gesture)
{
    for (BodyCoats::Patch& patch : made)
        take(std::move(patch));
}

void SprayStroke::apply()
{
    if (!std::exchange(isPainted, true))
        for (const BodyCoats::Patch& patch : patches)
            coats.put(patch.body, patch.vertices, patch.after);
    goTo(to);
}

void SprayStroke::revert()
{
    for (const BodyCoats::Patch& patch : patches)
        coats.put(patch.body, patch.vertices, patch.before);
    isPainted = false;
    goTo(from);
}

int SprayStroke::id() const
{
    return static_cast<int>(MergingChange::SprayStroke);
}

bool SprayStroke::mergeWith(const QUndoCommand* next)
{
    const auto& stroke = static_cast<const SprayStroke&>(*next);
    if (gesture == 0 || stroke.gesture != gesture)
        return false;
    for (const BodyCoats::Patch& patch : stroke.patches)
        take(patch);
    to = stroke.to;
    return true;
}

/// A body has one patch, whose vertices have what the last stroke left on them.
void SprayStroke::take(BodyCoats::Patch patch)
{
    const auto mine = std::ranges::find(patches, patch.body, &BodyCoats::Patch::body);
    if (mine == patches.end())
        patches.push_back(std::move(patch));
    else
        add(patch, static_cast<std::size_t>(mine - patches.begin()));
}

void SprayStroke::add(const BodyCoats::Patch& later, std::size_t patch)
{
    BodyCoats::Patch& mine = patches[patch];
    places.resize(patches.size());
    Places& known = places[patch];
    for (std::size_t i = known.size(); i < mine.vertices.size(); ++i)
        known.emplace(mine.vertices[i], i);
    for (std::size_t i = 0; i < later.vertices.size(); ++i) {
        const auto [place, isNew] = known.try_emplace(later.vertices[i], mine.vertices.size());
        if (isNew) {
            mine.vertices.push_back(later.vertices[i]);
            mine.before.push_back(later.before[i]);
            mine.after.push_back(later.after[i]);
        } else {
            mine.after[place->second] = later.after[i];
        }
    }
}

ExchangePaint::ExchangePaint(const QString& text, BodyCoats& coats, unsigned body, std::vector<float> thickness)
    : Change(text, Touched::Nothing), coats(coats), body(body), before(coats.getThickness(body)),
      after(std::move(thickness))
{
}

} // namespace vrkview
