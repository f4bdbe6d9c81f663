#pragma once

#include <filesystem>

namespace vrkview {

/// A new folder in the system's temporary directory, removed with all that is in it when this object dies.
class TemporaryFolder {
public:
    /// @throws std::runtime_error if it cannot be made.
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& getPath() const { return path; }

private:
    std::filesystem::path path;
};

} // namespace vrkview
