#include <gtest/gtest.h>

// The precompiled header of all tests without a window is made for this source.
namespace vrk::tests {

extern const char* const unitTests = "unit";

} // namespace vrk::tests
