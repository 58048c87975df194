// How setting values read on screen, and which ones are reported as not fitting their type.
#include "common/pid.h"
#include "settings/settingattributes.h"
#include "settings/settingdisplay.h"
#include "support/fake_log.h"
#include "support/fake_parameter.h"

#include <gtest/gtest.h>

#include <QDateTime>

namespace olvex {
namespace {

constexpr qint32 kPid = 123456789;
const QString kPidText = QStringLiteral("1-234-5-67-89");

struct FormatCase
{
    const char *name;
    int dataType;
    Value value;
    QString displayFormat;
    bool applyFormat;
    QString text;
    bool badValue;
    QString logged; // the DM- line expected in the log, empty for none
};

TEST(FormatSettingValue, ShowsEachDataTypeAndLogsMisfits)
{
    const QDateTime morning(QDate(2024, 3, 5), QTime(9, 5, 0));
    const QString dm14 = u"DM-014: value should be a number but isn't (PID=" + kPidText + u')';
    const QString dm15 = u"DM-015: value should be a date but isn't (PID=" + kPidText + u')';
    const QString dm16
        = u"DM-016: value should be a number (true/false) but is not (PID=" + kPidText + u')';
    const std::vector<FormatCase> cases = {
        {"null number", 1, Value::null(), {}, false, "<Null>", false, {}},
        {"null date", 2, Value::null(), {}, false, "<Null>", false, {}},
        {"null yes/no", 5, Value::null(), {}, false, "<Null>", false, {}},
        {"null text", 7, Value::null(), {}, false, "<Null>", false, {}},
        {"empty number", 1, Value(), {}, false, "", false, {}},
        {"empty yes/no", 5, Value(), {}, false, "", false, {}},
        {"number", 1, Value(12.5), {}, false, "12.5", false, {}},
        {"number text", 1, Value("42"), {}, false, "42", false, {}},
        {"number not numeric", 1, Value("12x"), {}, false, "", true, dm14},
        {"format ignored unless asked", 1, Value(3.14159), "0.00", false, "3.14159", false, {}},
        {"format rounds", 1, Value(3.14159), "0.00", true, "3.14", false, {}},
        {"format rounds half away from zero", 1, Value(2.25), "0.0", true, "2.3", false, {}},
        {"negative half away from zero", 1, Value(-2.25), "0.0", true, "-2.3", false, {}},
        {"grouped format turns back into a plain number",
         1,
         Value(1234.5),
         "#,##0",
         true,
         "1235",
         false,
         {}},
        {"format of a misfit still logs", 1, Value("abc"), "0.00", true, "", true, dm14},
        {"date", 2, Value(morning), {}, false, "3/5/2024", false, {}},
        {"date from text", 2, Value("2024-03-05"), {}, false, "3/5/2024", false, {}},
        {"impossible date", 2, Value("2024-13-45"), {}, false, "", false, dm15},
        {"time", 3, Value(morning), {}, false, "9:05 AM", false, {}},
        {"time not a date", 3, Value("noon-ish"), {}, false, "", false, dm15},
        {"date and time not a date", 4, Value(7.5), {}, false, "", false, dm15},
        {"yes/no zero", 5, Value(0), {}, false, "No", false, {}},
        {"yes/no minus one", 5, Value(-1), {}, false, "Yes", false, {}},
        {"yes/no one", 5, Value(1), {}, false, "Yes", false, {}},
        {"yes/no Boolean", 5, Value(true), {}, false, "Yes", false, {}},
        {"yes/no text", 5, Value("abc"), {}, false, "", false, dm16},
        {"on/off zero", 6, Value(0), {}, false, "Off", false, {}},
        {"on/off non-zero", 6, Value(2.5), {}, false, "On", false, {}},
        {"on/off text", 6, Value("on"), {}, false, "", false, dm16},
        {"text as it stands", 7, Value("  pump A "), {}, false, "  pump A ", false, {}},
        {"unknown type shows text", 42, Value(17), {}, false, "17", false, {}},
    };
    for (const FormatCase &c : cases) {
        SCOPED_TRACE(c.name);
        RecordingLog log;
        const FormattedValue out = FormatSettingValue(kPidText, c.dataType, c.value,
                                                      c.displayFormat, &log, c.applyFormat);
        EXPECT_EQ(out.text, c.text);
        EXPECT_EQ(out.badValue, c.badValue);
        EXPECT_TRUE(out.problem.isEmpty()) << out.problem.toStdString();
        if (c.logged.isEmpty()) {
            EXPECT_TRUE(log.isEmpty()) << log.texts().join(u'\n').toStdString();
        } else {
            EXPECT_EQ(log.lines(), (QList<LogLine>{{Severity::Error, c.logged}}));
        }
    }
}

TEST(FormatSettingValue, DateAndTimeUseTheSharedDateTimeText)
{
    const QDateTime value(QDate(2024, 3, 5), QTime(14, 30, 0));
    const FormattedValue out = FormatSettingValue(kPidText, 4, Value(value), {}, nullptr, false);
    // The date part and the time of day must both be on screen.
    EXPECT_TRUE(out.text.startsWith(u"3/5/2024 ")) << out.text.toStdString();
    EXPECT_TRUE(out.text.contains(u"2:30")) << out.text.toStdString();
}

TEST(FormatSettingValue, WorksWithoutALog)
{
    const FormattedValue out = FormatSettingValue(kPidText, 1, Value("x"), {}, nullptr, false);
    EXPECT_TRUE(out.badValue);
    EXPECT_TRUE(out.text.isEmpty());
    EXPECT_TRUE(out.problem.isEmpty());
}

TEST(FormatSettingValue, AFailingLogBecomesTheFormattingProblem)
{
    RecordingLog log;
    log.setFailure(Error(5, QStringLiteral("log is full")));
    const FormattedValue out = FormatSettingValue(kPidText, 5, Value("abc"), {}, &log, false);
    EXPECT_EQ(out.problem, QStringLiteral("SED-007/UI-025: Error 5, log is full"));
    EXPECT_TRUE(out.text.isEmpty());
}

TEST(RoundToDisplayFormat, RoundsAsTheFormatShows)
{
    struct Case
    {
        const char *format;
        const char *value;
        const char *expected;
    };
    const std::vector<Case> cases = {
        {"0", "2.5", "3"},
        {"0.000", "1.23456", "1.235"},
        {"#,##0.0", "12345.67", "12345.7"},
        {"0.00;(0.00)", "-1.005", "-1.01"}, // only the first section decides the decimals
        {"0.0\" ppm\"", "7.26", "7.3"},     // quoted text is not a placeholder
        {"0.0%", "0.12345", "0.123"},       // 12.3 %: the hundredfold value keeps one decimal
        {"0.00E+00", "123456", "123000"},
        {"0.0E-00", "0.00012345", "0.00012"},
        {"Fixed", "3.14159", "3.14"},
        {"General Number", "3.14159", "3.14159"},
        {"@", "3.14159", "3.14159"}, // no digit placeholder: unchanged
        {"0.0000000", "999999999999.99999995", "1000000000000"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.format);
        const auto value = parseDecimal(QString::fromLatin1(c.value));
        ASSERT_TRUE(value);
        EXPECT_EQ(decimalText(roundToDisplayFormat(*value, QString::fromUtf8(c.format))),
                  QString::fromLatin1(c.expected));
    }
}

TEST(YesNoText, NumbersOnly)
{
    struct Case
    {
        Value value;
        bool asYesNo;
        QString expected;
    };
    const std::vector<Case> cases = {
        {Value(90), false, "90"},  {Value(2.5), false, "2.5"}, {Value(0), true, "No"},
        {Value(-1), true, "Yes"},  {Value(0.5), true, "Yes"},  {Value("12"), false, "12"},
        {Value(), false, ""},      {Value::null(), false, ""}, {Value("abc"), true, ""},
        {Value::null(), true, ""}, {Value(""), false, ""},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.value.debugText().toStdString() + (c.asYesNo ? " yes/no" : " plain"));
        EXPECT_EQ(YesNoText(c.value, c.asYesNo), c.expected);
    }
}

TEST(ValueRangeText, JoinsTheLimitsThatArePresent)
{
    struct Case
    {
        Value lower;
        Value upper;
        QString expected;
    };
    const std::vector<Case> cases = {
        {Value(0), Value(100), "0 ... 100"},
        {Value(0), Value::null(), "0 ... "},
        {Value::null(), Value(100), " ... 100"},
        {Value::null(), Value::null(), ""},
        {Value(), Value(), ""},
        {Value(-2.5), Value("abc"), "-2.5 ... abc"}, // shown as stored, unformatted
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.expected.toStdString());
        EXPECT_EQ(ValueRangeText(c.lower, c.upper), c.expected);
    }
}

struct RowCase
{
    const char *name;
    bool alternative;
    Value readable, changeable, altReadable, altChangeable, level, pending;
    int icon;
    QString text;
};

TEST(SettingRowState, IconAndValueCellFollowTheFlags)
{
    const Value T(true);
    const Value F(false);
    const Value N = Value::null();
    const std::vector<RowCase> cases = {
        {"read and change", false, T, T, N, N, N, N, 4, "12.5"},
        {"read only", false, T, F, N, N, N, N, 2, "12.5"},
        {"write only", false, F, T, N, N, N, N, 6, "(Write-Only)"},
        {"neither", false, F, F, N, N, N, N, 0, ""},
        {"high level read and change", false, T, T, N, N, Value(51), N, 5, "12.5"},
        {"level 50 is not high", false, T, T, N, N, Value(50), N, 4, "12.5"},
        {"high level read only", false, T, F, N, N, Value(99), N, 3, "12.5"},
        {"high level write only", false, F, T, N, N, Value(60), N, 7, "(Write-Only)"},
        {"high level neither keeps the icon", false, F, F, N, N, Value(60), N, 0, ""},
        {"pending over the value", false, T, T, N, N, N, T, 4, "Updating..."},
        {"pending over write-only", false, F, T, N, N, N, T, 6, "Updating..."},
        {"alternative write-only", true, T, T, F, T, N, N, 6, "(Write-Only)"},
        {"alternative offline", true, T, T, F, F, N, N, 0, "(Offline)"},
        {"alternative readable", true, F, F, T, F, N, N, 2, "12.5"},
        {"alternative pending over offline", true, T, T, F, F, N, T, 0, "Updating..."},
    };
    for (const RowCase &c : cases) {
        SCOPED_TRACE(c.name);
        FakeParameter p(kPid, ParameterTypes::Setting, QStringLiteral("Span"));
        p.setAttributeValue(SettingAttr::DataType, 1);
        p.setAttributeValue(SettingAttr::Readable, c.readable);
        p.setAttributeValue(SettingAttr::Changeable, c.changeable);
        p.setAttributeValue(SettingAttr::AltReadable, c.altReadable);
        p.setAttributeValue(SettingAttr::AltChangeable, c.altChangeable);
        p.setAttributeValue(SettingAttr::Level, c.level);
        p.setAttributeValue(SettingAttr::ChangePending, c.pending);
        p.setCurrentValue(Value(12.5));
        const SettingRowState state = settingRowState(p, c.alternative, nullptr);
        EXPECT_EQ(state.icon, c.icon);
        EXPECT_EQ(state.valueText, c.text);
        EXPECT_TRUE(state.formatProblem.isEmpty());
    }
}

TEST(SettingRowState, ReadsEachAttributeOnceAndFormatsWithTheDisplayFormat)
{
    FakeParameter p(kPid, ParameterTypes::Setting, QStringLiteral("Span"));
    p.setAttributeValue(SettingAttr::DataType, 1);
    p.setAttributeValue(SettingAttr::Readable, true);
    p.setAttributeValue(SettingAttr::Changeable, true);
    p.setAttributeValue(SettingAttr::DisplayFormat, QStringLiteral("0.0"));
    p.setCurrentValue(Value(7.26));
    const SettingRowState state = settingRowState(p, false, nullptr);
    EXPECT_EQ(state.valueText, QStringLiteral("7.3"));
    // -9, -10, -30, -91, then -14 and the display format for the value.
    EXPECT_EQ(p.callCount(FakeParameter::Op::GetAttribute), 6);
    EXPECT_EQ(p.callCount(FakeParameter::Op::GetCurrentValue), 1);
}

TEST(SettingRowState, AMisfitIsLoggedWithThePidDisplayForm)
{
    RecordingLog log;
    FakeParameter p(kPid, ParameterTypes::Setting, QStringLiteral("Span"));
    p.setAttributeValue(SettingAttr::DataType, 1);
    p.setAttributeValue(SettingAttr::Readable, true);
    p.setAttributeValue(SettingAttr::Changeable, true);
    p.setCurrentValue(Value("12x"));
    const SettingRowState state = settingRowState(p, false, &log);
    EXPECT_EQ(state.valueText, QString());
    EXPECT_EQ(log.texts(), QStringList{u"DM-014: value should be a number but isn't (PID="
                                       + FormatPid(kPid) + u')'});
}

TEST(SettingRowState, DataInterfaceErrorsPropagateToTheRowFill)
{
    FakeParameter p(kPid, ParameterTypes::Setting, QStringLiteral("Span"));
    p.setFailure(FakeParameter::Op::GetAttribute, Error(3, QStringLiteral("gone")),
                 SettingAttr::Level);
    EXPECT_THROW(settingRowState(p, false, nullptr), Error);
}

} // namespace
} // namespace olvex
