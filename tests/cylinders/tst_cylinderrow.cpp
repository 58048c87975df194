// The texts of a cylinder row, shared by the list control and the command line.
#include "cylinders/cylinderrow.h"

#include "cylinders/cylinder_fixture.h"

#include <gtest/gtest.h>

#include <QLocale>

using namespace olvex;
using namespace olvex::test;
using namespace Qt::StringLiterals;

namespace {

TEST(CylinderRow, CellTexts)
{
    EXPECT_EQ(componentGasesText(Value::null()), QString());

    EXPECT_EQ(pressureText(Value(u"620"_s), Value(u"psig"_s)), u"620 psig"_s);
    EXPECT_EQ(pressureText(Value(u"full"_s), Value(u"psig"_s)), QString());
    EXPECT_EQ(pressureText(Value::null(), Value(u"psig"_s)), QString());

    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    EXPECT_EQ(expirationText(Value(QDateTime(QDate(2027, 1, 5), QTime(0, 0)))), u"1/5/2027"_s);
    EXPECT_EQ(expirationText(Value(u"unknown"_s)), u"unknown"_s);
    EXPECT_EQ(expirationText(Value::null()), QString());
    QLocale::setDefault(QLocale::system());

    EXPECT_EQ(cylinderRowKey(1234), u"K0000001234"_s);
    EXPECT_EQ(cylinderPidFromKey(u"K0020170001"_s), 20170001);
    EXPECT_EQ(cylinderPidFromKey(QString()), 0);
    EXPECT_EQ(cylinderListPids(u"0,12, 20170001,x"_s), (QList<qint32>{12, 20170001}));
    EXPECT_TRUE(cylinderListPids(QString()).isEmpty());
}

TEST(CylinderRow, ExpiryMarks)
{
    FakeDataInterface di;
    const QDate today(2026, 3, 1);
    const QList<std::tuple<Value, std::optional<qint64>, CylinderExpiry, QString>> cases{
        {Value(QDateTime(today.addDays(-12), QTime(0, 0))), -12, CylinderExpiry::Expired,
         u"Expired 12 days ago"_s},
        {Value(QDateTime(today.addDays(-1), QTime(23, 0))), -1, CylinderExpiry::Expired,
         u"Expired yesterday"_s},
        // Later today is not past: the day counts.
        {Value(QDateTime(today, QTime(0, 0))), 0, CylinderExpiry::ExpiresSoon, u"Expires today"_s},
        {Value(QDateTime(today.addDays(30), QTime(0, 0))), 30, CylinderExpiry::ExpiresSoon,
         u"Expires in 30 days"_s},
        {Value(QDateTime(today.addDays(31), QTime(0, 0))), 31, CylinderExpiry::Valid, QString()},
        {Value(u"2026-03-04"_s), 3, CylinderExpiry::ExpiresSoon, u"Expires in 3 days"_s},
        {Value(u"soon"_s), std::nullopt, CylinderExpiry::Unknown, QString()},
        {Value::null(), std::nullopt, CylinderExpiry::Unknown, QString()},
    };
    for (const auto &[expiration, days, expiry, note] : cases) {
        SCOPED_TRACE(expiration.debugText().toStdString());
        const FakeParameterPtr cylinder = addCylinder(di, 1, u"CC1"_s, expiration);
        const CylinderRow row = cylinderRow(*cylinder, today);
        EXPECT_EQ(row.daysToExpiry, days);
        EXPECT_EQ(row.expiry, expiry);
        EXPECT_EQ(expiryNote(row.daysToExpiry), note);
    }
}

} // namespace
