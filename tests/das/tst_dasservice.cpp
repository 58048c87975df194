// The service against a real store, on each backend: what one step does with a value write or
// a command record, what it does when the record cannot be carried out, what becomes of a claim
// whose service died; and the olvex-das program killed at random moments, two of them on one
// site at once, and a stop by signal.
#include "dastestsite.h"
#include "host/testsite.h"

#include "common/command.h"
#include "common/error.h"
#include "das/dasrunner.h"
#include "das/dasservice.h"
#include "host/commandqueue.h"
#include "host/storeerrors.h"

#include <gmock/gmock.h>

#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSqlQuery>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <array>
#include <csignal>
#include <stdexcept>

using namespace olvex;
using namespace olvex::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

class DasTest : public BackendTest
{
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        if (!IsSkipped()) {
            m_store = createServiceSite(site(), 300, m_pids);
        }
    }

    DasOptions options(std::chrono::milliseconds lease = 30s)
    {
        DasOptions options;
        options.workerId = u"test-service"_s;
        options.lease = lease;
        options.logSink = [this](int severity, const QString &line) {
            m_echoed.append(QString::number(severity) + u' ' + line);
        };
        return options;
    }

    qint64 post(const QString &text, const QString &source = u"CSET-0023"_s)
    {
        return CommandQueue(*m_store).postCommand(m_store->siteId(), RecordType::Calibration, text,
                                                  source, kOperator);
    }
    CommandRecord command(qint64 id) { return commandRecord(*m_store, id); }

    qint64 auditRows(qint32 pid)
    {
        return count(u"audit_trail WHERE attribute IS NULL AND pid = "_s + QString::number(pid));
    }
    // The message log as "severity text", oldest first; with an item ("value write 7"), only
    // the lines about it.
    QStringList messageLog(const QString &item = {})
    {
        const QStringList lines
            = rows(u"SELECT CAST(severity AS TEXT) || ' ' || text FROM message_log ORDER BY id"_s);
        return item.isEmpty() ? lines : lines.filter(item + u' ');
    }
    std::string onlyLogLine(const QString &item)
    {
        const QStringList lines = messageLog(item);
        EXPECT_EQ(lines.size(), 1) << lines.join(u'\n').toStdString();
        return lines.value(0).toStdString();
    }

    // count writes, spread over the settings, each with a value of its own; the last write to
    // each setting is what it must hold in the end.
    QList<qint64> queueManyWrites(int count)
    {
        QList<std::pair<qint32, Value>> writes;
        for (int i = 0; i < count; ++i, ++m_queued) {
            const qint32 pid = m_pids.at(m_queued % m_pids.size());
            writes.append({pid, Value(100000 + m_queued)});
            m_last[pid] = 100000 + m_queued;
        }
        return queueWrites(*m_store, writes);
    }

    // Every write done, each value audited exactly once, each setting at its last value.
    void expectEveryWriteAppliedOnce()
    {
        EXPECT_EQ(count(u"pending_writes WHERE state <> 'done'"_s), 0);
        EXPECT_EQ(rows(u"SELECT count(*) || ' ' || count(DISTINCT new_val) FROM audit_trail"
                       u" WHERE attribute IS NULL"_s),
                  QStringList{QString::number(m_queued) + u' ' + QString::number(m_queued)});
        for (auto it = m_last.cbegin(); it != m_last.cend(); ++it) {
            const LiveState live = m_store->liveState(it.key());
            EXPECT_EQ(live.current.Value, Value(it.value())) << "PID " << it.key();
            EXPECT_FALSE(live.changePending);
        }
    }

    // Runs steps until one finishes nothing; the number of items finished.
    static int drain(DasService &service)
    {
        int finished = 0;
        for (int n = service.runOnce(); n > 0; n = service.runOnce()) {
            finished += n;
        }
        return finished;
    }
    // Lets the service's groups grow to size (a power of sixteen) on filler writes.
    void growGroup(DasService &service, int size)
    {
        for (int group = 1; group < size; group *= 16) {
            queueManyWrites(group);
            ASSERT_EQ(service.runOnce(), group);
        }
        ASSERT_EQ(service.groupLimit(), size);
    }

    // Starts olvex-das on the site; its output goes nowhere unless read.
    void start(QProcess &das, const QStringList &more, bool readErr = false)
    {
        das.setStandardOutputFile(QProcess::nullDevice());
        if (!readErr) {
            das.setStandardErrorFile(QProcess::nullDevice());
        }
        das.start(dasProgram(), QStringList{u"--site"_s, site(), u"--interval"_s, u"20"_s} + more);
        ASSERT_TRUE(das.waitForStarted(10000));
    }

    QList<qint32> m_pids;
    QStringList m_echoed;
    QHash<qint32, int> m_last;
    int m_queued = 0;
};

TEST_P(DasTest, RecordsThatCannotBeCarriedOutAreFailedWithTheReason)
{
    const std::string malformed = "malformed command record: ";
    const std::string notXml = malformed + "the text is not well-formed XML";
    const std::string noAction = malformed + "the element has no action";
    const std::string doctype = malformed + "a DOCTYPE is not accepted";
    const std::tuple<QString, std::string> cases[] = {
        {u"<Command action=\"ChangeCalStopSettings\" pid=\"001234567\" />"_s,
         "no handler for action 'ChangeCalStopSettings'"},
        {u"<Command \r\naction=\"NoSuchAction\" \r\npid=\"001234567\">\r\n</Command>"_s,
         "no handler for action 'NoSuchAction'"},
        {u"WriteToChannel C12 1"_s, notXml},
        {u"<Command action=\"RaiseMsg\""_s, notXml},
        {u"<Command pid=\"001234567\" />"_s, noAction},
        {u"<Command><action>RaiseMsg</action></Command>"_s, noAction},
        {QString(), malformed + "the text is empty"},
        {u"<!DOCTYPE d [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>"
         u"<Command action=\"&b;\" />"_s,
         doctype},
        {u"<Command action=\"RaiseMsg\" msg=\""_s + QString(1 << 20, u'a') + u"\" />"_s,
         "more than a command may have"},
    };
    QList<qint64> ids;
    for (const auto &[text, reason] : cases) {
        ids.append(post(text));
    }
    DasService service(m_store, options());
    EXPECT_EQ(drain(service), ids.size());

    for (qsizetype i = 0; i < ids.size(); ++i) {
        const auto &[text, reason] = cases[i];
        SCOPED_TRACE(text.left(80).toStdString());
        const CommandRecord record = command(ids.at(i));
        EXPECT_EQ(record.state, QueueItem::State::Failed);
        EXPECT_THAT(record.result.toStdString(), HasSubstr(reason));
        EXPECT_THAT(onlyLogLine(u"command record "_s + QString::number(ids.at(i))),
                    AllOf(StartsWith("4 DAS: command record "),
                          HasSubstr("(Q1DRCOMMAND-CAL, CSET-0023) (by operator at WS-7) failed: "
                                    + record.result.toStdString())));
    }
}

// One group holds writes and commands; a handler's changes commit with its record's result, or
// go back alone when it fails, and the rest of the group commits all the same.
TEST_P(DasTest, ItemThatFailsInAGroupFailsAloneAndTheRestCommits)
{
    DasService service(m_store, options());
    growGroup(service, 16);
    const struct
    {
        const char *action;
        std::function<CommandOutcome()> finish; // after the handler changed its setting
        bool done;
        std::string result;
    } cases[] = {
        {"Done", [] { return CommandOutcome::done(u"channel 12 set"_s); }, true, "channel 12 set"},
        {"HostError",
         []() -> CommandOutcome { throw Error(StoreError::UnknownPid, u"no such PID"_s); }, false,
         "action 'HostError' failed: Error 3010, no such PID"},
        {"Other", []() -> CommandOutcome { throw std::runtime_error("bad cast"); }, false,
         "action 'Other' failed: Error "},
        // Its own verdict: what it changed stands.
        {"Refused", [] { return CommandOutcome::failed(u"no gas"_s); }, true, "no gas"},
    };
    QList<qint64> ids;
    QStringList seen;
    queueManyWrites(2);
    for (qsizetype i = 0; i < std::ssize(cases); ++i) {
        const qint32 pid = m_pids.at(20 + i);
        service.handlers().add(
            QString::fromLatin1(cases[i].action), [&, i, pid](CommandContext &c) {
                seen << c.action + u' ' + c.command.name() + u' ' + c.command.attribute(u"pid"_s)
                            + u' ' + c.record.recordType + u' ' + c.record.sourceCode;
                EXPECT_TRUE(c.keepClaim());
                c.store.setCurrentValue(pid, Value(7), 0, kOperator, u"handler"_s);
                return cases[i].finish();
            });
        ids.append(post(u"<Command action=\""_s + QString::fromLatin1(cases[i].action)
                            + u"\" pid=\""_s + QString::number(pid) + u"\" />"_s,
                        u"CSET-0031"_s));
    }
    queueManyWrites(2);
    const qint64 auditBefore = count(u"audit_trail"_s);
    EXPECT_EQ(service.runOnce(), 8);

    EXPECT_EQ(seen.first(), u"Done Command "_s + QString::number(m_pids.at(20)) + u' '
                                + RecordType::Calibration + u" CSET-0031");
    EXPECT_EQ(seen.size(), 4);
    for (qsizetype i = 0; i < std::ssize(cases); ++i) {
        SCOPED_TRACE(cases[i].action);
        const CommandRecord record = command(ids.at(i));
        const bool succeeded = i == 0;
        EXPECT_EQ(record.state, succeeded ? QueueItem::State::Done : QueueItem::State::Failed);
        EXPECT_THAT(record.result.toStdString(), HasSubstr(cases[i].result));
        EXPECT_EQ(m_store->liveState(m_pids.at(20 + i)).current.Value,
                  Value(cases[i].done ? 7 : 0));
    }
    EXPECT_EQ(count(u"audit_trail"_s) - auditBefore, 4 + 2);
    EXPECT_EQ(count(u"pending_writes WHERE state <> 'done'"_s), 0);
}

TEST_P(DasTest, StoreFailureIsTriedAgainThenFailsTheRecord)
{
    // Short lease: on PostgreSQL the failed attempt keeps its claim until the lease runs out.
    DasService service(m_store, options(20ms));
    int calls = 0;
    service.handlers().add(u"Flaky"_s, [&](CommandContext &) -> CommandOutcome {
        ++calls;
        throw Error(StoreError::SqlFailed, u"disk I/O error"_s);
    });
    const qint64 id = post(u"<Command action=\"Flaky\" />"_s);
    for (int i = 0; i < 2000 && command(id).state != QueueItem::State::Failed; ++i) {
        if (service.runOnce() == 0) {
            QThread::msleep(2);
        }
    }
    EXPECT_EQ(calls, 3);
    EXPECT_THAT(command(id).result.toStdString(),
                HasSubstr("the store failed 3 times: action 'Flaky' failed: Error 3005, disk I/O"));
    EXPECT_THAT(messageLog(u"command record "_s + QString::number(id)).join(u'|').toStdString(),
                testing::MatchesRegex(".*could not be carried out \\(attempt 1 of 3\\)[^|]*\\|"
                                      ".*could not be carried out \\(attempt 2 of 3\\)[^|]*\\|"
                                      ".*failed: the store failed 3 times[^|]*"));
}

// A service claimed two items and died: they are taken again only once the lease ran out, and
// nothing the dead service does afterwards counts.
TEST_P(DasTest, ClaimOfADeadServiceIsTakenOnlyAfterItsLeaseAndCarriedOutOnce)
{
    const qint32 pid = m_pids.at(3);
    const qint64 auditBefore = auditRows(pid);
    const qint64 writeId = m_store->queueValueWrite(pid, Value(101), kOperator);
    const qint64 commandId = post(u"<Command action=\"Count\" />"_s);
    CommandQueue dead(*m_store);
    const auto write = dead.claimPendingWrite(u"dead"_s, 500ms);
    ASSERT_TRUE(write && dead.claimCommand(u"dead"_s, 500ms));
    DasService service(m_store, options());
    int calls = 0;
    service.handlers().add(u"Count"_s, [&](CommandContext &) {
        ++calls;
        return CommandOutcome::done();
    });
    EXPECT_EQ(service.runOnce(), 0) << "the lease still runs";
    QThread::msleep(600);
    EXPECT_EQ(drain(service), 2);
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(dead.applyPendingWrite(*write, u"dead"_s));
    EXPECT_FALSE(dead.failPendingWrite(writeId, u"dead"_s, u"late"_s));
    EXPECT_FALSE(dead.completeCommand(commandId, u"dead"_s, false, u"late"_s));
    EXPECT_EQ(command(commandId).result, u"done"_s);
    EXPECT_EQ(auditRows(pid) - auditBefore, 1);
    EXPECT_EQ(m_store->liveState(pid).current.Value, Value(101));
    EXPECT_FALSE(m_store->liveState(pid).changePending);
}

TEST_P(DasTest, GroupsGrowWhileTheQueueIsLongAndCommandsDoNotWaitForItsEnd)
{
    const QList<qint64> writes = queueManyWrites(1000);
    DasService service(m_store, options());
    QString order;
    service.setResultObserver([&](const DasResult &result) {
        order += result.kind == DasResult::Kind::ValueWrite ? u'W' : u'C';
    });
    // 1 + 16 + 256 items, with one that arrives in the middle of the long run; a group holds
    // one write per setting at most.
    for (const int size : {1, 16}) {
        EXPECT_EQ(service.runOnce(), size);
    }
    post(u"<Command action=\"Late\" />"_s);
    EXPECT_EQ(service.runOnce(), 256);
    const int next = service.runOnce();
    EXPECT_GT(next, 256);
    EXPECT_LE(next, int(m_pids.size()) + 1);
    EXPECT_EQ(order.count(u'C'), 1);
    EXPECT_EQ(drain(service), 1000 + 1 - 17 - 256 - next);
    EXPECT_EQ(service.groupLimit(), 1) << "back to single items once the queue is empty";
    expectEveryWriteAppliedOnce();

    // Each result is logged at its severity, and echoed as logged.
    EXPECT_THAT(onlyLogLine(u"value write "_s + QString::number(writes.first())),
                AllOf(StartsWith("1 DAS: value write"),
                      HasSubstr("= 100000 (by operator at WS-7) applied")));
    EXPECT_EQ(m_echoed, messageLog());
}

// Draining the queue on the event loop is what olvex-das --drain does (below).
TEST_P(DasTest, RunnerStoppedFromASlotFinishesOnlyTheItemInHand)
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
// that owns its store opens the site again and carries on. An SQLite file has no connection to
// lose, so only the PostgreSQL program has the case.
#ifdef OLVEX_TEST_POSTGRES
TEST_P(DasTest, ServiceReopensTheSiteAfterItsConnectionWasDropped)
{
    // Qt's driver complains about the dead connection on its own channel; that is expected here.
    static QtMessageHandler previous = nullptr;
    previous = qInstallMessageHandler(
        [](QtMsgType type, const QMessageLogContext &context, const QString &message) {
            if (!message.contains(u"database not open"_s)
                && !message.contains(u"no connection to the server"_s)) {
                previous(type, context, message);
            }
        });
    const auto restore = qScopeGuard([] { qInstallMessageHandler(previous); });

    DasOptions withReopen = options();
    withReopen.reopenStore = true;
    DasService service(SiteStore::open(site()), withReopen);
    const qint64 backend = service.store().sql().scalar(u"SELECT pg_backend_pid()"_s).toLongLong();
    m_store->sql().execute(u"SELECT pg_terminate_backend("_s + QString::number(backend) + u')');
    const qint64 id = m_store->queueValueWrite(m_pids.at(0), Value(5), kOperator);

    int failed = 0;
    int result = -1;
    for (int i = 0; i < 10 && result != 1; ++i) {
        result = service.runOnce();
        failed += result < 0 ? 1 : 0;
    }
    EXPECT_EQ(result, 1);
    EXPECT_GT(failed, 0);
    EXPECT_EQ(count(u"pending_writes WHERE state = 'done' AND id = "_s + QString::number(id)), 1);
    EXPECT_EQ(m_store->liveState(m_pids.at(0)).current.Value, Value(5));
    EXPECT_EQ(m_echoed.filter(u"DAS: reopened the site"_s).size(), 1)
        << m_echoed.join(u'\n').toStdString();
}
#endif

TEST_P(DasTest, KilledAtRandomMomentsEveryWriteIsAppliedExactlyOnce)
{
    // Enough for several groups, so that kills fall inside them (a PostgreSQL service starts
    // slower, and its killed claims wait for their lease).
    queueManyWrites(isSqlite() ? 2000 : 500);
    const quint32 seed = QRandomGenerator::global()->generate();
    SCOPED_TRACE(testing::Message() << "random seed " << seed);
    QRandomGenerator random(seed);
    int kills = 0;
    bool drained = false;
    for (int run = 0; run < 400 && !drained; ++run) {
        QProcess das;
        // A short lease, so that a killed service's claim (PostgreSQL) is taken again soon.
        start(das, {u"--drain"_s, u"--lease"_s, u"300"_s});
        // The window widens run by run, so that a machine too busy to finish within the first
        // ones still drains in the end.
        drained = das.waitForFinished(int(random.bounded(10, 200 + 20 * run)));
        if (drained) {
            ASSERT_TRUE(das.exitStatus() == QProcess::NormalExit && das.exitCode() == 0);
        } else {
            das.kill(); // SIGKILL: no chance to finish anything
            das.waitForFinished(10000);
            ++kills;
        }
    }
    ASSERT_TRUE(drained) << "after " << kills << " kills";
    expectEveryWriteAppliedOnce();
}

TEST_P(DasTest, TwoProgramsOnOneSiteNeverCarryOutTheSameItemTwice)
{
    constexpr int kCommands = 100;
    queueManyWrites(300);
    for (int i = 0; i < kCommands; ++i) {
        post(u"<Command action=\"RaiseMsg\" msgTypeID=\"0x6001\" msg=\""_s + QString::number(i)
                 + u"\" />"_s,
             u"CSET-0096"_s);
    }
    std::array<QProcess, 2> services;
    for (QProcess &das : services) {
        start(das, {u"--drain"_s});
    }
    for (QProcess &das : services) {
        ASSERT_TRUE(das.waitForFinished(60000));
        EXPECT_TRUE(das.exitStatus() == QProcess::NormalExit && das.exitCode() == 0);
    }

    expectEveryWriteAppliedOnce();
    // One result line per item in the message log, whichever service wrote it.
    QStringList items;
    static const QRegularExpression item(u"^\\d+ DAS: (command record|value write) (\\d+) "_s);
    for (const QString &line : messageLog()) {
        if (const auto match = item.match(line); match.hasMatch()) {
            items.append(match.captured(1) + match.captured(2));
        }
    }
    EXPECT_EQ(items.size(), m_queued + kCommands);
    EXPECT_EQ(QSet<QString>(items.cbegin(), items.cend()).size(), items.size());
    EXPECT_EQ(count(u"command_records WHERE state = 'done' AND attempts = 1"_s), kCommands);
    // Each message raised once.
    EXPECT_EQ(count(u"system_messages"_s), kCommands);
}

TEST_P(DasTest, StopSignalFinishesTheItemInHandAndExitsCleanly)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        SCOPED_TRACE(signal == SIGTERM ? "SIGTERM" : "SIGINT");
        const QList<qint64> ids = queueManyWrites(300);
        QProcess das;
        das.setReadChannel(QProcess::StandardError);
        start(das, {}, true);
        // Stop it once it is at work.
        QString err;
        while (!err.contains(u" applied") && das.state() == QProcess::Running) {
            das.waitForReadyRead(10000);
            err += QString::fromUtf8(das.readAllStandardError());
        }
        ASSERT_EQ(::kill(pid_t(das.processId()), signal), 0);
        ASSERT_TRUE(das.waitForFinished(30000));
        err += QString::fromUtf8(das.readAllStandardError());
        EXPECT_TRUE(das.exitStatus() == QProcess::NormalExit && das.exitCode() == 0)
            << err.toStdString();
        EXPECT_THAT(err.toStdString(), testing::HasSubstr("stopped"));

        // Nothing left half done: each write is finished, or still queued.
        EXPECT_EQ(count(u"pending_writes WHERE state IN ('claimed', 'failed')"_s), 0);
        const qint64 done
            = count(u"pending_writes WHERE state = 'done' AND id >= "_s + QString::number(ids[0]));
        EXPECT_GT(done, 0);
        EXPECT_EQ(err.count(u" applied"_s), done);

        // Whatever is left is there to be carried out.
        DasService service(m_store, options());
        drain(service);
    }
    expectEveryWriteAppliedOnce();
}

INSTANTIATE_TEST_SUITE_P(Backends, DasTest, OLVEX_TEST_BACKENDS, backendName);

} // namespace
