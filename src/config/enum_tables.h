#pragma once

#include <array>
#include <cstdint>

namespace kelvorig {

// An enumeration that travels in JSON by name. The names are cut out of the declaration
// text on first use; the values are stored beside it by hand, in the same order.
class EnumTable
{
public:
    static constexpr int kMaxNames = 16;

    // `declaration` is cut in place and must outlive the table; `values` holds `count`
    // entries, one per name in the declaration.
    EnumTable(char* declaration, const int64_t* values, int count);

    // Index of `name` (case-insensitive), or -1.
    int IndexOfName(const char* name);
    // Index of the first entry holding `value`, or -1.
    int IndexOfValue(int64_t value) const;

    const char* Name(int index);
    int64_t Value(int index) const { return values_[index]; }
    int Count() const { return count_; }

private:
    void Build();

    char* declaration_;
    const int64_t* values_;
    int count_;
    std::array<const char*, kMaxNames> names_{};
    bool built_ = false;
};

// Linear search without regard to case; -1 when absent.
int EnumIndexOfName(const char* name, const char* const* names, int count);
// Linear search from the start, so the first of several names of one value wins; -1 when absent.
int EnumIndexOfValue(int64_t value, const int64_t* values, int count);

// eEYE_LEFT 0 (also eEYE_L, eEYE_FIRST), eEYE_RIGHT 1 (also eEYE_R), eNUM_EYES 2.
EnumTable& EyeEnumTable();
// DISTORT_NONE 0, DISTORT_POLY2_TANGENT 1, ... DISTORT_R1_POLY_4 13, DISTORT__COUNT 14.
EnumTable& DistortionEnumTable();

// Value of an eye name; a name outside the table reads as 0 (the left eye).
int32_t EyeFromName(const char* name);
// Value of a distortion name; a name outside the table reads as 0 (DISTORT_NONE).
int32_t DistortionFromName(const char* name);
// The first name of `value` in `table`; the empty text when no name has it.
const char* NameOfValue(EnumTable& table, int64_t value);

} // namespace kelvorig
