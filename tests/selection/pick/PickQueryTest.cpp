#include "PickFixture.h"

#include <limits>
#include <thread>

/// What a pick answers, and why.
namespace vrk::selection {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using testing::StrEq;
using testing::ThrowsMessage;

const double nan = std::numeric_limits<double>::quiet_NaN();

class PickQueryTest : public PickFixture {
protected:
    const PickView front;
};

TEST_F(PickQueryTest, FaceUnderThePixelIsChosenAndWhatLiesBehindIsTold)
{
    addBox(100, {0, 0, 0});
    addBox(100, {0, 150, 0});

    const PickAnswer answer = all(queryAt(front, {10, -50, 7}));

    // The faces of a box in the order of their numbers: x, x, y, y, z, z.
    EXPECT_THAT(told(answer),
                ElementsAre("face 3: chosen", "body: possible", "face 4: behind by 100 mm", "face 3: behind by 150 mm",
                            "body: behind by 150 mm", "face 4: behind by 250 mm"));
    ASSERT_NE(answer.chosen(), nullptr);
    expectNear(answer.chosen()->place, {10, -50, 7}, 1e-9);
    EXPECT_EQ(answer.chosen()->pixels, 0);
}

TEST_F(PickQueryTest, VertexComesBeforeEdgeAndEdgeBeforeFace)
{
    addBox(100, {0, 0, 0});

    EXPECT_EQ(best(queryAt(front, {49, -50, 49}))->kind, PickKind::Vertex);
    EXPECT_EQ(best(queryAt(front, {49, -50, 0}))->kind, PickKind::Edge);
    EXPECT_EQ(best(queryAt(front, {0, -50, 0}))->kind, PickKind::Face);
}

TEST_F(PickQueryTest, PrioritiesDecideWhichKindComesFirst)
{
    addBox(100, {0, 0, 0});
    PickQuery query = queryAt(front, {49, -50, 49});

    query.priorities[static_cast<unsigned>(PickKind::Body)] = -1;
    EXPECT_EQ(best(query)->kind, PickKind::Body);
    query.priorities[static_cast<unsigned>(PickKind::Edge)] = -2;
    EXPECT_EQ(best(query)->kind, PickKind::Edge);
}

TEST_F(PickQueryTest, KindsThatAreNotWantedAreToldAndNotChosen)
{
    addBox(100, {0, 0, 0});
    addLine({{-20, -60, 0}, {20, -60, 0}});
    PickQuery query = queryAt(front, {0, -60, 0});

    query.kinds = {PickKind::Face};
    EXPECT_THAT(told(all(query)),
                ElementsAre("face 3: chosen", "line 0: not a face", "body: not a face", "face 4: behind by 100 mm"));
    query.kinds = {PickKind::Vertex, PickKind::Edge, PickKind::CloudPoint};
    EXPECT_EQ(all(query).candidates[0].reason, "not a vertex, an edge or a cloud point");
    EXPECT_EQ(all(query).chosen(), nullptr);
    query.kinds = {};
    EXPECT_EQ(all(query).candidates[0].reason, "no kind is wanted");
}

TEST_F(PickQueryTest, HiddenThingIsToldAndHidesNothing)
{
    visual::SolidVisual* near = addBox(100, {0, 0, 0});
    visual::SolidVisual* far = addBox(100, {0, 150, 0});
    visual::Visual* nearVisual = near;
    service.update();
    nearVisual->Visual::setVisible(false, false); // the picking service is not told
    service.enableObject(near);

    const PickAnswer answer = all(queryAt(front, {10, -50, 7}));

    EXPECT_EQ(answer.chosen()->visual, far);
    EXPECT_EQ(find(answer, PickKind::Face, near)->reason, "hidden");
    PickQuery faces = queryAt(front, {10, -50, 7});
    faces.kinds = {PickKind::Face};
    EXPECT_EQ(best(faces)->visual, far);
}

TEST_F(PickQueryTest, FilterRejectsWithItsOwnWordsAndWhatItRejectsHidesNothing)
{
    visual::SolidVisual* near = addBox(100, {0, 0, 0});
    visual::SolidVisual* far = addBox(100, {0, 150, 0});
    PickQuery query = queryAt(front, {10, -50, 7});
    query.filter = [near](const PickCandidate& c) { return c.visual == near ? std::string("locked") : std::string(); };

    const PickAnswer answer = all(query);

    EXPECT_EQ(answer.chosen()->visual, far);
    EXPECT_EQ(find(answer, PickKind::Face, near)->reason, "locked");
    EXPECT_EQ(find(answer, PickKind::Face, near)->verdict, PickVerdict::Rejected);
    EXPECT_EQ(best(query)->visual, far);
}

TEST_F(PickQueryTest, EdgeBehindABodyIsNotChosenUnlessSurfacesAreSeenThrough)
{
    addBox(100, {0, 0, 0});
    visual::CurveVisual* curve = addCurve({-30, 62, 0}, {30, 62, 0});
    PickQuery query = queryAt(front, {10, 62, 0});
    query.kinds = {PickKind::Curve};

    const PickAnswer answer = all(query);
    EXPECT_EQ(answer.chosen(), nullptr);
    const PickCandidate* behind = find(answer, PickKind::Curve, curve);
    ASSERT_NE(behind, nullptr);
    EXPECT_EQ(behind->verdict, PickVerdict::Behind);
    EXPECT_THAT(behind->reason, StartsWith("behind by 112 mm"));
    EXPECT_NEAR(behind->behindBy, 112, 0.1);
    query.seesThroughSurfaces = true;
    EXPECT_EQ(best(query)->visual, curve);
    EXPECT_EQ(all(query).chosen()->visual, curve);
}

TEST_F(PickQueryTest, UnitOfTheReasonsIsTheOneOfTheQuery)
{
    addBox(100, {0, 0, 0});
    PickQuery query = queryAt(front, {10, -50, 7});
    query.unit = "in";

    EXPECT_EQ(find(all(query), PickKind::Face)->reason, "chosen");
    EXPECT_EQ(all(query).candidates.back().reason, "behind by 100 in");
}

TEST_F(PickQueryTest, LineOnAFaceIsChosenAndOneThatIsSeenPastASilhouetteIsNot)
{
    addBox(100, {0, 0, 0});
    visual::LineVisual* onFace = addLine({{-20, -50, 5}, {20, -50, 5}});
    visual::LineVisual* farAway = addLine({{60, 500, -200}, {60, 500, 200}});
    PickQuery lines = queryAt(front, {0, -50, 5});
    lines.kinds = {PickKind::Line};

    EXPECT_EQ(best(lines)->visual, onFace);
    // At the right border of the face, where the line behind is seen within the radius past the body.
    PickQuery border = queryAt(front, {49.5, -50, 20});
    border.radius = 30;
    border.kinds = {PickKind::Line};
    const PickAnswer answer = all(border);
    ASSERT_NE(find(answer, PickKind::Line, farAway), nullptr);
    EXPECT_EQ(find(answer, PickKind::Line, farAway)->verdict, PickVerdict::Behind);
}

TEST_F(PickQueryTest, MeshWithPriorityComesFirstFromBehindABody)
{
    addBox(100, {0, 0, 0});
    visual::MeshVisual* handle = addMesh(wall(50, 200), true, true);
    PickQuery query = queryAt(front, {10, -50, 7});
    query.kinds = {PickKind::Body};

    EXPECT_EQ(best(query)->visual, handle);
    EXPECT_EQ(all(query).chosen()->visual, handle);
    EXPECT_TRUE(all(query).chosen()->isOnTop);
}

TEST_F(PickQueryTest, RadiusIsInThePixelsOfTheUserOnADenseScreen)
{
    visual::LineVisual* line = addLine({{0, 0, -50}, {0, 0, 50}});
    PickQuery query = queryBeside(front, {0, 0, 0}, 8);

    EXPECT_FALSE(best(query).has_value());
    query.camera.devicePixelRatio = 2;
    ASSERT_TRUE(best(query).has_value());
    EXPECT_EQ(best(query)->visual, line);
    EXPECT_NEAR(best(query)->pixels, 4, 1e-9);
}

TEST_F(PickQueryTest, FrontOfACloudIsChosenAndNotWhatShowsBetweenItsPoints)
{
    visual::PointCloudVisual* cloud = addCloud({{0.5f, 0, 0}, {0, 400, 0}, {300, 0, 0}});

    const PickAnswer answer = all(queryAt(front, {0, 0, 0}));

    ASSERT_EQ(answer.candidates.size(), 2u);
    EXPECT_EQ(answer.candidates[0].visual, cloud);
    EXPECT_EQ(answer.candidates[0].subId, 0);
    EXPECT_EQ(answer.candidates[1].verdict, PickVerdict::Behind);
    EXPECT_NEAR(answer.candidates[1].behindBy, 400, 1);
}

TEST_F(PickQueryTest, HiddenPointsOfACloudArePassedByAndHideNothing)
{
    visual::PointCloudVisual* cloud = addCloud({{0, 0, 0}, {2, 0, 0}, {0, 400, 0}});
    const PickQuery query = queryAt(front, {0, 0, 0});
    const auto toldWithout = [&](const std::vector<std::uint32_t>& hidden) {
        cloud->hidePoints(std::make_shared<const layout::PointSet>(hidden));
        return told(all(query));
    };

    EXPECT_THAT(toldWithout({0}), ElementsAre("cloud point 1: chosen", StartsWith("cloud point 2: behind by 400")));
    EXPECT_THAT(toldWithout({0, 1}), ElementsAre("cloud point 2: chosen"));
    EXPECT_EQ(best(query)->subId, 2);
    EXPECT_THAT(toldWithout({0, 1, 2}), IsEmpty());
    EXPECT_FALSE(best(query).has_value());
}

TEST_F(PickQueryTest, NoMorePointsOfACloudAreToldThanAskedFor)
{
    layout::PointCloud::Points points;
    for (int i = 0; i < 100; ++i)
        points.emplace_back(0.01f * static_cast<float>(i), 0.0f, 0.0f);
    addCloud(points);
    PickQuery query = queryAt(front, {0, 0, 0});
    query.pointsPerCloud = 7;

    const PickAnswer answer = all(query);

    ASSERT_EQ(answer.candidates.size(), 7u);
    for (std::size_t i = 0; i < 7; ++i)
        EXPECT_EQ(answer.candidates[i].subId, static_cast<std::int64_t>(i)); // nearest first
}

TEST_F(PickQueryTest, NothingUnderThePixelIsAnEmptyAnswer)
{
    addBox(100, {0, 0, 0});

    EXPECT_THAT(all(queryAt(front, {300, 0, 0})).candidates, IsEmpty());
    EXPECT_EQ(all(queryAt(front, {300, 0, 0})).chosen(), nullptr);
    EXPECT_FALSE(best(queryAt(front, {300, 0, 0})).has_value());
}

TEST_F(PickQueryTest, CandidateAsAResultIsWhatThePlainPickFills)
{
    addBox(100, {20, 0, 0});
    PickQuery query;
    query.camera = PickCamera::Main();
    query.x = 210;
    query.y = 140;
    query.kinds = {PickKind::Face};
    service.update();

    const Result expected = service.select(210, 140);
    const Result result = query.askBest(service)->toResult();

    ASSERT_TRUE(expected.hit);
    EXPECT_EQ(result.hit, expected.hit);
    EXPECT_EQ(result.visual, expected.visual);
    EXPECT_TRUE(result.face.IsEqual(expected.face));
    EXPECT_TRUE(result.shape.IsEqual(expected.shape));
    EXPECT_EQ(result.pose, expected.pose);
    EXPECT_NEAR(result.distance, expected.distance, 0.01);
    EXPECT_NEAR((result.position - expected.position).length(), 0, 0.01);
    EXPECT_NEAR((result.localPosition - expected.localPosition).length(), 0, 0.01);
}

TEST_F(PickQueryTest, EdgeAsAResultHasItsParameter)
{
    visual::CurveVisual* curve = addCurve({-30, 0, 0}, {30, 0, 0});

    const Result result = best(queryAt(front, {10, 0, 0}))->toResult();

    EXPECT_EQ(result.visual, curve);
    ASSERT_TRUE(result.getEdgeParam().has_value());
    EXPECT_NEAR(*result.getEdgeParam(), 40, 0.01);
}

TEST_F(PickQueryTest, QueryReadFromItsJsonGivesTheSameAnswer)
{
    addBox(100, {0, 0, 0});
    addCurve({-30, 62, 0}, {30, 62, 0});
    addCloud({{3, -60, 0}, {0, -55, 2}});
    PickQuery query = queryAt(front, {1.0 / 3, -50, 0.1});
    query.kinds.remove(PickKind::CloudPoint);
    query.priorities[2] = -7;
    query.radius = 12.3456789012345678;
    query.camera.devicePixelRatio = 1.25;
    query.pointsPerCloud = 1;
    query.unit = "\"Zoll\"";
    query.seesThroughSurfaces = true;

    const std::string text = toJson(query);
    const PickQuery again = pickQueryFromJson(text);

    EXPECT_EQ(toJson(again), text);
    EXPECT_EQ(again.camera, query.camera);
    EXPECT_EQ(again.kinds, query.kinds);
    EXPECT_EQ(again.priorities, query.priorities);
    EXPECT_EQ(toJson(all(again)), toJson(all(query)));
    EXPECT_THAT(toJson(all(query)), testing::HasSubstr("\"reason\": \"chosen\""));
}

TEST_F(PickQueryTest, JsonThatIsNoQueryIsRefused)
{
    const std::string good = toJson(queryAt(front, {0, 0, 0}));
    const auto changed = [&good](const std::string& what, const std::string& into) {
        std::string text = good;
        const std::size_t at = text.find(what);
        EXPECT_NE(at, std::string::npos) << what;
        return text.replace(at, what.size(), into);
    };
    struct Case {
        std::string text, message;
    };
    for (const Case& c :
         {Case{"{", "no JSON"}, Case{"3", "it is no object"}, Case{"{}", "it has no \"camera\""},
          Case{changed("\"radius\"", "\"radios\""), "it has no \"radius\""},
          Case{changed("\"x\":", "\"z\": 1, \"x\":"), "it has an unknown \"z\""},
          Case{changed("\"radius\": 5.0", "\"radius\": \"5\""), "\"radius\" is no number"},
          Case{changed("\"width\": 400", "\"width\": -1"), "\"width\" is no whole number from 0 on"},
          Case{changed("\"edge\"", "\"rim\""), "\"rim\" is no kind"},
          Case{changed("\"vertex\": 0", "\"vertex\": 0.5"), "the priority of \"vertex\" is no whole number"},
          Case{changed("\"mm\"", "1"), "\"unit\" is no text"},
          Case{changed("\"seesThroughSurfaces\": false", "\"seesThroughSurfaces\": 0"),
               "\"seesThroughSurfaces\" is neither true nor false"}})
        EXPECT_THAT([&] { pickQueryFromJson(c.text); },
                    ThrowsMessage<std::runtime_error>(StrEq("Bad pick query: " + c.message)));
}

TEST_F(PickQueryTest, BadInputIsRefused)
{
    addBox(100, {0, 0, 0});
    service.update();
    const PickQuery good = queryAt(front, {0, 0, 0});
    const auto expectRefused = [this](const PickQuery& query, const char* message) {
        EXPECT_THAT([&] { query.askAll(service); }, ThrowsMessage<std::invalid_argument>(StrEq(message)));
        EXPECT_THAT([&] { query.askBest(service); }, ThrowsMessage<std::invalid_argument>(StrEq(message)));
    };
    PickQuery query = good;
    query.x = nan;
    expectRefused(query, "The pixel of a pick is not finite");
    query = good;
    query.y = std::numeric_limits<double>::infinity();
    expectRefused(query, "The pixel of a pick is not finite");
    for (const double radius : {0.0, -1.0, nan}) {
        query = good;
        query.radius = radius;
        expectRefused(query, "The radius of a pick must be above 0 and finite");
        query = good;
        query.camera.devicePixelRatio = radius;
        expectRefused(query, "The pixel ratio of a pick must be above 0 and finite");
    }
    query = good;
    query.camera = PickCamera();
    expectRefused(query, "The camera of a pick has no pixels");
    query = good;
    query.camera.view[0] = nan;
    expectRefused(query, "The matrices of the camera of a pick cannot be inverted");
    query = good;
    query.camera.projection = {};
    expectRefused(query, "The matrices of the camera of a pick cannot be inverted");
}

TEST_F(PickQueryTest, ServiceThatIsNotUpToDateRefuses)
{
    addBox(100, {0, 0, 0});

    EXPECT_THAT(
        [&] {
            queryAt(front, {0, 0, 0}).askAll(service);
        },
        ThrowsMessage<std::logic_error>(StrEq("The picking service is not up to date")));
}

TEST_F(PickQueryTest, SeveralThreadsAskAtOnceAndGetTheSame)
{
    for (int i = 0; i < 20; ++i)
        addBox(40, {50.0f * static_cast<float>(i % 5 - 2), 60.0f * static_cast<float>(i / 5), 3});
    service.update();
    std::vector<std::vector<std::string>> answers(4);

    // Nobody has asked before, so that the edges are gathered by whoever comes first.
    std::vector<std::thread> threads;
    for (std::vector<std::string>& mine : answers)
        threads.emplace_back([&mine, this] {
            for (int x = 0; x < 40; ++x) {
                PickQuery query = queryAt(front, {5.0 * x - 100, 0, 3});
                mine.push_back(toJson(query.askAll(service)));
            }
        });
    for (std::thread& thread : threads)
        thread.join();

    for (const std::vector<std::string>& mine : answers)
        EXPECT_EQ(mine, answers[0]);
}

} // namespace
} // namespace vrk::selection
