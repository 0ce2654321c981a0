#include "quality/orientation_sampling.h"

#include "support/angles.h"
#include "support/progress_stream.h"
#include "support/random_draws.h"
#include "support/stop_request.h"
#include "support/vector_math.h"

#include <cmath>
#include <ostream>

namespace kelvorig {
namespace {

constexpr int kCandidatesPerPoint = 10;
constexpr double kNoNeighbour = 9999.0; // squared distance before any neighbour is seen
// Sampling is quadratic in the count: 25,000 take about 3 s on a 2-core development machine,
// 10^6 over an hour. From this count on, progress is shown on the progress stream.
constexpr int32_t kCountWorthProgress = 25'000;

// One line per tenth of the work done, which grows with the square of the points made.
class SamplingProgress
{
public:
    explicit SamplingProgress(int32_t count)
        : count_(count),
          stream_(count >= kCountWorthProgress ? ProgressStream() : nullptr)
    {
    }

    void Made(int32_t points)
    {
        if (stream_ == nullptr)
            return;
        const double fraction = static_cast<double>(points) / count_;
        const int tenths = static_cast<int>(10.0 * fraction * fraction);
        if (tenths > tenths_)
        {
            tenths_ = tenths;
            *stream_ << "sampling " << count_ << " orientations: " << 10 * tenths << "% done\n" << std::flush;
        }
    }

private:
    int32_t count_;
    std::ostream* stream_;
    int tenths_ = 0;
};

Triple<double> DrawSphereDirection(RandomEngine& engine)
{
    const double z = DrawUnit(engine) * 2.0 - 1.0;
    const double phi = DrawUnit(engine) * kFullTurn - kPi;
    const double r = std::sqrt(1.0 - z * z);
    return {std::cos(phi) * r, std::sin(phi) * r, z};
}

double NearestSquaredDistance(const Triple<double>& candidate, const std::vector<BaseStationPose>& poses)
{
    double nearest = kNoNeighbour;
    for (const BaseStationPose& pose : poses)
    {
        const double dx = candidate[0] - pose.direction[0];
        const double dy = candidate[1] - pose.direction[1];
        const double dz = candidate[2] - pose.direction[2];
        const double squared = dx * dx + dy * dy + dz * dz;
        if (squared < nearest)
            nearest = squared;
    }
    return nearest;
}

} // namespace

void SampleBestCandidatePoses(int32_t count, std::vector<BaseStationPose>& poses)
{
    poses.clear();
    RandomEngine engine(kFixedSeed);
    SamplingProgress progress(count);
    // note: a stop request ends the list short; whoever asked for it looks at the request too.
    for (int32_t i = 0; i < count && !StopRequested(); ++i)
    {
        progress.Made(i);
        Triple<double> chosen = {0.0, 0.0, 1.0};
        if (i > 0)
        {
            double best = 0.0;
            for (int candidate = 0; candidate < kCandidatesPerPoint; ++candidate)
            {
                const Triple<double> direction = DrawSphereDirection(engine);
                const double nearest = NearestSquaredDistance(direction, poses);
                // A later tie doesn't replace an earlier candidate.
                if (nearest > best)
                {
                    best = nearest;
                    chosen = direction;
                }
            }
        }
        BaseStationPose pose = PoseTowardDirection(chosen);
        pose.gridPitch = pose.rotationVector[0];
        pose.gridYaw = pose.rotationVector[1];
        poses.push_back(pose);
    }
    progress.Made(static_cast<int32_t>(poses.size()));
}

void SampleGridPoses(double fullTurn, double step, std::vector<BaseStationPose>& poses)
{
    std::vector<double> ringAngles;
    std::vector<Triple<double>> ring;
    double theta = -kHalfPi;
    do
    {
        ringAngles.push_back(theta);
        ring.push_back({0.0, std::sin(theta), std::cos(theta)});
        theta += step;
    } while (theta <= kHalfPi);

    poses.clear();
    const double limit = fullTurn * 0.5;
    for (double phi = fullTurn * -0.5; phi <= limit && !StopRequested(); phi += step)
    {
        const double c = std::cos(phi), s = std::sin(phi);
        const Triple<double> rows[3] = {{c, 0.0, s}, {0.0, 1.0, 0.0}, {-s, 0.0, c}};
        for (size_t k = 0; k < ring.size(); ++k)
        {
            const Triple<double>& u = ring[k];
            Triple<double> v;
            for (int i = 0; i < 3; ++i)
                v[i] = Dot(rows[i], u);
            BaseStationPose pose = PoseTowardDirection(v);
            pose.gridPitch = ringAngles[k];
            pose.gridYaw = phi;
            poses.push_back(pose);
        }
    }
}

double OrientationSpacing(int32_t nOrientations)
{
    return 2.0 * std::asin(1.9 / std::sqrt(static_cast<double>(nOrientations)));
}

} // namespace kelvorig
