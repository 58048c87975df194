// The checks a typed value passes before it is written to the plant's settings.
#include "settings/settingentry.h"

#include <gtest/gtest.h>

#include <QLocale>

namespace olvex {
namespace {

using Refusal = NumberEntryCheck::Refusal;

const QString kMax = QStringLiteral("999999999999.9999999");

QString belowQuestion(const QString &entry, const QString &limit)
{
    return u"The new value (" + entry + u") is less than the recommended minimum value (" + limit
           + u").\r\n\r\nAre you sure you want to make this change?";
}

QString aboveQuestion(const QString &entry, const QString &limit)
{
    return u"The new value (" + entry + u") is greater than the recommended maximum value (" + limit
           + u").\r\n\r\nAre you sure you want to make this change?";
}

struct EntryCase
{
    const char *name;
    QString entry;
    Value low;
    Value high;
    Refusal refusal;
    QString message;
    QStringList questions;
};

TEST(CheckNumberEntry, LimitsInOrder)
{
    const Value none = Value::null();
    const std::vector<EntryCase> cases = {
        {"inside the range", "50", Value(0), Value(100), Refusal::None, {}, {}},
        {"equal to the lower limit", "0", Value(0), Value(100), Refusal::None, {}, {}},
        {"equal to the upper limit", "100", Value(0), Value(100), Refusal::None, {}, {}},
        {"below the range",
         "-5",
         Value(0),
         Value(100),
         Refusal::None,
         {},
         {belowQuestion("-5", "0")}},
        {"above the range",
         "100.5",
         Value(0),
         Value(100),
         Refusal::None,
         {},
         {aboveQuestion("100.5", "100")}},
        {"limit as numeric text",
         "7",
         Value("10"),
         none,
         Refusal::None,
         {},
         {belowQuestion("7", "10")}},
        {"Null limits skip the questions", "-1e9", none, none, Refusal::None, {}, {}},
        {"non-numeric limits skip the questions",
         "5",
         Value("low"),
         Value("high"),
         Refusal::None,
         {},
         {}},
        {"crossed limits ask both, lower first",
         "50",
         Value(60),
         Value(40),
         Refusal::None,
         {},
         {belowQuestion("50", "60"), aboveQuestion("50", "40")}},
        {"largest allowed", kMax, none, none, Refusal::None, {}, {}},
        {"smallest allowed", u'-' + kMax, none, none, Refusal::None, {}, {}},
        // One unit in the last place beyond the maximum: a double would call them equal.
        {"just above the maximum",
         "999999999999.99999991",
         none,
         none,
         Refusal::AboveMaximum,
         "The new value (999999999999.99999991) is greater than the maximum value (" + kMax + ").",
         {}},
        {"far above the maximum",
         "1e13",
         Value(0),
         Value(100),
         Refusal::AboveMaximum,
         "The new value (1e13) is greater than the maximum value (" + kMax + ").",
         {}},
        {"below the minimum",
         "-1000000000000",
         none,
         none,
         Refusal::BelowMinimum,
         "The new value (-1000000000000) is less than the minimum value (-" + kMax + ").",
         {}},
        {"blanks around the entry are not part of the message",
         " 2e13 ",
         none,
         none,
         Refusal::AboveMaximum,
         "The new value (2e13) is greater than the maximum value (" + kMax + ").",
         {}},
        {"not numeric", "12x", Value(0), Value(100), Refusal::NotNumeric, {}, {}},
        {"empty", "", Value(0), Value(100), Refusal::NotNumeric, {}, {}},
    };
    for (const EntryCase &c : cases) {
        SCOPED_TRACE(c.name);
        const NumberEntryCheck check = checkNumberEntry(c.entry, c.low, c.high);
        EXPECT_EQ(check.refusal, c.refusal);
        EXPECT_EQ(check.message, c.message);
        EXPECT_EQ(check.questions, c.questions);
    }
}

class WithLocale : public ::testing::Test
{
protected:
    void TearDown() override
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    }
};

TEST_F(WithLocale, TheLimitsUseTheLocaleDecimalSeparator)
{
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(localeDecimalSeparator(), QStringLiteral(","));
    EXPECT_EQ(absoluteMaximumText(), QStringLiteral("999999999999,9999999"));
    const NumberEntryCheck check = checkNumberEntry(QStringLiteral("1,5"), Value(2), Value());
    EXPECT_EQ(check.refusal, Refusal::None);
    EXPECT_EQ(check.questions, QStringList{belowQuestion("1,5", "2")});
}

TEST(EntryKind, FollowsTheDataType)
{
    const std::vector<std::pair<int, EntryKind>> cases = {
        {1, EntryKind::Number},   {7, EntryKind::FreeText}, {2, EntryKind::DateTime},
        {3, EntryKind::DateTime}, {4, EntryKind::DateTime}, {5, EntryKind::YesNo},
        {6, EntryKind::OnOff},    {0, EntryKind::None},     {8, EntryKind::None},
    };
    for (const auto &[type, kind] : cases) {
        EXPECT_EQ(entryKindFor(type), kind) << "data type " << type;
    }
    EXPECT_EQ(yesNoCaptions(EntryKind::YesNo), std::make_pair(QString("No"), QString("Yes")));
    EXPECT_EQ(yesNoCaptions(EntryKind::OnOff), std::make_pair(QString("Off"), QString("On")));
}

TEST(ValueToWrite, KeepsWhatTheOperatorTyped)
{
    struct Case
    {
        EntryKind kind;
        QString entry;
        std::optional<Value> expected;
    };
    const std::vector<Case> cases = {
        {EntryKind::Number, "42", Value(qint64(42))},
        {EntryKind::Number, " -7 ", Value(qint64(-7))},
        {EntryKind::Number, "2.5", Value(2.5)},
        {EntryKind::Number, "1e3", Value(qint64(1000))},
        // A double cannot hold this one; the text keeps every digit.
        {EntryKind::Number, kMax, Value(kMax)},
        {EntryKind::Number, "abc", std::nullopt},
        {EntryKind::FreeText, " any text ", Value(" any text ")},
        {EntryKind::FreeText, "", Value("")},
        {EntryKind::DateTime, "2024-03-05", Value(QDateTime(QDate(2024, 3, 5), QTime(0, 0)))},
        {EntryKind::DateTime, "2024-13-45", std::nullopt},
        {EntryKind::YesNo, "Yes", std::nullopt},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.entry.toStdString());
        EXPECT_EQ(valueToWrite(c.kind, c.entry), c.expected);
    }
    EXPECT_TRUE(isDateEntry(QStringLiteral("14:30")));
    EXPECT_FALSE(isDateEntry(QStringLiteral("half past two")));
}

TEST(AccessDenied, TextsNameTheAccount)
{
    EXPECT_EQ(accessDeniedText(QStringLiteral("jdoe")),
              QStringLiteral("Access denied. Account 'jdoe' does not have privileges."));
    EXPECT_EQ(accessDeniedProblem(QStringLiteral("SED-012"), QStringLiteral("jdoe")),
              QStringLiteral("SED-012: Account 'jdoe' does not have privileges."));
}

} // namespace
} // namespace olvex
