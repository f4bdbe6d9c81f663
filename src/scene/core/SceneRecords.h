#pragma once

#include <memory>
#include <mutex>
#include <type_traits>
#include <typeindex>
#include <unordered_map>

namespace vrk::visual {

/// What families of the scene's operations keep between their calls: one object of each type, made when it is first asked
/// for. A family brings a small class of its own and needs no member anywhere else.
///
/// Thread: any; for the objects, what they say themselves.
class SceneRecords {
public:
    /// @tparam Record  is made of the core where it takes one.
    template <typename Record, typename Core>
    Record& get(Core& core)
    {
        const std::lock_guard lock(mutex);
        std::shared_ptr<void>& record = records[typeid(Record)];
        if (!record) {
            if constexpr (std::is_constructible_v<Record, Core&>)
                record = std::make_shared<Record>(core);
            else
                record = std::make_shared<Record>();
        }
        return *static_cast<Record*>(record.get());
    }

private:
    std::mutex mutex;
    std::unordered_map<std::type_index, std::shared_ptr<void>> records; // std::any would ask for copies
};

} // namespace vrk::visual
