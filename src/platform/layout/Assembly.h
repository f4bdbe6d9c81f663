#pragma once

#include "platform/sdf/SdfObject.h"

#include <memory>
#include <vector>

namespace vrk::layout {

class Assembly;
class Part;

/// What is made of parts and assemblies: it owns them, and they are its pieces.
///
/// It is put together before it enters the station: members that are added later are not in the object table.
class VRK_EXPORT PartContainer : public sdf::SdfContainer {
public:
    using SdfContainer::SdfContainer;
    ~PartContainer() override;

    void addPart(std::shared_ptr<Part> part);
    void addAssembly(std::shared_ptr<Assembly> assembly);
    /// Takes a member out; it still names this as its parent. An unknown id does nothing. Of what stands in the station
    /// `Layout::remove` takes members out, which knows what else refers to them.
    void removeMember(unsigned id);
    /// Puts a member in, at an index up to the number of them.
    void insertMember(std::size_t index, std::shared_ptr<sdf::SdfContainer> member);
    /// Parts and assemblies in model order.
    const std::vector<std::shared_ptr<sdf::SdfContainer>>& getParts() const { return members; }
    std::vector<std::shared_ptr<sdf::SdfObject>> getPieces() const override;

private:
    std::vector<std::shared_ptr<sdf::SdfContainer>> members;
};

/// Parts that belong together and move as one. Its element holds "pose".
class VRK_EXPORT Assembly : public PartContainer {
public:
    Assembly(unsigned id, std::string name);
    ~Assembly() override;
};

} // namespace vrk::layout
