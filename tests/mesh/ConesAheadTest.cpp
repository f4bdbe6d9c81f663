#include "mesh/ConesAhead.h"

#include "mesh/ProceduralMeshes.h"

#include <gtest/gtest.h>

namespace vrk::visual {
namespace {

TEST(ConesAhead, EachIsTheConeOfItsMeasuresAndHandedOutOnce)
{
    const ConesAhead cones;

    const std::unique_ptr<Mesh> ahead = ConesAhead::Take("VectorHead", 20, 100);

    const std::unique_ptr<Mesh> made = makeCone("VectorHead", 20, 100);
    ASSERT_NE(ahead, nullptr);
    EXPECT_EQ(ahead->name, made->name);
    EXPECT_EQ(ahead->vertices, made->vertices);
    EXPECT_EQ(ahead->normals, made->normals);
    EXPECT_EQ(ahead->indices, made->indices);
    EXPECT_EQ(ConesAhead::Take("VectorHead", 20, 100), nullptr);
    EXPECT_NE(ConesAhead::Take("HandleHead", 10, 45), nullptr);
}

TEST(ConesAhead, ConeOfOtherMeasuresIsNotThere)
{
    const ConesAhead cones;

    EXPECT_EQ(ConesAhead::Take("VectorHead", 21, 100), nullptr);
    EXPECT_EQ(ConesAhead::Take("VectorHead", 20, 101), nullptr);
    EXPECT_EQ(ConesAhead::Take("other", 20, 100), nullptr);
}

TEST(ConesAhead, WithoutTheObjectThereIsNone)
{
    {
        const ConesAhead cones; // nobody asks it: its thread ends with it
    }

    EXPECT_EQ(ConesAhead::Take("VectorHead", 20, 100), nullptr);
}

} // namespace
} // namespace vrk::visual
