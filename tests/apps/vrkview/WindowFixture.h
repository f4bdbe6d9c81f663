#pragma once

#include "canvas/ViewWidget.h"
#include "window/ViewWindow.h"

#include <gtest/gtest.h>

#include <QImage>

#include <functional>

namespace vrkview::test {

/// Turns the event loop until this holds; false where it never does.
bool waitFor(const std::function<bool()>& reached);

/// One window with the demo station for the program, as the library starts once in a process.
class WindowFixture : public testing::Test {
protected:
    static void SetUpTestSuite();
    void SetUp() override;

    static ViewWindow& window();
    static ViewWidget& view() { return window().getView(); }
    /// The number of frames drawn so far.
    static int frames();
    /// Lets the window settle: no frame for a while.
    static void settle();
    /// What the screen shows of the view.
    static QImage seen();
    /// Types the key and returns what is then seen.
    static QImage after(const char* key);
    /// Keeps a picture of the whole screen for a person to look at, in the folder that VRK_SHOTS names.
    static void shoot(const char* name);
};

/// Ends the window, ahead of the application.
void closeWindow();

} // namespace vrkview::test
