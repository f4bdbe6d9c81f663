#include "platform/layout/Frame.h"

namespace vrk::layout {

Frame::Frame(unsigned id, std::string name, const rob::Posed& pose) : Frame(sdf::ModelType::Frame, id, std::move(name))
{
    setPose(pose);
}

Frame::Frame(sdf::ModelType type, unsigned id, std::string name) : SdfNode(type, id, std::move(name))
{
    setPose({});
}

Frame::~Frame() = default;

Wrist::Wrist(unsigned id, std::string name) : Frame(sdf::ModelType::Wrist, id, std::move(name)) {}

Wrist::~Wrist() = default;

} // namespace vrk::layout
