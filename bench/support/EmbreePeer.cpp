#include "bench/support/EmbreePeer.h"

#include <atomic>
#include <map>
#include <stdexcept>
#include <string>

namespace vrk::bench {
namespace {

struct Device {
    RTCDevice device = nullptr;
    std::atomic<std::ptrdiff_t> held{0};
};

Device& deviceOf(unsigned threads)
{
    static std::map<unsigned, Device> devices;
    Device& mine = devices[threads];
    if (!mine.device) {
        mine.device = rtcNewDevice(("threads=" + std::to_string(threads)).c_str());
        if (!mine.device)
            throw std::runtime_error("Embree has no device");
        rtcSetDeviceMemoryMonitorFunction(
            mine.device,
            [](void* held, ssize_t bytes, bool) {
                *static_cast<std::atomic<std::ptrdiff_t>*>(held) += bytes;
                return true;
            },
            &mine.held);
    }
    return mine;
}

void boundsOfBox(const RTCBoundsFunctionArguments* arguments)
{
    const visual::Box& box = static_cast<const visual::Box*>(arguments->geometryUserPtr)[arguments->primID];
    RTCBounds& out = *arguments->bounds_o;
    out.lower_x = box.min.x;
    out.lower_y = box.min.y;
    out.lower_z = box.min.z;
    out.upper_x = box.max.x;
    out.upper_y = box.max.y;
    out.upper_z = box.max.z;
}

} // namespace

EmbreeScene::EmbreeScene(unsigned threads)
    : device(deviceOf(threads).device), scene(rtcNewScene(device), [](RTCScene s) { rtcReleaseScene(s); })
{
    rtcSetSceneFlags(scene.get(), RTC_SCENE_FLAG_ROBUST);
}

void EmbreeScene::attach(RTCGeometry geometry)
{
    rtcCommitGeometry(geometry);
    rtcAttachGeometry(scene.get(), geometry);
    rtcReleaseGeometry(geometry);
}

void EmbreeScene::addTriangles(std::span<const rob::Posf> vertices, std::span<const unsigned> indices)
{
    const RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, vertices.data(), 0,
                               sizeof(rob::Posf), vertices.size());
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, indices.data(), 0,
                               3 * sizeof(unsigned), indices.size() / 3);
    attach(geometry);
}

void EmbreeScene::addInstance(const EmbreeScene& of, const float* toWorld)
{
    const RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_INSTANCE);
    rtcSetGeometryInstancedScene(geometry, of.scene.get());
    rtcSetGeometryTransform(geometry, 0, RTC_FORMAT_FLOAT3X4_COLUMN_MAJOR, toWorld);
    attach(geometry);
}

void EmbreeScene::addBoxes(std::span<const visual::Box> boxes)
{
    const RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_USER);
    rtcSetGeometryUserPrimitiveCount(geometry, static_cast<unsigned>(boxes.size()));
    rtcSetGeometryUserData(geometry, const_cast<visual::Box*>(boxes.data()));
    rtcSetGeometryBoundsFunction(geometry, boundsOfBox, nullptr);
    rtcSetGeometryIntersectFunction(geometry, [](const RTCIntersectFunctionNArguments*) {});
    attach(geometry);
}

void EmbreeScene::build()
{
    rtcCommitScene(scene.get());
}

EmbreeScene::Hit EmbreeScene::nearest(const visual::Ray& ray) const
{
    RTCRayHit query{};
    query.ray.org_x = ray.origin.x;
    query.ray.org_y = ray.origin.y;
    query.ray.org_z = ray.origin.z;
    query.ray.dir_x = ray.direction.x;
    query.ray.dir_y = ray.direction.y;
    query.ray.dir_z = ray.direction.z;
    query.ray.tfar = std::numeric_limits<float>::infinity();
    query.ray.mask = ~0u;
    query.hit.geomID = query.hit.instID[0] = none;
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    rtcIntersect1(scene.get(), &context, &query);
    if (query.hit.geomID == none)
        return {};
    return {query.hit.instID[0], query.hit.primID, query.ray.tfar};
}

std::size_t EmbreeScene::bytesHeld(unsigned threads)
{
    return static_cast<std::size_t>(deviceOf(threads).held.load());
}

} // namespace vrk::bench
