#pragma once

#include "scene/Scene.h"
#include "scene/core/SceneSettings.h"
#include "scene/math/Pose.h"
#include "support/Picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <TopoDS_Shape.hxx>

#include <vector>

namespace Ogre {
class SceneManager;
}

namespace vrk::layout {
class Body;
}

namespace vrk::visual {
class FrameVisual;
}

namespace vrk::test {

/// The settings of a test scene: z up, everything of robot programs drawn.
visual::SceneSettings testSettings();

/// Starts the library once a process, under one window. Each test begins and ends with an empty scene, in which grid,
/// corner axes and the frame of the world are hidden, and an empty model.
class SceneFixture : public testing::Test {
protected:
    SceneFixture();
    ~SceneFixture() override;

    /// Runs what was posted.
    void drain() { scene.processMsgs(); }
    /// The visual of the grid, which the scene keeps through all tests.
    visual::Visual* gridVisual() const;
    /// What hangs on the world beside what start-up put there.
    std::vector<visual::Visual*> addedToWorld() const;
    void showGrid(bool show);
    void showCornerAxes(bool show);

    visual::Scene& scene;
    Ogre::SceneManager* sceneManager;
    visual::Visual* world;
    visual::FrameVisual* worldFrame; ///< stays through all tests
};

/// Where the camera of a test picture stands.
struct View {
    rob::PosTemplate<float> eye;
    rob::PosTemplate<float> target;
    rob::DirTemplate<float> up{0, 0, 1};
};

/// From in front, above and to the right, at this distance from the origin.
View lookingAtOrigin(float distance);

/// A scene that is looked at: pictures of 400 x 300 pixels, unless another size is set.
class RenderTest : public SceneFixture {
protected:
    RenderTest();
    ~RenderTest() override;

    /// Runs what was posted, draws one frame and reads it back.
    Picture render(const View& view);
    /// The pixel of the last picture where a point of the world lies.
    Pixel pixelAt(const Picture& picture, const rob::PosTemplate<float>& point) const;
    /// @param samples  of each pixel, as a viewer smooths its edges.
    void setSize(unsigned width, unsigned height, unsigned samples = 0);

private:
    std::unique_ptr<class OffscreenHolder> holder;
};

/// Whether it belongs to a handle that hangs nowhere, as those of start-up do in a test that uses none of them.
bool isPartOfHandle(const visual::Visual* visual);

/// Whether nobody holds the lock of the model, the calling thread included.
bool isModelFree();

/// A box from the origin with ready triangulation.
TopoDS_Shape meshedBox(double dx, double dy, double dz);
/// The shape, every face of it given triangles.
TopoDS_Shape meshed(const TopoDS_Shape& shape);
/// A part with one body of this shape, entered in the model. The body's "geometry/uri" is `uri`.
std::shared_ptr<layout::Body> addModelBody(const TopoDS_Shape& shape, const std::string& uri,
                                           const std::string& color = "#808080");

} // namespace vrk::test
