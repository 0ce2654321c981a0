#include "driver/generate_run.h"

#include "cad/scad_writer.h"
#include "driver/analysis_run.h"
#include "driver/interrupt_signal.h"
#include "driver/output_file.h"
#include "driver/thread_priority.h"
#include "optimiser/anneal_restarts.h"
#include "optimiser/placement_problem.h"
#include "optimiser/sensor_placement_annealer.h"
#include "support/worker_pool.h"

#include <json/writer.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace kelvorig {

bool CheckImmutableSensorCount(size_t immutableSensors, int32_t nSensors)
{
    const int64_t count = static_cast<int64_t>(immutableSensors);
    if (count > nSensors)
    {
        std::cerr << "Model of immutable sensors has more than /nsensors " << nSensors << "!\n" << '\n';
        return false;
    }
    if (count == nSensors)
    {
        std::cerr << "Model of immutable sensors has the same count as /nsensors " << nSensors
                  << ".  Nothing would change!" << '\n';
        return false;
    }
    return true;
}

AnnealSettings AnnealSettingsOf(const CommandOptions& options)
{
    return {options.nOrientations,     options.nIterations, options.coolingRate,
            options.maxIncidenceAngle, options.qualityLow,  options.qualityHigh};
}

namespace {

// The comment lines that follow the score line in both files: the run seed, when the run has
// one that repeats it, and how far an interrupted anneal got.
std::vector<std::string> RunNotes(const AnnealOutcome& outcome)
{
    std::vector<std::string> notes;
    if (outcome.seed)
        notes.push_back("Seed: " + std::to_string(*outcome.seed));
    if (outcome.movesMade < outcome.movesPlanned)
        notes.push_back("Interrupted after " + std::to_string(outcome.movesMade) + " of " +
                        std::to_string(outcome.movesPlanned) + " moves");
    return notes;
}

// Anneals, writes the requested files, and returns the result as a layout; none, with the reason
// on standard error, when the surface offers no seat or a file could not be written. The model and
// its JSON text end here, before the report starts.
std::optional<SensorLayout> AnnealAndWrite(const CommandOptions& options, const SensorLayout* immutableSensors,
                                           TrackedSurface& surface, WorkerPool& workers,
                                           const std::atomic<bool>& stopRequest, int& failureStatus,
                                           std::optional<uint32_t>& layoutSeed)
{
    PlacementProblem problem(options.nSensors, surface);
    problem.model = immutableSensors;
    AnnealSettingsOf(options).ApplyTo(problem);
    problem.stopRequest = &stopRequest;
    problem.progress = &std::cerr;

    std::optional<uint32_t> seed;
    if (options.seed)
        seed = static_cast<uint32_t>(*options.seed);
    AnnealOutcome outcome;
    if (Status annealed = AnnealBestOf(problem, options.restarts, seed, workers, outcome); !annealed.ok())
    {
        std::cerr << annealed.message();
        failureStatus = annealed.code() == StatusCode::kInterrupted ? kInterruptedStatus : 1;
        return std::nullopt;
    }
    const TrackedObjectModel& model = outcome.model;
    layoutSeed = outcome.seed;
    const std::string json = Json::StyledWriter().write(model.ModelToJson());
    const std::vector<std::string> notes = RunNotes(outcome);

    bool written = true;
    if (!options.outScadPath.empty())
    {
        std::ostringstream scad;
        scad << "/* Final Quality Score: " << outcome.score << " / " << kQualityScale << " (lower is better) */\n";
        for (const std::string& note : notes)
            scad << "/* " << note << " */\n";
        scad << "/*\n"
             << json << "*/\n\n"
             << WriteScadFile(model, surface.surfacePath(), surface.obstaclePaths(), surface.unitScale(),
                              options.withScadNormals, options.keepOutPaths);
        written = WriteOutputFile(options.outScadPath, scad.str()) && written;
    }
    if (!options.outModelPath.empty())
    {
        std::ostringstream file;
        file << "// Final Quality Score: " << outcome.score << " / " << kQualityScale << " (lower is better)\n";
        for (const std::string& note : notes)
            file << "// " << note << '\n';
        file << json << '\n';
        written = WriteOutputFile(options.outModelPath, file.str()) && written;
    }
    if (outcome.movesMade < outcome.movesPlanned)
        std::cerr << notes.back() << '\n';
    if (!written)
        return std::nullopt;
    return SensorLayout(model, kIdentityTransform);
}

} // namespace

int RunGenerate(const CommandOptions& options, const SensorLayout* immutableSensors, TrackedSurface& surface,
                const SeatRules& seatRules, QualityEvaluator& evaluator)
{
    const std::atomic<bool>& stopRequest = CatchInterrupts();
    LowerThreadPriority();
    // Started after the priority drop, so that the workers run at the lowered priority too.
    WorkerPool workers(options.threads);
    surface.SetMaxSurfaceAngle(options.maxSurfaceAngle);
    int failureStatus = 1;
    LayoutSource source{&surface, &seatRules, std::nullopt, true};
    std::optional<SensorLayout> result =
        AnnealAndWrite(options, immutableSensors, surface, workers, stopRequest, failureStatus, source.seed);
    if (!result)
        return failureStatus;
    if (stopRequest.load())
        return kInterruptedStatus;
    return RunAnalysis(options, *result, source, evaluator, workers);
}

} // namespace kelvorig
