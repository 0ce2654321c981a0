#pragma once

#include "quality/observation_jacobian.h"
#include "quality/pose_vector.h"
#include "quality/quality_evaluator.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvorig {

class WorkerPool;

// The score of QualityEvaluator::EvaluateQuality, bit for bit, for a layout in which one
// sensor moves at a time. It keeps, for every pose, each sensor's visibility bit and its two
// Jacobian rows, and the pose's term. After a move only the moved sensor's entries are
// recomputed, and only poses at which that sensor is visible before or after the move are
// solved again, with the same rows in the same sensor order through the same expressions as
// the reference; the terms are then summed in pose order, so that the score does not
// depend on how many workers computed them. The per-pose work is shared out on a
// WorkerPool. Nothing is allocated after construction.
class IncrementalEvaluator
{
public:
    // Bits of a pose's visibility mask.
    static constexpr size_t kMaxSensors = 64;

    // Takes everything from `reference`: layout, surface, visibility tests, poses, weights,
    // score shape and the translation in its poseVector. None of that may change while this
    // object is used, except that sensors of the layout move in place. At most kMaxSensors
    // sensors, each tested on a position of its own (as in a PlacementLayout).
    IncrementalEvaluator(const QualityEvaluator& reference, WorkerPool& workers);

    // Score of the layout as it stands, every entry computed afresh.
    double EvaluateAll();

    // Score after the sensor at `index` of the layout's positions has moved; the others must
    // stand as at the latest evaluation.
    double EvaluateMove(size_t index);

    // Back to the state before the latest EvaluateMove, whose sensor the caller has put back
    // in the layout. Recomputes nothing; does nothing when there is no move to undo.
    void UndoMove();

private:
    // Partials of the sensor's two sweep angles: first angle, then second, 6 each.
    using SensorRows = std::array<double, 12>;

    // What the reference puts into its pose vector at one pose: translation and quaternion
    // for the visibility tests, and the dual-number pose that the Jacobian is built from.
    struct PoseSeed
    {
        PoseVector visibilityPose;
        DualPose dualPose;
    };

    static constexpr size_t kNoSlot = kMaxSensors;

    // Rows of sensor `slot` at pose `pose`; false when its angles can't be formed.
    bool ComputeRows(size_t slot, size_t pose, SensorRows& rows) const;
    // The term of pose `pose` for the sensors in `visible`, with the rows of `movedSlot`
    // taken from `movedRows` and all others from rows_.
    double SolveTerm(size_t pose, uint64_t visible, uint64_t failed, size_t movedSlot,
                     const SensorRows* movedRows) const;
    double SumOfTerms() const;

    const QualityEvaluator& reference_;
    const SensorVisibility* visibility_;  // null: no sensors
    WorkerPool& workers_;
    size_t sensorCount_ = 0;
    std::vector<size_t> slotOfIndex_;  // position index -> slot in the visibility's order
    std::vector<PoseSeed> seeds_;

    // Per pose, as of the latest evaluation, and as before it (for UndoMove).
    std::vector<uint64_t> visible_;
    std::vector<uint64_t> failed_;  // visible sensors whose angles could not be formed
    std::vector<double> terms_;
    std::vector<uint64_t> previousVisible_;
    std::vector<uint64_t> previousFailed_;
    std::vector<double> previousTerms_;

    std::vector<std::vector<SensorRows>> rows_;  // [slot][pose]; valid where visible
    std::vector<SensorRows> spareRows_;           // [pose]; the moved slot's rows before its move
    size_t movedSlot_ = kNoSlot;
};

} // namespace kelvorig
