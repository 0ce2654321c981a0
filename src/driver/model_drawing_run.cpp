#include "driver/model_drawing_run.h"

#include "cad/scad_writer.h"
#include "config/model_file.h"

#include <fstream>

namespace kelvorig {

int RunModelDrawing(const CommandOptions& options, const TrackedSurface* surface)
{
    // note: a fresh record and a second read; the layout loaded earlier keeps no file order.
    TrackedObjectModel model;
    if (!ReadModel(options.modelPath, model))
        return 1;

    // Like every output file, it isn't checked after opening.
    std::ofstream out(options.outScadPath, std::ios::binary | std::ios::trunc);
    out << "/* From " << options.modelPath << "*/\n\n";
    if (surface != nullptr)
        out << WriteScadFile(model, surface->surfacePath(), surface->obstaclePaths(), surface->unitScale(),
                             options.withScadNormals);
    else
        out << WriteScadFile(model, std::string(), {}, 1.0, options.withScadNormals);
    return 0;
}

} // namespace kelvorig
