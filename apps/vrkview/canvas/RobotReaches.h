#pragma once

#include "canvas/ReachVisuals.h"
#include "files/LongWork.h"

#include <QTimer>

#include <set>
#include <string>
#include <thread>

namespace vrkview {

class ViewState;

/// Draws how far robots reach where the station says that it is shown. It is computed on a thread of its own, one robot
/// after the other, and kept while the robot has the same joints; where these stand makes no difference.
///
/// What is not wanted any more is given up at once: the robot is gone, its reach is hidden, another station took the place of
/// this one, or this dies.
///
/// Thread: the application's, which is the render thread; the signals come there.
class RobotReaches : public LongWork {
    Q_OBJECT

public:
    /// @param state  outlives this.
    explicit RobotReaches(ViewState& state, QObject* parent = nullptr);
    /// Waits for the present step of the computation to end.
    ~RobotReaches() override;

    bool isRunning() const { return worker.joinable(); }
    /// Hides the reach of the robots that are not computed yet, as one step of work.
    void cancel() override;

signals:
    /// @param text  names the robot and says why its reach cannot be told.
    void failed(const QString& text);

private:
    struct Job {
        unsigned robot = 0;
        QString name;
        vrk::kinematics::ArmChain chain;
    };
    struct Result {
        std::shared_ptr<const RobotReach> reach; // null where it failed or was stopped
        std::string failure;                     // empty where it was stopped
    };
    /// What came out for these joints.
    struct Known {
        vrk::kinematics::ArmChain chain;
        Result result;
    };

    void follow();
    const Known* find(const Job& job) const;
    void startNext();
    void finish(const Result& result);
    static std::vector<Job> wantedJobs();
    static Result compute(const vrk::kinematics::ArmChain& chain, const std::stop_token& stop,
                          const std::function<void(double)>& progress);

    ViewState& state;
    std::map<unsigned, Known> known; // those of removed robots, too: they may come back
    std::set<unsigned> shown;        // the robots of the last look
    std::vector<Job> waiting;
    Job running;
    QTimer moment; // what is done within it is not worth telling
    std::jthread worker;

    friend void drawReachesNow(const std::function<void(const std::string&)>& tell);
};

/// The same at once, for pictures that nobody waits for.
/// @param tell  is given one line for each robot whose reach cannot be told.
void drawReachesNow(const std::function<void(const std::string&)>& tell);

} // namespace vrkview
