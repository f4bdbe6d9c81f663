#include "platform/station/CadReader.h"

#include <dlfcn.h>

#include <mutex>

namespace vrk::station {
namespace {

constexpr const char* programName = "vrkcadreader";

std::mutex mutex; // guards `chosen`

CadReaderSettings& chosen()
{
    static CadReaderSettings settings;
    return settings;
}

std::filesystem::path folderOfThisLibrary()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&GetCadReaderPath), &info) == 0 || info.dli_fname == nullptr)
        return std::filesystem::current_path();
    return std::filesystem::absolute(info.dli_fname).parent_path();
}

std::filesystem::path installedProgram()
{
    // The name may be relative to the working directory at start-up, so the folder is found once.
    static const std::filesystem::path folder = folderOfThisLibrary();
    const std::filesystem::path beside = folder / programName;
    std::error_code error;
    if (std::filesystem::exists(beside, error))
        return beside;
    return (folder / VRK_LIBEXEC_FROM_LIB / programName).lexically_normal();
}

} // namespace

void SetCadReaderSettings(const CadReaderSettings& settings)
{
    const std::lock_guard lock(mutex);
    chosen() = settings;
}

CadReaderSettings GetCadReaderSettings()
{
    const std::lock_guard lock(mutex);
    return chosen();
}

std::filesystem::path GetCadReaderPath()
{
    std::filesystem::path program = GetCadReaderSettings().program;
    return program.empty() ? installedProgram() : program;
}

} // namespace vrk::station
