#pragma once

#include "support/TempFolder.h"

#include <cstdlib>
#include <optional>
#include <string>

namespace vrk::test {

/// A geometry cache of its own as long as it lives.
class CacheFolder {
public:
    CacheFolder()
    {
        if (const char* const set = std::getenv("XDG_CACHE_HOME"))
            before = set;
        setenv("XDG_CACHE_HOME", folder.path().c_str(), 1);
    }
    ~CacheFolder()
    {
        if (before)
            setenv("XDG_CACHE_HOME", before->c_str(), 1);
        else
            unsetenv("XDG_CACHE_HOME");
    }
    CacheFolder(const CacheFolder&) = delete;
    CacheFolder& operator=(const CacheFolder&) = delete;

    std::filesystem::path path() const { return folder.path() / "vrkvisual" / "geometry"; }

private:
    TempFolder folder;
    std::optional<std::string> before;
};

} // namespace vrk::test
