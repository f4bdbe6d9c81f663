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

} // namespace
} // namespace vrk::test
