// The service schedules calibration checks by itself, on its clock, on each backend: the daily
// time (and its offline skip), the startup delay, the 26-operating-hour rule, the confirmation
// hold with its deadline and default action, the operator's answers, and raised messages.
#include "dastestsite.h"
#include "host/testsite.h"

#include "common/command.h"
#include "common/pid.h"
#include "das/calrecord.h"
#include "das/dasservice.h"
#include "host/commandqueue.h"
#include "host/demosite.h"
#include "host/plantstate.h"
#include "host/systemmessages.h"
#include "support/fake_clock.h"

#include <gmock/gmock.h>

using namespace olvex;
using namespace olvex::test;
using namespace Qt::StringLiterals;

namespace {

const qint32 kCal = DemoPids::unit1SO2NOxCal(); // plant unit 1

class CalSchedulerTest : public BackendTest
{
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        demo();
        // Nothing held, nothing scheduled unless a test asks for it; daily time far away.
        set({{u"CalConfirmPending"_s, u"0"_s},
             {u"CalConfirmEnabled"_s, u"0"_s},
             {u"CalStartTimeUser"_s, u"03:00"_s},
             {u"CalAfterStartup"_s, u"0"_s},
             {u"CalEvery26OpHours"_s, u"0"_s},
             {u"OpHoursSinceOnlineCal"_s, u"1"_s}});
        DasOptions options;
        options.clock = m_clock; // 14:05
        m_service = std::make_unique<DasService>(m_store, options);
        m_service->runOnce(); // the scheduler's first look
    }
    void set(const QList<CalRecordEdit> &edits)
    {
        editCalRecord(*m_store, kCal, edits, kOperator, u"test"_s);
    }
    void plant(bool online) { changePlantUnit(*m_store, 1, {online, false, std::nullopt}); }
    void minutes(int n)
    {
        m_clock->advance(qint64(n) * 60);
        while (m_service->runOnce() == 1) {
        }
    }
    bool running() { return m_service->calChecks().running(*m_store, kCal).has_value(); }
    QString element(const QString &name) { return calElement(*m_store, kCal, name); }
    void post(const QString &text)
    {
        carryOut(*m_store, *m_service, RecordType::Calibration, text, u"CSET-0046"_s);
    }
    QString answer(bool confirm)
    {
        return u"<Command \r\naction=\"CalPendingPromptAction\" \r\npid=\""_s + FormatPidPlain(kCal)
               + u"\" \r\nuser=\"jo\" \r\nclientIP=\"10.0.0.9\">\r\n<Item id=\"CalConfirm\" "
                 u"newValue=\""_s
               + (confirm ? u"1"_s : u"0"_s) + u"\" />\r\n<Item id=\"CalCancel\" newValue=\""_s
               + (confirm ? u"0"_s : u"1"_s) + u"\" />\r\n</Command>"_s;
    }

    std::shared_ptr<ManualClock> m_clock = std::make_shared<ManualClock>();
    std::unique_ptr<DasService> m_service;
};

TEST_P(CalSchedulerTest, DailyTimeStartsACheckUnlessTheUnitIsOfflineAndSkips)
{
    // The unit online, skip if offline, whether the check starts.
    const std::tuple<bool, bool, bool> cases[]
        = {{true, true, true}, {false, true, false}, {false, false, true}};
    for (const auto &[online, skipIfOffline, starts] : cases) {
        SCOPED_TRACE(testing::Message() << online << skipIfOffline);
        m_service->calChecks().abort(*m_store, kCal, kOperator);
        plant(online);
        const QString at = m_clock->Now().addSecs(300).toString(u"HH:mm"_s);
        set({{u"CalStartTimeUser"_s, at}, {u"SkipIfOffline"_s, skipIfOffline ? u"1"_s : u"0"_s}});
        minutes(4);
        EXPECT_FALSE(running());
        minutes(2);
        EXPECT_EQ(running(), starts);
    }
}

TEST_P(CalSchedulerTest, StartupCheckWaitsItsDelay)
{
    set({{u"CalAfterStartup"_s, u"1"_s}, {u"CalDelayMinutes"_s, u"30"_s}});
    plant(false);
    minutes(1);
    plant(true);
    minutes(1);
    EXPECT_THAT(element(u"UserFriendlyStatus"_s).toStdString(),
                testing::HasSubstr("Unit startup calibration at"));
    minutes(29);
    EXPECT_FALSE(running());
    minutes(1);
    EXPECT_TRUE(running());
}

TEST_P(CalSchedulerTest, TwentySixHourRuleChecksAtAQuarterPast)
{
    set({{u"CalEvery26OpHours"_s, u"1"_s}});
    for (const auto &[hours, starts] : {std::pair{u"24.0"_s, false}, std::pair{u"24.9"_s, true}}) {
        m_service->calChecks().abort(*m_store, kCal, kOperator);
        set({{u"OpHoursSinceOnlineCal"_s, hours}});
        minutes(60); // the quarter past was crossed, one operating hour went by
        EXPECT_EQ(running(), starts) << hours.toStdString();
    }
}

TEST_P(CalSchedulerTest, HeldCheckTakesItsDefaultAtTheDeadline)
{
    for (const bool defaultConfirm : {true, false}) {
        SCOPED_TRACE(defaultConfirm);
        m_service->calChecks().abort(*m_store, kCal, kOperator);
        const QString at = m_clock->Now().addSecs(120).toString(u"HH:mm"_s);
        set({{u"CalStartTimeUser"_s, at},
             {u"CalConfirmEnabled"_s, u"1"_s},
             {u"CalConfirmTimeout"_s, u"30"_s},
             {u"CalConfirmDefaultConfirm"_s, defaultConfirm ? u"1"_s : u"0"_s}});
        minutes(3);
        EXPECT_EQ(element(u"CalConfirmPending"_s), u"1");
        EXPECT_EQ(element(u"CalConfirmPendingCalType"_s), u"Daily calibration");
        EXPECT_EQ(m_store->currentData(kCal, u"1m"_s)->text, readCalRecord(*m_store, kCal));
        EXPECT_FALSE(running());
        minutes(29);
        EXPECT_EQ(element(u"CalConfirmPending"_s), u"1");
        minutes(2);
        EXPECT_EQ(element(u"CalConfirmPending"_s), u"0");
        EXPECT_EQ(running(), defaultConfirm);
    }
}

TEST_P(CalSchedulerTest, AnswersConfirmOrCancelTheHeldCheck)
{
    for (const bool confirm : {true, false}) {
        SCOPED_TRACE(confirm);
        m_service->calChecks().abort(*m_store, kCal, kOperator);
        set({{u"CalConfirmEnabled"_s, u"1"_s},
             {u"CalStartTimeUser"_s, m_clock->Now().addSecs(60).toString(u"HH:mm"_s)}});
        minutes(2);
        ASSERT_EQ(element(u"CalConfirmPending"_s), u"1");
        post(answer(confirm));
        EXPECT_EQ(element(u"CalConfirmPending"_s), u"0");
        EXPECT_EQ(running(), confirm);
        // A late second answer changes nothing.
        post(answer(true));
        EXPECT_EQ(running(), confirm);
    }
}

TEST_P(CalSchedulerTest, RaisedMessagesAreKept)
{
    post(u"<Command  action=\"RaiseMsg\"  user=\"jo\"  clientIP=\"10.0.0.9\"  msgTypeID=\"0x6001\""
         u"  msg=\"CSET-0098: There are no calibrations pending confirmation\"  />"_s);
    const QList<SystemMessage> messages = readSystemMessages(*m_store);
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0].msgType, 24577u);
    EXPECT_EQ(messages[0].pid, 0);
    EXPECT_EQ(messages[0].userName, u"jo");
    EXPECT_EQ(messages[0].raised, m_clock->Now());
}

INSTANTIATE_TEST_SUITE_P(Backends, CalSchedulerTest, OLVEX_TEST_BACKENDS, backendName);

} // namespace
