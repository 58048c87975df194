// How setting values read on screen, and which ones are reported as not fitting their type.
#include "common/vocabulary.h"
#include "settings/settingdisplay.h"
#include "support/fake_log.h"
#include "support/fake_parameter.h"

#include <gtest/gtest.h>

#include <QDateTime>

namespace olvex {
namespace {

constexpr qint32 kPid = 123456789;
const QString kPidText = QStringLiteral("1-234-5-67-89");

TEST(FormatSettingValue, ShowsEachDataTypeAndLogsMisfits)
{
    const QDateTime morning(QDate(2024, 3, 5), QTime(9, 5, 0));
    const QString dm14 = u"DM-014: value should be a number but isn't (PID=" + kPidText + u')';
    const QString dm15 = u"DM-015: value should be a date but isn't (PID=" + kPidText + u')';
    const QString dm16
        = u"DM-016: value should be a number (true/false) but is not (PID=" + kPidText + u')';
    // Name, data type, value, display format, apply it, text shown, bad value, DM- line logged.
    using Case = std::tuple<const char *, int, Value, QString, bool, QString, bool, QString>;
    const std::vector<Case> cases = {
        {"null number", 1, Value::null(), {}, false, "<Null>", false, {}},
        {"null text", 7, Value::null(), {}, false, "<Null>", false, {}},
        {"empty number", 1, Value(), {}, false, "", false, {}},
        {"number", 1, Value(12.5), {}, false, "12.5", false, {}},
        {"number text", 1, Value("42"), {}, false, "42", false, {}},
        {"number not numeric", 1, Value("12x"), {}, false, "", true, dm14},
        {"format ignored unless asked", 1, Value(3.14159), "0.00", false, "3.14159", false, {}},
        {"format rounds", 1, Value(3.14159), "0.00", true, "3.14", false, {}},
        {"grouped format gives a plain number", 1, Value(1234.5), "#,##0", true, "1235", false, {}},
        {"format of a misfit still logs", 1, Value("abc"), "0.00", true, "", true, dm14},
        {"date", 2, Value(morning), {}, false, "3/5/2024", false, {}},
        {"impossible date", 2, Value("2024-13-45"), {}, false, "", false, dm15},
        {"time", 3, Value(morning), {}, false, "9:05 AM", false, {}},
        {"time not a date", 3, Value("noon-ish"), {}, false, "", false, dm15},
        {"date and time not a date", 4, Value(7.5), {}, false, "", false, dm15},
        {"yes/no zero", 5, Value(0), {}, false, "No", false, {}},
        {"yes/no minus one", 5, Value(-1), {}, false, "Yes", false, {}},
        {"yes/no Boolean", 5, Value(true), {}, false, "Yes", false, {}},
        {"yes/no text", 5, Value("abc"), {}, false, "", false, dm16},
        {"on/off zero", 6, Value(0), {}, false, "Off", false, {}},
        {"on/off non-zero", 6, Value(2.5), {}, false, "On", false, {}},
        {"on/off text", 6, Value("on"), {}, false, "", false, dm16},
        {"text as it stands", 7, Value("  pump A "), {}, false, "  pump A ", false, {}},
        {"unknown type shows text", 42, Value(17), {}, false, "17", false, {}},
    };
    for (const auto &[name, type, value, format, apply, text, badValue, logged] : cases) {
        SCOPED_TRACE(name);
        RecordingLog log;
        const FormattedValue out = FormatSettingValue(kPidText, type, value, format, &log, apply);
        EXPECT_EQ(out.text, text);
        EXPECT_EQ(out.badValue, badValue);
        EXPECT_TRUE(out.problem.isEmpty()) << out.problem.toStdString();
        if (logged.isEmpty()) {
            EXPECT_TRUE(log.isEmpty()) << log.texts().join(u'\n').toStdString();
        } else {
            EXPECT_EQ(log.lines(), (QList<LogLine>{{Severity::Error, logged}}));
        }
        // Without a log the same text comes out, and nothing is thrown.
        EXPECT_EQ(FormatSettingValue(kPidText, type, value, format, nullptr, apply).text, text);
    }
    // Date and time: the shared date-time text, with both the date and the time of day.
    const QDateTime afternoon(QDate(2024, 3, 5), QTime(14, 30, 0));
    const QString both = FormatSettingValue(kPidText, 4, Value(afternoon), {}, nullptr, false).text;
    EXPECT_TRUE(both.startsWith(u"3/5/2024 ") && both.contains(u"2:30")) << both.toStdString();
}

TEST(RoundToDisplayFormat, RoundsAsTheFormatShows)
{
    const std::vector<std::tuple<const char *, const char *, const char *>> cases = {
        {"0", "2.5", "3"},
        {"#,##0.0", "12345.67", "12345.7"},
        {"0.00;(0.00)", "-1.005", "-1.01"}, // only the first section decides the decimals
        {"0.0\" ppm\"", "7.26", "7.3"},     // quoted text is not a placeholder
        {"0.0%", "0.12345", "0.123"},       // 12.3 %: the hundredfold value keeps one decimal
        {"0.00E+00", "123456", "123000"},
        {"0.0E-00", "0.00012345", "0.00012"},
        {"Fixed", "3.14159", "3.14"},
        {"@", "3.14159", "3.14159"}, // no digit placeholder: unchanged
        {"0.0000000", "999999999999.99999995", "1000000000000"},
    };
    for (const auto &[format, value, expected] : cases) {
        SCOPED_TRACE(format);
        const auto parsed = parseDecimal(QString::fromLatin1(value));
        ASSERT_TRUE(parsed);
        EXPECT_EQ(decimalText(roundToDisplayFormat(*parsed, QString::fromUtf8(format))),
                  QString::fromLatin1(expected));
    }
}

TEST(CellTexts, YesNoForNumbersOnlyAndTheRangeFromTheLimitsPresent)
{
    const std::vector<std::tuple<Value, bool, QString>> yesNo = {
        {90, false, "90"},   {2.5, false, "2.5"},       {0, true, "No"},
        {-1, true, "Yes"},   {Value(), false, ""},      {Value::null(), false, ""},
        {"abc", true, ""},   {Value::null(), true, ""}, {"", false, ""},
        {"12", false, "12"},
    };
    for (const auto &[value, asYesNo, expected] : yesNo) {
        EXPECT_EQ(YesNoText(value, asYesNo), expected) << value.debugText().toStdString();
    }
    const Value N = Value::null();
    const std::vector<std::tuple<Value, Value, QString>> ranges = {
        {0, 100, "0 ... 100"},  {0, N, "0 ... "},
        {N, 100, " ... 100"},   {N, N, ""},
        {Value(), Value(), ""}, {-2.5, "abc", "-2.5 ... abc"}, // shown as stored, unformatted
    };
    for (const auto &[lower, upper, expected] : ranges) {
        EXPECT_EQ(ValueRangeText(lower, upper), expected);
    }
}

TEST(SettingRowState, IconAndValueCellFollowTheFlagsReadingEachAttributeOnce)
{
    const Value T(true);
    const Value F(false);
    const Value N = Value::null();
    // Name, alternative connection, readable, changeable, the alternative's readable and
    // changeable, level, change pending; icon and value cell.
    using Case
        = std::tuple<const char *, bool, Value, Value, Value, Value, Value, Value, int, QString>;
    const std::vector<Case> cases = {
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
        {"alternative write-only", true, T, T, F, T, N, N, 6, "(Write-Only)"},
        {"alternative offline", true, T, T, F, F, N, N, 0, "(Offline)"},
        {"alternative readable", true, F, F, T, F, N, N, 2, "12.5"},
        {"alternative pending over offline", true, T, T, F, F, N, T, 0, "Updating..."},
    };
    for (const auto &[name, alternative, readable, changeable, altReadable, altChangeable, level,
                      pending, icon, text] : cases) {
        SCOPED_TRACE(name);
        FakeParameter p(kPid, ParameterTypes::Setting, QStringLiteral("Span"));
        p.setAttributeValue(SettingAttr::DataType, 1);
        p.setAttributeValue(SettingAttr::Readable, readable);
        p.setAttributeValue(SettingAttr::Changeable, changeable);
        p.setAttributeValue(SettingAttr::AltReadable, altReadable);
        p.setAttributeValue(SettingAttr::AltChangeable, altChangeable);
        p.setAttributeValue(SettingAttr::Level, level);
        p.setAttributeValue(SettingAttr::ChangePending, pending);
        p.setAttributeValue(SettingAttr::DisplayFormat, QStringLiteral("0.0"));
        p.setCurrentValue(Value(12.46)); // shown with the display format
        const SettingRowState state = settingRowState(p, alternative, nullptr);
        EXPECT_EQ(state.icon, icon);
        EXPECT_EQ(state.valueText, text);
        EXPECT_TRUE(state.formatProblem.isEmpty());
        // -9, -10, -30, -91 (and the alternative's two), then -14 and the display format for
        // the value: each once at most.
        EXPECT_LE(p.callCount(FakeParameter::Op::GetAttribute), alternative ? 8 : 6);
        EXPECT_LE(p.callCount(FakeParameter::Op::GetCurrentValue), 1);
    }
}

} // namespace
} // namespace olvex
