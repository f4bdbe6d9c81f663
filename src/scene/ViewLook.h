#pragma once

#include "platform/common/Export.h"
#include "scene/CoarseWhileMoving.h"
#include "scene/math/Color.h"

#include <cstdint>
#include <span>
#include <vector>

namespace vrk::visual {

// What makes a picture easier to read, beside what `Scene` sets. Render thread, after the start, at once: it shows with the
// next frame, which only a change of the outline or of the corner asks for.

/// Shades pockets and gaps, and what lies behind the edges of something nearer, on bodies and clouds. Off at start. It costs
/// a second pass over the scene, for its depths, and some looks at each pixel.
VRK_EXPORT void SetDepthShade(bool on);
VRK_EXPORT bool HasDepthShade();

/// A background that goes from one colour to another, from the upper edge to the lower one, in all views.
VRK_EXPORT void SetBackground(const rob::ColorTemplate<float>& top, const rob::ColorTemplate<float>& bottom);
/// The plain grey of the start.
VRK_EXPORT void ResetBackground();

/// A thin outline around the bodies of these visuals and of those below them, beside that of what is selected, which is
/// wider; in the view of the scene's own camera. It replaces the one before; none for an empty list. What has no visual is
/// passed over, now and later. Raises `updateScene` where others are outlined than before.
VRK_EXPORT void SetOutlined(const std::vector<unsigned>& ids);

/// Draws the soft shadow of the solids and meshes that are shown now, on the level ground (across z) that the lowest of them
/// stands on; for whoever looks from above. What is seen through throws none. It stays as it is until the next call, so call
/// it again where things have moved, appeared or gone: that costs a small picture of all bodies where anything has changed,
/// and next to nothing where not.
VRK_EXPORT void TakeGroundShadow();
/// None, as at start.
VRK_EXPORT void RemoveGroundShadow();

/// A picture over all else in the lower right corner of the window that the scene's own camera draws into, such as a legend.
/// It keeps its size and its corner when the window gets another size; no pick finds it, and pictures that are drawn into an
/// OffscreenTarget are without it. It replaces the one before. Raises `updateScene`.
/// @param rgba    rows from the top, four bytes for each pixel: red, green and blue, multiplied by the alpha, then that. Copied.
/// @param margin  between the picture and the edges of the window; device pixels, as width and height.
/// @throws std::invalid_argument "The picture of a corner has four bytes for each of its pixels"; none has 0 pixels.
VRK_EXPORT void SetCornerPicture(std::span<const std::uint8_t> rgba, unsigned width, unsigned height, unsigned margin);
/// None any more. Raises `updateScene` where there was one.
VRK_EXPORT void ResetCornerPicture();

/// Whether bodies are drawn as lines, and which: their edges and, of curved ones and of meshes, the outlines.
enum class LineLook {
    None,       ///< bodies as `Scene::setDisplayMode` has them
    Visible,    ///< nothing that a body hides
    WithHidden, ///< hidden edges as well, thin and in dashes
};
/// Draws bodies as lines, on the background, in the view of the scene's own camera; the lines stand out from the background
/// that was set here. It is for the display mode with edges, which it lies over: the mode stays. What tells a state has its
/// look: the edges of what is selected or highlighted, bodies that collide, solids with marked faces. Clouds, paint and what is
/// seen through stay as they are; there is neither shade in pockets nor a shadow on the ground meanwhile. None at start. Raises
/// `updateScene` for another look than before.
VRK_EXPORT void SetLineLook(LineLook look);
VRK_EXPORT LineLook GetLineLook();

/// Draws all bodies and clouds but those of these visuals, and of visuals below them, as transparent ghosts without paint, in
/// the view of the scene's own camera. Of ghosts behind each other the nearest faces are seen, whatever the order; what is
/// whole is seen through them. Bodies that collide are no ghosts, and no shadow lies on the ground. It replaces the list of
/// before; ids without a visual are passed over, now and later. Neither a visual nor the model is changed. Raises `updateScene`
/// for another list than before.
VRK_EXPORT void SetGhostsExcept(const std::vector<unsigned>& ids);
/// The end of that; nothing without. Raises `updateScene` where there were ghosts.
VRK_EXPORT void EndGhosts();
VRK_EXPORT bool HasGhosts();

/// Draws windows of the scene's own camera coarser, for as long as a view that moves has to keep up with the hand; whole at start
/// and in pictures that are drawn into an OffscreenTarget. What is selected, highlighted, outlined or collides stays whole, and
/// so does everything beside bodies and their edges. Picks find what is left out, no visual is changed, and the picture after
/// `Coarseness::Whole` is the one of before. `CoarseWhileMoving` tells how coarse each frame is to be.
VRK_EXPORT void SetCoarseness(Coarseness coarseness);
VRK_EXPORT Coarseness GetCoarseness();

// All of them
// @throws std::logic_error "The library has not been started."

} // namespace vrk::visual
