#include "support/runtime_paths.h"

#include "support/cli_runner.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kelvorig {
namespace {

using test::CliResult;
using test::RunKelvorig;
using test::TempDir;
using test::WriteFile;

namespace fs = std::filesystem;

// A standalone model of two sensors.
const char* const kStandaloneModel = R"({
    "channelMap": [0, 1],
    "modelPoints": [[0.01, 0, 0], [-0.01, 0, 0]],
    "modelNormals": [[1, 0, 0], [-1, 0, 0]]
})";

TEST(RuntimePaths, BareDeviceNameIsFoundUnderAnyCaseOfQyrnix)
{
    TempDir dir;
    fs::create_directories(dir.File("QYRNIX/sub"));
    fs::create_directories(dir.File("QYRNIX/vorlax/drivers/cfg/hmd"));
    WriteFile(dir.File("QYRNIX/vorlax/drivers/cfg/hmd/visor.json"), kStandaloneModel);

    const CliResult drawn = RunKelvorig({"/model", "visor", "/outscad", dir.File("visor.scad")}, dir.File("QYRNIX/sub"));
    EXPECT_EQ(drawn.status, 0) << drawn.err;
    EXPECT_EQ(drawn.err, "");
    EXPECT_EQ(test::ReadFile(dir.File("visor.scad")).rfind("/* From visor*/\n\n", 0), 0u);

    const CliResult missing = RunKelvorig({"/model", "absent", "/outscad", dir.File("x.scad")}, dir.File("QYRNIX/sub"));
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "couldn't read cfg/hmd/absent.json: file is empty or does not exist\n");
}

TEST(RuntimePaths, WholeDeviceFileByBareNameIsAnalysed)
{
    // Four sensors facing +Z, toward a base station straight ahead at the identity pose.
    TempDir dir;
    fs::create_directories(dir.File("qyrNIX/sub"));
    fs::create_directories(dir.File("qyrNIX/vorlax/drivers/cfg/hmd"));
    WriteFile(dir.File("qyrNIX/vorlax/drivers/cfg/hmd/quad.json"), R"({
        "device_class": "hmd", "manufacturer": "Maker",
        "device": {"eye_target_width_in_pixels": 1080, "eye_target_height_in_pixels": 1200, "num_windows": 1},
        "imu": {"position": [0, 0, 0.01], "plus_x": [1, 0, 0], "plus_z": [0, 0, 1]},
        "pharoscope_config": {"channelMap": [0, 1, 2, 3, -1],
            "modelPoints": [[0.05, 0.05, 0], [-0.05, 0.05, 0], [-0.05, -0.05, 0], [0.05, -0.04, 0.01], [0, 0, 0]],
            "modelNormals": [[0, 0, 1], [0, 0, 1], [0, 0, 1], [0, 0, 1], [0, 0, 1]]}})");

    const CliResult result = RunKelvorig({"/model", "quad", "/angleresolutiondegrees", "30"}, dir.File("qyrNIX/sub"));
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.out.find("\n0.000000 0.000000 2.0 0.0 4 0 0 0 "), std::string::npos) << result.out;
    EXPECT_NE(result.out.find(" 0 1 2 3\n"), std::string::npos);

    // A whole device file that fails its parse is reported under the composed name.
    WriteFile(dir.File("qyrNIX/vorlax/drivers/cfg/hmd/bare.json"), R"({"pharoscope_config": {"channelMap": [0]}})");
    const CliResult bare = RunKelvorig({"/model", "bare"}, dir.File("qyrNIX/sub"));
    EXPECT_EQ(bare.status, 1);
    EXPECT_EQ(bare.err, "couldn't read cfg/hmd/bare.json: missing values from \"device\" section\n");
}

TEST(RuntimePaths, VorlaxBesideAnAncestorIsTheDriversDirectoryItself)
{
    TempDir dir;
    fs::create_directories(dir.File("work/here"));
    fs::create_directories(dir.File("vorlax/cfg/hmd"));
    WriteFile(dir.File("vorlax/cfg/hmd/visor.json"), kStandaloneModel);
    const CliResult drawn = RunKelvorig({"/model", "visor", "/outscad", dir.File("visor.scad")}, dir.File("work/here"));
    EXPECT_EQ(drawn.status, 0) << drawn.err;
}

} // namespace
} // namespace kelvorig
