#include "platform/common/ResourcePath.h"

#include <gtest/gtest.h>

namespace vrk::common {
namespace {

TEST(ResourcePath, IsTheZipBesideTheLibraryOrShared)
{
    const std::filesystem::path zip = GetResourcePath();

    EXPECT_TRUE(zip.is_absolute());
    EXPECT_EQ(zip.filename(), "vrkvisual-resources.zip");
}

TEST(ResourcePath, ChosenPathIsTakenAndAnEmptyOneTakesThatBack)
{
    const std::filesystem::path installed = GetResourcePath();

    SetResourcePath("/somewhere/else.zip");
    EXPECT_EQ(GetResourcePath(), "/somewhere/else.zip");

    SetResourcePath({});
    EXPECT_EQ(GetResourcePath(), installed);
}

} // namespace
} // namespace vrk::common
