#include "mesh/VertexUpload.h"

#include "scene/math/Vec.h"
#include "support/SceneFixture.h"

#include <Ogre.h>

#include <array>
#include <cstring>
#include <vector>

namespace vrk::visual {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr auto fixed = Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY;
constexpr auto changing = Ogre::HardwareBuffer::HBU_DYNAMIC_WRITE_ONLY;

class VertexUploadTest : public test::SceneFixture {
protected:
    /// All floats of the buffer of a source.
    std::vector<float> floatsOf(unsigned short source) const
    {
        std::vector<float> floats(data.vertexCount * data.vertexDeclaration->getVertexSize(source) / sizeof(float));
        const Ogre::HardwareBufferLockGuard lock(data.vertexBufferBinding->getBuffer(source),
                                                 Ogre::HardwareBuffer::HBL_READ_ONLY);
        std::memcpy(floats.data(), lock.pData, floats.size() * sizeof(float));
        return floats;
    }

    const std::vector<rob::Posf> positions{{1, 2, 3}, {4, 5, 6}};
    const std::vector<rob::Vec3f> normals{{0, 0, 1}, {0, 1, 0}};
    const std::vector<std::array<float, 4>> colors{{0.1f, 0.2f, 0.3f, 0.4f}, {0.5f, 0.6f, 0.7f, 0.8f}};
    Ogre::VertexData data;
};

TEST_F(VertexUploadTest, AttributesOfOneSourceLieVertexByVertex)
{
    const std::array attributes{VertexAttribute::Of(Ogre::VES_POSITION, positions),
                                VertexAttribute::Of(Ogre::VES_NORMAL, normals)};

    VertexUpload(data, 2).addSource(attributes, fixed);

    EXPECT_EQ(data.vertexCount, 2u);
    EXPECT_EQ(data.vertexBufferBinding->getBufferCount(), 1u);
    EXPECT_THAT(floatsOf(0), ElementsAre(1, 2, 3, 0, 0, 1, 4, 5, 6, 0, 1, 0));
}

TEST_F(VertexUploadTest, EachSourceHasABufferAndAUsageOfItsOwn)
{
    const std::array place{VertexAttribute::Of(Ogre::VES_POSITION, positions),
                           VertexAttribute::Of(Ogre::VES_NORMAL, normals)};
    const std::array paint{VertexAttribute::Of(Ogre::VES_DIFFUSE, colors)};

    VertexUpload upload(data, 2);
    upload.addSource(place, fixed);
    upload.addSource(paint, changing);

    const Ogre::VertexElement& color = *data.vertexDeclaration->findElementBySemantic(Ogre::VES_DIFFUSE);
    EXPECT_EQ(color.getSource(), 1);
    EXPECT_EQ(color.getOffset(), 0u);
    EXPECT_EQ(color.getType(), Ogre::VET_FLOAT4);
    EXPECT_EQ(data.vertexDeclaration->getVertexSize(0), 24u);
    EXPECT_EQ(data.vertexDeclaration->getVertexSize(1), 16u);
    EXPECT_EQ(data.vertexBufferBinding->getBuffer(0)->getUsage(), fixed);
    EXPECT_EQ(data.vertexBufferBinding->getBuffer(1)->getUsage(), changing);
    EXPECT_THAT(floatsOf(0), ElementsAre(1, 2, 3, 0, 0, 1, 4, 5, 6, 0, 1, 0));
    EXPECT_THAT(floatsOf(1), ElementsAreArray({0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.7f, 0.8f}));
}

TEST_F(VertexUploadTest, QuadruplesAndTriplesShareASource)
{
    const std::array attributes{VertexAttribute::Of(Ogre::VES_DIFFUSE, colors),
                                VertexAttribute::Of(Ogre::VES_POSITION, positions)};

    VertexUpload(data, 2).addSource(attributes, fixed);

    EXPECT_THAT(floatsOf(0),
                ElementsAreArray({0.1f, 0.2f, 0.3f, 0.4f, 1.f, 2.f, 3.f, 0.5f, 0.6f, 0.7f, 0.8f, 4.f, 5.f, 6.f}));
}

TEST_F(VertexUploadTest, NoVerticesHaveABufferThatNobodyReads)
{
    const std::vector<rob::Posf> none;
    const std::array attributes{VertexAttribute::Of(Ogre::VES_POSITION, none)};

    VertexUpload(data, 0).addSource(attributes, fixed);

    EXPECT_EQ(data.vertexCount, 0u);
    EXPECT_TRUE(data.vertexBufferBinding->isBufferBound(0));
}

} // namespace
} // namespace vrk::visual
