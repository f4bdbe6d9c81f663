#include "UrdfFiles.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::string> seeds()
{
    return {"",
            "<robot/>",
            "<robot name=\"a\"><link name=\"b\"/></robot>",
            vrk::test::armUrdf(),
            vrk::test::oneLinkUrdf("<cylinder radius=\"0.1\" length=\"1\"/>",
                                   "<material name=\"m\"><color rgba=\"1 0 0 1\"/></material>"),
            vrk::test::oneLinkUrdf("<mesh filename=\"package://a/b.stl\" scale=\"1 1 1\"/>"),
            "<?xml version=\"1.0\"?><!-- a --><robot name=\"a\" version=\"1.0\"><link name=\"b\"><inertial><mass "
            "value=\"1\"/>"
            "<inertia ixx=\"1\" ixy=\"0\" ixz=\"0\" iyy=\"1\" iyz=\"0\" izz=\"1\"/></inertial></link></robot>"};
}

void feed(const std::string& input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

TEST(UrdfFuzzCorpus, EachSeedIsARobotOrAnOwnFailure) // the target itself aborts where it is not
{
    for (const std::string& seed : seeds())
        feed(seed);
}

TEST(UrdfFuzzCorpus, DamagedSeedsAreRobotsOrOwnFailures)
{
    const std::vector<std::string> corpus = seeds();
    const std::vector<std::string> words{"<", "/>",   "\"",   "nan",     "1e999", "-1",
                                         "0", "&lt;", "link", "<joint ", "upper", "tool0"};
    std::mt19937 random(9);
    for (int i = 0; i < 3000; ++i) {
        std::string text = corpus[random() % corpus.size()];
        for (unsigned edits = 1 + random() % 4; edits > 0 && !text.empty(); --edits) {
            const std::size_t at = random() % text.size();
            switch (random() % 3) {
            case 0:
                text[at] = static_cast<char>(random());
                break;
            case 1:
                text.erase(at, random() % 12);
                break;
            default:
                text.replace(at, 1, words[random() % words.size()]);
            }
        }
        feed(text);
    }
}

} // namespace
