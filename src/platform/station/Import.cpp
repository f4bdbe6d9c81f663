#include "platform/station/import/CadChild.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/FileKinds.h"
#include "platform/station/GeometryCache.h"

#include <Message.hxx>
#include <Message_Messenger.hxx>

#include <fmt/format.h>

#include <map>
#include <mutex>
#include <variant>

namespace vrk::station {
namespace {

/// Keeps Open CASCADE from writing to the console. Its messenger is one for the process, and several imports may be under way.
class QuietMessenger {
public:
    QuietMessenger()
    {
        const std::lock_guard lock(all().mutex);
        if (all().count++ > 0)
            return;
        all().printers = Message::DefaultMessenger()->Printers();
        Message::DefaultMessenger()->ChangePrinters().Clear();
    }
    ~QuietMessenger()
    {
        const std::lock_guard lock(all().mutex);
        if (--all().count == 0)
            Message::DefaultMessenger()->ChangePrinters() = all().printers;
    }
    QuietMessenger(const QuietMessenger&) = delete;
    QuietMessenger& operator=(const QuietMessenger&) = delete;

private:
    struct All {
        std::mutex mutex;
        int count = 0;
        Message_SequenceOfPrinters printers;
    };
    static All& all()
    {
        static All all;
        return all;
    }
};

/// Open CASCADE's readers share parameters: one import at a time in this process.
std::mutex& importMutex()
{
    static std::mutex mutex;
    return mutex;
}

/// A file of the cache was written by this library, whole or not at all, and needs no protection: a robot has many small ones.
bool isReadHere(const std::filesystem::path& file)
{
    return GetCadReaderSettings().inOwnProcess || GeometryCache::Holds(file);
}

FileKind shapeKindOf(const std::filesystem::path& file)
{
    const FileKind kind = fileKindOf(file);
    if (!isShapeKind(kind) && !isMeshKind(kind))
        throw ImportError(file, fmt::format("not a kind of file that can be read ({})", endingsOf([](FileKind each) {
                                                return isShapeKind(each) || isMeshKind(each);
                                            })));
    return kind;
}

CadContent cadContentOf(const std::filesystem::path& file, const Progress& progress)
{
    if (!isReadHere(file))
        return readInChild(file, CadRequest::Meshed, progress);
    const std::lock_guard lock(importMutex());
    return readCad(file, CadRequest::Meshed, progress);
}

/// @param source  a part.
std::shared_ptr<layout::Part> stationPartOf(const CadPart& source, const rob::Posed& pose)
{
    auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), source.name);
    part->setPose(pose);
    for (const CadBody& piece : source.bodies) {
        const std::shared_ptr<layout::Body> body = part->addBody(piece.name);
        body->setShape(piece.shape);
        if (!piece.color.empty())
            body->setColor(piece.color);
        for (const auto& [face, color] : piece.faceColors)
            body->setFaceColor(face, color);
        body->setGeometry(piece.uri, "brep");
    }
    return part;
}

ImportedFile assembledOf(const CadContent& content)
{
    ImportedFile file;
    file.notes = content.notes;
    std::vector<std::shared_ptr<layout::Assembly>> assemblies; // by their numbers
    for (const CadPart& source : content.parts) {
        layout::Assembly* const owner = source.owner == 0 ? nullptr : assemblies.at(source.owner - 1).get();
        assemblies.emplace_back();
        if (!source.isAssembly) {
            auto part = stationPartOf(source, source.pose);
            owner ? owner->addPart(std::move(part)) : file.parts.push_back(std::move(part));
            continue;
        }
        auto assembly = std::make_shared<layout::Assembly>(sdf::SdfManager::inst().generateId(), source.name);
        assembly->setPose(source.pose);
        assemblies.back() = assembly;
        owner ? owner->addAssembly(std::move(assembly)) : file.assemblies.push_back(std::move(assembly));
    }
    return file;
}

Parts flatOf(const CadContent& content)
{
    Parts parts;
    std::vector<rob::Posed> poses; // in the file, by the numbers of the parts
    for (const CadPart& source : content.parts) {
        poses.push_back(source.owner == 0 ? source.pose : poses.at(source.owner - 1) * source.pose);
        if (!source.isAssembly)
            parts.push_back(stationPartOf(source, poses.back()));
    }
    return parts;
}

void appendParts(const layout::PartContainer& container, Parts& parts)
{
    for (const auto& member : container.getParts()) {
        if (const auto* assembly = dynamic_cast<const layout::Assembly*>(member.get()))
            appendParts(*assembly, parts);
        else
            parts.push_back(std::static_pointer_cast<layout::Part>(member));
    }
}

/// An STL file comes as its part, any other as what it holds.
std::variant<Parts, CadContent> contentOf(const std::filesystem::path& file, const Progress& progress, LengthUnit unit)
{
    checkReadable(file);
    const FileKind kind = shapeKindOf(file);
    if (kind == FileKind::Stl)
        return readStl(file, progress, unit);
    if (isMeshKind(kind))
        return readMesh(file, progress, unit);
    return cadContentOf(file, progress);
}

/// A BREP file without a name: more than one body, or what is none, stays together.
TopoDS_Shape wholeShapeOf(const std::filesystem::path& file)
{
    checkReadable(file);
    if (shapeKindOf(file) != FileKind::Brep)
        throw ImportError(file, "only a BREP file is meant as a whole");
    const QuietMessenger quiet;
    if (!isReadHere(file))
        return readInChild(file, CadRequest::Whole, {}).parts.at(0).bodies.at(0).shape;
    const std::lock_guard lock(importMutex());
    return readCad(file, CadRequest::Whole, {}).parts.at(0).bodies.at(0).shape;
}

/// The shapes of a file by their URIs. Those of the file that was read last are kept: bodies of one file ask for their shapes
/// one after the other.
class KeptShapes {
public:
    /// Null where the file holds none of that URI.
    TopoDS_Shape shapeOf(const std::filesystem::path& file, const std::string& uri);

private:
    void read(const std::filesystem::path& file, bool here);

    std::string key; // of the file and of who read it
    std::map<std::string, TopoDS_Shape> shapes;
};

TopoDS_Shape KeptShapes::shapeOf(const std::filesystem::path& file, const std::string& uri)
{
    const bool here = isReadHere(file);
    if (std::string wanted = GeometryCache::KeyOf(file) + (here ? "|here" : ""); wanted != key) {
        key.clear();
        shapes.clear();
        read(file, here);
        key = std::move(wanted);
    }
    const auto found = shapes.find(uri);
    if (found == shapes.end())
        return {};
    if (here) // the others come with their triangles; a face that got none there gets none here
        meshShape(found->second);
    return found->second;
}

void KeptShapes::read(const std::filesystem::path& file, bool here)
{
    const CadContent content = here ? readCad(file, CadRequest::Bare, {}) : readInChild(file, CadRequest::Meshed, {});
    for (const CadPart& part : content.parts)
        for (const CadBody& body : part.bodies)
            shapes.emplace(body.uri, body.shape);
}

} // namespace

std::vector<std::shared_ptr<layout::Part>> ImportedFile::allParts() const
{
    Parts all;
    for (const auto& assembly : assemblies)
        appendParts(*assembly, all);
    all.insert(all.end(), parts.begin(), parts.end());
    return all;
}

ImportedFile ImportAssembled(const std::filesystem::path& file, const Progress& progress, LengthUnit unit)
{
    const std::filesystem::path absolute = std::filesystem::absolute(file).lexically_normal();
    const QuietMessenger quiet;
    auto content = contentOf(absolute, progress, unit);
    ImportedFile result;
    if (auto* const parts = std::get_if<Parts>(&content))
        result.parts = std::move(*parts);
    else
        callOcct(absolute, [&] { result = assembledOf(std::get<CadContent>(content)); });
    report(progress, "done", 1);
    return result;
}

Parts ImportFile(const std::filesystem::path& file, const Progress& progress, LengthUnit unit)
{
    const std::filesystem::path absolute = std::filesystem::absolute(file).lexically_normal();
    const QuietMessenger quiet;
    auto content = contentOf(absolute, progress, unit);
    Parts result;
    if (auto* const parts = std::get_if<Parts>(&content))
        result = std::move(*parts);
    else
        callOcct(absolute, [&] { result = flatOf(std::get<CadContent>(content)); });
    report(progress, "done", 1);
    return result;
}

TopoDS_Shape ImportShape(const std::string& uri)
{
    if (uri.find('#') == std::string::npos)
        return wholeShapeOf(uri);
    const std::filesystem::path file = uri.substr(0, uri.rfind('#'));
    const std::filesystem::path absolute = std::filesystem::absolute(file).lexically_normal();
    checkReadable(absolute);
    if (const FileKind kind = shapeKindOf(absolute); kind == FileKind::Stl || isMeshKind(kind))
        throw ImportError(file, fmt::format("it holds no shape for '{}'", uri));

    static KeptShapes kept;
    const std::lock_guard lock(importMutex());
    const QuietMessenger quiet;
    TopoDS_Shape shape;
    callOcct(absolute, [&] { shape = kept.shapeOf(absolute, absolute.string() + uri.substr(uri.rfind('#'))); });
    if (shape.IsNull())
        throw ImportError(file, fmt::format("it holds no shape for '{}'", uri));
    return shape;
}

} // namespace vrk::station
