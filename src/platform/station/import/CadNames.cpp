#include "platform/station/import/CadNames.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>

namespace vrk::station {
namespace {

struct Letter {
    std::uint32_t code = 0;
    std::size_t length = 1; // bytes
    bool isUtf8 = true;
};

/// The letter that begins there.
Letter letterAt(std::string_view text, std::size_t at)
{
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(at);
    if (first < 0x80)
        return {first, 1, true};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || at + length > text.size())
        return {first, 1, false};
    std::uint32_t code = first & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80)
            return {first, 1, false};
        code = code << 6 | (byte(at + i) & 0x3Fu);
    }
    const bool isShortest = code >= (length == 4 ? 0x10000u : length == 3 ? 0x800u : 0x80u);
    const bool isLetter = isShortest && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
    return isLetter ? Letter{code, length, true} : Letter{first, 1, false};
}

/// What moves the rest of a line, or ends it, and is no letter.
bool isControl(std::uint32_t code)
{
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || (code >= 0x200E && code <= 0x200F) ||
           (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069) || code == 0xFEFF;
}

bool isNumber(std::string_view text)
{
    return !text.empty() && std::ranges::all_of(text, [](unsigned char c) { return std::isdigit(c) != 0; });
}

std::string inCapitals(std::string_view text)
{
    std::string capitals(text);
    std::ranges::transform(capitals, capitals.begin(), [](unsigned char c) { return std::toupper(c); });
    return capitals;
}

} // namespace

std::string tidyName(const std::string& text)
{
    std::string name;
    for (std::size_t at = 0; at < text.size();) {
        const Letter letter = letterAt(text, at);
        if (letter.code == ' ' || isControl(letter.code)) {
            if (!name.empty() && name.back() != ' ')
                name += ' ';
        } else if (letter.isUtf8) {
            name.append(text, at, letter.length);
        } else {
            name += static_cast<char>(0xC0 | letter.code >> 6);
            name += static_cast<char>(0x80 | (letter.code & 0x3F));
        }
        at += letter.length;
    }
    if (name.ends_with(' '))
        name.pop_back();
    return name;
}

std::size_t utf8Length(std::string_view text)
{
    std::size_t at = 0;
    while (at < text.size()) {
        const Letter letter = letterAt(text, at);
        if (!letter.isUtf8)
            break;
        at += letter.length;
    }
    return at;
}

bool isTelling(std::string_view name)
{
    constexpr std::array<std::string_view, 16> fillers{
        "SOLID", "COMPOUND", "COMPSOLID", "SHELL",   "FACE",    "WIRE",     "EDGE",      "VERTEX",
        "SHAPE", "ASSEMBLY", "NONE",      "UNNAMED", "NO NAME", "UNTITLED", "UNDEFINED", "NULL"};
    if (name.empty() || name.starts_with("=>[") || name.starts_with("Open CASCADE STEP translator"))
        return false;
    if (std::ranges::none_of(name, [](unsigned char c) { return c >= 0x80 || std::isalnum(c); }))
        return false;
    const std::string capitals = inCapitals(name);
    if (capitals.starts_with("NAUO") && (capitals.size() == 4 || isNumber(capitals.substr(4))))
        return false;
    return std::ranges::find(fillers, capitals) == fillers.end();
}

std::string occurrenceName(const std::string& name)
{
    return isTelling(name) && !isNumber(name) ? name : std::string();
}

std::string bestName(std::initializer_list<std::string_view> names)
{
    const auto found = std::ranges::find_if(names, isTelling);
    return std::string(found == names.end() ? *(names.end() - 1) : *found);
}

std::string SiblingNames::add(const std::string& name)
{
    std::string own = name;
    for (int i = 2; !taken.insert(own).second; ++i)
        own = fmt::format("{} ({})", name, i);
    return own;
}

} // namespace vrk::station
