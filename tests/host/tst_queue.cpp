// The queues between the operator's programs and the service, on each backend: every item is
// carried out by exactly one worker, a dead worker's item comes back after its lease, and two
// processes writing at once lose nothing.
#include "testsite.h"

#include "common/pid.h"
#include "host/commandqueue.h"
#include "host/demosite.h"
#include "host/sitebuilder.h"

#include <QProcess>
#include <QSet>
#include <QSqlQuery>
#include <QThread>

#include <chrono>

using namespace olvex;
using namespace olvex::test;
using namespace std::chrono_literals;

namespace {

constexpr qint32 kProbe = 101100001;
const Actor kOperator{QStringLiteral("operator"), QStringLiteral("WS-1"),
                      QStringLiteral("10.0.0.1")};

class QueueTest : public BackendTest
{
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        emptySite();
        SiteBuilder builder(*m_store);
        Transaction t(m_store->sql(), SqlConnection::TransactionKind::Write);
        builder.addParameter(kProbe, QStringLiteral("Probe"), 4);
        builder.addParameter(kProbe + 1, QStringLiteral("Other"), 4);
        builder.setAttribute(kProbe, -14, Value(1));
        builder.flush();
        t.commit();
    }

    qint64 post(int n)
    {
        return CommandQueue(*m_store).postCommand(
            QStringLiteral("TEST"), QStringLiteral("Q1IOCOMMAND"),
            u"<Command action=\"WriteToChannel\" id=\"C" + QString::number(n)
                + u"\" value=\"1\" priority=\"high\" />",
            QStringLiteral("CSET-0031"), kOperator);
    }

    static QList<QProcess *> startHelpers(const QList<QStringList> &argumentLists, QObject *parent)
    {
        QList<QProcess *> processes;
        for (const QStringList &arguments : argumentLists) {
            auto *process = new QProcess(parent);
            process->start(QStringLiteral(OLVEX_HOST_TEST_HELPER), arguments);
            processes.append(process);
        }
        return processes;
    }
};

TEST_P(QueueTest, ClaimTakesTheOldestAndCompletingNeedsTheClaim)
{
    const qint64 first = post(1);
    const qint64 second = post(2);
    CommandQueue queue(*m_store);
    auto a = queue.claimCommand(QStringLiteral("A"), 60s);
    auto b = queue.claimCommand(QStringLiteral("B"), 60s);
    ASSERT_TRUE(a && b);
    EXPECT_EQ(a->id, first);
    EXPECT_EQ(b->id, second);
    EXPECT_EQ(a->userName, QStringLiteral("operator"));
    EXPECT_EQ(a->state, QueueItem::State::Claimed);
    EXPECT_EQ(a->attempts, 1);
    EXPECT_FALSE(queue.claimCommand(QStringLiteral("C"), 60s)) << "nothing left to claim";

    EXPECT_FALSE(queue.completeCommand(a->id, QStringLiteral("B"), true, QStringLiteral("x")))
        << "only the claimant completes";
    EXPECT_TRUE(queue.completeCommand(a->id, QStringLiteral("A"), true, QStringLiteral("done")));
    EXPECT_FALSE(queue.completeCommand(a->id, QStringLiteral("A"), false, QStringLiteral("again")))
        << "completing twice changes nothing";
    EXPECT_TRUE(queue.completeCommand(b->id, QStringLiteral("B"), false,
                                      QStringLiteral("no handler for action WriteToChannel")));

    const QList<CommandRecord> done = queue.commands(QueueItem::State::Done);
    ASSERT_EQ(done.size(), 1);
    EXPECT_EQ(done[0].result, QStringLiteral("done"));
    EXPECT_TRUE(done[0].doneAt.isValid());
    const QList<CommandRecord> failed = queue.commands(QueueItem::State::Failed);
    ASSERT_EQ(failed.size(), 1);
    EXPECT_EQ(failed[0].id, second);
}

TEST_P(QueueTest, AnExpiredLeaseIsClaimedAgain)
{
    const qint64 id = post(1);
    CommandQueue queue(*m_store);
    auto dead = queue.claimCommand(QStringLiteral("dead"), 0ms);
    ASSERT_TRUE(dead);
    QThread::msleep(5); // let the lease run out
    auto next = queue.claimCommand(QStringLiteral("alive"), 60s);
    ASSERT_TRUE(next);
    EXPECT_EQ(next->id, id);
    EXPECT_EQ(next->attempts, 2);
    EXPECT_FALSE(queue.completeCommand(id, QStringLiteral("dead"), true, QString()));
    EXPECT_FALSE(queue.renewCommandLease(id, QStringLiteral("dead"), 60s));
    EXPECT_TRUE(queue.renewCommandLease(id, QStringLiteral("alive"), 60s));
    EXPECT_TRUE(queue.completeCommand(id, QStringLiteral("alive"), true, QString()));
}

TEST_P(QueueTest, WritesOfOneSettingLandInTheOrderTheyWereMade)
{
    for (const int v : {1, 2, 3}) {
        m_store->queueValueWrite(kProbe, Value(v), kOperator);
    }
    m_store->queueValueWrite(kProbe + 1, Value(QStringLiteral("x")), kOperator);
    CommandQueue queue(*m_store);
    auto first = queue.claimPendingWrite(QStringLiteral("A"), 60s);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->value, Value(1));
    // While the first write of the probe is in hand, its later writes wait.
    auto other = queue.claimPendingWrite(QStringLiteral("B"), 60s);
    ASSERT_TRUE(other);
    EXPECT_EQ(other->pid, kProbe + 1);
    EXPECT_FALSE(queue.claimPendingWrite(QStringLiteral("B"), 60s));

    ASSERT_TRUE(queue.applyPendingWrite(*first, QStringLiteral("A")));
    EXPECT_FALSE(queue.applyPendingWrite(*first, QStringLiteral("A"))) << "applied once only";
    while (auto write = queue.claimPendingWrite(QStringLiteral("A"), 60s)) {
        ASSERT_TRUE(queue.applyPendingWrite(*write, QStringLiteral("A")));
    }
    EXPECT_EQ(m_store->liveState(kProbe).current.Value, Value(3));
    EXPECT_FALSE(m_store->liveState(kProbe).changePending);
    EXPECT_TRUE(m_store->liveState(kProbe + 1).changePending) << "claimed, not yet applied";
}

TEST_P(QueueTest, TwoProcessesWritingAtOnceLoseNothing)
{
    constexpr int kEach = 150;
    QObject owner;
    const QList<QProcess *> helpers
        = startHelpers({{QStringLiteral("post"), site(), QStringLiteral("1"),
                         QString::number(kEach), QString::number(kProbe)},
                        {QStringLiteral("post"), site(), QStringLiteral("2"),
                         QString::number(kEach), QString::number(kProbe)}},
                       &owner);
    // This process writes too, in between.
    for (int i = 0; i < 50; ++i) {
        m_store->queueValueWrite(kProbe, Value(i), kOperator);
    }
    for (QProcess *helper : helpers) {
        ASSERT_TRUE(helper->waitForFinished(120000));
        EXPECT_EQ(helper->exitCode(), 0) << helper->readAllStandardError().toStdString();
    }
    CommandQueue queue(*m_store);
    const QList<CommandRecord> records = queue.commands();
    ASSERT_EQ(records.size(), 2 * kEach);
    QSet<QString> texts;
    for (const CommandRecord &record : records) {
        texts.insert(record.text);
    }
    EXPECT_EQ(texts.size(), 2 * kEach) << "every post is there once";
    EXPECT_EQ(queue.pendingWrites().size(), 50);
    auto reopened = SiteStore::open(site());
    const auto probe = reopened->parameter(kProbe);
    ASSERT_TRUE(probe);
    EXPECT_EQ(*probe->attribute(-1001), Value(kEach - 1));
    EXPECT_EQ(*probe->attribute(-1002), Value(kEach - 1));
    EXPECT_EQ(reopened->sql().scalar(QStringLiteral("SELECT count(*) FROM audit_trail")).toInt(),
              2 * kEach);
}

TEST_P(QueueTest, TwoServicesNeverCarryOutTheSameRecord)
{
    constexpr int kRecords = 300;
    {
        Transaction t(m_store->sql(), SqlConnection::TransactionKind::Write);
        for (int i = 0; i < kRecords; ++i) {
            post(i);
        }
        t.commit();
    }
    QObject owner;
    const QList<QProcess *> services
        = startHelpers({{QStringLiteral("claim"), site(), QStringLiteral("das-1")},
                        {QStringLiteral("claim"), site(), QStringLiteral("das-2")}},
                       &owner);
    QList<qint64> claimed;
    for (QProcess *service : services) {
        ASSERT_TRUE(service->waitForFinished(120000));
        EXPECT_EQ(service->exitCode(), 0) << service->readAllStandardError().toStdString();
        for (const QByteArray &line : service->readAllStandardOutput().split('\n')) {
            if (!line.isEmpty()) {
                claimed.append(line.toLongLong());
            }
        }
    }
    EXPECT_EQ(claimed.size(), kRecords);
    EXPECT_EQ(QSet<qint64>(claimed.begin(), claimed.end()).size(), kRecords);
    EXPECT_EQ(CommandQueue(*m_store).commands(QueueItem::State::Done).size(), kRecords);
}

INSTANTIATE_TEST_SUITE_P(Queue, QueueTest, OLVEX_TEST_BACKENDS, backendName);

} // namespace
