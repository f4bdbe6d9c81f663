#include "support/SceneFixture.h"
#include "visual/SolidVisual.h"

#include <BRepBuilderAPI_MakeFace.hxx>
#include <Ogre.h>
#include <gp_Pln.hxx>

#include <cstdint>

namespace vrk::visual {
namespace {

using test::Picture;
using test::Pixel;

const test::View front{{0, -300, 0}, {0, 0, 0}, {0, 0, 1}};

/// What lies on a wall in the plane y = 0, or ahead of it, and is seen through.
class OverlayPicture : public test::RenderTest {
protected:
    OverlayPicture() : wall(SolidVisual::Build(world, test::meshedBox(400, 10, 400), "Mechanism"))
    {
        wall->setPosition(-200, 0, -200);
        bare = pixelAt(render(front), {0, 0, 0});
    }
    ~OverlayPicture() override
    {
        for (Ogre::ManualObject* object : objects)
            sceneManager->destroyManualObject(object);
    }

    /// A square about a point, its corners in the order of a strip; `mirrored` shows its back.
    void addSquare(const std::string& material, const Ogre::Vector4& colour, float half, const rob::Posf& at,
                   bool withNormals, bool mirrored = false)
    {
        Ogre::ManualObject* object = sceneManager->createManualObject();
        object->begin(material, Ogre::RenderOperation::OT_TRIANGLE_STRIP);
        for (const auto& [u, v] : {std::pair{-1, -1}, {1, -1}, {-1, 1}, {1, 1}}) {
            object->position((mirrored ? -half : half) * static_cast<float>(u) + at.x, at.y,
                             half * static_cast<float>(v) + at.z);
            if (withNormals)
                object->normal(0, mirrored ? 1.0f : -1.0f, 0);
        }
        object->end()->setCustomParameter(0, colour);
        (new Visual(world))->attachObject(object);
        objects.push_back(object);
    }

    SolidVisual* wall;
    Pixel bare; // the wall by itself

private:
    std::vector<Ogre::ManualObject*> objects;
};

const Ogre::Vector4 green(0.05f, 0.75f, 0.10f, 0.5f);
const Ogre::Vector4 red(0.90f, 0.05f, 0.05f, 0.5f);

bool isGreener(const Pixel& pixel, const Pixel& than)
{
    return pixel.g - pixel.r > than.g - than.r + 30;
}

bool isRedder(const Pixel& pixel, const Pixel& than)
{
    return pixel.r - pixel.g > than.r - than.g + 30;
}

TEST_F(OverlayPicture, PreviewedFaceIsSeenWholeOnItsBodyAndThroughIt)
{
    // The face lies in the wall's, in other triangles.
    const TopoDS_Shape face =
        test::meshed(BRepBuilderAPI_MakeFace(gp_Pln({0, 0, 0}, gp_Dir(0, -1, 0)), -71, 53, -67, 59).Shape());
    SolidVisual::Build(world, face, "PreviewFace");

    for (const test::View& view : {front, test::View{{500, -90, 300}, {0, 0, 0}, {0, 0, 1}}}) {
        const Picture picture = render(view);
        const Pixel beside = pixelAt(picture, {80, 0, 80});
        for (float x = -50; x <= 50; x += 10)
            for (float z = -50; z <= 50; z += 10)
                ASSERT_TRUE(isRedder(pixelAt(picture, {x, 0, z}), beside)) << x << ", " << z;
    }
    const Pixel overGrey = pixelAt(render(front), {0, 0, 0});
    wall->showMaterial("YASKAWA");
    const Pixel overBlue = pixelAt(render(front), {0, 0, 0});
    EXPECT_GT(overGrey.r, overBlue.r + 15) << "the wall shows through";
}

struct BandCase {
    const char* name;
    bool normals;
    float ahead; // of the wall
};

class SeenThrough : public OverlayPicture, public testing::WithParamInterface<BandCase> {};

TEST_P(SeenThrough, FromBothSidesInItsColourAndAlpha)
{
    const auto& [name, normals, ahead] = GetParam();
    addSquare(name, green, 40, {-60, -ahead, 0}, normals);
    addSquare(name, green, 40, {60, -ahead, 0}, normals, true);
    Ogre::Vector4 faint = green;
    faint.w = 0.15f;
    addSquare(name, faint, 20, {0, -ahead, 80}, normals);

    const Picture picture = render(front);

    for (const float x : {-60.0f, 60.0f}) {
        EXPECT_TRUE(isGreener(pixelAt(picture, {x, -ahead, 0}), bare)) << x;
        EXPECT_GT(pixelAt(picture, {x, -ahead, 0}).b, bare.b / 4) << "the wall shows through";
    }
    EXPECT_LT(difference(pixelAt(picture, {0, -ahead, 80}), bare),
              difference(pixelAt(picture, {-60, -ahead, 0}), bare) / 2);
}

INSTANTIATE_TEST_SUITE_P(Materials, SeenThrough,
                         testing::Values(BandCase{"VectorBand", true, 5}, BandCase{"SelectedBand", true, 5},
                                         BandCase{"TransparentHandle", false, 5}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OverlayPicture, SelectedPartOfABandIsSeenOnIt)
{
    addSquare("SelectedBand", red, 20, {0, -20, 0}, true);
    addSquare("VectorBand", green, 60, {0, -20, 0}, true);

    const Picture picture = render(front);

    const Pixel band = pixelAt(picture, {40, -20, 40});
    EXPECT_TRUE(isGreener(band, bare));
    for (float x = -15; x <= 15; x += 5)
        EXPECT_TRUE(isRedder(pixelAt(picture, {x, -20, x / 2}), band)) << x;
}

TEST_F(OverlayPicture, BothWallsOfAnEnvelopeAreSeen)
{
    for (const auto& [name, x] : {std::pair("WorkEnvelope", -60.0f), {"WorkEnvelope3D", 60.0f}}) {
        SCOPED_TRACE(name);
        const Pixel none = pixelAt(render(front), {x, -20, 0});
        addSquare(name, red, 40, {x, -20, 0}, true);
        const Pixel one = pixelAt(render(front), {x, -20, 0});
        addSquare(name, red, 40, {x, -40, 0}, true, true);
        const Pixel both = pixelAt(render(front), {x, -20, 0});

        EXPECT_GT(difference(one, none), 8) << "an eighth of it, where it is looked at straight";
        EXPECT_GT(difference(both, one), 8);
        EXPECT_LT(one.r, none.r) << "its colour is its own";
        EXPECT_GT(both.r, none.r / 2) << "thin glass: what it stands about is seen through both";
    }
}

/// Paint as it lies on a body: positions and normals in one buffer, colours of four floats in another.
class SprayPicture : public OverlayPicture {
protected:
    ~SprayPicture() override
    {
        if (entity)
            sceneManager->destroyEntity(entity);
        Ogre::MeshManager::getSingleton().remove("spray picture", "General");
    }
    /// A strip of 100 x 20 units on the wall, from the left to the right with these alphas.
    void addPaint(float left, float right)
    {
        const Ogre::MeshPtr mesh = Ogre::MeshManager::getSingleton().createManual("spray picture", "General");
        Ogre::SubMesh* part = mesh->createSubMesh();
        part->useSharedVertices = false;
        part->vertexData = OGRE_NEW Ogre::VertexData();
        Ogre::VertexData& data = *part->vertexData;
        data.vertexCount = 4;
        data.vertexDeclaration->addElement(0, 0, Ogre::VET_FLOAT3, Ogre::VES_POSITION);
        data.vertexDeclaration->addElement(0, 12, Ogre::VET_FLOAT3, Ogre::VES_NORMAL);
        data.vertexDeclaration->addElement(1, 0, Ogre::VET_FLOAT4, Ogre::VES_DIFFUSE);
        const float places[4][6] = {
            {-50, 0, -10, 0, -1, 0}, {50, 0, -10, 0, -1, 0}, {50, 0, 10, 0, -1, 0}, {-50, 0, 10, 0, -1, 0}};
        const float colours[4][4] = {{0.05f, 0.75f, 0.1f, left},
                                     {0.05f, 0.75f, 0.1f, right},
                                     {0.05f, 0.75f, 0.1f, right},
                                     {0.05f, 0.75f, 0.1f, left}};
        const std::uint32_t indices[] = {0, 1, 2, 0, 2, 3};
        auto& buffers = Ogre::HardwareBufferManager::getSingleton();
        const auto usage = Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY;
        const auto first = buffers.createVertexBuffer(sizeof(places[0]), 4, usage, false);
        first->writeData(0, sizeof(places), places, true);
        const auto second = buffers.createVertexBuffer(sizeof(colours[0]), 4, usage, false);
        second->writeData(0, sizeof(colours), colours, true);
        data.vertexBufferBinding->setBinding(0, first);
        data.vertexBufferBinding->setBinding(1, second);
        part->indexData->indexCount = 6;
        part->indexData->indexBuffer = buffers.createIndexBuffer(Ogre::HardwareIndexBuffer::IT_32BIT, 6, usage, false);
        part->indexData->indexBuffer->writeData(0, sizeof(indices), indices, true);
        mesh->_setBounds({-50, 0, -10, 50, 0, 10}, false);
        mesh->load();
        entity = sceneManager->createEntity("spray picture");
        entity->setMaterialName("Spray");
        (new Visual(world))->attachObject(entity);
    }

private:
    Ogre::Entity* entity = nullptr;
};

TEST_F(SprayPicture, PaintIsAsThickAsTheAlphaOfItsVertices)
{
    addPaint(0, 1);

    const Picture picture = render(front);

    EXPECT_TRUE(isNear(pixelAt(picture, {-48, 0, 0}), bare, 12));
    EXPECT_TRUE(isGreener(pixelAt(picture, {0, 0, 0}), bare));
    EXPECT_GT(pixelAt(picture, {0, 0, 0}).b, pixelAt(picture, {40, 0, 0}).b + 15);
    EXPECT_TRUE(isGreener(pixelAt(picture, {45, 0, 5}), pixelAt(picture, {0, 0, 0})));
}

TEST_F(SprayPicture, AlphaOf255IsFullAlpha)
{
    addPaint(0, 255);

    const Picture picture = render(front);

    // Held to 1 at the vertices: as the paint above, and not full from near the left end on.
    EXPECT_GT(pixelAt(picture, {-25, 0, 0}).b, pixelAt(picture, {40, 0, 0}).b + 30);
}

} // namespace
} // namespace vrk::visual
