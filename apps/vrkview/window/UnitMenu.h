#pragma once

class QMenu;

namespace vrkview {

class FileOpening;

/// Fills a menu with the units that files may be in which name none; a choice holds for what is opened from then on.
void fillUnitMenu(QMenu& menu, FileOpening& opening);

} // namespace vrkview
