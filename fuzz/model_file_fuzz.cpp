// Any text as a sensor model file (standalone section or whole device file), then the layout
// the driver builds from it and the JSON a generate run writes of it.
#include "config/model_file.h"

#include <json/writer.h>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace kelvorig;
    const std::string text(reinterpret_cast<const char*>(data), size);
    TrackedObjectModel model;
    if (text.empty() || !ReadModelText("fuzz.json", text, model))
        return 0;
    const SensorLayout layout(model, kIdentityTransform);
    Json::StyledWriter().write(model.ModelToJson());
    return 0;
}
