#include "view/BandedPicture.h"

#include "view/BandPlace.h"
#include "view/Camera.h"
#include "view/StartedRoot.h"
#include "view/TargetPixels.h"

#include <Ogre.h>

#include <algorithm>
#include <stdexcept>

namespace vrk::visual {
namespace {

constexpr std::uint64_t pixelsOfABand = 800'000; // less gains little
constexpr std::uint64_t mostBands = 8;           // the scene is walked through for each

unsigned rowsOfABand(unsigned width, unsigned height)
{
    const std::uint64_t pixels = std::uint64_t{width} * height;
    const auto bands = static_cast<unsigned>(std::clamp<std::uint64_t>(pixels / pixelsOfABand, 1, mostBands));
    const unsigned rows = (height + bands - 1) / bands;
    return bands == 1 ? height : rows + rows % 2;
}

/// What OGRE tells its listeners around a picture.
class Frame {
public:
    Frame() { root._fireFrameStarted(); }
    ~Frame()
    {
        root._fireFrameRenderingQueued();
        root._fireFrameEnded();
    }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

private:
    Ogre::Root& root = startedRoot();
};

} // namespace

BandedPicture::BandedPicture(Camera& camera, unsigned width, unsigned height, unsigned samples)
    : camera(camera), height(height), target(width, rowsOfABand(width, height), samples)
{
    camera.drawInto(*target.renderTarget(), height);
}

BandedPicture::~BandedPicture() = default;

void BandedPicture::draw(const Take& take)
{
    if (target.renderTarget()->getNumViewports() == 0)
        throw std::logic_error("The camera draws elsewhere.");
    const Frame frame;
    BandPlace place(*camera.ogreCamera(), *target.renderTarget()->getViewport(0));
    const std::size_t row = std::size_t{3} * getWidth();
    std::vector<std::uint8_t> pixels;
    for (unsigned first = 0; first < height; first += getRows()) {
        place.moveTo(first);
        target.renderTarget()->update();
        readPixels(*target.renderTarget(), pixels);
        take(first, std::span(pixels).first(row * std::min(getRows(), height - first)));
    }
}

} // namespace vrk::visual
