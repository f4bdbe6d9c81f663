#include "FileStation.h"

#include "ImportProgress.h"

#include "platform/station/Import.h"

#include <algorithm>
#include <iterator>

namespace vrkview {
namespace {

std::string titleOf(const std::vector<std::filesystem::path>& files)
{
    const std::string first = files.front().filename().string();
    return files.size() == 1 ? first : first + " and " + std::to_string(files.size() - 1) + " more";
}

} // namespace

Station importFiles(const std::vector<std::filesystem::path>& files)
{
    Station station;
    station.title = titleOf(files);
    for (const std::filesystem::path& file : files) {
        ImportProgress progress(file.filename().string());
        auto parts = vrk::station::ImportFile(
            file, [&progress](std::string_view step, double fraction) { progress.report(step, fraction); });
        std::ranges::move(parts, std::back_inserter(station.parts));
    }
    return station;
}

} // namespace vrkview
