// Writes the seed corpus of the fuzz targets into <corpus>/<target>/: the tests' small meshes
// as text and binary STL, the example sensor model as a standalone section and inside device
// files of both formats, and the IMU tool's own sample file.
#include "config/device_config.h"
#include "config/model_file.h"
#include "config/trackref_tool.h"
#include "support/test_files.h"
#include "support/test_meshes.h"

#include <json/writer.h>

#include <cstdio>
#include <filesystem>
#include <sstream>
#include <string>

namespace {

using namespace kelvorig;

std::string Styled(const Json::Value& value)
{
    return Json::StyledWriter().write(value);
}

void WriteMeshes(const std::string& folder)
{
    using test::TestMesh;
    const TestMesh box = test::MakeBox(Eigen::Vector3f(0.18f, 0.11f, 0.09f));
    const TestMesh sphere = test::MakeSphere(60.0f, 3, 6); // millimetres
    test::WriteFile(folder + "/box_binary.stl", test::BinaryStl(box));
    test::WriteFile(folder + "/box_text.stl", test::TextStl(box));
    test::WriteFile(folder + "/sphere_binary.stl", test::BinaryStl(sphere));
    test::WriteFile(folder + "/tetrahedron_text.stl", test::TextStl(test::MakeTetrahedron(0.05f), "tetra"));
    test::WriteFile(folder + "/empty_text.stl", "solid empty\nendsolid empty\n");
}

// The example as a whole device file: an hmd with its display section, or a controller.
std::string DeviceFile(const TrackedObjectModel& model, int format, bool hmd)
{
    DeviceConfig config;
    config.pharoscope_config = model;
    config.format = format;
    config.device_class = hmd ? 1 : 2;
    config.manufacturer = "Maker";
    config.device = {1080, 1200, 2, 90.0f, 0, 1};
    return Styled(config.ToJson());
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        std::fprintf(stderr, "usage: make_seed_corpus <corpus folder> <example sensors.json>\n");
        return 1;
    }
    const std::string corpus = argv[1];
    for (const char* target : {"stl_reader", "model_file", "device_config", "imu_description", "layout_checks",
                               "mesh_checks", "command_line"})
        std::filesystem::create_directories(corpus + "/" + target);

    WriteMeshes(corpus + "/stl_reader");
    WriteMeshes(corpus + "/mesh_checks");
    // Command lines as the fuzz target splits them, at NUL bytes.
    for (const std::string& line : {std::string("/generate\0/nsensors\0"
                                                "8\0/sensors\0s.stl\0/outmodel\0o.json",
                                                53),
                                    std::string("/model\0m.json\0/angleresolutiondegrees\0"
                                                "5\0/qualityrange\0"
                                                "1\0"
                                                "2",
                                                50)})
        test::WriteFile(corpus + "/command_line/line" + std::to_string(line.size()), line);

    TrackedObjectModel model;
    if (!ReadModel(argv[2], model))
        return 1;
    test::WriteFile(corpus + "/model_file/section.json", Styled(model.ModelToJson()));
    test::WriteFile(corpus + "/layout_checks/section.json", Styled(model.ModelToJson()));
    for (int format : {0, 1})
    {
        const std::string hmd = DeviceFile(model, format, true);
        const std::string name = "/hmd_format" + std::to_string(format) + ".json";
        test::WriteFile(corpus + "/model_file" + name, hmd);
        test::WriteFile(corpus + "/device_config" + name, hmd);
    }
    test::WriteFile(corpus + "/device_config/controller.json", DeviceFile(model, 0, false));

    std::ostringstream sample;
    TrackrefSample(sample);
    test::WriteFile(corpus + "/imu_description/sample.json", sample.str());
    test::WriteFile(corpus + "/imu_description/mounted.json",
                    "{\"imu_from_trackref\": [0.01, -0.02, 0.03], \"imu_plusz_in_trackref\": [0, 0, 1],\n"
                    " \"imu_plusx_in_trackref\": [1, 0, 0]}\n");
    return 0;
}
