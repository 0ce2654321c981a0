#pragma once

#include "geometry/embree_intersector.h"
#include "geometry/mesh_matrices.h"
#include "geometry/seat_rules.h"
#include "geometry/surface_loading.h"
#include "support/random_draws.h"

#include <Eigen/Core>

#include <cstdint>
#include <string>
#include <vector>

namespace kelvorig {

// The device's shape: the sensor surface in metres (the only place sensors may sit), and
// ray queries against the sensor surface and all obstacles together.
class TrackedSurface
{
public:
    // Reads the meshes; the engine is seeded from time and process id.
    // `loading` says how the sensor surface's file is read; what the mesh checks find wrong
    // with it is kept in warnings().
    TrackedSurface(const std::string& surfacePath, const std::vector<std::string>& obstaclePaths,
                   const SurfaceLoading& loading = {});
    // Same, with a fixed seed for the engine's final reseeding (tests, benchmarks).
    TrackedSurface(const std::string& surfacePath, const std::vector<std::string>& obstaclePaths, uint32_t seed,
                   const SurfaceLoading& loading = {});

    // False when a mesh couldn't be read or the sensor surface has no usable facets; such
    // a surface must not be used.
    bool isBuilt() const;
    // Why the surface is not built, where a reader or the ray engine said so (may be empty).
    const Status& buildFailure() const { return buildFailure_; }
    // True when the build failed in the ray engine.
    bool rayEngineFailed() const { return rayEngineFailed_; }
    // The mesh checks' warnings about the sensor surface, whole lines; empty for a sound mesh.
    const std::string& warnings() const { return warnings_; }

    const std::string& surfacePath() const;
    const std::vector<std::string>& obstaclePaths() const;
    // Metres per file unit: 1.0 or 0.001, decided by the sensor surface alone.
    double unitScale() const;
    const EmbreeIntersector& intersector() const;

    // Sensor surface only. vertices: 3 per facet by 3, metres. faceNormals: facets by 3,
    // unit length (not a number where the file's normal was zero). triangles: facets by 3
    // or more, rows of vertices.
    const VertexMatrix& vertices() const { return vertices_; }
    const NormalMatrix& faceNormals() const { return faceNormals_; }
    const TriangleMatrix& triangles() const { return triangles_; }
    // Square metres; entry i is the area of facets 0 to i.
    double totalArea() const { return totalArea_; }
    const std::vector<double>& cumulativeArea() const { return cumulativeArea_; }
    float cosMaxSurfaceAngle() const { return cosMaxSurfaceAngle_; }

    // Seating and sampling. Positions and normals are metres, mesh frame, 32-bit floats.
    void SetMaxSurfaceAngle(double degrees);
    // Every draw takes its words from `rng`, by default the surface's own engine. Given an
    // engine of its own, each caller samples the surface without changing it, so that
    // several anneals can share one surface side by side.
    // A facet drawn in proportion to its area (0 on an empty table).
    int32_t PickTriangle(RandomEngine& rng) const;
    int32_t PickTriangle() { return PickTriangle(rng_); }
    // A point drawn uniformly on the facet.
    Eigen::Vector3f SamplePoint(int32_t triangle, RandomEngine& rng) const;
    Eigen::Vector3f SamplePoint(int32_t triangle) { return SamplePoint(triangle, rng_); }
    // The facet normal, tilted at random within cosMaxSurfaceAngle; draws nothing when no
    // tilt is allowed.
    Eigen::Vector3f SampleNormal(int32_t triangle, RandomEngine& rng) const;
    Eigen::Vector3f SampleNormal(int32_t triangle) { return SampleNormal(triangle, rng_); }
    // True when four 6 mm chords of a disc 1 mm under the position meet no triangle.
    bool CanSeatSensor(const Eigen::Vector3f& position, const Eigen::Vector3f& normal) const;
    // Draws seats until one passes CanSeatSensor and the seat rules, if set, keeping clear of
    // `neighbours` (may be null). When no seat can be found it fails, naming the test that
    // left none.
    Status SampleSeat(Eigen::Vector3f& position, Eigen::Vector3f& normal, RandomEngine& rng,
                      const SeatNeighbours* neighbours = nullptr) const;
    Status SampleSeat(Eigen::Vector3f& position, Eigen::Vector3f& normal) { return SampleSeat(position, normal, rng_); }
    // A seat whose facet normal is close to the incoming `normal`: the first with a dot
    // product above `limit`, else the best of 20 that pass the seat test. Fails as SampleSeat.
    Status SampleSeatNear(Eigen::Vector3f& position, Eigen::Vector3f& normal, float limit, RandomEngine& rng,
                          const SeatNeighbours* neighbours = nullptr) const;
    Status SampleSeatNear(Eigen::Vector3f& position, Eigen::Vector3f& normal, float limit)
    {
        return SampleSeatNear(position, normal, limit, rng_);
    }
    // Rules every later seat draw applies on top of CanSeatSensor; null (the default): none.
    // They must outlive the draws.
    void SetSeatRules(const SeatRules* rules) { seatRules_ = rules; }
    // The surface's own engine, seeded by the constructor.
    RandomEngine& engine() { return rng_; }
    // True when some surface lies from 4 mm behind to 0.9 mm in front of the position along
    // the normal, and none from 1.1 mm to 11 mm in front of it.
    bool IsOnSensorSurface(const Eigen::Vector3f& position, const Eigen::Vector3f& normal) const;

private:
    Status LoadSensorSurface(const SurfaceLoading& loading);
    Status AddObstacles();
    void BuildAreaTable();
    // Both count the pick's fate in `refusals`. The chord test of CanSeatSensor:
    bool PassesSeatTest(const Eigen::Vector3f& position, const Eigen::Vector3f& normal, SeatRefusals& refusals) const;
    // True when the seat rules, if any, allow the seat.
    bool PassesSeatRules(const Eigen::Vector3f& position, const Eigen::Vector3f& normal,
                         const SeatNeighbours* neighbours, SeatRefusals& refusals) const;
    Status NoSeat(const SeatRefusals& refusals) const; // the failure naming the test that left no seat

    std::string surfacePath_;
    std::vector<std::string> obstaclePaths_;
    VertexMatrix vertices_;
    NormalMatrix faceNormals_;
    TriangleMatrix triangles_;
    double unitScale_ = 1.0;
    bool rayEngineFailed_ = false;
    Status buildFailure_;
    std::string warnings_;
    float cosMaxSurfaceAngle_ = 1.0f;
    EmbreeIntersector intersector_;
    double totalArea_ = 0.0;
    UniformRange<double> areaPick_{0.0, 1.0};
    UniformRange<float> unitPick_{0.0f, 1.0f};
    RandomEngine rng_{kFixedSeed};
    std::vector<double> cumulativeArea_;
    const SeatRules* seatRules_ = nullptr;
};

} // namespace kelvorig
