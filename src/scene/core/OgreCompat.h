#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"
#include "selection/geometry/Box.h"

#include <OgreAxisAlignedBox.h>
#include <OgrePrerequisites.h>
#include <OgreQuaternion.h>
#include <OgreVector.h>

#include <cmath>
#include <string>

namespace Ogre {
class Node;
class Root;
class SceneManager;
class SceneNode;
} // namespace Ogre

/// The one place that knows what differs between OGRE and our types, and between one OGRE version and another.
namespace vrk::visual {

inline Ogre::Vector3 toOgre(const rob::PosTemplate<float>& p)
{
    return {p.x, p.y, p.z};
}
inline Ogre::Vector3 toOgre(const rob::DirTemplate<float>& d)
{
    return {d.x, d.y, d.z};
}
inline Ogre::Quaternion toOgre(const rob::OrientTemplate<float>& o)
{
    return {o.w, o.x, o.y, o.z};
}
inline Ogre::Quaternion toOgre(const rob::RotationTemplate<float>& r)
{
    return {r.w, r.x, r.y, r.z};
}
inline rob::PosTemplate<float> toPos(const Ogre::Vector3& v)
{
    return {v.x, v.y, v.z};
}
inline rob::DirTemplate<float> toDir(const Ogre::Vector3& v)
{
    return {v.x, v.y, v.z};
}
inline rob::RotationTemplate<float> toRotation(const Ogre::Quaternion& q)
{
    return {q.w, q.x, q.y, q.z};
}

/// Whether OGRE can have this point in a box. It ends the process over a box with a corner that is no number, and it makes
/// one itself where squares and sums of its coordinates leave the range of floats.
inline bool fitsBox(const rob::PosTemplate<float>& p)
{
    constexpr float reach = 1e18f;
    return std::abs(p.x) <= reach && std::abs(p.y) <= reach && std::abs(p.z) <= reach;
}

/// A null box for an empty one: OGRE does not take corners that are the wrong way round.
inline Ogre::AxisAlignedBox toOgre(const Box& box)
{
    if (!box.isValid())
        return {};
    return {box.min.x, box.min.y, box.min.z, box.max.x, box.max.y, box.max.z};
}

/// Creates the GL3+ render system and installs it in the root, also where its plug-in class is not exported.
void installGL3Plus(Ogre::Root& root);

/// A child of `parent` with the wanted name, or with "#" and a number behind it if the scene has such a node already:
/// the name of a visual is a label, look-ups go by id. An empty name leaves the choice to OGRE.
Ogre::SceneNode* createChildNode(Ogre::SceneNode& parent, const std::string& wanted);
/// The same for a node without parent.
Ogre::SceneNode* createLooseNode(Ogre::SceneManager& manager, const std::string& wanted);
/// Takes a child from its parent without a look at all its siblings, where it stands at `place`; else as OGRE does. Up to two
/// siblings change their places: they stand at `place` and at the place that is returned.
std::size_t removeChildNode(Ogre::Node& parent, Ogre::Node& child, std::size_t place);
/// `wanted`, or with "#" and a number behind it if the scene has a movable object of that type and name already.
std::string freeObjectName(Ogre::SceneManager& manager, const std::string& wanted, const std::string& type);

/// The material of this name, of whichever group. OGRE itself would go on with null, and crash on it.
/// @throws Ogre::ItemIdentityException (ERR_ITEM_NOT_FOUND) if there is none.
Ogre::MaterialPtr materialByName(const std::string& name);

} // namespace vrk::visual
