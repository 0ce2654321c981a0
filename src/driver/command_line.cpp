#include "driver/command_line.h"

#include "driver/switch_table.h"
#include "support/angles.h"
#include "support/text_case.h"

#include <cstdio>
#include <cstdlib>
#include <span>
#include <utility>

namespace kelvorig {
namespace {

using Kind = SwitchRow::Kind;

// The row named by `argument` whose values all follow it; none when there is no such row.
const SwitchRow* FindSwitch(const std::string& argument, size_t following)
{
    for (const SwitchRow& row : SwitchTable())
    {
        if (following >= row.ValueCount() && EqualsIgnoringCase(argument, row.name))
            return &row;
    }
    return nullptr;
}

// Puts the values into the row's field; false when a number does not scan, the field then
// keeping its earlier value.
bool Store(const SwitchRow& row, std::span<const std::string> values, CommandOptions& options)
{
    switch (row.kind)
    {
    case Kind::kFlag:
        options.*std::get<bool CommandOptions::*>(row.field) = true;
        return true;
    case Kind::kText:
        options.*std::get<std::string CommandOptions::*>(row.field) = values[0];
        return true;
    case Kind::kTextList:
        (options.*std::get<std::vector<std::string> CommandOptions::*>(row.field)).push_back(values[0]);
        return true;
    case Kind::kCount:
        return ScanInt(values[0], options.*std::get<int32_t CommandOptions::*>(row.field));
    case Kind::kSeed:
    {
        const char* begin = values[0].c_str();
        char* end = nullptr;
        const long long seed = std::strtoll(begin, &end, 10); // saturates when out of range
        if (end == begin)
            return false;
        options.*std::get<std::optional<int64_t> CommandOptions::*>(row.field) = seed;
        return true;
    }
    case Kind::kReal:
        return ScanDouble(values[0], options.*std::get<double CommandOptions::*>(row.field));
    case Kind::kOptionalReal:
    {
        std::optional<double>& value = options.*std::get<std::optional<double> CommandOptions::*>(row.field);
        value = 0.0;
        return ScanDouble(values[0], *value);
    }
    case Kind::kDegreesRadians:
    {
        double degrees = 0.0;
        if (!ScanDouble(values[0], degrees))
            return false;
        options.*std::get<double CommandOptions::*>(row.field) = DegreesToRadians(degrees);
        return true;
    }
    case Kind::kRealPair:
    {
        // Both values are scanned, and put in order, before either failure counts.
        const auto [lowField, highField] = std::get<std::array<double CommandOptions::*, 2>>(row.field);
        const bool lowRead = ScanDouble(values[0], options.*lowField);
        const bool highRead = ScanDouble(values[1], options.*highField);
        if (options.*lowField > options.*highField)
            std::swap(options.*lowField, options.*highField);
        return lowRead && highRead;
    }
    case Kind::kTool:
        break;
    }
    return true;
}

} // namespace

bool ReadCommandLine(const std::vector<std::string>& arguments, CommandOptions& options)
{
    options.arguments = arguments;
    for (size_t i = 0; i < arguments.size(); ++i)
    {
        const std::string& argument = arguments[i];
        if (argument.empty() || argument[0] != '/')
        {
            std::fprintf(stderr, "Unrecognized command line argument [ %s ].\n", argument.c_str());
            return false;
        }
        // A switch is only itself when all its values follow; they are taken whatever they
        // look like, a leading "/" included.
        const SwitchRow* row = FindSwitch(argument, arguments.size() - i - 1);
        if (row == nullptr)
        {
            std::fprintf(stderr, "Unrecognized command line switch [ %s ].\n", argument.c_str());
            return false;
        }
        if (row->kind == Kind::kTool)
        {
            options.tool = std::get<CommandOptions::Tool>(row->field);
            options.toolArguments.assign(arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1, arguments.end());
            return true;
        }
        const std::span<const std::string> values(arguments.data() + i + 1, row->ValueCount());
        i += values.size();
        if (!Store(*row, values, options))
            return false;
        if (row->range.requirement[0] != '\0')
            options.givenNumbers.emplace_back(row->name, values.size() == 2 ? values[0] + " " + values[1] : values[0]);
    }
    return true;
}

} // namespace kelvorig
