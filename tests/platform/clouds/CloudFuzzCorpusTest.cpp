#include "CloudFiles.h"
#include "support/FuzzCorpus.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace vrk::test {
namespace {

/// One corpus for all three formats: to each of the readers most of it is damaged.
std::vector<std::string> corpus()
{
    const std::string numbers = floatBytes({1, 2, 3, 4, 5, 6});
    const std::string lists = "ply\nformat binary_little_endian 1.0\nelement face 2\nproperty list uchar int of\n"
                              "element vertex 1\nproperty float x\nproperty list uchar uchar of\nproperty float y\n"
                              "property float z\nend_header\n";
    std::string asciiLists = lists;
    asciiLists.replace(asciiLists.find("binary_little_endian"), 20, "ascii");
    return {
        "",
        "\n\n",
        "1 2 3\n4 5 6\n",
        "# remark\n1 2 3 0 0 1\n4 5 6 0 1 0\n",
        "1e400 1e-400 nan\ninf -inf 0x1p3\n",
        plyHeader("ascii", 2) + "1 2 3\n4 5 6\n",
        plyHeader("ascii", 2, "x y z nx ny nz") + "1 2 3 0 0 1\n4 5 6 0 1 0\n",
        plyHeader("binary_little_endian", 2) + numbers,
        plyHeader("binary_big_endian", 2) + numbers,
        plyHeader("binary_little_endian", 1, "x y z nx ny nz") + numbers,
        plyHeader("binary_little_endian", 18446744073709551615u) + numbers,
        lists + std::string("\1abcd\0", 6) + numbers.substr(0, 4) + "\2ab" + numbers.substr(0, 8),
        asciiLists + "1 7\n0\n1 2 7 7 2 3\n",
        pcdHeader("ascii", 2) + "1 2 3\n4 5 6\n",
        pcdHeader("binary", 2) + numbers,
        pcdHeader("binary", 4294967295u) + numbers,
        pcdHeader("binary_compressed", 2) + packedData(numbers),
        pcdHeader("binary_compressed", 1, "x y z normal_x normal_y normal_z") + packedData(numbers),
        "FIELDS x h y z\nSIZE 8 2 1 4\nTYPE F U I F\nCOUNT 1 3 1 1\nWIDTH 1\nDATA binary\n" + numbers,
    };
}

} // namespace

// Each program that is made of this source names the suite after its format.
TEST(VRK_CORPUS_SUITE, EachSeedIsACloudOrAnOwnFault) // the target itself aborts where it is not
{
    for (const std::string& seed : corpus())
        feed(seed);
}

TEST(VRK_CORPUS_SUITE, MutatedSeedsAreACloudOrAnOwnFault)
{
    const std::vector<std::string> seeds = corpus();
    std::mt19937 random(3);
    for (unsigned i = 0; i < 20000; ++i)
        feed(mutated(seeds[i % seeds.size()], seeds, random));
}

} // namespace vrk::test
