#include "common/pid.h"

#include <gtest/gtest.h>

#include <array>

using namespace olvex;

namespace {

TEST(Pid, ValidityAndTextForms)
{
    // PID, display, plain and padded form; all empty for a number that is no valid PID.
    const std::tuple<qint64, const char *, const char *, const char *> cases[] = {
        {123456789, "1-234-5-67-89", "123456789", "0123456789"},
        {1234567, "0-012-3-45-67", "001234567", "0001234567"},
        {1234507890, "12-345-0-78-90", "1234507890", "1234507890"},
        {100000, "0-001-0-00-00", "000100000", "0000100000"},
        {1234577890, "12-345-7-78-90", "1234577890", "1234577890"},
        {99999, "", "", ""},
        {1999999999, "", "", ""}, // group C of it is 9
        {-100000, "", "", ""},
        {1234567890, "", "", ""}, // C = 6
        {0, "", "", ""},
    };
    for (const auto &[pid, display, plain, padded] : cases) {
        EXPECT_EQ(IsValidPid(pid), display[0] != '\0') << pid;
        EXPECT_EQ(FormatPid(pid), QString::fromLatin1(display));
        EXPECT_EQ(FormatPidPlain(pid), QString::fromLatin1(plain));
        EXPECT_EQ(FormatPidPadded(pid), QString::fromLatin1(padded));
        // The display and plain forms read back to the same PID.
        EXPECT_EQ(ParsePid(QString::fromLatin1(display)), IsValidPid(pid) ? pid : 0);
        EXPECT_EQ(ParsePid(QString::fromLatin1(plain)), IsValidPid(pid) ? pid : 0);
    }
    // Values: fractions become whole numbers first; texts are parsed.
    const std::pair<Value, bool> values[] = {
        {Value(123456789.4), true}, {Value(99999.6), true},
        {Value(99999.4), false},    {Value("1-234-5-67-89"), true},
        {Value("abc"), false},      {Value::null(), false},
        {Value(), false},           {Value(true), false},
    };
    for (const auto &[value, valid] : values)
        EXPECT_EQ(IsValidPid(value), valid) << value.debugText().toStdString();
}

TEST(Pid, PartsAndBuild)
{
    const qint64 pid = 1234587890; // A=12 B=345 C=8 D=78 E=90
    const qint64 seven = 1234577890;
    // PID, part number, expected part.
    const std::tuple<qint64, int, int> cases[] = {
        {pid, 1, 12},  {pid, 2, 345},  {pid, 3, 90}, {pid, 4, 78}, {pid, 5, 8},
        {seven, 5, 7}, {seven, -5, 8}, {pid, -5, 8}, {pid, 0, 0},  {pid, -1, 0},
        {pid, -4, 0},  {pid, 6, 0},    {pid, -6, 0},
    };
    for (const auto &[value, part, expected] : cases)
        EXPECT_EQ(GetPidPart(value, part), expected) << value << " part " << part;

    EXPECT_EQ(BuildPid(1, 234, 5, 67, 89), 123456789);
    EXPECT_EQ(BuildPid(19, 999, 8, 99, 99), 1999989999);
    // Any group out of its range, or a result that is no valid PID, builds nothing.
    const std::array<int, 5> invalid[]
        = {{20, 0, 0, 0, 0},  {-1, 0, 0, 0, 0},  {0, 1000, 0, 0, 0}, {0, 0, 10, 0, 0},
           {0, 0, 0, 100, 0}, {0, 0, 0, 0, 100}, {0, 0, 9, 99, 99},  {1, 0, 6, 0, 0}};
    for (const auto &[a, b, c, d, e] : invalid)
        EXPECT_EQ(BuildPid(a, b, c, d, e), 0) << a << ' ' << b << ' ' << c << ' ' << d << ' ' << e;
}

TEST(Pid, Parse)
{
    // Text, bracketed, expected PID.
    const std::tuple<const char *, bool, qint32> cases[] = {
        {"1x234y5z67w89", false, 123456789}, // any non-digit separates
        {"  0-012-3-45-67  ", false, 1234567},
        {"234-5-67-89", false, 23456789}, // A missing with nothing left is 0
        {"-234-5-67-89", false, 0},       // ... but a separator left over means A is missing
        {"20-000-0-00-00", false, 0},     // A out of range
        {"1-234-6-67-89", false, 0},      // group C 6 is never used
        {"", false, 0},
        {"99999", false, 0}, // below the smallest PID
        {"  [ 1-234-5-67-89] tail", true, 123456789},
        {"[ @1-234-5-67-89]", true, 0},
        {"1-234-5-67-89", true, 0}, // no opening bracket
        {"[1-234-5-67-89]", false, 123456789},
    };
    for (const auto &[text, bracketed, expected] : cases)
        EXPECT_EQ(ParsePid(QString::fromLatin1(text), bracketed), expected)
            << '"' << text << "\" bracketed=" << bracketed;
}

} // namespace
