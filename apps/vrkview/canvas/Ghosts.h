#pragma once

#include <QObject>

#include <string>
#include <vector>

namespace vrkview {

class ViewState;

/// While it is on, draws what is not selected as ghosts, and all as it is where nothing is. Faces, edges and points that are
/// selected stand for their body or cloud. Neither the station nor the steps of work know of it.
///
/// Thread: the application's, which is the render thread.
class Ghosts : public QObject {
    Q_OBJECT

public:
    /// @param state  outlives this.
    explicit Ghosts(const ViewState& state, QObject* parent = nullptr);

    bool areOn() const { return on; }
    void setOn(bool wanted);

private:
    void follow() const;

    const ViewState& state;
    bool on = false;
};

/// Draws all but the things of these names as ghosts from now on. After `processMsgs`.
/// @throws std::runtime_error for a name that no thing of the station has.
void showGhostsExcept(const std::vector<std::string>& names);

} // namespace vrkview
