#include "station/StationRecords.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"

#include <vector>

namespace vrk::visual {

std::unordered_set<unsigned> hiddenThingsOf(const layout::StationContent& station)
{
    std::unordered_set<unsigned> things;
    std::unordered_set<unsigned> groups; // that were looked into: one may hold itself
    std::vector<unsigned> open(station.visibilities);
    while (!open.empty()) {
        const unsigned id = open.back();
        open.pop_back();
        const sdf::SdfObject* object = sdf::SdfManager::inst().find(id);
        if (!object || !sdf::isGroup(object->getModelType())) {
            things.insert(id);
            continue;
        }
        if (!groups.insert(id).second)
            continue;
        std::vector<sdf::SdfObject*> members;
        object->getMembers(members);
        for (const sdf::SdfObject* member : members)
            open.push_back(member->getId());
    }
    return things;
}

} // namespace vrk::visual
