#include "edit/DefineFrame.h"

#include "edit/AddThings.h"
#include "edit/ModelPlaces.h"
#include "edit/MoveThings.h"
#include "files/Station.h"

#include "platform/layout/Frame.h"
#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

#include <QObject>

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>

namespace vrkview {
namespace {

using vrk::layout::Layout;
using vrk::rob::Posed;
using vrk::task::WObjDataItem;
using vrk::visual::Scene;

/// "Frame 1", or the first number that nothing has. Takes the model's lock shared.
std::string freeName(const QString& pattern)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const auto objects = Layout::inst().objects();
    for (int number = 1;; ++number) {
        std::string name = pattern.arg(number).toStdString();
        if (std::ranges::none_of(objects, [&name](const auto& object) { return object->getName() == name; }))
            return name;
    }
}

Posed poseOn(unsigned carrier, const Posed& world)
{
    return worldPoseOfThing(carrier).inverse() * world;
}

DefinedFrame newFrame(const Posed& world, unsigned carrier)
{
    const auto frame = std::make_shared<vrk::layout::Frame>(sdf::SdfManager::inst().generateId(),
                                                            freeName(QObject::tr("Frame %1")), poseOn(carrier, world));
    frame->setParentId(carrier);
    auto station = std::make_shared<Station>();
    station->title = frame->getName();
    station->frames = {frame};
    return {std::make_unique<AddThings>(station, QObject::tr("Define %1")), frame->getId()};
}

/// A work object joins a program.
class AddWorkObject : public Change {
public:
    AddWorkObject(std::shared_ptr<vrk::task::Task> program, std::shared_ptr<WObjDataItem> item)
        : Change(QObject::tr("Define %1").arg(QString::fromStdString(item->getName())), Touched::Things),
          program(std::move(program)), item(std::move(item))
    {
    }

    void apply() override
    {
        {
            sdf::SdfManager& model = sdf::SdfManager::inst();
            const std::unique_lock lock(model.mutex());
            program->addDataItem(item);
            model.add(item);
            model.add(item->getObjectFrame());
        }
        if (Scene* scene = Scene::Get()) {
            scene->addWObj(item.get());
            scene->processMsgs();
        }
    }
    void revert() override
    {
        if (Scene* scene = Scene::Get()) {
            scene->addRenderTask(
                [id = item->getId()] {
                    if (Scene::HasVisual(id))
                        Scene::Get()->deleteVisual(Scene::GetVisual(id));
                },
                0);
            scene->processMsgs();
        }
        sdf::SdfManager& model = sdf::SdfManager::inst();
        const std::unique_lock lock(model.mutex());
        program->removeDataItem(item->getId());
        model.remove(item->getObjectFrame()->getId());
        model.remove(item->getId());
    }

private:
    std::shared_ptr<vrk::task::Task> program;
    std::shared_ptr<WObjDataItem> item;
};

std::shared_ptr<vrk::task::Task> firstProgram()
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    return Layout::inst().tasks.empty() ? nullptr : Layout::inst().tasks.front();
}

/// Whether its user frame can be defined.
bool hasUserFrame(unsigned workObject)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const auto* item = dynamic_cast<const WObjDataItem*>(sdf::SdfManager::inst().find(workObject));
    return item && item->hasFixedUFrame();
}

DefinedFrame newWorkObject(const Posed& world, unsigned carrier)
{
    auto item =
        std::make_shared<WObjDataItem>(sdf::SdfManager::inst().generateId(), freeName(QObject::tr("Work object %1")));
    item->setOwnerId(carrier);
    item->setPose(poseOn(carrier, world));
    const unsigned id = item->getId();
    return {std::make_unique<AddWorkObject>(firstProgram(), std::move(item)), id};
}

DefinedFrame newUserFrame(const Posed& world, unsigned workObject)
{
    auto change = std::make_unique<MoveThings>(workObject, worldPoseOfBase(workObject).inverse() * world);
    change->setText(QObject::tr("Define user frame of %1").arg(nameOfThing(workObject)));
    return {std::move(change), workObject};
}

} // namespace

unsigned frameCarrierOf(unsigned body)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    unsigned carrier = 0;
    const sdf::SdfObject* object = sdf::SdfManager::inst().find(body);
    for (std::size_t steps = 0; object && steps <= sdf::SdfManager::inst().size(); ++steps) {
        const sdf::ModelType type = object->getModelType();
        if (type == sdf::ModelType::Link)
            return object->getId();
        if (type == sdf::ModelType::Part || type == sdf::ModelType::Assembly)
            carrier = object->getId();
        if (carrier != 0 && object->isStandalone())
            return carrier; // what a thing lies on is another one
        object = sdf::SdfManager::inst().find(object->getParentId());
    }
    return carrier;
}

void checkFrameUse(FrameUse use, unsigned selected)
{
    if (use == FrameUse::UserFrame && !hasUserFrame(selected))
        throw std::invalid_argument("select one work object that has a user frame of its own");
    if (use == FrameUse::WorkObject && !firstProgram())
        throw std::invalid_argument("the station has no program that could have a work object");
}

DefinedFrame defineFrame(FrameUse use, const Posed& world, unsigned carrier, unsigned selected)
{
    checkFrameUse(use, selected);
    switch (use) {
    case FrameUse::UserFrame:
        return newUserFrame(world, selected);
    case FrameUse::WorkObject:
        return newWorkObject(world, carrier);
    case FrameUse::Frame:
        break;
    }
    return newFrame(world, carrier);
}

} // namespace vrkview
