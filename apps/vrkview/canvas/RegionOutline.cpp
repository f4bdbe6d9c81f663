#include "canvas/RegionOutline.h"

#include "scene/Scene.h"

#include <Ogre.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace vrkview {
namespace {

// Logical pixels
constexpr double dash = 7;
constexpr double gap = 5;

const Ogre::ColourValue lineColour(0.16f, 0.47f, 0.95f);
const Ogre::ColourValue dashColour(0.10f, 0.62f, 0.30f);
const Ogre::ColourValue markColour(0.1f, 0.1f, 0.1f);

const Ogre::ColourValue& colourOf(RegionOutline::Look look)
{
    switch (look) {
    case RegionOutline::Look::Line:
        return lineColour;
    case RegionOutline::Look::Dashes:
        return dashColour;
    case RegionOutline::Look::Mark:
        break;
    }
    return markColour;
}

/// From pixels to the square from -1 to 1 that the view is.
class Square {
public:
    explicit Square(const QSizeF& view) : view(view) {}
    Ogre::Vector3 at(const QPointF& place) const
    {
        return {static_cast<float>(2 * place.x() / view.width() - 1),
                static_cast<float>(1 - 2 * place.y() / view.height()), 0};
    }

private:
    QSizeF view;
};

/// The sections of one outline, whose dashes go on around the corners.
class SectionWriter {
public:
    SectionWriter(Ogre::ManualObject& drawing, const Square& square, const Ogre::ColourValue& colour, double ratio)
        : drawing(drawing), square(square), colour(colour), on(dash * ratio), off(gap * ratio)
    {
    }

    void addLine(const QPointF& a, const QPointF& b)
    {
        for (const QPointF& end : {a, b}) {
            drawing.position(square.at(end));
            drawing.colour(colour);
        }
    }
    void addDashes(const QPointF& a, const QPointF& b)
    {
        const QPointF way = b - a;
        const double length = std::hypot(way.x(), way.y());
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
    Ogre::ManualObject& drawing;
    Square square;
    Ogre::ColourValue colour;
    double on;
    double off;
    double done = 0; // of all dashes and gaps so far
};

} // namespace

RegionOutline::~RegionOutline()
{
    hide();
}

void RegionOutline::begin()
{
    Ogre::SceneManager& manager = *vrk::visual::Scene::GetSceneManager();
    if (!drawing) {
        node = manager.getRootSceneNode()->createChildSceneNode();
        drawing = manager.createManualObject();
        drawing->setDynamic(true);
        drawing->setUseIdentityProjection(true);
        drawing->setUseIdentityView(true);
        drawing->setRenderQueueGroup(Ogre::RENDER_QUEUE_OVERLAY - 1);
        drawing->setCastShadows(false);
        node->attachObject(drawing);
    }
    drawing->clear();
}

void RegionOutline::show(const std::vector<QPointF>& corners, bool isClosed, Look look, const QSizeF& view,
                         double ratio)
{
    if (corners.size() < 2 || view.isEmpty()) {
        hide();
        return;
    }
    begin();
    drawing->begin("RegionOutline", Ogre::RenderOperation::OT_LINE_LIST);
    SectionWriter writer(*drawing, Square(view), colourOf(look), ratio);
    const bool isDashed = look == Look::Dashes;
    for (std::size_t i = 1; i < corners.size(); ++i)
        isDashed ? writer.addDashes(corners[i - 1], corners[i]) : writer.addLine(corners[i - 1], corners[i]);
    if (isClosed && !isDashed)
        writer.addLine(corners.back(), corners.front());
    else
        writer.addDashes(corners.back(), corners.front());
    drawing->end();
    drawing->setBoundingBox(Ogre::AxisAlignedBox::BOX_INFINITE); // always in view
}

void RegionOutline::showRectangle(const QPointF& from, const QPointF& to, Look look, const QSizeF& view, double ratio)
{
    const std::array corners = {from, QPointF(to.x(), from.y()), to, QPointF(from.x(), to.y())};
    show({corners.begin(), corners.end()}, true, look, view, ratio);
    if (!drawing)
        return;
    const Square square(view);
    drawing->begin(look == Look::Line ? "RegionGroundLine" : "RegionGroundDashes",
                   Ogre::RenderOperation::OT_TRIANGLE_LIST);
    for (const QPointF& corner : corners)
        drawing->position(square.at(corner));
    drawing->quad(0, 1, 2, 3);
    drawing->end();
    drawing->setBoundingBox(Ogre::AxisAlignedBox::BOX_INFINITE);
}

void RegionOutline::hide()
{
    if (!drawing)
        return;
    Ogre::SceneManager& manager = *vrk::visual::Scene::GetSceneManager();
    manager.destroyManualObject(drawing);
    manager.destroySceneNode(node);
    drawing = nullptr;
    node = nullptr;
}

} // namespace vrkview
