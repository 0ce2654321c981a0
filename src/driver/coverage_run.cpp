#include "driver/coverage_run.h"

#include "cad/scad_writer.h"
#include "driver/interrupt_signal.h"
#include "driver/output_file.h"
#include "model/sensor_model.h"
#include "optimiser/anneal_restarts.h"
#include "support/stop_request.h"

#include <cstdio>
#include <optional>

namespace kelvorig {

int RunCoverage(const CommandOptions& options, TrackedSurface& surface)
{
    // Seats only: no channel map, not valid, so the drawing shows bare positions.
    TrackedObjectModel model;
    // With /seed the seats repeat from run to run: they come from an engine seeded as a
    // generate run's seat engine is.
    std::optional<RandomEngine> seeded;
    if (options.seed)
        seeded.emplace(SeatSeedOf(static_cast<uint32_t>(*options.seed)));
    RandomEngine& engine = seeded ? *seeded : surface.engine();
    for (int32_t i = 0; i < options.verifyCoverage; ++i)
    {
        if (StopRequested())
            return kInterruptedStatus;
        Eigen::Vector3f position;
        Eigen::Vector3f normal;
        if (Status seat = surface.SampleSeat(position, normal, engine); !seat.ok())
        {
            std::fputs(seat.message().c_str(), stderr);
            return 1;
        }
        model.modelPoints.push_back(position);
        model.modelNormals.push_back(normal);
    }
    const std::string text = WriteScadFile(model, surface.surfacePath(), surface.obstaclePaths(), surface.unitScale(),
                                           options.withScadNormals, options.keepOutPaths);
    return WriteOutputFile(options.outScadPath, text) ? 0 : 1;
}

} // namespace kelvorig
