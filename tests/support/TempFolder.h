#pragma once

#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

namespace vrk::test {

/// A folder of its own for one test; it and all that lies in it goes with the object.
class TempFolder {
public:
    TempFolder()
    {
        static std::atomic<unsigned> count{0};
        folder = std::filesystem::temp_directory_path() /
                 ("vrk_test_" + std::to_string(getpid()) + "_" + std::to_string(count.fetch_add(1)));
        std::filesystem::create_directories(folder);
    }
    ~TempFolder()
    {
        std::error_code ignored; // a folder that cannot be removed is no failure of the test
        std::filesystem::remove_all(folder, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return folder; }
    std::filesystem::path operator/(const std::filesystem::path& name) const { return folder / name; }

    /// Writes a file, replacing one of that name, and returns its path.
    std::filesystem::path write(const std::filesystem::path& name, std::string_view bytes) const
    {
        const std::filesystem::path file = folder / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return file;
    }
    static std::string Read(const std::filesystem::path& file)
    {
        std::ostringstream text;
        text << std::ifstream(file, std::ios::binary).rdbuf();
        return text.str();
    }

private:
    std::filesystem::path folder;
};

} // namespace vrk::test
