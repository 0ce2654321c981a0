#include "support/captured_files.h"

namespace kelvorig::test {
namespace {

std::string ReadBackAndClose(FILE* file)
{
    std::rewind(file);
    std::string text;
    char buffer[4096];
    size_t count;
    while ((count = std::fread(buffer, 1, sizeof buffer, file)) > 0)
        text.append(buffer, count);
    std::fclose(file);
    return text;
}

} // namespace

CapturedFiles CaptureFiles(const std::function<void(FILE* out, FILE* err)>& write)
{
    FILE* out = std::tmpfile();
    FILE* err = std::tmpfile();
    write(out, err);
    return {ReadBackAndClose(out), ReadBackAndClose(err)};
}

} // namespace kelvorig::test
