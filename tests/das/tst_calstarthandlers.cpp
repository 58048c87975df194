// The calibration commands carried out by the service on each backend: a settings change
// leaves every element it does not name as it was; a manual start runs a check to its end and
// an abort stops it, on the service's clock; refused channels and malformed records fail with
// their reason.
#include "dastestsite.h"
#include "host/testsite.h"

#include "calstart/calstartcommands.h"
#include "common/command.h"
#include "common/pid.h"
#include "das/calrecord.h"
#include "das/dasservice.h"
#include "host/commandqueue.h"
#include "host/demosite.h"
#include "support/fake_clock.h"

#include <gmock/gmock.h>

using namespace olvex;
using namespace olvex::test;
using namespace Qt::StringLiterals;
using testing::HasSubstr;

namespace {

const qint32 kCo2O2Cal = BuildPid(1, 103, 3, 0, 1); // start C23, abort C24: both Q2 channels

class CalStartServiceTest : public BackendTest
{
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        if (!IsSkipped()) {
            demo();
            DasOptions options;
            options.clock = m_clock;
            m_service = std::make_unique<DasService>(m_store, options);
        }
    }

    CommandRecord run(const QString &recordType, const QString &text)
    {
        return carryOut(*m_store, *m_service, recordType, text);
    }
    QString element(qint32 pid, const QString &name) { return calElement(*m_store, pid, name); }

    std::shared_ptr<ManualClock> m_clock = std::make_shared<ManualClock>();
    std::unique_ptr<DasService> m_service;
};

TEST_P(CalStartServiceTest, ChangeKeepsUntouchedElementsAndBothCopiesInStep)
{
    const qint32 pid = DemoPids::unit1SO2NOxCal();
    const QString before = readCalRecord(*m_store, pid);
    CalStartEntry entry;
    entry.startTime = u"00:05"_s;
    entry.startupDelay = u"45"_s;
    entry.calAfterEnterNormalOps = true;
    entry.confirmTimeout = u"60"_s;
    const CommandRecord record
        = run(RecordType::Calibration, *BuildCalStartCommand(pid, u"A&B"_s, u"10.0.0.7"_s, entry));
    ASSERT_EQ(record.state, QueueItem::State::Done) << record.result.toStdString();

    const QString after = readCalRecord(*m_store, pid);
    EXPECT_EQ(element(pid, u"CalStartTimeUser"_s), u"00:05"_s);
    EXPECT_EQ(element(pid, u"CalStartTimePLC"_s), u"00:05"_s);
    EXPECT_EQ(element(pid, u"CalAfterStartup"_s), u"0"_s);
    EXPECT_EQ(element(pid, u"CalAfterEnterNormalOps"_s), u"1"_s);
    EXPECT_EQ(element(pid, u"CalDelayMinutes"_s), u"45"_s);
    // The prompt waiting for the operator keeps the status line.
    EXPECT_EQ(element(pid, u"UserFriendlyStatus"_s),
              u"Daily cal check waiting for operator confirmation"_s);
    // Every line that names none of the changed elements is the same text as before.
    const QStringList changed{u"CalStartTime"_s,      u"CalAfter"_s,      u"CalDelayMinutes"_s,
                              u"CalConfirmTimeout"_s, u"SkipIfOffline"_s, u"CalEvery26"_s,
                              u"CalConfirmEnabled"_s, u"SkipStartup"_s};
    const auto untouched = [&](const QString &text) {
        QStringList lines = text.split(u'\n');
        lines.removeIf([&](const QString &line) {
            return std::ranges::any_of(changed, [&](const QString &c) { return line.contains(c); });
        });
        return lines;
    };
    EXPECT_EQ(untouched(after), untouched(before));
    EXPECT_EQ(m_store->currentData(pid, u"1m"_s)->text, after);
    EXPECT_EQ(rows(u"SELECT user_name FROM audit_trail WHERE attribute IS NULL AND pid = "_s
                   + QString::number(pid)),
              QStringList{u"A&B"_s});
}

TEST_P(CalStartServiceTest, MalformedOrMisdirectedRecordsFailWithTheirReason)
{
    const QString cal = FormatPidPlain(DemoPids::unit1SO2NOxCal());
    const auto change = [](const QString &pid, const QString &item) -> QString {
        return u"<Command action=\"ChangeCalStartSettings\" pid=\""_s + pid + u"\">"_s + item
               + u"</Command>"_s;
    };
    const std::tuple<QString, QString, const char *> cases[] = {
        {RecordType::Calibration,
         change(FormatPidPlain(DemoPids::unit1SO2Span()),
                u"<Item id=\"SkipIfOffline\" newValue=\"1\" />"_s),
         "is no calibration parameter"},
        {RecordType::Calibration, change(cal, u"<Item id=\"CalStartTime\" newValue=\"25:00\" />"_s),
         "not a time of day"},
        {RecordType::Calibration, change(cal, u"<Item id=\"Colour\" newValue=\"1\" />"_s),
         "no such item"},
        {RecordType::Calibration, change(cal, {}), "no items"},
        {RecordType::Q1Io, WriteToChannelCommand(41), "CSET-0079"},
        {RecordType::Q2Io, WriteToChannelCommand(34), "CSET-0080"},
        {RecordType::Q2Io, WriteToChannelCommand(35), "CSET-0081"},
        {RecordType::Q1Io, WriteToChannelCommand(99), "CSET-0082"},
        {RecordType::Q1Io, WriteToChannelCommand(23), "written by Q2IOCOMMAND records"},
    };
    for (const auto &[type, text, reason] : cases) {
        const CommandRecord record = run(type, text);
        EXPECT_EQ(record.state, QueueItem::State::Failed) << text.toStdString();
        EXPECT_THAT(record.result.toStdString(), HasSubstr(reason));
    }
    EXPECT_EQ(rows(u"SELECT count(*) FROM cal_checks WHERE ended IS NULL"_s), QStringList{u"0"_s});
}

TEST_P(CalStartServiceTest, ManualStartRunsACheckToItsEndOnTheServiceClock)
{
    run(RecordType::Calibration,
        AutoCalLogCommand(kCo2O2Cal, kManualStartLogText, u"operator"_s, u"10.0.0.7"_s));
    EXPECT_EQ(rows(u"SELECT text || '|' || user_name || '|' || client_address FROM autocal_log"_s),
              QStringList{kManualStartLogText + u"|operator|10.0.0.7"_s});

    const CommandRecord start = run(RecordType::Q2Io, WriteToChannelCommand(23));
    ASSERT_EQ(start.state, QueueItem::State::Done) << start.result.toStdString();
    EXPECT_THAT(element(kCo2O2Cal, u"UserFriendlyStatus"_s).toStdString(),
                HasSubstr("Manual cal check in progress; started by operator (10.0.0.7) at"));
    EXPECT_EQ(rows(u"SELECT val || ' ' || written_by FROM channels WHERE channel = 23"_s),
              QStringList{u"0 operator"_s});
    // A second start while it runs is refused, and the check goes on.
    EXPECT_EQ(run(RecordType::Q2Io, WriteToChannelCommand(23)).state, QueueItem::State::Failed);

    m_clock->advance(119);
    m_service->runOnce();
    EXPECT_THAT(element(kCo2O2Cal, u"UserFriendlyStatus"_s).toStdString(),
                HasSubstr("in progress"));
    m_clock->advance(1);
    m_service->runOnce();
    EXPECT_EQ(element(kCo2O2Cal, u"UserFriendlyStatus"_s),
              u"Idle; next daily cal check at 06:30"_s);
    EXPECT_EQ(element(kCo2O2Cal, u"OpHoursSinceOnlineCal"_s), u"0"_s);
    EXPECT_THAT(element(kCo2O2Cal, u"OpHoursStatusString"_s).toStdString(),
                HasSubstr("0 unit operating hours have passed since the most recent online cal"));
    EXPECT_EQ(rows(u"SELECT result || ' ' || started_by || ' ' || cylinder_id FROM cal_checks"
                   u" WHERE cal_pid = "_s
                   + QString::number(kCo2O2Cal) + u" ORDER BY id DESC LIMIT 1"_s),
              QStringList{u"passed operator EB0091774"_s});
}

TEST_P(CalStartServiceTest, AbortEndsTheRunningCheck)
{
    run(RecordType::Q2Io, WriteToChannelCommand(23));
    const QString hours = u"25"_s;
    ASSERT_EQ(element(kCo2O2Cal, u"OpHoursSinceOnlineCal"_s), hours);
    m_clock->advance(30);
    const CommandRecord abort = run(RecordType::Q2Io, WriteToChannelCommand(24));
    EXPECT_THAT(abort.result.toStdString(), HasSubstr("aborted"));
    m_clock->advance(300);
    m_service->runOnce();
    EXPECT_EQ(rows(u"SELECT result FROM cal_checks WHERE cal_pid = "_s + QString::number(kCo2O2Cal)
                   + u" ORDER BY id DESC LIMIT 1"_s),
              QStringList{u"aborted"_s});
    // An aborted check does not reset the count, which goes on while the unit is online.
    EXPECT_GE(element(kCo2O2Cal, u"OpHoursSinceOnlineCal"_s).toDouble(), hours.toDouble());
    EXPECT_EQ(element(kCo2O2Cal, u"UserFriendlyStatus"_s),
              u"Idle; next daily cal check at 06:30"_s);
}

INSTANTIATE_TEST_SUITE_P(Backends, CalStartServiceTest, OLVEX_TEST_BACKENDS, backendName);

} // namespace
