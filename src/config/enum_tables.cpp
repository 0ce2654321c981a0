#include "config/enum_tables.h"

#include "support/text_case.h"

namespace kelvorig {
namespace {

char eyeDeclaration[] =
    "eEYE_LEFT =0, eEYE_L=eEYE_LEFT, eEYE_FIRST=eEYE_LEFT, eEYE_RIGHT=1, eEYE_R=eEYE_RIGHT, eNUM_EYES =2";
constexpr int64_t kEyeValues[] = {0, 0, 0, 1, 1, 2};

char distortionDeclaration[] =
    "DISTORT_NONE = 0, DISTORT_POLY2_TANGENT, DISTORT_POLY3_TANGENT, DISTORT_POLY2, DISTORT_POLY3, "
    "DISTORT_FOV1, DISTORT_FOV2, DISTORT_FOV3, DISTORT_RPOLY2_1, DISTORT_RPOLY2_2, DISTORT_DPOLY3, "
    "DISTORT_DPOLY3_SCALED, DISTORT_FTHETA, DISTORT_R1_POLY_4, DISTORT__COUNT";
constexpr int64_t kDistortionValues[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14};

template <size_t N>
constexpr int CountOf(const int64_t (&)[N])
{
    return static_cast<int>(N);
}

int32_t ValueOfName(EnumTable& table, const char* name)
{
    const int index = table.IndexOfName(name);
    return index < 0 ? 0 : static_cast<int32_t>(table.Value(index));
}

} // namespace

EnumTable::EnumTable(char* declaration, const int64_t* values, int count)
    : declaration_(declaration),
      values_(values),
      count_(count)
{
}

// note: the values written in the declaration are never parsed: a name ends at ',', '='
// or ' ', and after '=' everything up to the next comma is skipped.
void EnumTable::Build()
{
    int found = 0;
    char* p = declaration_;
    while (*p != '\0' && found < kMaxNames)
    {
        while (*p == ' ')
            ++p;
        if (*p == '\0')
            break;
        names_[found++] = p;
        while (*p != '\0' && *p != ',' && *p != '=' && *p != ' ')
            ++p;
        char* end = p;
        while (*p == ' ')
            ++p;
        const char stop = *p;
        *end = '\0';
        if (stop == '\0')
            break;
        ++p;
        if (stop == '=')
        {
            while (*p != '\0' && *p != ',')
                ++p;
            if (*p == ',')
                ++p;
        }
    }
    built_ = true;
}

int EnumTable::IndexOfName(const char* name)
{
    if (!built_)
        Build();
    return EnumIndexOfName(name, names_.data(), count_);
}

int EnumTable::IndexOfValue(int64_t value) const
{
    return EnumIndexOfValue(value, values_, count_);
}

const char* EnumTable::Name(int index)
{
    if (!built_)
        Build();
    return names_[index];
}

int EnumIndexOfName(const char* name, const char* const* names, int count)
{
    for (int i = 0; i < count; ++i)
    {
        if (names[i] != nullptr && EqualsIgnoringCase(name, names[i]))
            return i;
    }
    return -1;
}

int EnumIndexOfValue(int64_t value, const int64_t* values, int count)
{
    for (int i = 0; i < count; ++i)
    {
        if (values[i] == value)
            return i;
    }
    return -1;
}

EnumTable& EyeEnumTable()
{
    static EnumTable table(eyeDeclaration, kEyeValues, CountOf(kEyeValues));
    return table;
}

EnumTable& DistortionEnumTable()
{
    static EnumTable table(distortionDeclaration, kDistortionValues, CountOf(kDistortionValues));
    return table;
}

int32_t EyeFromName(const char* name)
{
    return ValueOfName(EyeEnumTable(), name);
}

int32_t DistortionFromName(const char* name)
{
    return ValueOfName(DistortionEnumTable(), name);
}

const char* NameOfValue(EnumTable& table, int64_t value)
{
    const int index = table.IndexOfValue(value);
    return index < 0 ? "" : table.Name(index);
}

} // namespace kelvorig
