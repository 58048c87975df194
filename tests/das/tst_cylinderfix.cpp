// The service's FixOldCalCylinderInfo on each backend: only the checks of that cylinder inside
// the window take the new cylinder data, each with an audit row, and the result counts them.
#include "dastestsite.h"
#include "host/testsite.h"

#include "common/command.h"
#include "common/pid.h"
#include "common/vocabulary.h"
#include "das/dasservice.h"
#include "host/calchecks.h"
#include "host/commandqueue.h"
#include "host/sitebuilder.h"

#include <gmock/gmock.h>

using namespace olvex;
using namespace olvex::test;
using namespace Qt::StringLiterals;

namespace {

const qint32 kCylinder = BuildPid(0, 201, 7, 0, 1);
const qint32 kOtherCylinder = BuildPid(0, 201, 7, 0, 2);
const qint32 kCal = BuildPid(1, 103, 3, 0, 1);
const QDateTime kExpiration(QDate(2027, 3, 1), QTime(0, 0));

// Checks at 06:50 on 1 to 7 March 2026, for both cylinders.
QDateTime checkTime(int day)
{
    return QDateTime(QDate(2026, 3, day), QTime(6, 50));
}

class CylinderFixTest : public BackendTest
{
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        SiteInfo info;
        info.siteId = u"CYLTEST"_s;
        m_store = SiteStore::create(site(), info, false, [](SiteStore &store) {
            SiteBuilder builder(store);
            builder.addParameter(kCal, u"SO2 Cal"_s, ParameterTypes::Calibration);
            for (const qint32 cylinder : {kCylinder, kOtherCylinder}) {
                builder.addParameter(cylinder, u"Cylinder"_s, ParameterTypes::GasCylinder);
                for (int day = 1; day <= 7; ++day) {
                    builder.addCalCheck(kCal, cylinder, checkTime(day), checkTime(day).addSecs(600),
                                        u"passed"_s, u"OLD1"_s, kExpiration, u"V1"_s,
                                        u"SO2,BALN"_s);
                }
            }
            builder.flush();
        });
    }

    // Posts the fix and lets the service carry it out; returns the finished record.
    CommandRecord fix(const QString &attributes)
    {
        DasService service(m_store);
        return carryOut(*m_store, service, RecordType::Calibration,
                        u"<Command action=\"FixOldCalCylinderInfo\" "_s + attributes + u" />"_s,
                        u"CSET-0040"_s);
    }

    // The cylinder IDs of a cylinder's checks, day 1 first.
    QStringList ids(qint32 cylinder)
    {
        QStringList ids;
        for (const CalCheckRecord &check : calCheckRecords(*m_store, cylinder)) {
            ids << check.cylinderId;
        }
        return ids;
    }

    qint64 auditRows() { return count(u"audit_trail WHERE source LIKE 'cal check %'"_s); }
};

TEST_P(CylinderFixTest, RewritesOnlyTheChecksInsideTheWindow)
{
    const QString cylinder = FormatPidPlain(kCylinder);
    // name, pid, start, end, result (a failure's reason, or the count), expectedDays (each day's
    // check: o the old cylinder, n the new one).
    // clang-format off
    const QList<std::tuple<const char *, QString, const char *, const char *, const char *,
                           const char *>> cases{
        // The end is written to the minute and counts to the end of it.
        {"last two days", cylinder, "2026/03/06 00:00", "2026/03/07 06:50", "2 calibration checks updated", "ooooonn"},
        {"the same again", cylinder, "2026/03/06 00:00", "2026/03/07 06:50", "0 calibration checks updated", "ooooonn"},
        {"empty window", cylinder, "2026/03/02 07:00", "2026/03/03 06:49", "0 calibration checks updated", "ooooonn"},
        {"one minute", cylinder, "2026/03/01 06:50", "2026/03/01 06:50", "1 calibration check updated", "noooonn"},
        {"start after end", cylinder, "2026/03/05 00:00", "2026/03/01 00:00", "start 2026/03/05 00:00 is after end 2026/03/01 00:00", "noooonn"},
        {"no start", cylinder, "", "2026/03/01 00:00", "start '' is not a date", "noooonn"},
        {"no cylinder", QString(), "2026/03/01 00:00", "2026/03/07 00:00", "the fix names no cylinder", "noooonn"},
        {"not a cylinder", FormatPidPlain(kCal), "2026/03/01 00:00", "2026/03/07 00:00", "is not a gas cylinder", "noooonn"},
    };
    // clang-format on
    const qint64 audited = auditRows();
    for (const auto &[name, pid, start, end, result, expectedDays] : cases) {
        SCOPED_TRACE(name);
        const CommandRecord record
            = fix(u"pid=\""_s + pid + u"\" user=\"op\" clientIP=\"10.1.1.1\" start=\""_s
                  + QLatin1StringView(start) + u"\" end=\""_s + QLatin1StringView(end)
                  + u"\" newcylid=\"NEW&amp;2\" newexpdate=\"2028/01/31 00:00\" newvendorid=\"V9\""
                    " newgaslist=\"NO,BALN\""_s);
        const bool done = QByteArrayView(result).endsWith("updated");
        EXPECT_EQ(record.state, done ? QueueItem::State::Done : QueueItem::State::Failed);
        EXPECT_THAT(record.result.toStdString(), testing::HasSubstr(result));
        QString after;
        for (const QString &id : ids(kCylinder)) {
            after += id == u"NEW&2"_s ? u'n' : id == u"OLD1"_s ? u'o' : u'?';
        }
        EXPECT_EQ(after, QLatin1StringView(expectedDays));
        EXPECT_EQ(ids(kOtherCylinder), QStringList(7, u"OLD1"_s)) << "another cylinder's checks";
    }
    EXPECT_EQ(auditRows() - audited, 3); // one per record changed, never for an unchanged one
    const CalCheckRecord fixed = calCheckRecords(*m_store, kCylinder).constLast();
    EXPECT_EQ(fixed.expiration, QDateTime(QDate(2028, 1, 31), QTime(0, 0)));
    EXPECT_EQ(fixed.vendorId, u"V9"_s);
    EXPECT_EQ(fixed.gasCodes, u"NO,BALN"_s);
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Backends, CylinderFixTest, OLVEX_TEST_BACKENDS, backendName);
