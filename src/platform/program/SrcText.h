#pragma once

#include "platform/program/ProgramText.h"

#include <optional>
#include <unordered_map>

/// The text of ".src" and ".dat" files: lines, names and values in braces. Not installed.
namespace vrk::program {

/// The lines of a text, one after the other. A "&" line and what stands behind a semicolon say nothing of the program.
class SrcLines {
public:
    explicit SrcLines(std::string_view text) : text(text) {}

    /// The next line with something in it; false at the end.
    bool next(std::string_view& line);
    /// The number of the line that was last given, from 1.
    unsigned number() const { return count; }

private:
    std::string_view text;
    std::size_t at = 0;
    unsigned count = 0;
};

/// The numbers between braces, by the small letters of their names: "{X 1, Y 2, ...}".
struct SrcAggregate {
    std::unordered_map<std::string, double> numbers;
    bool isKnown = true; ///< whether every value is a number, a text or a word with "#", and none a variable

    bool has(const char* name) const { return numbers.contains(name); }
    double at(const char* name) const { return numbers.at(name); }
    bool isPosture() const { return has("a1") || has("a2") || has("a6"); }
    bool isPlace() const { return isPosture() || has("x") || has("y") || has("z"); }
};

/// Takes a value in braces. Empty where the braces are damaged.
std::optional<SrcAggregate> takeAggregate(Tokens& at);
/// The same. @throws ProgramFault  where they are damaged.
SrcAggregate expectAggregate(Tokens& at);

/// The pose of a place or a frame, not yet checked. Empty where one of the six numbers is missing.
std::optional<rob::Posed> poseOf(const SrcAggregate& from);

/// Takes a name in small letters, with the index that stands behind it: "xp1", "p[3]". An index that is no number is "?".
std::string takeName(Tokens& at);

/// Takes all up to a symbol, and that.
void skipBehind(Tokens& at, std::string_view symbol);

} // namespace vrk::program
