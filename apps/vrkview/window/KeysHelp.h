#pragma once

#include "window/Settings.h"

#include <QString>

class QMenuBar;

namespace vrkview {

/// The keys of all commands in the menus, menu by menu, and beside them what the mouse does in this style, as rich text.
QString keysAndMouseHelp(const QMenuBar& menus, Settings::MouseStyle style);

} // namespace vrkview
