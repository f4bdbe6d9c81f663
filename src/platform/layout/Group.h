#pragma once

#include "platform/sdf/SdfObject.h"

namespace vrk::layout {

/// Gathers objects under a name, wherever they stand. It has no place of its own and does not own them.
class VRK_EXPORT Group : public sdf::SdfObject {
public:
    /// @param type  one of the five kinds of groups.
    /// @throws std::invalid_argument "not a kind of group"
    Group(sdf::ModelType type, unsigned id, std::string name);
    ~Group() override;

    void addMember(unsigned id) { memberIds.push_back(id); }
    void removeMember(unsigned id) { std::erase(memberIds, id); }
    const std::vector<unsigned>& getMemberIds() const { return memberIds; }
    /// Members that the object table does not know are left out.
    void getMembers(std::vector<sdf::SdfObject*>& members) const override;

private:
    std::vector<unsigned> memberIds;
};

} // namespace vrk::layout
