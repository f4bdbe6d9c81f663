#pragma once

#include <vector>

namespace vrkview {

// What is hidden, beyond the switches that the scene has: hidden things take along what they carry, and what is shown again
// looks as if it had never been hidden. The model's list of what is hidden says only what the user hid.

/// What is hidden because its carrier is: things attached to hidden things, and work objects on them, unless they are on
/// the model's list themselves. Only the topmost of each is listed; its pieces are hidden with it. Takes the model's lock
/// shared.
std::vector<unsigned> carriedByHidden();

/// Shows things with their pieces, and what hangs on them where that is not hidden itself. Posts.
///
/// The scene shows everything below a visual that it is told to show. Three things are put right after it: the base frame
/// of a mechanism is hidden again, since it shows only while the mechanism is selected; members that are highlighted or
/// selected by themselves keep that look; and frames whose length was changed while they were hidden get it.
void showThings(const std::vector<unsigned>& ids);
/// Hides things with their pieces, from picking too. Posts.
void hideThings(const std::vector<unsigned>& ids);
/// Hides all that the model says is hidden, with what it carries. Posts.
void hideWhatModelHides();

/// Whether all frames of the station are drawn, but for those that are hidden as things. Posts; what is not drawn is not
/// picked.
void showFrames(bool shown);

} // namespace vrkview
