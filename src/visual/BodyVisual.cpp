#include "visual/BodyVisual.h"

namespace vrk::visual {

void BodyVisual::setVisible(bool nowVisible, bool recursive)
{
    Visual::setVisible(nowVisible, recursive);
}

} // namespace vrk::visual
