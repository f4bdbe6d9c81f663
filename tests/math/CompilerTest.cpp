#include <gtest/gtest.h>

namespace {

/// GCC 12.2 by itself reads the third argument where it should read what it loaded.
[[gnu::noipa]] long sumsToNothing(long summand, const long* other, long /*unused*/)
{
    const long loaded = *other;
    return loaded + summand == 0 ? 0 : loaded;
}

TEST(CompilerFlags, KeepWhatWasLoadedForTheTestOfIt)
{
    const long five = 5;

    EXPECT_EQ(sumsToNothing(-5, &five, 0), 0);
    EXPECT_EQ(sumsToNothing(3, &five, -3), 5);
}

} // namespace
