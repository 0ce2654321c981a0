#include "quality/incremental_evaluator.h"

#include "quality/pose_covariance.h"
#include "support/worker_pool.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace kelvorig {
namespace {

// Poses per range handed to a worker: small enough to even out poses of unequal cost.
constexpr size_t kPosesPerRange = 16;

static_assert(ObservationJacobian::IsRowMajor, "a sensor's rows are copied as one run of 12 partials");

} // namespace

IncrementalEvaluator::IncrementalEvaluator(const QualityEvaluator& reference, WorkerPool& workers)
    : reference_(reference),
      visibility_(reference.visibility()),
      workers_(workers),
      sensorCount_(visibility_ ? visibility_->SensorCount() : 0)
{
    for (size_t slot = 0; slot < sensorCount_; ++slot)
    {
        const size_t index = visibility_->rayTests[slot].sensorIndex;
        if (slotOfIndex_.size() <= index)
            slotOfIndex_.resize(index + 1, kNoSlot);
        slotOfIndex_[index] = slot;
    }

    const PoseVector& translation = reference.poseVector();
    for (const BaseStationPose& pose : reference.poses())
    {
        const Quaternion<double>& q = pose.quaternion;
        const Triple<double>& r = pose.rotationVector;
        const double jacobianPose[6] = {translation[0], translation[1], translation[2], r[0], r[1], r[2]};
        seeds_.push_back(PoseSeed{{translation[0], translation[1], translation[2], q.w, q.x, q.y, q.z},
                                  SeedDualPose(jacobianPose)});
    }

    const size_t poseCount = seeds_.size();
    visible_.assign(poseCount, 0);
    failed_.assign(poseCount, 0);
    terms_.assign(poseCount, 0.0);
    previousVisible_.assign(poseCount, 0);
    previousFailed_.assign(poseCount, 0);
    previousTerms_.assign(poseCount, 0.0);
    rows_.assign(sensorCount_, std::vector<SensorRows>(poseCount));
    spareRows_.assign(poseCount, SensorRows{});
}

bool IncrementalEvaluator::ComputeRows(size_t slot, size_t pose, SensorRows& rows) const
{
    const DualPose& dualPose = seeds_[pose].dualPose;
    DualNumber first;
    DualNumber second;
    if (!visibility_->observations[slot].ObserveAngles(dualPose.rotation, dualPose.translation, first, second))
        return false;
    for (int column = 0; column < DualNumber::kPartials; ++column)
    {
        rows[column] = first.partials[column];
        rows[DualNumber::kPartials + column] = second.partials[column];
    }
    return true;
}

double IncrementalEvaluator::SolveTerm(size_t pose, uint64_t visible, uint64_t failed, size_t movedSlot,
                                       const SensorRows* movedRows) const
{
    const size_t visibleCount = static_cast<size_t>(std::popcount(visible));
    if (visibleCount == 0 || visibleCount > QualityEvaluator::kMaxSensors)
        return QualityEvaluator::kFailedPoseCost;

    const int rowCount = static_cast<int>(2 * visibleCount);
    ObservationJacobian jacobian(rowCount, 6);
    if ((visible & failed) != 0)
    {
        // As the reference: one sensor without angles leaves the whole matrix zero.
        jacobian.setZero();
    }
    else
    {
        // Row-major, so a sensor's two rows are its 12 partials in a row; sensors in
        // ascending order, as the reference walks them.
        double* next = jacobian.data();
        for (uint64_t left = visible; left != 0; left &= left - 1)
        {
            const size_t slot = static_cast<size_t>(std::countr_zero(left));
            const SensorRows& rows = slot == movedSlot ? *movedRows : rows_[slot][pose];
            next = std::copy(rows.begin(), rows.end(), next);
        }
    }
    return reference_.TermOfVariances(PoseCovarianceDiagonal(jacobian, reference_.measurementWeights()));
}

double IncrementalEvaluator::SumOfTerms() const
{
    // In pose order, as the reference adds them.
    double sum = 0.0;
    for (const double term : terms_)
        sum += term;
    return reference_.scoreScale() * sum;
}

double IncrementalEvaluator::EvaluateAll()
{
    auto evaluatePoses = [this](int32_t, size_t begin, size_t end)
    {
        for (size_t pose = begin; pose < end; ++pose)
        {
            uint64_t visible = 0;
            uint64_t failed = 0;
            for (size_t slot = 0; slot < sensorCount_; ++slot)
            {
                if (!visibility_->rayTests[slot].IsSensorVisible(seeds_[pose].visibilityPose))
                    continue;
                const uint64_t bit = uint64_t{1} << slot;
                visible |= bit;
                if (!ComputeRows(slot, pose, rows_[slot][pose]))
                    failed |= bit;
            }
            visible_[pose] = visible;
            failed_[pose] = failed;
            terms_[pose] = SolveTerm(pose, visible, failed, kNoSlot, nullptr);
        }
    };
    workers_.ForEachRange(seeds_.size(), kPosesPerRange, evaluatePoses);
    movedSlot_ = kNoSlot;
    return SumOfTerms();
}

double IncrementalEvaluator::EvaluateMove(size_t index)
{
    const size_t slot = slotOfIndex_[index];
    const uint64_t bit = uint64_t{1} << slot;
    // The new state goes into the previous_ arrays and spareRows_, which then trade places
    // with the current ones; UndoMove trades them back.
    auto evaluatePoses = [this, slot, bit](int32_t, size_t begin, size_t end)
    {
        for (size_t pose = begin; pose < end; ++pose)
        {
            const uint64_t before = visible_[pose];
            const bool seen = visibility_->rayTests[slot].IsSensorVisible(seeds_[pose].visibilityPose);
            const uint64_t after = seen ? before | bit : before & ~bit;
            uint64_t failed = failed_[pose] & ~bit;
            if (seen && !ComputeRows(slot, pose, spareRows_[pose]))
                failed |= bit;

            previousVisible_[pose] = after;
            previousFailed_[pose] = failed;
            // A pose that never sees the sensor keeps its term exactly.
            previousTerms_[pose] =
                ((before | after) & bit) != 0 ? SolveTerm(pose, after, failed, slot, &spareRows_[pose]) : terms_[pose];
        }
    };
    workers_.ForEachRange(seeds_.size(), kPosesPerRange, evaluatePoses);

    visible_.swap(previousVisible_);
    failed_.swap(previousFailed_);
    terms_.swap(previousTerms_);
    rows_[slot].swap(spareRows_);
    movedSlot_ = slot;
    return SumOfTerms();
}

void IncrementalEvaluator::UndoMove()
{
    if (movedSlot_ == kNoSlot)
        return;  // nothing moved since the latest full evaluation or undo
    visible_.swap(previousVisible_);
    failed_.swap(previousFailed_);
    terms_.swap(previousTerms_);
    rows_[movedSlot_].swap(spareRows_);
    movedSlot_ = kNoSlot;
}

} // namespace kelvorig
