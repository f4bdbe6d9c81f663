#pragma once

#include <vector>

namespace vrkview {

// What is hidden, beyond the switches that the scene has: hidden things take along what they carry, and what is shown again
// looks as if it had never been hidden. The model's list of what is hidden says only what the user hid.

/// What hangs on hidden things by an attachment, or is a work object on them, and is not itself on the model's list: it is
/// hidden as long as they are. Only where each of these begins; its pieces go with it. Takes the model's lock shared.
std::vector<unsigned> carriedByHidden();

/// Shows things with their pieces, and what hangs on them where that is not hidden itself. Posts.
///
/// The scene's switch leaves out what is done here behind it: the base frame of a mechanism, which shows only while that is
/// selected, goes again; looks of members stay; frames that were made longer while they were hidden have their length.
void showThings(const std::vector<unsigned>& ids);
/// Hides things with their pieces, from picking too. Posts.
void hideThings(const std::vector<unsigned>& ids);
/// Hides all that the model says is hidden, with what it carries. Posts.
void hideWhatModelHides();

/// Whether all frames of the station are drawn, but for those that are hidden as things. Posts; what is not drawn is not
/// picked.
void showFrames(bool shown);

} // namespace vrkview
