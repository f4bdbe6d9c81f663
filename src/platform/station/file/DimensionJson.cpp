#include "platform/station/file/DimensionJson.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <utility>

namespace vrk::station {
namespace {

using layout::Dimension;
using layout::DimensionEnd;
using Kind = DimensionEnd::Kind;
using Type = Dimension::Type;

template <typename Value, std::size_t count>
using Words = std::array<std::pair<std::string_view, Value>, count>;

constexpr Words<Type, 6> types{{{"distance", Type::Distance},
                                {"angle", Type::Angle},
                                {"diameter", Type::Diameter},
                                {"length", Type::Length},
                                {"area", Type::Area},
                                {"nearest", Type::Nearest}}};
constexpr Words<Kind, 8> kinds{{{"point", Kind::Point},
                                {"vertex", Kind::Vertex},
                                {"edge", Kind::Edge},
                                {"face", Kind::Face},
                                {"body", Kind::Body},
                                {"mesh_vertex", Kind::MeshVertex},
                                {"cloud_point", Kind::CloudPoint},
                                {"frame", Kind::Frame}}};

template <typename Value, std::size_t count>
Value valueAt(const JsonPlace& place, const Words<Value, count>& words)
{
    const std::string text = place.asText();
    for (const auto& [word, value] : words)
        if (word == text)
            return value;
    std::vector<std::string> quoted;
    for (const auto& [word, value] : words)
        quoted.push_back(fmt::format("\"{}\"", word));
    const std::string last = quoted.back();
    quoted.pop_back();
    place.fail(fmt::format("{} or {}", fmt::join(quoted, ", "), last));
}

template <typename Value, std::size_t count>
std::string_view wordOf(Value value, const Words<Value, count>& words)
{
    return std::ranges::find(words, value, [](const auto& each) { return each.second; })->first;
}

DimensionEnd readEnd(const JsonPlace& at, const StationIds& ids)
{
    at.expectObject({"kind", "object", "number", "place"});
    DimensionEnd end;
    end.kind = valueAt(at.at("kind"), kinds);
    end.object = at.at("object").asId();
    if (!ids.find(end.object))
        at.at("object").fail(fmt::format("the id of an object of the station, not {}", end.object));
    if (DimensionEnd::IsNumbered(end.kind))
        end.number = at.at("number").asCount(end.kind == Kind::MeshVertex || end.kind == Kind::CloudPoint ? 0 : 1);
    else if (at.has("number"))
        at.at("number").fail("no such key for an end of this kind");
    const std::vector<double> place = at.at("place").asNumbers(3);
    end.place = {place[0], place[1], place[2]};
    return end;
}

Json jsonOf(const DimensionEnd& end)
{
    Json json{{"kind", wordOf(end.kind, kinds)}, {"object", end.object}};
    if (DimensionEnd::IsNumbered(end.kind))
        json["number"] = end.number;
    json["place"] = {end.place.x, end.place.y, end.place.z};
    return json;
}

} // namespace

std::shared_ptr<const Dimension> readDimension(const JsonPlace& at, const StationIds& ids)
{
    at.expectObject({"name", "type", "ends"});
    Dimension dimension;
    dimension.name = nameAt(at);
    dimension.type = valueAt(at.at("type"), types);
    const JsonPlace ends = at.at("ends");
    at.forEach("ends", [&](const JsonPlace& end) { dimension.ends.push_back(readEnd(end, ids)); });
    const std::size_t wanted = Dimension::EndsOf(dimension.type);
    if (dimension.ends.size() != wanted)
        ends.fail(wanted == 1 ? "one end" : "two ends");
    return std::make_shared<const Dimension>(std::move(dimension));
}

Json jsonOf(const Dimension& dimension)
{
    Json json{{"name", dimension.name}, {"type", wordOf(dimension.type, types)}};
    for (const DimensionEnd& end : dimension.ends)
        json["ends"].push_back(jsonOf(end));
    return json;
}

} // namespace vrk::station
