#include "OgreMeshes.h"
#include "mesh/MeshManager.h"
#include "platform/common/Logger.h"
#include "platform/layout/Body.h"
#include "support/SceneFixture.h"
#include "visual/SolidVisual.h"

#include <Standard_OutOfRange.hxx>

namespace vrk::visual {
namespace {

using rob::Colorf;
using test::meshedBox;
using test::verticesOf;

const Colorf grey(128.0f / 255, 128.0f / 255, 128.0f / 255);
const Colorf red(1, 0, 0);
const Colorf blue(0, 0, 1);

/// A grey box, a body of the model; each of its six faces has four vertices.
class FaceColors : public test::SceneFixture {
protected:
    FaceColors() : body(test::addModelBody(meshedBox(1, 2, 3), "face_colours", "#808080")), solid(build(*body)) {}

    /// The mesh without the second face outlives its solid, and would bring its colours into the next test.
    ~FaceColors() override
    {
        if (const Ogre::MeshPtr variant = test::ogreMesh("face_colours_2"))
            Ogre::MeshManager::getSingleton().remove(variant);
    }

    SolidVisual* build(layout::Body& of)
    {
        SolidVisual::Build(world, &of, of.getShape());
        return static_cast<SolidVisual*>(Scene::GetVisual(of.getId()));
    }

    /// The colour of each vertex in the buffer.
    std::vector<Colorf> colors() const
    {
        const std::vector<float> floats = verticesOf(solid->getCurrentMeshName());
        std::vector<Colorf> result;
        for (std::size_t i = 0; i < floats.size(); i += 9)
            result.emplace_back(floats[i + 6], floats[i + 7], floats[i + 8]);
        return result;
    }
    /// All vertices grey but those of the runs of four that start at the given places.
    static std::vector<Colorf> greyBut(std::size_t vertices, std::initializer_list<std::pair<std::size_t, Colorf>> runs)
    {
        std::vector<Colorf> result(vertices, grey);
        for (const auto& [start, color] : runs)
            std::fill_n(result.begin() + static_cast<std::ptrdiff_t>(start), 4, color);
        return result;
    }

    std::shared_ptr<layout::Body> body;
    SolidVisual* solid;
};

} // namespace

TEST_F(FaceColors, SetFaceColorWritesTheRunOfTheFaceAndNothingElse)
{
    const std::vector<float> before = verticesOf("face_colours");

    MeshManager::SetFaceColor(solid, 3, red);

    EXPECT_EQ(colors(), greyBut(24, {{8, red}}));
    const std::vector<float> after = verticesOf("face_colours");
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (i % 9 < 6) { // positions and normals
            ASSERT_EQ(after[i], before[i]) << i;
        }
    }
}

TEST_F(FaceColors, ColoursOfAShapeThatTheMeshIsNotOfAreToldAndNotWritten)
{
    // A model that does not keep its shapes apart, behind the back of the one here.
    auto* small = new Mesh("face_colours_small");
    small->vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    small->normals.assign(3, rob::Vec3f(0, 0, 1));
    small->colors.assign(3, grey);
    small->indices = {0, 1, 2};
    MeshManager::Get()->addMesh(small);
    body->getElement()->touch("geometry/uri")->set(std::string("face_colours_small"));
    SolidVisual* wrong = build(*body);
    ASSERT_EQ(wrong->getMeshName(), "face_colours_small");
    const std::vector<float> before = verticesOf("face_colours_small");
    std::vector<std::string> warnings;
    AppLogger::inst()->setListener([&](LogLevel, const std::string& text) { warnings.push_back(text); });

    EXPECT_NO_THROW(MeshManager::SetFaceColor(wrong, 6, red));
    EXPECT_NO_THROW(MeshManager::ColorReset(wrong));

    AppLogger::inst()->setListener({});
    EXPECT_EQ(verticesOf("face_colours_small"), before);
    EXPECT_THAT(warnings, testing::ElementsAre(testing::HasSubstr("has 3 vertices, and colours were given for 24"),
                                               testing::HasSubstr("has 3 vertices, and colours were given for 24")));
    scene.deleteVisual(wrong);
    MeshManager::Get()->deleteMesh(small);
}

TEST_F(FaceColors, FirstAndLastFaceAreReached)
{
    MeshManager::SetFaceColor(solid, 1, red);
    MeshManager::SetFaceColor(solid, 6, blue);

    EXPECT_EQ(colors(), greyBut(24, {{0, red}, {20, blue}}));
}

TEST_F(FaceColors, HiddenFaceIsNotColoured)
{
    solid->setFaceVisible(2, false);

    MeshManager::SetFaceColor(solid, 2, red);

    EXPECT_EQ(colors(), greyBut(20, {}));
}

TEST_F(FaceColors, FaceZeroWritesNothing)
{
    MeshManager::SetFaceColor(solid, 0, red);

    EXPECT_EQ(colors(), greyBut(24, {}));
}

TEST_F(FaceColors, FacePastTheLastOneIsRefused)
{
    EXPECT_THROW(MeshManager::SetFaceColor(solid, 7, red), Standard_OutOfRange);

    EXPECT_EQ(colors(), greyBut(24, {}));
}

TEST_F(FaceColors, RunBehindAHiddenFaceStartsWhereTheFaceBeforeItEnds)
{
    solid->setFaceVisible(2, false);

    MeshManager::SetFaceColor(solid, 3, red);

    EXPECT_EQ(colors(), greyBut(20, {{4, red}}));
}

TEST_F(FaceColors, SetColorReachesEverySolidOfTheName)
{
    const auto other = test::addModelBody(body->getShape(), "face_colours");
    build(*other);

    MeshManager::SetColor("face_colours", blue);

    EXPECT_EQ(colors(), std::vector<Colorf>(24, blue));
    EXPECT_EQ(MeshManager::GetFaceColor("face_colours", other->getShape(), 4), blue);
}

TEST_F(FaceColors, GetFaceColorReadsTheFirstVertexOfTheFaceFromTheBuffer)
{
    MeshManager::SetFaceColor(solid, 5, red);

    EXPECT_EQ(MeshManager::GetFaceColor("face_colours", body->getShape(), 5), red);
    EXPECT_EQ(MeshManager::GetFaceColor("face_colours", body->getShape(), 4), grey);
    EXPECT_EQ(MeshManager::GetFaceColor("face_colours", body->getShape(), 6), grey);
}

TEST_F(FaceColors, GetFaceColorCountsHiddenFacesToo)
{
    solid->setFaceVisible(2, false);
    MeshManager::SetFaceColor(solid, 4, red);

    EXPECT_EQ(MeshManager::GetFaceColor("face_colours_2", body->getShape(), 3), red);
    EXPECT_EQ(MeshManager::GetFaceColor("face_colours_2", body->getShape(), 6), Colorf()); // past the last vertex
}

TEST_F(FaceColors, ColorResetBringsTheModelsColoursBack)
{
    body->setFaceColor(2, "#0000FF");
    MeshManager::SetColor("face_colours", red);

    MeshManager::ColorReset(solid);

    EXPECT_EQ(colors(), greyBut(24, {{4, blue}}));
}

TEST_F(FaceColors, ColorResetOverwritesASelectedFaceThatStaysSelected)
{
    scene.selectBaseFace(body->getId(), 2);
    drain();
    ASSERT_NE(colors(), greyBut(24, {}));

    MeshManager::ColorReset(solid);

    EXPECT_EQ(colors(), greyBut(24, {}));
    EXPECT_TRUE(scene.faceIsSelected(solid, 2));
    scene.clearSelectedFaces();
}

TEST_F(FaceColors, ColorResetPassesOverHiddenFaces)
{
    body->setFaceColor(3, "#0000FF");
    solid->setFaceVisible(2, false);
    MeshManager::SetColor("face_colours_2", red);

    MeshManager::ColorReset(solid);

    EXPECT_EQ(colors(), greyBut(20, {{4, blue}}));
}

TEST_F(FaceColors, SolidWhoseLastFaceIsHiddenIgnoresColours)
{
    for (unsigned face = 1; face <= 5; ++face)
        solid->setFaceVisible(face, false);
    EXPECT_THROW(solid->setFaceVisible(6, false), NoTriangleMesh);

    MeshManager::SetFaceColor(solid, 1, red);
    MeshManager::SetColor(solid->getCurrentMeshName(), red);
    MeshManager::ColorReset(solid);

    EXPECT_EQ(MeshManager::GetFaceColor(solid->getCurrentMeshName(), body->getShape(), 1), Colorf());
    solid->setFaceVisible(1, true);
    EXPECT_EQ(colors(), greyBut(4, {}));
}

TEST_F(FaceColors, MeshWithoutColoursIgnoresThem)
{
    MeshManager::SetColor("joint_arrow_head", red);

    EXPECT_EQ(MeshManager::GetFaceColor("joint_arrow_head", body->getShape(), 1), Colorf());
}

} // namespace vrk::visual
