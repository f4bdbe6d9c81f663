#include "StlTexts.h"
#include "support/FuzzCorpus.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace vrk::visual {
namespace {

using test::feed;
using test::mutated;

std::vector<std::string> corpus()
{
    std::vector<StlRecord> records(3);
    records[1].corners[2] = {1, 2, 3};
    return {
        "",
        std::string(84, '\0'),
        binaryStl(records),
        binaryStl(records) + "\n",
        binaryStl(2, records),
        binaryStl(0xFFFFFFFF, records),
        binaryStl(85899346, {}),
        oneFacet,
        oneFacet + oneFacet,
        oneFacet.substr(0, 60),
        "facet normal nan inf -inf endfacet",
        "facet normal 1e-400 1e400 0x1p3 endfacet",
        "facet normal + - . endfacet",
        "facet vertex 1 2 3 vertex 1 2 3 vertex 1 2 3 normal 1 2 3 endfacet facet",
    };
}

} // namespace

TEST(StlFuzzCorpus, EachSeedIsAMeshOrAnOwnFailure) // the target itself aborts where it is not
{
    for (const std::string& seed : corpus())
        feed(seed);
}

TEST(StlFuzzCorpus, MutatedSeedsAreAMeshOrAnOwnFailure)
{
    const std::vector<std::string> seeds = corpus();
    std::mt19937 random(3);
    for (unsigned i = 0; i < 20000; ++i)
        feed(mutated(seeds[i % seeds.size()], seeds, random));
}

} // namespace vrk::visual
