#include "scene/core/OwedTasks.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace vrk::visual {

class OwedTasks::Ledger {
public:
    void add(Task task)
    {
        const std::lock_guard lock(mutex);
        tasks.push_back(std::move(task));
        owing = true;
    }
    /// The first; none where nothing is owed.
    std::optional<Task> take()
    {
        const std::lock_guard lock(mutex);
        owing = !tasks.empty(); // also where the task that is taken fails: the others are asked for again
        if (!owing)
            return std::nullopt;
        Task task = std::move(tasks.front());
        tasks.pop_front();
        return task;
    }
    /// Whether something is owed that nobody has asked for yet.
    bool ask() { return owing.exchange(false); }
    void takeBackAsking()
    {
        const std::lock_guard lock(mutex);
        owing = !tasks.empty();
    }

private:
    std::mutex mutex;
    std::deque<Task> tasks;
    std::atomic<bool> owing{false};
};

/// Lives in a task of the queue, and dies with it whether it has run or not.
class OwedTasks::Promise {
public:
    Promise(std::shared_ptr<Ledger> ledger, Task owed) : ledger(std::move(ledger)), owed(std::move(owed)) {}
    ~Promise()
    {
        if (isKept)
            return;
        if (owed)
            ledger->add(std::move(owed));
        else
            ledger->takeBackAsking();
    }
    Promise(const Promise&) = delete;
    Promise& operator=(const Promise&) = delete;

    /// The task has its turn. One that fails in it is not tried again.
    void keep() { isKept = true; }

private:
    std::shared_ptr<Ledger> ledger;
    Task owed;
    bool isKept = false;
};

OwedTasks::OwedTasks(RenderTaskQueue& queue) : queue(queue), ledger(std::make_shared<Ledger>()) {}

void OwedTasks::post(Task task, Task owed, const char* from)
{
    queue.post(
        [promise = std::make_shared<Promise>(ledger, std::move(owed)), task = std::move(task)] {
            promise->keep();
            task();
        },
        0, from);
}

void OwedTasks::postWhatIsOwed()
{
    if (!ledger->ask())
        return;
    queue.post(
        [promise = std::make_shared<Promise>(ledger, nullptr), ledger = ledger] {
            promise->keep();
            while (const std::optional<Task> task = ledger->take())
                (*task)();
        },
        0);
}

} // namespace vrk::visual
