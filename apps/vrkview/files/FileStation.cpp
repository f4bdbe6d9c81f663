#include "files/FileStation.h"

#include "files/ImportProgress.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/station/FileKinds.h"
#include "platform/station/Import.h"
#include "platform/station/ImportCloud.h"
#include "platform/station/ImportProgram.h"
#include "platform/station/ImportUrdf.h"
#include "platform/station/SimplifyMeshes.h"
#include "platform/station/SmoothMeshes.h"
#include "platform/station/StationFile.h"

#include <Standard_Failure.hxx>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <exception>
#include <iostream>
#include <iterator>
#include <optional>

namespace vrkview {
namespace {

std::string titleOf(const std::vector<std::filesystem::path>& files)
{
    const std::string first = files.front().filename().string();
    return files.size() == 1 ? first : first + " and " + std::to_string(files.size() - 1) + " more";
}

/// The importer of shapes, which has the last word, would name only its own endings.
void checkKind(const std::filesystem::path& file)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error) || vrk::station::isShapeFile(file) ||
        vrk::station::isMeshFile(file))
        return;
    const std::string all = vrk::station::endingsOf([](vrk::station::FileKind) { return true; });
    throw vrk::station::ImportError(std::filesystem::absolute(file).lexically_normal(),
                                    "not a kind of file that can be shown (" + all + ")");
}

std::vector<std::shared_ptr<vrk::layout::Part>> partsOf(const vrk::layout::Mechanism& mechanism)
{
    std::vector<std::shared_ptr<vrk::layout::Part>> parts;
    for (const auto& link : mechanism.getLinks())
        for (const auto& piece : link->getPieces())
            if (auto part = std::dynamic_pointer_cast<vrk::layout::Part>(piece))
                parts.push_back(std::move(part));
    return parts;
}

/// @throws what the importers do; the station is as before then.
void importInto(Station& station, const std::filesystem::path& file, const ImportReport& tell,
                const ReadingOptions& how)
{
    const auto report = [&tell, name = file.filename().string()](std::string_view step, double fraction) {
        tell(name, step, fraction);
    };
    const vrk::LengthUnit unit = how.unit.value_or(vrk::LengthUnit::Millimetre);
    if (vrk::station::isStationFile(file)) {
        if (station.whole)
            throw vrk::station::ImportError(file, "a second station file; one can be opened at a time");
        station.whole = vrk::station::ReadStationFile(file, report);
    } else if (vrk::station::isUrdfFile(file)) {
        station.mechanisms.push_back(vrk::station::ImportUrdf(file, report));
        if (how.smooth)
            vrk::station::SmoothMeshes(partsOf(*station.mechanisms.back()), *how.smooth, report);
    } else if (vrk::station::isPointCloudFile(file) && !vrk::station::isMeshFile(file)) {
        station.clouds.push_back(vrk::station::ImportPointCloud(file, report, unit));
    } else if (vrk::station::isProgramFile(file)) {
        station.programs.push_back(vrk::station::ImportProgram(file, report));
    } else {
        checkKind(file);
        const vrk::station::ImportedFile content = vrk::station::ImportAssembled(file, report, unit);
        if (how.coarser)
            std::ranges::copy(vrk::station::SimplifyMeshes(content.allParts(), how.coarser->tolerance, report),
                              std::back_inserter(station.simplified));
        if (how.smooth)
            vrk::station::SmoothMeshes(content.allParts(), *how.smooth, report);
        std::ranges::copy(content.assemblies, std::back_inserter(station.assemblies));
        std::ranges::copy(content.parts, std::back_inserter(station.parts));
        for (const std::string& note : content.notes)
            station.notes.push_back(
                fmt::format("{}: {}", std::filesystem::absolute(file).lexically_normal().string(), note));
    }
}

} // namespace

BadFiles::BadFiles(std::vector<std::string> failures)
    : std::runtime_error(fmt::format("{}", fmt::join(failures, "\n"))), failures(std::move(failures))
{
}

std::string textOf(const vrk::station::SimplifiedMesh& mesh)
{
    if (mesh.after == mesh.before)
        return fmt::format("{}: its {} triangles are as few as can be", mesh.body, mesh.before);
    return fmt::format("{}: {} of {} triangles, within {:.3g} mm", mesh.body, mesh.after, mesh.before, mesh.tolerance);
}

Station importFiles(const std::vector<std::filesystem::path>& files, const ImportReport& tell,
                    const ReadingOptions& how)
{
    Station station;
    station.title = titleOf(files);
    std::exception_ptr first;
    for (const std::filesystem::path& file : files) {
        const auto note = [&](const char* text) {
            station.failures.emplace_back(text);
            if (!first)
                first = std::current_exception();
        };
        try {
            importInto(station, file, tell, how);
        } catch (const Standard_Failure& failure) {
            if (how.bad == BadFile::EndsAll)
                throw;
            note(failure.GetMessageString());
        } catch (const std::exception& failure) {
            if (how.bad == BadFile::EndsAll)
                throw;
            note(failure.what());
        }
    }
    if (how.bad == BadFile::EndsAll && !station.notes.empty())
        throw BadFiles(station.notes);
    if (files.size() == 1 && first)
        std::rethrow_exception(first);
    if (first && station.failures.size() == files.size())
        throw BadFiles(station.failures);
    return station;
}

Station importFiles(const std::vector<std::filesystem::path>& files, const ReadingOptions& how)
{
    std::optional<ImportProgress> progress;
    std::string present;
    Station station = importFiles(
        files,
        [&](const std::string& file, std::string_view step, double fraction) {
            if (!progress || file != present)
                progress.emplace(present = file);
            progress->report(step, fraction);
        },
        how);
    progress.reset();
    for (const vrk::station::SimplifiedMesh& mesh : station.simplified)
        std::cerr << textOf(mesh) << '\n';
    bringCloudsNear(station);
    return station;
}

void bringCloudsNear(Station& station)
{
    if (!station.parts.empty() || !station.assemblies.empty() || !station.mechanisms.empty() || station.whole ||
        station.clouds.empty())
        return;
    const vrk::rob::Posd origin = station.clouds.front()->getPose().position;
    for (const std::shared_ptr<vrk::layout::PointCloud>& cloud : station.clouds) {
        vrk::rob::Posed pose = cloud->getPose();
        pose.position =
            vrk::rob::Posd(pose.position.x - origin.x, pose.position.y - origin.y, pose.position.z - origin.z);
        cloud->setPose(pose);
    }
}

} // namespace vrkview
