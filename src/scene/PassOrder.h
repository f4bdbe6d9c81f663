#pragma once

#include <OgrePass.h>

namespace vrk::visual {

/// Passes of one queue group are drawn by this: what tells a state comes last, ahead of it paths, then all by their programs, so
/// that these are changed seldom, and by the names of their materials. OGRE's own order ends at where the passes lie in memory, by which soft edges of lines that cross would
/// come out another way in each run.
class PassOrder : public Ogre::Pass::HashFunc {
public:
    Ogre::uint32 operator()(const Ogre::Pass* pass) const override;
};

} // namespace vrk::visual
