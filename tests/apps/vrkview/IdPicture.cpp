#include "IdPicture.h"

#include "scene/Scene.h"
#include "selection/VisualSelection.h"
#include "view/AxesCross.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"
#include "visual/Visual.h"

#include <Ogre.h>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace vrkview::test {
namespace {

using vrk::VisualType;
using vrk::selection::VisualSelection;
using vrk::visual::Scene;
using vrk::visual::Visual;

constexpr QRgb background = qRgb(115, 115, 115);

/// Neighbours are far apart, so that a person sees the parts too. None is the background's: that one comes at 11,471,691.
QRgb colorOf(std::size_t number)
{
    constexpr unsigned spread = 0x9e3779; // odd, so that no two of 2^24 numbers have one colour
    return 0xff000000u | (static_cast<unsigned>(number) * spread & 0xffffff);
}

enum class Form { Faces, Lines, Points };

Ogre::MaterialPtr flatMaterial(Form form, QRgb color)
{
    const std::string name = "IdPicture" + std::to_string(static_cast<int>(form)) + "_" + std::to_string(color);
    Ogre::MaterialManager& manager = Ogre::MaterialManager::getSingleton();
    if (Ogre::MaterialPtr known = manager.getByName(name))
        return known;
    Ogre::MaterialPtr material = manager.create(name, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
    Ogre::Pass& pass = *material->getTechnique(0)->getPass(0);
    pass.setCullingMode(Ogre::CULL_NONE);
    pass.setManualCullingMode(Ogre::MANUAL_CULL_NONE);
    const Ogre::ColourValue value(qRed(color) / 255.0f, qGreen(color) / 255.0f, qBlue(color) / 255.0f);
    switch (form) {
    case Form::Faces:
        pass.setVertexProgram("UnlitVertex");
        pass.setFragmentProgram("UnlitFragment");
        pass.getFragmentProgramParameters()->setNamedConstant("surface", value);
        break;
    case Form::Lines: // not blended: a soft edge is as much of the line as its middle
        pass.setVertexProgram("LineVertex");
        pass.setGeometryProgram("LineGeometry");
        pass.setFragmentProgram("LineFragment");
        pass.getVertexProgramParameters()->setNamedConstant("surface", value);
        break;
    case Form::Points:
        pass.setVertexProgram("PointVertex");
        pass.setFragmentProgram("UnlitFragment");
        pass.getFragmentProgramParameters()->setNamedConstant("surface", value);
        pass.setPointAttenuation(true);
        pass.setPointSpritesEnabled(true);
        break;
    }
    return material;
}

void paintObject(Ogre::MovableObject& object, QRgb color)
{
    if (auto* entity = dynamic_cast<Ogre::Entity*>(&object)) {
        entity->setMaterial(flatMaterial(Form::Faces, color));
    } else if (auto* line = dynamic_cast<Ogre::SimpleRenderable*>(&object)) {
        line->setMaterial(flatMaterial(Form::Lines, color));
    } else if (auto* points = dynamic_cast<Ogre::ManualObject*>(&object)) {
        const Ogre::MaterialPtr material = flatMaterial(Form::Points, color);
        for (std::size_t i = 0; i < points->getSections().size(); ++i)
            points->setMaterialName(i, material->getName(), material->getGroup());
    } else {
        throw std::logic_error("a kind of object that the id picture does not know: " + object.getMovableType());
    }
}

/// What a pick names where this visual is drawn; null for what cannot be picked.
Visual* pickedFor(Visual& visual)
{
    Visual* named = visual.getType() == VisualType::Edge ? visual.getParent() : &visual; // of a curve
    const bool isPickable = named && VisualSelection::Get()->hasVisual(named);
    return isPickable && named->getType() != VisualType::PointCloud ? named : nullptr;
}

} // namespace

IdPicture::IdPicture(const vrk::visual::OffscreenTarget& target)
{
    paint(*Scene::GetWorldVisual());
    vrk::visual::Camera::Get()->axesCross().setShown(false);
    Ogre::Root::getSingleton().renderOneFrame();
    const std::vector<std::uint8_t> bytes = target.read();
    const int columns = static_cast<int>(target.getWidth()), rows = static_cast<int>(target.getHeight());
    const QImage drawn(bytes.data(), columns, rows, 3 * columns, QImage::Format_RGB888);
    image = drawn.convertToFormat(QImage::Format_RGB32);
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x)
            if (const QRgb color = image.pixel(x, y); color != background && !visuals.contains(color))
                throw std::logic_error("something else is in the id picture, in the colour " + std::to_string(color));
}

void IdPicture::paint(Visual& visual)
{
    if (Visual* picked = pickedFor(visual)) {
        const auto known = std::ranges::find(visuals, picked, [](const auto& entry) { return entry.second; });
        const QRgb color = known != visuals.end() ? known->first : colorOf(visuals.size() + 1);
        visuals.emplace(color, picked);
        for (Ogre::MovableObject* object : visual.getSceneNode()->getAttachedObjects())
            paintObject(*object, color);
    } else {
        for (Ogre::MovableObject* object : visual.getSceneNode()->getAttachedObjects())
            object->setVisible(false);
    }
    for (Visual* child : visual.getChildren())
        paint(*child);
}

Visual* IdPicture::at(int x, int y) const
{
    if (!image.valid(x, y))
        return nullptr;
    const auto known = visuals.find(image.pixel(x, y));
    return known == visuals.end() ? nullptr : known->second;
}

bool IdPicture::isNear(int x, int y, const Visual* visual, int reach) const
{
    for (int row = y - reach; row <= y + reach; ++row)
        for (int column = x - reach; column <= x + reach; ++column)
            if (at(column, row) == visual)
                return true;
    return false;
}

std::set<Visual*> IdPicture::seen() const
{
    std::set<Visual*> found;
    for (int y = 0; y < height(); ++y)
        for (int x = 0; x < width(); ++x)
            if (Visual* visual = at(x, y))
                found.insert(visual);
    return found;
}

} // namespace vrkview::test
