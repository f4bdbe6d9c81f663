#pragma once

#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/task/DataItem.h"
#include "platform/task/Task.h"
#include "support/SceneFixture.h"

#include <memory>
#include <string>

namespace vrk::test {

unsigned newId();

/// A part with one box of 10 units, not yet in the station.
std::shared_ptr<layout::Part> makePart(const std::string& name, const rob::Posd& position = {});
/// An assembly of such parts.
std::shared_ptr<layout::Assembly> makeAssembly(const std::string& name, int parts);
/// An arm of two links, one above the other, each with a part; its wrist lies on the upper one. "kuka" for a vendor.
std::shared_ptr<layout::Manipulator> makeArm(const std::string& vendor = "kuka");
/// A tool of one link with a part, and with one frame 50 units out along x.
std::shared_ptr<layout::Tool> makeTool();
/// A device of one link with a part, and with one frame on the link.
std::shared_ptr<layout::Device> makeDevice();

} // namespace vrk::test
