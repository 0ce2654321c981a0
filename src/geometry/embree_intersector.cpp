#include "geometry/embree_intersector.h"

#include "support/formatted_text.h"

#include <embree3/rtcore.h>

#include <cmath>

#include <sched.h>

namespace kelvorig {
namespace {

// Embree pins every thread that takes part in a build to one processor, the calling thread
// included. Our own thread must stay free to run anywhere (and so must the threads it starts
// later), so its processor set is put back once Embree is done with it.
class CallerProcessorsGuard
{
public:
    CallerProcessorsGuard() { valid = sched_getaffinity(0, sizeof processors, &processors) == 0; }
    ~CallerProcessorsGuard()
    {
        if (valid)
            sched_setaffinity(0, sizeof processors, &processors);
    }
    CallerProcessorsGuard(const CallerProcessorsGuard&) = delete;
    CallerProcessorsGuard& operator=(const CallerProcessorsGuard&) = delete;

private:
    cpu_set_t processors;
    bool valid = false;
};

const char* ErrorName(RTCError error)
{
    switch (error)
    {
    case RTC_ERROR_NONE:
        return "no error";
    case RTC_ERROR_INVALID_ARGUMENT:
        return "invalid argument";
    case RTC_ERROR_INVALID_OPERATION:
        return "invalid operation";
    case RTC_ERROR_OUT_OF_MEMORY:
        return "out of memory";
    case RTC_ERROR_UNSUPPORTED_CPU:
        return "unsupported CPU";
    case RTC_ERROR_CANCELLED:
        return "cancelled";
    default:
        return "unknown error";
    }
}

// A ray tracer that can't start or build leaves every occlusion and seat answer wrong, so
// init fails rather than leaving a structure that answers "no hit".
Status FailEmbree(const char* step, RTCError error)
{
    return Status::Failure(Formatted("Error: Embree failed while %s: %s.\n", step, ErrorName(error)));
}

// Embree as the process has it: created by the first init and never released, since its
// workers live to the end of the process. Without a device, every init fails with `failure`.
struct SharedEmbree
{
    RTCDevice device = nullptr;
    Status failure;
};

SharedEmbree CreateDevice()
{
    // One build worker per logical processor, started up front and pinned, as the tool has
    // always started them. note: pinning is neither faster nor slower here (the default anneal
    // of the bundled example took 2.5, 3.2 and 2.6 s pinned against 2.4, 3.1 and 2.7 s
    // unpinned), but Embree pins the calling thread too, which the guard in init undoes, and
    // the worker pool starts its threads with the process's own processor set for the same reason.
    RTCDevice device = rtcNewDevice("threads=0,set_affinity=1,start_threads=1");
    const RTCError error = rtcGetDeviceError(device);
    if (device == nullptr || error != RTC_ERROR_NONE)
        return {nullptr, FailEmbree("starting", error)};
    if (rtcGetDeviceProperty(device, RTC_DEVICE_PROPERTY_BACKFACE_CULLING_ENABLED) != 0)
    {
        rtcReleaseDevice(device);
        return {nullptr, Status::Failure("Error: this Embree library culls back faces; kelvorig needs two-sided "
                                         "triangles.\n")};
    }
    return {device, {}};
}

const SharedEmbree& Shared()
{
    static const SharedEmbree shared = CreateDevice();
    return shared;
}

// Embree takes a ray only when its origin and direction lie within this bound and its
// limits are numbers; anything else would trip its checks.
bool IsTraceable(const Eigen::Vector3f& origin, const Eigen::Vector3f& direction, float tnear, float tfar)
{
    constexpr float kLargestCoordinate = 1.844e18f;
    return (origin.array().abs() <= kLargestCoordinate).all() &&
           (direction.array().abs() <= kLargestCoordinate).all() && !std::isnan(tnear) && !std::isnan(tfar);
}

} // namespace

struct EmbreeIntersector::Scene
{
    RTCScene handle = nullptr;

    ~Scene()
    {
        if (handle != nullptr)
            rtcReleaseScene(handle);
    }
};

EmbreeIntersector::EmbreeIntersector() = default;
EmbreeIntersector::~EmbreeIntersector() = default;

Status EmbreeIntersector::init(const VertexMatrix& V, const TriangleMatrix& F)
{
    const CallerProcessorsGuard callerProcessors;
    scene.reset();
    const RTCDevice device = Shared().device;
    if (device == nullptr)
        return Shared().failure;
    if (V.size() == 0 || F.size() == 0 || V.cols() < 3 || F.cols() < 3)
        return {};

    RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    auto* positions = static_cast<float*>(rtcSetNewGeometryBuffer(
        geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, 3 * sizeof(float), static_cast<size_t>(V.rows())));
    auto* indices = static_cast<unsigned*>(rtcSetNewGeometryBuffer(
        geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 3 * sizeof(unsigned), static_cast<size_t>(F.rows())));
    if (positions == nullptr || indices == nullptr)
    {
        rtcReleaseGeometry(geometry);
        return FailEmbree("allocating the mesh", rtcGetDeviceError(device));
    }
    for (Eigen::Index row = 0; row < V.rows(); ++row)
    {
        for (Eigen::Index k = 0; k < 3; ++k)
            positions[3 * row + k] = V(row, k);
    }
    for (Eigen::Index row = 0; row < F.rows(); ++row)
    {
        for (Eigen::Index k = 0; k < 3; ++k)
            indices[3 * row + k] = static_cast<unsigned>(F(row, k));
    }
    rtcCommitGeometry(geometry);

    auto built = std::make_unique<Scene>();
    built->handle = rtcNewScene(device);
    rtcAttachGeometryByID(built->handle, geometry, 0);
    rtcReleaseGeometry(geometry);
    rtcCommitScene(built->handle);
    const RTCError error = rtcGetDeviceError(device);
    if (error != RTC_ERROR_NONE)
        return FailEmbree("building the ray structure", error);
    scene = std::move(built);
    return {};
}

bool EmbreeIntersector::intersectRay(const Eigen::Vector3f& origin, const Eigen::Vector3f& direction, RayHit& hit,
                                     float tnear, float tfar) const
{
    // note: a ray that isn't one (from a not-a-number normal, say) meets nothing.
    if (!scene || !IsTraceable(origin, direction, tnear, tfar))
        return false;
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);

    RTCRayHit query;
    query.ray.org_x = origin.x();
    query.ray.org_y = origin.y();
    query.ray.org_z = origin.z();
    query.ray.dir_x = direction.x();
    query.ray.dir_y = direction.y();
    query.ray.dir_z = direction.z();
    query.ray.tnear = tnear;
    query.ray.tfar = tfar;
    query.ray.time = 0.0f;
    query.ray.mask = 0xFFFFFFFFu;
    query.ray.id = 0;
    query.ray.flags = 0;
    query.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    query.hit.primID = RTC_INVALID_GEOMETRY_ID;
    query.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;

    rtcIntersect1(scene->handle, &context, &query);
    if (query.hit.primID == RTC_INVALID_GEOMETRY_ID)
        return false;
    hit.primitiveId = static_cast<int32_t>(query.hit.primID);
    hit.hitU = query.hit.u;
    hit.hitV = query.hit.v;
    hit.hitDistance = query.ray.tfar;
    return true;
}

bool EmbreeIntersector::isInitialised() const
{
    return scene != nullptr;
}

} // namespace kelvorig
