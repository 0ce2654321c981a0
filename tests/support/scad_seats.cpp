#include "support/scad_seats.h"

#include <Eigen/Geometry>

#include <cstdio>
#include <sstream>

namespace kelvorig::test {

std::vector<ScadSeat> ParseScadSeats(const std::string& scad)
{
    std::vector<ScadSeat> seats;
    std::istringstream lines(scad);
    for (std::string line; std::getline(lines, line);)
    {
        int index = 0;
        float p[3], degrees = 0.0f, axis[3];
        if (std::sscanf(line.c_str(), " [ [ %d, \"lime\" ], [ %f, %f, %f], %f, [%f, %f, %f] ]", &index, &p[0], &p[1],
                        &p[2], &degrees, &axis[0], &axis[1], &axis[2]) == 8)
            seats.push_back({Eigen::Vector3f(p),
                             Eigen::AngleAxisf(degrees * 3.14159265f / 180.0f, Eigen::Vector3f(axis).normalized()) *
                                 Eigen::Vector3f::UnitZ()});
    }
    return seats;
}

} // namespace kelvorig::test
