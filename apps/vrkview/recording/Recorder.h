#pragma once

#include "canvas/Mouse.h"

#include <nlohmann/json.hpp>

#include <QElapsedTimer>
#include <QObject>

#include <filesystem>
#include <fstream>
#include <map>
#include <vector>

class QAction;

namespace vrkview {

class ViewWindow;
struct RegionContent;

/// Writes what the user does in a window into a file, with what each pick found, for a `Player`.
///
/// The mouse over the view is written event by event. A command of the window is written as its key, also if it was chosen
/// from a menu. Of work in the docks only the outcome is written: selection, visibility, joint values, opened files. What
/// happens in dialogs is not written, which leaves out saving and colours.
///
/// Thread: the application's, which is the render thread.
class Recorder : public QObject {
    Q_OBJECT

public:
    /// Begins with the next frame of the window, which outlives this.
    /// @throws std::runtime_error naming the file that cannot be written.
    Recorder(ViewWindow& window, const std::filesystem::path& file);
    ~Recorder() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void begin();
    void listen();
    void write(nlohmann::ordered_json step);
    void writePick(Mouse::Purpose purpose, const Picked* found);
    void writeRegion(const RegionContent& content);
    void writeKey(const QAction& command);
    void writeOpened(const std::vector<std::filesystem::path>& files);
    void writeJoints(int gesture);
    /// What changed by other means than those that are written themselves.
    void writeChanges();
    void forgetChanges();

    ViewWindow& window;
    std::filesystem::path file;
    std::ofstream stream;
    QElapsedTimer clock;
    bool hasBegun = false;
    bool isOfMouse = false;                      // an event of the mouse is dealt with, which is written already
    std::vector<nlohmann::ordered_json> results; // of a key, which is written behind what it did
    // As far as they are written
    std::vector<unsigned> selected;
    std::vector<unsigned> hidden;
    std::map<unsigned, std::vector<double>> joints; // by the mechanism's id
};

/// What a region selected, as a pick stands in a recording: the things, and of each cloud how many points.
nlohmann::ordered_json describeRegion(const RegionContent& content);
/// A pick as it stands in a recording.
nlohmann::ordered_json describePick(Mouse::Purpose purpose, const Picked* found);

} // namespace vrkview
