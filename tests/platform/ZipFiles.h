#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace vrk::test {

/// Writes a zip with these entries, by name, deflated.
void writeZip(const std::filesystem::path& zip, const std::map<std::string, std::string>& entries);

} // namespace vrk::test
