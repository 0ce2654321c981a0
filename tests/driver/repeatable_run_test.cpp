#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvorig {
namespace {

using test::CliResult;
using test::ReadFile;
using test::RunKelvorig;

// A 10 cm box, and a quick generate run on it writing both files into `dir`.
struct BoxRun
{
    test::TempDir dir;
    std::string surface = dir.File("box.stl");
    std::string json = dir.File("out.json");
    std::string scad = dir.File("out.scad");

    BoxRun() { test::WriteBinaryStl(surface, test::MakeBox(Eigen::Vector3f(0.1f, 0.1f, 0.1f))); }

    std::vector<std::string> Generate(std::vector<std::string> more, const char* iterations = "1") const
    {
        std::vector<std::string> arguments = {"/generate", "/nsensors", "6", "/sensors", surface, "/outmodel", json,
                                              "/outscad", scad, "/norientations", "40", "/niterations", iterations,
                                              "/coolingrate", "0.5", "/angleresolutiondegrees", "30"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
};

struct RunFiles
{
    CliResult result;
    std::string json;
    std::string scad;
};

RunFiles RunAndRead(const BoxRun& box, const std::vector<std::string>& more)
{
    RunFiles run{RunKelvorig(box.Generate(more)), ReadFile(box.json), ReadFile(box.scad)};
    EXPECT_EQ(run.result.status, 0) << run.result.err;
    return run;
}

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

// The score as written in the first line of a JSON output.
std::string ScoreText(const std::string& json)
{
    const std::string head = "// Final Quality Score: ";
    const std::string first = Lines(json).at(0);
    return first.substr(head.size(), first.find(" / ") - head.size());
}

TEST(RepeatableRun, TheSameSeedWritesTheSameFilesAtAnyThreadCount)
{
    const BoxRun box;
    const RunFiles one = RunAndRead(box, {"/seed", "7", "/threads", "1"});
    EXPECT_EQ(Lines(one.json).at(1), "// Seed: 7");
    EXPECT_EQ(Lines(one.scad).at(1), "/* Seed: 7 */");
    // Two threads, and /restarts 1 as well, change nothing at all.
    for (const RunFiles& same : {RunAndRead(box, {"/seed", "7", "/threads", "2"}),
                                 RunAndRead(box, {"/seed", "7", "/restarts", "1"})})
    {
        EXPECT_EQ(same.json, one.json);
        EXPECT_EQ(same.scad, one.scad);
        EXPECT_EQ(same.result.out, one.result.out);
        EXPECT_EQ(same.result.err, one.result.err);
    }
    const RunFiles other = RunAndRead(box, {"/seed", "8"});
    EXPECT_NE(other.json.substr(other.json.find('{')), one.json.substr(one.json.find('{')));
    for (const auto& entry : std::filesystem::directory_iterator(box.dir.path()))
        EXPECT_NE(entry.path().extension(), ".tmp");

    // The seats of /verifycoverage repeat too.
    const std::vector<std::string> coverage = {"/verifycoverage", "30", "/sensors", box.surface, "/outscad", box.scad,
                                               "/seed", "3"};
    ASSERT_EQ(RunKelvorig(coverage).status, 0);
    const std::string first = ReadFile(box.scad);
    ASSERT_EQ(RunKelvorig(coverage).status, 0);
    EXPECT_EQ(ReadFile(box.scad), first);
}

TEST(RepeatableRun, RestartsKeepTheBestOfTheSingleRunsWithTheirSeeds)
{
    const BoxRun box;
    std::vector<std::string> expectedErr;
    RunFiles best;
    for (int seed = 7; seed <= 10; ++seed)
    {
        const RunFiles single = RunAndRead(box, {"/seed", std::to_string(seed)});
        if (expectedErr.empty())
            expectedErr.push_back(Lines(single.result.err).at(0));  // the duration line
        expectedErr.push_back("restart " + std::to_string(seed - 6) + "/4: " + ScoreText(single.json) + " (seed " +
                              std::to_string(seed) + ")");
        if (best.json.empty() || std::stod(ScoreText(single.json)) < std::stod(ScoreText(best.json)))
            best = single;
    }

    const RunFiles restarts = RunAndRead(box, {"/restarts", "4", "/seed", "7"});
    EXPECT_EQ(restarts.json, best.json);
    EXPECT_EQ(restarts.scad, best.scad);
    EXPECT_EQ(restarts.result.out, best.result.out);
    // One line per restart, in the order they finish, in place of the dots.
    std::vector<std::string> err = Lines(restarts.result.err);
    ASSERT_FALSE(err.empty());
    std::sort(err.begin() + 1, err.end());
    std::sort(expectedErr.begin() + 1, expectedErr.end());
    EXPECT_EQ(err, expectedErr);
}

// Unwritable outputs end the run before the report; seeds and counts out of range are refused.
TEST(RepeatableRun, RefusalsHaveTheirMessages)
{
    const BoxRun box;
    const std::string missing = box.dir.File("missing/out");
    const std::string noFile = ": No such file or directory\n";
    const std::string badSeed = ": the seed must be a whole number from 0 to 4294967295\n";
    const struct
    {
        std::vector<std::string> arguments;
        std::string message;
    } cases[] = {
        {box.Generate({"/outmodel", missing + ".json"}), "cannot write " + missing + ".json" + noFile},
        {box.Generate({"/outscad", missing + ".scad"}), "cannot write " + missing + ".scad" + noFile},
        {box.Generate({"/outmodel", box.dir.path()}), "cannot write " + box.dir.path() + ": Is a directory\n"},
        {{"/verifycoverage", "5", "/sensors", box.surface, "/outscad", missing}, "cannot write " + missing + noFile},
        {box.Generate({"/seed", "-1"}), "/seed -1" + badSeed},
        {box.Generate({"/seed", "4294967296"}), "/seed 4294967296" + badSeed},
        {box.Generate({"/restarts", "0"}), "/restarts 0: the count must be 1 or more\n"},
    };
    for (const auto& c : cases)
    {
        const CliResult result = RunKelvorig(c.arguments);
        EXPECT_EQ(result.status, 1) << c.message;
        EXPECT_EQ(result.out, "") << c.message;
        EXPECT_TRUE(result.err.ends_with(c.message)) << result.err;
    }
    const std::string usage = RunKelvorig({}).err;
    EXPECT_EQ(usage.find("/seed"), std::string::npos);
    EXPECT_EQ(usage.find("/restarts"), std::string::npos);
}

// Starts the binary with standard error in `errPath` and sends `signal` once that holds `ready`,
// or, for a `ready` that is an absolute path, once that file exists. Returns the exit status;
// -1 on a timeout.
int InterruptWhen(const std::vector<std::string>& arguments, const std::string& errPath, const std::string& ready,
                  int signal)
{
    const bool readyIsFile = ready.starts_with('/');
    test::WriteFile(errPath, "");  // nothing of an earlier run may count as ready
    const pid_t child = fork();
    if (child == 0)
    {
        dup2(open("/dev/null", O_WRONLY), 1);
        dup2(open(errPath.c_str(), O_WRONLY), 2);
        std::vector<std::string> copies = arguments;
        std::string binary = KELVORIG_BINARY;
        std::vector<char*> argv = {binary.data()};
        for (std::string& argument : copies)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        execv(binary.c_str(), argv.data());
        _exit(127);
    }
    int status = 0;
    bool sent = false;
    for (int wait = 0; wait < 6000; ++wait)  // 2 minutes
    {
        if (waitpid(child, &status, WNOHANG) == child)
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        const bool isReady =
            readyIsFile ? std::filesystem::exists(ready) : ReadFile(errPath).find(ready) != std::string::npos;
        if (!sent && isReady)
            sent = kill(child, signal) == 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return -1;
}

TEST(RepeatableRun, AnInterruptedRunWritesTheBestLayoutSoFarAndSkipsTheReport)
{
    const BoxRun box;
    const std::string errPath = box.dir.File("err.txt");
    const struct
    {
        std::vector<std::string> arguments;
        std::string ready;  // what shows that the run is where the signal should find it
        int signal;
    } cases[] = {
        // Far more moves than can run before the signal.
        {box.Generate({"/seed", "5"}, "100000"), "....", SIGINT},
        {box.Generate({"/restarts", "3", "/seed", "5"}, "100000"), "anneal duration: ", SIGTERM},
        // During the report the files are complete, and stay as they are.
        {box.Generate({"/seed", "5", "/angleresolutiondegrees", "0.05"}), box.json, SIGINT},
    };
    for (const auto& c : cases)
    {
        std::filesystem::remove(box.json);
        ASSERT_EQ(InterruptWhen(c.arguments, errPath, c.ready, c.signal), 130);
        const std::vector<std::string> json = Lines(ReadFile(box.json));
        ASSERT_GE(json.size(), 4u);
        // Of the restarts, the second may have begun and done better.
        EXPECT_TRUE(json[1] == "// Seed: 5" || json[1] == "// Seed: 6") << json[1];
        const CliResult analysis = RunKelvorig({"/model", box.json, "/angleresolutiondegrees", "30"});
        EXPECT_EQ(analysis.status, 0) << analysis.err;
        if (c.ready == box.json)
        {
            EXPECT_EQ(json[2], "{");
            continue;
        }

        const std::string interrupted = json[2].substr(3);
        EXPECT_EQ(Lines(ReadFile(box.scad)).at(2), "/* " + interrupted + " */");
        EXPECT_TRUE(ReadFile(errPath).ends_with(interrupted + "\n"));
        long long made = 0;
        long long planned = 0;
        ASSERT_EQ(std::sscanf(interrupted.c_str(), "Interrupted after %lld of %lld moves", &made, &planned), 2)
            << interrupted;
        EXPECT_LT(made, planned);
    }
}

} // namespace
} // namespace kelvorig
