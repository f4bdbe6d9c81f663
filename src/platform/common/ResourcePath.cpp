#include "platform/common/ResourcePath.h"

#include <dlfcn.h>

#include <mutex>

namespace vrk::common {
namespace {

constexpr const char* zipName = "vrkvisual-resources.zip";

std::mutex mutex; // guards `chosen`
std::filesystem::path chosen;

std::filesystem::path folderOfThisLibrary()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&GetResourcePath), &info) == 0 || info.dli_fname == nullptr)
        return std::filesystem::current_path();
    return std::filesystem::absolute(info.dli_fname).parent_path();
}

} // namespace

std::filesystem::path GetResourcePath()
{
    {
        const std::lock_guard lock(mutex);
        if (!chosen.empty())
            return chosen;
    }
    // The name may be relative to the working directory at start-up, so the folder is found once.
    static const std::filesystem::path folder = folderOfThisLibrary();
    const std::filesystem::path beside = folder / zipName;
    // Libraries lie in lib, or in lib/<triplet> on Debian.
    for (const char* up : {"..", "../.."}) {
        const std::filesystem::path shared = (folder / up / "share/vrkvisual" / zipName).lexically_normal();
        std::error_code error;
        if (!std::filesystem::exists(beside, error) && std::filesystem::exists(shared, error))
            return shared;
    }
    return beside;
}

void SetResourcePath(const std::filesystem::path& zip)
{
    const std::lock_guard lock(mutex);
    chosen = zip;
}

} // namespace vrk::common
