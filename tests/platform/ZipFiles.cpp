#include "ZipFiles.h"

#include <minizip/zip.h>

#include <stdexcept>

namespace vrk::test {

void writeZip(const std::filesystem::path& zip, const std::map<std::string, std::string>& entries)
{
    const zipFile file = zipOpen64(zip.c_str(), APPEND_STATUS_CREATE);
    if (file == nullptr)
        throw std::runtime_error("the test's zip cannot be written");
    for (const auto& [name, bytes] : entries) {
        const zip_fileinfo info{};
        zipOpenNewFileInZip(file, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                            Z_DEFAULT_COMPRESSION);
        zipWriteInFileInZip(file, bytes.data(), static_cast<unsigned>(bytes.size()));
        zipCloseFileInZip(file);
    }
    zipClose(file, nullptr);
}

} // namespace vrk::test
