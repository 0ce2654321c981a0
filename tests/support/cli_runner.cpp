#include "support/cli_runner.h"

#include "driver/driver.h"

#include <iostream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvorig::test {

int StartKelvorig(const std::vector<std::string>& arguments, const std::string& outPath, const std::string& errPath,
                  const std::string& workingDirectory)
{
    const pid_t child = fork();
    if (child < 0)
        throw std::runtime_error("fork failed");
    if (child == 0)
    {
        dup2(open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), 1);
        dup2(open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), 2);
        if (!workingDirectory.empty() && chdir(workingDirectory.c_str()) != 0)
            _exit(127);
        std::string binary = KELVORIG_BINARY;
        std::vector<std::string> copies = arguments;
        std::vector<char*> argv = {binary.data()};
        for (std::string& argument : copies)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        execv(binary.c_str(), argv.data());
        _exit(127);
    }
    return child;
}

int ExitStatus(int waitStatus)
{
    return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : 128 + WTERMSIG(waitStatus);
}

CliResult RunKelvorig(const std::vector<std::string>& arguments, const std::string& workingDirectory)
{
    TempDir capture;
    int status = 0;
    waitpid(StartKelvorig(arguments, capture.File("out"), capture.File("err"), workingDirectory), &status, 0);
    return {ExitStatus(status), ReadFile(capture.File("out")), ReadFile(capture.File("err"))};
}

CliResult RunInProcess(const std::vector<std::string>& arguments)
{
    TempDir capture;
    std::cout.flush();
    std::fflush(nullptr);
    const int savedOut = dup(1);
    const int savedErr = dup(2);
    for (const auto& [name, fd] : {std::pair{"out", 1}, {"err", 2}})
    {
        const int file = open(capture.File(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        dup2(file, fd);
        close(file);
    }
    const int status = RunCommandLine(arguments);
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
    dup2(savedOut, 1);
    dup2(savedErr, 2);
    close(savedOut);
    close(savedErr);
    return {status, ReadFile(capture.File("out")), ReadFile(capture.File("err"))};
}

CliResult CaptureFiles(const std::function<void(FILE* out, FILE* err)>& write)
{
    TempDir capture;
    FILE* out = std::fopen(capture.File("out").c_str(), "w");
    FILE* err = std::fopen(capture.File("err").c_str(), "w");
    write(out, err);
    std::fclose(out);
    std::fclose(err);
    return {0, ReadFile(capture.File("out")), ReadFile(capture.File("err"))};
}

} // namespace kelvorig::test
