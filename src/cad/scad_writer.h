#pragma once

#include "model/sensor_model.h"

#include <Eigen/Core>

#include <string>
#include <vector>

namespace kelvorig {

// OpenSCAD text of a layout over the meshes it sits on, drawn in millimetres. Reads only
// channelMap, modelPoints and modelNormals of the model. `scale` is the surface's unit
// scale (1.0 without a surface). Keep-out volumes, in the surface's unit, are drawn translucent
// red after the obstacles.
std::string WriteScadFile(const TrackedObjectModel& model, const std::string& surfacePath,
                          const std::vector<std::string>& obstaclePaths, double scale, bool withScadNormals,
                          const std::vector<std::string>& keepOutPaths = {});

// "<negated angle in degrees>, [ax, ay, az]": turns +Z onto the normal.
std::string RotationText(const Eigen::Vector3f& normal);

// Replaces every occurrence of `find`, resuming the search behind each replacement.
std::string ReplaceAll(std::string text, const std::string& find, const std::string& replacement);

} // namespace kelvorig
