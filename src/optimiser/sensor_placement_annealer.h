#pragma once

#include "model/sensor_model.h"
#include "optimiser/placement_layout.h"
#include "quality/quality_evaluator.h"
#include "support/random_draws.h"
#include "support/status.h"

#include <Eigen/Core>

#include <atomic>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <utility>

namespace kelvorig {

class TrackedSurface;
class WorkerPool;

// The anneal's temperatures follow from the score's scale, never from a switch.
constexpr double kStartTemperature = kQualityScale * 0.1;            // 100
constexpr double kStopTemperature = (kQualityScale * 0.0035) * 0.01; // 0.035

// Simulated annealing over the seats of the layout's movable sensors. Each move replaces one
// movable sensor, in place, by a seat drawn from the surface; the owned evaluator reads the
// layout by reference; a move is scored either incrementally (the default) or afresh.
class SensorPlacementAnnealer
{
public:
    // How Anneal scores its moves. Incremental keeps per-pose state and recomputes only what
    // the moved sensor changes, on the workers of UseWorkers (else on the calling thread);
    // Reference calls EvaluateQuality for every move. The scores agree to rounding.
    enum class Scoring
    {
        Incremental,
        Reference
    };

    // Attaches the evaluator to `layout` and `surface`, samples `nOrientations` orientations,
    // and applies the quality range only when both bounds are above 0. The engine that picks
    // moves is reseeded last, from `seed` or else from the time and process id.
    SensorPlacementAnnealer(PlacementLayout& layout, TrackedSurface& surface, int32_t nIterations,
                            int32_t nOrientations, double coolingRate, double qualityLow, double qualityHigh,
                            std::optional<uint32_t> seed = std::nullopt);

    SensorPlacementAnnealer(const SensorPlacementAnnealer&) = delete;
    SensorPlacementAnnealer& operator=(const SensorPlacementAnnealer&) = delete;

    // Writes "." to the progress stream and moves one movable sensor, nine times in ten to a
    // seat whose normal is near its own (a limit that tightens as `temperature` falls), else
    // anywhere. Remembers the old seat for UndoMove. Needs at least one movable sensor.
    // Fails, with the layout unchanged, when the surface offers no seat.
    Status MoveOneSensor(double temperature);

    // Puts back, bit for bit, the seat that the latest move replaced.
    void UndoMove();

    // The layout as a model; prints "(score)" for every snapshot but the first.
    TrackedObjectModel Snapshot();

    // Runs the whole schedule from kStartTemperature down to kStopTemperature and puts the
    // best layout seen in `best`; its score is left in snapshotScore(). Fails when a move finds
    // no seat.
    Status Anneal(TrackedObjectModel& best);

    void SetScoring(Scoring scoring) { scoring_ = scoring; }
    // Workers for incremental scoring; they must outlive every later Anneal.
    void UseWorkers(WorkerPool& workers) { workers_ = &workers; }
    // Called by Anneal with every score it computes, in order: the first layout's, then
    // one per move.
    void ObserveScores(std::function<void(double)> observer) { scoreObserver_ = std::move(observer); }
    // Seats are drawn from `engine` rather than the surface's own; it must outlive every later
    // move. Anneals that share one surface each need an engine of their own.
    void DrawSeatsWith(RandomEngine& engine) { seatEngine_ = &engine; }
    // Anneal stops after the move under way once `request` is true, and returns the best
    // layout so far; movesMade() then falls short of PlannedMoveCount().
    void StopWhen(const std::atomic<bool>& request) { stopRequest_ = &request; }
    // Where the dots and new best scores go; null (the default): nowhere.
    void ShowProgress(std::ostream* progress) { progress_ = progress; }

    // Expected number of moves of Anneal: the value of the "anneal duration: " line.
    double ExpectedMoveCount() const;
    // Moves of a whole Anneal, and the moves the latest Anneal made.
    int64_t PlannedMoveCount() const;
    int64_t movesMade() const { return movesMade_; }

    int64_t movesPerTemperature() const { return movesPerTemperature_; }
    double snapshotScore() const { return snapshotScore_; }
    int32_t movedIndex() const { return movedIndex_; }
    const RandomEngine& engine() const { return engine_; }
    QualityEvaluator& evaluator() { return evaluator_; }

private:
    PlacementLayout& layout_;
    TrackedSurface& surface_;
    QualityEvaluator evaluator_;
    int64_t movesPerTemperature_;
    int32_t nOrientations_;
    double coolingRate_;
    double invStartTemperature_ = 0.0;
    bool firstSnapshot_ = true;
    double currentScore_ = 0.0;
    double snapshotScore_ = 0.0;
    int32_t firstMovable_ = 0;
    int32_t lastMovable_ = 2147483647;
    double rangeLow_ = 0.0;
    double rangeHigh_ = 1.0;
    RandomEngine engine_;
    int32_t movedIndex_ = 0;
    Eigen::Vector3d oldPosition_ = Eigen::Vector3d::Zero();
    Eigen::Vector3d oldNormal_ = Eigen::Vector3d::Zero();
    Scoring scoring_ = Scoring::Incremental;
    WorkerPool* workers_ = nullptr;
    std::function<void(double)> scoreObserver_;
    RandomEngine* seatEngine_;
    const std::atomic<bool>* stopRequest_ = nullptr;
    std::ostream* progress_ = nullptr;
    int64_t movesMade_ = 0;

    int32_t DrawMovableIndex();
};

} // namespace kelvorig
