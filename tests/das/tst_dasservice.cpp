// The service against a real store, on each backend: what one step does with a value write or
// a command record, what it does when the record cannot be carried out, and what becomes of a
// claim whose service died.
#include "dastestsite.h"
#include "host/testsite.h"

#include "common/command.h"
#include "common/error.h"
#include "das/dasrunner.h"
#include "das/dasservice.h"
#include "host/commandqueue.h"
#include "host/storeerrors.h"

#include <gmock/gmock.h>

#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <stdexcept>

using namespace olvex;
using namespace olvex::test;
using namespace std::chrono_literals;
using testing::HasSubstr;

namespace {

class DasServiceTest : public testing::TestWithParam<Backend>
{
protected:
    void SetUp() override
    {
        m_place = std::make_unique<SitePlace>(GetParam());
        if (!m_place->available()) {
            GTEST_SKIP() << "OLVEX_TEST_PG names no PostgreSQL database";
        }
        m_store = createServiceSite(m_place->connectionText(), 4, &m_pids);
    }
    void TearDown() override
    {
        m_store.reset();
        m_place.reset();
    }

    DasOptions options(std::chrono::milliseconds lease = 30s)
    {
        DasOptions options;
        options.workerId = QStringLiteral("test-service");
        options.lease = lease;
        options.logSink = [this](int severity, const QString &line) {
            m_echoed.append(QString::number(severity) + u' ' + line);
        };
        return options;
    }

    qint64 post(const QString &text, const QString &source = QStringLiteral("CSET-0023"))
    {
        return CommandQueue(*m_store).postCommand(m_store->siteId(), RecordType::Calibration, text,
                                                  source, kOperator);
    }

    CommandRecord command(qint64 id)
    {
        for (const CommandRecord &record : CommandQueue(*m_store).commands()) {
            if (record.id == id) {
                return record;
            }
        }
        ADD_FAILURE() << "no command record " << id;
        return {};
    }

    PendingWrite pendingWrite(qint64 id)
    {
        for (const PendingWrite &write : CommandQueue(*m_store).pendingWrites()) {
            if (write.id == id) {
                return write;
            }
        }
        ADD_FAILURE() << "no pending write " << id;
        return {};
    }

    qint64 auditRows(qint32 pid)
    {
        return scalar(*m_store, u"SELECT count(*) FROM audit_trail WHERE attribute IS NULL"
                                u" AND pid = "
                                    + QString::number(pid));
    }

    // Lines of the site's message log about one item, with their severity.
    QStringList logLinesAbout(const QString &item)
    {
        QSqlQuery query = m_store->sql().prepare(
            QStringLiteral("SELECT severity, text FROM message_log ORDER BY id"));
        m_store->sql().exec(query);
        QStringList lines;
        while (query.next()) {
            const QString text = query.value(1).toString();
            if (text.contains(item + u' ')) {
                lines.append(query.value(0).toString() + u' ' + text);
            }
        }
        return lines;
    }

    // Steps until the item is finished; a claim held elsewhere may need its lease to run out.
    template<class Finished>
    void stepUntil(DasService &service, Finished finished)
    {
        for (int i = 0; i < 2000 && !finished(); ++i) {
            if (service.runOnce() == 0) {
                QThread::msleep(2);
            }
        }
        ASSERT_TRUE(finished());
    }

    std::unique_ptr<SitePlace> m_place;
    std::shared_ptr<SiteStore> m_store;
    QList<qint32> m_pids;
    QStringList m_echoed;
};

TEST_P(DasServiceTest, PendingWriteIsAppliedWithItsAuditRowAndNoLongerPending)
{
    const qint32 pid = m_pids.at(1);
    const qint64 id = m_store->queueValueWrite(pid, Value(42), kOperator);
    ASSERT_TRUE(m_store->liveState(pid).changePending) << "the setting shows \"Updating...\"";

    DasService service(m_store, options());
    EXPECT_EQ(service.runOnce(), 1);

    const LiveState live = m_store->liveState(pid);
    EXPECT_FALSE(live.changePending);
    EXPECT_EQ(live.current.Value, Value(42));
    EXPECT_EQ(auditRows(pid), 1);
    EXPECT_EQ(auditedValues(*m_store).value(QStringLiteral("42")), 1);
    EXPECT_EQ(m_store->liveState(m_pids.at(0)).current.Value, Value(0)) << "other settings";

    const PendingWrite write = pendingWrite(id);
    EXPECT_EQ(write.state, QueueItem::State::Done);
    EXPECT_EQ(write.result, QStringLiteral("applied"));
    EXPECT_EQ(write.claimedBy, service.workerId());
    EXPECT_EQ(write.attempts, 1);
    EXPECT_TRUE(write.doneAt.isValid());

    const QStringList lines = logLinesAbout(u"value write " + QString::number(id));
    ASSERT_EQ(lines.size(), 1);
    EXPECT_THAT(lines.constFirst().toStdString(), HasSubstr("1 DAS: value write"));
    EXPECT_THAT(lines.constFirst().toStdString(), HasSubstr("= 42 (by operator at WS-7) applied"));
    ASSERT_EQ(m_echoed.size(), 1);
    EXPECT_EQ(m_echoed.constFirst(), lines.constFirst());

    EXPECT_EQ(service.runOnce(), 0);
    EXPECT_EQ(service.outstanding(), 0);
    EXPECT_EQ(auditRows(pid), 1);
}

TEST_P(DasServiceTest, RecordsThatCannotBeCarriedOutAreFailedWithTheReason)
{
    struct Case
    {
        const char *name;
        QString text;
        std::string reason;
    };
    const QString huge = u"<Command action=\"RaiseMsg\" msg=\"" + QString(1 << 20, u'a') + u"\" />";
    const QList<Case> cases = {
        {"no handler yet",
         QStringLiteral("<Command action=\"ChangeCalStartSettings\" "
                        "pid=\"001234567\" />"),
         "no handler for action 'ChangeCalStartSettings'"},
        {"other element name",
         QStringLiteral("<WriteMsgToAutoCalLog action=\"WriteMsgToAutoCalLog\" "
                        "pid=\"001234567\" msg=\"x\" user=\"u\"  "
                        "clientIP=\"1\" />"),
         "no handler for action 'WriteMsgToAutoCalLog'"},
        {"lines joined by CR LF",
         QStringLiteral("<Command \r\naction=\"CalPendingPromptAction\" "
                        "\r\npid=\"001234567\">\r\n</Command>"),
         "no handler for action 'CalPendingPromptAction'"},
        {"not XML", QStringLiteral("WriteToChannel C12 1"),
         "malformed command record: the text is not well-formed XML"},
        {"unclosed element", QStringLiteral("<Command action=\"RaiseMsg\""),
         "malformed command record: the text is not well-formed XML"},
        {"two elements", QStringLiteral("<Command action=\"RaiseMsg\" /><Command action=\"X\" />"),
         "malformed command record: the text is not well-formed XML"},
        {"no action", QStringLiteral("<Command pid=\"001234567\" />"),
         "malformed command record: the element has no action"},
        {"blank action", QStringLiteral("<Command action=\"  \" />"),
         "malformed command record: the element has no action"},
        {"action as a child", QStringLiteral("<Command><action>RaiseMsg</action></Command>"),
         "malformed command record: the element has no action"},
        {"empty text", QString(), "malformed command record: the text is empty"},
        {"entity expansion",
         QStringLiteral("<!DOCTYPE d [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>"
                        "<Command action=\"&b;\" />"),
         "malformed command record: a DOCTYPE is not accepted"},
        {"external entity",
         QStringLiteral("<!DOCTYPE d [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>"
                        "<Command action=\"&x;\" />"),
         "malformed command record: a DOCTYPE is not accepted"},
        {"too long", huge, "more than a command may have"},
    };
    QList<qint64> ids;
    for (const Case &c : cases) {
        ids.append(post(c.text));
    }

    DasService service(m_store, options());
    for (int i = 0; i < cases.size(); ++i) {
        EXPECT_EQ(service.runOnce(), 1);
    }
    EXPECT_EQ(service.runOnce(), 0);

    for (int i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(cases.at(i).name);
        const CommandRecord record = command(ids.at(i));
        EXPECT_EQ(record.state, QueueItem::State::Failed);
        EXPECT_THAT(record.result.toStdString(), HasSubstr(cases.at(i).reason));
        EXPECT_TRUE(record.doneAt.isValid());
        const QStringList lines = logLinesAbout(u"command record " + QString::number(ids.at(i)));
        ASSERT_EQ(lines.size(), 1);
        EXPECT_TRUE(lines.constFirst().startsWith(u"4 DAS: command record "))
            << lines.constFirst().toStdString();
        EXPECT_THAT(lines.constFirst().toStdString(),
                    HasSubstr("(Q1DRCOMMAND-CAL, CSET-0023) (by operator at WS-7) failed: "
                              + record.result.toStdString()));
    }
}

TEST_P(DasServiceTest, HandlerChangesCommitWithTheResultOrNotAtAll)
{
    const qint32 pid = m_pids.at(2);
    struct Case
    {
        const char *name;
        std::function<CommandOutcome()> finish; // after the handler changed the value
        QueueItem::State state;
        std::string result;
        Value value;
    };
    const QList<Case> cases = {
        {"done", [] { return CommandOutcome::done(QStringLiteral("channel 12 set")); },
         QueueItem::State::Done, "channel 12 set", Value(7)},
        {"host error",
         []() -> CommandOutcome {
             throw Error(StoreError::UnknownPid, QStringLiteral("no such PID"));
         },
         QueueItem::State::Failed, "action 'SetSeven' failed: Error 3010, no such PID", Value(0)},
        {"other exception", []() -> CommandOutcome { throw std::runtime_error("bad cast"); },
         QueueItem::State::Failed, "action 'SetSeven' failed: Error ", Value(0)},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        m_store->setCurrentValue(pid, Value(0), 0, kOperator, QStringLiteral("reset"));
        const qint64 auditBefore = auditRows(pid);
        DasService service(m_store, options());
        QStringList seen;
        service.handlers().add(QStringLiteral("SetSeven"), [&](CommandContext &context) {
            seen << context.action << context.command.name()
                 << context.command.attribute(QStringLiteral("pid")) << context.record.recordType
                 << context.record.sourceCode;
            EXPECT_TRUE(context.keepClaim());
            context.store.setCurrentValue(pid, Value(7), 0, kOperator, QStringLiteral("handler"));
            return c.finish();
        });
        const qint64 id = post(u"<Command action=\"SetSeven\" pid=\"" + QString::number(pid)
                                   + u"\" user=\"operator\" />",
                               QStringLiteral("CSET-0031"));
        EXPECT_EQ(service.runOnce(), 1);

        EXPECT_EQ(seen, (QStringList{QStringLiteral("SetSeven"), QStringLiteral("Command"),
                                     QString::number(pid), RecordType::Calibration,
                                     QStringLiteral("CSET-0031")}));
        const CommandRecord record = command(id);
        EXPECT_EQ(record.state, c.state);
        EXPECT_THAT(record.result.toStdString(), HasSubstr(c.result));
        EXPECT_EQ(m_store->liveState(pid).current.Value, c.value);
        EXPECT_EQ(auditRows(pid) - auditBefore, c.state == QueueItem::State::Done ? 1 : 0);
        EXPECT_EQ(service.runOnce(), 0);
    }
}

TEST_P(DasServiceTest, StoreFailureIsTriedAgainThenFailsTheRecord)
{
    // Short lease: on PostgreSQL the failed attempt keeps its claim until the lease runs out.
    DasService service(m_store, options(20ms));
    int calls = 0;
    service.handlers().add(QStringLiteral("Flaky"), [&](CommandContext &) -> CommandOutcome {
        ++calls;
        throw Error(StoreError::SqlFailed, QStringLiteral("disk I/O error"));
    });
    const qint64 id = post(QStringLiteral("<Command action=\"Flaky\" />"));

    stepUntil(service, [&] { return command(id).state == QueueItem::State::Failed; });

    EXPECT_EQ(calls, 3);
    EXPECT_THAT(command(id).result.toStdString(),
                HasSubstr("the store failed 3 times: action 'Flaky' failed: Error 3005, disk I/O"));
    const QStringList lines = logLinesAbout(u"command record " + QString::number(id));
    ASSERT_EQ(lines.size(), 3);
    EXPECT_THAT(lines.at(0).toStdString(), HasSubstr("could not be carried out (attempt 1 of 3)"));
    EXPECT_THAT(lines.at(1).toStdString(), HasSubstr("could not be carried out (attempt 2 of 3)"));
    EXPECT_THAT(lines.at(2).toStdString(), HasSubstr("failed: the store failed 3 times"));
}

// A service claimed an item and died (its claim is left behind with a lease).
TEST_P(DasServiceTest, ClaimOfADeadServiceIsTakenOnlyAfterItsLeaseAndCarriedOutOnce)
{
    struct Case
    {
        const char *name;
        std::chrono::milliseconds deadLease;
        bool taken;
    };
    const QList<Case> cases = {{"lease still running", 60s, false}, {"lease ran out", 1ms, true}};
    int value = 100;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const qint32 pid = m_pids.at(3);
        const qint64 auditBefore = auditRows(pid);
        const qint64 writeId = m_store->queueValueWrite(pid, Value(++value), kOperator);
        const qint64 commandId = post(QStringLiteral("<Command action=\"Count\" />"));
        CommandQueue dead(*m_store);
        const auto write = dead.claimPendingWrite(QStringLiteral("dead-worker"), c.deadLease);
        const auto record = dead.claimCommand(QStringLiteral("dead-worker"), c.deadLease);
        ASSERT_TRUE(write && record);
        ASSERT_EQ(write->id, writeId);
        ASSERT_EQ(record->id, commandId);
        QThread::msleep(5);

        DasService service(m_store, options());
        int calls = 0;
        service.handlers().add(QStringLiteral("Count"), [&](CommandContext &) {
            ++calls;
            return CommandOutcome::done();
        });
        const int first = service.runOnce();
        const int second = service.runOnce();
        EXPECT_EQ(service.runOnce(), 0);
        if (!c.taken) {
            EXPECT_EQ(first, 0);
            EXPECT_EQ(second, 0);
            EXPECT_EQ(service.outstanding(), 2);
            EXPECT_EQ(calls, 0);
            EXPECT_TRUE(m_store->liveState(pid).changePending);
            // The owner of the claim finishes normally.
            EXPECT_TRUE(dead.applyPendingWrite(*write, QStringLiteral("dead-worker")));
            EXPECT_TRUE(dead.completeCommand(commandId, QStringLiteral("dead-worker"), true,
                                             QStringLiteral("done")));
            EXPECT_EQ(auditRows(pid) - auditBefore, 1);
            continue;
        }
        EXPECT_EQ(first + second, 2);
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(pendingWrite(writeId).state, QueueItem::State::Done);
        EXPECT_EQ(pendingWrite(writeId).claimedBy, service.workerId());
        EXPECT_EQ(pendingWrite(writeId).attempts, 2);
        EXPECT_EQ(command(commandId).state, QueueItem::State::Done);
        EXPECT_EQ(command(commandId).attempts, 2);
        // The dead service comes back to life too late: nothing it does counts any more.
        EXPECT_FALSE(dead.applyPendingWrite(*write, QStringLiteral("dead-worker")));
        EXPECT_FALSE(
            dead.failPendingWrite(writeId, QStringLiteral("dead-worker"), QStringLiteral("late")));
        EXPECT_FALSE(dead.completeCommand(commandId, QStringLiteral("dead-worker"), false,
                                          QStringLiteral("late")));
        EXPECT_EQ(command(commandId).result, QStringLiteral("done"));
        EXPECT_EQ(auditRows(pid) - auditBefore, 1);
        EXPECT_EQ(m_store->liveState(pid).current.Value, Value(value));
        EXPECT_FALSE(m_store->liveState(pid).changePending);
    }
}

TEST_P(DasServiceTest, WritesAndCommandsTakeTurns)
{
    QList<std::pair<qint32, Value>> writes;
    for (int i = 0; i < 3; ++i) {
        writes.append({m_pids.at(i), Value(i + 1)});
    }
    queueWrites(*m_store, writes);
    for (int i = 0; i < 3; ++i) {
        post(QStringLiteral("<Command action=\"Nothing\" />"));
    }
    DasService service(m_store, options());
    QString order;
    service.setResultObserver([&](const DasResult &result) {
        order += result.kind == DasResult::Kind::ValueWrite ? u'W' : u'C';
    });
    while (service.runOnce() == 1) {
    }
    EXPECT_EQ(order, QStringLiteral("WCWCWC"));

    // A command that arrives in the middle of a long run of writes does not wait for its end.
    QList<std::pair<qint32, Value>> burst;
    for (int i = 0; i < 60; ++i) {
        burst.append({m_pids.at(i % m_pids.size()), Value(100 + i)});
    }
    queueWrites(*m_store, burst);
    order.clear();
    for (int i = 0; i < 10; ++i) {
        ASSERT_EQ(service.runOnce(), 1);
    }
    post(QStringLiteral("<Command action=\"Late\" />"));
    while (service.runOnce() == 1) {
    }
    EXPECT_EQ(order.count(u'W'), 60);
    EXPECT_EQ(order.count(u'C'), 1);
    EXPECT_LT(order.indexOf(u'C'), 30) << order.toStdString();
}

TEST_P(DasServiceTest, RunnerDrainsTheQueueOnTheEventLoop)
{
    QList<std::pair<qint32, Value>> writes;
    for (int i = 0; i < 5; ++i) {
        writes.append({m_pids.at(i % m_pids.size()), Value(10 + i)});
    }
    queueWrites(*m_store, writes);
    post(QStringLiteral("<Command action=\"Unknown\" />"));

    DasRunner runner(m_store, 5ms, options());
    QSignalSpy finished(&runner, &DasRunner::itemFinished);
    QSignalSpy drained(&runner, &DasRunner::drained);
    runner.drain();
    EXPECT_TRUE(runner.isActive());
    ASSERT_TRUE(drained.wait(20000));
    EXPECT_FALSE(runner.isActive());
    EXPECT_EQ(finished.size(), 6);
    EXPECT_EQ(runner.service().outstanding(), 0);
    EXPECT_EQ(auditedValues(*m_store).size(), 5);
}

TEST_P(DasServiceTest, RunnerStoppedFromASlotFinishesOnlyTheItemInHand)
{
    queueWrites(*m_store, {{m_pids.at(0), Value(1)}, {m_pids.at(1), Value(2)}});
    DasRunner runner(m_store, 5ms, options());
    int finished = 0;
    QObject::connect(&runner, &DasRunner::itemFinished, &runner, [&] {
        ++finished;
        runner.stop();
    });
    runner.start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !runner.isActive(); }, 20000));
    QCoreApplication::processEvents();
    EXPECT_EQ(finished, 1);
    EXPECT_EQ(runner.service().outstanding(), 1);

    EXPECT_EQ(runner.runPending(), 1);
    EXPECT_EQ(runner.service().outstanding(), 0);
}

// The database server dropped the service's connection (a restart, an administrator): a service
// that owns its store opens the site again and carries on.
TEST_P(DasServiceTest, ServiceReopensTheSiteAfterItsConnectionWasDropped)
{
    if (GetParam() != Backend::Postgres) {
        GTEST_SKIP() << "an SQLite file has no connection to lose";
    }
    // Qt's driver complains about the dead connection on its own channel; that is expected here.
    static QtMessageHandler previous = nullptr;
    previous = qInstallMessageHandler(
        [](QtMsgType type, const QMessageLogContext &context, const QString &message) {
            for (const char *expected : {"database not open", "no connection to the server"}) {
                if (message.contains(QLatin1StringView(expected))) {
                    return;
                }
            }
            previous(type, context, message);
        });
    const auto restore = qScopeGuard([] { qInstallMessageHandler(previous); });

    DasOptions withReopen = options();
    withReopen.reopenStore = true;
    DasService service(SiteStore::open(m_place->connectionText()), withReopen);
    const qint64 backend
        = service.store().sql().scalar(QStringLiteral("SELECT pg_backend_pid()")).toLongLong();
    m_store->sql().execute(u"SELECT pg_terminate_backend(" + QString::number(backend) + u')');
    const qint64 id = m_store->queueValueWrite(m_pids.at(0), Value(5), kOperator);

    int failed = 0;
    int result = -1;
    for (int i = 0; i < 10 && result != 1; ++i) {
        result = service.runOnce();
        failed += result < 0 ? 1 : 0;
    }
    EXPECT_EQ(result, 1);
    EXPECT_GT(failed, 0);
    EXPECT_EQ(pendingWrite(id).state, QueueItem::State::Done);
    EXPECT_EQ(m_store->liveState(m_pids.at(0)).current.Value, Value(5));
    EXPECT_TRUE(m_echoed.filter(QStringLiteral("DAS: reopened the site")).size() == 1)
        << m_echoed.join(u'\n').toStdString();
}

INSTANTIATE_TEST_SUITE_P(Backends, DasServiceTest, OLVEX_TEST_BACKENDS, backendName);

} // namespace
