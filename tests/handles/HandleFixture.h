#pragma once

#include "handles/AttachedGuis.h"
#include "handles/DragHandle.h"
#include "platform/sdf/SdfManager.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "view/Camera.h"
#include "visual/MeshVisual.h"

#include <Ogre.h>

#include <utility>

namespace vrk::test {

/// A scene, or one that is looked at, whose handles end as they began: off, small, and not to be picked.
template <typename Base>
class WithHandles : public Base {
protected:
    ~WithHandles() override
    {
        detachAll();
        this->scene.setHandleScale(testSettings().handleScale);
        this->scene.resetDragHandle();
        this->drain();
        visual::DragHandle::Get()->showHover(visual::DragHandle::HandleType::None);
        selection::VisualSelection::Get()->setCompoundObjectEnabled(visual::DragHandle::Get(), false);
    }

    /// A visual that stands in the registry.
    visual::Visual* addRegistered(visual::Visual* parent, const rob::Posf& position = {})
    {
        auto* made = new visual::Visual(sdf::SdfManager::GenerateTransientId(), parent);
        made->setPosition(position);
        visual::SceneCore::Get()->visuals.enter(made);
        return made;
    }
    void attach(visual::GuiVisual* gui, visual::Visual* target, const rob::Posef& pose = {})
    {
        this->scene.attachGuiTo(gui, target, pose);
        this->drain();
        hung.push_back(gui);
    }
    /// Before a handle of the test's own dies.
    void detachAll()
    {
        for (visual::GuiVisual* gui : std::exchange(hung, {}))
            this->scene.detachGui(gui);
        this->drain();
    }
    visual::GuiVisual* currentGui() const
    {
        return visual::SceneCore::Get()->record<visual::AttachedGuis>().currentGui();
    }

private:
    std::vector<visual::GuiVisual*> hung;
};

/// Custom parameter 0 of a mesh, its colour and alpha.
inline Ogre::Vector4 colorOf(const visual::MeshVisual& mesh)
{
    return mesh.getEntity()->getSubEntity(0)->getCustomParameter(0);
}

inline bool isShown(const visual::Visual& visual)
{
    const auto& objects = visual.getSceneNode()->getAttachedObjects();
    return visual.isVisible() && !objects.empty() && objects.front()->getVisible();
}

} // namespace vrk::test
