#include "canvas/RobotReaches.h"

#include "canvas/ViewState.h"
#include "edit/History.h"
#include "edit/ShowReach.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"

#include <algorithm>
#include <shared_mutex>

namespace vrkview {
namespace {

constexpr int momentTime = 300; // milliseconds

} // namespace

RobotReaches::RobotReaches(ViewState& state, QObject* parent) : LongWork(parent), state(state)
{
    moment.setSingleShot(true);
    moment.setInterval(momentTime);
    connect(&moment, &QTimer::timeout, this, [this] { emit started(tr("%1: reach").arg(running.name)); });
    connect(&state, &ViewState::stationChanged, this, &RobotReaches::follow);
    connect(&state.getHistory(), &History::changed, this, [this](Touches touches) {
        if (touches.testFlag(Touched::Reach))
            follow();
    });
    follow();
}

RobotReaches::~RobotReaches() = default;

void RobotReaches::cancel()
{
    std::vector<unsigned> open;
    for (const Job& job : waiting)
        open.push_back(job.robot);
    if (isRunning())
        open.push_back(running.robot);
    state.getHistory().push(std::make_unique<ShowReach>(open, false));
}

std::vector<RobotReaches::Job> RobotReaches::wantedJobs()
{
    std::vector<Job> jobs;
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const vrk::layout::Layout& layout = vrk::layout::Layout::inst();
    for (const auto& arm : layout.manipulators)
        if (std::ranges::find(layout.reaches, arm->getId()) != layout.reaches.end())
            jobs.push_back(
                {arm->getId(), QString::fromStdString(arm->getName()), vrk::kinematics::ArmChain::ToWristCentre(*arm)});
    return jobs;
}

const RobotReaches::Known* RobotReaches::find(const Job& job) const
{
    const auto found = known.find(job.robot);
    return found != known.end() && found->second.chain == job.chain ? &found->second : nullptr;
}

/// Looks at what is wanted now: draws what is known of it, has computed what is not, and gives up everything else.
void RobotReaches::follow()
{
    DrawnReaches drawn;
    std::set<unsigned> before = std::exchange(shown, {});
    bool isRunningWanted = false;
    waiting.clear();
    for (Job& job : wantedJobs()) {
        shown.insert(job.robot);
        if (const Known* result = find(job)) {
            if (result->result.reach)
                drawn[job.robot] = result->result.reach;
            else if (!before.contains(job.robot))
                emit failed(job.name + ": " + QString::fromStdString(result->result.failure));
        } else if (isRunning() && !worker.get_stop_token().stop_requested() && running.robot == job.robot &&
                   running.chain == job.chain) {
            isRunningWanted = true;
        } else {
            waiting.push_back(std::move(job));
        }
    }
    drawReaches(std::move(drawn));
    if (isRunning() && !isRunningWanted)
        worker.request_stop();
    startNext();
}

void RobotReaches::startNext()
{
    if (isRunning())
        return;
    if (waiting.empty()) {
        moment.stop();
        emit finished();
        return;
    }
    running = std::move(waiting.front());
    waiting.erase(waiting.begin());
    moment.start();
    worker = std::jthread([this, chain = running.chain](const std::stop_token& stop) {
        const Result result = compute(chain, stop, [this](double part) {
            QMetaObject::invokeMethod(
                this, [this, part] { emit progressed(tr("%1: reach").arg(running.name), part); }, Qt::QueuedConnection);
        });
        QMetaObject::invokeMethod(
            this, [this, result] { finish(result); }, Qt::QueuedConnection);
    });
}

RobotReaches::Result RobotReaches::compute(const vrk::kinematics::ArmChain& chain, const std::stop_token& stop,
                                           const std::function<void(double)>& progress)
{
    try {
        if (auto reach = vrk::kinematics::computeReach(chain, stop, progress))
            return {std::make_shared<const RobotReach>(RobotReach{chain, *std::move(reach)}), {}};
        return {};
    } catch (const std::exception& failure) {
        return {nullptr, failure.what()};
    }
}

void RobotReaches::finish(const Result& result)
{
    worker.join();
    worker = {};
    if (result.reach || !result.failure.empty()) { // else it was stopped
        known[running.robot] = {running.chain, result};
        shown.erase(running.robot); // so that a failure is told now
    }
    follow();
}

void drawReachesNow(const std::function<void(const std::string&)>& tell)
{
    DrawnReaches drawn;
    for (const RobotReaches::Job& job : RobotReaches::wantedJobs()) {
        const RobotReaches::Result result = RobotReaches::compute(job.chain, {}, {});
        if (result.reach)
            drawn[job.robot] = result.reach;
        else
            tell(job.name.toStdString() + ": " + result.failure);
    }
    drawReaches(std::move(drawn));
}

} // namespace vrkview
