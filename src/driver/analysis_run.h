#pragma once

#include "driver/command_options.h"
#include "geometry/seat_rules.h"
#include "geometry/tracked_surface.h"
#include "model/sensor_model.h"
#include "quality/quality_evaluator.h"

#include <cstdint>
#include <optional>

namespace kelvorig {

class WorkerPool;

// Where the analysed layout sits and where it came from.
struct LayoutSource
{
    const TrackedSurface* surface = nullptr; // none without /sensors
    const SeatRules* seatRules = nullptr;    // with a surface: what its seats are checked against
    std::optional<uint32_t> seed;            // of the anneal that placed it, when that repeats
    bool annealed = false;                   // placed by this run, whose progress line is still open
};

// Prints the coverage (or, with /basestationsensitivity, the sensitivity) report of a
// layout on standard output, after a warning for each seat that faces into the device or breaks
// a seat rule. Returns the exit status.
int RunAnalysis(const CommandOptions& options, SensorLayout& layout, const LayoutSource& source,
                QualityEvaluator& evaluator);
// The same, with the rows computed on `workers` rather than on workers of its own.
int RunAnalysis(const CommandOptions& options, SensorLayout& layout, const LayoutSource& source,
                QualityEvaluator& evaluator, WorkerPool& workers);

} // namespace kelvorig
