#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace kelvorig {
namespace {

using test::Lines;
using test::ReadFile;

// A 10 cm box, and quick generate runs on it writing both files into the box's directory.
struct BoxRun
{
    test::TempDir dir;
    std::string json = dir.File("out.json");
    std::string scad = dir.File("out.scad");

    BoxRun() { test::WriteBinaryStl(dir.File("box.stl"), test::MakeBox(Eigen::Vector3f(0.1f, 0.1f, 0.1f))); }

    std::vector<std::string> Generate(std::vector<std::string> more, const char* iterations = "1") const
    {
        more.insert(more.begin(), {"/generate", "/nsensors", "6", "/sensors", dir.File("box.stl"), "/outmodel", json,
                                   "/outscad", scad, "/norientations", "40", "/niterations", iterations, "/coolingrate",
                                   "0.5", "/angleresolutiondegrees", "30"});
        return more;
    }

    // Runs and returns standard output, standard error, the JSON and the drawing.
    std::vector<std::string> Run(const std::vector<std::string>& more) const
    {
        const test::CliResult result = test::RunKelvorig(Generate(more));
        EXPECT_EQ(result.status, 0) << result.err;
        return {result.out, result.err, ReadFile(json), ReadFile(scad)};
    }
};

// The same seed writes the same files at any thread count. Restarts keep the best of the
// single runs of seeds 7 to 10, and print one line per restart, in the order they finish, in
// place of the dots.
TEST(RepeatableRun, SeedsRepeatAtAnyThreadCountAndRestartsKeepTheBestSingleRun)
{
    const BoxRun box;
    std::vector<std::vector<std::string>> singles;
    std::vector<std::string> expectedErr;
    for (int seed = 7; seed <= 10; ++seed)
    {
        singles.push_back(box.Run({"/seed", std::to_string(seed)}));
        const std::string head = Lines(singles.back()[2]).at(0); // "// Final Quality Score: " and the score
        expectedErr.push_back("restart " + std::to_string(seed - 6) + "/4: " + head.substr(24, head.find(" / ") - 24) +
                              " (seed " + std::to_string(seed) + ")");
    }
    const std::vector<std::string>& one = singles[0];
    EXPECT_EQ(box.Run({"/seed", "7", "/threads", "1"}), one);
    EXPECT_EQ(box.Run({"/seed", "7", "/threads", "2"}), one);
    EXPECT_EQ(box.Run({"/seed", "7", "/restarts", "1"}), one);
    EXPECT_NE(singles[1][2].substr(singles[1][2].find('{')), one[2].substr(one[2].find('{')));

    const std::vector<std::string> restarts = box.Run({"/restarts", "4", "/seed", "7"});
    std::vector<std::string> err = Lines(test::WithoutMeshLines(restarts[1]));
    ASSERT_FALSE(err.empty());
    std::sort(err.begin() + 1, err.end());
    expectedErr.insert(expectedErr.begin(), Lines(test::WithoutMeshLines(one[1])).at(0)); // the duration line
    EXPECT_EQ(err, expectedErr);
    const auto scoreBelow = [](const auto& a, const auto& b)
    { return std::stod(a[2].substr(24)) < std::stod(b[2].substr(24)); };
    const std::vector<std::string>& best = *std::min_element(singles.begin(), singles.end(), scoreBelow);
    EXPECT_EQ(std::tie(restarts[0], restarts[2], restarts[3]), std::tie(best[0], best[2], best[3]));
    for (const auto& entry : std::filesystem::directory_iterator(box.dir.path()))
        EXPECT_NE(entry.path().extension(), ".tmp");

    // The seats of /verifycoverage repeat too.
    const std::vector<std::string> coverage = {"/verifycoverage", "30",     "/sensors", box.dir.File("box.stl"),
                                               "/outscad",        box.scad, "/seed",    "3"};
    ASSERT_EQ(test::RunKelvorig(coverage).status, 0);
    const std::string first = ReadFile(box.scad);
    ASSERT_EQ(test::RunKelvorig(coverage).status, 0);
    EXPECT_EQ(ReadFile(box.scad), first);
}

// Starts the binary with standard error in `errPath` and sends `signal` once that holds `ready`,
// or, for a `ready` that is an absolute path, once that file exists. Returns the exit status;
// -1 on a timeout, or when the run took a second or more to end after the signal.
int InterruptWhen(const std::vector<std::string>& arguments, const std::string& errPath, const std::string& ready,
                  int signal)
{
    std::chrono::steady_clock::time_point sentAt;
    test::WriteFile(errPath, "");
    const pid_t child = test::StartKelvorig(arguments, "/dev/null", errPath);
    int status = 0;
    bool sent = false;
    for (int wait = 0; wait < 6000; ++wait) // 2 minutes
    {
        if (waitpid(child, &status, WNOHANG) == child)
            return sent && std::chrono::steady_clock::now() - sentAt >= std::chrono::seconds(1)
                       ? -1
                       : test::ExitStatus(status);
        const bool isReady = ready.starts_with('/') ? std::filesystem::exists(ready)
                                                    : ReadFile(errPath).find(ready) != std::string::npos;
        if (!sent && isReady)
        {
            sent = kill(child, signal) == 0;
            sentAt = std::chrono::steady_clock::now();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return -1;
}

// An interrupted anneal writes the best layout so far, marked, and skips the report; during
// the report the files are complete and stay as they are.
TEST(RepeatableRun, AnInterruptedRunWritesCompleteFilesAndEndsWith130)
{
    const BoxRun box;
    const std::string errPath = box.dir.File("err.txt");
    const struct
    {
        std::vector<std::string> arguments;
        std::string ready; // what shows that the run is where the signal should find it
        int signal;
    } cases[] = {
        {box.Generate({"/seed", "5"}, "100000"), "....", SIGINT},
        {box.Generate({"/restarts", "3", "/seed", "5"}, "100000"), "anneal duration: ", SIGTERM},
        // One thread, so that the report outlasts the signal on a machine of many processors.
        {box.Generate(
             {"/seed", "5", "/angleresolutiondegrees", "0.1", "/threads", "1", "/outsummary", box.dir.File("s.json")}),
         box.json, SIGINT},
    };
    // Stopped while the orientations are sampled, before any anneal: no file, no report.
    ASSERT_EQ(InterruptWhen(box.Generate({"/norientations", "60000"}), errPath, "orientations: 10% done", SIGINT), 130);
    EXPECT_FALSE(std::filesystem::exists(box.json));
    EXPECT_TRUE(ReadFile(errPath).ends_with("Interrupted while the orientations were sampled\n")) << ReadFile(errPath);
    for (const auto& c : cases)
    {
        std::filesystem::remove(box.json);
        ASSERT_EQ(InterruptWhen(c.arguments, errPath, c.ready, c.signal), 130);
        for (const auto& entry : std::filesystem::directory_iterator(box.dir.path()))
            EXPECT_NE(entry.path().extension(), ".tmp") << entry.path();
        const std::vector<std::string> json = Lines(ReadFile(box.json));
        ASSERT_GE(json.size(), 4u);
        // Restarts run side by side, as many as there are processors: any of them may lead.
        EXPECT_TRUE(json[1] == "// Seed: 5" || json[1] == "// Seed: 6" || json[1] == "// Seed: 7") << json[1];
        EXPECT_EQ(test::RunKelvorig({"/model", box.json, "/angleresolutiondegrees", "30"}).status, 0);
        if (c.ready == box.json)
        {
            // The report ends at a whole row, and the summary, which comes after it, is not begun.
            EXPECT_EQ(json[2], "{");
            EXPECT_FALSE(std::filesystem::exists(box.dir.File("s.json")));
            continue;
        }
        const std::string interrupted = json[2].substr(3);
        EXPECT_EQ(Lines(ReadFile(box.scad)).at(2), "/* " + interrupted + " */");
        EXPECT_TRUE(ReadFile(errPath).ends_with(interrupted + "\n"));
        long long made = 0, planned = 0;
        ASSERT_EQ(std::sscanf(interrupted.c_str(), "Interrupted after %lld of %lld moves", &made, &planned), 2);
        EXPECT_LT(made, planned);
    }
}

} // namespace
} // namespace kelvorig
