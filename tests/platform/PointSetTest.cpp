#include "platform/layout/PointSet.h"

#include <gmock/gmock.h>

#include <random>
#include <set>

namespace vrk::layout {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Numbers = std::vector<std::uint32_t>;

TEST(PointSet, HoldsWhatItIsGivenOnceAndInOrder)
{
    const PointSet set(Numbers{200, 3, 64, 63, 3});

    EXPECT_THAT(set.numbers(), ElementsAre(3, 63, 64, 200));
    EXPECT_EQ(set.size(), 4u);
    EXPECT_TRUE(set.contains(64));
    EXPECT_FALSE(set.contains(65));
    EXPECT_FALSE(set.contains(1'000'000)) << "far beyond the largest";
}

TEST(PointSet, EmptyOneHoldsNothing)
{
    const PointSet set;

    EXPECT_TRUE(set.empty());
    EXPECT_EQ(set, PointSet(Numbers{}));
    EXPECT_FALSE(set.contains(0));
    EXPECT_THAT(set.numbers(), IsEmpty());
}

TEST(PointSet, AllButAFewAreTheOthers)
{
    EXPECT_THAT(PointSet::AllBut(Numbers{0, 2, 9}, 5).numbers(), ElementsAre(1, 3, 4));
    EXPECT_TRUE(PointSet::AllBut(Numbers{0, 1}, 2).empty());
    EXPECT_TRUE(PointSet::AllBut(Numbers{}, 0).empty());
    // Two that hold the same are equal, whatever they once held.
    EXPECT_EQ(PointSet::AllBut(Numbers{100, 101, 102}, 103), PointSet::AllBut(Numbers{}, 100));
}

TEST(PointSet, RangesAndUnionsAreThoseOfAnOrdinarySet)
{
    std::mt19937 random(3);
    const auto below = [&random](std::uint32_t end) { return static_cast<std::uint32_t>(random() % end); };
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        PointSet set;
        std::set<std::uint32_t> plain;
        for (int i = 0; i < 5; ++i) {
            const std::uint32_t first = below(300), last = first + below(150);
            PointSet range;
            range.addRange(first, last);
            set |= range;
            for (std::uint32_t number = first; number <= last; ++number)
                plain.insert(number);
        }
        EXPECT_THAT(set.numbers(), ElementsAreArray(plain));
        EXPECT_EQ(set, PointSet(set.numbers()));
    }
}

} // namespace
} // namespace vrk::layout
