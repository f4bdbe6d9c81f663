#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::string> seeds()
{
    const std::string head = R"({"format":"vrk-station","version":1)";
    const std::string document = vrk::test::TempFolder::Read(std::filesystem::path(VRK_DOCS_DIR) / "station-format.md");
    const std::size_t begin = document.find("```json\n") + 8;
    return {
        "",
        "null",
        head + "}",
        document.substr(begin, document.find("```", begin) - begin),
        head +
            R"(,"groups":[{"id":1,"name":"a","type":53,"members":[2]},{"id":2,"name":"b","type":54,"members":[]}],
                      "operations":[{"id":3,"name":"o","members":[1]}],"hidden":[1,2]})",
        head + R"(,"assemblies":[{"id":1,"name":"a","pose":[0,0,0,1,0,0,0],"members":[
                      {"type":"assembly","id":2,"name":"b","pose":[0,0,0,1,0,0,0],"members":[
                      {"type":"part","id":3,"name":"p","pose":[1,2,3,0,1,0,0],"bodies":[]}]}]}],
                      "attachments":[{"child":3,"parent":2,"pose":[0,0,0,1,0,0,0]}]})",
        head + R"(,"tasks":[{"id":1,"name":"t","data":[{"type":"work_object","id":2,"name":"w","owner":"station",
                      "pose":[0,0,0,1,0,0,0],"fixed":false,"object_frame":{"id":4,"name":"","pose":[0,0,0,1,0,0,0]}}]}],
                      "components":[{"id":5,"name":"c","kind":"component","components":[]}]})",
        R"({"format":"vrk-station","version":4,"frames":[{"id":1,"name":"f","pose":[0,0,0,1,0,0,0]}],"dimensions":[
                {"name":"d","type":"nearest","ends":[{"kind":"frame","object":1,"place":[0,0,0]},{"kind":"cloud_point",
                "object":1,"number":3,"place":[1,2,3]}]}]})",
        R"({"format":"vrk-station","version":2,"parts":[{"id":20,"name":"p","pose":[0,0,0,1,0,0,0],"bodies":[{"id":21,
                "name":"b","geometry":{"uri":"resource://a.stl","file_type":"stl"}}]}],"tasks":[{"id":1,"name":"t","data":[
                {"type":"work_object","id":2,"name":"w","pose":[0,0,0,1,0,0,0],"fixed":true,"object_frame":{"id":4,"name":"",
                "pose":[0,0,0,1,0,0,0]}},{"type":"robot_target","id":5,"name":"p","owner":2,"pose":[0,0,0,1,0,0,0]}],
                "paths":[{"id":6,"name":"m","instructions":[{"id":7,"name":"c","remark":"r","line":1},{"id":8,"name":"m",
                "motion":"circular","target":5,"via":5,"work_object":2,"speed":"v","zone":"z"}]}],"mfg_shapes":[{"id":9,
                "name":"s","closed":true,"chord":0.5,"edges":[{"body":21,"edge":1,"reversed":true,"vectors":[[0,0,0,1]]}],
                "start":[0,0],"end":[0,1]}]}]})"};
}

void feed(const std::string& input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

TEST(StationFuzzCorpus, EachSeedIsAStationOrAnOwnFailure) // the target itself aborts where it is not
{
    for (const std::string& seed : seeds())
        feed(seed);
}

TEST(StationFuzzCorpus, DamagedSeedsAreStationsOrOwnFailures)
{
    const std::vector<std::string> corpus = seeds();
    const std::vector<std::string> words{"0", "-1", "1e999", "null", "[]",      "{}", "\"station\"",
                                         "1", "2",  "3",     ",",    "\"id\":", "["};
    std::mt19937 random(5);
    for (int i = 0; i < 20000; ++i) {
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
