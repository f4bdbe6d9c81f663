#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace vrk::common {

/// Things that are made once for all who ask for them by one key, and that live as long as any of these has them.
///
/// Thread: any. Who asks first makes the thing, on its own thread; who asks for the same one meanwhile waits, and nobody
/// else does. A failure is thrown to who asked, and the next one tries again.
template <typename Key, typename Thing, typename Hash = std::hash<Key>>
class SharedThings {
public:
    /// @param fits  bool(const Thing&): whether what others have is still what this one wants; where it is not, it gets
    ///              another one, as those who ask later do.
    /// @param make  std::shared_ptr<const Thing>()
    template <typename Fits, typename Make>
    std::shared_ptr<const Thing> get(const Key& key, const Fits& fits, const Make& make)
    {
        const std::shared_ptr<Place> place = placeOf(key);
        const std::lock_guard alone(place->making);
        std::shared_ptr<const Thing> thing = place->thing.lock();
        if (!thing || !fits(*thing)) {
            thing = make();
            place->thing = thing;
        }
        return thing;
    }

private:
    struct Place {
        std::mutex making;
        std::weak_ptr<const Thing> thing;
    };

    std::shared_ptr<Place> placeOf(const Key& key)
    {
        const std::lock_guard lock(mutex);
        if (places.size() >= sizeToSweep) {
            std::erase_if(places, [](const auto& entry) {
                // One that somebody else has is asked for just now.
                return entry.second.use_count() == 1 && entry.second->thing.expired();
            });
            sizeToSweep = std::max(smallestSweep, 2 * places.size());
        }
        std::shared_ptr<Place>& place = places[key];
        if (!place)
            place = std::make_shared<Place>();
        return place;
    }

    static constexpr std::size_t smallestSweep = 64;

    std::mutex mutex;
    std::unordered_map<Key, std::shared_ptr<Place>, Hash> places;
    std::size_t sizeToSweep = smallestSweep;
};

} // namespace vrk::common
