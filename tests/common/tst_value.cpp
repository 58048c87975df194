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

TEST(Value, NumericAndDateTests)
{
    // Value, numeric, date. Texts take the locale's group separator; dates as text are read as
    // parseDateText reads them.
    const std::tuple<Value, bool, bool> cases[] = {
        {Value(), false, false},
        {Value::null(), false, false},
        {Value(true), true, false},
        {Value(12), true, false},
        {Value(1.5), true, false},
        {Value("12"), true, false},
        {Value(" -12.5e3 "), true, false},
        {Value("12x"), false, false},
        {Value("1,234.5"), true, false},
        {Value("inf"), false, false},
        {Value("nan"), false, false},
        {Value(""), false, false},
        {Value("2024-05-01"), false, true},
        {Value(QDateTime(QDate(2024, 5, 1), QTime(1, 2))), false, true},
        {Value(QList<Value>{Value(1)}), false, false},
    };
    for (const auto &[value, numeric, date] : cases) {
        EXPECT_EQ(value.isNumeric(), numeric) << value.debugText().toStdString();
        EXPECT_EQ(value.isDate(), date) << value.debugText().toStdString();
    }
}

TEST(Value, BooleanConversions)
{
    const std::pair<Value, std::optional<bool>> cases[] = {
        {Value("True"), true},         {Value("false"), false},
        {Value(" TRUE "), true},       {Value("-1"), true},
        {Value("0"), false},           {Value("0.0"), false},
        {Value("2.5"), true},          {Value(2), true},
        {Value(0.0), false},           {Value(), false},
        {Value("yes"), std::nullopt},  {Value(""), std::nullopt},
        {Value::null(), std::nullopt},
    };
    for (const auto &[value, expected] : cases) {
        EXPECT_EQ(value.toBoolean(), expected) << value.debugText().toStdString();
    }
}

TEST(Value, TextForms)
{
    const std::pair<Value, const char *> cases[] = {
        {Value(), ""},
        {Value::null(), ""},
        {Value(42), "42"},
        {Value(-7LL), "-7"},
        {Value(0.1), "0.1"},
        {Value(1.0 / 3.0), "0.333333333333333"},
        {Value(1e20), "1E+20"},
        {Value(2.5e-7), "2.5E-07"},
        {Value("as is "), "as is "},
        {Value(true), "True"},
        {Value(false), "False"},
        {Value(QDateTime(QDate(2024, 5, 1), QTime(13, 5, 9))), "5/1/2024 1:05:09 PM"},
        {Value(QDateTime(QDate(2024, 5, 1), QTime(0, 0))), "5/1/2024"},
        {Value(QDateTime(QDate(1899, 12, 30), QTime(6, 50))), "6:50:00 AM"},
    };
    for (const auto &[value, text] : cases) {
        EXPECT_EQ(value.toText(), QString::fromUtf8(text)) << value.debugText().toStdString();
    }
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

TEST(Value, IntegerRoundsHalfToEven)
{
    // True is -1 as a number.
    const std::pair<Value, std::optional<qint64>> cases[] = {
        {Value(true), -1},
        {Value(false), 0},
        {Value(2.5), 2},
        {Value(3.5), 4},
        {Value(-2.5), -2},
        {Value("7.6"), 8},
        {Value("x"), std::nullopt},
        {Value(1e30), std::nullopt},
    };
    for (const auto &[value, expected] : cases) {
        EXPECT_EQ(value.toInteger(), expected) << value.debugText().toStdString();
    }
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
