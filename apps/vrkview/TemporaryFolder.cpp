#include "TemporaryFolder.h"

#include <cstdlib>
#include <stdexcept>

namespace vrkview {

TemporaryFolder::TemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "vrkview-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error(name + ": the temporary folder cannot be made");
    path = name;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code error; // a folder that is left behind harms nobody
    std::filesystem::remove_all(path, error);
}

} // namespace vrkview
