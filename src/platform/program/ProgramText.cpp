#include "platform/program/ProgramText.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>

namespace vrk::program {
namespace {

constexpr std::size_t longestText = 200; // bytes of an instruction that is listed

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool beginsWord(char c)
{
    const char l = lower(c);
    return (l >= 'a' && l <= 'z') || c == '_' || c == '$' || static_cast<unsigned char>(c) >= 0x80;
}

/// The length of the character of UTF-8 at the front of `text`; 0 where there is none.
std::size_t utf8Length(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const std::size_t length = byte(0) < 0x80             ? 1
                               : (byte(0) & 0xE0) == 0xC0 ? 2
                               : (byte(0) & 0xF0) == 0xE0 ? 3
                               : (byte(0) & 0xF8) == 0xF0 ? 4
                                                          : 0;
    if (length == 0 || length > text.size())
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    return length;
}

bool isUtf8(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

} // namespace

void failAtLine(unsigned line, const std::string& cause)
{
    throw ProgramFault(fmt::format("line {}: {}", line, cause));
}

std::string inQuotes(std::string_view text)
{
    std::string plain;
    for (const char c : text.substr(0, 30))
        plain += c >= ' ' && c < 0x7F ? c : '?';
    return "'" + plain + (text.size() > 30 ? "...'" : "'");
}

std::string asUtf8(std::string_view bytes)
{
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    const std::size_t zero = bytes.find('\0');
    if (zero != std::string_view::npos)
        failAtLine(1 + static_cast<unsigned>(std::ranges::count(bytes.substr(0, zero), '\n')), "not a text");
    if (isUtf8(bytes))
        return std::string(bytes);
    std::string text; // each byte is the character of that number then
    text.reserve(bytes.size() + bytes.size() / 8);
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            text += c;
        } else {
            text += static_cast<char>(0xC0 | (byte >> 6));
            text += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return text;
}

bool sameWord(std::string_view a, std::string_view b)
{
    // Asked of every token for many words: the length tells most of them apart, in builds for debugging as well.
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (lower(a[i]) != lower(b[i]))
            return false;
    return true;
}

std::string lowerCase(std::string_view text)
{
    std::string result(text);
    std::ranges::transform(result, result.begin(), lower);
    return result;
}

std::string onOneLine(std::string_view text)
{
    std::string line;
    bool wasBlank = true;
    for (const char c : text) {
        const bool blank = isBlank(c);
        if (!blank)
            line += static_cast<unsigned char>(c) < ' ' ? '?' : c;
        else if (!wasBlank)
            line += ' ';
        wasBlank = blank;
        if (line.size() >= longestText)
            break;
    }
    const bool isCut = line.size() >= longestText;
    while (isCut && !line.empty() && (static_cast<unsigned char>(line.back()) & 0xC0) == 0x80)
        line.pop_back(); // no half of a character stays
    if (isCut && !line.empty() && static_cast<unsigned char>(line.back()) >= 0xC0)
        line.pop_back();
    while (!line.empty() && line.back() == ' ')
        line.pop_back();
    return isCut ? line + "..." : line;
}

bool parseNumber(std::string_view text, double& number)
{
    const bool hasPlus = text.starts_with('+');
    text.remove_prefix(hasPlus ? 1 : 0);
    if (text.empty() || !(isDigit(text[0]) || text[0] == '.' || (text[0] == '-' && !hasPlus)))
        return false;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::result_out_of_range)
        number = std::numeric_limits<double>::infinity();
    return error != std::errc::invalid_argument && stop == text.data() + text.size();
}

Tokens::Tokens(std::string_view text, char comment, unsigned line) : text(text), comment(comment), line(line)
{
    scan();
}

Token Tokens::next()
{
    const Token taken = present;
    endOfLast = taken.at + taken.text.size();
    scan();
    return taken;
}

void Tokens::scan()
{
    const std::size_t size = text.size();
    while (position < size) {
        const char c = text[position];
        if (c == '\n')
            ++line;
        if (comment != 0 && c == comment)
            while (position < size && text[position] != '\n')
                ++position;
        else if (isBlank(c))
            ++position;
        else
            break;
    }
    const std::size_t begin = position;
    present = {Token::Kind::End, {}, line, begin};
    if (position == size)
        return;
    const char c = text[position];
    const auto upcoming = [&](std::size_t ahead) { return begin + ahead < size ? text[begin + ahead] : '\0'; };
    if (beginsWord(c)) {
        present.kind = Token::Kind::Word;
        while (position < size && (beginsWord(text[position]) || isDigit(text[position])))
            ++position;
    } else if (isDigit(c) || (c == '.' && isDigit(upcoming(1)))) {
        present.kind = Token::Kind::Number;
        while (position < size && (isDigit(text[position]) || text[position] == '.'))
            ++position;
        if (position < size && lower(text[position]) == 'e') {
            const std::size_t sign = position + 1 < size && (text[position + 1] == '+' || text[position + 1] == '-');
            if (position + 1 + sign < size && isDigit(text[position + 1 + sign]))
                for (position += 1 + sign; position < size && isDigit(text[position]);)
                    ++position;
        }
    } else if (c == '"') {
        present.kind = Token::Kind::Text;
        const std::size_t end = text.find_first_of("\"\n", begin + 1);
        if (end == std::string_view::npos || text[end] == '\n')
            failAtLine(line, "a text without its end");
        position = end + 1;
    } else {
        present.kind = Token::Kind::Symbol;
        position += c == ':' && upcoming(1) == '=' ? 2 : 1;
    }
    present.text = text.substr(begin, position - begin);
}

std::string_view Tokens::between(std::size_t from, std::size_t to) const
{
    while (from < to && isBlank(text[from]))
        ++from;
    while (to > from && isBlank(text[to - 1]))
        --to;
    return text.substr(from, to - from);
}

bool isOneOf(const Token& token, std::initializer_list<std::string_view> words)
{
    for (const std::string_view word : words)
        if (token.isWord(word))
            return true;
    return false;
}

bool opens(const Token& token)
{
    return token.isSymbol("(") || token.isSymbol("[") || token.isSymbol("{");
}

bool closes(const Token& token)
{
    return token.isSymbol(")") || token.isSymbol("]") || token.isSymbol("}");
}

bool takeSigns(Tokens& at)
{
    bool isNegative = false;
    while (at.peek().isSymbol("-") || at.peek().isSymbol("+"))
        isNegative = at.next().isSymbol("-") != isNegative;
    return isNegative;
}

} // namespace vrk::program
