#include "driver/coverage_run.h"

#include "cad/scad_writer.h"
#include "model/sensor_model.h"

#include <fstream>

namespace kelvorig {

int RunCoverage(const CommandOptions& options, TrackedSurface& surface)
{
    // Seats only: no channel map, not valid, so the drawing shows bare positions.
    TrackedObjectModel model;
    for (int32_t i = 0; i < options.verifyCoverage; ++i)
    {
        Eigen::Vector3f position;
        Eigen::Vector3f normal;
        if (!surface.SampleSeat(position, normal))
            return 1;
        model.modelPoints.push_back(position);
        model.modelNormals.push_back(normal);
    }
    std::ofstream out(options.outScadPath, std::ios::out | std::ios::trunc);
    out << WriteScadFile(model, surface.surfacePath(), surface.obstaclePaths(), surface.unitScale(),
                         options.withScadNormals);
    return 0;
}

} // namespace kelvorig
