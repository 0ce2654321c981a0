#pragma once

#include "support/test_files.h"

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace kelvorig::test {

struct CliResult
{
    int status = -1;
    std::string out;
    std::string err;
};

// Runs the built kelvorig binary with these arguments (no shell), in `workingDirectory`
// when it is not empty, and captures both streams; a signal gives 128 plus its number.
CliResult RunKelvorig(const std::vector<std::string>& arguments, const std::string& workingDirectory = "");

// Starts the built binary with standard output and error written to these files; returns its
// process id. ExitStatus reads a status from waitpid as RunKelvorig reports it.
int StartKelvorig(const std::vector<std::string>& arguments, const std::string& outPath, const std::string& errPath,
                  const std::string& workingDirectory = "");
int ExitStatus(int waitStatus);

// Runs RunCommandLine in this process with standard output and error sent to files.
CliResult RunInProcess(const std::vector<std::string>& arguments);

// Runs `write` on two fresh temporary files and returns what it wrote to each.
CliResult CaptureFiles(const std::function<void(FILE* out, FILE* err)>& write);

} // namespace kelvorig::test
