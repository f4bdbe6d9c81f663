#pragma once

#include "scene/math/Pose.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>

/// What reading and writing station files have in common. Not installed.
namespace vrk::station {

using Json = nlohmann::ordered_json;

/// The formats that are read. A station is written in the first one that can hold it, so that older readers open it.
inline constexpr int firstVersion = 1;
inline constexpr int programVersion = 2; ///< with paths, robot targets and manufacturing shapes
inline constexpr int cloudVersion = 3;   ///< with hidden points of clouds
inline constexpr int measureVersion = 4; ///< with dimensions, and the robots whose reach is shown
inline constexpr int meshVersion = 5; ///< with meshes of other formats than STL, units of files, and joints that follow
inline constexpr std::string_view stationFormat = "vrk-station";

/// The value of a text, in which no key stands twice.
/// @throws StationFileError  with the path of the fault.
Json parseStationJson(const std::string& text, const std::filesystem::path& file);

/// The text of a value: two spaces for each level, arrays of plain values on one line, numbers as short as they can be
/// read back exactly.
std::string textOf(const Json& value);

/// A value of a station file that knows where it stands, for reading it with failures that tell.
class JsonPlace {
public:
    JsonPlace(const Json& value, std::string path, const std::filesystem::path& file)
        : value(&value), path(std::move(path)), file(&file)
    {
    }

    /// @throws StationFileError "<file>: <path>: expected <what>"
    [[noreturn]] void fail(const std::string& what) const;

    /// Refuses what is no object and keys other than these.
    void expectObject(std::initializer_list<std::string_view> keys) const;
    bool has(std::string_view key) const { return value->contains(key); }
    /// The value of a key, which must be there.
    JsonPlace at(std::string_view key) const;
    /// Calls `visit` with each value of the array at `key`, which may be missing.
    template <typename Visit>
    void forEach(std::string_view key, Visit visit) const
    {
        if (!has(key))
            return;
        const JsonPlace array = at(key);
        if (!array.value->is_array())
            array.fail("an array");
        for (std::size_t i = 0; i < array.value->size(); ++i)
            visit(array.element(i));
    }
    /// Calls `visit` with each key and value of the object at `key`, which may be missing.
    template <typename Visit>
    void forEachKey(std::string_view key, Visit visit) const
    {
        if (!has(key))
            return;
        const JsonPlace object = at(key);
        if (!object.value->is_object())
            object.fail("an object");
        for (const auto& entry : object.value->items())
            visit(entry.key(), object.at(entry.key()));
    }

    std::string asText() const;
    bool asBool() const;
    double asNumber() const;
    /// A whole number from `first` to 2147483647.
    unsigned asCount(unsigned first) const;
    /// An id that an object of the model may have.
    unsigned asId() const;
    /// x, y, z, then w, x, y, z of a rotation of length 1.
    rob::Posed asPose() const;
    /// As many finite numbers as `count`, or any number of them.
    std::vector<double> asNumbers(std::size_t count) const;
    std::vector<double> asNumbers() const;

    const Json& get() const { return *value; }
    const std::string& where() const { return path; }

private:
    JsonPlace element(std::size_t i) const;

    const Json* value;
    std::string path;
    const std::filesystem::path* file;
};

Json jsonOf(const rob::Posed& pose);

/// The "name" of an object.
inline std::string nameAt(const JsonPlace& at)
{
    return at.at("name").asText();
}

} // namespace vrk::station
