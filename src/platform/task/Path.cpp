#include "platform/task/Path.h"

#include "platform/task/Instruction.h"

#include <algorithm>
#include <stdexcept>

namespace vrk::task {

Path::Path(unsigned id, std::string name) : SdfContainer(sdf::ModelType::Path, id, std::move(name)) {}

Path::~Path()
{
    for (const std::shared_ptr<Instruction>& instruction : instructions) {
        instruction->path = nullptr; // somebody may keep it
        instruction->previousMove = nullptr;
    }
}

void Path::addInstruction(std::shared_ptr<Instruction> instruction)
{
    addChild(*instruction);
    instruction->path = this;
    instruction->previousMove = moves.empty() ? nullptr : moves.back();
    if (instruction->isMoveInst())
        moves.push_back(static_cast<MoveInst*>(instruction.get()));
    instructions.push_back(std::move(instruction));
}

void Path::insertInstruction(std::size_t index, std::shared_ptr<Instruction> instruction)
{
    if (index > instructions.size())
        throw std::out_of_range("invalid vector subscript");
    instructions.insert(instructions.begin() + static_cast<std::ptrdiff_t>(index), std::move(instruction));
    relink();
}

void Path::removeInstruction(unsigned id)
{
    const auto found = std::ranges::find(instructions, id, [](const auto& held) { return held->getId(); });
    if (found == instructions.end())
        return;
    (*found)->path = nullptr;
    (*found)->previousMove = nullptr;
    instructions.erase(found);
    removeChild(id);
    relink();
}

/// Enters all instructions anew, in their order.
void Path::relink()
{
    std::vector<std::shared_ptr<Instruction>> all = std::move(instructions);
    instructions.clear();
    moves.clear();
    clearChildren();
    for (std::shared_ptr<Instruction>& instruction : all)
        addInstruction(std::move(instruction));
}

std::vector<std::shared_ptr<sdf::SdfObject>> Path::getPieces() const
{
    return {instructions.begin(), instructions.end()};
}

} // namespace vrk::task
