#pragma once

#include "ScanClouds.h"

#include "scene/core/OgreCompat.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "visual/PointCloudVisual.h"

#include <Ogre.h>

#include <cstring>

namespace vrk::visual {

using Points = layout::PointCloud::Points;
using Section = Ogre::ManualObject::ManualObjectSection;

inline const Points fivePoints{{0, 0, 0}, {1, 0, 5}, {2, 0, 0}, {3, 4, 0}, {4, 0, 10}};
inline const layout::PointCloud::Normals fiveNormals{{0, 0, 1}, {0, 1, 0}, {1, 0, 0}, {0, 0, 1}, {0, 0, -1}};

inline selection::VisualSelection& service()
{
    return *selection::VisualSelection::Get();
}

/// Clouds in a scene, and what of them lies in buffers.
class CloudVisualFixture : public test::SceneFixture {
protected:
    PointCloudVisual* build(Points points, layout::PointCloud::Normals normals = {})
    {
        const auto node = test::addModelCloud(std::move(points), std::move(normals));
        return static_cast<PointCloudVisual*>(PointCloudVisual::Build(world, node.get()));
    }
    PointCloudVisual* buildColored(bool withNormals)
    {
        const auto node = test::addModelCloud(fivePoints, withNormals ? fiveNormals : layout::PointCloud::Normals(),
                                              layout::PointCloud::Colors(fivePoints.size(), PointColor{200, 20, 20}));
        return static_cast<PointCloudVisual*>(PointCloudVisual::Build(world, node.get()));
    }
    static Ogre::ManualObject& objectOf(const Visual& cloud)
    {
        return dynamic_cast<Ogre::ManualObject&>(*cloud.getSceneNode()->getAttachedObject(0));
    }
    static std::vector<std::string> materialsOf(const Visual& cloud)
    {
        std::vector<std::string> names;
        for (const Section* section : objectOf(cloud).getSections())
            names.push_back(section->getMaterialName());
        return names;
    }
    /// What lies in the buffer of a section for each vertex.
    template <typename Value>
    static std::vector<Value> valuesOf(Section& section, Ogre::VertexElementSemantic semantic)
    {
        const Ogre::VertexData& data = *section.getRenderOperation()->vertexData;
        const Ogre::VertexElement& element = *data.vertexDeclaration->findElementBySemantic(semantic);
        const Ogre::HardwareVertexBufferSharedPtr buffer = data.vertexBufferBinding->getBuffer(element.getSource());
        const Ogre::HardwareBufferLockGuard lock(buffer, Ogre::HardwareBuffer::HBL_READ_ONLY);
        std::vector<Value> values(data.vertexCount);
        for (std::size_t i = 0; i < values.size(); ++i)
            std::memcpy(&values[i],
                        static_cast<const char*>(lock.pData) + i * buffer->getVertexSize() + element.getOffset(),
                        sizeof values[i]);
        return values;
    }
    static Points drawnBy(Section& section) { return valuesOf<rob::Posf>(section, Ogre::VES_POSITION); }
    static layout::PointCloud::Normals normalsOf(Section& section)
    {
        return valuesOf<rob::Vec3f>(section, Ogre::VES_NORMAL);
    }
    static Points drawnBy(const Visual& cloud, std::size_t section)
    {
        return drawnBy(*objectOf(cloud).getSections().at(section));
    }
};

} // namespace vrk::visual
