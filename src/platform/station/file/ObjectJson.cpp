#include "platform/station/file/ObjectJson.h"

#include "platform/sdf/SdfManager.h"

namespace vrk::station {

Json idAndName(const sdf::SdfObject& object)
{
    return {{"id", object.getId()}, {"name", object.getName()}};
}

void addOwner(Json& json, const char* key, const sdf::SdfObject& object)
{
    if (object.getParentId() == sdf::SdfManager::stationId)
        json[key] = "station";
    else if (object.getParentId() != 0)
        json[key] = object.getParentId();
}

Json placed(const sdf::SdfObject& object)
{
    Json json = idAndName(object);
    if (object.isStandalone())
        addOwner(json, "parent", object);
    json["pose"] = jsonOf(object.getPose());
    return json;
}

Json bare(const sdf::SdfObject& object)
{
    Json json = idAndName(object);
    json["pose"] = jsonOf(object.getPose());
    return json;
}

Json onPiece(const sdf::SdfObject& object)
{
    Json json = idAndName(object);
    json["on"] = object.getParentId();
    json["pose"] = jsonOf(object.getPose());
    return json;
}

} // namespace vrk::station
