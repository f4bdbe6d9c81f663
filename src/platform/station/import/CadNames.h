#pragma once

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <set>
#include <string>
#include <string_view>

/// Names as CAD files have them, and as users want them. Not installed.
namespace vrk::station {

/// The name in one line: control characters become spaces, of several spaces in a row one is left, and at its ends none.
/// @param text  UTF-8; bytes that are none are taken as Latin-1 letters.
std::string tidyName(const std::string& text);

/// How many bytes from the start are whole letters in UTF-8.
std::size_t utf8Length(std::string_view text);

/// Whether a tidy name says what the thing is. Programs write others where there is none: "=>[0:1:1:14]", "SOLID", "NAUO1".
bool isTelling(std::string_view name);

/// A tidy name of an occurrence, empty where it says nothing. A number does not: occurrences are counted, while a product may
/// have a number for its name.
std::string occurrenceName(const std::string& name);

/// The first of the names that tells something, else the last one.
std::string bestName(std::initializer_list<std::string_view> names);

/// The names of things that stand beside each other.
class SiblingNames {
public:
    /// The name, with " (2)" or a higher number behind it where it is taken; it is taken then.
    std::string add(const std::string& name);

private:
    std::set<std::string, std::less<>> taken;
};

} // namespace vrk::station
