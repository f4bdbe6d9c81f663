#pragma once

#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <string>

namespace vrk::bench {

/// A field of /proc/self/status that is told in kB, in bytes.
inline std::size_t statusBytes(const std::string& field)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(field + ":"))
            return std::stoul(line.substr(field.size() + 1)) * 1024;
    throw std::runtime_error("no " + field + " in /proc/self/status");
}

/// The most memory that the process has held beyond what it held when this was made.
class Peak {
public:
    Peak()
    {
        std::ofstream("/proc/self/clear_refs") << "5"; // the high-water mark falls to what is held now
        before = statusBytes("VmHWM");
    }
    std::size_t bytes() const { return statusBytes("VmHWM") - before; }

private:
    std::size_t before = 0;
};

} // namespace vrk::bench
