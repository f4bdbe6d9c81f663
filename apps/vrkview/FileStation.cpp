#include "FileStation.h"

#include "ImportProgress.h"

#include "platform/layout/PointCloud.h"
#include "platform/station/Import.h"
#include "platform/station/ImportCloud.h"
#include "platform/station/ImportUrdf.h"
#include "platform/station/StationFile.h"

#include <algorithm>
#include <iterator>

namespace vrkview {
namespace {

std::string titleOf(const std::vector<std::filesystem::path>& files)
{
    const std::string first = files.front().filename().string();
    return files.size() == 1 ? first : first + " and " + std::to_string(files.size() - 1) + " more";
}

/// A surveyed cloud lies far from the origin, where single precision has no room for its details: clouds by themselves
/// are shown around the first one's own origin.
void bringNear(const std::vector<std::shared_ptr<vrk::layout::PointCloud>>& clouds)
{
    const vrk::rob::Posd origin = clouds.front()->getPose().position;
    for (const std::shared_ptr<vrk::layout::PointCloud>& cloud : clouds) {
        vrk::rob::Posed pose = cloud->getPose();
        pose.position =
            vrk::rob::Posd(pose.position.x - origin.x, pose.position.y - origin.y, pose.position.z - origin.z);
        cloud->setPose(pose);
    }
}

} // namespace

Station importFiles(const std::vector<std::filesystem::path>& files)
{
    Station station;
    station.title = titleOf(files);
    for (const std::filesystem::path& file : files) {
        ImportProgress progress(file.filename().string());
        const auto report = [&progress](std::string_view step, double fraction) { progress.report(step, fraction); };
        if (vrk::station::isStationFile(file)) {
            if (station.whole)
                throw vrk::station::ImportError(file, "a second station file; one can be opened at a time");
            station.whole = vrk::station::ReadStationFile(file, report);
        } else if (vrk::station::isUrdfFile(file))
            station.mechanisms.push_back(vrk::station::ImportUrdf(file, report));
        else if (vrk::station::isPointCloudFile(file))
            station.clouds.push_back(vrk::station::ImportPointCloud(file, report));
        else
            std::ranges::move(vrk::station::ImportFile(file, report), std::back_inserter(station.parts));
    }
    if (station.parts.empty() && station.mechanisms.empty() && !station.whole && !station.clouds.empty())
        bringNear(station.clouds);
    return station;
}

} // namespace vrkview
