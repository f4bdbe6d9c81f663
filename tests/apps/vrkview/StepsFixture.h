#pragma once

#include "MouseFixture.h"
#include "canvas/ViewState.h"
#include "edit/History.h"
#include "window/MessageBar.h"

#include <string>

namespace vrkview::test {

/// Steps of work in the window; each test ends with the station as it was.
class StepsFixture : public MouseFixture {
protected:
    void SetUp() override
    {
        MouseFixture::SetUp();
        state().clear();
        history().noteSaved();
    }
    void TearDown() override
    {
        state().clear();
        while (!history().isSaved() && history().canUndo())
            history().undo();
        settle();
        MouseFixture::TearDown();
    }

    static History& history() { return state().getHistory(); }
    static std::string message() { return window().getMessageBar().getText().toStdString(); }
};

} // namespace vrkview::test
