#pragma once

#include "platform/program/ProgramParts.h"
#include "platform/program/SrcText.h"

namespace vrk::program {

/// What a name of a ".src" program stands for.
struct SrcName {
    Place place; ///< of a target
    SrcAggregate aggregate;
};

/// The names that a ".src" program and its ".dat" file give values in braces. Places among them enter the program as
/// targets. What the program gives a value more often than once, or in part, is known only when it runs.
class SrcNames {
public:
    /// @param program  what the targets enter; it must outlive the names.
    explicit SrcNames(Program& program) : program(program) {}

    /// Counts how often the program gives each name a value. Comes before all else.
    void countAssignments(std::string_view text);
    /// Reads the ".dat" file. @throws ProgramFault "line 3 of the .dat file: ..."
    void readData(std::string_view data);
    /// "DECL E6POS XP1={X 1, ...}" and "P[2]={...}". Anything else is passed over.
    /// @param isData  whether the line is one of the ".dat" file.
    void readAssignment(Tokens& at, bool isData);

    /// @param name  in small letters, with its index. @return null where nothing is known of it.
    const SrcName* find(const std::string& name) const;
    /// How often the program's text gives the name a value; what may be meant counts twice.
    int assignmentsOf(const std::string& name) const;

    /// Enters a target whose numbers stand in braces.
    Place addTarget(const std::string& name, unsigned line, const SrcAggregate& from);

private:
    void give(const std::string& name, const std::string& shown, const SrcAggregate& aggregate, unsigned line,
              bool isData);

    Program& program;
    std::unordered_map<std::string, SrcName> names; // by small letters, with their index
    std::unordered_map<std::string, int> assignments;
};

} // namespace vrk::program
