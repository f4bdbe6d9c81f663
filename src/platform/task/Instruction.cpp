#include "platform/task/Instruction.h"

#include "platform/task/Path.h"

#include <stdexcept>

namespace vrk::task {
namespace {

using sdf::ModelType;

ModelType typeOf(Motion motion, MoveLine line)
{
    if (motion == Motion::Circular && line == MoveLine::Dashed)
        throw std::invalid_argument("a circular move is not dashed");
    if (motion == Motion::Circular)
        return ModelType::CircularMoveInst;
    return line == MoveLine::Dashed ? ModelType::DashedMoveInst : ModelType::MoveInst;
}

} // namespace

Instruction::Instruction(unsigned id, std::string text) : Instruction(ModelType::PlainInst, id, std::move(text)) {}

Instruction::Instruction(ModelType type, unsigned id, std::string text) : SdfObject(type, id, std::move(text)) {}

Instruction::~Instruction() = default;

Task* Instruction::getTask() const
{
    return path ? path->getTask() : nullptr;
}

std::optional<MoveInst*> Instruction::getPrevMoveInstruction() const
{
    return previousMove ? std::optional(previousMove) : std::nullopt;
}

MoveInst::MoveInst(unsigned id, std::string text, Motion motion, std::shared_ptr<DataItem> target, MoveLine line)
    : Instruction(typeOf(motion, line), id, std::move(text)), motion(motion)
{
    setTargetItem(std::move(target));
}

MoveInst::~MoveInst() = default;

bool MoveInst::isRobTargetInst() const
{
    return target->getModelType() == ModelType::RobTargetData;
}

bool MoveInst::asType(ModelType wanted) const
{
    return wanted == ModelType::MoveInst || Instruction::asType(wanted);
}

void MoveInst::setTargetItem(std::shared_ptr<DataItem> item)
{
    if (!item || !(item->asType(ModelType::RobTargetData) || item->asType(ModelType::JointTargetData)))
        throw std::invalid_argument("a move needs a robot target or a joint target");
    target = std::move(item);
}

void MoveInst::setCircleItem(std::shared_ptr<DataItem> item)
{
    if (item && motion != Motion::Circular)
        throw std::invalid_argument("only a circular move has a via point");
    circle = std::move(item);
}

} // namespace vrk::task
