#pragma once

#include "platform/program/ModNames.h"

#include <utility>

namespace vrk::program {

/// The values of expressions of a ".mod" program, as far as they follow from constants: arithmetic, brackets, names with
/// their indices and fields, and the functions that build orientations and shift poses. What else stands in an expression
/// makes its value unknown; only brackets that are nested too deeply, and texts without their end, are faults.
class ModExpression {
public:
    /// @param names  what names stand for; they must outlive the expression.
    explicit ModExpression(const ModNames& names) : names(names) {}

    /// The value of a whole text, which begins in the line `line` of the program.
    /// @throws ProgramFault
    ModValue evaluate(std::string_view text, unsigned line) const;
    /// The index in braces, if they follow: takes them. Empty where none follow; unknown where they hold no one value.
    /// @throws ProgramFault
    std::optional<ModValue> takeIndex(Tokens& at) const { return index(at, 0); }

private:
    /// Values between brackets, and options by their small letters.
    struct Bracketed {
        std::vector<ModValue> values;
        std::vector<std::pair<std::string, ModValue>> options;
        bool isWhole = true; // closed

        ModValue first() const { return isWhole && values.size() == 1 ? values[0] : ModValue(); }
        ModValue list() { return isWhole ? ModValue{ModValue::Kind::List, 0, std::move(values)} : ModValue(); }
    };

    // Each reads from the text what its name says, loosest operations first. `depth` counts the brackets around it.
    ModValue sum(Tokens& at, int depth) const;
    ModValue product(Tokens& at, int depth) const;
    ModValue factor(Tokens& at, int depth) const;
    ModValue primary(Tokens& at, int depth) const;
    Bracketed bracketed(Tokens& at, std::string_view end, int depth) const;
    std::optional<ModValue> index(Tokens& at, int depth) const;
    ModValue named(const Token& name, Tokens& at, int depth) const;
    static ModValue function(const Token& name, const Bracketed& given);

    const ModNames& names;
};

} // namespace vrk::program
