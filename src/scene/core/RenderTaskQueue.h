#pragma once

#include "platform/common/Export.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace vrk::visual {

/// The work that waits for the render thread, in the order in which it was posted.
///
/// Thread: `post` from any thread; everything else on the render thread.
class VRK_EXPORT RenderTaskQueue {
public:
    using Task = std::function<void()>;

    /// Appends a task and raises `updateScene`, the lock still held: a receiver must not post from inside the signal.
    ///
    /// @param key  0 for a task that stands by itself. With any other key the waiting task of that key is dropped
    ///             without being run, and the new one goes to the end; it does not take the old one's place.
    void post(Task&& task, std::uint64_t key);

    /// Runs what has been posted so far, in order. What a task posts runs in the next call.
    ///
    /// Nothing is caught: a task that throws ends the call, and what stood behind it is dropped without being run.
    /// @throws std::bad_function_call for a task that was posted empty.
    void run();

    /// Asks for one more frame at the end of the present `run`, since changes of instance batches show one frame late.
    void setInstanceDirty() { instanceDirty = true; }

private:
    struct Entry {
        std::uint64_t key;
        Task task;
        bool dropped = false; // a later task of its key has come
    };

    void compact();

    std::mutex mutex; // guards the three below
    std::vector<Entry> entries;
    std::unordered_map<std::uint64_t, std::size_t> lastOfKey; // where the one waiting entry of each key stands
    std::size_t droppedCount = 0;
    // Render thread: the storage of the batch before, empty, for the posts of the next. Posts then allocate nothing.
    std::vector<Entry> spare;
    bool instanceDirty = false; // render thread
};

} // namespace vrk::visual
