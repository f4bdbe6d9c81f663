#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace vrkview {

/// Tells on standard error how far an import is: one line that is written over where that is a terminal, and else a line
/// every few seconds, so that a short import leaves nothing in a log.
class ImportProgress {
public:
    explicit ImportProgress(std::string fileName);
    /// Wipes the line.
    ~ImportProgress();
    ImportProgress(const ImportProgress&) = delete;
    ImportProgress& operator=(const ImportProgress&) = delete;

    void report(std::string_view step, double fraction);

private:
    std::string fileName;
    bool onTerminal;
    std::chrono::steady_clock::time_point lastLine;
};

} // namespace vrkview
