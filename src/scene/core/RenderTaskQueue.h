#pragma once

#include "platform/common/Export.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <source_location>
#include <string>
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
    /// @param key   0 for a task that stands by itself. With any other key the waiting task of that key is dropped
    ///              without being run, and the new one goes to the end; it does not take the old one's place.
    /// @param from  the function that posts it, as `std::source_location` names it, for the log; a text that lasts, or
    ///              null.
    void post(Task&& task, std::uint64_t key, const char* from = std::source_location::current().function_name());

    /// Runs what has been posted so far, in order. What a task posts runs in the next call.
    ///
    /// A task that throws ends the call, and what stood behind it is dropped without being run. One line in the log names the
    /// operation that posted it, the cause and, where a visual was asked for by an unknown id, that id.
    /// @throws what the task threw; std::bad_function_call for a task that was posted empty.
    void run();

    /// What failed, for a `FailureHandler`.
    struct Failure {
        std::string text; ///< as in the log: "Scene::addFrame: invalid unordered_map<K, T> key (17)"
        std::exception_ptr thrown;
    };
    using FailureHandler = std::function<void(const Failure&)>;
    /// The same, but a task that throws is told to the handler, and the batch goes on. What the handler throws ends the call.
    void run(const FailureHandler& told);

    /// A visual was asked for by this id, which has none: what is thrown next on this thread, if it is, comes of that.
    static void noteUnknown(unsigned id);

    /// Asks for one more frame at the end of the present `run`, since changes of instance batches show one frame late.
    void setInstanceDirty() { instanceDirty = true; }

private:
    struct Entry {
        std::uint64_t key;
        Task task;
        const char* from;
        bool dropped = false; // a later task of its key has come
    };

    void compact();
    void runAll(const FailureHandler* told);
    static Failure describe(const Entry& entry);

    std::mutex mutex; // guards the three below
    std::vector<Entry> entries;
    std::unordered_map<std::uint64_t, std::size_t> lastOfKey; // where the one waiting entry of each key stands
    std::size_t droppedCount = 0;
    // Render thread: the storage of the batch before, empty, for the posts of the next. Posts then allocate nothing.
    std::vector<Entry> spare;
    bool instanceDirty = false; // render thread
};

} // namespace vrk::visual
