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
    struct Case
    {
        Value value;
        int kind;
        QString text; // null: SQL NULL
    };
    const QList<Case> cases{
        {Value(), 0, QString()},
        {Value::null(), 1, QString()},
        {Value(true), 2, QStringLiteral("1")},
        {Value(false), 2, QStringLiteral("0")},
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
    for (const Case &c : cases) {
        const StoredValue stored = encodeValue(c.value);
        EXPECT_EQ(stored.kind, c.kind) << c.value.debugText().toStdString();
        EXPECT_EQ(stored.text.isNull(), c.text.isNull()) << c.value.debugText().toStdString();
        EXPECT_EQ(stored.text.toString(), c.text) << c.value.debugText().toStdString();
        EXPECT_EQ(decodeValue(c.kind, c.text).debugText(), c.value.debugText());
    }
}

TEST(StoredValue, DamagedTextIsAnErrorNotAValue)
{
    struct Case
    {
        int kind;
        const char *text;
    };
    for (const Case &c : {Case{3, "12x"}, Case{3, ""}, Case{4, "one"},
                          Case{6, "2024-13-45T00:00:00.000"}, Case{6, "yesterday"}, Case{7, "[1,2"},
                          Case{7, "{}"}, Case{7, "[[\"x\"]]"}, Case{8, "x"}, Case{-1, ""}}) {
        try {
            decodeValue(c.kind, QString::fromUtf8(c.text));
            ADD_FAILURE() << "read " << c.kind << " " << c.text;
        } catch (const Error &error) {
            EXPECT_EQ(error.number(), StoreError::SqlFailed);
        }
    }
}

} // namespace
