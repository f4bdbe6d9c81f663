#include "edit/Bands.h"

#include "edit/ModelPlaces.h"
#include "files/StationScene.h"

#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/Path.h"
#include "platform/task/SeamPath.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"

#include <QObject>

#include <algorithm>
#include <mutex>
#include <numbers>
#include <shared_mutex>

namespace vrkview {
namespace {

using vrk::layout::Layout;
using vrk::task::EdgeMfgShape;
using vrk::task::Task;
using vrk::visual::Scene;

constexpr double smooth = 5 * std::numbers::pi / 180; // of the corner between edges of a tangent chain

template <typename Object>
std::shared_ptr<Object> shared(unsigned id)
{
    sdf::SdfManager& model = sdf::SdfManager::inst();
    const std::shared_lock lock(model.mutex());
    return std::dynamic_pointer_cast<Object>(model.share(id));
}

std::shared_ptr<vrk::layout::Body> bodyOf(unsigned id)
{
    std::shared_ptr<vrk::layout::Body> body = shared<vrk::layout::Body>(id);
    if (!body || body->getShape().IsNull())
        throw std::invalid_argument("only a body with a CAD shape has edges");
    return body;
}

QString nameOfOwner(const sdf::SdfObject& piece)
{
    const QString name = nameOfThing(piece.getParentId());
    return name.isEmpty() ? QString::fromStdString(piece.getName()) : name;
}

std::shared_ptr<Task> programOf(unsigned band)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    for (const std::shared_ptr<Task>& program : Layout::inst().tasks)
        for (const auto& shape : program->getMfgShapes())
            if (shape->getId() == band)
                return program;
    return nullptr;
}

std::shared_ptr<Task> firstProgram()
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const auto& tasks = Layout::inst().tasks;
    return tasks.empty() ? nullptr : tasks.front();
}

std::shared_ptr<Task> newProgram()
{
    auto program = std::make_shared<Task>(sdf::SdfManager::inst().generateId(), "Program");
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    if (const auto& arms = Layout::inst().manipulators; !arms.empty()) {
        program->setOwnerId(arms.front()->getId());
        program->setManipulatorId(arms.front()->getId());
    }
    return program;
}

void takeFromView(unsigned id)
{
    if (!Scene::Get())
        return;
    removeFromScene(id);
    Scene::Get()->processMsgs();
}

// Under the model's unique lock.

/// An object and its pieces enter the table of objects.
void enter(const std::shared_ptr<sdf::SdfObject>& object)
{
    sdf::SdfManager::inst().add(object);
    for (const std::shared_ptr<sdf::SdfObject>& piece : object->getPieces())
        enter(piece);
}

void drop(const sdf::SdfObject& object)
{
    for (const std::shared_ptr<sdf::SdfObject>& piece : object.getPieces())
        drop(*piece);
    sdf::SdfManager::inst().remove(object.getId());
}

void enterBand(Task& program, const std::shared_ptr<EdgeMfgShape>& band)
{
    program.addMfgShape(band);
    sdf::SdfManager::inst().add(band);
}

void dropBand(Task& program, unsigned band)
{
    program.removeMfgShape(band);
    sdf::SdfManager::inst().remove(band);
}

} // namespace

std::shared_ptr<EdgeMfgShape> bandOf(unsigned id)
{
    return shared<EdgeMfgShape>(id);
}

void drawBand(unsigned id)
{
    if (Scene* scene = Scene::Get()) {
        scene->addBand(id);
        scene->processMsgs();
    }
}

std::vector<unsigned> tangentChainOf(unsigned body, const std::vector<unsigned>& edges)
{
    const TopoDS_Shape& shape = bodyOf(body)->getShape();
    std::vector<unsigned> all;
    for (const unsigned edge : edges)
        for (const unsigned next : vrk::task::TangentChain(shape, edge, smooth))
            if (std::ranges::find(all, next) == all.end())
                all.push_back(next);
    return all;
}

AddBand::AddBand(unsigned body, const std::vector<unsigned>& edges, const vrk::task::SeamOptions& options)
    : Change(QObject::tr("Make Band on %1").arg(nameOfOwner(*bodyOf(body))), Touched::Things), program(firstProgram())
{
    const auto carrier = bodyOf(body);
    const std::string name = "Band on " + nameOfOwner(*carrier).toStdString();
    band = vrk::task::MakeSeam(sdf::SdfManager::inst().generateId(), name, carrier->getShape(), body, edges, options);
    if (program)
        return;
    program = newProgram();
    program->addMfgShape(band);
    isProgramNew = true;
}

void AddBand::apply()
{
    if (isProgramNew) {
        Layout::inst().addTask(program); // with the band in it
    } else {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        enterBand(*program, band);
    }
    drawBand(band->getId());
}

void AddBand::revert()
{
    takeFromView(band->getId());
    if (isProgramNew) {
        Layout::inst().remove(program->getId());
        return;
    }
    const std::unique_lock lock(sdf::SdfManager::inst().mutex());
    dropBand(*program, band->getId());
}

RemoveBand::RemoveBand(unsigned id)
    : Change(QObject::tr("Delete %1").arg(nameOfThing(id)), Touched::Things), program(programOf(id)), band(bandOf(id))
{
}

void RemoveBand::apply()
{
    takeFromView(band->getId());
    const std::unique_lock lock(sdf::SdfManager::inst().mutex());
    before = program->getMfgShapes();
    hidden = Layout::inst().visibilities;
    std::erase(Layout::inst().visibilities, band->getId());
    dropBand(*program, band->getId());
}

void RemoveBand::revert()
{
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        // Back to its place among the others.
        for (const auto& shape : std::vector(program->getMfgShapes()))
            program->removeMfgShape(shape->getId());
        for (const auto& shape : before)
            program->addMfgShape(shape);
        sdf::SdfManager::inst().add(band);
        Layout::inst().visibilities = hidden;
    }
    drawBand(band->getId());
}

AddSeamPath::AddSeamPath(unsigned id)
    : Change(QObject::tr("Make Path along %1").arg(nameOfThing(id)), Touched::Things), program(programOf(id))
{
    const std::shared_ptr<EdgeMfgShape> band = bandOf(id);
    if (!program || !band || band->getMfgVectors().empty())
        return;
    vrk::task::SeamPathOptions options;
    const auto body = shared<vrk::layout::Body>(band->getMfgVectors().front().body);
    if (body) {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        for (const auto& item : program->getDataItems()) {
            const auto wobj = std::dynamic_pointer_cast<vrk::task::WObjDataItem>(item);
            if (wobj && !options.wobj && wobj->getOwnerId() == body->getParentId())
                options.wobj = wobj;
            if (const auto tool = std::dynamic_pointer_cast<vrk::task::ToolDataItem>(item); tool && !options.tool)
                options.tool = tool;
        }
    }
    if (body && !options.wobj) {
        options.wobj = std::make_shared<vrk::task::WObjDataItem>(sdf::SdfManager::inst().generateId(),
                                                                 nameOfOwner(*body).toStdString());
        options.wobj->setOwnerId(body->getParentId());
        items.push_back(options.wobj);
    }
    if (body) // its coordinates are those of the band
        options.seamInFrame = options.wobj->getPose().inverse() * body->getPose();
    vrk::task::SeamPath made = MakeSeamPath(*band, "Path along " + band->getName(), options);
    items.insert(items.end(), made.targets.begin(), made.targets.end());
    path = std::move(made.path);
}

void AddSeamPath::apply()
{
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        for (const auto& item : items) {
            program->addDataItem(item);
            enter(item);
        }
        program->addPath(path);
        enter(path);
    }
    if (Scene* scene = Scene::Get()) {
        for (const auto& item : items)
            if (item->asType(sdf::ModelType::WObjData))
                scene->addWObj(item.get());
        scene->processMsgs();
        scene->addPath(path.get()); // which looks for the visual of its work object at once
        scene->processMsgs();
    }
}

void AddSeamPath::revert()
{
    if (Scene::Get() && Scene::HasVisual(path->getId())) {
        Scene::Get()->removePathVisual(path->getId());
        Scene::Get()->processMsgs();
    }
    for (const auto& item : items)
        if (item->asType(sdf::ModelType::WObjData))
            takeFromView(item->getId());
    const std::unique_lock lock(sdf::SdfManager::inst().mutex());
    program->removePath(path->getId());
    drop(*path);
    for (auto item = items.rbegin(); item != items.rend(); ++item) {
        program->removeDataItem((*item)->getId());
        drop(**item);
    }
}

} // namespace vrkview
