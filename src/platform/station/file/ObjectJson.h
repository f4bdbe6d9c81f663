#pragma once

#include "platform/sdf/SdfObject.h"
#include "platform/station/file/StationJson.h"

/// What all objects of a station file begin with, for writing. Not installed.
namespace vrk::station {

Json idAndName(const sdf::SdfObject& object);
/// Writes the parent at `key`; nothing for an object that lies on the world.
void addOwner(Json& json, const char* key, const sdf::SdfObject& object);
/// What begins an object with a place: id, name, pose and, unless it is a piece of its owner, the parent.
Json placed(const sdf::SdfObject& object);
/// An object whose place in the file says what it lies on.
Json bare(const sdf::SdfObject& object);
/// What begins a frame of a mechanism: id, name, pose, and at "on" the mechanism or the link that it lies on.
Json onPiece(const sdf::SdfObject& object);

} // namespace vrk::station
