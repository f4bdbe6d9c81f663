#include "platform/station/import/ImportFormats.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <fstream>

namespace vrk::station {

void checkReadable(const std::filesystem::path& file)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found)
        throw ImportError(file, "no such file");
    if (status.type() == std::filesystem::file_type::directory)
        throw ImportError(file, "it is a folder");
    if (std::filesystem::exists(status) &&
        std::filesystem::is_other(status)) // it may never end, and gives its bytes once
        throw ImportError(file, "not a file but a pipe or a device");
    if (!std::ifstream(file, std::ios::binary))
        throw ImportError(file, "the file cannot be opened");
    if (std::filesystem::file_size(file, error) == 0 || error)
        throw ImportError(file, "the file is empty");
}

std::string readWhole(const std::filesystem::path& file)
{
    checkReadable(file);
    std::ifstream stream(file, std::ios::binary);
    const std::uintmax_t size = std::filesystem::file_size(file);
    std::string bytes(size, '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return bytes;
}

ImportError::ImportError(const std::filesystem::path& file, const std::string& cause)
    : std::runtime_error(fmt::format("{}: {}", file.string(), oneLine(cause.c_str())))
{
}

std::string oneLine(const char* text)
{
    std::string line = text == nullptr ? "" : text;
    std::ranges::replace_if(
        line, [](unsigned char c) { return std::iscntrl(c) != 0; }, ' ');
    return line;
}

} // namespace vrk::station
