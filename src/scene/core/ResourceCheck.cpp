#include "scene/core/ResourceCheck.h"

#include "platform/common/FileState.h"
#include "platform/common/ResourcePath.h"
#include "platform/common/ZipManager.h"
#include "scene/core/ResourceArchive.h"

#include <fmt/format.h>

#include <Ogre.h>

#include <filesystem>
#include <mutex>
#include <regex>
#include <stdexcept>

namespace vrk::visual {
namespace {

using common::ZipManager;

constexpr std::string_view scheme = "resource://";

std::string textOf(const std::filesystem::path& zip, const std::string& uri)
{
    const auto bytes = ZipManager::Read(zip, uri.substr(scheme.size()));
    return {bytes->data(), bytes->size()};
}

/// Every program source that a script names must be in the zip.
void checkSources(const std::filesystem::path& zip, const std::string& script)
{
    static const std::regex source("source\\s+\"(resource://[^\"]+)\"");
    for (std::sregex_iterator at(script.begin(), script.end(), source), end; at != end; ++at)
        textOf(zip, (*at)[1].str());
}

void check(const std::filesystem::path& zip)
{
    std::error_code error;
    if (!std::filesystem::exists(zip, error))
        throw std::runtime_error(fmt::format("{}: no such file, the materials and programs are missing", zip.string()));
    // These two must be there; what else there is must be whole.
    ZipManager::Read(zip, "material/body.material");
    ZipManager::Read(zip, "material/programs.program");
    for (const char* location : {"resource://material", "resource://program"}) {
        const KelvaneResourceArchive archive(location, "KelvaneResource");
        const Ogre::StringVectorPtr uris = archive.find("*");
        for (const std::string& uri : *uris) {
            if (uri.ends_with('/')) // a folder
                continue;
            const std::string text = textOf(zip, uri);
            if (uri.ends_with(".program") || uri.ends_with(".material"))
                checkSources(zip, text);
        }
    }
}

} // namespace

void checkResources()
{
    static std::mutex mutex;
    static common::FileState good; // asked for ahead of a start, it need not be read again by that
    const common::FileState present = common::stateOf(common::GetResourcePath());
    const std::lock_guard lock(mutex);
    if (present == good)
        return;
    check(present.path);
    good = present;
}

void checkMaterials()
{
    for (const char* name : {"Body", "MeshBody"}) {
        const Ogre::MaterialPtr material = Ogre::MaterialManager::getSingleton().getByName(name);
        if (material)
            material->load();
        if (!material || material->getSupportedTechniques().empty())
            throw std::runtime_error(
                fmt::format("{}: the material '{}' is missing or the driver does not take its programs",
                            common::GetResourcePath().string(), name));
    }
}

} // namespace vrk::visual
