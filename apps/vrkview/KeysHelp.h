#pragma once

#include <QString>

class QMenuBar;

namespace vrkview {

/// The keys of all commands in the menus, menu by menu, as rich text.
QString keysHelp(const QMenuBar& menus);

} // namespace vrkview
