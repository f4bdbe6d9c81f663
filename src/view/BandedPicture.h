#pragma once

#include "platform/common/Export.h"
#include "view/OffscreenTarget.h"

#include <cstdint>
#include <functional>
#include <span>

namespace vrk::visual {

class Camera;

/// A large picture in memory, drawn in bands one below the other, which share a target of one band's size: of many pixels with
/// several samples each, making the memory ready takes longer than drawing into it. The picture is the one that a target of its
/// whole size would show. What is measured on the whole picture first, as the shade in pockets, is measured once.
///
/// The camera draws into it as long as it lives, or until it gets another target; for the camera, and for whatever has its size in
/// pixels, the picture has its whole size. Only `draw` draws it: for `renderFrame` the target shows its uppermost band.
///
/// Thread: render thread.
class VRK_EXPORT BandedPicture {
public:
    /// Called for each band, from the uppermost one. `pixels` has red, green and blue of each pixel of whole rows, of which the
    /// first is row `firstRow` of the picture, and is gone afterwards.
    using Take = std::function<void(unsigned firstRow, std::span<const std::uint8_t> pixels)>;

    /// @param samples  for each pixel, 0 for none; the driver may give fewer.
    /// @throws Ogre::Exception for a width that the driver does not offer.
    BandedPicture(Camera& camera, unsigned width, unsigned height, unsigned samples);
    ~BandedPicture();
    BandedPicture(const BandedPicture&) = delete;
    BandedPicture& operator=(const BandedPicture&) = delete;

    unsigned getWidth() const { return target.getWidth(); }
    unsigned getHeight() const { return height; }
    /// Of a band; an even number, which but the lowest band has.
    unsigned getRows() const { return target.getHeight(); }
    /// Draws a frame of this picture alone.
    /// @throws std::logic_error where the camera has another target by now.
    void draw(const Take& take);

private:
    Camera& camera;
    unsigned height;
    OffscreenTarget target;
};

} // namespace vrk::visual
