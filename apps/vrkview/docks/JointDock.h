#pragma once

#include <boost/signals2/connection.hpp>

#include <QDockWidget>

#include <atomic>
#include <memory>
#include <vector>

class QVBoxLayout;

namespace vrk::layout {
class Mechanism;
}

namespace vrkview {

class JointRow;
class ViewState;

/// All mechanisms of the model, in its order. Takes its lock shared.
std::vector<std::shared_ptr<vrk::layout::Mechanism>> allMechanisms();

/// The dock with a slider and a number for each joint that moves, of every mechanism of the station. It follows joints that
/// are moved elsewhere, from any thread.
class JointDock : public QDockWidget {
    Q_OBJECT

public:
    /// @param state  outlives this.
    explicit JointDock(ViewState& state, QWidget* parent = nullptr);
    ~JointDock() override;

    /// The lines of all mechanisms, in model order.
    std::vector<JointRow*> getRows() const;

signals:
    /// The user has moved a joint.
    /// @param gesture  the same while one slider is dragged; 0 for what stands by itself.
    void jointsMoved(int gesture);
    /// The user typed a value beyond a joint's limits, which was held to them.
    void limited(const QString& text);

private:
    struct Group {
        std::shared_ptr<vrk::layout::Mechanism> mechanism;
        std::vector<JointRow*> rows; // one for each joint that moves
    };

    void build();
    void addGroup(const std::shared_ptr<vrk::layout::Mechanism>& mechanism, QVBoxLayout& column);
    void moveJoints(const Group& group, const JointRow& row);
    void push(const Group& group, std::vector<double> values, int gesture);
    void showValues();

    ViewState& state;
    std::vector<std::unique_ptr<Group>> groups;
    int gesture = 1;
    const JointRow* moved = nullptr; // the row of the present gesture
    std::atomic<bool> isOutdated = false;
    boost::signals2::scoped_connection linksMoved;
};

} // namespace vrkview
