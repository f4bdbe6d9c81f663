#include "view/RegionOutline.h"

#include "view/Camera.h"

#include <Ogre.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace vrk::visual {
namespace {

using Place = RegionOutline::Place;
using Look = RegionOutline::Look;

// Pixels as the user sees them
constexpr double dash = 7;
constexpr double gap = 5;

const Ogre::ColourValue lineColour(0.16f, 0.47f, 0.95f);
const Ogre::ColourValue dashColour(0.10f, 0.62f, 0.30f);
const Ogre::ColourValue markColour(0.1f, 0.1f, 0.1f);

const Ogre::ColourValue& colourOf(Look look)
{
    switch (look) {
    case Look::Line:
        return lineColour;
    case Look::Dashes:
        return dashColour;
    case Look::Mark:
        break;
    }
    return markColour;
}

/// From pixels to the square from -1 to 1 that the picture is.
class Square {
public:
    explicit Square(const Camera& camera) : width(camera.viewportWidth()), height(camera.viewportHeight()) {}
    Ogre::Vector3 at(const Place& place) const
    {
        return {static_cast<float>(2 * place.x / width - 1), static_cast<float>(1 - 2 * place.y / height), 0};
    }

private:
    double width;
    double height;
};

/// The sections of one outline, whose dashes go on around the corners.
class SectionWriter {
public:
    SectionWriter(Ogre::ManualObject& lines, const Square& square, const Ogre::ColourValue& colour, double ratio)
        : lines(lines), square(square), colour(colour), on(dash * ratio), off(gap * ratio)
    {
    }

    void addLine(const Place& a, const Place& b)
    {
        for (const Place& end : {a, b}) {
            lines.position(square.at(end));
            lines.colour(colour);
        }
    }
    void addDashes(const Place& a, const Place& b)
    {
        const Place way = b - a;
        const double length = std::hypot(way.x, way.y);
        for (double at = 0; at < length;) {
            const double inPeriod = std::fmod(done, on + off);
            const bool isOn = inPeriod < on;
            const double step = std::min(length - at, (isOn ? on : on + off) - inPeriod + 1e-3);
            if (isOn)
                addLine(a + way * (at / length), a + way * ((at + step) / length));
            at += step;
            done += step;
        }
    }

private:
    Ogre::ManualObject& lines;
    Square square;
    Ogre::ColourValue colour;
    double on;
    double off;
    double done = 0; // of all dashes and gaps so far
};

} // namespace

/// OGRE's side of it, in the pictures of its camera alone.
class RegionOutline::Drawing : public Ogre::Camera::Listener {
public:
    explicit Drawing(Camera& camera) : camera(camera)
    {
        Ogre::SceneManager& manager = *camera.getSceneNode()->getCreator();
        node = manager.getRootSceneNode()->createChildSceneNode();
        lines = manager.createManualObject();
        lines->setDynamic(true);
        lines->setUseIdentityProjection(true);
        lines->setUseIdentityView(true);
        lines->setRenderQueueGroup(Ogre::RENDER_QUEUE_OVERLAY - 1);
        lines->setCastShadows(false);
        lines->setVisible(false);
        node->attachObject(lines);
        camera.ogreCamera()->addListener(this);
    }
    ~Drawing() override
    {
        camera.ogreCamera()->removeListener(this);
        Ogre::SceneManager& manager = *node->getCreator();
        manager.destroyManualObject(lines);
        manager.destroySceneNode(node);
    }
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;

    void cameraPreRenderScene(Ogre::Camera*) override { lines->setVisible(true); }
    void cameraPostRenderScene(Ogre::Camera*) override { lines->setVisible(false); }

    Ogre::ManualObject& object() { return *lines; }
    void end()
    {
        lines->end();
        lines->setBoundingBox(Ogre::AxisAlignedBox::BOX_INFINITE); // always in view
    }

private:
    Camera& camera;
    Ogre::SceneNode* node = nullptr;
    Ogre::ManualObject* lines = nullptr;
};

RegionOutline::RegionOutline(Camera& camera) : camera(camera) {}

RegionOutline::~RegionOutline() = default;

void RegionOutline::show(std::span<const Place> corners, bool isClosed, Look look, double ratio)
{
    if (corners.size() < 2 || camera.viewportWidth() == 0 || camera.viewportHeight() == 0) {
        hide();
        return;
    }
    if (!drawing)
        drawing = std::make_unique<Drawing>(camera);
    Ogre::ManualObject& lines = drawing->object();
    lines.clear();
    lines.begin("RegionOutline", Ogre::RenderOperation::OT_LINE_LIST);
    SectionWriter writer(lines, Square(camera), colourOf(look), ratio);
    const bool isDashed = look == Look::Dashes;
    for (std::size_t i = 1; i < corners.size(); ++i)
        isDashed ? writer.addDashes(corners[i - 1], corners[i]) : writer.addLine(corners[i - 1], corners[i]);
    if (isClosed && !isDashed)
        writer.addLine(corners.back(), corners.front());
    else
        writer.addDashes(corners.back(), corners.front());
    drawing->end();
}

void RegionOutline::showRectangle(const Place& from, const Place& to, Look look, double ratio)
{
    const std::array corners = {from, Place(to.x, from.y), to, Place(from.x, to.y)};
    show(corners, true, look, ratio);
    if (!drawing)
        return;
    const Square square(camera);
    Ogre::ManualObject& ground = drawing->object();
    ground.begin(look == Look::Line ? "RegionGroundLine" : "RegionGroundDashes",
                 Ogre::RenderOperation::OT_TRIANGLE_LIST);
    for (const Place& corner : corners)
        ground.position(square.at(corner));
    ground.quad(0, 1, 2, 3);
    drawing->end();
}

void RegionOutline::hide()
{
    drawing.reset();
}

} // namespace vrk::visual
