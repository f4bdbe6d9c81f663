#include "platform/program/Program.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

using namespace vrk::program;

void require(bool condition)
{
    if (!condition)
        std::abort(); // what a fuzzer takes for a finding
}

bool isIndex(int index, std::size_t size)
{
    return index >= 0 && static_cast<std::size_t>(index) < size;
}

void check(const Program& program, std::size_t size)
{
    require(program.targets.size() <= size && program.routines.size() <= size);
    for (const Routine& routine : program.routines)
        for (const Step& step : routine.steps) {
            require(step.text.find('\n') == std::string::npos);
            if (!step.isMove || step.placing != Placing::Placed)
                continue;
            require(isIndex(step.target, program.targets.size()) &&
                    isIndex(step.workObject, program.workObjects.size()));
            require(step.tool == none || isIndex(step.tool, program.tools.size()));
            require(step.motion != vrk::task::Motion::Circular || isIndex(step.via, program.targets.size()));
        }
}

} // namespace

/// The first byte chooses the language; any bytes behind it give a program or a failure of one line that names the line.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    try {
        switch (data[0] % 3) {
        case 0:
            check(readMod(text), size);
            break;
        case 1: { // what stands behind a form feed is the data of the program
            const std::size_t split = text.find('\f');
            check(readSrc(text.substr(0, split), split == std::string_view::npos ? "" : text.substr(split + 1)), size);
            break;
        }
        default:
            check(readLs(text), size);
        }
    } catch (const ProgramFault& fault) {
        const std::string_view what = fault.what();
        require((what.starts_with("line ") || what.starts_with("the .dat file")) && what.find('\n') == what.npos);
    }
    return 0;
}
