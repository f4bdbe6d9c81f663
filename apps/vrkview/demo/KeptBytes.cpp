#include "demo/KeptShapes.h"

// The assembler takes the file in as it is; as text of C++ it would be some ten times as long, and slow to compile.
asm(".pushsection .rodata\n"
    ".balign 16\n"
    "vrkviewKeptShapes:\n"
    ".incbin \"" VRK_KEPT_SHAPES "\"\n"
    "vrkviewKeptShapesEnd:\n"
    ".balign 16\n"
    ".popsection\n");

extern "C" {
extern const std::byte vrkviewKeptShapes[];
extern const std::byte vrkviewKeptShapesEnd[];
}

namespace vrkview::demo {

std::span<const std::byte> keptBytes()
{
    return {vrkviewKeptShapes, vrkviewKeptShapesEnd};
}

} // namespace vrkview::demo
