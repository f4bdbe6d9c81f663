#include "support/FuzzCorpus.h"

#include <gtest/gtest.h>

namespace vrk::test {
namespace {

TEST(SurfaceFuzzCorpus, SoupsOfAnyTrianglesAreTaken)
{
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        std::string input(2 + 9 * (1 + random() % 60), '\0');
        for (char& byte : input)
            byte = static_cast<char>(random() % (seed % 5 == 0 ? 256 : 250));
        feed(input);
    }
}

/// Triangles of a few places, which meet in lines of many sheets: halving an edge for one of them must not make another thinner
/// and thinner.
TEST(SurfaceFuzzCorpus, SoupsOfFewPlacesAreTaken)
{
    for (unsigned seed = 1000; seed < 1045; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        std::string input(2 + 9 * (1 + random() % 120), '\0');
        for (char& byte : input)
            byte = static_cast<char>(random() % 3);
        feed(input);
    }
}

} // namespace
} // namespace vrk::test
