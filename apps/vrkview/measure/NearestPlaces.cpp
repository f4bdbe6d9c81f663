#include "measure/NearestPlaces.h"

#include "measure/MeasuredThings.h"

#include <Standard_Failure.hxx>

#include <algorithm>
#include <utility>

namespace vrkview {
namespace {

constexpr std::chrono::milliseconds rest(250); // what moves is asked for again within some frames

} // namespace

NearestPlaces::NearestPlaces(std::function<void()> onNews) : onNews(std::move(onNews)) {}

NearestPlaces::~NearestPlaces()
{
    const std::lock_guard lock(mutex);
    stop.request_stop();
    worker.request_stop(); // and the thread ends with its member, the last one, after the lock is given back
}

void NearestPlaces::ask(const DimensionPointer& dimension, std::vector<vrk::rob::Posed> poses)
{
    forget(dimension);
    const std::lock_guard lock(mutex);
    tasks.push_back({dimension, std::move(poses), Clock::now()});
    if (!worker.joinable())
        worker = std::jthread([this](const std::stop_token& ending) { run(ending); });
    changed.notify_all();
}

void NearestPlaces::forget(const DimensionPointer& dimension)
{
    const std::lock_guard lock(mutex);
    std::erase_if(tasks, [&dimension](const Task& task) { return task.dimension == dimension; });
    std::erase_if(answers, [&dimension](const Answer& each) { return each.dimension == dimension; });
    if (under == dimension) {
        stop.request_stop();
        under.reset(); // its answer is not kept
    }
}

void NearestPlaces::giveUp()
{
    const std::lock_guard lock(mutex);
    const auto answer = [this](const DimensionPointer& dimension) {
        answers.push_back({dimension, {}, "Measuring was given up"});
    };
    if (under) {
        stop.request_stop();
        answer(under);
        under.reset();
    }
    for (const Task& task : tasks)
        answer(task.dimension);
    tasks.clear();
}

bool NearestPlaces::isBusy() const
{
    const std::lock_guard lock(mutex);
    return under || !tasks.empty();
}

std::optional<std::pair<DimensionPointer, double>> NearestPlaces::current() const
{
    const std::lock_guard lock(mutex);
    return under ? std::optional(std::pair(under, done.load())) : std::nullopt;
}

std::vector<NearestPlaces::Answer> NearestPlaces::take()
{
    const std::lock_guard lock(mutex);
    return std::exchange(answers, {});
}

void NearestPlaces::finish()
{
    std::unique_lock lock(mutex);
    isHurried = true;
    changed.notify_all();
    changed.wait(lock, [this] { return tasks.empty() && !under; });
    isHurried = false;
}

/// False where there is nothing to do after it.
bool NearestPlaces::waitForRest(std::unique_lock<std::mutex>& lock, const std::stop_token& ending)
{
    const auto isOver = [this] { return isHurried || tasks.empty(); };
    while (!tasks.empty() && !isHurried && !ending.stop_requested() && Clock::now() < tasks.front().asked + rest)
        changed.wait_until(lock, ending, tasks.front().asked + rest, isOver);
    return !tasks.empty() && !ending.stop_requested();
}

void NearestPlaces::run(const std::stop_token& ending)
{
    std::unique_lock lock(mutex);
    while (changed.wait(lock, ending, [this] { return !tasks.empty(); })) {
        if (!waitForRest(lock, ending))
            continue;
        const Task task = std::move(tasks.front());
        tasks.erase(tasks.begin());
        under = task.dimension;
        stop = std::stop_source();
        done = 0;
        const std::stop_token stopped = stop.get_token();
        lock.unlock();
        onNews();
        Answer found = answer(task, stopped, [this](double share) { done = share; });
        lock.lock();
        if (!stopped.stop_requested()) {
            under.reset();
            answers.push_back(std::move(found));
        }
        changed.notify_all();
        if (ending.stop_requested())
            return; // whoever would be told is going
        lock.unlock();
        onNews();
        lock.lock();
    }
}

NearestPlaces::Answer NearestPlaces::answer(const Task& task, const std::stop_token& stop,
                                            const std::function<void(double)>& progress)
{
    try {
        std::vector<vrk::measure::MeasuredThing> things;
        ShapePieces pieces;
        for (std::size_t i = 0; i < task.poses.size(); ++i)
            things.push_back(measuredThing(
                task.dimension->ends.at(i), [&](unsigned) { return task.poses[i]; }, pieces));
        return {task.dimension, vrk::measure::minimumDistance(things.at(0), things.at(1), stop, progress), {}};
    } catch (const std::exception& failure) {
        return {task.dimension, {}, failure.what()};
    } catch (const Standard_Failure& failure) {
        return {task.dimension, {}, failure.GetMessageString()};
    }
}

} // namespace vrkview
