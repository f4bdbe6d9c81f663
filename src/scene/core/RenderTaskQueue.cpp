#include "scene/core/RenderTaskQueue.h"

#include "platform/broker/SignalBroker.h"

#include <utility>

namespace vrk::visual {
namespace {

constexpr std::size_t minCompacted = 64; // a shorter queue is not worth the walk

} // namespace

void RenderTaskQueue::post(Task&& task, std::uint64_t key)
{
    Task superseded; // dies after the lock is gone: what its captures do on destruction may post
    const std::lock_guard lock(mutex);
    Entry& entry = entries.emplace_back(key, std::move(task));
    if (key != 0) {
        Entry*& last = lastOfKey[key];
        if (last) {
            superseded = std::exchange(last->task, {});
            last->dropped = true;
            ++droppedCount;
        }
        last = &entry; // a deque that only grows at its ends never moves its entries
        if (droppedCount > minCompacted && droppedCount > entries.size() / 2)
            compact();
    }
    broker::SignalBroker::updateScene();
}

/// Forgets the dropped entries. Done when they are half of the queue, so that each post pays for a bounded part of it.
void RenderTaskQueue::compact()
{
    std::erase_if(entries, [](const Entry& entry) { return entry.dropped; });
    droppedCount = 0;
    for (Entry& entry : entries)
        if (entry.key != 0)
            lastOfKey[entry.key] = &entry;
}

void RenderTaskQueue::run()
{
    std::deque<Entry> batch;
    {
        const std::lock_guard lock(mutex);
        batch.swap(entries);
        if (!lastOfKey.empty())
            lastOfKey.clear(); // goes over all buckets it ever had, which a frame without posts need not pay for
        droppedCount = 0;
    }
    while (!batch.empty()) {
        Entry& entry = batch.front();
        if (!entry.dropped) {
            entry.task();
            entry.task = nullptr; // a capture that posts on its destruction posts for the next call
        }
        batch.pop_front();
    }
    if (instanceDirty) {
        instanceDirty = false;
        broker::SignalBroker::updateScene();
    }
}

} // namespace vrk::visual
