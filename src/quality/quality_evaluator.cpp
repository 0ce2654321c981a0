#include "quality/quality_evaluator.h"

#include "quality/measurement_weights.h"
#include "quality/orientation_sampling.h"

#include <cmath>

namespace kelvorig {
namespace {

// The default shape of a pose's term: tanh(100·s - 2) + tanh(2).
constexpr double kDefaultGain = 100.0;
constexpr double kDefaultBias = -2.0;

} // namespace

QualityEvaluator::QualityEvaluator()
    : measurementWeights_(MeasurementWeights()),
      scoreOffset_(-std::tanh(kDefaultBias)),
      scoreGain_(kDefaultGain),
      scoreBias_(kDefaultBias)
{
}

QualityEvaluator::~QualityEvaluator() = default;

void QualityEvaluator::SetModel(const SensorLayout& model)
{
    model_ = &model;
    RebuildVisibility();
}

void QualityEvaluator::SetSurface(const TrackedSurface* surface)
{
    surface_ = surface;
    RebuildVisibility();
}

void QualityEvaluator::SetBaseStationModel(const BaseStationModel& baseStation)
{
    baseStation_ = baseStation;
    RebuildVisibility();
}

void QualityEvaluator::RebuildVisibility()
{
    visibility_.reset();
    if (model_ != nullptr)
        visibility_ = std::make_unique<SensorVisibility>(*model_, surface_, baseStation_);
}

void QualityEvaluator::SampleOrientations(int32_t count)
{
    SampleBestCandidatePoses(count, poses_);
    scoreScale_ = (kQualityScale / static_cast<double>(poses_.size())) * 0.5;
}

void QualityEvaluator::SampleAnalysisPoses(double fullTurn, double step)
{
    SampleGridPoses(fullTurn, step, poses_);
}

void QualityEvaluator::SetQualityRange(double low, double high)
{
    // tanh's argument runs from -1.81845 at low to +1.81845 at high.
    scoreGain_ = 3.6369 / (high - low);
    scoreBias_ = -0.5 * (low + high) * scoreGain_;
    scoreOffset_ = -std::tanh(scoreBias_);
}

PoseSolve QualityEvaluator::SolvePose(SensorVisibility* visibility, PoseVector& poseVector, const Quaternion<double>& q,
                                      const Triple<double>& rotationVector) const
{
    PoseSolve solve;
    SetPoseQuaternion(poseVector, q);
    if (visibility)
        visibility->UpdateVisibility(poseVector);
    solve.visibleCount = visibility ? visibility->VisibleCount() : 0;
    if (solve.visibleCount == 0 || solve.visibleCount > kMaxSensors)
        return solve;

    SetPoseRotationVector(poseVector, rotationVector);
    const int rows = static_cast<int>(2 * solve.visibleCount);
    ObservationJacobian jacobian = ObservationJacobian::Zero(rows, 6);
    std::array<double, kMaxObservationRows> residuals;
    solve.observed = BuildObservationJacobian(*visibility, poseVector.data(), rows, residuals.data(), &jacobian);
    solve.variances = PoseCovarianceDiagonal(jacobian, measurementWeights_);
    solve.solvable = true;
    return solve;
}

double QualityEvaluator::PoseTerm(const BaseStationPose& pose)
{
    const PoseSolve solve = SolvePose(visibility_.get(), poseVector_, pose.quaternion, pose.rotationVector);
    if (!solve.solvable)
        return kFailedPoseCost;
    // note: a sweep that fails leaves J zero, H singular and the error not a number.
    return TermOfVariances(solve.variances);
}

double QualityEvaluator::TermOfVariances(const Vector6d& variances) const
{
    // Metres and radians added as they are, unweighted.
    const double poseError =
        std::sqrt(variances[0] + variances[1] + variances[2]) + std::sqrt(variances[3] + variances[4] + variances[5]);
    if (std::isnan(poseError))
        return kFailedPoseCost;
    return std::tanh(scoreGain_ * poseError + scoreBias_) + scoreOffset_;
}

double QualityEvaluator::EvaluateQuality()
{
    double sum = 0.0;
    for (const BaseStationPose& pose : poses_)
        sum += PoseTerm(pose);
    return scoreScale_ * sum;
}

} // namespace kelvorig
