#include "platform/station/file/StationIds.h"

#include "platform/sdf/SdfManager.h"

#include <fmt/format.h>

#include <unordered_set>

namespace vrk::station {

unsigned StationIds::read(const JsonPlace& at, sdf::ModelType type, bool isSeen, unsigned parent)
{
    const JsonPlace place = at.at("id");
    const unsigned id = place.asId();
    if (!known.emplace(id, Known{type, isSeen, parent}).second)
        place.fail(fmt::format("an id that nothing else has, not {}", id));
    return id;
}

unsigned StationIds::readOwner(const JsonPlace& at, std::string_view key, unsigned of)
{
    if (!at.has(key))
        return 0;
    const JsonPlace place = at.at(key);
    if (place.get() == "station")
        return sdf::SdfManager::stationId;
    const unsigned owner = place.asId();
    owners.push_back({place, of, owner});
    known.at(of).parent = owner;
    return owner;
}

unsigned StationIds::readSeenOwner(const JsonPlace& at, std::string_view key, unsigned of)
{
    const unsigned owner = readOwner(at, key, of);
    if (owner == 0 || owner == sdf::SdfManager::stationId)
        return owner;
    const auto found = known.find(owner);
    if (found == known.end() || !found->second.isSeen || owner == of)
        at.at(key).fail(fmt::format("the id of an object that is seen and stands before, not {}", owner));
    return owner;
}

const StationIds::Known* StationIds::find(unsigned id) const
{
    const auto found = known.find(id);
    return found == known.end() ? nullptr : &found->second;
}

unsigned StationIds::seenAt(const JsonPlace& place) const
{
    const unsigned id = place.asId();
    const auto found = known.find(id);
    if (found == known.end() || !found->second.isSeen)
        place.fail(fmt::format("the id of an object that is seen, not {}", id));
    return id;
}

/// Without loops the way up has an end; one that is there already is found before as many steps as there are objects.
bool StationIds::isAbove(unsigned id, unsigned of) const
{
    for (std::size_t steps = 0; steps <= known.size(); ++steps) {
        if (of == id)
            return true;
        const auto found = known.find(of);
        if (found == known.end())
            return false;
        of = found->second.parent;
    }
    return false;
}

void StationIds::check() const
{
    for (const std::vector<Reference>* references : {&owners, &members}) {
        for (const Reference& reference : *references) {
            if (!known.contains(reference.to))
                reference.place.fail(fmt::format("the id of an object of the station, not {}", reference.to));
        }
    }
    for (const Reference& owner : owners) {
        if (isAbove(owner.from, owner.to))
            owner.place.fail("an owner that does not lie on the object itself");
    }
    checkMembers();
}

/// Who hides or selects a group goes on to its members: none may lead back.
void StationIds::checkMembers() const
{
    std::unordered_map<unsigned, std::vector<const Reference*>> byGroup;
    for (const Reference& member : members)
        byGroup[member.from].push_back(&member);
    std::unordered_set<unsigned> clear; // leads back to nothing
    std::unordered_set<unsigned> open;  // between the group that was begun with and the one that is looked at
    struct Level {
        unsigned group;
        std::size_t next;
    };
    for (const auto& [first, unused] : byGroup) {
        std::vector<Level> way{{first, 0}};
        open.insert(first);
        while (!way.empty()) {
            Level& level = way.back();
            const auto found = byGroup.find(level.group);
            if (clear.contains(level.group) || found == byGroup.end() || level.next == found->second.size()) {
                clear.insert(level.group);
                open.erase(level.group);
                way.pop_back();
                continue;
            }
            const Reference& member = *found->second[level.next++];
            if (open.contains(member.to))
                member.place.fail("a member that does not lead back to the group");
            open.insert(member.to);
            way.push_back({member.to, 0});
        }
    }
}

} // namespace vrk::station
