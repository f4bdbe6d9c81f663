#pragma once

#include "demo/DemoParts.h"
#include "edit/History.h"

#include "support/TempFolder.h"

#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/station/StationFile.h"

#include <BRepPrimAPI_MakeBox.hxx>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace vrkview::test {

/// A block in the model alone, and what the station is saved as.
class BlockFixture : public testing::Test {
protected:
    void SetUp() override
    {
        using namespace vrk::rob;
        block = demo::single("Block", Posed(Posd(100, 0, 0)), BRepPrimAPI_MakeBox(100, 60, 40).Shape(), "#808080");
        vrk::layout::Layout::inst().addPart(block);
    }
    void TearDown() override { vrk::layout::Layout::inst().clear(); }

    std::string saved()
    {
        vrk::station::SaveStationFile(folder / "cell.station.json");
        return vrk::test::TempFolder::Read(folder / "cell.station.json");
    }

    vrk::test::TempFolder folder;
    std::shared_ptr<vrk::layout::Part> block;
    History history;
};

} // namespace vrkview::test
