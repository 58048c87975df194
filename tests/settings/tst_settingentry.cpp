// The checks a typed value passes before it is written to the plant's settings.
#include "settings/settingentry.h"

#include <gtest/gtest.h>

#include <QLocale>

namespace olvex {
namespace {

const QString kMax = QStringLiteral("999999999999.9999999");

QString below(const QString &entry, const QString &limit)
{
    return u"The new value (" + entry + u") is less than the recommended minimum value (" + limit
           + u").\r\n\r\nAre you sure you want to make this change?";
}

QString above(const QString &entry, const QString &limit)
{
    return u"The new value (" + entry + u") is greater than the recommended maximum value (" + limit
           + u").\r\n\r\nAre you sure you want to make this change?";
}

TEST(CheckNumberEntry, LimitsInOrder)
{
    using enum NumberEntryCheck::Refusal;
    const Value N = Value::null();
    const auto tooHigh = [](const QString &entry) -> QString {
        return u"The new value (" + entry + u") is greater than the maximum value (" + kMax + u").";
    };
    // One unit in the last place beyond the maximum: a double would call them equal.
    const QString justAbove = QStringLiteral("999999999999.99999991");
    const QString tooLow
        = u"The new value (-1000000000000) is less than the minimum value (-" + kMax + u").";
    // Entry, lower and upper recommended limit; the refusal, its message, the questions asked.
    using Case = std::tuple<QString, Value, Value, NumberEntryCheck::Refusal, QString, QStringList>;
    const std::vector<Case> cases = {
        {"50", 0, 100, None, {}, {}},
        {"0", 0, 100, None, {}, {}},   // equal to the lower limit
        {"100", 0, 100, None, {}, {}}, // equal to the upper limit
        {"-5", 0, 100, None, {}, {below("-5", "0")}},
        {"100.5", 0, 100, None, {}, {above("100.5", "100")}},
        {"7", "10", N, None, {}, {below("7", "10")}}, // a limit as numeric text
        {"-1e9", N, N, None, {}, {}},                 // Null limits skip the questions
        {"5", "low", "high", None, {}, {}},           // so do non-numeric ones
        {"50", 60, 40, None, {}, {below("50", "60"), above("50", "40")}}, // crossed: lower
                                                                          // first
        {kMax, N, N, None, {}, {}},
        {u'-' + kMax, N, N, None, {}, {}},
        {justAbove, N, N, AboveMaximum, tooHigh(justAbove), {}},
        {"1e13", 0, 100, AboveMaximum, tooHigh("1e13"), {}},
        {" 2e13 ", N, N, AboveMaximum, tooHigh("2e13"), {}}, // the blanks are not repeated
        {"-1000000000000", N, N, BelowMinimum, tooLow, {}},
        {"12x", 0, 100, NotNumeric, {}, {}},
        {"", 0, 100, NotNumeric, {}, {}},
    };
    for (const auto &[entry, low, high, refusal, message, questions] : cases) {
        SCOPED_TRACE(entry.toStdString());
        const NumberEntryCheck check = checkNumberEntry(entry, low, high);
        EXPECT_EQ(check.refusal, refusal);
        EXPECT_EQ(check.message, message);
        EXPECT_EQ(check.questions, questions);
    }
}

TEST(CheckNumberEntry, TheLimitsUseTheLocaleDecimalSeparator)
{
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const QString separator = localeDecimalSeparator();
    const QString maximum = absoluteMaximumText();
    const NumberEntryCheck check = checkNumberEntry(QStringLiteral("1,5"), Value(2), Value());
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    EXPECT_EQ(separator, QStringLiteral(","));
    EXPECT_EQ(maximum, QStringLiteral("999999999999,9999999"));
    EXPECT_EQ(check.refusal, NumberEntryCheck::Refusal::None);
    EXPECT_EQ(check.questions, QStringList{below("1,5", "2")});
}

TEST(ValueToWrite, KeepsWhatTheOperatorTyped)
{
    const std::vector<std::tuple<EntryKind, QString, std::optional<Value>>> cases = {
        {EntryKind::Number, " -7 ", Value(-7)},
        {EntryKind::Number, "1e3", Value(1000)},
        {EntryKind::Number, kMax, Value(kMax)}, // a double cannot hold it; the text keeps it all
        {EntryKind::Number, "abc", std::nullopt},
        {EntryKind::FreeText, "", Value("")},
        {EntryKind::DateTime, "2024-03-05", Value(QDateTime(QDate(2024, 3, 5), QTime(0, 0)))},
        {EntryKind::DateTime, "2024-13-45", std::nullopt},
        {EntryKind::YesNo, "Yes", std::nullopt},
    };
    for (const auto &[kind, entry, expected] : cases) {
        EXPECT_EQ(valueToWrite(kind, entry), expected) << entry.toStdString();
    }
    EXPECT_TRUE(isDateEntry(QStringLiteral("14:30")));
    EXPECT_FALSE(isDateEntry(QStringLiteral("half past two")));
}

} // namespace
} // namespace olvex
