#pragma once

#include "platform/station/clouds/CloudFormats.h"

#include <cmath>
#include <cstdlib>
#include <string_view>

namespace vrk::test {

inline void require(bool condition)
{
    if (!condition)
        std::abort(); // what a fuzzer takes for a finding
}

/// A fault is one line and says where.
inline bool isOwnText(std::string_view text)
{
    return (text.starts_with("line ") || text.starts_with("byte ") || text.starts_with("ends at byte ")) &&
           text.find('\n') == std::string_view::npos && text.size() < 200;
}

/// Any bytes give a cloud of finite points or one of the reader's own faults.
template <typename Parse>
int fuzzCloud(Parse parse, const std::uint8_t* data, std::size_t size)
{
    try {
        const station::Cloud cloud = parse(std::string_view(reinterpret_cast<const char*>(data), size));
        require(cloud.normals.empty() || cloud.normals.size() == cloud.points.size());
        require(cloud.points.size() + cloud.dropped <= size);
        for (const rob::Posf& point : cloud.points)
            require(point.isFinite());
        for (const rob::Vec3f& normal : cloud.normals)
            require(normal.isFinite());
    } catch (const station::CloudFault& fault) {
        require(isOwnText(fault.what()));
    }
    return 0;
}

} // namespace vrk::test
