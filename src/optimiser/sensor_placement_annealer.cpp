#include "optimiser/sensor_placement_annealer.h"

#include "geometry/tracked_surface.h"
#include "optimiser/anneal_schedule.h"
#include "quality/incremental_evaluator.h"
#include "support/worker_pool.h"

#include <cmath>
#include <ostream>

namespace kelvorig {

SensorPlacementAnnealer::SensorPlacementAnnealer(PlacementLayout& layout, TrackedSurface& surface, int32_t nIterations,
                                                 int32_t nOrientations, double coolingRate, double qualityLow,
                                                 double qualityHigh, std::optional<uint32_t> seed)
    : layout_(layout),
      surface_(surface),
      movesPerTemperature_(static_cast<int64_t>(layout.SensorCount()) * nIterations),
      nOrientations_(nOrientations),
      coolingRate_(coolingRate),
      engine_(kFixedSeed),
      seatEngine_(&surface.engine())
{
    evaluator_.SetModel(layout_);
    evaluator_.SetSurface(&surface_);
    evaluator_.SampleOrientations(nOrientations_);
    if (QualityRangeApplies(qualityLow, qualityHigh))
        evaluator_.SetQualityRange(qualityLow, qualityHigh);

    engine_.seed(seed ? *seed : TimeAndProcessSeed());
    firstMovable_ = static_cast<int32_t>(layout_.immutableCount);
    lastMovable_ = static_cast<int32_t>(layout_.SensorCount()) - 1;
    invStartTemperature_ = 1.0 / kStartTemperature;
}

int32_t SensorPlacementAnnealer::DrawMovableIndex()
{
    const uint32_t n = static_cast<uint32_t>(lastMovable_) - static_cast<uint32_t>(firstMovable_) + 1u;
    if (n == 1)
        return firstMovable_;

    // Rejects the words of the last, incomplete block of n so that every index is equally likely.
    constexpr uint32_t kLargestWord = 4294967295u;
    uint32_t x = 0;
    do
    {
        x = static_cast<uint32_t>(engine_());
    } while (!(x / n < kLargestWord / n || kLargestWord % n == n - 1));
    return firstMovable_ + static_cast<int32_t>(x % n);
}

Status SensorPlacementAnnealer::MoveOneSensor(double temperature)
{
    if (progress_ != nullptr)
        *progress_ << '.';

    movedIndex_ = DrawMovableIndex();
    oldPosition_ = layout_.positions[movedIndex_];
    oldNormal_ = layout_.normals[movedIndex_];
    Eigen::Vector3f position = oldPosition_.cast<float>();
    Eigen::Vector3f normal = oldNormal_.cast<float>();

    // The new seat keeps its distance from every other sensor.
    const SeatNeighbours others{&layout_.positions, layout_.SensorCount(), static_cast<size_t>(movedIndex_)};
    const double kind = DrawRange(engine_, rangeLow_, rangeHigh_);
    if (kind > 0.1)
    {
        // A cosine between old and new normal: below -1 (anything goes) at the start
        // temperature, about 0.96 (16 degrees) at the stop temperature.
        const double limit = (2.0 - std::pow(3.0, invStartTemperature_ * temperature)) - 0.04;
        if (Status seat = surface_.SampleSeatNear(position, normal, static_cast<float>(limit), *seatEngine_, &others);
            !seat.ok())
            return seat;
    }
    else if (Status seat = surface_.SampleSeat(position, normal, *seatEngine_, &others); !seat.ok())
    {
        return seat;
    }

    layout_.positions[movedIndex_] = position.cast<double>();
    layout_.normals[movedIndex_] = normal.cast<double>();
    return {};
}

void SensorPlacementAnnealer::UndoMove()
{
    layout_.positions[movedIndex_] = oldPosition_;
    layout_.normals[movedIndex_] = oldNormal_;
}

TrackedObjectModel SensorPlacementAnnealer::Snapshot()
{
    if (!firstSnapshot_ && progress_ != nullptr)
        *progress_ << '(' << currentScore_ << ')';
    snapshotScore_ = currentScore_;
    firstSnapshot_ = false;
    return layout_.ToModel();
}

double SensorPlacementAnnealer::ExpectedMoveCount() const
{
    return kelvorig::ExpectedMoveCount(movesPerTemperature_, coolingRate_);
}

int64_t SensorPlacementAnnealer::PlannedMoveCount() const
{
    return kelvorig::PlannedMoveCount(movesPerTemperature_, coolingRate_);
}

Status SensorPlacementAnnealer::Anneal(TrackedObjectModel& bestModel)
{
    // note: fixed seed on purpose; which worsening moves stand varies only through the moves.
    RandomEngine acceptance(kFixedSeed);
    double temperature = kStartTemperature;
    movesMade_ = 0;

    WorkerPool callingThreadOnly(1);
    std::optional<IncrementalEvaluator> incremental;
    if (scoring_ == Scoring::Incremental && layout_.SensorCount() <= IncrementalEvaluator::kMaxSensors)
        incremental.emplace(evaluator_, workers_ ? *workers_ : callingThreadOnly);
    const auto scored = [this](double score)
    {
        if (scoreObserver_)
            scoreObserver_(score);
        return score;
    };

    bestModel = Snapshot();
    currentScore_ = scored(incremental ? incremental->EvaluateAll() : evaluator_.EvaluateQuality());
    double best = currentScore_;
    double previous = currentScore_;
    // The silent first snapshot holds exactly the layout just scored, so a run that never
    // beats it still reports the score of the model it returns.
    snapshotScore_ = best;
    if (temperature < kStopTemperature)
        return {};

    do
    {
        for (int64_t move = 0; move < movesPerTemperature_; ++move)
        {
            if (stopRequest_ != nullptr && stopRequest_->load(std::memory_order_relaxed))
                return {};
            if (Status moved = MoveOneSensor(temperature); !moved.ok())
                return moved;
            ++movesMade_;
            const double q = scored(incremental ? incremental->EvaluateMove(static_cast<size_t>(movedIndex_))
                                                : evaluator_.EvaluateQuality());
            currentScore_ = q;

            // Before the acceptance test, so that the snapshot holds the moved sensor.
            if (best > q)
            {
                bestModel = Snapshot();
                best = q;
            }

            if (q > previous)
            {
                const double u = DrawUnit(acceptance);
                const double p = std::exp((previous - q) / temperature);
                if (u > p)
                {
                    UndoMove();
                    if (incremental)
                        incremental->UndoMove();
                }
                else
                    previous = q;
            }
            else
            {
                previous = q;
            }
        }
        temperature *= coolingRate_;
    } while (temperature >= kStopTemperature);
    return {};
}

} // namespace kelvorig
