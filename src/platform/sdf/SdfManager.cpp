#include "platform/sdf/SdfManager.h"

#include "platform/sdf/SdfObject.h"

#include <mutex>

namespace sdf {
namespace {

constexpr unsigned firstTransientId = 0x80000000;

} // namespace

SdfManager& SdfManager::inst()
{
    static SdfManager* const manager = new SdfManager; // never freed: threads may still ask while statics are destroyed
    return *manager;
}

SdfObject* SdfManager::find(unsigned id) const
{
    const auto found = objects.find(id);
    return found == objects.end() ? nullptr : found->second.get();
}

std::shared_ptr<SdfObject> SdfManager::share(unsigned id) const
{
    const auto found = objects.find(id);
    return found == objects.end() ? nullptr : found->second;
}

void SdfManager::appendKnown(const std::vector<unsigned>& ids, std::vector<SdfObject*>& found) const
{
    for (const unsigned id : ids) {
        if (SdfObject* object = find(id))
            found.push_back(object);
    }
}

void SdfManager::add(std::shared_ptr<SdfObject> object)
{
    const unsigned id = object->getId();
    objects.insert_or_assign(id, std::move(object));
}

void SdfManager::remove(unsigned id)
{
    objects.erase(id);
}

void SdfManager::clear()
{
    objects.clear();
}

unsigned SdfManager::generateId()
{
    const std::shared_lock lock(tableMutex);
    for (;;) {
        const unsigned id = lastId.fetch_add(1, std::memory_order_relaxed) + 1;
        // 0 means "none", and what follows the station's id is the transient ids'.
        if (id != 0 && id < stationId && !objects.contains(id))
            return id;
    }
}

unsigned SdfManager::GenerateTransientId()
{
    static std::atomic<unsigned> count{0};
    return firstTransientId | count.fetch_add(1, std::memory_order_relaxed);
}

std::shared_ptr<SdfObject> Share(unsigned id)
{
    SdfManager& manager = SdfManager::inst();
    const std::shared_lock lock(manager.mutex());
    return manager.share(id);
}

vrk::rob::Posed GetPose(unsigned id)
{
    SdfManager& manager = SdfManager::inst();
    const std::shared_lock lock(manager.mutex());
    const SdfObject* object = manager.find(id);
    return object == nullptr ? vrk::rob::Posed() : object->getPose();
}

} // namespace sdf
