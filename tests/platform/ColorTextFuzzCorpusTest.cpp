#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

const std::vector<std::string> seeds = {"",        "#",       "#F",      "#FF",       "#FFFF",          "#ED1C24",
                                        "#1G2H3I", "# F 1 2", "#+F-1+2", "#ED1C24FF", {"#\0\0ABCD", 7}, "#0x0X0x"};

void feed(const std::string& input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

TEST(ColorTextFuzzCorpus, EachSeedIsAColourOrAnOwnFailure) // the target itself aborts where it is not
{
    for (const std::string& seed : seeds)
        feed(seed);
}

TEST(ColorTextFuzzCorpus, RandomBytesAreAColourOrAnOwnFailure)
{
    std::mt19937 random(3);
    for (int i = 0; i < 20000; ++i) {
        std::string text = seeds[random() % seeds.size()];
        for (unsigned edits = random() % 4; edits > 0 && !text.empty(); --edits)
            text[random() % text.size()] = static_cast<char>(random());
        feed(text);
    }
}

} // namespace
