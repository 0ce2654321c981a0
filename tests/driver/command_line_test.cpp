#include "driver/command_line.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

// The two values of /qualityrange are put in order as they are read, whichever comes first.
// (What every other switch does is in the command-line table.)
TEST(ReadCommandLine, QualityRangeIsPutInOrder)
{
    for (const auto& [first, second] : {std::pair{"5", "2"}, {"2", "5"}})
    {
        CommandOptions options;
        ASSERT_TRUE(ReadCommandLine({"/qualityrange", first, second}, options));
        EXPECT_EQ(std::tie(options.qualityLow, options.qualityHigh), std::make_tuple(2.0, 5.0));
    }
}

} // namespace
} // namespace kelvorig
