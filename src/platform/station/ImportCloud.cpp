#include "platform/station/ImportCloud.h"

#include "platform/common/Logger.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/FileKinds.h"
#include "platform/station/clouds/CloudFormats.h"
#include "platform/station/import/ImportFormats.h"

#include <fmt/format.h>

#include <algorithm>

namespace vrk::station {
namespace {

using Parser = Cloud (*)(std::string_view bytes, const Progress& progress, double scale);

struct Format {
    FileKind kind;
    const char* name; // in the model
    Parser parse;
};

constexpr std::array<Format, 3> formats{
    {{FileKind::Ply, "ply", parsePly}, {FileKind::Pcd, "pcd", parsePcd}, {FileKind::Xyz, "xyz", parseXyz}}};

const Format* formatOf(const std::filesystem::path& file)
{
    const auto found = std::ranges::find(formats, fileKindOf(file), &Format::kind);
    return found == formats.end() ? nullptr : &*found;
}

Cloud parsed(const std::filesystem::path& file, Parser parse, const Progress& progress, LengthUnit unit)
{
    try {
        return parse(readWhole(file), progress, MillimetresIn(unit));
    } catch (const CloudFault& fault) {
        throw ImportError(file, fault.what());
    }
}

} // namespace

bool isPointCloudFile(const std::filesystem::path& file)
{
    return isPointCloudKind(fileKindOf(file));
}

std::shared_ptr<layout::PointCloud> ImportPointCloud(const std::filesystem::path& file, const Progress& progress,
                                                     LengthUnit unit)
{
    const std::filesystem::path absolute = std::filesystem::absolute(file).lexically_normal();
    const Format* format = formatOf(absolute);
    if (!format)
        throw ImportError(absolute,
                          fmt::format("not a kind of point cloud that can be read ({})", endingsOf(isPointCloudKind)));
    Cloud read = parsed(absolute, format->parse, progress, unit);
    const std::size_t kept = read.points.size();
    if (read.dropped > 0)
        AppLogger::inst()->trace(fmt::format("{}: {} of {} points are not finite and were dropped", absolute.string(),
                                             read.dropped, kept + read.dropped));
    if (kept == 0)
        throw ImportError(absolute, "the file holds no point");

    auto cloud =
        std::make_shared<layout::PointCloud>(sdf::SdfManager::inst().generateId(), absolute.stem().string(),
                                             std::move(read.points), std::move(read.normals), std::move(read.colors));
    cloud->setPose(rob::Posed(read.origin));
    cloud->setGeometry(absolute.string(), format->name);
    cloud->setFileUnit(unit);
    report(progress, "done", 1);
    return cloud;
}

} // namespace vrk::station
