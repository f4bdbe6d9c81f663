#include "platform/station/file/PartReader.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"

#include "platform/station/file/PointRanges.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>

namespace vrk::station {
namespace {

std::string colorAt(const JsonPlace& place)
{
    const std::string text = place.asText();
    const auto isHex = [](unsigned char c) { return std::isxdigit(c) != 0; };
    if (text.size() != 7 || text[0] != '#' || !std::all_of(text.begin() + 1, text.end(), isHex))
        place.fail("a colour such as \"#ED1C24\"");
    return text;
}

} // namespace

std::shared_ptr<layout::Part> PartReader::readPart(const JsonPlace& at, bool isStandalone)
{
    if (isStandalone)
        at.expectObject({"id", "name", "parent", "pose", "detectable", "bodies"});
    else
        at.expectObject({"type", "id", "name", "pose", "detectable", "bodies"});
    auto part = std::make_shared<layout::Part>(ids.read(at, sdf::ModelType::Part, true), nameAt(at));
    if (isStandalone)
        part->setParentId(ids.readOwner(at, "parent", part->getId()));
    part->setPose(at.at("pose").asPose());
    if (at.has("detectable"))
        part->setDetectable(at.at("detectable").asBool());
    at.forEach("bodies", [&](const JsonPlace& body) { readBody(body, *part); });
    return part;
}

void PartReader::readBody(const JsonPlace& at, layout::Part& part)
{
    at.expectObject({"id", "name", "pose", "geometry", "material", "color", "face_colors"});
    const unsigned id = ids.read(at, sdf::ModelType::Body, true, part.getId());
    const auto body = part.addBody(id, nameAt(at));
    bodies.emplace(id, body);
    if (at.has("pose"))
        body->setPose(at.at("pose").asPose());
    geometry.give(*body, at.at("geometry"));
    if (at.has("material"))
        body->setMaterialName(at.at("material").asText());
    if (at.has("color"))
        body->setColor(colorAt(at.at("color")));
    at.forEachKey("face_colors", [&](const std::string& key, const JsonPlace& color) {
        unsigned face = 0;
        const char* const end = key.data() + key.size();
        const auto [stop, error] = std::from_chars(key.data(), end, face);
        if (error != std::errc() || stop != end || face == 0 || key.front() == '0')
            color.fail("the number of a face, from 1, as the key");
        if (const TopoDS_Shape& shape = body->getShape(); !shape.IsNull()) // else it was not asked for
            if (const int faces = body->getFaceMap().Extent(); face > static_cast<unsigned>(faces))
                color.fail(fmt::format("one of the {} faces as the key", faces));
        body->setFaceColor(face, colorAt(color));
    });
}

void PartReader::readMembers(const JsonPlace& at, layout::PartContainer& container, int depth)
{
    at.forEach("members", [&](const JsonPlace& member) {
        if (!member.get().is_object())
            member.fail("an object");
        const std::string type = member.at("type").asText();
        if (type == "part")
            container.addPart(readPart(member, false));
        else if (type == "assembly")
            container.addAssembly(readAssembly(member, depth, false));
        else
            member.at("type").fail("\"part\" or \"assembly\"");
        ids.setParent(container.getParts().back()->getId(), container.getId());
    });
}

std::shared_ptr<layout::Assembly> PartReader::readAssembly(const JsonPlace& at, int depth, bool isStandalone)
{
    if (isStandalone)
        at.expectObject({"id", "name", "parent", "pose", "members"});
    else
        at.expectObject({"type", "id", "name", "pose", "members"});
    if (depth > deepestNesting)
        at.fail(fmt::format("no more than {} assemblies in each other", deepestNesting));
    auto assembly = std::make_shared<layout::Assembly>(ids.read(at, sdf::ModelType::Assembly, true), nameAt(at));
    if (isStandalone)
        assembly->setParentId(ids.readOwner(at, "parent", assembly->getId()));
    assembly->setPose(at.at("pose").asPose());
    readMembers(at, *assembly, depth + 1);
    return assembly;
}

std::shared_ptr<layout::PointCloud> PartReader::readCloud(const JsonPlace& at)
{
    if (withHiddenPoints)
        at.expectObject({"id", "name", "parent", "pose", "geometry", "hidden_points"});
    else
        at.expectObject({"id", "name", "parent", "pose", "geometry"});
    const unsigned id = ids.read(at, sdf::ModelType::PointCloud, true);
    auto cloud = geometry.makeCloud(id, nameAt(at), at.at("geometry"));
    cloud->setParentId(ids.readOwner(at, "parent", id));
    cloud->setPose(at.at("pose").asPose());
    if (at.has("hidden_points"))
        readHiddenPoints(at.at("hidden_points"), *cloud);
    return cloud;
}

void PartReader::readHiddenPoints(const JsonPlace& at, layout::PointCloud& cloud) const
{
    const auto ranges = parseRanges(at.asText());
    if (!ranges)
        at.fail("numbers of points as \"0-99,105\", ascending");
    if (!geometry.isLoading())
        return; // there are no points to compare with
    if (ranges->back().second >= cloud.getPoints().size())
        at.fail(fmt::format("numbers below {}, as the cloud has so many points", cloud.getPoints().size()));
    layout::PointSet hidden;
    for (const auto& [first, last] : *ranges)
        hidden.addRange(first, last);
    cloud.setHiddenPoints(std::move(hidden));
}

const layout::Body* PartReader::findBody(unsigned id) const
{
    const auto found = bodies.find(id);
    return found == bodies.end() ? nullptr : found->second.get();
}

} // namespace vrk::station
