// The stored form of values is the site's file format: it must not drift, and damage must be
// reported rather than read as some other value.
#include "common/error.h"
#include "host/storedvalue.h"
#include "host/storeerrors.h"

#include <gtest/gtest.h>

using namespace olvex;

namespace {

TEST(StoredValue, FormatOfEachKindIsStable)
{
    // value, kind, text (null: SQL NULL).
    const QList<std::tuple<Value, int, QString>> cases{
        {Value(), 0, QString()},
        {Value::null(), 1, QString()},
        {Value(true), 2, QStringLiteral("1")},
        {Value(-42), 3, QStringLiteral("-42")},
        {Value(0.1), 4, QStringLiteral("0.1")},
        {Value(1e21), 4, QStringLiteral("1e+21")},
        {Value(QStringLiteral("x")), 5, QStringLiteral("x")},
        {Value(QDateTime(QDate(2024, 3, 1), QTime(6, 50, 0, 5))), 6,
         QStringLiteral("2024-03-01T06:50:00.005")},
        {Value(QDateTime()), 6, QString(0, QChar())}, // an invalid date stays invalid
        {Value(QDateTime(QDate(2024, 3, 1), QTime(6, 50), Qt::UTC)), 6,
         QStringLiteral("2024-03-01T06:50:00.000Z")},
        {Value(QList<Value>{Value(1203), Value::null(), Value(QStringLiteral("a\"b"))}), 7,
         QStringLiteral("[[3,\"1203\"],[1],[5,\"a\\\"b\"]]")},
    };
    for (const auto &[value, kind, text] : cases) {
        const StoredValue stored = encodeValue(value);
        EXPECT_EQ(stored.kind, kind) << value.debugText().toStdString();
        EXPECT_EQ(stored.text.isNull(), text.isNull()) << value.debugText().toStdString();
        EXPECT_EQ(stored.text.toString(), text) << value.debugText().toStdString();
        EXPECT_EQ(decodeValue(kind, text).debugText(), value.debugText());
    }
}

TEST(StoredValue, DamagedTextIsAnErrorNotAValue)
{
    const std::pair<int, const char *> cases[]
        = {{3, "12x"},       {3, ""},     {4, "one"}, {6, "2024-13-45T00:00:00.000"},
           {6, "yesterday"}, {7, "[1,2"}, {7, "{}"},  {7, "[[\"x\"]]"},
           {8, "x"},         {-1, ""}};
    for (const auto &[kind, text] : cases) {
        try {
            decodeValue(kind, QString::fromUtf8(text));
            ADD_FAILURE() << "read " << kind << " " << text;
        } catch (const Error &error) {
            EXPECT_EQ(error.number(), StoreError::SqlFailed);
        }
    }
}

} // namespace
