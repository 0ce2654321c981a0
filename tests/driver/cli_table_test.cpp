// Runs every case of cli_cases.json: writes the case's files into a fresh directory, runs the
// command line there and compares the status, both streams and the files the case names.
// Cases run in this process through RunCommandLine unless they ask for the built binary (a
// run that anneals lowers its thread's priority and catches signals).
#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <cctype>
#include <filesystem>

#include <sys/wait.h>
#include <unistd.h>

namespace kelvorig {
namespace {

const std::string kData = std::string(KELVORIG_SOURCE_DIR) + "/tests/data/";

// Replaces every "${name}" with its text from `texts` (texts may hold names themselves).
std::string Expand(std::string text, const Json::Value& texts)
{
    for (size_t at = text.find("${"); at != std::string::npos; at = text.find("${", at))
    {
        const size_t end = text.find('}', at);
        const std::string name = text.substr(at + 2, end - at - 2);
        text.replace(at, end + 1 - at, texts[name].asString());
    }
    return text;
}

// A file's contents: a text, a data file, a run of one character ("x" unless named), or boxes
// (size, then centre) as STL, turned inside out, less the last `drop` facets, with floats patched.
std::string Contents(const Json::Value& source, const Json::Value& texts)
{
    if (source.isString() || source.isMember("text"))
        return Expand(source.isString() ? source.asString() : source["text"].asString(), texts);
    if (source.isMember("data"))
        return test::ReadFile(kData + source["data"].asString());
    if (source.isMember("fill"))
        return std::string(source["fill"].asUInt(), source.get("char", "x").asString()[0]);
    if (source.isMember("sensors")) // a layout of that many sensors in a row, facing +X
    {
        std::string ids, points, normals;
        for (unsigned i = 0; i < source["sensors"].asUInt(); ++i)
        {
            const std::string comma = i > 0 ? "," : "";
            ids += comma + std::to_string(i);
            points += comma + "[" + std::to_string(i * 1e-6) + ",0,0]";
            normals += comma + "[1,0,0]";
        }
        return R"({"channelMap": [)" + ids + R"(], "modelPoints": [)" + points + R"(], "modelNormals": [)" + normals +
               "]}";
    }
    test::TestMesh mesh;
    for (const Json::Value& b : source["boxes"])
    {
        const auto at = [&b](Json::ArrayIndex k) { return b.size() > k ? b[k].asFloat() : 0.0f; };
        mesh = test::Combine(mesh, test::MakeBox({at(0), at(1), at(2)}, {at(3), at(4), at(5)}));
    }
    for (std::array<int, 3>& t : mesh.triangles)
        std::swap(t[1], t[1 + source["inside_out"].asInt()]);
    mesh.triangles.resize(mesh.triangles.size() - source["drop"].asUInt());
    if (source["stl"].asString() == "text")
        return test::TextStl(mesh);
    std::string bytes = test::BinaryStl(mesh);
    for (const Json::Value& p : source["patch"])
        test::PatchStlFloat(bytes, p[0].asUInt(), p[1].asUInt(), p[2].asFloat());
    return bytes;
}

void RunCase(const Json::Value& c, const Json::Value& texts)
{
    const std::string name = c["name"].asString();
    SCOPED_TRACE(name);
    const test::TempDir dir;
    for (const std::string& path : c["files"].getMemberNames())
    {
        std::filesystem::create_directories(std::filesystem::path(dir.File(path)).parent_path());
        if (!path.ends_with('/'))
            test::WriteFile(dir.File(path), Contents(c["files"][path], texts));
    }
    std::vector<std::string> arguments;
    for (const Json::Value& argument : c["argv"])
        arguments.push_back(Expand(argument.asString(), texts));
    const std::string where = dir.File(c["cwd"].asString());
    test::CliResult result;
    if (c.isMember("stdout_to"))
    {
        // Standard output goes where the case says (a full disk: /dev/full).
        int waitStatus = 0;
        waitpid(test::StartKelvorig(arguments, c["stdout_to"].asString(), dir.File("err.txt"), where), &waitStatus, 0);
        result = {test::ExitStatus(waitStatus), "", test::ReadFile(dir.File("err.txt"))};
    }
    else if (c["binary"].asBool())
        result = test::RunKelvorig(arguments, where);
    else
    {
        const std::string before = std::filesystem::current_path();
        ASSERT_EQ(chdir(where.c_str()), 0);
        result = test::RunInProcess(arguments);
        ASSERT_EQ(chdir(before.c_str()), 0);
    }

    EXPECT_EQ(result.status, c["status"].asInt());
    const std::string out = c.isMember("stdout_file") ? test::ReadFile(kData + c["stdout_file"].asString())
                                                      : Expand(c["stdout"].asString(), texts);
    EXPECT_EQ(result.out, c["any_stdout"].asBool() ? result.out : out);
    if (c.isMember("stderr_end"))
        EXPECT_TRUE(result.err.ends_with(Expand(c["stderr_end"].asString(), texts))) << result.err;
    else if (c.isMember("stderr_start"))
        EXPECT_TRUE(result.err.starts_with(Expand(c["stderr_start"].asString(), texts))) << result.err;
    else
        EXPECT_EQ(result.err, Expand(c["stderr"].asString(), texts));
    for (const std::string& path : c["outputs"].getMemberNames())
    {
        EXPECT_EQ(test::ReadFile(dir.File(path)), Contents(c["outputs"][path], texts)) << path;
    }
    for (const Json::Value& path : c["absent"])
        EXPECT_FALSE(std::filesystem::exists(dir.File(path.asString()))) << path.asString();
}

const Json::Value& Table()
{
    static const Json::Value table = []
    {
        Json::Value read;
        Json::Reader().parse(test::ReadFile(std::string(KELVORIG_SOURCE_DIR) + "/tests/driver/cli_cases.json"), read,
                             false);
        return read;
    }();
    return table;
}

// Each case is a test of its own, named after it, so that a failure names its case.
class CommandLineCase : public testing::TestWithParam<Json::ArrayIndex>
{
};

TEST_P(CommandLineCase, RunsAsTheTableSays)
{
    RunCase(Table()["cases"][GetParam()], Table()["texts"]);
}

std::string CaseName(const testing::TestParamInfo<Json::ArrayIndex>& info)
{
    std::string name = Table()["cases"][info.param]["name"].asString();
    for (char& c : name)
        c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(Table, CommandLineCase, testing::Range(0u, Table()["cases"].size()), CaseName);

} // namespace
} // namespace kelvorig
