#include "docks/StationTree.h"

#include <gtest/gtest.h>

namespace vrkview::test {
namespace {

StationTree::Row row(unsigned id, int parent)
{
    StationTree::Row made;
    made.id = id;
    made.parent = parent;
    return made;
}

// 1 holds 2, which holds 3, and 4; 5 stands beside 1.
StationTree sample()
{
    return StationTree({row(1, StationTree::none), row(2, 0), row(3, 1), row(4, 0), row(5, StationTree::none)});
}

TEST(StationTree, RowsKnowTheirPlace)
{
    const StationTree tree = sample();

    EXPECT_EQ(tree.getRoots(), std::vector({0, 4}));
    EXPECT_EQ(tree.getRows()[0].children, std::vector({1, 3}));
    EXPECT_EQ(tree.getRows()[3].position, 1);
    EXPECT_EQ(tree.getRows()[4].position, 1);
}

TEST(StationTree, WhatIsBelowARowStandsNextToIt)
{
    const StationTree tree = sample();

    EXPECT_EQ(tree.getRows()[0].end, 4);
    EXPECT_EQ(tree.getRows()[1].end, 3);
    EXPECT_EQ(tree.getRows()[3].end, 4);
    EXPECT_EQ(tree.getRows()[4].end, 5);
}

TEST(StationTree, RowsAreFoundById)
{
    EXPECT_EQ(sample().find(4), 3);
    EXPECT_EQ(sample().find(9), StationTree::none);
    EXPECT_EQ(StationTree().find(1), StationTree::none);
}

} // namespace
} // namespace vrkview::test
