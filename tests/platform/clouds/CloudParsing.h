#pragma once

#include "platform/station/clouds/CloudFormats.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vrk::station {

using Parser = Cloud (*)(std::string_view bytes, const Progress& progress, double scale);
using Points = layout::PointCloud::Points;
using Normals = layout::PointCloud::Normals;

inline void expectFault(Parser parse, const std::string& bytes, const std::string& text)
{
    EXPECT_THAT([&] { parse(bytes, {}, 1); }, testing::ThrowsMessage<CloudFault>(testing::StrEq(text)));
}

} // namespace vrk::station
