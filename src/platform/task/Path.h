#pragma once

#include "platform/sdf/SdfObject.h"

#include <memory>
#include <vector>

namespace vrk::task {

class DataItem;
class Instruction;
class MoveInst;
class Task;

/// A procedure of a robot program: instructions in the order of the program's text. Its children are the instructions.
///
/// Owner: its task. Thread: as every object of the model. A path that stands in the station is edited under the manager's
/// unique lock; what enters it then has to enter the object table as well.
class VRK_EXPORT Path : public sdf::SdfContainer {
public:
    Path(unsigned id, std::string name);
    ~Path() override;

    /// The task that the path is of; null before it enters one.
    Task* getTask() const { return task; }

    const std::vector<std::shared_ptr<Instruction>>& getInstructions() const { return instructions; }
    /// Those of them that are moves, in program order.
    const std::vector<MoveInst*>& getMoveInstructions() const { return moves; }
    std::size_t moveInstructionCount() const { return moves.size(); }

    /// Appends in constant time.
    void addInstruction(std::shared_ptr<Instruction> instruction);
    /// Puts an instruction before the one at `index`, or at the end.
    /// @throws std::out_of_range "invalid vector subscript" for an index past the end.
    void insertInstruction(std::size_t index, std::shared_ptr<Instruction> instruction);
    /// An unknown id does nothing.
    void removeInstruction(unsigned id);

    std::vector<std::shared_ptr<sdf::SdfObject>> getPieces() const override;

private:
    friend class Task;

    void relink();

    Task* task = nullptr;
    std::vector<std::shared_ptr<Instruction>> instructions;
    std::vector<MoveInst*> moves;
};

} // namespace vrk::task
