#include "mesh/ShapeTriangles.h"
#include "platform/common/Logger.h"
#include "support/ThrowsExactly.h"

#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Standard_ConstructionError.hxx>
#include <Standard_OutOfRange.hxx>
#include <Standard_TypeMismatch.hxx>
#include <TopExp.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Ax2.hxx>
#include <gp_Quaternion.hxx>

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <set>

namespace vrk::visual {
namespace {

using rob::Colorf;
using rob::Posf;
using rob::Vec3f;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

bool all(unsigned)
{
    return true;
}

FaceFilter without(unsigned hidden)
{
    return [hidden](unsigned face) { return face != hidden; };
}

/// A square of two triangles in the plane z = `z`, with normals along +z.
Handle(Poly_Triangulation) square(double z)
{
    Handle(Poly_Triangulation) triangulation = new Poly_Triangulation(4, 2, false, true);
    triangulation->SetNode(1, gp_Pnt(0, 0, z));
    triangulation->SetNode(2, gp_Pnt(1, 0, z));
    triangulation->SetNode(3, gp_Pnt(1, 1, z));
    triangulation->SetNode(4, gp_Pnt(0, 1, z));
    for (int i = 1; i <= 4; ++i)
        triangulation->SetNormal(i, gp_Dir(0, 0, 1));
    triangulation->SetTriangle(1, Poly_Triangle(1, 2, 3));
    triangulation->SetTriangle(2, Poly_Triangle(1, 3, 4));
    return triangulation;
}

TopoDS_Face faceOf(const Handle(Poly_Triangulation) & triangulation)
{
    TopoDS_Face face;
    BRep_Builder builder;
    if (triangulation.IsNull())
        builder.MakeFace(face);
    else
        builder.MakeFace(face, triangulation);
    return face;
}

layout::FaceMap mapOf(std::initializer_list<TopoDS_Shape> shapes)
{
    layout::FaceMap map;
    for (const TopoDS_Shape& shape : shapes)
        map.Add(shape);
    return map;
}

layout::FaceMap facesOf(const TopoDS_Shape& shape)
{
    layout::FaceMap map;
    TopExp::MapShapes(shape, TopAbs_FACE, map);
    return map;
}

std::unique_ptr<Mesh> meshOf(const layout::FaceMap& faces, const FaceFilter& isVisible = all,
                             const ColorInfo* colors = nullptr)
{
    return makeShapeMesh("mesh", faces, isVisible, colors, "part");
}

/// Notes the warnings of the application's logger while it lives.
class WarningLog {
public:
    WarningLog()
    {
        AppLogger::inst()->setListener([this](LogLevel level, const std::string& text) {
            if (level == LogLevel::Warn)
                texts.push_back(text);
        });
    }
    ~WarningLog() { AppLogger::inst()->setListener({}); }

    std::vector<std::string> texts;
};

/// The text of the Open CASCADE failure that `call` ends with; none if it ends well.
template <typename Failure, typename Call>
std::string failureOf(Call call)
{
    try {
        call();
    } catch (const Failure& failure) {
        return failure.GetMessageString();
    }
    return "no failure";
}

} // namespace

TEST(ShapeMesh, FacesFollowEachOtherWithVerticesOfTheirOwn)
{
    const auto mesh = meshOf(mapOf({faceOf(square(0)), faceOf(square(5))}));

    ASSERT_NE(mesh, nullptr);
    EXPECT_EQ(mesh->name, "mesh");
    EXPECT_THAT(mesh->vertices, ElementsAre(Posf(0, 0, 0), Posf(1, 0, 0), Posf(1, 1, 0), Posf(0, 1, 0), Posf(0, 0, 5),
                                            Posf(1, 0, 5), Posf(1, 1, 5), Posf(0, 1, 5)));
    EXPECT_THAT(mesh->normals, Each(Vec3f(0, 0, 1)));
    EXPECT_THAT(mesh->indices, ElementsAre(0, 1, 2, 0, 2, 3, 4, 5, 6, 4, 6, 7));
    EXPECT_THAT(mesh->colors, IsEmpty());
}

TEST(ShapeMesh, ReversedFaceKeepsItsOutwardLook)
{
    const auto mesh = meshOf(mapOf({faceOf(square(0)).Reversed()}));

    EXPECT_THAT(mesh->normals, Each(Vec3f(0, 0, -1)));
    EXPECT_THAT(mesh->indices, ElementsAre(1, 0, 2, 2, 0, 3));
}

struct OrientationCase {
    const char* name;
    TopAbs_Orientation orientation;
};
class OddOrientation : public testing::TestWithParam<OrientationCase> {};

TEST_P(OddOrientation, TurnsTheWindingButNotTheNormals)
{
    const auto mesh = meshOf(mapOf({faceOf(square(0)).Oriented(GetParam().orientation)}));

    EXPECT_THAT(mesh->normals, Each(Vec3f(0, 0, 1)));
    EXPECT_THAT(mesh->indices, ElementsAre(1, 0, 2, 2, 0, 3));
}

INSTANTIATE_TEST_SUITE_P(Table, OddOrientation,
                         testing::Values(OrientationCase{"Internal", TopAbs_INTERNAL},
                                         OrientationCase{"External", TopAbs_EXTERNAL}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(ShapeMesh, LocationMovesNodesAndTurnsNormalsInDoubles)
{
    // So far away that a float would lose the square if it were narrowed first.
    gp_Trsf turn, back;
    turn.SetTransformation(gp_Quaternion(gp_Vec(0, 1, 0), std::numbers::pi / 2), gp_Vec(0, 0, 0));
    back.SetTranslation(gp_Vec(-1e9, 0, 0));
    const Handle(Poly_Triangulation) triangulation = square(0);
    for (int i = 1; i <= 4; ++i)
        triangulation->SetNode(i, triangulation->Node(i).Translated(gp_Vec(0, 0, 1e9)));

    const auto mesh = meshOf(mapOf({faceOf(triangulation).Located(TopLoc_Location(back * turn))}));

    EXPECT_NEAR(mesh->vertices[2].x, 0, 1e-5f);
    EXPECT_NEAR(mesh->vertices[2].y, 1, 1e-5f);
    EXPECT_NEAR(mesh->vertices[2].z, -1, 1e-5f);
    EXPECT_NEAR(mesh->normals[2].x, 1, 1e-6f);
    EXPECT_NEAR(mesh->normals[2].z, 0, 1e-6f);
}

TEST(ShapeMesh, MirroringLocationMirrorsTheNormalsToo)
{
    gp_Trsf mirror;
    mirror.SetMirror(gp_Ax2(gp_Pnt(0, 0, 0), gp_Dir(0, 0, 1)));

    const auto mesh = meshOf(mapOf({faceOf(square(5)).Located(TopLoc_Location(mirror), false)}));

    EXPECT_EQ(mesh->vertices[2], Posf(1, 1, -5));
    EXPECT_EQ(mesh->normals[2], Vec3f(0, 0, -1));
}

TEST(ShapeMesh, NodesStoredAsFloatsReadLikeDoubles)
{
    const Handle(Poly_Triangulation) floats = new Poly_Triangulation();
    floats->SetDoublePrecision(false);
    floats->ResizeNodes(4, false);
    floats->ResizeTriangles(2, false);
    floats->AddNormals();
    const Handle(Poly_Triangulation) doubles = square(2);
    for (int i = 1; i <= 4; ++i) {
        floats->SetNode(i, doubles->Node(i));
        floats->SetNormal(i, doubles->Normal(i));
    }
    for (int i = 1; i <= 2; ++i)
        floats->SetTriangle(i, doubles->Triangle(i));
    ASSERT_FALSE(floats->IsDoublePrecision());
    gp_Trsf moved;
    moved.SetTranslation(gp_Vec(1, 2, 3));

    const auto mesh = meshOf(mapOf({faceOf(floats), faceOf(floats).Located(TopLoc_Location(moved))}));
    const auto expected = meshOf(mapOf({faceOf(doubles), faceOf(doubles).Located(TopLoc_Location(moved))}));

    EXPECT_EQ(mesh->vertices, expected->vertices);
    EXPECT_EQ(mesh->normals, expected->normals);
    EXPECT_EQ(mesh->indices, expected->indices);
}

TEST(ShapeMesh, NodesThatAreNeitherFloatsNorDoublesAreRefused)
{
    const Handle(Poly_Triangulation) triangulation = square(0);
    NCollection_AliasedArray<> other(16, 4);
    static_cast<NCollection_AliasedArray<>&>(triangulation->InternalNodes()).Move(other);

    EXPECT_EQ(failureOf<Standard_TypeMismatch>([&] { meshOf(mapOf({faceOf(triangulation)})); }),
              "NCollection_AliasedArray::Value(), wrong type");
}

TEST(ShapeMesh, NodeOfNanStaysAtTheOriginAndLosesItsTriangles)
{
    WarningLog log;
    const Handle(Poly_Triangulation) broken = square(0);
    broken->SetNode(2, gp_Pnt(1, nan, 7));

    const auto mesh = meshOf(mapOf({faceOf(broken), faceOf(square(5))}));

    EXPECT_EQ(mesh->vertices.size(), 8u); // so that the runs of the faces stay where they are
    EXPECT_THAT(mesh->normals, ElementsAreArray(std::vector<Vec3f>(8, {0, 0, 1})));
    EXPECT_EQ(mesh->vertices[1], Posf());
    EXPECT_EQ(mesh->vertices[4], Posf(0, 0, 5));
    EXPECT_THAT(mesh->indices, ElementsAre(0, 2, 3, 4, 5, 6, 4, 6, 7));
    EXPECT_THAT(log.texts, ElementsAre("Face 1 of 'part' has 1 invalid (NaN/Inf) nodes, its triangles are dropped"));
}

TEST(ShapeMesh, NodeBeyondTheRangeOfFloatsIsInvalid)
{
    WarningLog log;
    const Handle(Poly_Triangulation) broken = square(0);
    broken->SetNode(3, gp_Pnt(1e39, 0, 0));

    EXPECT_EQ(meshOf(mapOf({faceOf(broken)})), nullptr); // both triangles touch it

    EXPECT_THAT(log.texts, ElementsAre("Face 1 of 'part' has 1 invalid (NaN/Inf) nodes, its triangles are dropped"));
}

TEST(ShapeMesh, BadCoordinateBecomesZeroByItselfWhereTrianglesAreKept)
{
    const Handle(Poly_Triangulation) broken = square(0);
    broken->SetNode(2, gp_Pnt(1, nan, 7));
    Mesh mesh("mesh");

    EXPECT_EQ(appendFace(mesh, faceOf(broken), nullptr, BadNodes::ZeroCoordinate), 1u);

    EXPECT_EQ(mesh.vertices[1], Posf(1, 0, 7));
    EXPECT_THAT(mesh.indices, ElementsAre(0, 1, 2, 0, 2, 3));
}

TEST(ShapeMesh, FaceWithoutTriangulationIsLeftOutWithAWarning)
{
    WarningLog log;

    const auto mesh = meshOf(mapOf({faceOf(nullptr), faceOf(square(5)), faceOf(nullptr)}));

    EXPECT_EQ(mesh->vertices.size(), 4u);
    EXPECT_THAT(log.texts, ElementsAre("Face 1 of 'part' has no triangulation, it is missing in rendering",
                                       "Face 3 of 'part' has no triangulation, it is missing in rendering"));
}

TEST(ShapeMesh, NothingUsableIsNoMeshAndNoWarning)
{
    WarningLog log;

    EXPECT_EQ(meshOf(mapOf({})), nullptr);
    EXPECT_EQ(meshOf(mapOf({faceOf(nullptr)})), nullptr);
    EXPECT_EQ(meshOf(mapOf({faceOf(square(0))}), without(1)), nullptr);
    EXPECT_EQ(meshOf(mapOf({faceOf(new Poly_Triangulation())})), nullptr);

    EXPECT_THAT(log.texts, IsEmpty());
}

TEST(ShapeMesh, TriangleOnTwoNodesIsNotUsable)
{
    Handle(Poly_Triangulation) line = new Poly_Triangulation(2, 1, false, true);
    line->SetNode(1, gp_Pnt(0, 0, 0));
    line->SetNode(2, gp_Pnt(1, 0, 0));
    line->SetNormal(1, gp_Dir(0, 0, 1));
    line->SetNormal(2, gp_Dir(0, 0, 1));
    line->SetTriangle(1, Poly_Triangle(1, 2, 1));

    EXPECT_EQ(meshOf(mapOf({faceOf(line)})), nullptr);
    EXPECT_NE(meshOf(mapOf({faceOf(line), faceOf(line).Located(TopLoc_Location(gp_Trsf()))})), nullptr);
}

TEST(ShapeMesh, HiddenFaceIsNotContained)
{
    const auto mesh = meshOf(mapOf({faceOf(square(0)), faceOf(square(5))}), without(1));

    EXPECT_EQ(mesh->vertices.size(), 4u);
    EXPECT_EQ(mesh->vertices[0].z, 5);
    EXPECT_THAT(mesh->indices, ElementsAre(0, 1, 2, 0, 2, 3));
}

TEST(ShapeMesh, EntryThatIsNoFaceIsRefused)
{
    const TopoDS_Shape vertex = BRepBuilderAPI_MakeVertex(gp_Pnt(0, 0, 0)).Shape();

    EXPECT_EQ(failureOf<Standard_TypeMismatch>([&] { meshOf(mapOf({vertex})); }), "TopoDS::Face");
    EXPECT_EQ(failureOf<Standard_TypeMismatch>([&] { runOfFace(mapOf({vertex}), all, 1); }), "TopoDS::Face");
}

TEST(ShapeMesh, HiddenEntryIsNotLookedAt)
{
    const TopoDS_Shape vertex = BRepBuilderAPI_MakeVertex(gp_Pnt(0, 0, 0)).Shape();

    EXPECT_EQ(meshOf(mapOf({faceOf(square(0)), vertex}), without(2))->vertices.size(), 4u);
}

TEST(ShapeMesh, NormalOfNoLengthIsRefused)
{
    const Handle(Poly_Triangulation) triangulation = square(0);
    triangulation->SetNormal(2, gp_Vec3f(0, 0, 0));

    EXPECT_EQ(failureOf<Standard_ConstructionError>([&] { meshOf(mapOf({faceOf(triangulation)})); }),
              "gp_Dir() - input vector has zero norm");
}

TEST(ShapeMesh, StoredNormalIsMadeUnitLength)
{
    const Handle(Poly_Triangulation) triangulation = square(0);
    triangulation->SetNormal(2, gp_Vec3f(0, 3, 4));

    EXPECT_EQ(meshOf(mapOf({faceOf(triangulation)}))->normals[1], Vec3f(0, 0.6f, 0.8f));
}

TEST(ShapeMesh, MissingNormalsAreComputedAndStay)
{
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(1, 2, 3).Shape();
    const BRepMesh_IncrementalMesh mesher(box, 0.5);
    const layout::FaceMap faces = facesOf(box);
    TopLoc_Location location;
    const Handle(Poly_Triangulation) triangulation = triangulationOf(faces(1), location);
    ASSERT_FALSE(triangulation->HasNormals());

    const auto mesh = meshOf(faces);

    EXPECT_TRUE(triangulation->HasNormals());
    EXPECT_EQ(mesh->vertices.size(), 24u);
    EXPECT_EQ(mesh->indices.size(), 36u);
}

TEST(ShapeMesh, TrianglesOfASolidFaceOutwardsLikeTheirNormals)
{
    gp_Trsf pose;
    pose.SetTransformation(gp_Quaternion(gp_Vec(1, 2, 3), 1.0), gp_Vec(5, 6, 7));
    const TopoDS_Shape cylinder = BRepPrimAPI_MakeCylinder(10, 30).Shape().Located(TopLoc_Location(pose));
    const BRepMesh_IncrementalMesh mesher(cylinder, 0.1);
    gp_Pnt middle(0, 0, 15);
    middle.Transform(pose);
    const Posf centre(static_cast<float>(middle.X()), static_cast<float>(middle.Y()), static_cast<float>(middle.Z()));

    const auto mesh = meshOf(facesOf(cylinder));

    for (std::size_t i = 0; i < mesh->indices.size(); i += 3) {
        const unsigned a = mesh->indices[i], b = mesh->indices[i + 1], c = mesh->indices[i + 2];
        const Vec3f normal = (mesh->vertices[b] - mesh->vertices[a]).cross(mesh->vertices[c] - mesh->vertices[a]);
        EXPECT_GT(normal.dot(mesh->vertices[a] - centre), 0);
        EXPECT_GT(normal.dot(mesh->normals[a]), 0);
    }
}

TEST(ShapeMesh, SecondRunGivesTheSame)
{
    const TopoDS_Shape cylinder = BRepPrimAPI_MakeCylinder(10, 30).Shape();
    const BRepMesh_IncrementalMesh mesher(cylinder, 0.1);
    const layout::FaceMap faces = facesOf(cylinder);

    const auto first = meshOf(faces); // computes the normals
    const auto second = meshOf(faces);

    EXPECT_EQ(first->vertices, second->vertices);
    EXPECT_EQ(first->normals, second->normals);
    EXPECT_EQ(first->indices, second->indices);
}

TEST(ShapeMesh, LargeFaceIsReadWhole) // more than one group of nodes and of triangles
{
    constexpr int strips = 3000;
    Handle(Poly_Triangulation) triangulation = new Poly_Triangulation(strips + 2, strips, false, true);
    for (int i = 1; i <= strips + 2; ++i) {
        triangulation->SetNode(i, gp_Pnt(i, i % 2, 0));
        triangulation->SetNormal(i, gp_Dir(0, 0, 1));
    }
    for (int i = 1; i <= strips; ++i)
        triangulation->SetTriangle(i, Poly_Triangle(i, i + 1, i + 2));

    const auto mesh = meshOf(mapOf({faceOf(triangulation)}));

    ASSERT_EQ(mesh->vertices.size(), strips + 2u);
    ASSERT_EQ(mesh->indices.size(), 3u * strips);
    for (unsigned i = 0; i < strips + 2; ++i)
        ASSERT_EQ(mesh->vertices[i], Posf(static_cast<float>(i + 1), static_cast<float>((i + 1) % 2), 0));
    for (unsigned i = 0; i < 3 * strips; ++i)
        ASSERT_EQ(mesh->indices[i], i / 3 + i % 3);
}

TEST(ShapeMesh, FaceHasItsOwnColourElseTheBodys)
{
    const ColorInfo colors{"#FF0000", {{2, "#0000FF"}}};

    const auto mesh = meshOf(mapOf({faceOf(square(0)), faceOf(square(5))}), all, &colors);

    ASSERT_EQ(mesh->colors.size(), 8u);
    EXPECT_EQ(mesh->colors[3], Colorf(1, 0, 0));
    EXPECT_EQ(mesh->colors[4], Colorf(0, 0, 1));
}

TEST(ShapeMesh, ColourTextThatIsNoNumberIsRefused)
{
    const ColorInfo body{"#GG0000", {}};
    const ColorInfo face{"#FF0000", {{1, "#FFZZ00"}}};
    const ColorInfo shortText{"#FF", {}};
    const ColorInfo noText{"#F", {}};
    const layout::FaceMap faces = mapOf({faceOf(square(0))});

    EXPECT_THAT([&] { meshOf(faces, all, &body); },
                test::throwsExactly<std::invalid_argument>("invalid stoi argument"));
    EXPECT_THAT([&] { meshOf(faces, all, &face); },
                test::throwsExactly<std::invalid_argument>("invalid stoi argument"));
    EXPECT_THAT([&] { meshOf(faces, all, &shortText); },
                test::throwsExactly<std::invalid_argument>("invalid stoi argument"));
    EXPECT_THROW(meshOf(faces, all, &noText), std::out_of_range);
}

TEST(ShapeMesh, ColourOfAFaceThatIsNotInTheMeshIsNotRead)
{
    const ColorInfo colors{"#FF0000", {{1, "nonsense"}}};

    EXPECT_NE(meshOf(mapOf({faceOf(square(0)), faceOf(square(5))}), without(1), &colors), nullptr);
    EXPECT_NE(meshOf(mapOf({faceOf(nullptr), faceOf(square(5))}), all, &colors), nullptr);
    EXPECT_EQ(vertexColors(mapOf({faceOf(nullptr), faceOf(square(5))}), all, colors).size(), 4u);
}

TEST(RunOfFace, StartsBehindTheVisibleFacesBefore)
{
    const layout::FaceMap faces = mapOf({faceOf(square(0)), faceOf(nullptr), faceOf(square(5)), faceOf(square(6))});

    const VertexRun third = runOfFace(faces, all, 3);
    const VertexRun fourth = runOfFace(faces, without(3), 4);

    EXPECT_EQ(third.start, 4u);
    EXPECT_EQ(third.count, 4u);
    EXPECT_EQ(fourth.start, 4u);
    EXPECT_EQ(fourth.count, 4u);
}

TEST(RunOfFace, HasNoVerticesForAHiddenFaceAFaceWithoutTriangulationAndFaceZero)
{
    const layout::FaceMap faces = mapOf({faceOf(square(0)), faceOf(nullptr)});

    EXPECT_EQ(runOfFace(faces, without(1), 1).count, 0u);
    EXPECT_EQ(runOfFace(faces, all, 2).count, 0u);
    EXPECT_EQ(runOfFace(faces, all, 0).count, 0u);
}

TEST(RunOfFace, IsRefusedPastTheLastFace)
{
    const layout::FaceMap faces = mapOf({faceOf(square(0))});

    EXPECT_EQ(failureOf<Standard_OutOfRange>([&] { runOfFace(faces, all, 2); }), "NCollection_IndexedMap::FindKey");
}

TEST(RunOfFace, HoldsTheVerticesOfTheFaceInTheMesh) // a property: all pairs of a hidden and an asked face of a box
{
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(1, 2, 3).Shape();
    const BRepMesh_IncrementalMesh mesher(box, 0.5);
    const layout::FaceMap faces = facesOf(box);
    for (unsigned hidden = 1; hidden <= 6; ++hidden) {
        ColorInfo colors{"#000000", {}};
        for (unsigned face = 1; face <= 6; ++face)
            colors.faceColors[face] = "#0000" + std::to_string(face + 10);
        const auto mesh = meshOf(faces, without(hidden), &colors);
        std::size_t covered = 0;
        for (unsigned face = 1; face <= 6; ++face) {
            const VertexRun run = runOfFace(faces, without(hidden), face);
            covered += run.count;
            for (std::size_t i = run.start; i < run.start + run.count; ++i)
                EXPECT_EQ(mesh->colors[i].b, static_cast<float>(face + 16) / 255) << hidden << " " << face;
        }
        EXPECT_EQ(covered, mesh->vertices.size());
    }
}

TEST(VertexColors, AreThoseThatTheMeshIsMadeWith)
{
    const ColorInfo colors{"#FF0000", {{1, "#00FF00"}, {3, "#0000FF"}}};
    const layout::FaceMap faces = mapOf({faceOf(square(0)), faceOf(nullptr), faceOf(square(5)), faceOf(square(6))});

    EXPECT_EQ(vertexColors(faces, all, colors), meshOf(faces, all, &colors)->colors);
    EXPECT_EQ(vertexColors(faces, without(1), colors), meshOf(faces, without(1), &colors)->colors);
}

} // namespace vrk::visual
