#include "platform/program/SrcText.h"

#include "platform/program/ProgramParts.h"

#include <algorithm>

namespace vrk::program {
namespace {

constexpr int deepestNesting = 20; // of braces

std::string_view withoutComment(std::string_view line)
{
    bool isText = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '"')
            isText = !isText;
        else if (line[i] == ';' && !isText)
            return line.substr(0, i);
    }
    return line;
}

std::optional<SrcAggregate> readAggregate(Tokens& at, int depth);

/// One value of an aggregate: a number, or a word, a text or braces within, of which nothing is kept.
bool readField(Tokens& at, std::optional<double>& number, int depth)
{
    const bool isNegative = takeSigns(at);
    if (at.peek().kind == Token::Kind::Number) {
        double value = 0;
        if (!parseNumber(at.next().text, value))
            return false;
        number = isNegative ? -value : value;
        return true;
    }
    if (at.peek().isSymbol("{"))
        return readAggregate(at, depth + 1).has_value();
    if (at.peek().isSymbol("#"))
        at.next();
    if (at.peek().kind != Token::Kind::Word && at.peek().kind != Token::Kind::Text)
        return false;
    const bool isText = at.next().kind == Token::Kind::Text;
    if (!isText && at.peek().isSymbol("[")) // an element of an array, whose value is not looked for here
        skipBehind(at, "]");
    return true;
}

std::optional<SrcAggregate> readAggregate(Tokens& at, int depth)
{
    if (depth > deepestNesting || !at.next().isSymbol("{"))
        return std::nullopt;
    SrcAggregate found;
    while (!at.peek().isSymbol("}")) {
        const Token name = at.next();
        if (name.kind != Token::Kind::Word)
            return std::nullopt;
        if (at.peek().isSymbol(":")) { // the name of a type: "{POS: X 1, ...}"
            at.next();
            continue;
        }
        if (at.peek().isSymbol("[")) // "POINT2[]"
            skipBehind(at, "]");
        std::optional<double> number;
        const bool isWord = at.peek().kind == Token::Kind::Word;
        if (!readField(at, number, depth))
            return std::nullopt;
        if (number)
            found.numbers[lowerCase(name.text)] = *number;
        else if (isWord)
            found.isKnown = false; // a variable
        if (at.peek().isSymbol(","))
            at.next();
        else if (!at.peek().isSymbol("}"))
            return std::nullopt;
    }
    at.next();
    return found;
}

} // namespace

bool SrcLines::next(std::string_view& line)
{
    while (at < text.size()) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        line = withoutComment(text.substr(at, end - at));
        at = end + 1;
        ++count;
        const std::size_t first = line.find_first_not_of(" \t\r\f\v");
        if (first == std::string_view::npos || line[first] == '&')
            continue;
        line.remove_prefix(first);
        return true;
    }
    return false;
}

std::optional<SrcAggregate> takeAggregate(Tokens& at)
{
    return readAggregate(at, 0);
}

SrcAggregate expectAggregate(Tokens& at)
{
    const unsigned line = at.peek().line;
    std::optional<SrcAggregate> found = takeAggregate(at);
    if (!found)
        failAtLine(line, "braces that do not hold names and numbers");
    return std::move(*found);
}

std::optional<rob::Posed> poseOf(const SrcAggregate& from)
{
    for (const char* name : {"x", "y", "z", "a", "b", "c"})
        if (!from.has(name))
            return std::nullopt;
    return rob::Posed(rob::Posd(from.at("x"), from.at("y"), from.at("z")),
                      fromZyx(from.at("a"), from.at("b"), from.at("c")));
}

std::string takeName(Tokens& at)
{
    std::string name = lowerCase(at.next().text);
    if (!at.peek().isSymbol("["))
        return name;
    at.next();
    const Token index = at.next();
    const bool isPlain = index.kind == Token::Kind::Number && at.peek().isSymbol("]");
    name += "[" + (isPlain ? std::string(index.text) : std::string("?")) + "]";
    skipBehind(at, "]");
    return name;
}

void skipBehind(Tokens& at, std::string_view symbol)
{
    while (!at.peek().isEnd() && !at.peek().isSymbol(symbol))
        at.next();
    at.next();
}

} // namespace vrk::program
