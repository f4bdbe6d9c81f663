#include "files/ImportProgress.h"

#include <fmt/format.h>

#include <iostream>

#include <unistd.h>

namespace vrkview {
namespace {

constexpr std::chrono::seconds lineInterval{3};
constexpr const char* wipe = "\r\033[K"; // back to the start of the line, and erase it

} // namespace

ImportProgress::ImportProgress(std::string fileName)
    : fileName(std::move(fileName)), onTerminal(isatty(STDERR_FILENO) != 0), lastLine(std::chrono::steady_clock::now())
{
}

ImportProgress::~ImportProgress()
{
    if (onTerminal)
        std::cerr << wipe << std::flush;
}

void ImportProgress::report(std::string_view step, double fraction)
{
    const std::string line = fmt::format("{}: {} ({:.0f} %)", fileName, step, 100 * fraction);
    const auto now = std::chrono::steady_clock::now();
    if (onTerminal) {
        std::cerr << wipe << line << std::flush;
    } else if (now - lastLine >= lineInterval) {
        std::cerr << line << std::endl;
        lastLine = now;
    }
}

} // namespace vrkview
