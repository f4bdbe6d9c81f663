#pragma once

#include "canvas/ViewTransition.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <optional>

namespace vrkview {

/// Moves the camera to a new view within a quarter of a second. A new flight starts from where the one before has got to;
/// whoever else moves the camera ends the flight, and `stop` does.
///
/// Thread: the application's, which is the render thread.
class CameraFlight : public QObject {
    Q_OBJECT

public:
    static constexpr int duration = 250; // milliseconds

    explicit CameraFlight(QObject* parent = nullptr);

    /// The camera must have a render target.
    void flyTo(const vrk::rob::Posef& pose);
    /// The camera stays where it is.
    void stop();
    /// Puts the camera at the end of its flight at once. Does nothing while it does not fly.
    void finish();
    bool isFlying() const { return timer.isActive(); }

signals:
    /// A flight ended early, by another one or by `stop`. `pose` is where the camera was by then.
    void interrupted(const vrk::rob::Posef& pose);

private:
    void step();
    void moveTo(float time);

    QTimer timer;
    QElapsedTimer clock;
    std::optional<ViewTransition> way;
    vrk::rob::Posef lastPose; // as the camera gave it back
};

} // namespace vrkview
