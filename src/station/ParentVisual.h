#pragma once

namespace sdf {
class SdfObject;
}

namespace vrk::visual {

class Visual;

/// The visual that a model object's visual hangs on: that of its parent id. No parent, the station itself, and a parent
/// that has no visual, all mean the world: an owner that is missing does not stop a load. Thread: render thread.
Visual* resolveParent(const sdf::SdfObject& object);
/// The same for a bare parent id.
Visual* resolveParent(unsigned parentId);
/// Whether the id stands for the world: 0, or that of the station itself.
bool isWorldId(unsigned parentId);

} // namespace vrk::visual
