#pragma once

#include "support/status.h"

#include "model/sensor_model.h"

#include <memory>
#include <string>

namespace kelvorig {

// Finds and reads a sensor model: a path holding ".json" is read as it stands; anything
// else is a bare device name looked up as cfg/hmd/<name>.json under the runtime's drivers
// directory. A text holding "\"pharoscope_config\"" is a whole device file, otherwise a
// standalone section. Fails, saying why, when the file can't be read. `model` must be fresh:
// parsing appends to its lists.
Status ReadModel(const std::string& path, TrackedObjectModel& model);

// The reading of ReadModel on a file's text already in memory (non-empty, CR LF folded);
// `name` stands for the file in messages.
Status ReadModelText(const std::string& name, const std::string& text, TrackedObjectModel& model);

// ReadModel, then a SensorLayout with the identity transform; fails as ReadModel does.
Status LoadSensorLayout(const std::string& path, std::unique_ptr<SensorLayout>& layout);

} // namespace kelvorig
