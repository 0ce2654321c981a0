#include "support/progress_stream.h"

namespace kelvorig {
namespace {

std::ostream* progressStream = nullptr;

} // namespace

void SetProgressStream(std::ostream* stream)
{
    progressStream = stream;
}

std::ostream* ProgressStream()
{
    return progressStream;
}

} // namespace kelvorig
