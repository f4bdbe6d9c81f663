#pragma once

#include <QObject>
#include <QTimer>

#include <array>
#include <chrono>

namespace vrkview {

/// Whether pockets and gaps are shaded in the window, and in pictures of it. Render thread.
bool isDepthShaded();
void setDepthShaded(bool shaded);

/// Shades the frames of a view that stands still, and those of one that moves where that is cheap.
///
/// Thread: the application's, which is the render thread.
class FrameShade : public QObject {
    Q_OBJECT

public:
    explicit FrameShade(QObject* parent = nullptr);

    /// Around each frame.
    void begin();
    void end();
    /// The camera, by whomever.
    void noteMove();

signals:
    /// The view stands still, and was drawn without the shade last.
    void frameWanted();

private:
    using Clock = std::chrono::steady_clock;

    bool isMoving(Clock::time_point now) const;

    QTimer rest;
    Clock::time_point moved;                  // the camera, last
    std::array<Clock::time_point, 3> begun{}; // of the last frames, the latest first
    Clock::duration shadedFrame{};            // what the last shaded frame took
    bool isShading = false;
};

} // namespace vrkview
