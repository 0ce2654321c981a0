#include "quality/incremental_evaluator.h"

#include "quality/pose_covariance.h"
#include "quality/station_sight.h"
#include "quality/symmetric_inverse_diagonal.h"
#include "support/worker_pool.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace kelvorig {
namespace {

// Poses per range handed to a worker: small enough to even out poses of unequal cost.
constexpr size_t kPosesPerRange = 16;
// Below this many visible sensors H has rank below 6 and the reference's LU decides.
constexpr int kFewestFactorisedSensors = 3;

static_assert(ObservationJacobian::IsRowMajor, "a sensor's rows are copied as one run of 12 partials");

bool AllFinite(const SensorRows& rows)
{
    return std::all_of(rows.begin(), rows.end(), [](double value) { return std::isfinite(value); });
}

} // namespace

IncrementalEvaluator::IncrementalEvaluator(const QualityEvaluator& reference, WorkerPool& workers)
    : reference_(reference),
      visibility_(reference.visibility()),
      workers_(workers),
      sensorCount_(visibility_ ? visibility_->SensorCount() : 0),
      ownWeight_(reference.measurementWeights()(0, 0) - reference.measurementWeights()(0, 2)),
      sharedWeight_(reference.measurementWeights()(0, 2))
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
        stations_.push_back(StationInObjectFrame({translation[0], translation[1], translation[2], q.w, q.x, q.y, q.z}));
        dualPoses_.push_back(SeedDualPose(jacobianPose));
    }

    const size_t poseCount = stations_.size();
    states_.assign(2 * poseCount, PoseState{});
    terms_.assign(2 * poseCount, 0.0);
    current_.assign(poseCount, 0);
    touched_.assign(poseCount, 0);
    rows_.assign(sensorCount_, std::vector<SensorRows>(poseCount));
    spareRows_.assign(poseCount, SensorRows{});
}

bool IncrementalEvaluator::ComputeRows(size_t slot, size_t pose, SensorRows& rows) const
{
    const DualPose& dualPose = dualPoses_[pose];
    DualNumber first;
    DualNumber second;
    if (!visibility_->observations[slot].ObserveAngles(dualPose.rotation, dualPose.translation, first, second))
        return false;
    for (int column = 0; column < DualNumber::kPartials; ++column)
    {
        rows[static_cast<size_t>(column)] = first.partials[static_cast<size_t>(column)];
        rows[static_cast<size_t>(DualNumber::kPartials + column)] = second.partials[static_cast<size_t>(column)];
    }
    return true;
}

const SensorRows& IncrementalEvaluator::RowsOf(size_t slot, size_t pose, size_t movedSlot,
                                               const SensorRows* movedRows) const
{
    return slot == movedSlot ? *movedRows : rows_[slot][pose];
}

void IncrementalEvaluator::SumTotals(size_t pose, PoseState& state, size_t movedSlot, const SensorRows* movedRows) const
{
    state.totals = PoseInformation{};
    for (uint32_t left = state.visible & ~state.failed; left != 0; left &= left - 1)
        state.totals.Add(RowsOf(static_cast<size_t>(std::countr_zero(left)), pose, movedSlot, movedRows));
    state.updates = 0;
}

double IncrementalEvaluator::ReferenceTerm(size_t pose, const PoseState& state, size_t movedSlot,
                                           const SensorRows* movedRows) const
{
    const int rowCount = 2 * std::popcount(state.visible);
    ObservationJacobian jacobian(rowCount, 6);
    if (state.failed != 0)
    {
        // As the reference: one sensor without angles leaves the whole matrix zero.
        jacobian.setZero();
    }
    else
    {
        // Row-major, so a sensor's two rows are its 12 partials in a row; sensors in
        // ascending order, as the reference walks them.
        double* next = jacobian.data();
        for (uint32_t left = state.visible; left != 0; left &= left - 1)
        {
            const SensorRows& rows = RowsOf(static_cast<size_t>(std::countr_zero(left)), pose, movedSlot, movedRows);
            next = std::copy(rows.begin(), rows.end(), next);
        }
    }
    return reference_.TermOfVariances(PoseCovarianceDiagonal(jacobian, reference_.measurementWeights()));
}

double IncrementalEvaluator::SolveTerm(size_t pose, const PoseState& state, size_t movedSlot,
                                       const SensorRows* movedRows) const
{
    const int visibleCount = std::popcount(state.visible);
    if (visibleCount == 0)
        return QualityEvaluator::kFailedPoseCost;
    if (visibleCount < kFewestFactorisedSensors || state.failed != 0)
        return ReferenceTerm(pose, state, movedSlot, movedRows);

    Vector6d variances;
    if (!SymmetricInverseDiagonal(state.totals.Information(ownWeight_, sharedWeight_), kMinRelativePivot, variances))
        return ReferenceTerm(pose, state, movedSlot, movedRows);
    return reference_.TermOfVariances(variances);
}

double IncrementalEvaluator::SumOfTerms() const
{
    // In pose order, as the reference adds them.
    double sum = 0.0;
    for (size_t pose = 0; pose < current_.size(); ++pose)
        sum += terms_[2 * pose + current_[pose]];
    return reference_.scoreScale() * sum;
}

double IncrementalEvaluator::EvaluateAll()
{
    auto evaluatePoses = [this](int32_t, size_t begin, size_t end)
    {
        for (size_t pose = begin; pose < end; ++pose)
        {
            current_[pose] = 0;
            touched_[pose] = 0;
            PoseState& state = states_[2 * pose];
            state.visible = 0;
            state.failed = 0;
            for (size_t slot = 0; slot < sensorCount_; ++slot)
            {
                const SensorRayTest& test = visibility_->rayTests[slot];
                if (!SensorSight(*test.model, test.sensorIndex, test.surface).Sees(stations_[pose]))
                    continue;
                const uint32_t bit = uint32_t{1} << slot;
                state.visible |= bit;
                if (!ComputeRows(slot, pose, rows_[slot][pose]))
                    state.failed |= bit;
            }
            SumTotals(pose, state, kNoSlot, nullptr);
            terms_[2 * pose] = SolveTerm(pose, state, kNoSlot, nullptr);
        }
    };
    workers_.ForEachRange(stations_.size(), kPosesPerRange, evaluatePoses);
    movedSlot_ = kNoSlot;
    return SumOfTerms();
}

double IncrementalEvaluator::EvaluateMove(size_t index)
{
    const size_t slot = slotOfIndex_[index];
    const uint32_t bit = uint32_t{1} << slot;
    const SensorRayTest& test = visibility_->rayTests[slot];
    const SensorSight sight(*test.model, test.sensorIndex, test.surface);
    // A changed pose writes its new state into its other slot and makes that current; the
    // moved sensor's new rows go to spareRows_, which then trades places with its old rows.
    auto evaluatePoses = [this, slot, bit, &sight](int32_t, size_t begin, size_t end)
    {
        for (size_t pose = begin; pose < end; ++pose)
        {
            const PoseState& before = states_[2 * pose + current_[pose]];
            const bool wasSeen = (before.visible & bit) != 0;
            const bool seen = sight.Sees(stations_[pose]);
            touched_[pose] = wasSeen || seen;
            if (!touched_[pose])
                continue; // a pose that never sees the sensor keeps its term exactly

            const uint8_t next = static_cast<uint8_t>(1 - current_[pose]);
            PoseState& after = states_[2 * pose + next];
            SensorRows& newRows = spareRows_[pose];
            after.visible = seen ? before.visible | bit : before.visible & ~bit;
            after.failed = before.failed & ~bit;
            const bool rowsFormed = seen && ComputeRows(slot, pose, newRows);
            if (seen && !rowsFormed)
                after.failed |= bit;

            const SensorRows* removed = wasSeen && (before.failed & bit) == 0 ? &rows_[slot][pose] : nullptr;
            const SensorRows* added = rowsFormed ? &newRows : nullptr;
            // Rows that are not finite can't be taken out of a sum again.
            if (before.updates + 1 >= kUpdatesBetweenRebuilds || (removed != nullptr && !AllFinite(*removed)))
            {
                SumTotals(pose, after, slot, &newRows);
            }
            else
            {
                after.totals.Update(before.totals, removed, added);
                after.updates = before.updates + 1;
            }
            terms_[2 * pose + next] = SolveTerm(pose, after, slot, &newRows);
            current_[pose] = next;
        }
    };
    workers_.ForEachRange(stations_.size(), kPosesPerRange, evaluatePoses);

    rows_[slot].swap(spareRows_);
    movedSlot_ = slot;
    return SumOfTerms();
}

void IncrementalEvaluator::UndoMove()
{
    if (movedSlot_ == kNoSlot)
        return; // nothing moved since the latest full evaluation, checkpoint or undo
    for (size_t pose = 0; pose < current_.size(); ++pose)
        current_[pose] = static_cast<uint8_t>(current_[pose] ^ touched_[pose]);
    rows_[movedSlot_].swap(spareRows_);
    movedSlot_ = kNoSlot;
}

double IncrementalEvaluator::Checkpoint()
{
    auto rebuildPoses = [this](int32_t, size_t begin, size_t end)
    {
        for (size_t pose = begin; pose < end; ++pose)
        {
            PoseState& state = states_[2 * pose + current_[pose]];
            SumTotals(pose, state, kNoSlot, nullptr);
            terms_[2 * pose + current_[pose]] = SolveTerm(pose, state, kNoSlot, nullptr);
        }
    };
    workers_.ForEachRange(stations_.size(), kPosesPerRange, rebuildPoses);
    movedSlot_ = kNoSlot;
    return SumOfTerms();
}

} // namespace kelvorig
