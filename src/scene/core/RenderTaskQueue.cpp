#include "scene/core/RenderTaskQueue.h"

#include "platform/broker/SignalBroker.h"
#include "platform/common/Logger.h"

#include <Standard_Failure.hxx>

#include <optional>
#include <string_view>
#include <utility>

namespace vrk::visual {
namespace {

constexpr std::size_t minCompacted = 64;               // a shorter queue is not worth the walk
constexpr std::size_t maxSpare = std::size_t{1} << 16; // a station's load is not remembered for ever; 3 MB

thread_local std::optional<unsigned> unknown; // what a visual was last asked for in vain, by the present task

/// "Scene::addFrame" of "void vrk::visual::Scene::addFrame(sdf::SdfNode*)".
std::string operationOf(const char* function)
{
    if (!function)
        return "a task";
    std::string_view name(function);
    name = name.substr(0, name.find('('));
    if (const std::size_t space = name.rfind(' '); space != std::string_view::npos)
        name.remove_prefix(space + 1);
    for (const std::string_view outer : {"vrk::", "visual::"})
        if (name.starts_with(outer))
            name.remove_prefix(outer.size());
    return std::string(name);
}

/// Of what is just being caught.
std::string causeOf()
{
    try {
        throw;
    } catch (const std::exception& failure) {
        return failure.what();
    } catch (const Standard_Failure& failure) {
        return failure.GetMessageString();
    } catch (...) {
        return "something that is no exception of the standard library";
    }
}

} // namespace

void RenderTaskQueue::post(Task&& task, std::uint64_t key, const char* from)
{
    Task superseded; // dies after the lock is gone: what its captures do on destruction may post
    const std::lock_guard lock(mutex);
    entries.emplace_back(key, std::move(task), from);
    if (key != 0) {
        const auto [last, isNew] = lastOfKey.try_emplace(key, entries.size() - 1);
        if (!isNew) {
            Entry& before = entries[last->second];
            superseded = std::exchange(before.task, {});
            before.dropped = true;
            ++droppedCount;
            last->second = entries.size() - 1;
        }
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
    for (std::size_t i = 0; i < entries.size(); ++i)
        if (entries[i].key != 0)
            lastOfKey[entries[i].key] = i;
}

void RenderTaskQueue::noteUnknown(unsigned id)
{
    unknown = id;
}

RenderTaskQueue::Failure RenderTaskQueue::describe(const Entry& entry)
{
    std::string text = operationOf(entry.from) + ": " + causeOf();
    if (unknown)
        text += " (" + std::to_string(*unknown) + ")";
    return {std::move(text), std::current_exception()};
}

void RenderTaskQueue::run()
{
    runAll(nullptr);
}

void RenderTaskQueue::run(const FailureHandler& told)
{
    runAll(&told);
}

void RenderTaskQueue::runAll(const FailureHandler* told)
{
    std::vector<Entry> batch = std::move(spare); // a task that comes back here finds none, and its posts make their own
    {
        const std::lock_guard lock(mutex);
        batch.swap(entries);
        if (!lastOfKey.empty())
            lastOfKey.clear(); // goes over all buckets it ever had, which a frame without posts need not pay for
        droppedCount = 0;
    }
    for (Entry& entry : batch) {
        if (entry.dropped)
            continue;
        unknown.reset();
        try {
            entry.task();
        } catch (...) {
            const Failure failure = describe(entry);
            AppLogger::inst()->error(failure.text);
            if (!told)
                throw;
            (*told)(failure);
        }
        entry.task = nullptr; // a capture that posts on its destruction posts for the next call
    }
    batch.clear();
    if (batch.capacity() <= maxSpare)
        spare = std::move(batch);
    if (instanceDirty) {
        instanceDirty = false;
        broker::SignalBroker::updateScene();
    }
}

} // namespace vrk::visual
