#pragma once

#include <QIcon>
#include <QString>

namespace sdf {
class SdfObject;
}

namespace vrkview {

// The words for programs, their paths and their instructions, for all who tell of them. Call these under the model's lock,
// or on the application's thread.

/// Whether anything is drawn of it: a move, or what holds one.
bool isDrawn(const sdf::SdfObject& object);
/// What is looked through for a text that the user seeks: its name, which is the text of an instruction, and why a move is
/// not drawn.
QString programWords(const sdf::SdfObject& object);
/// "Linear", "Circular", "Joint" or "Curve" of a move; of what draws nothing its text, and otherwise its name.
QString programStep(const sdf::SdfObject& object);
/// "p20", "p20 over p15", "not known before it runs", "12 moves".
QString programTarget(const sdf::SdfObject& object);
/// As told in the program.
QString programSpeed(const sdf::SdfObject& object);
QString programZone(const sdf::SdfObject& object);
/// "line 12: MoveL p20, v100, fine, torch"
QString programToolTip(const sdf::SdfObject& object);
/// "Welding › weldBracket › Linear to seam1", in one line; takes the model's lock shared. Empty for an unknown id.
QString describeProgramThing(unsigned id);
QIcon programIcon(const sdf::SdfObject& object);

} // namespace vrkview
