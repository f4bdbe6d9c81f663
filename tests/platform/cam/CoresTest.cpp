#include "platform/common/Cores.h"
#include "CamSurfaces.h"
#include "platform/cam/Remesh.h"
#include "platform/cam/Simplify.h"

#include <gtest/gtest.h>

namespace {

unsigned cores = 1, asked = 0;

} // namespace

/// In place of the library's own, which tells one number in a process: a symbol of the program goes before that of a library.
unsigned vrk::coreCount()
{
    ++asked;
    return cores;
}

namespace vrk::cam {
namespace {

TEST(Cores, AnyNumberOfThemGivesTheSameSurfaces)
{
    const TriangleSurface surface = test::waveTorus(60, 40);
    SimplifyOptions coarser;
    coarser.tolerance = 0.1;
    RemeshOptions even;
    even.edgeLength = 1;
    cores = 1;
    const TriangleSurface simplified = simplify(surface, coarser).value(), covered = remesh(surface, even).value();

    for (const unsigned count : {2u, 3u, 7u}) {
        SCOPED_TRACE(testing::Message() << count << " cores");
        cores = count;
        asked = 0;
        EXPECT_TRUE(test::isSame(simplify(surface, coarser).value(), simplified));
        EXPECT_TRUE(test::isSame(remesh(surface, even).value(), covered));
        EXPECT_GT(asked, 0u) << "the library asks another one";
    }
}

} // namespace
} // namespace vrk::cam
