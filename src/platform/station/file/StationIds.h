#pragma once

#include "platform/sdf/ModelType.h"
#include "platform/station/file/StationJson.h"

#include <unordered_map>
#include <vector>

namespace vrk::station {

/// The ids of a station file that is being read, and what refers to what. Not installed.
///
/// References to objects that stand later in the file are gathered and looked at in `check`.
class StationIds {
public:
    /// What is known of an id.
    struct Known {
        sdf::ModelType type;
        bool isSeen;         // has a visual that others can be placed on
        unsigned parent = 0; // 0 for the world
    };

    /// Reads the id at "id" and enters it with its type, whether it is seen, and its parent.
    /// @throws StationFileError  where another object has it.
    unsigned read(const JsonPlace& at, sdf::ModelType type, bool isSeen, unsigned parent = 0);
    /// The owner at `key`: 0 where there is none, the station, or an id, which `check` looks at.
    unsigned readOwner(const JsonPlace& at, std::string_view key, unsigned of);
    /// The owner of an object whose visual is built on the owner's: the owner must be seen and stand earlier in the file.
    unsigned readSeenOwner(const JsonPlace& at, std::string_view key, unsigned of);
    /// Takes the ids at "members" into a group or an operation; `check` looks at them.
    template <typename Gathering>
    void readMembers(const JsonPlace& at, Gathering& gathering)
    {
        at.forEach("members", [&](const JsonPlace& place) {
            const unsigned member = place.asId();
            members.push_back({place, gathering.getId(), member});
            gathering.addMember(member);
        });
    }

    /// Null for an id that was not read yet.
    const Known* find(unsigned id) const;
    void setParent(unsigned id, unsigned parent) { known.at(id).parent = parent; }
    void setSeen(unsigned id, bool isSeen) { known.at(id).isSeen = isSeen; }
    /// The id at a place, of an object that is seen.
    unsigned seenAt(const JsonPlace& place) const;
    /// Whether `id` is `of` or carries it.
    bool isAbove(unsigned id, unsigned of) const;
    /// Refuses owners and members that are nowhere or lead back to themselves.
    void check() const;

private:
    struct Reference {
        JsonPlace place;
        unsigned from;
        unsigned to;
    };

    void checkMembers() const;

    std::unordered_map<unsigned, Known> known;
    std::vector<Reference> owners;
    std::vector<Reference> members;
};

} // namespace vrk::station
