#pragma once

#include "platform/common/Export.h"

#include <OgreArchive.h>
#include <OgreArchiveFactory.h>

#include <cstdint>
#include <functional>
#include <string>

namespace vrk::visual {

/// A folder of the resource zip as OGRE sees it. Its name is the location, as in "resource://material".
///
/// What it finds are full URIs, the zip's sub-folders included; `open` and `exists` take such a URI or a name below the
/// location. It is read only, and no file stays open between two calls. `recursive` and `dirs` are ignored everywhere: a
/// location is all that lies below its folder, and a zip has no folders of its own.
///
/// Owner: OGRE's archive manager. Thread: the one that loads resources.
class VRK_EXPORT KelvaneResourceArchive : public Ogre::Archive {
public:
    KelvaneResourceArchive(const Ogre::String& name, const Ogre::String& type);
    ~KelvaneResourceArchive() override;

    bool isCaseSensitive() const override { return true; }
    void load() override {}
    void unload() override {}
    bool isReadOnly() const override { return true; }
    /// @throws std::runtime_error naming the URI if the zip has no such entry.
    Ogre::DataStreamPtr open(const Ogre::String& filename, bool readOnly = true) const override;
    /// An empty pointer: nothing can be written.
    Ogre::DataStreamPtr create(const Ogre::String& filename) override;
    void remove(const Ogre::String&) override {}
    /// An empty pointer, not an empty list; OGRE indexes a location by `find`.
    Ogre::StringVectorPtr list(bool recursive = true, bool dirs = false) const override;
    Ogre::FileInfoListPtr listFileInfo(bool recursive = true, bool dirs = false) const override;
    /// The URIs that match `pattern`, case told apart.
    /// @throws std::filesystem::filesystem_error "exists" if the zip's state cannot be asked for.
    /// @throws std::runtime_error "Get current file info failed"
    Ogre::StringVectorPtr find(const Ogre::String& pattern, bool recursive = true, bool dirs = false) const override;
    bool exists(const Ogre::String& filename) const override;
    time_t getModifiedTime(const Ogre::String&) const override { return 0; }
    Ogre::FileInfoListPtr findFileInfo(const Ogre::String& pattern, bool recursive = true,
                                       bool dirs = false) const override;

private:
    using Visit = std::function<void(const std::string& uri, std::uint64_t compressed, std::uint64_t uncompressed)>;

    std::string toUri(const std::string& filename) const;
    void walk(const Visit& visit) const;
};

/// Makes archives of the type "KelvaneResource".
class VRK_EXPORT KelvaneResourceArchiveFactory : public Ogre::ArchiveFactory {
public:
    using Ogre::ArchiveFactory::createInstance;

    const Ogre::String& getType() const override;
    /// Null for a writable archive.
    Ogre::Archive* createInstance(const Ogre::String& name, bool readOnly) override;
    void destroyInstance(Ogre::Archive* archive) override;
};

} // namespace vrk::visual
