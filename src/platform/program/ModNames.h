#pragma once

#include "platform/program/ModValue.h"
#include "platform/program/ProgramParts.h"
#include "platform/program/ProgramText.h"

#include <unordered_map>
#include <unordered_set>

namespace vrk::program {

/// What a name of a ".mod" program stands for.
struct ModName {
    enum class Kind { Value, Targets, Tool, WorkObject } kind = Kind::Value;
    ModValue value;
    bool isChanging = false;    ///< while the program runs
    std::vector<Place> targets; ///< one, or those of an array
    int index = none;           ///< of the tool or the work object
};

/// A declaration as it is read: "PERS tooldata torch := ...".
struct ModDeclaration {
    Token kind; ///< CONST, VAR or PERS
    Token type;
    Token name;
    bool isArray = false;
    ModValue value;
};

/// The names that a ".mod" program declares. What they stand for enters the program: targets, tools, work objects.
///
/// A name is looked for in the routine that is being read first, then in the modules.
class ModNames {
public:
    /// @param text     all of it: a name that it gives another value anywhere has no value before the program runs.
    /// @param program  what the declarations enter; it must outlive the names.
    ModNames(std::string_view text, Program& program);

    /// @throws ProgramFault  where the value of a target has not the shape of one.
    void declare(ModDeclaration declaration, bool isLocal);
    /// A parameter of the routine, whose value is known when it is called.
    void declareParameter(std::string_view name);
    /// Forgets the names of a routine.
    void leaveRoutine();

    /// @return null where nothing has that name; good until the next declaration.
    const ModName* find(std::string_view name) const;
    /// The value behind a name, or of the element that an index asks for. An index that is not known leads to none.
    ModValue valueOf(const ModName& name, const std::optional<ModValue>& index) const;
    /// The target behind a name, or the element that an index asks for.
    static Place placeOf(const ModName& name, const std::optional<ModValue>& index);

    /// Enters a target whose numbers stand in `value`.
    /// @throws ProgramFault  where they have not the shape of a target.
    Place addTarget(const std::string& name, unsigned line, const ModValue& value, bool isPosture);

private:
    using Names = std::unordered_map<std::string, ModName>; // by their small letters

    /// Names that the program gives other values while it runs.
    void collectAssigned(std::string_view text);
    void declareTargets(ModName& declared, const ModDeclaration& declaration, bool isPosture);
    /// A frame whose numbers are not known, or are faulty, counts as not told.
    int addTool(const Token& name, const ModValue& value);
    int addWorkObject(const Token& name, const ModValue& value);

    Program& program;
    Names global;
    Names local; // of the routine that is being read
    std::unordered_set<std::string> assigned;
};

} // namespace vrk::program
