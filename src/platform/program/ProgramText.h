#pragma once

#include "platform/program/Program.h"

#include <initializer_list>

/// What the readers of programs share of their texts: words, numbers and failures. Not installed.
namespace vrk::program {

/// @throws ProgramFault "line 12: <cause>"
[[noreturn]] void failAtLine(unsigned line, const std::string& cause);

/// A piece of a program for a failure: short, printable, in quotes.
std::string inQuotes(std::string_view text);

/// The text in UTF-8, whatever it was written in, without a mark at its front.
/// @throws ProgramFault "line 3: not a text" where a zero byte stands.
std::string asUtf8(std::string_view bytes);

/// Words of the languages are the same in any case.
bool sameWord(std::string_view a, std::string_view b);
std::string lowerCase(std::string_view text);

/// A piece of a program on one line: white space runs become one blank, and what is long is cut.
std::string onOneLine(std::string_view text);

/// The number that a text is; false where it is none. What no double holds becomes infinite.
bool parseNumber(std::string_view text, double& number);

struct Token {
    enum class Kind { Word, Number, Text, Symbol, End };

    Kind kind = Kind::End;
    std::string_view text; ///< of a text with its quotes
    unsigned line = 1;
    std::size_t at = 0; ///< the byte where it begins

    bool isWord(std::string_view word) const { return kind == Kind::Word && sameWord(text, word); }
    bool isSymbol(std::string_view symbol) const { return kind == Kind::Symbol && text == symbol; }
    bool isEnd() const { return kind == Kind::End; }
};

/// The tokens of a text, one after the other. ":=" is one symbol; all others have one character.
class Tokens {
public:
    /// @param comment  what begins a comment, which ends with its line; 0 for none.
    Tokens(std::string_view text, char comment, unsigned line = 1);

    const Token& peek() const { return present; }
    /// Goes on. @return what was there.
    /// @throws ProgramFault "line 3: a text without its end"
    Token next();
    /// The source between two places, without white space at its ends.
    std::string_view between(std::size_t from, std::size_t to) const;
    /// The byte behind the token that was last taken.
    std::size_t behind() const { return endOfLast; }

private:
    void scan();

    std::string_view text;
    char comment;
    std::size_t position = 0;
    std::size_t endOfLast = 0;
    unsigned line;
    Token present;
};

/// Whether a token is one of the words.
bool isOneOf(const Token& token, std::initializer_list<std::string_view> words);
/// Whether a token is a bracket of any kind.
bool opens(const Token& token);
bool closes(const Token& token);

/// Takes the signs in front of a value, of which there may be several. @return whether they make it negative.
bool takeSigns(Tokens& at);

} // namespace vrk::program
