// The manual clock carries every timer test, so its own behaviour is checked here: a clock that
// fired out of order or missed a stop would make those tests lie.
#include "support/fake_clock.h"

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
