#include "driver/command_line.h"

#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelvorig {
namespace {

using test::CliResult;
using test::RunKelvorig;
using test::TempDir;
using test::WriteFile;

TEST(ThreadsSwitch, ReadsLikeTheOtherCountSwitches)
{
    EXPECT_EQ(CommandOptions().threads, 0);
    struct Case
    {
        std::vector<std::string> arguments;
        bool ok;
        int32_t threads;
    } cases[] = {
        {{"/threads", "3"}, true, 3},
        {{"/THREADS", "2"}, true, 2},
        {{"/threads", "1", "/threads", "4"}, true, 4},
        {{"/threads", "6x"}, true, 6},
        {{"/threads", "0"}, true, 0},
        {{"/threads", "abc"}, false, 0},
        {{"/threads"}, false, 0},
    };
    for (const Case& c : cases)
    {
        CommandOptions options;
        testing::internal::CaptureStderr();
        EXPECT_EQ(ReadCommandLine(c.arguments, options), c.ok) << c.arguments[0];
        testing::internal::GetCapturedStderr();
        EXPECT_EQ(options.threads, c.threads) << c.arguments.back();
    }
}

// A 10 cm box and a model of five sensors on its faces.
struct BoxFiles
{
    TempDir dir;
    std::string surface = dir.File("box.stl");
    std::string model = dir.File("model.json");

    BoxFiles()
    {
        test::WriteBinaryStl(surface, test::MakeBox(Eigen::Vector3f(0.1f, 0.1f, 0.1f)));
        WriteFile(model, R"({"channelMap": [0, 1, 2, 3, 4],
            "modelPoints": [[0.05, 0.01, 0.02], [-0.05, 0.0, -0.01], [0.02, 0.05, 0.0], [0.0, -0.01, 0.05],
                            [0.01, 0.02, -0.05]],
            "modelNormals": [[1, 0, 0], [-1, 0, 0], [0, 1, 0], [0, 0, 1], [0, 0, -1]]})");
    }
};

TEST(ThreadsSwitch, AnalysisIsTheSameOnAnyNumberOfThreads)
{
    const BoxFiles files;
    for (const char* table : {"", "/basestationsensitivity"})
    {
        std::vector<std::string> line = {"/model", files.model, "/sensors", files.surface, "/angleresolutiondegrees",
                                         "6"};
        if (*table != '\0')
            line.push_back(table);
        const CliResult plain = RunKelvorig(line);
        ASSERT_EQ(plain.status, 0) << plain.err;
        ASSERT_FALSE(plain.out.empty());
        for (const char* threads : {"1", "2", "3", "0"})
        {
            std::vector<std::string> withThreads = line;
            withThreads.insert(withThreads.begin(), {"/threads", threads});
            const CliResult result = RunKelvorig(withThreads);
            EXPECT_EQ(result.status, 0) << threads;
            EXPECT_TRUE(result.out == plain.out) << table << ", /threads " << threads;
            EXPECT_EQ(result.err, plain.err) << table << ", /threads " << threads;
        }
    }
}

TEST(ThreadsSwitch, AcceptedByEveryMode)
{
    const BoxFiles files;
    const std::string scad = files.dir.File("out.scad");
    const std::string json = files.dir.File("out.json");

    const CliResult generate =
        RunKelvorig({"/generate", "/nsensors", "6", "/sensors", files.surface, "/outmodel", json, "/norientations",
                     "40", "/niterations", "1", "/coolingrate", "0.5", "/angleresolutiondegrees", "30", "/threads",
                     "2"});
    EXPECT_EQ(generate.status, 0) << generate.err;
    EXPECT_NE(test::ReadFile(json).find("Final Quality Score"), std::string::npos);

    const CliResult coverage =
        RunKelvorig({"/threads", "2", "/verifycoverage", "20", "/sensors", files.surface, "/outscad", scad});
    EXPECT_EQ(coverage.status, 0) << coverage.err;

    const CliResult drawing = RunKelvorig({"/model", files.model, "/outscad", scad, "/threads", "1"});
    EXPECT_EQ(drawing.status, 0) << drawing.err;

    const CliResult sample = RunKelvorig({"/threads", "3", "/trackref_from_imu"});
    EXPECT_EQ(sample.status, 0) << sample.err;
    EXPECT_EQ(sample.out, RunKelvorig({"/trackref_from_imu"}).out);

    const std::string device = files.dir.File("device.json");
    WriteFile(device, R"({"device_class": "controller", "pharoscope_config": {"channelMap": [0]}})");
    const CliResult conversion = RunKelvorig({"/threads", "3", "/formatconvert", "0", device});
    EXPECT_EQ(conversion.status, 0) << conversion.err;
    EXPECT_EQ(conversion.out, RunKelvorig({"/formatconvert", "0", device}).out);
}

// A negative count is refused; a value that doesn't scan, or a missing one, ends as for any
// "%d" switch; and the usage text doesn't name the switch.
TEST(ThreadsSwitch, RefusalsAndUsage)
{
    const BoxFiles files;
    const CliResult negative = RunKelvorig({"/model", files.model, "/threads", "-2"});
    EXPECT_EQ(negative.status, 1);
    EXPECT_EQ(negative.out, "");
    EXPECT_EQ(negative.err, "/threads -2: the count must be 0 (one per logical processor) or more\n");

    const CliResult unscanned = RunKelvorig({"/model", files.model, "/threads", "abc"});
    EXPECT_EQ(unscanned.status, 1);
    EXPECT_EQ(unscanned.out, "");
    EXPECT_EQ(unscanned.err, RunKelvorig({"/model", files.model, "/niterations", "abc"}).err);
    const CliResult missing = RunKelvorig({"/model", files.model, "/threads"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.out, "");
    std::string err = RunKelvorig({"/model", files.model, "/niterations"}).err;
    err.replace(err.find("/niterations"), std::string("/niterations").size(), "/threads");
    EXPECT_EQ(missing.err, err);

    const CliResult usage = RunKelvorig({});
    EXPECT_EQ(usage.status, 1);
    EXPECT_NE(usage.err.find("usage: kelvorig /generate"), std::string::npos);
    EXPECT_EQ(usage.err.find("threads"), std::string::npos);
}

} // namespace
} // namespace kelvorig
