#include "driver/analysis_run.h"

#include "quality/reference_pose_error.h"
#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

// Sensors on the faces of a 200 by 100 by 100 mm box, sensor 4 alone on the top face; a
// trailing negative id changes nothing. On a convex shape nothing that the incidence test
// lets through is occluded, and the report is the same on any number of threads; a slab
// above the top face hides sensor 4, and the report names it.
TEST(AnalysisRun, OcclusionThroughTheCommandLine)
{
    const test::TempDir dir;
    test::WriteBinaryStl(dir.File("box.stl"), test::MakeBox(Eigen::Vector3f(0.2f, 0.1f, 0.1f)));
    test::WriteBinaryStl(dir.File("slab.stl"), test::MakeBox({1.0f, 1.0f, 0.002f}, {0.0f, 0.0f, 0.06f}));
    const std::string points = "[0.1, 0.02, 0.01], [0.1, -0.03, -0.02], [-0.1, 0.01, 0.03], [-0.1, -0.02, -0.01], "
                               "[0.03, 0.01, 0.05], [0.06, 0.05, 0.02], [-0.05, 0.05, -0.02], [0.02, -0.05, 0.01], "
                               "[-0.07, -0.05, 0.02], [0.05, 0.02, -0.05], [-0.04, -0.03, -0.05]";
    const std::string normals = "[1, 0, 0], [1, 0, 0], [-1, 0, 0], [-1, 0, 0], [0, 0, 1], [0, 1, 0], [0, 1, 0], "
                                "[0, -1, 0], [0, -1, 0], [0, 0, -1], [0, 0, -1]";
    const std::string ids = R"({"channelMap": [0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10)";
    test::WriteFile(dir.File("m.json"),
                    ids + "], \"modelPoints\": [" + points + "], \"modelNormals\": [" + normals + "]}");
    test::WriteFile(dir.File("t.json"), ids + ", -1], \"modelPoints\": [" + points +
                                            ", [0, 0, -0.05]], \"modelNormals\": [" + normals + ", [0, 0, -1]]}");
    const auto analyse = [&](const std::string& model, std::vector<std::string> more)
    {
        more.insert(more.begin(), {"/model", dir.File(model), "/angleresolutiondegrees", "10"});
        return test::RunInProcess(more);
    };
    for (const std::vector<std::string>& table : {std::vector<std::string>{}, {"/basestationsensitivity"}})
    {
        const test::CliResult bare = analyse("m.json", table);
        ASSERT_EQ(bare.status, 0) << bare.err;
        for (const auto& more : {std::vector<std::string>{"/sensors", dir.File("box.stl")}, {"/threads", "3"}, {}})
        {
            std::vector<std::string> arguments = more;
            arguments.insert(arguments.end(), table.begin(), table.end());
            const test::CliResult same = analyse(more.empty() ? "t.json" : "m.json", arguments);
            EXPECT_TRUE(same.status == 0 && same.out == bare.out && test::WithoutMeshLines(same.err) == bare.err)
                << same.err;
        }
    }
    const test::CliResult open = analyse("m.json", {"/sensors", dir.File("box.stl")});
    const test::CliResult covered =
        analyse("m.json", {"/sensors", dir.File("box.stl"), "/obstacles", dir.File("slab.stl")});
    EXPECT_EQ(test::WithoutMeshLines(open.err), ""); // every sensor seen somewhere
    EXPECT_EQ(test::WithoutMeshLines(covered.err),
              "WARNING: Input model point 4 doesn't seem to be on the supplied sensor surface at 0.03 0.01 "
              "0.05\nWARNING: sensor 4 faces into the device (its normal meets it 9.0 mm away)\n"
              "did not see sensor id 4\n");
    EXPECT_EQ(std::count(covered.out.begin(), covered.out.end(), '\n'),
              std::count(open.out.begin(), open.out.end(), '\n'));
}

} // namespace
} // namespace kelvorig
