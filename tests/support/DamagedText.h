#pragma once

#include <random>
#include <string>

namespace vrk::test {

/// One of the ways in which a file is damaged, chosen and placed by the seed; the same seed does the same to the same bytes:
/// cut short, a piece lost from its middle, lines lost, bytes changed, or numbers replaced by ones that no program expects.
std::string damaged(const std::string& bytes, unsigned seed);

} // namespace vrk::test
