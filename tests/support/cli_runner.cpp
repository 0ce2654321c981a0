#include "support/cli_runner.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvorig::test {
namespace {

std::string Slurp(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

} // namespace

CliResult RunKelvorig(const std::vector<std::string>& arguments, const std::string& workingDirectory)
{
    TempDir capture;
    const std::string outPath = capture.File("stdout");
    const std::string errPath = capture.File("stderr");

    const pid_t child = fork();
    if (child < 0)
        throw std::runtime_error("fork failed");
    if (child == 0)
    {
        const int outFd = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const int errFd = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(outFd, 1);
        dup2(errFd, 2);
        if (!workingDirectory.empty() && chdir(workingDirectory.c_str()) != 0)
            _exit(127);
        std::vector<char*> argv;
        std::string binary = KELVORIG_BINARY;
        argv.push_back(binary.data());
        std::vector<std::string> copies = arguments;
        for (std::string& argument : copies)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        execv(binary.c_str(), argv.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);

    CliResult result;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.out = Slurp(outPath);
    result.err = Slurp(errPath);
    return result;
}

TempDir::TempDir()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "kelvorig-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("mkdtemp failed");
    path_ = pattern;
}

TempDir::~TempDir()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void WriteFile(const std::string& path, const std::string& contents)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << contents;
}

std::string ReadFile(const std::string& path)
{
    return Slurp(path);
}

} // namespace kelvorig::test
