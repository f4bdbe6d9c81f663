#pragma once

#include "platform/common/Export.h"
#include "scene/math/Color.h"
#include "scene/math/Vec.h"

#include <memory>
#include <span>
#include <string>

namespace Ogre {
class ManualObject;
}

namespace vrk::visual {

class Visual;

/// An OGRE manual object on the node of a visual: made, named, attached, and destroyed at the end.
///
/// What it draws is the owner's business: sections are begun and ended on the object itself.
///
/// Owner: the visual, or whoever owns that; its node must still be there at the end. Thread: render thread.
class VRK_EXPORT ManualDrawing {
public:
    /// @param name  the object's; with "#" and a number behind it if the scene has an object of that name already.
    ManualDrawing(Visual& visual, const std::string& name);
    /// With a name of OGRE's.
    explicit ManualDrawing(Visual& visual);
    ~ManualDrawing();
    ManualDrawing(const ManualDrawing&) = delete;
    ManualDrawing& operator=(const ManualDrawing&) = delete;

    Ogre::ManualObject& operator*() const { return *object; }
    Ogre::ManualObject* operator->() const { return object; }

    /// Custom parameter 0 of every section, where the materials' shaders read the colour. A section that is begun later
    /// has none.
    void setColor(const rob::ColorTemplate<float>& color, float alpha);
    /// The material of every section; a name that OGRE does not know changes nothing.
    void setMaterial(const std::string& name);

private:
    Visual& visual;
    Ogre::ManualObject* object;
};

/// An empty drawing for points, named after the visual.
std::unique_ptr<ManualDrawing> makePointDrawing(Visual& visual);
/// One of separate points, drawn with the lines. Without points it has no section: OGRE ends such a one with none.
std::unique_ptr<ManualDrawing> makePointDrawing(Visual& visual, const std::string& material,
                                                std::span<const rob::PosTemplate<float>> points);

} // namespace vrk::visual
