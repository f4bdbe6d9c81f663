#include "platform/process/Coat.h"
#include "Plates.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <set>

namespace vrk::process {
namespace {

using rob::Posd;
using rob::Posf;
using rob::Vec3f;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

const SprayPlace above{{0, 0, 100}, {0, 0, -1}};

TEST(Coat, IsBareAtFirst)
{
    const test::Plate plate(10, 2);

    EXPECT_THAT(Coat(plate.vertices, plate.normals).getThickness(), testing::SizeIs(9));
    EXPECT_THAT(Coat(plate.vertices, plate.normals).getThickness(), Each(0.0f));
    EXPECT_THAT(Coat().getThickness(), IsEmpty());
}

TEST(Coat, GrowsByTheRateOfEachVertexInTheConeAndOfNoOther)
{
    const test::Plate plate(100, 40);
    Coat coat(plate.vertices, plate.normals);
    const SprayGun gun;
    std::vector<unsigned> touched;

    coat.spray(gun, above, 0.5, touched);

    std::set<unsigned> wanted;
    for (unsigned i = 0; i < plate.vertices.size(); ++i) {
        const double rate = gun.rateAt(rob::Vec3d(plate.vertices[i]) - rob::Vec3d(above.nozzle), {0, 0, -1}, {0, 0, 1});
        ASSERT_NEAR(coat.getThickness()[i], 0.5 * rate, 1e-7);
        if (rate > 0)
            wanted.insert(i);
    }
    EXPECT_EQ(std::set<unsigned>(touched.begin(), touched.end()), wanted);
    EXPECT_EQ(touched.size(), wanted.size()) << "each once";
    EXPECT_GT(wanted.size(), 100u);
    EXPECT_LT(wanted.size(), plate.vertices.size() / 2);
}

TEST(Coat, OfAnyGunAndPlaceIsThatOfALoopOverAllVertices)
{
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> number(-1, 1);
        std::vector<Posf> vertices(1 + random() % 3000);
        std::vector<Vec3f> normals;
        for (Posf& vertex : vertices) {
            vertex = {100 * number(random), 100 * number(random), 30 * number(random)};
            normals.emplace_back(number(random), number(random), number(random));
        }
        const auto direction = rob::normalized(rob::Vec3d(number(random), number(random), number(random)));
        const SprayPlace place{{120.0 * number(random), 120.0 * number(random), 60.0 * number(random)}, direction};
        SprayGun gun;
        gun.halfAngle = 0.05 + 0.7 * std::abs(number(random));
        gun.reach = 20 + 200 * std::abs(number(random));
        Coat coat(vertices, normals);
        std::vector<unsigned> touched;

        coat.spray(gun, place, 1, touched);

        std::size_t count = 0;
        for (unsigned i = 0; i < vertices.size(); ++i) {
            const auto rate = static_cast<float>(gun.rateAt(rob::Vec3d(vertices[i]) - rob::Vec3d(place.nozzle),
                                                            rob::Vec3d(direction), rob::Vec3d(normals[i])));
            ASSERT_EQ(coat.getThickness()[i], rate) << i;
            count += rate > 0;
        }
        ASSERT_EQ(touched.size(), count);
    }
}

TEST(Coat, OnABentSurfaceTakesTheWholeFlow)
{
    // A ball that wholly lies in the cone takes what its disc would: here a paraboloid that closes the cone.
    const test::Plate flat(100, 250);
    std::vector<Posf> vertices = flat.vertices;
    std::vector<Vec3f> normals;
    for (Posf& p : vertices) {
        p.z = 0.01f * (p.x * p.x + p.y * p.y);
        const auto n = rob::normalized(Vec3f(-0.02f * p.x, -0.02f * p.y, 1));
        normals.emplace_back(n);
    }
    Coat coat(vertices, normals);
    SprayGun gun;
    gun.halfAngle = 0.3;
    std::vector<unsigned> touched;

    coat.spray(gun, {{3, -5, 110}, rob::normalized(rob::Vec3d(0.05, 0.1, -1))}, 2, touched);

    double volume = 0;
    for (std::size_t i = 0; i < flat.indices.size(); i += 3) {
        const Posf &a = vertices[flat.indices[i]], &b = vertices[flat.indices[i + 1]],
                   &c = vertices[flat.indices[i + 2]];
        const double area = 0.5 * static_cast<double>((b - a).cross(c - a).length());
        for (std::size_t k = 0; k < 3; ++k)
            volume += area / 3 * static_cast<double>(coat.getThickness()[flat.indices[i + k]]);
    }
    EXPECT_NEAR(volume, 2 * gun.flow, 0.01 * 2 * gun.flow);
}

TEST(Coat, AlongAWayGrowsByFlowOverSpeedAndThePiecesDoNotMatter)
{
    const test::Plate plate(200, 100);
    const SprayWay way({{{-150, 0, 100}, {0, 0, -1}}, {{150, 0, 100}, {0, 0, -1}}}, 60);
    const SprayGun gun;
    std::vector<unsigned> touched;
    Coat fine(plate.vertices, plate.normals), coarse(plate.vertices, plate.normals),
        inParts(plate.vertices, plate.normals), fast(plate.vertices, plate.normals);

    fine.sprayAlong(gun, way, 0, way.length(), 0.25, touched);
    coarse.sprayAlong(gun, way, 0, way.length(), 4, touched);
    for (double at = 0; at < way.length(); at += 10)
        inParts.sprayAlong(gun, way, at, at + 10, 0.25, touched);
    fast.sprayAlong(gun, SprayWay({way.at(0), way.at(300)}, 120), 0, 300, 0.25, touched);

    const std::size_t middle = plate.vertices.size() / 2;
    // Across the way all that leaves the gun while it goes on by one unit: the integral over a line across is flow / speed.
    double across = 0;
    for (std::size_t j = 0; j <= 100; ++j)
        across += 2.0 * static_cast<double>(fine.getThickness()[j * 101 + 50]);
    EXPECT_NEAR(across, gun.flow / 60, 0.01 * gun.flow / 60);
    EXPECT_NEAR(coarse.getThickness()[middle], fine.getThickness()[middle], 0.01f * fine.getThickness()[middle]);
    for (std::size_t i = 0; i < plate.vertices.size(); ++i) {
        ASSERT_NEAR(inParts.getThickness()[i], fine.getThickness()[i], 1e-5f * fine.getThickness()[middle]);
        ASSERT_NEAR(fast.getThickness()[i], fine.getThickness()[i] / 2, 1e-5f * fine.getThickness()[middle]);
    }
}

TEST(Coat, AlongNothingOfAWayTakesNothing)
{
    const test::Plate plate(20, 4);
    Coat coat(plate.vertices, plate.normals);
    const SprayWay way({above, {{10, 0, 100}, {0, 0, -1}}}, 1);
    std::vector<unsigned> touched;

    coat.sprayAlong({}, way, 5, 5, 1, touched);
    coat.sprayAlong({}, way, 8, 3, 1, touched);
    coat.sprayAlong({}, way, 11, 90, 1, touched);

    EXPECT_THAT(touched, IsEmpty());
}

TEST(Coat, PiecesThatAreNoneOrTooManyAreRefused)
{
    Coat coat;
    const SprayWay way({above, {{10, 0, 100}, {0, 0, -1}}}, 1);
    std::vector<unsigned> touched;
    for (const double piece : {0.0, -1.0, 1e-9, std::nan("")})
        EXPECT_THROW(coat.sprayAlong({}, way, 0, 10, piece, touched), std::invalid_argument) << piece;
    EXPECT_NO_THROW(coat.sprayAlong({}, way, 0, 10, std::numeric_limits<double>::infinity(), touched));
    SprayGun bad;
    bad.halfAngle = 2;
    EXPECT_THROW(coat.sprayAlong(bad, way, 0, 10, 1, touched), std::invalid_argument);
}

TEST(Coat, VertexThatIsNotFiniteNeverTakesPaint)
{
    const float none = std::nanf("");
    const std::vector<Posf> vertices{
        {0, 0, 0}, {none, 0, 0}, {0, 0, 1}, {0, std::numeric_limits<float>::infinity(), 0}};
    const std::vector<Vec3f> normals{{0, 0, 1}, {0, 0, 1}, {0, none, 1}, {0, 0, 1}};
    Coat coat(vertices, normals);
    std::vector<unsigned> touched;

    coat.spray({}, above, 1, touched);

    EXPECT_THAT(touched, ElementsAre(0));
}

TEST(Coat, CopiesGrowApart)
{
    const test::Plate plate(10, 2);
    Coat coat(plate.vertices, plate.normals);
    const Coat before = coat;
    std::vector<unsigned> touched;

    coat.spray({}, above, 1, touched);

    EXPECT_THAT(before.getThickness(), Each(0.0f));
    EXPECT_GT(coat.getThickness()[4], 0);
    coat.clear();
    EXPECT_THAT(coat.getThickness(), Each(0.0f));
}

TEST(Coat, GivenThicknessIsCheckedAndTakenWhole)
{
    const test::Plate plate(10, 1);
    Coat coat(plate.vertices, plate.normals);

    EXPECT_THROW(coat.setThickness({1, 2, 3}), std::invalid_argument);
    EXPECT_THROW(coat.setThickness({1, 2, 3, -1}), std::invalid_argument);
    EXPECT_THROW(coat.setThickness({1, 2, 3, std::nanf("")}), std::invalid_argument);
    EXPECT_THAT(coat.getThickness(), Each(0.0f));
    coat.setThickness({1, 2, 3, 4});
    EXPECT_THAT(coat.getThickness(), ElementsAre(1, 2, 3, 4));
    EXPECT_THROW(Coat(plate.vertices, {}), std::invalid_argument);
}

TEST(CoatProbe, ReadsBetweenTheCornersOfTheTriangle)
{
    const test::Plate plate(10, 5);
    std::vector<float> values;
    for (const Posf& p : plate.vertices)
        values.push_back(2 * p.x + 3 * p.y + 50);
    const CoatProbe probe(plate.vertices, plate.indices);
    for (const Posd& place : {Posd(0, 0, 0), Posd(1.3, -2.2, 0.1), Posd(-5, 5, 0), Posd(4.9, 4.8, -0.2)}) {
        const auto found = probe.at(place, {0, 0, 1}, 1);
        ASSERT_TRUE(found);
        EXPECT_NEAR(found->valueOf(values), 2 * place.x + 3 * place.y + 50, 1e-5);
        EXPECT_NEAR(found->distance, std::abs(place.z), 1e-6);
    }
    // Beside the plate: its border.
    EXPECT_NEAR(probe.at({7, 0, 0}, {0, 0, 1}, 3)->valueOf(values), 60, 1e-5);
    EXPECT_FALSE(probe.at({7, 0, 0}, {0, 0, 1}, 1));
    EXPECT_FALSE(probe.at({0, 0, 0}, {0, 0, -1}, 1)) << "nothing faces that way";
    EXPECT_FALSE(probe.at({std::nan(""), 0, 0}, {0, 0, 1}, 1));
}

TEST(CoatProbe, OfAThinSheetReadsTheSideThatIsAskedFor)
{
    test::Plate plate(10, 5);
    const std::size_t count = plate.vertices.size(), indices = plate.indices.size();
    std::vector<float> values(count, 1.0f);
    for (std::size_t i = 0; i < count; ++i) {
        const Posf p = plate.vertices[i];
        plate.vertices.emplace_back(p.x, p.y, -0.1f);
        values.push_back(2.0f);
    }
    for (std::size_t i = 0; i < indices; i += 3)
        for (const std::size_t k : {0, 2, 1})
            plate.indices.push_back(plate.indices[i + k] + static_cast<unsigned>(count));
    const CoatProbe probe(plate.vertices, plate.indices);

    EXPECT_NEAR(probe.at({0.5, 0.2, -0.09}, {0, 0, 1}, 1)->valueOf(values), 1, 1e-6);
    EXPECT_NEAR(probe.at({0.5, 0.2, -0.01}, {0, 0, -1}, 1)->valueOf(values), 2, 1e-6);
}

TEST(CoatProbe, OfNothingOrRubbishFindsNothing)
{
    EXPECT_FALSE(CoatProbe({}, {}).at({0, 0, 0}, {0, 0, 1}, 10));
    const std::vector<Posf> vertices{{0, 0, 0}, {1, 0, 0}, {std::nanf(""), 1, 0}};
    const std::vector<unsigned> indices{0, 1, 2, 0, 1, 77, 0, 1, 1, 0};
    EXPECT_FALSE(CoatProbe(vertices, indices).at({0, 0, 0}, {0, 0, 1}, 10));
}

TEST(CoatProbe, FindsWhatALoopOverAllTrianglesFinds)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> number(-10, 10);
    std::vector<Posf> vertices;
    std::vector<unsigned> indices;
    for (unsigned i = 0; i < 2000; ++i) {
        const Posf at(number(random), number(random), number(random));
        for (int k = 0; k < 3; ++k) {
            vertices.emplace_back(at.x + 0.1f * number(random), at.y + 0.1f * number(random), at.z);
            indices.push_back(3 * i + static_cast<unsigned>(k));
        }
    }
    const CoatProbe probe(vertices, indices);
    for (int i = 0; i < 200; ++i) {
        const Posd place(number(random), number(random), number(random));
        const auto found = probe.at(place, {0, 0, 1}, 100);
        double nearest = 1e9;
        for (std::size_t t = 0; t < indices.size(); t += 3) { // one by one
            const CoatProbe single(vertices, std::span(indices).subspan(t, 3));
            if (const auto one = single.at(place, {0, 0, 1}, 100))
                nearest = std::min(nearest, one->distance);
        }
        ASSERT_TRUE(found);
        ASSERT_DOUBLE_EQ(found->distance, nearest);
    }
}

} // namespace
} // namespace vrk::process
