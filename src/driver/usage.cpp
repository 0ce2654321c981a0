#include "driver/usage.h"

#include <cstdio>

namespace kelvorig {

void PrintUsage()
{
    std::fputs("\n", stderr);
    std::fputs("usage: kelvorig /generate /nsensors <count> [/model <immutable_points.json>] [/maxsurfaceangle <0.0>] "
               "[/outmodel <json>] [/outscad <scad>] [/withscadnormals] /sensors <stl> [/obstacles <stl>]... "
               "[/model <name>] [/coolingrate <~0.95>] [/norientations <~1000-5000>] [/niterations <~1-20>] "
               "[/qualityrange low high] [plot options below]\n",
               stderr);
    std::fputs("\n", stderr);
    std::fputs("usage: kelvorig /verifycoverage <1000-5000> /outscad <scad> /sensors <stl>\n\t(shows where sensors "
               "will fit)\n",
               stderr);
    std::fputs("\n", stderr);
    std::fputs("usage: kelvorig /model <name> [/sensors <stl>] [/obstacles <stl>]... /distancebasemeters <2.0> "
               "/angleresolutiondegrees <0.5> /maxincidenceangle <70.0> > results.txt\n",
               stderr);
    std::fputs("\n", stderr);
    std::fputs("usage: kelvorig /trackref_from_imu [imu_cad_info.json] -- Run with no args for sample file and "
               "instructions.\n",
               stderr);
    std::fputs("\n", stderr);
    std::fputs("usage: kelvorig /formatconvert <jsonformatnumber> [object.json] -- Reformat the existing model file. "
               "Valid format ids: {0,1}\n",
               stderr);
    std::fputs("\n", stderr);
    std::fputs("\t/sensors\tsurface to place sensors on (also occludes sensors) -- scale in meters or mm inferred by "
               "object size\n",
               stderr);
    std::fputs("\t/obstacles\tsurface for occlusion only (also blocks impossible sensor placement) -- same scale as "
               "/sensors.  Multiple /obstacles allowed.\n",
               stderr);
    std::fputs("\n", stderr);
}

} // namespace kelvorig
