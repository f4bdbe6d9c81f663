#include "support/FuzzCorpus.h"

#include <gtest/gtest.h>

namespace vrk::test {
namespace {

std::string ply(const std::string& format, const std::string& count, const std::string& body,
                const std::string& thickness = "float thickness")
{
    return "ply\nformat " + format + " 1.0\nelement vertex " + count +
           "\nproperty float x\nproperty float y\nproperty float z\nproperty " + thickness +
           "\nelement face 1\nproperty list uchar uint vertex_indices\nend_header\n" + body;
}

std::vector<std::string> corpus()
{
    const std::string two = "0 0 0 0.5\n1 2 3 0.25\n3 0 1 0\n";
    const std::string binary(2 * 16 + 5, '\0');
    return {
        "",
        "ply",
        ply("ascii", "2", two),
        ply("ascii", "3", two),
        ply("ascii", "1", two),
        ply("ascii", "2", "nan 0 0 0.5\n1 2 3 0.25\n"),
        ply("ascii", "2", "0 0 0 nan\n1 2 3 inf\n"),
        ply("ascii", "2", "0 0 0 -1\n1 2 3 1e999\n"),
        ply("ascii", "2", two, "list uchar float thickness"),
        ply("ascii", "2", "0 0 0 1\n1 2 3 1\n", "int thickness"),
        ply("ascii", "4294967295", two),
        ply("ascii", "18446744073709551615", two),
        ply("ascii", "-1", two),
        ply("binary_little_endian", "2", binary),
        ply("binary_little_endian", "2", binary.substr(0, 20)),
        ply("binary_little_endian", "4611686018427387905", binary),
        ply("binary_big_endian", "2", binary, "double thickness"),
        ply("binary_little_endian", "1", std::string(16, '\xFF')),
    };
}

} // namespace

TEST(ThicknessMapFuzzCorpus, EachSeedIsAThicknessOrAnOwnRefusal) // the target itself aborts where it is not
{
    for (const std::string& seed : corpus())
        feed(seed);
}

TEST(ThicknessMapFuzzCorpus, MutatedSeedsAreAThicknessOrAnOwnRefusal)
{
    const std::vector<std::string> seeds = corpus();
    std::mt19937 random(5);
    for (unsigned i = 0; i < 1000; ++i)
        feed(mutated(seeds[i % seeds.size()], seeds, random));
}

} // namespace vrk::test
