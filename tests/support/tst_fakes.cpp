// The fakes carry every component test, so their own behaviour is checked here: a clock that
// fired out of order or a writer that forgot a failed post would make those tests lie.
#include "support/fake_data_interface.h"
#include "support/fake_log.h"
#include "support/fake_security.h"

#include <gtest/gtest.h>

#include <QObject>

using namespace olvex;

namespace {

IntervalSpec spec(const QString &name, int period, bool repeat = true,
                  std::optional<QDateTime> firstDue = std::nullopt)
{
    IntervalSpec s;
    s.name = name;
    s.periodSeconds = period;
    s.repeat = repeat;
    s.firstDue = firstDue;
    return s;
}

} // namespace

TEST(ManualClock, FiresDueIntervalsInOrderAndSkipsStoppedAndDestroyed)
{
    ManualClock clock;
    const QDateTime start = clock.Now();
    QStringList firings; // "name@seconds since start", as each handler sees the time
    const auto make = [&](const IntervalSpec &s) {
        IntervalPtr interval = clock.CreateInterval(s);
        QObject::connect(interval.get(), &Interval::IntervalExpired, interval.get(), [&, s] {
            firings.append(s.name + u'@' + QString::number(start.secsTo(clock.Now())));
        });
        return interval;
    };
    auto a = make(spec(QStringLiteral("A"), 10));
    auto b = make(spec(QStringLiteral("B"), 25));
    auto once = make(spec(QStringLiteral("Once"), 60, false, start.addSecs(15)));
    auto stopped = make(spec(QStringLiteral("Stopped"), 5));
    auto dropped = make(spec(QStringLiteral("Dropped"), 5));
    // Same due time as A's second firing, created later: fires after it.
    auto tie = make(spec(QStringLiteral("Tie"), 20, false));
    // A first due time already past fires at the next advance.
    auto late = make(spec(QStringLiteral("Late"), 60, false, start.addSecs(-5)));
    stopped->Stop();
    dropped.reset();

    EXPECT_EQ(clock.advance(30), 7);
    EXPECT_EQ(firings,
              QStringList({"Late@0", "A@10", "Once@15", "A@20", "Tie@20", "B@25", "A@30"}));
    EXPECT_EQ(clock.Now(), start.addSecs(30));

    firings.clear();
    clock.advance(100);
    EXPECT_EQ(firings.count(QStringLiteral("B@50")), 1);
    EXPECT_EQ(firings.filter(QStringLiteral("Once")).size(), 0);
    EXPECT_TRUE(static_cast<const ManualInterval &>(*once).isStopped());
    EXPECT_EQ(clock.liveIntervalCount(), 2); // A and B
    EXPECT_EQ(clock.liveInterval(QStringLiteral("B")), b);
    EXPECT_EQ(clock.createdSpecs().size(), 7);
}

TEST(ManualClock, HandlersMayStopReleaseOrCreateIntervals)
{
    ManualClock clock;
    int stopFirings = 0;
    int releaseFirings = 0;
    int followFirings = 0;
    IntervalPtr stopping = clock.CreateInterval(spec(QStringLiteral("stop"), 10));
    IntervalPtr releasing = clock.CreateInterval(spec(QStringLiteral("release"), 10));
    IntervalPtr first = clock.CreateInterval(spec(QStringLiteral("first"), 10, false));
    IntervalPtr follow;
    QObject::connect(stopping.get(), &Interval::IntervalExpired, stopping.get(), [&] {
        ++stopFirings;
        stopping->Stop();
    });
    QObject::connect(releasing.get(), &Interval::IntervalExpired, releasing.get(), [&] {
        ++releaseFirings;
        releasing.reset(); // a component tearing down from its own timer
    });
    QObject::connect(first.get(), &Interval::IntervalExpired, first.get(), [&] {
        follow = clock.CreateInterval(spec(QStringLiteral("follow"), 10, false));
        QObject::connect(follow.get(), &Interval::IntervalExpired, follow.get(),
                         [&] { ++followFirings; });
    });

    clock.advance(60);

    EXPECT_EQ(stopFirings, 1);
    EXPECT_EQ(releaseFirings, 1);
    EXPECT_EQ(followFirings, 1); // created at 10, due at 20: within the same advance
    EXPECT_EQ(clock.liveIntervalCount(), 0);
}

TEST(FakeParameter, WritesFollowTheModeRules)
{
    struct Case
    {
        const char *name;
        int mode;
        Value written;
        bool queued;
        Value applied;
    };
    const QList<Case> cases = {
        {"queued write waits for the service", 3, Value(42), true, Value(42)},
        {"one-element array is applied as its element", 3, Value(QList<Value>{Value("7.5")}), true,
         Value("7.5")},
        {"other modes apply at once", 1, Value("now"), false, Value("now")},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        FakeDataInterface di;
        auto setting = di.addSetting(1000101, QStringLiteral("Span"), 1, Value(10));
        di.clock()->advance(90);

        setting->SetValues(c.mode, c.written);

        EXPECT_EQ(setting->valueWrites(), (QList<FakeParameter::ValueWrite>{{c.mode, c.written}}));
        EXPECT_EQ(setting->GetAttribute(FakeAttributes::ChangePending).isTrue(), c.queued);
        EXPECT_EQ(setting->GetCurrentValue().Value, c.queued ? Value(10) : c.applied);
        EXPECT_EQ(di.applyPendingWrites(), c.queued ? 1 : 0);
        EXPECT_EQ(setting->GetCurrentValue().Value, c.applied);
        EXPECT_FALSE(setting->GetAttribute(FakeAttributes::ChangePending).isTrue());
        if (c.queued) {
            EXPECT_EQ(setting->GetCurrentValue().Time, di.clock()->Now());
        }
    }
}

TEST(FakeParameter, InjectedFailuresHitOnlyTheirOperationAndAttribute)
{
    using Op = FakeParameter::Op;
    FakeDataInterface di;
    auto p = di.addSetting(1000102, QStringLiteral("Zero"), 1, Value(0));
    di.setFailure(1000102, Op::GetAttribute, Error(91, QStringLiteral("Object variable not set")),
                  FakeAttributes::DefaultValue);
    p->setFailure(Op::SetValues, Error(5, QStringLiteral("denied")));

    try {
        p->GetAttribute(FakeAttributes::DefaultValue);
        ADD_FAILURE() << "no error thrown";
    } catch (const Error &e) {
        EXPECT_EQ(e.number(), 91);
        EXPECT_EQ(e.description(), QStringLiteral("Object variable not set"));
    }
    EXPECT_NO_THROW(p->GetAttribute(FakeAttributes::DataType));
    EXPECT_NO_THROW(p->GetCurrentValue());
    EXPECT_THROW(p->SetValues(3, 1), Error);
    // A failed write is not recorded as made, but the call is counted.
    EXPECT_TRUE(p->valueWrites().isEmpty());
    EXPECT_FALSE(p->GetAttribute(FakeAttributes::ChangePending).isTrue());
    EXPECT_EQ(p->callCount(Op::SetValues), 1);

    p->clearFailures();
    EXPECT_NO_THROW(p->GetAttribute(FakeAttributes::DefaultValue));
    EXPECT_NO_THROW(p->SetValues(3, 1));
}

TEST(FakeDataInterface, CompanionsSeeTheLiveData)
{
    FakeDataInterface di;
    auto directory = di.GetPidDirectory();
    auto user = di.GetUser();
    di.addSetting(1000201, QStringLiteral("S1"), 1, Value(1));
    di.addGroup(1000300, QStringLiteral("G"), {1000201, 1000202});
    di.addSetting(1000202, QStringLiteral("S2"), 5, Value(true));
    di.addParameter(1000400, ParameterTypes::Calibration, QStringLiteral("Cal"));
    di.setUser(QStringLiteral("A&B"), {Privileges::ImportSettings});
    di.user()->revoke(Privileges::ImportSettings);

    const ParameterList settings = di.GetPidsOfTypes({ParameterTypes::Setting});
    ASSERT_EQ(settings.size(), 2);
    EXPECT_EQ(settings.at(0)->PidNumber(), 1000201);
    EXPECT_EQ(settings.at(1)->PidNumber(), 1000202);
    EXPECT_EQ(di.pidsOfTypesRequests(), (QList<QList<int>>{{ParameterTypes::Setting}}));
    // Added after the directory was handed out: the directory sees it.
    EXPECT_EQ(directory->GetPid(1000300)->GetAttribute(FakeAttributes::MemberPids),
              Value(QList<Value>{Value(qint64(1000201)), Value(qint64(1000202))}));
    EXPECT_FALSE(directory->PidExists(1000999));
    EXPECT_THROW(directory->GetPid(1000999), Error);
    EXPECT_EQ(user->UserName(), QStringLiteral("A&B"));
    EXPECT_FALSE(user->HasPrivilege(Privileges::ImportSettings));

    di.setFailure(FakeDataInterface::Op::GetSiteId, Error(3, QStringLiteral("offline")));
    EXPECT_THROW(di.GetSiteId(), Error);
    di.clearFailures();
    EXPECT_EQ(di.GetSiteId(), QStringLiteral("PLANT1"));
}

TEST(FakeMessageRecords, RecordsEveryPostAndRefusesOnRequest)
{
    FakeMessageRecords records;
    for (const bool refuse : {false, true}) {
        records.setFailure(refuse ? std::optional(QStringLiteral("table locked")) : std::nullopt);
        QString errorText = QStringLiteral("stale");
        bool ok = refuse;
        records.PostMessageRecord(errorText, QStringLiteral("PLANT1"),
                                  QStringLiteral("Q1IOCOMMAND"), QStringLiteral("<Command />"),
                                  QString(), QString(), QStringLiteral("CSET-0031"), ok);
        EXPECT_EQ(ok, !refuse);
        EXPECT_EQ(errorText, refuse ? QStringLiteral("table locked") : QString());
        ASSERT_FALSE(records.posts().isEmpty());
        const PostedRecord &post = records.posts().constLast();
        EXPECT_EQ(post.errorTextOnEntry, QStringLiteral("stale"));
        EXPECT_EQ(post.siteId, QStringLiteral("PLANT1"));
        EXPECT_EQ(post.sourceCode, QStringLiteral("CSET-0031"));
        EXPECT_EQ(post.written, !refuse);
    }
    EXPECT_EQ(records.posts().size(), 2);
}

TEST(RecordingLog, AFailingLogStillRecordsTheLine)
{
    RecordingLog log;
    log.LogMessage(Severity::Note, QStringLiteral("CSET-0090: Add pending cal confirmation (1)"));
    log.setFailure(Error(7, QStringLiteral("Out of memory")));
    EXPECT_THROW(log.LogMessage(Severity::Error, QStringLiteral("[CSET-0066] kept")), Error);
    EXPECT_EQ(log.texts(),
              QStringList({QStringLiteral("CSET-0090: Add pending cal confirmation (1)"),
                           QStringLiteral("[CSET-0066] kept")}));
    EXPECT_EQ(log.linesStartingWith(QStringLiteral("[CSET-")),
              QList<LogLine>({{Severity::Error, QStringLiteral("[CSET-0066] kept")}}));
}

TEST(FakeSecurity, RefusesUntilInitializedThenAnswersAsSet)
{
    FakeSecurity security;
    EXPECT_FALSE(security.CanChangeSetting(1000201, true));

    security.Initialize({}, {}, {}, {}, QStringLiteral("WS1:DISettings"), 0);
    security.setCanChangeSetting(1000202, false);
    EXPECT_TRUE(security.CanChangeSetting(1000201, true));
    EXPECT_FALSE(security.CanChangeSetting(1000202, true));
    security.setCanChangeSetting(false);
    EXPECT_FALSE(security.CanChangeSetting(1000201, true));
    EXPECT_EQ(security.queries().size(), 4);
}
