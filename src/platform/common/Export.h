#pragma once

/// Marks what the shared libraries offer; everything else is hidden.
#define VRK_EXPORT __attribute__((visibility("default")))
