#pragma once

#include "quality/observation_jacobian.h"
#include "quality/pose_information.h"
#include "quality/quality_evaluator.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvorig {

class WorkerPool;

// The score of QualityEvaluator::EvaluateQuality for a layout in which one sensor moves at a
// time, to rounding (about 1e-14 relative). Per pose it keeps each visible sensor's two
// Jacobian rows and running totals of JᵀJ and of the two row sums, from which the pose's
// information matrix follows directly; a move replaces the moved sensor's rows in those
// totals, at the poses that see it before or after, and solves only those poses again. The
// diagonal of H⁻¹ comes from an LDLᵀ factorisation; a pose with fewer than three visible
// sensors, a sensor without angles, or a pivot below kMinRelativePivot of its diagonal
// entry takes the reference's own path (its rows, its product, its LU), so that degenerate
// poses come out exactly as the reference scores them. Terms are summed in pose order, so
// the score does not depend on the number of workers. Nothing is allocated after
// construction; all state belongs to the instance.
class IncrementalEvaluator
{
public:
    // Bits of a pose's visibility mask.
    static constexpr size_t kMaxSensors = QualityEvaluator::kMaxSensors;
    // Against drift, a pose's totals are summed afresh from its rows once they have taken
    // this many running updates (and at every EvaluateAll and Checkpoint).
    static constexpr uint32_t kUpdatesBetweenRebuilds = 32;
    // LDLᵀ pivots below this fraction of their diagonal entry send the pose to the LU path.
    static constexpr double kMinRelativePivot = 1e-9;

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

    // Keeps the state as it stands (there is then no move to undo), sums every pose's totals
    // afresh from its rows and returns the score from them.
    double Checkpoint();

    // The term of pose `pose` at the latest evaluation: its share of the score before scaling.
    double PoseTerm(size_t pose) const { return terms_[2 * pose + current_[pose]]; }

private:
    struct PoseState
    {
        PoseInformation totals; // rows of the sensors in visible and not in failed
        uint32_t visible = 0;
        uint32_t failed = 0;  // visible sensors whose angles could not be formed
        uint32_t updates = 0; // running updates since the totals were last summed afresh
    };

    static constexpr size_t kNoSlot = kMaxSensors;

    // Rows of sensor `slot` at pose `pose`; false when its angles can't be formed.
    bool ComputeRows(size_t slot, size_t pose, SensorRows& rows) const;
    // The rows of `slot` at `pose`, those of `movedSlot` taken from `movedRows`.
    const SensorRows& RowsOf(size_t slot, size_t pose, size_t movedSlot, const SensorRows* movedRows) const;
    void SumTotals(size_t pose, PoseState& state, size_t movedSlot, const SensorRows* movedRows) const;
    double SolveTerm(size_t pose, const PoseState& state, size_t movedSlot, const SensorRows* movedRows) const;
    double ReferenceTerm(size_t pose, const PoseState& state, size_t movedSlot, const SensorRows* movedRows) const;
    double SumOfTerms() const;

    const QualityEvaluator& reference_;
    const SensorVisibility* visibility_; // null: no sensors
    WorkerPool& workers_;
    size_t sensorCount_ = 0;
    double ownWeight_ = 0.0; // the weights are ownWeight·I + sharedWeight·P
    double sharedWeight_ = 0.0;
    std::vector<size_t> slotOfIndex_;       // position index -> slot in the visibility's order
    std::vector<Eigen::Vector3d> stations_; // [pose]: the base station in the object frame
    std::vector<DualPose> dualPoses_;       // [pose]: what the Jacobian rows are built from

    // Two of each per pose, [2·pose + current_[pose]] the state as of the latest evaluation
    // and the other the one before it, for UndoMove.
    std::vector<PoseState> states_;
    std::vector<double> terms_;
    std::vector<uint8_t> current_;
    std::vector<uint8_t> touched_; // [pose]: changed by the latest move

    std::vector<std::vector<SensorRows>> rows_; // [slot][pose]; valid where visible, not failed
    std::vector<SensorRows> spareRows_;         // [pose]: the moved slot's rows before its move
    size_t movedSlot_ = kNoSlot;
};

} // namespace kelvorig
