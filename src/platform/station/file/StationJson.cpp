#include "platform/station/file/StationJson.h"

#include "platform/common/Checks.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/StationFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>

namespace vrk::station {
namespace {

constexpr std::size_t deepestLevel = 256;
constexpr double rotationTolerance = 1e-3; // of the length; hand-written files have few digits

std::string lineOf(const std::string& text, std::size_t position)
{
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(position, text.size()));
    return std::to_string(1 + std::count(text.begin(), end, '\n'));
}

/// Goes through a text without keeping its values, and refuses what is no JSON, is nested too deeply, or has a key twice.
/// The values are made in a second go: the package's parser that asks back at each value looks through the whole list
/// whenever one of its objects ends.
class TextCheck : public nlohmann::json_sax<Json> {
public:
    TextCheck(const std::string& text, const std::filesystem::path& file) : text(text), file(file) {}

    bool null() override { return countElement(); }
    bool boolean(bool) override { return countElement(); }
    bool number_integer(number_integer_t) override { return countElement(); }
    bool number_unsigned(number_unsigned_t) override { return countElement(); }
    bool number_float(number_float_t, const string_t&) override { return countElement(); }
    bool string(string_t&) override { return countElement(); }
    bool binary(binary_t&) override { return countElement(); }
    bool start_object(std::size_t) override { return open(false); }
    bool start_array(std::size_t) override { return open(true); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(string_t& name) override
    {
        levels.back().key = name;
        if (!levels.back().keys.insert(name).second)
            throw StationFileError(file, path(), "expected no key twice");
        return true;
    }

    bool parse_error(std::size_t position, const std::string&, const Json::exception& error) override
    {
        if (dynamic_cast<const Json::out_of_range*>(&error))
            throw StationFileError(file, path(), "expected a finite number");
        throw StationFileError(file, path(), fmt::format("expected JSON in line {}", lineOf(text, position)));
    }

private:
    struct Level {
        bool isArray;
        std::size_t index;
        std::string key;
        std::set<std::string> keys;
    };

    bool open(bool isArray)
    {
        if (levels.size() == deepestLevel)
            throw StationFileError(file, path(), fmt::format("expected no more than {} levels", deepestLevel));
        levels.push_back({isArray, 0, {}, {}});
        return true;
    }

    bool close()
    {
        levels.pop_back();
        return countElement();
    }

    std::string path() const
    {
        std::string place;
        for (const Level& level : levels)
            place += '/' + (level.isArray ? std::to_string(level.index) : level.key);
        return place.empty() ? "/" : place;
    }

    bool countElement()
    {
        if (!levels.empty())
            ++levels.back().index;
        return true;
    }

    const std::string& text;
    const std::filesystem::path& file;
    std::vector<Level> levels;
};

bool isPlain(const Json& value)
{
    return !value.is_structured();
}

void write(const Json& value, const std::string& indent, std::string& text)
{
    if (isPlain(value)) {
        // Names come from anywhere; what is no text is replaced.
        text += value.dump(-1, ' ', false, Json::error_handler_t::replace);
        return;
    }
    const bool isArray = value.is_array();
    const bool onOneLine = isArray && std::ranges::all_of(value, isPlain);
    const std::string inner = indent + "  ";
    text += isArray ? '[' : '{';
    bool first = true;
    for (const auto& entry : value.items()) {
        if (!first)
            text += onOneLine ? ", " : ",";
        first = false;
        if (!onOneLine)
            text += '\n' + inner;
        if (!isArray)
            text += Json(entry.key()).dump(-1, ' ', false, Json::error_handler_t::replace) + ": ";
        write(entry.value(), inner, text);
    }
    if (!onOneLine && !first)
        text += '\n' + indent;
    text += isArray ? ']' : '}';
}

} // namespace

Json parseStationJson(const std::string& text, const std::filesystem::path& file)
{
    TextCheck check(text, file);
    Json::sax_parse(text, &check);
    return Json::parse(text);
}

std::string textOf(const Json& value)
{
    std::string text;
    write(value, {}, text);
    return text + '\n';
}

void JsonPlace::fail(const std::string& what) const
{
    throw StationFileError(*file, path.empty() ? "/" : path, "expected " + what);
}

void JsonPlace::expectObject(std::initializer_list<std::string_view> keys) const
{
    if (!value->is_object())
        fail("an object");
    for (const auto& entry : value->items()) {
        if (std::ranges::find(keys, entry.key()) == keys.end())
            at(entry.key()).fail("no such key");
    }
}

JsonPlace JsonPlace::at(std::string_view key) const
{
    const auto found = value->find(key);
    if (found == value->end())
        fail(fmt::format("the key '{}'", key));
    return {*found, fmt::format("{}/{}", path, key), *file};
}

JsonPlace JsonPlace::element(std::size_t i) const
{
    return {(*value)[i], fmt::format("{}/{}", path, i), *file};
}

std::string JsonPlace::asText() const
{
    if (!value->is_string())
        fail("a text");
    return value->get<std::string>();
}

bool JsonPlace::asBool() const
{
    if (!value->is_boolean())
        fail("true or false");
    return value->get<bool>();
}

double JsonPlace::asNumber() const
{
    if (!value->is_number() || !std::isfinite(value->get<double>()))
        fail("a finite number");
    return value->get<double>();
}

unsigned JsonPlace::asCount(unsigned first) const
{
    constexpr unsigned last = 0x7FFFFFFF;
    if (!value->is_number_unsigned() || value->get<std::uint64_t>() < first || value->get<std::uint64_t>() > last)
        fail(fmt::format("a number from {} to {}", first, last));
    return value->get<unsigned>();
}

unsigned JsonPlace::asId() const
{
    constexpr unsigned last = sdf::SdfManager::stationId - 1;
    if (!value->is_number_unsigned() || value->get<std::uint64_t>() == 0 || value->get<std::uint64_t>() > last)
        fail(fmt::format("an id from 1 to {}", last));
    return value->get<unsigned>();
}

rob::Posed JsonPlace::asPose() const
{
    const std::vector<double> n = asNumbers(7);
    const double length = std::sqrt(n[3] * n[3] + n[4] * n[4] + n[5] * n[5] + n[6] * n[6]);
    if (!(std::abs(length - 1) <= rotationTolerance))
        fail("a rotation of length 1 in the last four numbers");
    if (std::max({std::abs(n[0]), std::abs(n[1]), std::abs(n[2])}) > common::farthestPlace)
        fail("a place of up to 1e12 on each axis");
    return {rob::Posd(n[0], n[1], n[2]), rob::Orientd(n[3], n[4], n[5], n[6])};
}

std::vector<double> JsonPlace::asNumbers(std::size_t count) const
{
    if (!value->is_array() || value->size() != count)
        fail(fmt::format("{} numbers", count));
    return asNumbers();
}

std::vector<double> JsonPlace::asNumbers() const
{
    if (!value->is_array())
        fail("numbers");
    std::vector<double> numbers;
    for (std::size_t i = 0; i < value->size(); ++i)
        numbers.push_back(element(i).asNumber());
    return numbers;
}

Json jsonOf(const rob::Posed& pose)
{
    const rob::Posd& p = pose.position;
    const rob::Orientd& o = pose.orientation;
    return Json::array({p.x, p.y, p.z, o.w, o.x, o.y, o.z});
}

} // namespace vrk::station
