#include "scene/core/ResourceArchive.h"

#include "platform/common/ResourcePath.h"
#include "platform/common/ZipManager.h"
#include "platform/station/Uri.h"

#include <OgreDataStream.h>
#include <OgreString.h>

#include <minizip/unzip.h>

#include <filesystem>
#include <memory>
#include <stdexcept>

namespace vrk::visual {
namespace {

const std::string scheme = "resource://";
constexpr uLong maxEntryName = 1024; // bytes, the terminating zero included

struct CloseZip {
    void operator()(void* zip) const { unzClose(zip); }
};

bool fileExists(const std::filesystem::path& path)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::none)
        throw std::filesystem::filesystem_error("exists", path, error);
    return std::filesystem::exists(status);
}

} // namespace

KelvaneResourceArchive::KelvaneResourceArchive(const Ogre::String& name, const Ogre::String& type)
    : Ogre::Archive(name, type)
{
}

KelvaneResourceArchive::~KelvaneResourceArchive() = default;

std::string KelvaneResourceArchive::toUri(const std::string& filename) const
{
    return filename.starts_with(scheme) ? filename : mName + "/" + filename;
}

Ogre::DataStreamPtr KelvaneResourceArchive::open(const Ogre::String& filename, bool) const
{
    const std::string uri = toUri(filename);
    const std::unique_ptr<common::ZipBuffer> buffer = ReadFileFromURI(uri);
    const std::size_t size = buffer->size();
    // The stream takes the bytes over and frees them as an array of char, which is what they are.
    return std::make_shared<Ogre::MemoryDataStream>(uri, buffer->release(), size, true, true);
}

Ogre::DataStreamPtr KelvaneResourceArchive::create(const Ogre::String&)
{
    return {};
}

Ogre::StringVectorPtr KelvaneResourceArchive::list(bool, bool) const
{
    return {};
}

Ogre::FileInfoListPtr KelvaneResourceArchive::listFileInfo(bool, bool) const
{
    return std::make_shared<Ogre::FileInfoList>();
}

void KelvaneResourceArchive::walk(const Visit& visit) const
{
    const std::size_t colon = mName.find("://");
    const std::string folder = colon == std::string::npos ? mName : mName.substr(colon + 3);
    const std::filesystem::path path = common::GetResourcePath();
    if (!fileExists(path))
        return;
    const std::unique_ptr<void, CloseZip> zip(unzOpen(path.string().c_str()));
    if (!zip)
        return;
    const std::string prefix = folder + "/";
    for (int state = unzGoToFirstFile(zip.get()); state == UNZ_OK; state = unzGoToNextFile(zip.get())) {
        unz_file_info info{};
        char entry[maxEntryName] = {};
        if (unzGetCurrentFileInfo(zip.get(), &info, entry, maxEntryName - 1, nullptr, 0, nullptr, 0) != UNZ_OK)
            throw std::runtime_error("Get current file info failed");
        const std::string name = entry;
        if (folder.empty() || name.starts_with(prefix))
            visit(scheme + name, info.compressed_size, info.uncompressed_size);
    }
}

Ogre::StringVectorPtr KelvaneResourceArchive::find(const Ogre::String& pattern, bool, bool) const
{
    auto found = std::make_shared<Ogre::StringVector>();
    walk([&](const std::string& uri, std::uint64_t, std::uint64_t) {
        if (Ogre::StringUtil::match(uri, pattern, true))
            found->push_back(uri);
    });
    return found;
}

bool KelvaneResourceArchive::exists(const Ogre::String& filename) const
{
    return common::ZipManager::Exists(toUri(filename));
}

Ogre::FileInfoListPtr KelvaneResourceArchive::findFileInfo(const Ogre::String& pattern, bool, bool) const
{
    auto found = std::make_shared<Ogre::FileInfoList>();
    walk([&](const std::string& uri, std::uint64_t compressed, std::uint64_t uncompressed) {
        if (Ogre::StringUtil::match(uri, pattern, true))
            found->push_back({this, uri, mName, uri, compressed, uncompressed});
    });
    return found;
}

const Ogre::String& KelvaneResourceArchiveFactory::getType() const
{
    static const Ogre::String type = "KelvaneResource";
    return type;
}

Ogre::Archive* KelvaneResourceArchiveFactory::createInstance(const Ogre::String& name, bool readOnly)
{
    return readOnly ? new KelvaneResourceArchive(name, getType()) : nullptr;
}

void KelvaneResourceArchiveFactory::destroyInstance(Ogre::Archive* archive)
{
    delete archive;
}

} // namespace vrk::visual
