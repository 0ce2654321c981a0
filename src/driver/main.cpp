#include "driver/usage.h"

int main(int, char**)
{
    kelvorig::PrintUsage();
}
