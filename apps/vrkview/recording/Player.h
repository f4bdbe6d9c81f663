#pragma once

#include "recording/Session.h"

#include <QObject>

#include <deque>
#include <functional>
#include <stdexcept>

namespace vrkview {

class ViewWindow;

/// A recording went another way than when it was made.
class SessionDifference : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Does in a window what a recording tells, and holds what is picked against what was picked then.
///
/// Time plays no part: each step is done when the one before has had all its effects, and the camera gets at once to where
/// it would fly. Meanwhile the view takes no other mouse.
///
/// Thread: the application's, which is the render thread.
class Player : public QObject {
    Q_OBJECT

public:
    /// Both outlive this.
    Player(ViewWindow& window, const Session& session);

    /// Returns when all is played.
    /// @throws SessionDifference telling the first one, with file and line. std::runtime_error for what cannot be played.
    void play();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void begin();
    void playLine(const SessionLine& line);
    void act(const nlohmann::ordered_json& step);
    void checkPick(const nlohmann::ordered_json& recorded);
    void expectNoMorePicks() const;

    void send(const InputEvent& event);
    void resizeView(const QSize& pixels);
    void pressKey(const std::string& key);
    /// A key of a number.
    void typeKey(const std::string& key);
    void open(const std::vector<std::string>& files);
    void moveJoints(unsigned id, const std::vector<double>& values, int gesture);
    void moveCamera(const vrk::rob::Posef& pose);
    std::vector<unsigned> knownThings(const nlohmann::ordered_json& ids) const;
    void settle();
    void waitUntil(const std::function<bool()>& reached) const;

    ViewWindow& window;
    const Session& session;
    std::deque<nlohmann::ordered_json> picks; // that were made and not compared yet
    Qt::MouseButtons held = Qt::NoButton;
    std::string failure; // of opening a file, or of the scene
    bool isSending = false;
};

} // namespace vrkview
