#include "support/fake_clock.h"

#include <QDate>
#include <QTime>

#include <algorithm>

namespace olvex {

ManualInterval::ManualInterval(IntervalSpec spec, QDateTime firstDue, int sequence)
    : m_spec(std::move(spec))
    , m_due(std::move(firstDue))
    , m_sequence(sequence)
{}

void ManualInterval::Stop()
{
    m_stopped = true;
}

void ManualInterval::SetMessageLog(std::shared_ptr<MessageLog> log)
{
    m_log = std::move(log);
    ++m_setMessageLogCalls;
}

void ManualInterval::rearm()
{
    ++m_fireCount;
    if (!m_spec.repeat) {
        m_stopped = true;
        return;
    }
    // A period below one second would never let time move on; the real library has a
    // resolution of its own, a second is the honest stand-in.
    m_due = m_due.addSecs(std::max(m_spec.periodSeconds, 1));
}

ManualClock::ManualClock(const QDateTime &start)
    : m_now(start.isValid() ? start : QDateTime(QDate(2026, 3, 1), QTime(14, 5)))
{}

IntervalPtr ManualClock::CreateInterval(const IntervalSpec &spec)
{
    m_specs.append(spec);
    if (m_createFailure) {
        throw *m_createFailure;
    }
    const QDateTime due = spec.firstDue ? *spec.firstDue : m_now.addSecs(spec.periodSeconds);
    auto interval = std::make_shared<ManualInterval>(spec, due, m_sequence++);
    // Forget the intervals that are gone, so a long test does not keep a growing list.
    m_intervals.removeIf([](const std::weak_ptr<ManualInterval> &w) { return w.expired(); });
    m_intervals.append(interval);
    return interval;
}

std::shared_ptr<ManualInterval> ManualClock::nextDueUpTo(const QDateTime &limit) const
{
    std::shared_ptr<ManualInterval> best;
    for (const auto &weak : m_intervals) {
        auto interval = weak.lock();
        if (!interval || interval->m_stopped || interval->m_due > limit) {
            continue;
        }
        if (!best || interval->m_due < best->m_due
            || (interval->m_due == best->m_due && interval->m_sequence < best->m_sequence)) {
            best = interval;
        }
    }
    return best;
}

int ManualClock::advance(qint64 seconds)
{
    return advanceTo(m_now.addSecs(seconds));
}

int ManualClock::advanceTo(const QDateTime &time)
{
    int fired = 0;
    // Holding the interval while it fires keeps it alive even if the handler releases the
    // last other reference (a component tearing itself down from its own timer).
    while (auto interval = nextDueUpTo(time)) {
        if (interval->m_due > m_now) {
            m_now = interval->m_due;
        }
        interval->rearm();
        ++fired;
        Q_EMIT interval->IntervalExpired();
    }
    if (time > m_now) {
        m_now = time;
    }
    return fired;
}

QList<std::shared_ptr<ManualInterval>> ManualClock::liveIntervals() const
{
    QList<std::shared_ptr<ManualInterval>> result;
    for (const auto &weak : m_intervals) {
        if (auto interval = weak.lock(); interval && !interval->m_stopped) {
            result.append(interval);
        }
    }
    return result;
}

std::shared_ptr<ManualInterval> ManualClock::liveInterval(const QString &name) const
{
    for (const auto &interval : liveIntervals()) {
        if (interval->Name() == name) {
            return interval;
        }
    }
    return nullptr;
}

} // namespace olvex
