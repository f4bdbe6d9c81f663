#include "CloudParsing.h"

namespace vrk::station {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const rob::Posf first(1, 2, 3);
const rob::Posf second(-4, 5.5f, 6e-3f);

TEST(CloudXyz, LinesOfThreeNumbersArePoints)
{
    EXPECT_THAT(parseXyz("1 2 3\n-4\t5.5   6e-3").points, ElementsAre(first, second));
    EXPECT_THAT(parseXyz("  1 2 3 \r\n\r\n-4 5.5 6e-3\r\n").points, ElementsAre(first, second));
}

TEST(CloudXyz, RemarksArePassedOver)
{
    EXPECT_THAT(parseXyz("# a scan\n//X Y Z\n1 2 3\n # half way\n-4 5.5 6e-3\n").points, ElementsAre(first, second));
}

TEST(CloudXyz, FurtherColumnsArePassedOver)
{
    const Cloud cloud = parseXyz("1 2 3 0 0 1 99\n-4 5.5 6e-3 0 0 1 98\n");

    EXPECT_THAT(cloud.points, ElementsAre(first, second));
    EXPECT_THAT(cloud.normals, IsEmpty());
}

TEST(CloudXyz, SixColumnsOfUnitVectorsAreNormals)
{
    const Cloud cloud = parseXyz("1 2 3 0 0 1\n4 5 6 0.58 0.58 0.58\n7 8 9 0 0 0\n7 8 9 nan nan nan\n");

    EXPECT_THAT(cloud.normals, ElementsAre(rob::Vec3f(0, 0, 1), rob::Vec3f(0.58f, 0.58f, 0.58f), rob::Vec3f(0, 0, 0),
                                           rob::Vec3f(0, 0, 0)));
}

TEST(CloudXyz, NumberWithManyDigitsIsTooLargeWhateverItsExponentSays)
{
    const Cloud cloud = parseXyz("1 2 1" + std::string(400, '0') + "e-5\n1 2 3\n");

    EXPECT_THAT(cloud.points, ElementsAre(first));
    EXPECT_EQ(cloud.dropped, 1u);
}

TEST(CloudXyz, SixColumnsOfColoursAreNoNormals)
{
    EXPECT_THAT(parseXyz("1 2 3 255 128 0\n").normals, IsEmpty());
    EXPECT_THAT(parseXyz("1 2 3 0 0 1\n4 5 6 0.5 0.5 0.5\n7 8 9 0 0 1\n").normals, IsEmpty()) << "seen late";
    EXPECT_THAT(parseXyz("1 2 3 0 0 0\n4 5 6 0 0 0\n").normals, IsEmpty()) << "black";
    EXPECT_EQ(parseXyz("1 2 3 0 0 1\n4 5 6 0.5 0.5 0.5\n7 8 9 0 0 1\n").points.size(), 3u);
}

TEST(CloudXyz, PointsThatAreNotFiniteAreDroppedAndCounted)
{
    const Cloud cloud = parseXyz("nan nan nan 0 0 1\n1 2 3 0 1 0\n");

    EXPECT_THAT(cloud.points, ElementsAre(first));
    EXPECT_THAT(cloud.normals, ElementsAre(rob::Vec3f(0, 1, 0)));
    EXPECT_EQ(cloud.dropped, 1u);
}

TEST(CloudXyz, TextWithoutNumbersHoldsNoPoint)
{
    EXPECT_THAT(parseXyz("").points, IsEmpty());
    EXPECT_THAT(parseXyz("\n\n# nothing\n").points, IsEmpty());
}

TEST(CloudXyz, DamagedTextIsRefusedWithItsLine)
{
    expectFault(parseXyz, "1 2\n", "line 1: 2 numbers where 3 are expected");
    expectFault(parseXyz, "# scan\n1 2 3\n\n1 2 3 4\n", "line 4: 4 numbers where 3 are expected");
    expectFault(parseXyz, "1 2 3\n1 2\n", "line 2: 2 numbers where 3 are expected");
    expectFault(parseXyz, "x y z\n1 2 3\n", "line 1: 'x' is not a number");
    expectFault(parseXyz, "1 2 3\n1 2 0x3\n", "line 2: '0x3' is not a number");
    expectFault(parseXyz, std::string("1 2 3\n\0\0\0", 9), "line 2: '\?\?\?' is not a number");
}

} // namespace
} // namespace vrk::station
