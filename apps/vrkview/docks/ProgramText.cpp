#include "docks/ProgramText.h"

#include "window/Glyphs.h"

#include "platform/sdf/SdfManager.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"

#include <QLocale>
#include <QObject>

#include <algorithm>
#include <shared_mutex>

namespace vrkview {
namespace {

using vrk::task::Instruction;
using vrk::task::Motion;
using vrk::task::MoveInst;
using vrk::task::Path;
using vrk::task::Task;

QString text(const std::string& words)
{
    return QString::fromStdString(words);
}

const MoveInst* moveOf(const sdf::SdfObject& object)
{
    return dynamic_cast<const MoveInst*>(&object);
}

QString motionOf(const MoveInst& move)
{
    switch (move.getMotion()) {
    case Motion::Circular:
        return QObject::tr("Circular");
    case Motion::Joint:
        return QObject::tr("Joint");
    default:
        return move.isDashed() ? QObject::tr("Curve") : QObject::tr("Linear");
    }
}

QString countOfMoves(const Path& path)
{
    const auto count = static_cast<qulonglong>(path.moveInstructionCount());
    return QLocale(QLocale::English).toString(count) + (count == 1 ? QObject::tr(" move") : QObject::tr(" moves"));
}

} // namespace

bool isDrawn(const sdf::SdfObject& object)
{
    if (const auto* task = dynamic_cast<const Task*>(&object))
        return std::ranges::any_of(task->getOwnPaths(), [](const auto& path) { return isDrawn(*path); });
    if (const auto* path = dynamic_cast<const Path*>(&object))
        return path->moveInstructionCount() > 0;
    return moveOf(object) != nullptr;
}

QString programWords(const sdf::SdfObject& object)
{
    const auto* step = dynamic_cast<const Instruction*>(&object);
    return step && !step->remark.empty() ? text(step->getName()) + '\n' + text(step->remark) : text(object.getName());
}

QString programStep(const sdf::SdfObject& object)
{
    const MoveInst* move = moveOf(object);
    return move ? motionOf(*move) : text(object.getName());
}

QString programTarget(const sdf::SdfObject& object)
{
    if (const auto* path = dynamic_cast<const Path*>(&object))
        return countOfMoves(*path);
    const auto* step = dynamic_cast<const Instruction*>(&object);
    const MoveInst* move = moveOf(object);
    if (!move)
        return step ? text(step->remark) : QString();
    const QString target = text(move->getTargetItem()->getName());
    return move->getCircleItem() ? QObject::tr("%1 over %2").arg(target, text(move->getCircleItem()->getName()))
                                 : target;
}

QString programSpeed(const sdf::SdfObject& object)
{
    const MoveInst* move = moveOf(object);
    return move ? text(move->speed) : QString();
}

QString programZone(const sdf::SdfObject& object)
{
    const MoveInst* move = moveOf(object);
    return move ? text(move->zone) : QString();
}

QString programToolTip(const sdf::SdfObject& object)
{
    const auto* step = dynamic_cast<const Instruction*>(&object);
    QString words = text(object.getName());
    if (step && step->line > 0)
        words = QObject::tr("line %1: %2").arg(step->line).arg(words);
    if (step && !step->remark.empty())
        words += '\n' + text(step->remark);
    return words.toHtmlEscaped().replace('\n', QStringLiteral("<br>"));
}

QString describeProgramThing(unsigned id)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const sdf::SdfObject* object = sdf::SdfManager::inst().find(id);
    const auto* path = dynamic_cast<const Path*>(object);
    const auto* step = dynamic_cast<const Instruction*>(object);
    QStringList words;
    if (step && step->getPath())
        path = step->getPath();
    if (path && path->getTask())
        words << text(path->getTask()->getName());
    if (path)
        words << text(path->getName());
    if (const MoveInst* move = step ? moveOf(*step) : nullptr)
        words << QObject::tr("%1 to %2").arg(programStep(*move), programTarget(*move));
    return words.join(QStringLiteral(" › "));
}

QIcon programIcon(const sdf::SdfObject& object)
{
    if (dynamic_cast<const Task*>(&object))
        return stepIcon(StepIcon::Program);
    if (dynamic_cast<const Path*>(&object))
        return stepIcon(StepIcon::Path);
    const MoveInst* move = moveOf(object);
    if (!move)
        return stepIcon(StepIcon::Other);
    if (move->getMotion() == Motion::Circular)
        return stepIcon(StepIcon::Circular);
    return stepIcon(move->isDashed() ? StepIcon::Dashed : StepIcon::Linear);
}

} // namespace vrkview
