#pragma once

#include "driver/command_options.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace kelvorig {

// Which runs read a switch's value, and so when its range is checked: a value a run never
// looks at is not refused.
enum class SwitchUse
{
    kAnyRun,
    kReport, // the analysis run, and the generate run (which scores and reports)
    kAnneal  // the generate run only
};

// The values a numeric switch accepts, with the words that say so.
struct SwitchRange
{
    double low = 0.0;
    double high = 0.0;
    bool lowOpen = false; // low itself refused
    bool highOpen = false;
    bool zeroRefused = false;
    double minGap = 0.0;          // two values: the least by which they must differ
    const char* requirement = ""; // "the count must be a whole number, 1 or more"
    // A documented size limit with its own words, checked after the range:
    // "<switch> <value> is more than the <limit> <limitWhat>".
    double limit = 0.0; // 0: none
    const char* limitWhat = "";
};

// One switch: its name, the field its values set, and for numbers how they are read and checked.
struct SwitchRow
{
    enum class Kind
    {
        kFlag,           // no value
        kText,           // one value, last use wins
        kTextList,       // one value, appended at each use
        kCount,          // a whole number, 32 bits
        kSeed,           // a whole number, 0 to 2^32 - 1
        kReal,           // a finite number
        kOptionalReal,   // a finite number, and the field records that it was given
        kDegreesRadians, // a finite number of degrees, stored in radians
        kRealPair,       // two finite numbers, put in order (/qualityrange)
        kTool            // ends the reading; the rest of the line is the tool's
    };
    using Field =
        std::variant<std::monostate, bool CommandOptions::*, std::string CommandOptions::*,
                     std::vector<std::string> CommandOptions::*, int32_t CommandOptions::*, double CommandOptions::*,
                     std::optional<double> CommandOptions::*, std::optional<int64_t> CommandOptions::*,
                     std::array<double CommandOptions::*, 2>, CommandOptions::Tool>;

    const char* name;
    Kind kind;
    Field field;
    SwitchUse use = SwitchUse::kAnyRun;
    SwitchRange range;

    size_t ValueCount() const;
};

// Every switch of the command line, in the order their values are checked.
std::span<const SwitchRow> SwitchTable();

// The value of `text` when the whole of it is a number of `kind` (kCount and kSeed: whole
// numbers; otherwise any finite number); none for anything else ("1e3" as a count, "5abc",
// "0x10", "nan").
std::optional<double> ReadWholeNumber(const std::string& text, SwitchRow::Kind kind);

// Leading-number scans with the syntax of "%d" and "%lf", which the command line has always
// read: text behind the number is ignored here and refused later by the checks. On false the
// value is left as it was.
bool ScanInt(const std::string& text, int32_t& value);
bool ScanDouble(const std::string& text, double& value);

} // namespace kelvorig
