// Any text as the IMU description of /trackref_from_imu.
#include "config/trackref_tool.h"

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::ostringstream out;
    static_cast<void>(
        kelvorig::TrackrefFromText("fuzz.json", std::string(reinterpret_cast<const char*>(data), size), out, out));
    return 0;
}
