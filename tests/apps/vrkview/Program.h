#pragma once

#include "support/TempFolder.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vrkview::test {

struct Outcome {
    int exitCode = -1;
    std::string out;
    std::string err;
};

/// Runs vrkview to its end, with neither a display nor a terminal.
/// @param environment  more of it, as `env` takes it: "NAME=value".
Outcome runViewer(const std::vector<std::string>& arguments, const std::string& environment = {});

/// A folder with files made for one test.
class Files {
public:
    std::string path(const std::string& name) const { return (folder / name).string(); }
    /// Writes these bytes and returns the path.
    std::string write(const std::string& name, const std::string& bytes) const;
    /// A box of CAD data.
    std::string writeStep(const std::string& name) const;
    std::string writeBrep(const std::string& name) const;
    /// A circle and a point, without a face.
    std::string writeCurves(const std::string& name) const;
    /// A cloud of 441 points, a wavy square of that side around this place.
    std::string writeCloud(const std::string& name, double side, double x = 0, double y = 0) const;

private:
    vrk::test::TempFolder folder;
};

std::string bytesOf(const std::filesystem::path& file);

} // namespace vrkview::test
