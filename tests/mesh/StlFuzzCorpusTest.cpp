#include "StlTexts.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vrk::visual {
namespace {

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

void feed(const std::string& input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

/// One to four edits: a byte changed, a piece removed, a piece of another seed put in.
std::string mutated(std::string text, const std::vector<std::string>& seeds, std::mt19937& random)
{
    for (unsigned edits = 1 + random() % 4; edits-- > 0;) {
        const std::size_t at = random() % (text.size() + 1);
        const unsigned kind = random() % 3;
        if (kind == 0 && at < text.size()) {
            text[at] = static_cast<char>(random());
        } else if (kind == 1) {
            text.erase(at, random() % 20);
        } else {
            const std::string& other = seeds[random() % seeds.size()];
            text.insert(at, other.substr(random() % (other.size() + 1), random() % 60));
        }
    }
    return text;
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
