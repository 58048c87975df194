// What no setting may hold, and how a typed entry reads before the operator presses OK.
#include "common/decimal.h"
#include "common/error.h"
#include "common/vocabulary.h"
#include "settings/settingentry.h"
#include "settings/settingvaluecheck.h"

#include <gtest/gtest.h>

#include <QLocale>

namespace olvex {
namespace {

// Data type, value; the error number refused with (0: accepted) and a part of its reason.
TEST(ValueChecks, RefusalsByTypeAndAbsoluteLimits)
{
    using namespace SettingType;
    using Case = std::tuple<int, Value, int, QString>;
    const std::vector<Case> cases = {
        {Number, Value("999999999999.9999999"), 0, {}},
        {Number, Value("10000000000000"), ValueCheckError::Overflow,
         "'10000000000000' is greater than the maximum value (999999999999.9999999)"},
        {Number, Value(-1e13), ValueCheckError::Overflow, "less than the minimum value"},
        {Number, Value(QList<Value>{Value("1e13")}), ValueCheckError::Overflow, "greater"},
        {Number, Value("abc"), ValueCheckError::TypeMismatch, "'abc' is not a number"},
        {Number, Value("2,5"), ValueCheckError::TypeMismatch, "not a number"},
        {Time, Value("25:70:00"), ValueCheckError::TypeMismatch, "'25:70:00' is not a time"},
        {Date, Value("31 Feb 2026"), ValueCheckError::TypeMismatch, "is not a date"},
        {YesNo, Value("maybe"), ValueCheckError::TypeMismatch, "is not Yes or No"},
        {Text, Value("10000000000000"), 0, {}}, // text carries no limits
    };
    for (const auto &[dataType, value, number, reason] : cases) {
        SCOPED_TRACE(value.debugText().toStdString());
        int thrown = 0;
        try {
            coerceToDataType(dataType, value);
        } catch (const Error &error) {
            thrown = error.number();
            EXPECT_TRUE(error.description().contains(reason)) << error.what();
        }
        EXPECT_EQ(thrown, number);
        EXPECT_EQ(valueRefusal(dataType, value).isEmpty(), number == 0);
    }
}

// A comma where en_US puts no group separator must not turn 2.5 into 25.
TEST(ValueChecks, EntryReadings)
{
    using namespace SettingType;
    const std::vector<std::tuple<int, QString, bool, QString>> cases = {
        {Number, "25", true, "reads as 25"},
        {Number, " 1,234.5 ", true, "reads as 1234.5"},
        {Number, "2,5", false, "not a number"},
        {Number, "1,5e3", false, "not a number"},
        {Number, "12,34,567", false, "not a number"},
        {Number, "1e13", false, "greater than the maximum value (999999999999.9999999)"},
        {Date, "31 Feb 2026", false, "not a date"},
        {Date, "2024-03-05", true, "reads as 5 March 2024"},
        {Time, "25:70:00", false, "not a time"},
        {Time, "14:30", true, "reads as 14:30:00"},
        {0, "14:30", true, "reads as 14:30:00"},
        {Number, "", true, ""},
        {Text, "anything", true, ""},
    };
    for (const auto &[dataType, entry, fits, text] : cases) {
        SCOPED_TRACE(entry.toStdString());
        const EntryReading reading = readEntry(dataType, entry);
        EXPECT_EQ(reading.fits, fits);
        EXPECT_EQ(reading.text, text);
    }
}

TEST(ValueChecks, GroupSeparatorsOfAnotherLocale)
{
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const auto thousands = parseDecimal("1.234,5");
    const auto misplaced = parseDecimal("2.50,5");
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    ASSERT_TRUE(thousands);
    EXPECT_EQ(*thousands, Decimal("1234.5"));
    EXPECT_FALSE(misplaced);
}

} // namespace
} // namespace olvex
