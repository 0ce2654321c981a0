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

size_t QualityEvaluator::VisibleCount() const
{
    return visibility_ ? visibility_->VisibleCount() : 0;
}

bool QualityEvaluator::PoseVariances(const SensorVisibility& visibility, const PoseVector& pose, int rows,
                                     Vector6d& variances) const
{
    ObservationJacobian jacobian = ObservationJacobian::Zero(rows, 6);
    std::array<double, kMaxObservationRows> residuals;
    const bool observed = BuildObservationJacobian(visibility, pose.data(), rows, residuals.data(), &jacobian);
    variances = PoseCovarianceDiagonal(jacobian, measurementWeights_);
    return observed;
}

double QualityEvaluator::PoseTerm(const BaseStationPose& pose)
{
    SetPoseQuaternion(poseVector_, pose.quaternion);
    if (visibility_)
        visibility_->UpdateVisibility(poseVector_);

    const size_t visibleCount = VisibleCount();
    if (visibleCount == 0 || visibleCount > kMaxSensors)
        return kFailedPoseCost;

    SetPoseRotationVector(poseVector_, pose.rotationVector);
    Vector6d variances;
    // note: a sweep that fails leaves J zero, H singular and the error not a number.
    PoseVariances(*visibility_, poseVector_, static_cast<int>(2 * visibleCount), variances);
    return TermOfVariances(variances);
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
