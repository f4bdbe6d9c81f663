#include "platform/cam/GeodesicMeshUtils.h"

#include "platform/cam/MeshAdapter.h"
#include "platform/cam/Remesh.h"

#include <stdexcept>

namespace camcore {

void GeodesicMeshUtils::RemeshByEdgeLength(double length, const std::shared_ptr<cadcam::TMesh<double>>& source,
                                           std::shared_ptr<cadcam::TMesh<double>>& result)
{
    if (!source)
        throw std::invalid_argument("there is no mesh to cover anew");
    vrk::cam::RemeshOptions options;
    options.edgeLength = length;
    const auto covered = vrk::cam::remesh(vrk::cam::weldedOf(*source), options);
    result = std::make_shared<cadcam::TMesh<double>>(vrk::cam::meshOf<double>(covered.value())); // nobody can stop it
}

} // namespace camcore
