#pragma once

#include "platform/common/Logger.h"
#include "platform/layout/Body.h"
#include "preview/PreviewLists.h"
#include "support/SceneFixture.h"
#include "visual/Edges.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>

#include <string>
#include <vector>

namespace vrk::test {

/// A scene, or one that is looked at, in which things are previewed on a body.
template <typename Base>
class WithPreviews : public Base {
protected:
    WithPreviews()
    {
        AppLogger::inst()->setListener([this](LogLevel, const std::string& line) { lines.push_back(line); });
    }
    ~WithPreviews() override
    {
        AppLogger::inst()->setListener({});
        visual::SceneCore::Get()->settings = testSettings();
    }

    /// A box of 10 x 20 x 30, registered.
    visual::SolidVisual* addBox(const rob::Posef& pose = {}, const std::string& uri = "previewed")
    {
        const TopoDS_Shape shape = meshedBox(10, 20, 30);
        const auto body = addModelBody(shape, uri);
        visual::SolidVisual::Build(this->world, body.get(), shape);
        auto* solid = static_cast<visual::SolidVisual*>(visual::Scene::GetVisual(body->getId()));
        solid->setPose(pose);
        return solid;
    }
    /// Of the whole scene, wherever their visuals hang.
    std::size_t entities() const
    {
        return this->sceneManager->getMovableObjects(Ogre::EntityFactory::FACTORY_TYPE_NAME).size();
    }
    template <typename List>
    static const std::vector<visual::Visual*>& listed()
    {
        return visual::SceneCore::Get()->record<List>().all();
    }
    /// What hangs on a visual and is of a class.
    template <typename Kind>
    static std::vector<Kind*> kindsOn(const visual::Visual& visual)
    {
        std::vector<Kind*> found;
        for (visual::Visual* child : visual.getChildren())
            if (auto* kind = dynamic_cast<Kind*>(child))
                found.push_back(kind);
        return found;
    }

    std::vector<std::string> lines; ///< of the log
};

} // namespace vrk::test
