#pragma once

#include "TargetFixture.h"
#include "TestProgram.h"

#include "task/MoveInstructionVisual.h"
#include "task/PathArrowVisual.h"
#include "task/PathLineVisual.h"
#include "task/PathSegments.h"
#include "task/PathVisual.h"
#include "visual/DynamicLines.h"

#include <vector>

namespace vrk::test {

/// A scene and a program whose visuals are not there yet.
template <typename Base>
class WithProgram : public WithTargets<Base> {
protected:
    /// The whole program, as a load shows it.
    void show() { this->scene.buildTask(program.task->getId()); }

    visual::PathVisual* pathVisual(unsigned id) const
    {
        return dynamic_cast<visual::PathVisual*>(visual::Scene::GetVisual(id));
    }
    visual::PathVisual* pathVisual() const { return pathVisual(program.path->getId()); }
    visual::MoveInstructionVisual* visualOf(const task::MoveInst* move) const
    {
        return dynamic_cast<visual::MoveInstructionVisual*>(visual::Scene::GetVisual(move->getId()));
    }
    visual::Visual* frameVisual() const { return visual::Scene::GetVisual(program.frame->getId()); }
    const std::vector<visual::PathLineVisual*>& lines() const { return pathVisual()->getLines(); }
    static const std::vector<rob::Posf>& pointsOf(const visual::PathLineVisual* line)
    {
        return line->getLine()->getPoints();
    }
    static std::vector<visual::Visual*> childrenOf(const visual::Visual* visual)
    {
        return {visual->getChildren().begin(), visual->getChildren().end()};
    }
    /// The size of an arrow, 1 for that of its mesh; 0 for none.
    static float arrowScale(const visual::MoveInstructionVisual* move)
    {
        return move->getArrow() ? scalesOf(*move->getArrow()).front().x : 0;
    }
    static std::string materialOf(const visual::PathLineVisual* line)
    {
        return line->getLine()->getMaterial()->getName();
    }

    TestProgram program;
};

} // namespace vrk::test
