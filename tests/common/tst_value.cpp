#include "common/value.h"

#include <gtest/gtest.h>

#include <QLocale>

using namespace olvex;

namespace {

TEST(Value, NullEmptyAndKindsStayApart)
{
    EXPECT_NE(Value(), Value::null());
    EXPECT_EQ(NullToEmpty(Value::null()), Value());
    EXPECT_NE(Value(1), Value(1.0)); // identity keeps the kind
    EXPECT_NE(Value(""), Value());
    const Value members(QList<Value>{Value(123456789), Value::null(), Value("x")});
    EXPECT_EQ(members.toArray().at(1), Value::null());
    EXPECT_EQ(members, Value(QList<Value>{Value(123456789), Value::null(), Value("x")}));
    EXPECT_TRUE(Value(5).toArray().isEmpty());
}

// What each kind of value is and becomes: numeric, date, yes/no and whole number. Texts take the
// locale's group separator; dates as text are read as parseDateText reads them; True is -1 as a
// number; whole numbers round half to even.
TEST(Value, TestsAndConversions)
{
    const QDateTime morning(QDate(2024, 5, 1), QTime(1, 2));
    const std::tuple<Value, bool, bool, std::optional<bool>, std::optional<qint64>> cases[] = {
        {Value(), false, false, false, 0},
        {Value::null(), false, false, {}, {}},
        {Value(true), true, false, true, -1},
        {Value(false), true, false, false, 0},
        {Value(12), true, false, true, 12},
        {Value(0.0), true, false, false, 0},
        {Value(2.5), true, false, true, 2},
        {Value(3.5), true, false, true, 4},
        {Value(-2.5), true, false, true, -2},
        {Value(1e30), true, false, true, {}},
        {Value("12"), true, false, true, 12},
        {Value(" -12.5e3 "), true, false, true, -12500},
        {Value("0.0"), true, false, false, 0},
        {Value("7.6"), true, false, true, 8},
        {Value("1,234.5"), true, false, true, 1234},
        {Value("false"), false, false, false, {}},
        {Value(" TRUE "), false, false, true, {}},
        {Value("yes"), false, false, {}, {}},
        {Value("12x"), false, false, {}, {}},
        {Value("inf"), false, false, {}, {}},
        {Value("nan"), false, false, {}, {}},
        {Value(""), false, false, {}, {}},
        {Value("2024-05-01"), false, true, {}, {}},
        {Value(morning), false, true, true, 45413},
        {Value(QList<Value>{Value(1)}), false, false, {}, {}},
    };
    for (const auto &[value, numeric, date, boolean, integer] : cases) {
        SCOPED_TRACE(value.debugText().toStdString());
        EXPECT_EQ(
            std::tuple(value.isNumeric(), value.isDate(), value.toBoolean(), value.toInteger()),
            std::tuple(numeric, date, boolean, integer));
    }
}

TEST(Value, TextForms)
{
    const std::pair<Value, const char *> cases[] = {
        {Value(), ""},
        {Value::null(), ""},
        {Value(42), "42"},
        {Value(0.1), "0.1"},
        {Value(1.0 / 3.0), "0.333333333333333"},
        {Value(1e20), "1E+20"},
        {Value(2.5e-7), "2.5E-07"},
        {Value("as is "), "as is "},
        {Value(true), "True"},
        {Value(QDateTime(QDate(2024, 5, 1), QTime(13, 5, 9))), "5/1/2024 1:05:09 PM"},
        {Value(QDateTime(QDate(2024, 5, 1), QTime(0, 0))), "5/1/2024"},
        {Value(QDateTime(QDate(1899, 12, 30), QTime(6, 50))), "6:50:00 AM"},
    };
    for (const auto &[value, text] : cases)
        EXPECT_EQ(value.toText(), QString::fromUtf8(text)) << value.debugText().toStdString();
}

TEST(Value, TextFollowsTheLocaleDecimalPoint)
{
    const QLocale saved;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(Value(2.5).toText(), QStringLiteral("2,5"));
    EXPECT_EQ(Value("2,5").toDouble(), 2.5);
    EXPECT_EQ(Value("2.5").toDouble(), 2.5); // the C form is always read
    QLocale::setDefault(saved);
}

TEST(Value, DecimalsKeepAllDigits)
{
    const auto max = Value("999999999999.9999999").toDecimal();
    ASSERT_TRUE(max.has_value());
    EXPECT_EQ(decimalText(*max), QStringLiteral("999999999999.9999999"));
    // A double cannot tell these two apart; the decimal can.
    EXPECT_GT(*Value("1000000000000.0000000").toDecimal(), *max);
    EXPECT_LT(*Value("999999999999.9999998").toDecimal(), *max);
    EXPECT_EQ(decimalText(*Value(0.1).toDecimal()), QStringLiteral("0.1"));
    EXPECT_EQ(decimalText(*Value("-0").toDecimal()), QStringLiteral("0"));
    EXPECT_EQ(Value("12x").toDecimal(), std::nullopt);
}

} // namespace
