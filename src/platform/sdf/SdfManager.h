#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"

#include <atomic>
#include <memory>
#include <shared_mutex>
#include <unordered_map>
#include <vector>

namespace sdf {

class SdfObject;

/// The table of all model objects by id.
///
/// Thread: `mutex()` guards the table and the objects in it. Who reads takes it shared, who adds, removes or changes
/// takes it unique; `find`, `add` and `remove` do not lock by themselves. The ids may be drawn by any thread without it.
class VRK_EXPORT SdfManager {
public:
    /// The id of the station itself. As a parent it means the world, as 0 does; no object of the table has it.
    static constexpr unsigned stationId = 0x7FFFFFFF;

    static SdfManager& inst();

    std::shared_mutex& mutex() { return tableMutex; }

    /// The object of that id; null where there is none or its entry is empty.
    SdfObject* find(unsigned id) const;
    std::shared_ptr<SdfObject> share(unsigned id) const;
    /// Appends the objects of these ids, in their order, leaving out those that are not there.
    void appendKnown(const std::vector<unsigned>& ids, std::vector<SdfObject*>& found) const;
    /// Enters an object under its id, in place of one that had it.
    void add(std::shared_ptr<SdfObject> object);
    void remove(unsigned id);
    void clear();
    std::size_t size() const { return objects.size(); }

    /// A new id for an object of the model: 1, 2, 3, ... and never one that is in the table. Any thread; takes the
    /// lock shared.
    unsigned generateId();
    /// A new id for something that lives only as long as this process, from 0x80000000 up. Any thread, lock free.
    static unsigned GenerateTransientId();

private:
    SdfManager() = default;

    mutable std::shared_mutex tableMutex;
    std::atomic<unsigned> lastId{0};
    std::unordered_map<unsigned, std::shared_ptr<SdfObject>> objects;
};

/// The object of that id, kept alive while it is used; null for an unknown one. Takes the lock shared.
VRK_EXPORT std::shared_ptr<SdfObject> Share(unsigned id);

/// The pose of the object of that id, local to its parent; identity for an unknown one. Takes the lock shared.
VRK_EXPORT vrk::rob::Posed GetPose(unsigned id);

} // namespace sdf
