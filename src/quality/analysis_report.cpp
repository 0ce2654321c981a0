#include "quality/quality_evaluator.h"

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

void QualityEvaluator::WriteCoverageReport(FILE* out, FILE* err)
{
    const double distance =
        std::sqrt(poseVector_[0] * poseVector_[0] + poseVector_[1] * poseVector_[1] + poseVector_[2] * poseVector_[2]);
    std::vector<SweepHit> hits;
    for (const BaseStationPose& pose : poses_)
    {
        const Quaternion<double>& q = pose.quaternion;
        poseVector_[3] = q.w;
        poseVector_[4] = q.x;
        poseVector_[5] = q.y;
        poseVector_[6] = q.z;
        if (visibility_)
            visibility_->UpdateVisibility(poseVector_);

        double positionError = kErrorCeiling;
        double rotationError = kErrorCeiling;
        const size_t visibleCount = VisibleCount();
        if (visibleCount != 0 && visibleCount <= kMaxSensors)
        {
            for (int i = 0; i < 3; ++i)
                poseVector_[3 + i] = pose.rotationVector[i];
            Vector6d variances;
            if (PoseVariances(static_cast<int>(2 * visibleCount), variances))
            {
                positionError = std::sqrt(variances[0] + variances[1] + variances[2]);
                rotationError = std::sqrt(variances[3] + variances[4] + variances[5]);
            }
        }

        hits.clear();
        if (visibility_)
        {
            for (size_t i = 0; i < visibility_->visible.size(); ++i)
            {
                if (!visibility_->visible[i])
                    continue;
                hits.push_back(SweepHit{model_->sensorIds[i], 0});
                hits.push_back(SweepHit{model_->sensorIds[i], 1});
            }
        }
        SolvabilityPercent percent =
            model_ != nullptr ? RateSolvability(*model_, hits) : SolvabilityPercent{0, 100};
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

        std::fprintf(out, "%lf %lf %0.1lf %0.1lf %d 0 0 0 %d %d %lf %lf", pose.gridYaw, pose.gridPitch, distance, 0.0,
                     static_cast<int>(visibleCount), percent.solvable, percent.failure, rotationError, positionError);
        if (visibility_)
        {
            for (size_t i = 0; i < visibility_->visible.size(); ++i)
            {
                if (visibility_->visible[i])
                    std::fprintf(out, " %d", model_->sensorIds[i]);
            }
        }
        std::fprintf(out, "\n");
    }
    WriteUnseenSensors(err);
}

void QualityEvaluator::WriteSensitivityReport(FILE* out, FILE* err)
{
    const Triple<double> start = {poseVector_[0], poseVector_[1], poseVector_[2]};
    for (const BaseStationPose& pose : poses_)
    {
        // The whole object swings around the base station as one rigid body: its aspect
        // stays, only its place in the sweep changes.
        const Quaternion<double>& q = pose.quaternion;
        const Triple<double> moved = RotateByUnitQuaternion(q, start);
        poseVector_ = {moved[0], moved[1], moved[2], q.w, q.x, q.y, q.z};
        if (visibility_)
            visibility_->UpdateVisibility(poseVector_);
        const Triple<double> rotationVector = RotationVectorFromQuaternion(q);

        Triple<double> errors = {kErrorCeiling, kErrorCeiling, kErrorCeiling};
        const size_t visibleCount = VisibleCount();
        if (visibleCount != 0 && visibleCount <= kMaxSensors)
        {
            for (int i = 0; i < 3; ++i)
                poseVector_[3 + i] = rotationVector[i];
            Vector6d variances;
            if (PoseVariances(static_cast<int>(2 * visibleCount), variances))
            {
                for (int i = 0; i < 3; ++i)
                    errors[i] = std::sqrt(variances[i]);
            }
        }
        for (double& error : errors)
        {
            if (IsPastCeiling(error))
                error = kErrorCeiling;
        }
        std::fprintf(out, "%lf %lf %lf %lf %lf\n", pose.gridYaw, pose.gridPitch, errors[0], errors[1], errors[2]);
    }
    for (int i = 0; i < 3; ++i)
        poseVector_[i] = start[i];
    WriteUnseenSensors(err);
}

} // namespace kelvorig
