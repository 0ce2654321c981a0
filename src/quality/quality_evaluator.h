#pragma once

#include "model/sensor_model.h"
#include "quality/base_station_model.h"
#include "quality/base_station_pose.h"
#include "quality/direction_quality.h"
#include "quality/pose_covariance.h"
#include "quality/pose_vector.h"
#include "quality/sensor_visibility.h"

#include <Eigen/Core>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace kelvorig {

class TrackedSurface;

// The score runs from 0 to this, where this means that no orientation could be solved.
constexpr double kQualityScale = 1000.0;
class WorkerPool;
struct SweepHit;

// What solving one pose gives: the sensors seen and, for 1 to kMaxSensors of them, the
// diagonal of the pose covariance.
struct PoseSolve
{
    size_t visibleCount = 0;
    bool solvable = false; // 1 to kMaxSensors sensors visible: `variances` is set
    bool observed = false; // and every visible sensor yielded its two angles
    Vector6d variances;    // metres squared (0 to 2), then radians squared (3 to 5)
};

// A score range is used only when both its bounds are above 0; the command line's -1 for both
// leaves the evaluator's own.
constexpr bool QualityRangeApplies(double low, double high)
{
    return low > 0.0 && high > 0.0;
}

// Reduces a sensor layout to one tracking-quality score over sampled orientations (lower
// is better, 0 to 1000), and writes the analysis reports. Reads the layout by reference, so
// sensors moved in place count at the next evaluation. At most kMaxSensors sensors, with
// ids 0 to 31 for the coverage report's solvability check; callers refuse larger layouts.
// Holds pointers into itself, so it is neither copied nor moved.
class QualityEvaluator
{
public:
    static constexpr size_t kMaxSensors = 32;
    // The cost of a pose that yields no estimate: above the term's ceiling of 1 + scoreOffset,
    // so a failed pose always costs more than the worst pose that succeeds.
    static constexpr double kFailedPoseCost = 2.0;

    QualityEvaluator();
    ~QualityEvaluator();
    QualityEvaluator(const QualityEvaluator&) = delete;
    QualityEvaluator& operator=(const QualityEvaluator&) = delete;

    // Each of the three rebuilds the visibility state (and so clears everSeen); SetModel
    // must come first. The layout and the surface must outlive the evaluator's use.
    void SetModel(const SensorLayout& model);
    void SetSurface(const TrackedSurface* surface); // null: no occlusion
    void SetBaseStationModel(const BaseStationModel& baseStation);

    // `count` best-candidate orientations; scoreScale becomes 500 / count (infinite for 0).
    void SampleOrientations(int32_t count);
    // The analysis grid; `step` in radians, positive. scoreScale stays.
    void SampleAnalysisPoses(double fullTurn, double step);
    // Shapes each pose's term so that it swings through the middle of tanh between
    // pose errors `low` and `high` (metres plus radians).
    // Call only where QualityRangeApplies.
    void SetQualityRange(double low, double high);

    // scoreScale times the sum over poses of PoseTerm.
    double EvaluateQuality();

    // One pose's share of the score before scaling: 2.0 when no sensor is visible (or
    // more than kMaxSensors are) or the pose error is not a number, else
    // tanh(scoreGain·s + scoreBias) + scoreOffset, with s the pose error. Translation from
    // poseVector entries 0 to 2; writes the pose's rotation into entries 3 to 6.
    double PoseTerm(const BaseStationPose& pose);
    // The term of a pose with at least one visible sensor, from the diagonal of its pose
    // covariance: kFailedPoseCost when the pose error is not a number.
    double TermOfVariances(const Vector6d& variances) const;

    // The analysis tables, one row per pose, on `out`; unseen sensors named on `err`.
    // The coverage report turns the object in place; the sensitivity report carries it
    // around the base station and restores the translation afterwards. The rows are computed
    // on all workers of `workers` (each with a visibility state of its own) and written in
    // pose order, so the text is the same for any number of workers; so is the state the
    // evaluator is left in: everSeen of every pose, visible and poseVector of the last.
    // Given `directions`, the coverage report also leaves there one record per pose.
    void WriteCoverageReport(WorkerPool& workers, FILE* out, FILE* err,
                             std::vector<DirectionQuality>* directions = nullptr);
    void WriteSensitivityReport(WorkerPool& workers, FILE* out, FILE* err);

    // The pose solve of the score and both reports: puts q in the rotation slots of
    // `poseVector` (the translation is the caller's), updates `visibility` (null without a
    // model) and counts the visible sensors; for 1 to kMaxSensors of them puts the rotation
    // vector in the slots and computes the variances.
    PoseSolve SolvePose(SensorVisibility* visibility, PoseVector& poseVector, const Quaternion<double>& q,
                        const Triple<double>& rotationVector) const;

    PoseVector& poseVector() { return poseVector_; }
    const PoseVector& poseVector() const { return poseVector_; }
    const std::vector<BaseStationPose>& poses() const { return poses_; }
    const SensorVisibility* visibility() const { return visibility_.get(); }
    const Eigen::MatrixXd& measurementWeights() const { return measurementWeights_; }
    const BaseStationModel& baseStationModel() const { return baseStation_; }
    double scoreOffset() const { return scoreOffset_; }
    double scoreGain() const { return scoreGain_; }
    double scoreBias() const { return scoreBias_; }
    double scoreScale() const { return scoreScale_; }

private:
    void RebuildVisibility();
    // One row of each report for `pose`, appended to `text`. `visibility` (null without a
    // model), `poseVector` and `hits` are the working state, so that several threads can
    // write rows at once, each with state of its own.
    void AppendCoverageRow(const BaseStationPose& pose, double distance, SensorVisibility* visibility,
                           PoseVector& poseVector, std::vector<SweepHit>& hits, std::string& text,
                           DirectionQuality* direction = nullptr) const;
    void AppendSensitivityRow(const BaseStationPose& pose, const Triple<double>& start, SensorVisibility* visibility,
                              PoseVector& poseVector, std::string& text) const;
    double CoverageDistance() const;
    void WriteUnseenSensors(FILE* err) const;

    const SensorLayout* model_ = nullptr;
    const TrackedSurface* surface_ = nullptr;
    std::unique_ptr<SensorVisibility> visibility_;
    Eigen::MatrixXd measurementWeights_; // 64 by 64
    PoseVector poseVector_ = kInitialPoseVector;
    double scoreOffset_;
    double scoreGain_;
    double scoreBias_;
    BaseStationModel baseStation_;
    std::vector<BaseStationPose> poses_;
    double scoreScale_ = 1.0;
};

} // namespace kelvorig
