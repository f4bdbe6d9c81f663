// A STEP file with the files that it refers to.

#include "platform/station/FileKinds.h"
#include "platform/station/import/CadNames.h"
#include "platform/station/import/StepReading.h"

#include <Standard_Failure.hxx>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <memory>

namespace vrk::station {
namespace {

// Shares of a whole import.
constexpr double readShare = 0.25;
constexpr double transferredShare = 0.45; // of the file itself, before those that it refers to

constexpr std::size_t longestChain = 50; // of files that refer to each other

/// The file that is meant: where the name says, seen from the file that has it, or else beside that. Programs write the
/// places of their own machine, with its separators.
std::filesystem::path fileFor(const std::string& name, const std::filesystem::path& from)
{
    std::string plain = name;
    std::ranges::replace(plain, '\\', '/');
    const std::filesystem::path folder = from.parent_path();
    std::error_code error;
    const std::filesystem::path asWritten = (folder / plain).lexically_normal();
    if (std::filesystem::exists(asWritten, error))
        return asWritten;
    return folder / std::filesystem::path(plain).filename();
}

class StepLoader {
public:
    StepLoader(const std::filesystem::path& file, const Progress& progress) : file(file), progress(progress) {}

    CadContent load();

private:
    /// @throws ImportError
    const XcafDocument& read(const std::filesystem::path& path, double from, double to);
    const XcafDocument* other(const std::string& name, const std::filesystem::path& from);
    const XcafDocument* readOther(const std::filesystem::path& path);
    void noteAbsent(const XcafContent& found);

    const std::filesystem::path& file;
    const Progress& progress;
    std::map<std::filesystem::path, std::unique_ptr<XcafDocument>> documents; // null while they are read
    std::size_t depth = 0;                                                    // of the chain that is read
    std::map<std::string, std::string> unreadable; // why, of files that are there, by the names that they are called by
    std::vector<std::string> notes;
};

CadContent StepLoader::load()
{
    report(progress, "reading", 0);
    XcafContent found = partsOf(read(file, readShare, transferredShare), file);
    noteAbsent(found);
    if (!found.parts.empty())
        return {std::move(found.parts), std::move(notes)};
    throw ImportError(file, notes.empty() ? "the STEP file holds no shapes"
                                          : fmt::format("nothing of it can be shown: {}", fmt::join(notes, "; ")));
}

const XcafDocument& StepLoader::read(const std::filesystem::path& path, double from, double to)
{
    StepReading reading(path);
    report(progress, "transferring", from);
    auto document = std::make_unique<XcafDocument>(path.stem().string());
    documents[path] = nullptr;
    const bool holdsAny = reading.transfer(*document, progress, from, to);
    const std::string prefix = path == file ? std::string() : tidyName(path.filename().string()) + ": ";
    for (const std::string& loss : reading.losses())
        notes.push_back(prefix + loss);
    if (holdsAny)
        for (const StepReading::Elsewhere& elsewhere : reading.elsewhere())
            document->references[elsewhere.product] = {elsewhere.file, other(elsewhere.file, path)};
    return *(documents[path] = std::move(document));
}

/// Null where it cannot be had.
const XcafDocument* StepLoader::other(const std::string& name, const std::filesystem::path& from)
{
    std::error_code error;
    const std::filesystem::path path =
        std::filesystem::canonical(fileFor(name, from), error); // whatever links lead there
    if (error || unreadable.contains(name))
        return nullptr;
    try {
        return readOther(path);
    } catch (const ImportError& failure) {
        unreadable[name] = std::string(failure.what()).substr(path.string().size() + 2);
    } catch (const Standard_Failure& failure) {
        unreadable[name] = oneLine(failure.GetMessageString());
    }
    return nullptr;
}

const XcafDocument* StepLoader::readOther(const std::filesystem::path& path)
{
    const auto known = documents.find(path);
    if (known != documents.end() && known->second)
        return known->second.get();
    if (known != documents.end() || path == std::filesystem::weakly_canonical(file))
        throw ImportError(path, "it refers back to itself");
    checkReadable(path);
    if (fileKindOf(path) != FileKind::Step)
        throw ImportError(path, "not a STEP file");
    if (depth == longestChain)
        throw ImportError(path, "too many files that refer to each other");
    ++depth;
    try {
        const XcafDocument& document = read(path, transferredShare, transferredShare);
        --depth;
        return &document;
    } catch (...) {
        --depth;
        documents.erase(path);
        throw;
    }
}

/// Tells of parts that are in other files which cannot be had.
void StepLoader::noteAbsent(const XcafContent& found)
{
    auto all = static_cast<std::size_t>(std::ranges::count(found.parts, false, &CadPart::isAssembly));
    std::size_t missing = 0;
    std::vector<std::string> names;
    for (const auto& [name, count] : found.absent)
        all += count;
    for (const auto& [name, count] : found.absent) {
        if (const auto cause = unreadable.find(name); cause != unreadable.end()) {
            notes.push_back(fmt::format("{} of {} parts {} to a file that cannot be read: {}: {}", count, all,
                                        count == 1 ? "refers" : "refer", tidyName(name), cause->second));
        } else {
            missing += count;
            names.push_back(tidyName(name));
        }
    }
    if (missing > 0)
        notes.push_back(fmt::format("{} of {} parts {} to {} not there: {}", missing, all,
                                    missing == 1 ? "refers" : "refer",
                                    names.size() == 1 ? "a file that is" : "files that are", listed(names)));
}

} // namespace

CadContent readStep(const std::filesystem::path& file, const Progress& progress)
{
    return StepLoader(file, progress).load();
}

} // namespace vrk::station
