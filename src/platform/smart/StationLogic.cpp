#include "platform/smart/StationLogic.h"

#include "platform/sdf/SdfManager.h"

namespace vrk::smartcomp {

StationLogic::StationLogic() : SdfObject(sdf::ModelType::Station, sdf::SdfManager::stationId, "station") {}

StationLogic* StationLogic::inst()
{
    static StationLogic* const station = new StationLogic; // never freed, like the object table
    return station;
}

} // namespace vrk::smartcomp
