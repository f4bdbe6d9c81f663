#pragma once

#include "platform/sdf/SdfObject.h"
#include "platform/station/file/StationJson.h"

/// What all objects of a station file begin with, for writing. Not installed.
namespace vrk::station {

Json idAndName(const sdf::SdfObject& object);
/// Writes the parent at `key`; nothing for an object that lies on the world.
void addOwner(Json& json, const char* key, const sdf::SdfObject& object);
/// What begins an object that has a place of its own; pieces lie on their owners.
Json placed(const sdf::SdfObject& object);
/// An object whose place in the file says what it lies on.
Json bare(const sdf::SdfObject& object);
/// On the mechanism that the object belongs to or on a link of it.
Json onPiece(const sdf::SdfObject& object);

} // namespace vrk::station
