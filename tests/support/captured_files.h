#pragma once

#include <cstdio>
#include <functional>
#include <string>

namespace kelvorig::test {

struct CapturedFiles
{
    std::string out;
    std::string err;
};

// Runs `write` on two fresh temporary files and returns what it wrote to each.
CapturedFiles CaptureFiles(const std::function<void(FILE* out, FILE* err)>& write);

} // namespace kelvorig::test
