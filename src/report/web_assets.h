#pragma once

#include <string_view>

namespace kelvorig {

// Scripts built into the executable, so that the HTML report opens offline: three.js and its
// OrbitControls from the system's three.js package, and the report page's own script.
std::string_view ThreeJsSource();
std::string_view OrbitControlsSource();
std::string_view ReportPageScript();

} // namespace kelvorig
