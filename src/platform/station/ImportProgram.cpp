#include "platform/station/ImportProgram.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/FileKinds.h"
#include "platform/station/import/ImportFormats.h"
#include "platform/task/Task.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <mutex>
#include <shared_mutex>

namespace vrk::station {
namespace {

std::string endingOf(const std::filesystem::path& file)
{
    std::string ending = file.extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return std::tolower(c); });
    return ending;
}

std::string bytesOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    if (!stream && !stream.eof())
        throw ImportError(file, "cannot be read");
    return bytes;
}

/// The data of a program, which lies beside it; the ending may be in any case. Empty where there is none.
std::string dataBeside(const std::filesystem::path& file)
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(file.parent_path(), error))
        if (entry.path().stem() == file.stem() && endingOf(entry.path()) == ".dat")
            return bytesOf(entry.path());
    return {};
}

std::string counted(std::size_t count, const char* one, const char* more)
{
    return fmt::format("{} {}", count, count == 1 ? one : more);
}

bool isTaken(const std::string& name)
{
    const auto& tasks = layout::Layout::inst().tasks;
    return std::ranges::any_of(tasks, [&name](const auto& task) { return task->getName() == name; });
}

} // namespace

bool isProgramFile(const std::filesystem::path& file)
{
    return fileKindOf(file) == FileKind::Program;
}

program::Program ImportProgram(const std::filesystem::path& file, const Progress& progress)
{
    const std::filesystem::path absolute = std::filesystem::absolute(file).lexically_normal();
    checkReadable(absolute);
    report(progress, "Reading the program", 0);
    const std::string text = bytesOf(absolute);
    try {
        const std::string ending = endingOf(absolute);
        if (ending == ".mod")
            return program::readMod(text);
        if (ending == ".src")
            return program::readSrc(text, dataBeside(absolute));
        if (ending == ".ls")
            return program::readLs(text);
    } catch (const program::ProgramFault& fault) {
        throw ImportError(absolute, fault.what());
    }
    throw ImportError(absolute, "not a kind of program that can be read (.mod, .src, .ls)");
}

std::string ProgramSummary::text() const
{
    std::string line = counted(moves, "move", "moves") + fmt::format(", {} placed", placed);
    if (runTime > 0)
        line += fmt::format(", {} not known before {}", runTime, runTime == 1 ? "it runs" : "they run");
    if (missing > 0)
        line += fmt::format(", {} to targets that are not in the files", missing);
    if (faulty > 0)
        line += fmt::format(", {} with numbers that are no place", faulty);
    if (noRobot > 0)
        line += fmt::format(", {} to postures without a robot of as many joints", noRobot);
    line += "; " + counted(targets, "target", "targets");
    if (targetsWithout > 0)
        line += fmt::format(", {} without numbers", targetsWithout);
    return line;
}

std::shared_ptr<task::Task> AddProgram(const program::Program& program, ProgramSummary& summary)
{
    layout::Layout& layout = layout::Layout::inst();
    const layout::Manipulator* const robot = layout.manipulators.empty() ? nullptr : layout.manipulators.front().get();
    std::shared_ptr<task::Task> task = MakeTask(program, robot, summary);
    std::string name = task->getName();
    for (unsigned count = 2; isTaken(name); ++count)
        name = fmt::format("{} ({})", task->getName(), count);
    task->setName(name);
    layout.addTask(task);
    return task;
}

} // namespace vrk::station
