#include "platform/station/file/PartWriter.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/station/file/ObjectJson.h"
#include "platform/station/file/PointRanges.h"

#include <fmt/format.h>

#include <charconv>

namespace vrk::station {
namespace {

void addText(Json& json, const char* key, const std::string& text)
{
    if (!text.empty())
        json[key] = text;
}

/// Another shape may have taken the place of the one that had the face; a reader refuses what is left of it.
bool hasFace(const layout::Body& body, const std::string& number)
{
    unsigned face = 0;
    std::from_chars(number.data(), number.data() + number.size(), face);
    return body.getShape().IsNull() || face <= static_cast<unsigned>(body.getFaceMap().Extent());
}

} // namespace

Json PartWriter::jsonOf(const layout::Part& part)
{
    Json json = placed(part);
    if (!part.isDetectable())
        json["detectable"] = false;
    json["bodies"] = Json::array();
    const std::string before = path;
    for (const auto& body : part.getBodies()) {
        path = fmt::format("{}/bodies/{}", before, json["bodies"].size());
        json["bodies"].push_back(jsonOf(*body));
    }
    path = before;
    return json;
}

Json PartWriter::jsonOf(const layout::Body& body)
{
    const sdf::Element& element = *body.getElement();
    Json json = idAndName(body);
    if (element.get("pose"))
        json["pose"] = station::jsonOf(body.getPose());
    json["geometry"] = geometry.jsonOf(body, path);
    addText(json, "material", sdf::textAt(element, "visual/material/name"));
    addText(json, "color", sdf::textAt(element, "visual/color"));
    if (const auto colors = element.get("visual/face_colors")) {
        for (const auto& face : colors->getChildren()) { // each is called "f<index>"
            const std::string number = face->getName().substr(1);
            if (hasFace(body, number))
                json["face_colors"][number] = face->asString();
        }
    }
    return json;
}

Json PartWriter::jsonOf(const layout::Assembly& assembly)
{
    Json json = placed(assembly);
    json["members"] = membersOf(assembly);
    return json;
}

Json PartWriter::membersOf(const layout::PartContainer& container)
{
    Json members = Json::array();
    const std::string before = path;
    for (const auto& member : container.getParts()) {
        path = fmt::format("{}/members/{}", before, members.size());
        const bool isPart = member->getModelType() == sdf::ModelType::Part;
        Json json{{"type", isPart ? "part" : "assembly"}};
        json.update(isPart ? jsonOf(static_cast<const layout::Part&>(*member))
                           : jsonOf(static_cast<const layout::Assembly&>(*member)));
        members.push_back(std::move(json));
    }
    path = before;
    return members;
}

Json PartWriter::jsonOf(const layout::PointCloud& cloud)
{
    Json json = placed(cloud);
    json["geometry"] = geometry.jsonOf(cloud, path);
    if (const auto& hidden = cloud.getHiddenPoints())
        json["hidden_points"] = rangesText(*hidden);
    return json;
}

} // namespace vrk::station
