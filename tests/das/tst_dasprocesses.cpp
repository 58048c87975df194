// The service as it runs for real, on each backend: the olvex-das program killed at random
// moments, two services on one site at once, and a stop by signal.
#include "dastestsite.h"
#include "host/testsite.h"

#include "common/command.h"
#include "das/dasservice.h"
#include "host/commandqueue.h"

#include <gmock/gmock.h>

#include <QMutex>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QThread>

#include <array>
#include <csignal>
#include <thread>

using namespace olvex;
using namespace olvex::test;
using namespace std::chrono_literals;

namespace {

class DasProcessTest : public testing::TestWithParam<Backend>
{
protected:
    void SetUp() override
    {
        m_place = std::make_unique<SitePlace>(GetParam());
        if (!m_place->available()) {
            GTEST_SKIP() << "OLVEX_TEST_PG names no PostgreSQL database";
        }
        m_store = createServiceSite(m_place->connectionText(), 50, &m_pids);
    }
    void TearDown() override
    {
        m_store.reset();
        m_place.reset();
    }

    QString site() const { return m_place->connectionText(); }

    // count writes, spread over the settings, each with a value of its own; the last write to
    // each setting is what it must hold in the end.
    QList<qint64> queueManyWrites(int count)
    {
        QList<std::pair<qint32, Value>> writes;
        for (int i = 0; i < count; ++i) {
            const qint32 pid = m_pids.at(i % m_pids.size());
            writes.append({pid, Value(100000 + i)});
            m_last[pid] = 100000 + i;
        }
        return queueWrites(*m_store, writes);
    }

    // Every write done, each value audited exactly once, each setting at its last value.
    void expectEveryWriteAppliedOnce(int count)
    {
        CommandQueue queue(*m_store);
        const QList<PendingWrite> writes = queue.pendingWrites();
        ASSERT_EQ(writes.size(), count);
        for (const PendingWrite &write : writes) {
            ASSERT_EQ(write.state, QueueItem::State::Done) << "write " << write.id;
        }
        EXPECT_EQ(scalar(*m_store, QStringLiteral(
                                       "SELECT count(*) FROM audit_trail WHERE attribute IS NULL")),
                  count);
        const QHash<QString, int> audited = auditedValues(*m_store);
        EXPECT_EQ(audited.size(), count);
        for (int i = 0; i < count; ++i) {
            EXPECT_EQ(audited.value(QString::number(100000 + i)), 1) << "value " << 100000 + i;
        }
        for (auto it = m_last.cbegin(); it != m_last.cend(); ++it) {
            const LiveState live = m_store->liveState(it.key());
            EXPECT_EQ(live.current.Value, Value(it.value())) << "PID " << it.key();
            EXPECT_FALSE(live.changePending);
        }
    }

    QStringList dasArguments(const QStringList &more) const
    {
        return QStringList{QStringLiteral("--site"), site(), QStringLiteral("--interval"),
                           QStringLiteral("20")}
               + more;
    }

    std::unique_ptr<SitePlace> m_place;
    std::shared_ptr<SiteStore> m_store;
    QList<qint32> m_pids;
    QHash<qint32, int> m_last;
};

TEST_P(DasProcessTest, KilledAtRandomMomentsEveryWriteIsAppliedExactlyOnce)
{
    constexpr int kWrites = 500;
    queueManyWrites(kWrites);

    const quint32 seed = QRandomGenerator::global()->generate();
    SCOPED_TRACE(testing::Message() << "random seed " << seed);
    QRandomGenerator random(seed);
    int kills = 0;
    bool drained = false;
    for (int run = 0; run < 400 && !drained; ++run) {
        QProcess das;
        das.setStandardOutputFile(QProcess::nullDevice());
        das.setStandardErrorFile(QProcess::nullDevice());
        // A short lease, so that a killed service's claim (PostgreSQL) is taken again soon.
        das.start(dasProgram(), dasArguments({QStringLiteral("--drain"), QStringLiteral("--lease"),
                                              QStringLiteral("300")}));
        ASSERT_TRUE(das.waitForStarted(10000));
        if (das.waitForFinished(int(random.bounded(10, 200)))) {
            ASSERT_EQ(das.exitStatus(), QProcess::NormalExit);
            ASSERT_EQ(das.exitCode(), 0);
            drained = true;
            break;
        }
        das.kill(); // SIGKILL: no chance to finish anything
        das.waitForFinished(10000);
        ++kills;
    }
    ASSERT_TRUE(drained) << "after " << kills << " kills";
    RecordProperty("kills", kills);
    expectEveryWriteAppliedOnce(kWrites);
}

TEST_P(DasProcessTest, TwoProgramsOnOneSiteNeverCarryOutTheSameItemTwice)
{
    constexpr int kWrites = 300;
    constexpr int kCommands = 100;
    queueManyWrites(kWrites);
    CommandQueue queue(*m_store);
    for (int i = 0; i < kCommands; ++i) {
        queue.postCommand(m_store->siteId(), RecordType::Calibration,
                          u"<Command action=\"RaiseMsg\" msg=\"" + QString::number(i) + u"\" />",
                          QStringLiteral("CSET-0096"), kOperator);
    }

    std::array<QProcess, 2> services;
    for (QProcess &das : services) {
        das.setStandardOutputFile(QProcess::nullDevice());
        das.setStandardErrorFile(QProcess::nullDevice());
        das.start(dasProgram(), dasArguments({QStringLiteral("--drain")}));
    }
    for (QProcess &das : services) {
        ASSERT_TRUE(das.waitForFinished(60000));
        EXPECT_EQ(das.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(das.exitCode(), 0);
    }

    expectEveryWriteAppliedOnce(kWrites);
    for (const PendingWrite &write : queue.pendingWrites()) {
        EXPECT_EQ(write.attempts, 1) << "write " << write.id;
    }
    const QList<CommandRecord> records = queue.commands();
    ASSERT_EQ(records.size(), kCommands);
    // One result line per item in the message log, whichever service wrote it.
    QHash<QString, int> lines;
    static const QRegularExpression item(
        QStringLiteral("^DAS: (command record|value write) (\\d+) "));
    for (const QString &line : messageLog(*m_store)) {
        if (const auto match = item.match(line); match.hasMatch()) {
            ++lines[match.captured(1) + match.captured(2)];
        }
    }
    EXPECT_EQ(lines.size(), kWrites + kCommands);
    for (const CommandRecord &record : records) {
        EXPECT_EQ(record.state, QueueItem::State::Failed);
        EXPECT_EQ(record.result, QStringLiteral("no handler for action 'RaiseMsg'"));
        EXPECT_EQ(record.attempts, 1) << "record " << record.id;
        EXPECT_EQ(lines.value(u"command record" + QString::number(record.id)), 1);
    }
    for (auto it = lines.cbegin(); it != lines.cend(); ++it) {
        EXPECT_EQ(it.value(), 1) << it.key().toStdString();
    }
}

// Two services in two threads of one process, each with its own connection: every command's
// handler runs exactly once, even counting attempts that were rolled back.
TEST_P(DasProcessTest, TwoServicesInThreadsRunEachHandlerOnce)
{
    constexpr int kCommands = 150;
    constexpr int kWrites = 150;
    queueManyWrites(kWrites);
    CommandQueue queue(*m_store);
    for (int i = 0; i < kCommands; ++i) {
        queue.postCommand(m_store->siteId(), RecordType::Calibration,
                          QStringLiteral("<Command action=\"Count\" />"),
                          QStringLiteral("CSET-0023"), kOperator);
    }

    QMutex mutex;
    QHash<qint64, QStringList> calls;
    QStringList errors;
    const auto work = [&](const QString &worker) {
        try {
            DasOptions options;
            options.workerId = worker;
            DasService service(SiteStore::open(site()), options);
            service.handlers().add(QStringLiteral("Count"), [&](CommandContext &context) {
                const QMutexLocker lock(&mutex);
                calls[context.record.id].append(worker);
                return CommandOutcome::done(worker);
            });
            int failures = 0;
            while (failures < 20) {
                const int result = service.runOnce();
                if (result < 0) {
                    ++failures;
                } else if (result == 0 && service.outstanding() == 0) {
                    break;
                }
            }
            if (failures >= 20) {
                const QMutexLocker lock(&mutex);
                errors.append(service.lastError());
            }
        } catch (...) {
            const QMutexLocker lock(&mutex);
            errors.append(worker + QStringLiteral(": could not start"));
        }
    };
    std::thread first(work, QStringLiteral("worker-a"));
    std::thread second(work, QStringLiteral("worker-b"));
    first.join();
    second.join();

    EXPECT_TRUE(errors.isEmpty()) << errors.join(u'\n').toStdString();
    ASSERT_EQ(calls.size(), kCommands);
    for (const CommandRecord &record : queue.commands()) {
        ASSERT_EQ(calls.value(record.id).size(), 1) << "record " << record.id;
        EXPECT_EQ(record.state, QueueItem::State::Done);
        EXPECT_EQ(record.result, calls.value(record.id).constFirst()) << "who ran it completed it";
    }
    expectEveryWriteAppliedOnce(kWrites);
}

TEST_P(DasProcessTest, StopSignalFinishesTheItemInHandAndExitsCleanly)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        SCOPED_TRACE(signal == SIGTERM ? "SIGTERM" : "SIGINT");
        const QList<qint64> ids = queueManyWrites(300);
        QProcess das;
        das.setReadChannel(QProcess::StandardError);
        das.start(dasProgram(), dasArguments({}));
        ASSERT_TRUE(das.waitForStarted(10000));
        // Stop it once it is at work.
        QString err;
        while (!err.contains(u" applied") && das.state() == QProcess::Running) {
            das.waitForReadyRead(10000);
            err += QString::fromUtf8(das.readAllStandardError());
        }
        ASSERT_EQ(::kill(pid_t(das.processId()), signal), 0);
        ASSERT_TRUE(das.waitForFinished(30000));
        err += QString::fromUtf8(das.readAllStandardError());
        EXPECT_EQ(das.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(das.exitCode(), 0) << err.toStdString();
        EXPECT_THAT(err.toStdString(), testing::HasSubstr("stopped"));

        // Nothing left half done: each write is finished and audited, or still queued.
        int done = 0;
        for (const PendingWrite &write : CommandQueue(*m_store).pendingWrites()) {
            if (!ids.contains(write.id)) {
                continue;
            }
            EXPECT_NE(write.state, QueueItem::State::Claimed) << "write " << write.id;
            EXPECT_NE(write.state, QueueItem::State::Failed) << "write " << write.id;
            done += write.state == QueueItem::State::Done ? 1 : 0;
        }
        EXPECT_GT(done, 0);
        EXPECT_EQ(err.count(QStringLiteral(" applied")), done);

        // Whatever is left, a drain finishes.
        QProcess drain;
        drain.setStandardErrorFile(QProcess::nullDevice());
        drain.start(dasProgram(), dasArguments({QStringLiteral("--drain")}));
        ASSERT_TRUE(drain.waitForFinished(60000));
        EXPECT_EQ(drain.exitCode(), 0);
    }
    const qint64 all = scalar(*m_store, QStringLiteral("SELECT count(*) FROM pending_writes"));
    EXPECT_EQ(all, 600);
    EXPECT_EQ(scalar(*m_store,
                     QStringLiteral("SELECT count(*) FROM audit_trail WHERE attribute IS NULL")),
              all);
}

INSTANTIATE_TEST_SUITE_P(Backends, DasProcessTest, OLVEX_TEST_BACKENDS, backendName);

} // namespace
