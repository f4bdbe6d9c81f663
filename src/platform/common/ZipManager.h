#pragma once

#include "platform/common/Export.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

namespace vrk::common {

/// The bytes of one file. They come from `new char[]`, so that a taker may free them with `delete[]`.
class VRK_EXPORT ZipBuffer {
public:
    ZipBuffer(std::unique_ptr<char[]> bytes, std::size_t length) : bytes(std::move(bytes)), length(length) {}

    const char* data() const { return bytes.get(); }
    std::size_t size() const { return length; }
    /// Hands the bytes to the caller, who frees them with `delete[]`; the buffer is empty afterwards.
    char* release()
    {
        length = 0;
        return bytes.release();
    }

private:
    std::unique_ptr<char[]> bytes;
    std::size_t length;
};

/// Reads entries of zip files. Any thread; no file stays open between two calls.
class VRK_EXPORT ZipManager {
public:
    /// Whether the resource zip holds the entry that `uri` names ("resource://<entry>"). Any other text: false.
    static bool Exists(const std::string& uri);

    /// The whole entry, uncompressed, its checksum tested.
    /// @throws std::runtime_error naming the zip and the entry if either is absent or damaged.
    static std::unique_ptr<ZipBuffer> Read(const std::filesystem::path& zip, const std::string& entry);
};

} // namespace vrk::common
