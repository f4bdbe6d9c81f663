#pragma once

#include "platform/program/SrcNames.h"

namespace vrk::program {

/// A frame of a move: an index into the program's list, or one that is known only when the program runs.
struct SrcFrame {
    enum class Kind { Base, Tool };

    int index = 0;
    bool isKnown = true;

    /// A base counts as the robot's own frame then, and moves in it are not placed; there is no tool.
    static SrcFrame Unknown(Kind kind) { return kind == Kind::Tool ? SrcFrame{none, true} : SrcFrame{0, false}; }
};

/// What the statements of a ".src" program set for the moves behind them, in the order of the text: base, tool, speeds.
class SrcState {
public:
    /// Both must outlive the state. The frames that are named enter the program.
    SrcState(Program& program, const SrcNames& names) : program(program), names(names) {}

    /// Nothing is set where a routine begins.
    void beginRoutine();
    /// Takes what a line sets; another one changes nothing. @param number  of the line.
    /// @throws ProgramFault
    void read(std::string_view line, unsigned number);
    /// What stands behind "$BASE=" or "$TOOL=": braces, an element of the controller's list, or a name.
    /// @throws ProgramFault
    SrcFrame takeFrame(Tokens& at, SrcFrame::Kind kind);

    const SrcFrame& getBase() const { return base; }
    const SrcFrame& getTool() const { return tool; }
    /// As the text tells it; empty where nothing does.
    const std::string& speedOf(task::Motion motion) const;

private:
    using Kind = SrcFrame::Kind;

    /// "BAS(#VEL_PTP, 100)", "BAS(#TOOL, 1)"
    void readBas(Tokens& at);
    /// "SBASE(FP1.BASE_NO)", "STOOL2(FP1)"
    SrcFrame ofMoveData(Tokens& at, Kind kind);
    void setFrames(Tokens& at);
    void setSpeed(Tokens& at, bool isPtp);
    /// An element of the controller's list. Number 0 is the robot's own frame.
    SrcFrame numbered(std::string_view number, Kind kind);
    /// A frame by its name, whose numbers may stand in the files.
    SrcFrame framed(const std::string& name, Kind kind);
    int enter(const std::string& name, const rob::Posed& pose, bool isTold, Kind kind);

    Program& program;
    const SrcNames& names;
    std::unordered_map<std::string, int> entered; // frames and tools of the program, by name
    SrcFrame base;
    SrcFrame tool;
    std::string speedOfPtp;
    std::string speedOfCp;
};

} // namespace vrk::program
