#include "quality/quality_evaluator.h"
#include "support/formatted_text.h"

#include "quality/pose_solvability.h"

#include <cmath>

namespace kelvorig {
namespace {

// Both the default and the ceiling of a reported error: no usable estimate, or one worse
// than a metre or a radian.
constexpr double kErrorCeiling = 1.0;

bool IsPastCeiling(double error)
{
    return std::isnan(error) || error > kErrorCeiling;
}

struct SolvabilityPercent
{
    int solvable;
    int failure;
};

SolvabilityPercent RateSolvability(const SensorLayout& layout, const std::vector<SweepHit>& hits)
{
    constexpr size_t kFewHits = 8;
    PoseSolvability solvability(layout, hits);
    if (!solvability.HasEnoughHits())
        return {0, 100};
    if (!solvability.IsGeometrySolvable())
        return {96, 4};
    if (hits.size() <= kFewHits)
        return {99, 1};
    return {100, 0};
}

} // namespace

void QualityEvaluator::WriteUnseenSensors(FILE* err) const
{
    if (!visibility_)
        return;
    for (size_t i = 0; i < visibility_->everSeen.size(); ++i)
    {
        if (!visibility_->everSeen[i])
            std::fprintf(err, "did not see sensor id %d\n", model_->sensorIds[i]);
    }
}

double QualityEvaluator::CoverageDistance() const
{
    return std::sqrt(poseVector_[0] * poseVector_[0] + poseVector_[1] * poseVector_[1] +
                     poseVector_[2] * poseVector_[2]);
}

void QualityEvaluator::AppendCoverageRow(const BaseStationPose& pose, double distance, SensorVisibility* visibility,
                                         PoseVector& poseVector, std::vector<SweepHit>& hits, std::string& text,
                                         DirectionQuality* direction) const
{
    const PoseSolve solve = SolvePose(visibility, poseVector, pose.quaternion, pose.rotationVector);
    const size_t visibleCount = solve.visibleCount;
    double positionError = kErrorCeiling;
    double rotationError = kErrorCeiling;
    if (solve.solvable && solve.observed)
    {
        positionError = std::sqrt(solve.variances[0] + solve.variances[1] + solve.variances[2]);
        rotationError = std::sqrt(solve.variances[3] + solve.variances[4] + solve.variances[5]);
    }

    hits.clear();
    if (visibility)
    {
        for (size_t i = 0; i < visibility->visible.size(); ++i)
        {
            if (!visibility->visible[i])
                continue;
            hits.push_back(SweepHit{model_->sensorIds[i], 0});
            hits.push_back(SweepHit{model_->sensorIds[i], 1});
        }
    }
    SolvabilityPercent percent = model_ != nullptr ? RateSolvability(*model_, hits) : SolvabilityPercent{0, 100};
    // An error past the ceiling means no usable estimate, whatever the geometry says.
    if (IsPastCeiling(positionError))
    {
        positionError = kErrorCeiling;
        percent = {0, 100};
    }
    if (IsPastCeiling(rotationError))
    {
        rotationError = kErrorCeiling;
        percent = {0, 100};
    }

    AppendFormatted(text, "%lf %lf %0.1lf %0.1lf %d 0 0 0 %d %d %lf %lf", pose.gridYaw, pose.gridPitch, distance, 0.0,
                    static_cast<int>(visibleCount), percent.solvable, percent.failure, rotationError, positionError);
    if (visibility)
    {
        for (size_t i = 0; i < visibility->visible.size(); ++i)
        {
            if (visibility->visible[i])
                AppendFormatted(text, " %d", model_->sensorIds[i]);
        }
    }
    text += '\n';
    if (direction)
    {
        *direction =
            DirectionQuality{pose.gridYaw,  pose.gridPitch, 0, static_cast<int32_t>(visibleCount), percent.solvable,
                             positionError, rotationError};
        for (size_t i = 0; visibility && i < visibility->visible.size() && i < 32; ++i)
            direction->visibleMask |= visibility->visible[i] ? 1u << i : 0u;
    }
}

void QualityEvaluator::AppendSensitivityRow(const BaseStationPose& pose, const Triple<double>& start,
                                            SensorVisibility* visibility, PoseVector& poseVector,
                                            std::string& text) const
{
    // The whole object swings around the base station as one rigid body: its aspect stays,
    // only its place in the sweep changes.
    const Quaternion<double>& q = pose.quaternion;
    const Triple<double> moved = RotateByUnitQuaternion(q, start);
    for (int i = 0; i < 3; ++i)
        poseVector[i] = moved[i];
    const PoseSolve solve = SolvePose(visibility, poseVector, q, RotationVectorFromQuaternion(q));

    Triple<double> errors = {kErrorCeiling, kErrorCeiling, kErrorCeiling};
    if (solve.solvable && solve.observed)
    {
        for (int i = 0; i < 3; ++i)
            errors[i] = std::sqrt(solve.variances[i]);
    }
    for (double& error : errors)
    {
        if (IsPastCeiling(error))
            error = kErrorCeiling;
    }
    AppendFormatted(text, "%lf %lf %lf %lf %lf\n", pose.gridYaw, pose.gridPitch, errors[0], errors[1], errors[2]);
}

} // namespace kelvorig
