#include "platform/station/ImportUrdf.h"

#include "platform/common/Checks.h"
#include "platform/common/Logger.h"
#include "platform/geometry/ColorText.h"
#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/FileKinds.h"
#include "platform/station/Uri.h"
#include "platform/station/import/ImportFormats.h"
#include "platform/station/urdf/UrdfMesh.h"
#include "platform/station/urdf/UrdfText.h"

#include <urdf_model/model.h>

#include <TopoDS_Shape.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <fstream>
#include <optional>
#include <sstream>
#include <unordered_map>

namespace vrk::station {
namespace {

constexpr double unitsPerMetre = 1000;
constexpr std::uintmax_t largestFile = 1 << 26; // descriptions are of some kilobytes

unsigned newId()
{
    return sdf::SdfManager::inst().generateId();
}

rob::Posed poseOf(const urdf::Pose& pose, const std::filesystem::path& file, const std::string& linkName)
{
    const urdf::Vector3& p = pose.position;
    const urdf::Rotation& q = pose.rotation;
    const rob::Posd place = rob::Posd(p.x, p.y, p.z) * unitsPerMetre;
    const rob::Rotationd turn = rob::Rotationd(q.w, q.x, q.y, q.z).normalized();
    const bool isFar = std::max({std::abs(place.x), std::abs(place.y), std::abs(place.z)}) > common::farthestPlace;
    if (isFar || !place.isFinite() || !std::isfinite(turn.w + turn.x + turn.y + turn.z))
        throw ImportError(file, fmt::format("something of the link '{}' lies nowhere", linkName));
    return {place, turn};
}

std::string smallLetters(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

/// The maker that a word of `text` begins with: "kuka_kr10" and "KUKA" are, "cabbage" is not.
std::string vendorIn(const std::string& text)
{
    constexpr std::array<std::pair<std::string_view, std::string_view>, 5> makers{
        {{"abb", "abb"}, {"kuka", "kuka"}, {"fanuc", "fanuc"}, {"yaskawa", "yaskawa"}, {"motoman", "yaskawa"}}};
    const std::string small = smallLetters(text);
    const auto isLetter = [&small](std::size_t i) { return std::isalpha(static_cast<unsigned char>(small[i])) != 0; };
    for (const auto& [word, vendor] : makers) {
        for (std::size_t at = small.find(word); at != std::string::npos; at = small.find(word, at + 1)) {
            const std::size_t end = at + word.size();
            if ((at == 0 || !isLetter(at - 1)) && (end == small.size() || !isLetter(end)))
                return std::string(vendor);
        }
    }
    return {};
}

/// The name in a folder's package.xml; empty where there is none.
std::string packageNameOf(const std::filesystem::path& folder)
{
    std::ifstream stream(folder / "package.xml");
    std::ostringstream text;
    text << stream.rdbuf();
    const std::string xml = text.str();
    const std::size_t begin = xml.find("<name>");
    const std::size_t end = xml.find("</name>");
    if (begin == std::string::npos || end == std::string::npos || end < begin)
        return {};
    std::string name = xml.substr(begin + 6, end - begin - 6);
    std::erase_if(name, [](unsigned char c) { return std::isspace(c) != 0; });
    return name;
}

/// Where meshes are.
class MeshFinder {
public:
    explicit MeshFinder(std::filesystem::path folder) : folder(std::move(folder)) {}

    std::optional<std::filesystem::path> find(const std::string& name) const
    {
        constexpr std::string_view packageScheme = "package://";
        if (name.starts_with(packageScheme))
            return findInPackage(name.substr(packageScheme.size()));
        if (name.starts_with("file://"))
            return existing(UriToFilePath(name));
        return existing(folder / name);
    }

private:
    static std::optional<std::filesystem::path> existing(const std::filesystem::path& file)
    {
        std::error_code error;
        if (!std::filesystem::is_regular_file(file, error))
            return std::nullopt;
        return file.lexically_normal();
    }

    std::optional<std::filesystem::path> findInPackage(const std::string& name) const
    {
        const std::size_t slash = name.find('/');
        if (slash == std::string::npos)
            return std::nullopt;
        const std::string package = name.substr(0, slash);
        const std::filesystem::path rest = name.substr(slash + 1);
        for (std::filesystem::path above = folder;; above = above.parent_path()) {
            const bool isPackage = above.filename() == package || packageNameOf(above) == package;
            if (auto found = isPackage ? existing(above / rest) : std::nullopt)
                return found;
            if (auto found = existing(above / package / rest))
                return found;
            if (above == above.parent_path())
                return std::nullopt;
        }
    }

    std::filesystem::path folder;
};

/// Makes the mechanism of a description.
class UrdfImport {
public:
    UrdfImport(const std::filesystem::path& file, const urdf::ModelInterface& model)
        : file(file), model(model), meshes(file.parent_path())
    {
    }

    std::shared_ptr<layout::Mechanism> run(const Progress& progress)
    {
        orderLinks();
        const bool moves = std::ranges::any_of(ordered, [](const urdf::Link* link) { return isMoving(*link); });
        std::shared_ptr<layout::Manipulator> manipulator;
        if (moves)
            mechanism = manipulator = std::make_shared<layout::Manipulator>(newId(), model.getName());
        else
            mechanism = std::make_shared<layout::Device>(newId(), model.getName());

        for (std::size_t i = 0; i < ordered.size(); ++i) {
            report(progress, fmt::format("link {} of {}", i + 1, ordered.size()),
                   static_cast<double>(i) / static_cast<double>(ordered.size()));
            addLink(*ordered[i]);
        }
        for (const urdf::Link* link : ordered) {
            if (link->parent_joint)
                addJoint(*link->parent_joint);
        }
        if (manipulator)
            finish(*manipulator);
        report(progress, "done", 1);
        return mechanism;
    }

private:
    static bool isMoving(const urdf::Link& link)
    {
        const int type = link.parent_joint ? link.parent_joint->type : urdf::Joint::FIXED;
        return type == urdf::Joint::REVOLUTE || type == urdf::Joint::CONTINUOUS || type == urdf::Joint::PRISMATIC;
    }

    /// Each link behind the one that it hangs on, and a whole branch before the next.
    void orderLinks()
    {
        std::vector<const urdf::Link*> waiting{model.getRoot().get()};
        while (!waiting.empty()) {
            const urdf::Link* const link = waiting.back();
            waiting.pop_back();
            ordered.push_back(link);
            for (auto child = link->child_links.rbegin(); child != link->child_links.rend(); ++child)
                waiting.push_back(child->get());
        }
    }

    void addLink(const urdf::Link& source)
    {
        const auto link = std::make_shared<layout::Link>(newId(), source.name);
        linkIds[source.name] = link->getId();
        for (const urdf::VisualSharedPtr& visual : source.visual_array) {
            if (visual && visual->geometry)
                addPart(*link, visual->name, *visual->geometry, visual->origin, visual->material.get());
        }
        if (link->getParts().empty()) {
            for (const urdf::CollisionSharedPtr& collision : source.collision_array) {
                if (collision && collision->geometry)
                    addPart(*link, collision->name, *collision->geometry, collision->origin, nullptr);
            }
        }
        mechanism->addLink(link);
    }

    void addPart(layout::Link& link, const std::string& name, const urdf::Geometry& geometry, const urdf::Pose& origin,
                 const urdf::Material* material)
    {
        const std::string plainName =
            link.getParts().empty() ? link.getName() : fmt::format("{}.{}", link.getName(), link.getParts().size() + 1);
        const auto part = std::make_shared<layout::Part>(newId(), name.empty() ? plainName : name);
        part->setPose(poseOf(origin, file, link.getName()));
        for (const CachedShape& shape : shapesOf(geometry, link.getName())) {
            const auto body = part->addBody(part->getName());
            std::string uri = shape.file.string();
            const bool isSolid = shape.fileType == "brep";
            if (isSolid)
                uri += "#1";
            body->setGeometry(uri, shape.fileType);
            if (isSolid)
                body->setShape(shapeOf(uri));
            if (material && material->texture_filename.empty())
                body->setColor(colorOf(*material));
            else if (!shape.color.empty())
                body->setColor(shape.color);
        }
        link.addPart(part);
    }

    /// Links of one form share it.
    const TopoDS_Shape& shapeOf(const std::string& uri)
    {
        TopoDS_Shape& shape = shapes[uri];
        if (shape.IsNull())
            shape = ImportShape(uri);
        return shape;
    }

    static std::string colorOf(const urdf::Material& material)
    {
        const auto held = [](float value) { return std::clamp(value, 0.0f, 1.0f); };
        const urdf::Color& color = material.color;
        return geometry::ColorToText({held(color.r), held(color.g), held(color.b)});
    }

    std::vector<CachedShape> shapesOf(const urdf::Geometry& geometry, const std::string& linkName)
    {
        const auto measure = [&](double value) {
            if (!(std::isfinite(value) && value > 0 && value < 1e6))
                throw ImportError(file, fmt::format("a shape of the link '{}' has no size", linkName));
            return value * unitsPerMetre;
        };
        switch (geometry.type) {
        case urdf::Geometry::BOX: {
            const urdf::Vector3& size = static_cast<const urdf::Box&>(geometry).dim;
            return {cachedBox({measure(size.x), measure(size.y), measure(size.z)})};
        }
        case urdf::Geometry::CYLINDER: {
            const auto& cylinder = static_cast<const urdf::Cylinder&>(geometry);
            return {cachedCylinder(measure(cylinder.radius), measure(cylinder.length))};
        }
        case urdf::Geometry::SPHERE:
            return {cachedSphere(measure(static_cast<const urdf::Sphere&>(geometry).radius))};
        case urdf::Geometry::MESH:
            break;
        }
        const auto& mesh = static_cast<const urdf::Mesh&>(geometry);
        const std::optional<std::filesystem::path> found = meshes.find(mesh.filename);
        if (!found)
            throw ImportError(file,
                              fmt::format("the mesh '{}' of the link '{}' is not there", mesh.filename, linkName));
        if (mesh.filename.starts_with("package://"))
            packages += mesh.filename.substr(0, mesh.filename.find('/', 10)) + ' ';
        return cachedMesh(*found, rob::Vec3d(mesh.scale) * unitsPerMetre);
    }

    void addJoint(const urdf::Joint& source)
    {
        layout::Joint joint;
        joint.name = source.name;
        joint.parentLink = linkIds.at(source.parent_link_name);
        joint.childLink = linkIds.at(source.child_link_name);
        joint.origin = poseOf(source.parent_to_joint_origin_transform, file, source.child_link_name);
        joint.type = typeOf(source);
        if (joint.isMoving()) {
            const rob::Vec3d axis(source.axis);
            if (!axis.isFinite() || axis.length() <= rob::zeroLength)
                throw ImportError(file, fmt::format("the axis of the joint '{}' has no direction", source.name));
            joint.axis = rob::normalized(axis);
        }
        if (joint.hasLimits() && source.limits) {
            const double units = joint.type == layout::JointType::Prismatic ? unitsPerMetre : 1;
            joint.lower = source.limits->lower * units;
            joint.upper = source.limits->upper * units;
        }
        if (source.mimic && joint.isMoving())
            joint.follows = followingOf(source);
        try {
            mechanism->addJoint(std::move(joint));
        } catch (const std::invalid_argument& failure) {
            throw ImportError(file, fmt::format("the joint '{}': {}", source.name, failure.what()));
        }
    }

    /// Empty, with a word of warning, where what the joint is to follow is not there, stands still, or follows this one.
    std::optional<layout::JointFollowing> followingOf(const urdf::Joint& source) const
    {
        const urdf::Joint* end = &source;
        for (std::size_t steps = 0; end && end->mimic && steps <= model.joints_.size(); ++steps) {
            const auto next = model.joints_.find(end->mimic->joint_name);
            end = next == model.joints_.end() ? nullptr : next->second.get();
        }
        if (!end || end->mimic || typeOf(*end) == layout::JointType::Fixed) {
            AppLogger::inst()->warn(
                fmt::format("{}: the joint '{}' moves by itself: there is no joint '{}' for it to follow",
                            file.string(), source.name, source.mimic->joint_name));
            return {};
        }
        const auto unitsOf = [this](const urdf::Joint& joint) {
            return typeOf(joint) == layout::JointType::Prismatic ? unitsPerMetre : 1;
        };
        const double units = unitsOf(source);
        const double unitsOfOther = unitsOf(*model.joints_.at(source.mimic->joint_name));
        return layout::JointFollowing{source.mimic->joint_name, source.mimic->multiplier * units / unitsOfOther,
                                      source.mimic->offset * units};
    }

    layout::JointType typeOf(const urdf::Joint& joint) const
    {
        switch (joint.type) {
        case urdf::Joint::REVOLUTE:
            return layout::JointType::Revolute;
        case urdf::Joint::CONTINUOUS:
            return layout::JointType::Continuous;
        case urdf::Joint::PRISMATIC:
            return layout::JointType::Prismatic;
        case urdf::Joint::FIXED:
            return layout::JointType::Fixed;
        case urdf::Joint::FLOATING:
        case urdf::Joint::PLANAR:
        case urdf::Joint::UNKNOWN:
            break;
        }
        FileLogger::inst()->trace(
            fmt::format("{}: the joint '{}' is of a kind that is taken as fixed", file.string(), joint.name));
        return layout::JointType::Fixed;
    }

    void finish(layout::Manipulator& manipulator)
    {
        for (const std::string& text : {model.getName(), file.stem().string(), packages}) {
            if (const std::string vendor = vendorIn(text); !vendor.empty()) {
                manipulator.setVendor(vendor);
                break;
            }
        }
        manipulator.placeWrist(linkIds.at(wristLink()), {});
        // By custom a link "base" is where the controller counts from.
        for (const auto& link : manipulator.getLinks()) {
            if (link->getName() == "base")
                manipulator.getControllerTaskFrame()->setPose(link->getPose());
        }
    }

    std::string wristLink() const
    {
        for (const char* name : {"tool0", "flange"}) {
            if (linkIds.contains(name))
                return name;
        }
        std::unordered_map<std::string, unsigned> jointsAbove;
        const urdf::Link* last = ordered.front();
        for (const urdf::Link* link : ordered) {
            const urdf::LinkConstSharedPtr parent = link->getParent();
            jointsAbove[link->name] = (parent ? jointsAbove[parent->name] : 0) + (isMoving(*link) ? 1 : 0);
            if (jointsAbove[link->name] > jointsAbove[last->name])
                last = link;
        }
        return last->name;
    }

    const std::filesystem::path& file;
    const urdf::ModelInterface& model;
    MeshFinder meshes;
    std::vector<const urdf::Link*> ordered;
    std::unordered_map<std::string, unsigned> linkIds;
    std::unordered_map<std::string, TopoDS_Shape> shapes; // of boxes, cylinders and spheres, by the URI
    std::shared_ptr<layout::Mechanism> mechanism;
    std::string packages; // the names of those that meshes lie in
};

} // namespace

bool isUrdfFile(const std::filesystem::path& file)
{
    return fileKindOf(file) == FileKind::Urdf;
}

std::shared_ptr<layout::Mechanism> ImportUrdf(const std::filesystem::path& file, const Progress& progress)
{
    const std::filesystem::path absolute = std::filesystem::absolute(file).lexically_normal();
    checkReadable(absolute);
    if (std::filesystem::file_size(absolute) > largestFile)
        throw ImportError(absolute, "too large for a robot description");
    std::ostringstream text;
    text << std::ifstream(absolute, std::ios::binary).rdbuf();
    return UrdfImport(absolute, *parseUrdfText(text.str(), absolute)).run(progress);
}

} // namespace vrk::station
