#include "driver/model_drawing_run.h"

#include "cad/scad_writer.h"
#include "config/model_file.h"
#include "driver/output_file.h"

#include <cstdio>
#include <sstream>

namespace kelvorig {

int RunModelDrawing(const CommandOptions& options, const TrackedSurface* surface)
{
    // note: the file is read a second time, into a fresh record: the layout loaded earlier has
    // dropped the entries with negative ids, which the drawing keeps.
    TrackedObjectModel model;
    if (Status read = ReadModel(options.modelPath, model); !read.ok())
    {
        std::fputs(read.message().c_str(), stderr);
        return 1;
    }

    std::ostringstream out;
    out << "/* From " << options.modelPath << "*/\n\n";
    if (surface != nullptr)
        out << WriteScadFile(model, surface->surfacePath(), surface->obstaclePaths(), surface->unitScale(),
                             options.withScadNormals, options.keepOutPaths);
    else
        out << WriteScadFile(model, std::string(), {}, 1.0, options.withScadNormals);
    return WriteOutputFile(options.outScadPath, out.str()) ? 0 : 1;
}

} // namespace kelvorig
