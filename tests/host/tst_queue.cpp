// The queues between the operator's programs and the service, on each backend: an item is held
// by one worker at a time, a dead worker's item comes back after its lease, and two processes
// writing at once lose nothing. (Two services draining one queue: tests/das.)
#include "testsite.h"

#include "host/commandqueue.h"
#include "host/sitebuilder.h"

#include <QProcess>
#include <QSet>
#include <QThread>

#include <chrono>

using namespace olvex;
using namespace olvex::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

constexpr qint32 kProbe = 101100001;
const Actor kOperator{u"operator"_s, u"WS-1"_s, u"10.0.0.1"_s};

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
        builder.addParameter(kProbe, u"Probe"_s, 4);
        builder.addParameter(kProbe + 1, u"Other"_s, 4);
        builder.setAttribute(kProbe, -14, Value(1));
        builder.flush();
        t.commit();
    }

    qint64 post(int n)
    {
        return CommandQueue(*m_store).postCommand(u"TEST"_s, u"Q1IOCOMMAND"_s,
                                                  u"<Command action=\"WriteToChannel\" id=\"C"_s
                                                      + QString::number(n)
                                                      + u"\" value=\"1\" priority=\"high\" />",
                                                  u"CSET-0031"_s, kOperator);
    }
};

TEST_P(QueueTest, ClaimTakesTheOldestAndOnlyTheClaimantCompletesIt)
{
    const qint64 first = post(1);
    const qint64 second = post(2);
    CommandQueue queue(*m_store);
    auto a = queue.claimCommand(u"A"_s, 60s);
    auto b = queue.claimCommand(u"B"_s, 60s);
    ASSERT_TRUE(a && b);
    EXPECT_EQ(a->id, first);
    EXPECT_EQ(b->id, second);
    EXPECT_TRUE(a->userName == u"operator"_s && a->state == QueueItem::State::Claimed
                && a->attempts == 1);
    EXPECT_FALSE(queue.claimCommand(u"C"_s, 60s)) << "nothing left to claim";

    EXPECT_FALSE(queue.completeCommand(a->id, u"B"_s, true, u"x"_s)) << "only the claimant";
    EXPECT_TRUE(queue.completeCommand(a->id, u"A"_s, true, u"done"_s));
    EXPECT_FALSE(queue.completeCommand(a->id, u"A"_s, false, u"again"_s))
        << "completing twice changes nothing";
    EXPECT_TRUE(queue.completeCommand(b->id, u"B"_s, false, u"no handler"_s));

    const QList<CommandRecord> done = queue.commands(QueueItem::State::Done);
    ASSERT_EQ(done.size(), 1);
    EXPECT_EQ(done[0].result, u"done"_s);
    EXPECT_TRUE(done[0].doneAt.isValid());
    const QList<CommandRecord> failed = queue.commands(QueueItem::State::Failed);
    ASSERT_EQ(failed.size(), 1);
    EXPECT_EQ(failed[0].id, second);

    // A claim whose lease ran out goes to the next worker; the late one's calls count for nothing.
    const qint64 third = post(3);
    ASSERT_TRUE(queue.claimCommand(u"dead"_s, 0ms));
    QThread::msleep(5);
    auto next = queue.claimCommand(u"alive"_s, 60s);
    ASSERT_TRUE(next);
    EXPECT_EQ(next->id, third);
    EXPECT_EQ(next->attempts, 2);
    EXPECT_FALSE(queue.completeCommand(third, u"dead"_s, true, QString()));
    EXPECT_FALSE(queue.renewCommandLease(third, u"dead"_s, 60s));
    EXPECT_TRUE(queue.renewCommandLease(third, u"alive"_s, 60s));
    EXPECT_TRUE(queue.completeCommand(third, u"alive"_s, true, QString()));
}

TEST_P(QueueTest, WritesOfOneSettingLandInTheOrderTheyWereMade)
{
    for (const int v : {1, 2, 3}) {
        m_store->queueValueWrite(kProbe, Value(v), kOperator);
    }
    m_store->queueValueWrite(kProbe + 1, Value(u"x"_s), kOperator);
    CommandQueue queue(*m_store);
    // A group takes one write per setting: while the probe's first write is in hand, its later
    // writes wait.
    const QList<PendingWrite> group = queue.claimPendingWrites(u"A"_s, 60s, 10);
    ASSERT_EQ(group.size(), 2);
    EXPECT_EQ(group[0].value, Value(1));
    EXPECT_EQ(group[1].pid, kProbe + 1);
    EXPECT_FALSE(queue.claimPendingWrite(u"B"_s, 60s));
    ASSERT_TRUE(queue.applyPendingWrite(group[0], u"A"_s));
    EXPECT_FALSE(queue.applyPendingWrite(group[0], u"A"_s)) << "applied once only";
    while (auto write = queue.claimPendingWrite(u"A"_s, 60s)) {
        ASSERT_TRUE(queue.applyPendingWrite(*write, u"A"_s));
    }
    EXPECT_EQ(m_store->liveState(kProbe).current.Value, Value(3));
    EXPECT_FALSE(m_store->liveState(kProbe).changePending);
    EXPECT_TRUE(m_store->liveState(kProbe + 1).changePending) << "claimed, not yet applied";
}

TEST_P(QueueTest, TwoProcessesWritingAtOnceLoseNothing)
{
    constexpr int kEach = 150;
    std::array<QProcess, 2> helpers;
    for (int i = 0; i < 2; ++i) {
        helpers[i].start(
            QStringLiteral(OLVEX_HOST_TEST_HELPER),
            {site(), QString::number(i + 1), QString::number(kEach), QString::number(kProbe)});
    }
    // This process writes too, in between.
    for (int i = 0; i < 50; ++i) {
        m_store->queueValueWrite(kProbe, Value(i), kOperator);
    }
    for (QProcess &helper : helpers) {
        ASSERT_TRUE(helper.waitForFinished(120000));
        EXPECT_EQ(helper.exitCode(), 0) << helper.readAllStandardError().toStdString();
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
    EXPECT_EQ(reopened->sql().scalar(u"SELECT count(*) FROM audit_trail"_s).toInt(), 2 * kEach);
}

INSTANTIATE_TEST_SUITE_P(Queue, QueueTest, OLVEX_TEST_BACKENDS, backendName);

} // namespace
