#include "platform/cam/MeshDecimator.h"

#include "platform/cam/MeshAdapter.h"
#include "platform/cam/Simplify.h"

#include <numbers>

namespace OpenMeshUtils {
namespace {

template <typename T>
cadcam::TMesh<T> decimated(const cadcam::TMesh<T>& mesh, vrk::cam::SimplifyOptions& options, bool keepsSharp)
{
    if (!keepsSharp)
        options.sharp = std::numbers::pi;
    return vrk::cam::meshOf<T>(vrk::cam::simplify(vrk::cam::weldedOf(mesh), options).value()); // nobody can stop it
}

} // namespace

template <typename T>
cadcam::TMesh<T> MeshDecimator::DecimateMesh(const cadcam::TMesh<T>& mesh, double tolerance, bool keepsSharp)
{
    vrk::cam::SimplifyOptions options;
    options.tolerance = tolerance;
    return decimated(mesh, options, keepsSharp);
}

template <typename T>
cadcam::TMesh<T> MeshDecimator::DecimateMeshToCount(const cadcam::TMesh<T>& mesh, std::size_t triangles,
                                                    bool keepsSharp)
{
    vrk::cam::SimplifyOptions options;
    options.triangles = triangles;
    return decimated(mesh, options, keepsSharp);
}

template cadcam::TMesh<double> MeshDecimator::DecimateMesh(const cadcam::TMesh<double>&, double, bool);
template cadcam::TMesh<double> MeshDecimator::DecimateMeshToCount(const cadcam::TMesh<double>&, std::size_t, bool);

} // namespace OpenMeshUtils
