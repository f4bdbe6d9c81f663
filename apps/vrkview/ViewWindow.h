#pragma once

#include "Station.h"

#include <boost/signals2/connection.hpp>

#include <QLabel>
#include <QMainWindow>

#include <vector>

namespace vrkview {

class ViewWidget;

/// The viewer's window: the view, and below it a line with what is shown and how long the last frame took.
///
/// Thread: the application's, which is the render thread.
class ViewWindow : public QMainWindow {
    Q_OBJECT

public:
    /// Needs a started library with the station built.
    explicit ViewWindow(const Station& station);
    ~ViewWindow() override;

    ViewWidget& getView() const { return *view; }

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// Whether the key is one that changes what is drawn.
    bool changeLook(int key);
    void showKeys();
    void showFrameTime(double milliseconds);

    ViewWidget* view; // Qt's, as are the labels
    QLabel* contents;
    QLabel* frameTime;
    std::vector<HiddenFace> hiddenFaces;
    boost::signals2::scoped_connection frameTicked;
};

} // namespace vrkview
