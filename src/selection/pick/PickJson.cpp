#include "selection/pick/PickQuery.h"

#include <nlohmann/json.hpp>

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <stdexcept>

namespace vrk::selection {
namespace {

using Json = nlohmann::ordered_json;

[[noreturn]] void fail(const std::string& what)
{
    throw std::runtime_error("Bad pick query: " + what);
}

const char* nameOf(PickVerdict verdict)
{
    switch (verdict) {
    case PickVerdict::Chosen:
        return "chosen";
    case PickVerdict::Possible:
        return "possible";
    case PickVerdict::Hidden:
        return "hidden";
    case PickVerdict::WrongKind:
        return "wrong kind";
    case PickVerdict::Rejected:
        return "rejected";
    case PickVerdict::Behind:
        return "behind";
    }
    return "";
}

/// Neither a key that is missing nor one that is unknown: a query that was misspelt would be another one.
void expectKeys(const Json& json, const char* what, std::initializer_list<const char*> keys)
{
    if (!json.is_object())
        fail(fmt::format("{} is no object", what));
    for (const char* key : keys)
        if (!json.contains(key))
            fail(fmt::format("{} has no \"{}\"", what, key));
    for (const auto& [key, value] : json.items())
        if (std::ranges::find(keys, key) == keys.end())
            fail(fmt::format("{} has an unknown \"{}\"", what, key));
}

double numberOf(const Json& json, const char* key)
{
    const Json& value = json.at(key);
    if (!value.is_number())
        fail(fmt::format("\"{}\" is no number", key));
    return value.get<double>();
}

unsigned countOf(const Json& json, const char* key)
{
    const Json& value = json.at(key);
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > std::numeric_limits<unsigned>::max())
        fail(fmt::format("\"{}\" is no whole number from 0 on", key));
    return value.get<unsigned>();
}

PickCamera::Matrix matrixOf(const Json& json, const char* key)
{
    const Json& values = json.at(key);
    PickCamera::Matrix matrix;
    if (!values.is_array() || values.size() != matrix.size())
        fail(fmt::format("\"{}\" is not 16 numbers", key));
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        if (!values[i].is_number())
            fail(fmt::format("\"{}\" is not 16 numbers", key));
        matrix[i] = values[i].get<double>();
    }
    return matrix;
}

PickKind kindOf(const std::string& name)
{
    if (const auto kind = findPickKind(name))
        return *kind;
    fail(fmt::format("\"{}\" is no kind", name));
}

PickCamera cameraOf(const Json& json)
{
    expectKeys(json, "the camera", {"view", "projection", "width", "height", "devicePixelRatio"});
    PickCamera camera;
    camera.view = matrixOf(json, "view");
    camera.projection = matrixOf(json, "projection");
    camera.width = countOf(json, "width");
    camera.height = countOf(json, "height");
    camera.devicePixelRatio = numberOf(json, "devicePixelRatio");
    return camera;
}

Json toJsonValue(const PickCamera& camera)
{
    return {{"view", camera.view},
            {"projection", camera.projection},
            {"width", camera.width},
            {"height", camera.height},
            {"devicePixelRatio", camera.devicePixelRatio}};
}

} // namespace

std::string toJson(const PickQuery& query)
{
    Json kinds = Json::array();
    Json priorities = Json::object();
    for (unsigned i = 0; i < pickKindCount; ++i) {
        const auto kind = static_cast<PickKind>(i);
        if (query.kinds.contains(kind))
            kinds.push_back(nameOf(kind));
        priorities[std::string(nameOf(kind))] = query.priorities[i];
    }
    const Json json = {{"camera", toJsonValue(query.camera)},
                       {"x", query.x},
                       {"y", query.y},
                       {"radius", query.radius},
                       {"kinds", kinds},
                       {"priorities", priorities},
                       {"seesThroughSurfaces", query.seesThroughSurfaces},
                       {"pointsPerCloud", query.pointsPerCloud},
                       {"unit", query.unit}};
    return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

std::string toJson(const PickAnswer& answer)
{
    Json list = Json::array();
    for (const PickCandidate& candidate : answer.candidates) {
        Json entry = {{"kind", nameOf(candidate.kind)}, {"id", candidate.visualId}};
        if (candidate.subId >= 0)
            entry["sub"] = candidate.subId;
        entry["place"] = {candidate.place.x, candidate.place.y, candidate.place.z};
        entry["distance"] = candidate.distance;
        entry["pixels"] = candidate.pixels;
        if (candidate.isOnTop)
            entry["onTop"] = true;
        entry["verdict"] = nameOf(candidate.verdict);
        entry["reason"] = candidate.reason;
        if (candidate.verdict == PickVerdict::Behind)
            entry["behindBy"] = candidate.behindBy;
        list.push_back(std::move(entry));
    }
    return list.dump(2, ' ', false, Json::error_handler_t::replace);
}

PickQuery pickQueryFromJson(const std::string& text)
{
    const Json json = Json::parse(text, nullptr, false);
    if (json.is_discarded())
        fail("no JSON");
    expectKeys(json, "it",
               {"camera", "x", "y", "radius", "kinds", "priorities", "seesThroughSurfaces", "pointsPerCloud", "unit"});
    PickQuery query;
    query.camera = cameraOf(json.at("camera"));
    query.x = numberOf(json, "x");
    query.y = numberOf(json, "y");
    query.radius = numberOf(json, "radius");
    query.pointsPerCloud = countOf(json, "pointsPerCloud");
    const Json& kinds = json.at("kinds");
    if (!kinds.is_array())
        fail("\"kinds\" is no list");
    query.kinds = {};
    for (const Json& kind : kinds) {
        if (!kind.is_string())
            fail("\"kinds\" is no list of names");
        query.kinds.add(kindOf(kind.get<std::string>()));
    }
    const Json& priorities = json.at("priorities");
    if (!priorities.is_object())
        fail("\"priorities\" is no object");
    for (const auto& [name, number] : priorities.items()) {
        const PickKind kind = kindOf(name);
        if (!number.is_number_integer())
            fail(fmt::format("the priority of \"{}\" is no whole number", name));
        query.priorities[static_cast<unsigned>(kind)] = number.get<int>();
    }
    if (!json.at("seesThroughSurfaces").is_boolean())
        fail("\"seesThroughSurfaces\" is neither true nor false");
    query.seesThroughSurfaces = json.at("seesThroughSurfaces").get<bool>();
    if (!json.at("unit").is_string())
        fail("\"unit\" is no text");
    query.unit = json.at("unit").get<std::string>();
    return query;
}

} // namespace vrk::selection
