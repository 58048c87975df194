// The fakes carry every component test, so their own behaviour is checked here: a clock that
// fired out of order or a writer that forgot a failed post would make those tests lie.
#include "support/fake_clock.h"
#include "support/fake_current_data.h"
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

// Records "name@seconds-since-start" for each firing.
struct FiringRecorder
{
    explicit FiringRecorder(ManualClock &c)
        : clock(c)
        , start(c.Now())
    {}

    ManualClock &clock;
    QDateTime start;
    QStringList firings;

    void watch(const IntervalPtr &interval)
    {
        QObject::connect(interval.get(), &Interval::IntervalExpired, interval.get(),
                         [this, name = interval->Name()] {
                             firings.append(name + u'@'
                                            + QString::number(start.secsTo(clock.Now())));
                         });
    }
};

} // namespace

TEST(ManualClock, FiresDueIntervalsInOrderAndSkipsStoppedAndDestroyed)
{
    ManualClock clock;
    FiringRecorder recorder{clock};
    auto a = clock.CreateInterval(spec(QStringLiteral("A"), 10));
    auto b = clock.CreateInterval(spec(QStringLiteral("B"), 25));
    auto once
        = clock.CreateInterval(spec(QStringLiteral("Once"), 60, false, clock.Now().addSecs(15)));
    auto stopped = clock.CreateInterval(spec(QStringLiteral("Stopped"), 5));
    auto dropped = clock.CreateInterval(spec(QStringLiteral("Dropped"), 5));
    // Same due time as A's second firing, created later: fires after it.
    auto tie = clock.CreateInterval(spec(QStringLiteral("Tie"), 20, false));
    for (const auto &i : {a, b, once, stopped, dropped, tie}) {
        recorder.watch(i);
    }
    stopped->Stop();
    dropped.reset();

    EXPECT_EQ(clock.advance(30), 6);
    EXPECT_EQ(recorder.firings, QStringList({"A@10", "Once@15", "A@20", "Tie@20", "B@25", "A@30"}));
    EXPECT_EQ(clock.Now(), recorder.start.addSecs(30));

    recorder.firings.clear();
    clock.advance(100);
    EXPECT_FALSE(recorder.firings.contains(QStringLiteral("Once@115")));
    EXPECT_EQ(recorder.firings.count(QStringLiteral("B@50")), 1);
    const auto &onceManual = static_cast<const ManualInterval &>(*once);
    EXPECT_EQ(onceManual.fireCount(), 1);
    EXPECT_TRUE(onceManual.isStopped());
    EXPECT_EQ(clock.liveIntervalCount(), 2); // A and B
}

TEST(ManualClock, HandlerMayStopOrReleaseItsOwnInterval)
{
    ManualClock clock;
    int stopFirings = 0;
    int releaseFirings = 0;
    IntervalPtr stopping = clock.CreateInterval(spec(QStringLiteral("stop"), 10));
    IntervalPtr releasing = clock.CreateInterval(spec(QStringLiteral("release"), 10));
    QObject::connect(stopping.get(), &Interval::IntervalExpired, stopping.get(), [&] {
        ++stopFirings;
        stopping->Stop();
    });
    QObject::connect(releasing.get(), &Interval::IntervalExpired, releasing.get(), [&] {
        ++releaseFirings;
        releasing.reset(); // a component tearing down from its own timer
    });

    clock.advance(60);

    EXPECT_EQ(stopFirings, 1);
    EXPECT_EQ(releaseFirings, 1);
    EXPECT_EQ(clock.liveIntervalCount(), 0);
}

TEST(ManualClock, RecordsSpecsAndHonoursFirstDueAndFailures)
{
    const QDateTime start(QDate(2026, 1, 2), QTime(3, 4, 5));
    ManualClock clock(start);
    IntervalSpec full = spec(QStringLiteral("Refresh Setting window"), 60);
    full.id = 21;
    full.arg9 = 60;
    auto refresh = clock.CreateInterval(full);
    auto held = clock.CreateInterval(spec(QStringLiteral("hold"), 60, false, start.addSecs(-5)));

    ASSERT_EQ(clock.createdSpecs().size(), 2);
    EXPECT_EQ(clock.createdSpecs().at(0).id, 21);
    EXPECT_EQ(clock.createdSpecs().at(0).arg9, 60);
    EXPECT_EQ(std::static_pointer_cast<ManualInterval>(refresh)->nextDue(), start.addSecs(60));
    EXPECT_EQ(clock.liveInterval(QStringLiteral("hold")), held);

    // A first due time already past fires at the next advance, without moving time back.
    EXPECT_EQ(clock.advance(0), 1);
    EXPECT_EQ(clock.Now(), start);

    clock.setCreateFailure(Error(5, QStringLiteral("clock down")));
    EXPECT_THROW(clock.CreateInterval(spec(QStringLiteral("x"), 1)), Error);
    EXPECT_EQ(clock.createdSpecs().size(), 3);
}

TEST(ManualClock, IntervalCreatedByHandlerFiresInSameAdvance)
{
    ManualClock clock;
    IntervalPtr follow;
    int followFirings = 0;
    auto first = clock.CreateInterval(spec(QStringLiteral("first"), 10, false));
    QObject::connect(first.get(), &Interval::IntervalExpired, first.get(), [&] {
        follow = clock.CreateInterval(spec(QStringLiteral("follow"), 10, false));
        QObject::connect(follow.get(), &Interval::IntervalExpired, follow.get(),
                         [&] { ++followFirings; });
    });

    clock.advance(25);

    EXPECT_EQ(followFirings, 1);
}

TEST(FakeParameter, WritesFollowTheModeRules)
{
    struct Case
    {
        const char *name;
        int mode;
        Value written;
        bool pendingAfterWrite;
        Value currentAfterApply;
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
        EXPECT_EQ(setting->GetAttribute(FakeAttributes::ChangePending).isTrue(),
                  c.pendingAfterWrite);
        if (c.pendingAfterWrite) {
            EXPECT_EQ(setting->GetCurrentValue().Value, Value(10));
        }
        EXPECT_EQ(di.applyPendingWrites(), c.pendingAfterWrite ? 1 : 0);
        EXPECT_EQ(setting->GetCurrentValue().Value, c.currentAfterApply);
        EXPECT_FALSE(setting->GetAttribute(FakeAttributes::ChangePending).isTrue());
        if (c.pendingAfterWrite) {
            EXPECT_EQ(setting->GetCurrentValue().Time, di.clock()->Now());
        }
    }
}

TEST(FakeParameter, InjectedFailuresThrowUntilCleared)
{
    using Op = FakeParameter::Op;
    struct Case
    {
        const char *name;
        Op op;
        std::optional<int> onlyAttribute;
        std::function<void(FakeParameter &)> call;
        bool throws;
    };
    const QList<Case> cases = {
        {"GetAttribute, any number",
         Op::GetAttribute,
         {},
         [](FakeParameter &p) { p.GetAttribute(-19); },
         true},
        {"GetAttribute, that number", Op::GetAttribute, -19,
         [](FakeParameter &p) { p.GetAttribute(-19); }, true},
        {"GetAttribute, another number", Op::GetAttribute, -19,
         [](FakeParameter &p) { p.GetAttribute(-14); }, false},
        {"SetAttribute",
         Op::SetAttribute,
         {},
         [](FakeParameter &p) { p.SetAttribute(-28, 1); },
         true},
        {"SetValues", Op::SetValues, {}, [](FakeParameter &p) { p.SetValues(3, 1); }, true},
        {"GetCurrentValue",
         Op::GetCurrentValue,
         {},
         [](FakeParameter &p) { p.GetCurrentValue(); },
         true},
        {"other operation unaffected",
         Op::SetValues,
         {},
         [](FakeParameter &p) { p.GetCurrentValue(); },
         false},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        FakeDataInterface di;
        auto p = di.addSetting(1000102, QStringLiteral("Zero"), 1, Value(0));
        di.setFailure(1000102, c.op, Error(91, QStringLiteral("Object variable not set")),
                      c.onlyAttribute);
        if (c.throws) {
            try {
                c.call(*p);
                ADD_FAILURE() << "no error thrown";
            } catch (const Error &e) {
                EXPECT_EQ(e.number(), 91);
                EXPECT_EQ(e.description(), QStringLiteral("Object variable not set"));
            }
        } else {
            EXPECT_NO_THROW(c.call(*p));
        }
        p->clearFailures();
        EXPECT_NO_THROW(c.call(*p));
    }
    // A failed write is not recorded as made.
    FakeDataInterface di;
    auto p = di.addSetting(1000103, QStringLiteral("Gain"), 1, Value(0));
    p->setFailure(Op::SetValues, Error(5, QStringLiteral("denied")));
    EXPECT_THROW(p->SetValues(3, 1), Error);
    EXPECT_TRUE(p->valueWrites().isEmpty());
    EXPECT_FALSE(p->isChangePending());
}

TEST(FakeDataInterface, DirectoryAndListsSeeTheLiveData)
{
    FakeDataInterface di;
    di.addSetting(1000201, QStringLiteral("S1"), 1, Value(1));
    di.addGroup(1000300, QStringLiteral("G"), {1000201, 1000202});
    di.addSetting(1000202, QStringLiteral("S2"), 5, Value(true));
    di.addParameter(1000400, ParameterTypes::Calibration, QStringLiteral("Cal"));
    auto directory = di.GetPidDirectory();

    const ParameterList settings = di.GetPidsOfTypes({ParameterTypes::Setting});
    ASSERT_EQ(settings.size(), 2);
    EXPECT_EQ(settings.at(0)->PidNumber(), 1000201);
    EXPECT_EQ(settings.at(1)->PidNumber(), 1000202);
    EXPECT_EQ(di.pidsOfTypesRequests(), (QList<QList<int>>{{ParameterTypes::Setting}}));
    EXPECT_EQ(directory->GetPid(1000300)->GetAttribute(FakeAttributes::MemberPids),
              Value(QList<Value>{Value(qint64(1000201)), Value(qint64(1000202))}));

    // Removed after the directory was handed out: the directory sees it gone.
    di.removeParameter(1000201);
    EXPECT_FALSE(directory->PidExists(1000201));
    try {
        directory->GetPid(1000201);
        ADD_FAILURE() << "undefined PID returned";
    } catch (const Error &e) {
        EXPECT_EQ(e.number(), FakeDataInterface::kUndefinedPidError);
    }
    EXPECT_EQ(di.GetPidsOfTypes({ParameterTypes::Setting}).size(), 1);
}

TEST(FakeDataInterface, CompanionsAndFailures)
{
    FakeDataInterface di;
    di.setUser(QStringLiteral("A&B"), {Privileges::ImportSettings});
    auto user = di.GetUser();
    di.user()->revoke(Privileges::ImportSettings); // the object handed out follows
    EXPECT_EQ(user->UserName(), QStringLiteral("A&B"));
    EXPECT_FALSE(user->HasPrivilege(Privileges::ImportSettings));

    di.setUnitsText(1000201, QStringLiteral("ppm"));
    EXPECT_EQ(di.GetUnitsLookup()->UnitsText(1000201), QStringLiteral("ppm"));
    EXPECT_EQ(di.GetUnitsLookup()->UnitsText(1000202), QString());

    di.setChannelKind(12, 3);
    EXPECT_EQ(di.GetChannelKind(12), 3);
    EXPECT_EQ(di.GetChannelKind(13), 0);
    EXPECT_EQ(di.channelKindQueries(), (QList<int>{12, 13}));

    EXPECT_EQ(di.MessageLog(), nullptr);
    auto log = std::make_shared<RecordingLog>();
    di.setMessageLog(log);
    EXPECT_EQ(di.MessageLog(), log);
    EXPECT_EQ(di.Clock(), di.clock());

    di.setFailure(FakeDataInterface::Op::GetPidDirectory, Error(3, QStringLiteral("offline")));
    EXPECT_THROW(di.GetPidDirectory(), Error);
    EXPECT_EQ(di.callCount(FakeDataInterface::Op::GetPidDirectory), 1);
    di.clearFailures();
    EXPECT_NO_THROW(di.GetPidDirectory());

    int raised = 0;
    QObject::connect(&di, &DataInterface::UseSecondaryDasConnectionStringsChanged, &di,
                     [&] { ++raised; });
    di.raiseUseSecondaryDasConnectionStringsChanged();
    EXPECT_EQ(raised, 1);
}

TEST(FakeMessageRecords, RecordsEveryArgumentAndRefusesOnRequest)
{
    FakeMessageRecords records;
    records.setFailure(
        [](const PostedRecord &r) { return r.recordType == QStringLiteral("Q1DRCOMMAND-CAL"); },
        QStringLiteral("table locked"));

    struct Post
    {
        QString type;
        QString source;
        bool expectWritten;
    };
    const QList<Post> posts
        = {{QStringLiteral("Q1IOCOMMAND"), QStringLiteral("CSET-0031"), true},
           {QStringLiteral("Q1DRCOMMAND-CAL"), QStringLiteral("CSET-0033"), false}};
    for (const Post &p : posts) {
        QString errorText = QStringLiteral("stale");
        bool ok = !p.expectWritten;
        records.PostMessageRecord(errorText, QStringLiteral("PLANT1"), p.type,
                                  QStringLiteral("<Command />"), QString(), QString(), p.source,
                                  ok);
        EXPECT_EQ(ok, p.expectWritten);
        EXPECT_EQ(errorText, p.expectWritten ? QString() : QStringLiteral("table locked"));
    }

    ASSERT_EQ(records.posts().size(), 2);
    const PostedRecord &first = records.posts().at(0);
    EXPECT_EQ(first.errorTextOnEntry, QStringLiteral("stale"));
    EXPECT_EQ(first.siteId, QStringLiteral("PLANT1"));
    EXPECT_EQ(first.sourceCode, QStringLiteral("CSET-0031"));
    EXPECT_EQ(records.writtenPosts().size(), 1);
    EXPECT_EQ(records.postsWithSource(QStringLiteral("CSET-0033")).at(0).written, false);

    records.setFailure(std::nullopt);
    QString errorText;
    bool ok = false;
    records.PostMessageRecord(errorText, {}, QStringLiteral("Q1DRCOMMAND-CAL"), {}, {}, {}, {}, ok);
    EXPECT_TRUE(ok);
}

TEST(RecordingLog, FindsLinesAndCanFail)
{
    RecordingLog log;
    log.LogMessage(Severity::Note, QStringLiteral("CSET-0090: Add pending cal confirmation (1)"));
    log.LogMessage(Severity::Error, QStringLiteral("[CSET-0066] Cannot import setting."));
    log.LogMessage(Severity::Error, QStringLiteral("CSET-0084: Realtime data expired"));

    EXPECT_EQ(log.linesStartingWith(QStringLiteral("CSET-")).size(), 2);
    EXPECT_EQ(log.linesOfSeverity(Severity::Error).size(), 2);
    EXPECT_EQ(log.find(QStringLiteral("CSET-0066"))->severity, Severity::Error);
    EXPECT_FALSE(log.find(QStringLiteral("CSET-0067")).has_value());

    log.setFailure(Error(7, QStringLiteral("Out of memory")));
    EXPECT_THROW(log.LogMessage(Severity::Note, QStringLiteral("kept")), Error);
    EXPECT_TRUE(log.contains(QStringLiteral("kept")));
}

TEST(FakeCurrentDataReader, ItemsPerPidAndKeyAsSnapshots)
{
    FakeCurrentDataReader reader;
    reader.setItem(1000400, QStringLiteral("<CalStart/>"));
    reader.setItem(1000400, QString(), kStatusExpired, QStringLiteral("1h"));

    auto item = reader.GetCurrentDataItem(1000400, QStringLiteral("1m"));
    ASSERT_NE(item, nullptr);
    reader.setItem(1000400, QStringLiteral("changed"));
    EXPECT_EQ(item->Text(), QStringLiteral("<CalStart/>"));
    EXPECT_EQ(reader.GetCurrentDataItem(1000400, QStringLiteral("1h"))->Status(), kStatusExpired);
    EXPECT_EQ(reader.GetCurrentDataItem(1000401, QStringLiteral("1m")), nullptr);

    reader.setFailure(1000400, Error(9, QStringLiteral("reader gone")));
    EXPECT_THROW(reader.GetCurrentDataItem(1000400, QStringLiteral("1m")), Error);
    EXPECT_EQ(reader.requestCount(1000400), 3);
}

TEST(FakeSecurity, RefusesUntilInitializedThenAnswersAsSet)
{
    FakeSecurity security;
    EXPECT_FALSE(security.CanChangeSetting(1000201, true));

    security.Initialize(QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"),
                        QStringLiteral("d"), QStringLiteral("WS1:DISettings"), 0);
    security.setCanChangeSetting(1000202, false);
    EXPECT_TRUE(security.CanChangeSetting(1000201, true));
    EXPECT_FALSE(security.CanChangeSetting(1000202, true));
    security.setCanChangeSetting(false);
    EXPECT_FALSE(security.CanChangeSetting(1000201, true));

    EXPECT_EQ(security.initializeCalls().at(0).clientName, QStringLiteral("WS1:DISettings"));
    EXPECT_EQ(security.queries().size(), 4);
}
