#include "driver/driver.h"

#include <string>
#include <vector>

int main(int argc, char** argv)
{
    return kelvorig::RunCommandLine(std::vector<std::string>(argv + 1, argv + argc));
}
