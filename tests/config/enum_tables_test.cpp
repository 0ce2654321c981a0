#include "config/enum_tables.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvorig {
namespace {

TEST(EnumTables, NamesAreCutFromTheDeclarationInOrder)
{
    EnumTable& eyes = EyeEnumTable();
    ASSERT_EQ(eyes.Count(), 6);
    const char* const eyeNames[] = {"eEYE_LEFT", "eEYE_L", "eEYE_FIRST", "eEYE_RIGHT", "eEYE_R", "eNUM_EYES"};
    const int64_t eyeValues[] = {0, 0, 0, 1, 1, 2};
    for (int i = 0; i < 6; ++i)
    {
        EXPECT_STREQ(eyes.Name(i), eyeNames[i]);
        EXPECT_EQ(eyes.Value(i), eyeValues[i]);
    }

    EnumTable& distortions = DistortionEnumTable();
    ASSERT_EQ(distortions.Count(), 15);
    EXPECT_STREQ(distortions.Name(0), "DISTORT_NONE");
    EXPECT_STREQ(distortions.Name(1), "DISTORT_POLY2_TANGENT");
    EXPECT_STREQ(distortions.Name(11), "DISTORT_DPOLY3_SCALED");
    EXPECT_STREQ(distortions.Name(13), "DISTORT_R1_POLY_4");
    EXPECT_STREQ(distortions.Name(14), "DISTORT__COUNT");
    EXPECT_EQ(distortions.Value(14), 14);
}

TEST(EnumTables, CutsNamesAroundSpacesAndSkipsWrittenValues)
{
    char declaration[] = "  A = 7 junk, B,C=C ,  D";
    const int64_t values[] = {10, 11, 12, 13};
    EnumTable table(declaration, values, 4);
    EXPECT_STREQ(table.Name(0), "A");
    EXPECT_STREQ(table.Name(1), "B");
    EXPECT_STREQ(table.Name(2), "C");
    EXPECT_STREQ(table.Name(3), "D");
    EXPECT_EQ(table.IndexOfName("d"), 3);
}

TEST(EnumTables, LookupsIgnoreCaseAndPreferTheFirstName)
{
    EXPECT_EQ(EyeFromName("eeye_right"), 1);
    EXPECT_EQ(EyeFromName("EEYE_R"), 1);
    EXPECT_EQ(EyeFromName("eNUM_EYES"), 2);
    EXPECT_EQ(EyeFromName("left"), 0);
    EXPECT_EQ(DistortionFromName("distort_fov3"), 7);
    EXPECT_EQ(DistortionFromName("DISTORT_SOMETHING"), 0);
    EXPECT_EQ(EyeEnumTable().IndexOfName("nope"), -1);

    EXPECT_STREQ(NameOfValue(EyeEnumTable(), 0), "eEYE_LEFT");
    EXPECT_STREQ(NameOfValue(EyeEnumTable(), 1), "eEYE_RIGHT");
    EXPECT_STREQ(NameOfValue(DistortionEnumTable(), 12), "DISTORT_FTHETA");
    EXPECT_STREQ(NameOfValue(DistortionEnumTable(), 99), "");

    const int64_t values[] = {4, 5, 5};
    EXPECT_EQ(EnumIndexOfValue(5, values, 3), 1);
    EXPECT_EQ(EnumIndexOfValue(6, values, 3), -1);
    const char* const names[] = {"x", "Y"};
    EXPECT_EQ(EnumIndexOfName("y", names, 2), 1);
}

} // namespace
} // namespace kelvorig
