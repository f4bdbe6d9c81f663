#pragma once

#include "platform/common/Export.h"
#include "scene/core/RenderTaskQueue.h"

#include <memory>
#include <source_location>

namespace vrk::visual {

/// Work that undoes something, and of which no record is left once it is posted: the end of a highlight, for one.
///
/// A task that fails takes the rest of its batch with it. What was posted here and went that way is not forgotten but owed,
/// until someone asks for it again.
///
/// Thread: any.
class VRK_EXPORT OwedTasks {
public:
    using Task = RenderTaskQueue::Task;

    explicit OwedTasks(RenderTaskQueue& queue);

    /// Posts a task of key 0. If it is dropped without being run, `owed` is what is done later instead.
    /// @param from  as that of `RenderTaskQueue::post`.
    void post(Task task, Task owed, const char* from = std::source_location::current().function_name());
    /// A task that is owed itself.
    void post(const Task& task, const char* from = std::source_location::current().function_name())
    {
        post(task, task, from);
    }
    /// Posts what is owed, in the order in which it was dropped. Nothing is posted where nothing is owed.
    void postWhatIsOwed();

private:
    class Ledger;
    class Promise;

    RenderTaskQueue& queue;
    std::shared_ptr<Ledger> ledger; // also the queue's tasks hold it: they may die last
};

} // namespace vrk::visual
