#include "common/pid.h"

#include <gtest/gtest.h>

using namespace olvex;

namespace {

TEST(Pid, ValidityAtRangeEndsAndGroupC)
{
    struct Case
    {
        qint64 value;
        bool valid;
    } cases[] = {
        {99999, false},       {100000, true},      {1999999999, false}, // group C of it is 9
        {1999989999, true},   {2000000000, false}, {-100000, false},
        {1234567890, false},  // C = 6
        {1234597890, false},  // C = 9
        {1234577890, true},   // C = 7
        {1234587890, true},   // C = 8
        {1234507890, true},   {0, false},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(IsValidPid(c.value), c.valid) << c.value;
        // Every formatter agrees with the validity rule.
        EXPECT_EQ(FormatPid(c.value).isEmpty(), !c.valid) << c.value;
        EXPECT_EQ(FormatPidPlain(c.value).isEmpty(), !c.valid) << c.value;
        EXPECT_EQ(FormatPidPadded(c.value).isEmpty(), !c.valid) << c.value;
    }
}

TEST(Pid, ValidityOfValues)
{
    EXPECT_TRUE(IsValidPid(Value(123456789)));
    EXPECT_TRUE(IsValidPid(Value(123456789.4)));   // fractions become whole numbers first
    EXPECT_TRUE(IsValidPid(Value(99999.6)));       // rounds to 100000
    EXPECT_FALSE(IsValidPid(Value(99999.4)));      // rounds to 99999
    EXPECT_TRUE(IsValidPid(Value("1-234-5-67-89")));
    EXPECT_FALSE(IsValidPid(Value("abc")));
    EXPECT_FALSE(IsValidPid(Value::null()));
    EXPECT_FALSE(IsValidPid(Value()));
    EXPECT_FALSE(IsValidPid(Value(true)));
}

TEST(Pid, TextForms)
{
    struct Case
    {
        qint64 pid;
        const char *display;
        const char *plain;
        const char *padded;
    } cases[] = {
        {123456789, "1-234-5-67-89", "123456789", "0123456789"},
        {1234567, "0-012-3-45-67", "001234567", "0001234567"},
        {1234507890, "12-345-0-78-90", "1234507890", "1234507890"},
        {100000, "0-001-0-00-00", "000100000", "0000100000"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(FormatPid(c.pid), QString::fromLatin1(c.display));
        EXPECT_EQ(FormatPidPlain(c.pid), QString::fromLatin1(c.plain));
        EXPECT_EQ(FormatPidPadded(c.pid), QString::fromLatin1(c.padded));
        // The display and plain forms read back to the same PID.
        EXPECT_EQ(ParsePid(FormatPid(c.pid)), c.pid);
        EXPECT_EQ(ParsePid(FormatPidPlain(c.pid)), c.pid);
    }
}

TEST(Pid, Parts)
{
    const qint64 pid = 1234587890; // A=12 B=345 C=8 D=78 E=90
    const qint64 seven = 1234577890;
    struct Case
    {
        qint64 pid;
        int part;
        int expected;
    } cases[] = {
        {pid, 1, 12},  {pid, 2, 345},  {pid, 3, 90}, {pid, 4, 78}, {pid, 5, 8},
        {seven, 5, 7}, {seven, -5, 8}, {pid, -5, 8}, {pid, 0, 0},  {pid, -1, 0},
        {pid, -4, 0},  {pid, 6, 0},    {pid, -6, 0},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(GetPidPart(c.pid, c.part), c.expected) << c.pid << " part " << c.part;
    }
}

TEST(Pid, Parse)
{
    struct Case
    {
        const char *text;
        bool bracketed;
        qint32 expected;
    } cases[] = {
        {"1-234-5-67-89", false, 123456789},
        {"123456789", false, 123456789},
        {"1 234 5 67 89", false, 123456789},
        {"1x234y5z67w89", false, 123456789}, // any non-digit separates
        {"#1-234-5-67-89", false, 123456789},
        {"  0-012-3-45-67  ", false, 1234567},
        {"234-5-67-89", false, 23456789}, // A missing with nothing left is 0
        {"-234-5-67-89", false, 0},       // ... but a separator left over means A is missing
        {"12-345-0-78-90", false, 1234507890},
        {"20-000-0-00-00", false, 0}, // A out of range
        {"1-234-6-67-89", false, 0},  // group C 6 is never used
        {"1-234-9-67-89", false, 0},
        {"5-67-89", false, 0}, // B missing
        {"", false, 0},
        {"abc", false, 0},
        {"99999", false, 0}, // below the smallest PID
        {"[1-234-5-67-89]", true, 123456789},
        {"  [ 1-234-5-67-89] tail", true, 123456789},
        {"[@x]", true, 0},
        {"[ @1-234-5-67-89]", true, 0},
        {"[1-234-5-67-89", true, 0}, // no closing bracket
        {"1-234-5-67-89", true, 0},  // no opening bracket
        {"[1-234-5-67-89]", false, 123456789},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(ParsePid(QString::fromLatin1(c.text), c.bracketed), c.expected)
            << '"' << c.text << "\" bracketed=" << c.bracketed;
    }
}

TEST(Pid, Build)
{
    EXPECT_EQ(BuildPid(1, 234, 5, 67, 89), 123456789);
    EXPECT_EQ(BuildPid(19, 999, 8, 99, 99), 1999989999);
    EXPECT_EQ(BuildPid(20, 0, 0, 0, 0), 0);
    EXPECT_EQ(BuildPid(-1, 0, 0, 0, 0), 0);
    EXPECT_EQ(BuildPid(0, 1000, 0, 0, 0), 0);
    EXPECT_EQ(BuildPid(0, 0, 10, 0, 0), 0);
    EXPECT_EQ(BuildPid(0, 0, 0, 100, 0), 0);
    EXPECT_EQ(BuildPid(0, 0, 0, 0, 100), 0);
    EXPECT_EQ(BuildPid(0, 0, 9, 99, 99), 0); // 99999 is below the range
    EXPECT_EQ(BuildPid(1, 0, 6, 0, 0), 0);
}

} // namespace
