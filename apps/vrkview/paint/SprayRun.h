#pragma once

#include "paint/BodyCoats.h"
#include "paint/SprayPaths.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <vector>

namespace vrkview {

class History;

/// How a gun paints, and how it is led.
struct SpraySettings {
    vrk::process::SprayGun gun{.halfAngle = 0.26, .flow = 500, .profile = 2, .reach = 300};
    double distance = 150; ///< from the nozzle to the way; paint comes down to twice as far
    double speed = 300;    ///< model units a second
};

/// Leads a spray along a way over bodies, step by step or at its speed, and draws its cone. What it paints can be taken back,
/// one run at the told speed as one step of work.
///
/// Thread: the application's, which is the render thread.
class SprayRun : public QObject {
    Q_OBJECT

public:
    /// @param coats  outlives this, as `history` does.
    SprayRun(BodyCoats& coats, History& history, QObject* parent = nullptr);
    ~SprayRun() override;

    /// Puts the gun at the beginning of a path or a band.
    /// @param bodies  what it paints: they have skins.
    void begin(unsigned path, std::vector<unsigned> bodies);
    /// No gun any more, as when the station is another one.
    void end();
    /// 0 before a beginning.
    unsigned getPath() const { return path; }
    const std::vector<unsigned>& getBodies() const { return bodies; }

    const SpraySettings& getSettings() const { return settings; }
    void setSettings(const SpraySettings& wanted);

    /// Model units, of all ways together.
    double length() const;
    /// How far the gun is.
    double getPlace() const { return place; }
    void setPlace(double wanted);

    bool isPlaying() const { return timer.isActive(); }
    void play();
    void pause();
    /// One stroke of this length, or what is left.
    void step(double stroke);
    void stepToEnd() { step(length() - place); }

signals:
    /// It begins, ends, plays, pauses, moved or has other settings.
    void changed();
    /// @param text  says what is wrong; nothing is painted then.
    void failed(const QString& text);

private:
    void readWays();
    void advance();
    void stroke(double to, int gesture);
    void drawCone();
    void hideCone();

    BodyCoats& coats;
    History& history;
    SpraySettings settings;
    unsigned path = 0;
    std::vector<unsigned> bodies;
    SprayWays ways;
    std::vector<double> begins; // of each way, in the length of all; and the end
    double place = 0;
    QTimer timer;
    QElapsedTimer clock;
    double playedFrom = 0;
    int gesture = 0;
    bool isConeShown = false;
};

} // namespace vrkview
