#include "view/FocusBox.h"

#include "task/MoveInstructionVisual.h"

namespace vrk::visual {

std::optional<rob::PosTemplate<float>> targetOfMove(const Visual& visual)
{
    const auto* move = dynamic_cast<const MoveInstructionVisual*>(&visual);
    return move ? std::optional(move->getTargetInWorld()) : std::nullopt;
}

} // namespace vrk::visual
