#include "quality/pose_solvability.h"
#include "quality/quality_evaluator.h"
#include "support/progress_stream.h"
#include "support/stop_request.h"
#include "support/worker_pool.h"

#include <algorithm>
#include <optional>
#include <ostream>

namespace kelvorig {
namespace {

// Rows computed before the next write: enough to keep every worker busy between writes,
// few enough that the texts stay small.
constexpr size_t kRowsPerBatch = 4096;
constexpr size_t kRowsPerRange = 32;

// What one worker needs to compute rows on its own.
struct RowScratch
{
    std::optional<SensorVisibility> visibility; // empty without a model
    PoseVector poseVector;
    std::vector<SweepHit> hits;
    std::string text; // rows of the current batch, back to back
};

// Where the text of one row of the batch lies.
struct RowSpan
{
    int32_t worker = 0;
    size_t offset = 0;
    size_t length = 0;
};

// Computes the rows of all poses in batches on all workers, each row by
// appendRow(pose, scratch), and writes them to `out` in pose order. Returns the scratch
// of all workers, for the state that the last pose left.
template <typename AppendRow>
std::vector<RowScratch> WriteRowsInOrder(const std::vector<BaseStationPose>& poses, const SensorVisibility* visibility,
                                         const PoseVector& poseVector, WorkerPool& workers, FILE* out,
                                         const AppendRow& appendRow, int32_t& lastWorker)
{
    std::vector<RowScratch> scratch(static_cast<size_t>(workers.Size()));
    for (RowScratch& own : scratch)
    {
        if (visibility)
            own.visibility.emplace(*visibility);
        own.poseVector = poseVector;
    }

    std::vector<RowSpan> spans(std::min(kRowsPerBatch, poses.size()));
    // A report of this many rows takes a minute or more: it shows its progress, a line a tenth.
    constexpr size_t kRowsWorthProgress = 1'000'000;
    std::ostream* progress = poses.size() >= kRowsWorthProgress ? ProgressStream() : nullptr;
    size_t tenthsShown = 0;
    // note: on a stop request the report ends after the batch under way, at a whole row.
    for (size_t first = 0; first < poses.size() && !StopRequested(); first += kRowsPerBatch)
    {
        if (progress != nullptr && 10 * first / poses.size() > tenthsShown)
        {
            tenthsShown = 10 * first / poses.size();
            *progress << "report: " << 10 * tenthsShown << "% of " << poses.size() << " rows written\n" << std::flush;
        }
        const size_t count = std::min(kRowsPerBatch, poses.size() - first);
        auto computeRows = [&](int32_t worker, size_t begin, size_t end)
        {
            RowScratch& own = scratch[static_cast<size_t>(worker)];
            for (size_t row = begin; row < end; ++row)
            {
                const size_t offset = own.text.size();
                appendRow(poses[first + row], own);
                spans[row] = RowSpan{worker, offset, own.text.size() - offset};
            }
        };
        workers.ForEachRange(count, kRowsPerRange, computeRows);

        for (size_t row = 0; row < count; ++row)
        {
            const RowSpan& span = spans[row];
            std::fwrite(scratch[static_cast<size_t>(span.worker)].text.data() + span.offset, 1, span.length, out);
        }
        for (RowScratch& own : scratch)
            own.text.clear();
        lastWorker = spans[count - 1].worker;
    }
    return scratch;
}

// Leaves the evaluator's state as the one-thread report leaves it: everSeen gathers what
// every worker saw; visible and the pose vector are those of the last pose.
void AdoptFinalState(const std::vector<RowScratch>& scratch, int32_t lastWorker, SensorVisibility* visibility,
                     PoseVector& poseVector)
{
    if (lastWorker < 0)
        return;
    const RowScratch& last = scratch[static_cast<size_t>(lastWorker)];
    poseVector = last.poseVector;
    if (!visibility)
        return;
    visibility->visible = last.visibility->visible;
    for (const RowScratch& own : scratch)
    {
        for (size_t i = 0; i < visibility->everSeen.size(); ++i)
        {
            if (own.visibility->everSeen[i])
                visibility->everSeen[i] = true;
        }
    }
}

} // namespace

void QualityEvaluator::WriteCoverageReport(WorkerPool& workers, FILE* out, FILE* err,
                                           std::vector<DirectionQuality>* directions)
{
    const double distance = CoverageDistance();
    if (directions)
        directions->assign(poses_.size(), DirectionQuality{});
    auto appendRow = [&](const BaseStationPose& pose, RowScratch& own)
    {
        // Each pose has its own record, so the workers never write the same one.
        DirectionQuality* direction = directions ? &(*directions)[static_cast<size_t>(&pose - poses_.data())] : nullptr;
        AppendCoverageRow(pose, distance, own.visibility ? &*own.visibility : nullptr, own.poseVector, own.hits,
                          own.text, direction);
    };
    int32_t lastWorker = -1;
    const std::vector<RowScratch> scratch =
        WriteRowsInOrder(poses_, visibility_.get(), poseVector_, workers, out, appendRow, lastWorker);
    AdoptFinalState(scratch, lastWorker, visibility_.get(), poseVector_);
    WriteUnseenSensors(err);
}

void QualityEvaluator::WriteSensitivityReport(WorkerPool& workers, FILE* out, FILE* err)
{
    const Triple<double> start = {poseVector_[0], poseVector_[1], poseVector_[2]};
    auto appendRow = [&](const BaseStationPose& pose, RowScratch& own)
    { AppendSensitivityRow(pose, start, own.visibility ? &*own.visibility : nullptr, own.poseVector, own.text); };
    int32_t lastWorker = -1;
    const std::vector<RowScratch> scratch =
        WriteRowsInOrder(poses_, visibility_.get(), poseVector_, workers, out, appendRow, lastWorker);
    AdoptFinalState(scratch, lastWorker, visibility_.get(), poseVector_);
    for (int i = 0; i < 3; ++i)
        poseVector_[i] = start[i];
    WriteUnseenSensors(err);
}

} // namespace kelvorig
