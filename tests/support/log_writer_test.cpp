#include "support/log_writer.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <string>

namespace kelvorig {
namespace {

const char* const kStamp = R"([A-Z][a-z]{2} [A-Z][a-z]{2} \d{2} \d{4} \d{2}:\d{2}:\d{2}\.\d{3})";

std::string Contents(FILE* stream)
{
    std::fflush(stream);
    std::string text(static_cast<size_t>(std::ftell(stream)), '\0');
    std::rewind(stream);
    text.resize(std::fread(text.data(), 1, text.size(), stream));
    return text;
}

TEST(LogWriter, PrefixesLinesAndClosesOpenOnes)
{
    FILE* stream = std::tmpfile();
    FILE* second = std::tmpfile();
    LogWriter log;
    log.Write(0, false, "dropped: not open\n");
    log.Open(stream, second, "kelvorig", 2);
    log.Write(1, false, "Out of thread local storage!\n");
    log.Write(3, false, "dropped: above the level\n");
    log.Write(2, false, "count %d", 7);
    log.Write(2, true, ", continued\n");
    log.Write(2, false, "open");
    log.Write(2, false, "next\n");

    const std::string s = kStamp;
    EXPECT_TRUE(
        std::regex_match(Contents(stream), std::regex(s + " - Out of thread local storage!\n" + s +
                                                      " - count 7, continued\n" + s + " - open\n" + s + " - next\n")))
        << Contents(stream);
    EXPECT_TRUE(std::regex_match(Contents(second), std::regex(s + " - kelvorig - Out of thread local storage!\n" + s +
                                                              " - kelvorig - count 7kelvorig - , continued\n" + s +
                                                              " - kelvorig - open" + s + " - kelvorig - next\n")))
        << Contents(second);
    std::fclose(stream);
    std::fclose(second);
}

} // namespace
} // namespace kelvorig
