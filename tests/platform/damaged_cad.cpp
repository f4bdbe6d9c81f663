// damaged_cad <first seed> <count> <file>...: reads so many damaged variants of each file, as the tests do with small ones, and
// counts what came of them. A crash or a hang of this program is the failure that it looks for.

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/station/CadReader.h"
#include "platform/station/Import.h"
#include "support/DamagedText.h"
#include "support/TempFolder.h"

#include <BRep_Tool.hxx>
#include <Poly_Triangulation.hxx>
#include <TopoDS.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <map>

namespace {

using namespace vrk;
using Clock = std::chrono::steady_clock;

bool hasFiniteNodes(const layout::Body& body)
{
    for (int i = 1; i <= body.getFaceMap().Extent(); ++i) {
        TopLoc_Location location;
        const auto triangles = BRep_Tool::Triangulation(TopoDS::Face(body.getFaceMap()(i)), location);
        for (int node = 1; !triangles.IsNull() && node <= triangles->NbNodes(); ++node) {
            const gp_Pnt point = triangles->Node(node);
            if (!std::isfinite(point.X()) || !std::isfinite(point.Y()) || !std::isfinite(point.Z()))
                return false;
        }
    }
    return true;
}

/// The cause, without the file and the numbers that make each its own.
std::string outcomeOf(const std::filesystem::path& file)
{
    try {
        // The last ones stay while the next come: those of one name are held against each other.
        static std::map<std::string, std::vector<std::shared_ptr<layout::Part>>> kept;
        auto& parts = kept[file.extension().string()];
        parts = station::ImportFile(file);
        bool isFinite = true;
        for (const auto& part : parts)
            for (const auto& body : part->getBodies())
                isFinite = isFinite && hasFiniteNodes(*body);
        return isFinite ? "read" : "read, with points that are not finite";
    } catch (const station::ImportError& failure) {
        std::string cause = std::string(failure.what()).substr(file.string().size() + 2);
        if (cause.starts_with("the STEP file is damaged at"))
            return "the STEP file is damaged at a line";
        return cause;
    }
}

} // namespace

int main(int count, char** words)
{
    if (count < 4) {
        std::cerr << "damaged_cad <first seed> <count> <file>...\n";
        return 2;
    }
    station::CadReaderSettings settings;
    settings.longestTime = std::chrono::seconds(10);
    settings.mostMemory = 4'000'000'000;
    station::SetCadReaderSettings(settings);
    const test::TempFolder folder;
    std::map<std::string, int> outcomes;
    double longest = 0;
    const auto first = static_cast<unsigned>(std::atoi(words[1]));
    for (unsigned seed = first; seed < first + static_cast<unsigned>(std::atoi(words[2])); ++seed) {
        for (int i = 3; i < count; ++i) {
            const std::filesystem::path whole = words[i];
            const auto file = folder.write("damaged" + whole.extension().string(),
                                           test::damaged(test::TempFolder::Read(whole), seed));
            const Clock::time_point begin = Clock::now();
            const std::string outcome = outcomeOf(file);
            longest = std::max(longest, std::chrono::duration<double>(Clock::now() - begin).count());
            if (++outcomes[outcome] == 1 || outcome.find("signal") != std::string::npos)
                std::cout << fmt::format("seed {} of {}: {}\n", seed, whole.filename().string(), outcome) << std::flush;
        }
    }
    for (const auto& [outcome, times] : outcomes)
        std::cout << fmt::format("{:6} {}\n", times, outcome);
    std::cout << fmt::format("longest {:.1f} s\n", longest);
}
