#pragma once

#include <Eigen/Core>

#include <string>
#include <vector>

namespace kelvorig::test {

// One row of a drawing's sensor list: position, and the normal recovered from the
// marker's turn of +Z.
struct ScadSeat
{
    Eigen::Vector3f position;
    Eigen::Vector3f normal;
};

std::vector<ScadSeat> ParseScadSeats(const std::string& scad);

} // namespace kelvorig::test
