#pragma once

#include "support/status.h"

#include "model/sensor_model.h"

#include <memory>
#include <string>

namespace kelvorig {

// Finds and reads a sensor model: a path holding ".json" is read as it stands; anything
// else is a bare device name looked up as cfg/hmd/<name>.json under the runtime's drivers
// directory. A text holding "\"pharoscope_config\"" is a whole device file, otherwise a
// standalone section. Fails, saying why, when the file can't be read or its layout is broken
// (see CheckLayoutSection), whose lesser faults are warned of in `warnings`, if given. `model`
// must be fresh: parsing appends to its lists.
Status ReadModel(const std::string& path, TrackedObjectModel& model, std::string* warnings = nullptr);

// The reading of ReadModel on a file's text already in memory (non-empty, CR LF folded);
// `name` stands for the file in messages.
Status ReadModelText(const std::string& name, const std::string& text, TrackedObjectModel& model,
                     std::string* warnings = nullptr);

} // namespace kelvorig
