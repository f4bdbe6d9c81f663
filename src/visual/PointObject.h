#pragma once

#include "scene/math/Color.h"
#include "scene/math/Vec.h"

#include <span>
#include <string>

namespace Ogre {
class ManualObject;
}

/// What the visuals made of points have in common. Render thread.
namespace vrk::visual {

class Visual;

/// An empty manual object on the node of the visual, which is named after it.
Ogre::ManualObject* makeManualObject(Visual& visual);
/// A manual object of separate points on the node of the visual, drawn with the lines. Without points it has no section:
/// OGRE ends such a one with none.
Ogre::ManualObject* makePoints(Visual& visual, const std::string& material,
                               std::span<const rob::PosTemplate<float>> points);
void destroyPoints(Visual& visual, Ogre::ManualObject* object);
/// Custom parameter 0 of every section.
void setPointColor(Ogre::ManualObject& object, const rob::ColorTemplate<float>& color, float alpha);
/// The material of every section; a name that OGRE does not know changes nothing.
void setPointMaterial(Ogre::ManualObject& object, const std::string& name);

} // namespace vrk::visual
