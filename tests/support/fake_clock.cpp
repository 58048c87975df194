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

void ManualInterval::SetMessageLog(std::shared_ptr<MessageLog> log)
{
    m_log = std::move(log);
    ++m_setMessageLogCalls;
}

ManualClock::ManualClock(const QDateTime &start)
    : m_now(start.isValid() ? start : QDateTime(QDate(2026, 3, 1), QTime(14, 5)))
{}

IntervalPtr ManualClock::CreateInterval(const IntervalSpec &spec)
{
    m_specs.append(spec);
    const QDateTime due = spec.firstDue ? *spec.firstDue : m_now.addSecs(spec.periodSeconds);
    auto interval = std::make_shared<ManualInterval>(spec, due, m_sequence++);
    // Forget the intervals that are gone, so a long test does not keep a growing list.
    m_intervals.removeIf([](const std::weak_ptr<ManualInterval> &w) { return w.expired(); });
    m_intervals.append(interval);
    return interval;
}

int ManualClock::advance(qint64 seconds)
{
    const QDateTime limit = m_now.addSecs(seconds);
    int fired = 0;
    for (;;) {
        // Holding the interval while it fires keeps it alive even if the handler releases the
        // last other reference (a component tearing itself down from its own timer).
        std::shared_ptr<ManualInterval> next;
        for (const auto &interval : liveIntervals()) {
            if (interval->m_due <= limit
                && (!next || interval->m_due < next->m_due
                    || (interval->m_due == next->m_due
                        && interval->m_sequence < next->m_sequence))) {
                next = interval;
            }
        }
        if (!next) {
            break;
        }
        m_now = std::max(m_now, next->m_due);
        if (next->m_spec.repeat) {
            // A period below one second would never let time move on; the real library has a
            // resolution of its own, a second is the honest stand-in.
            next->m_due = next->m_due.addSecs(std::max(next->m_spec.periodSeconds, 1));
        } else {
            next->m_stopped = true;
        }
        ++fired;
        Q_EMIT next->IntervalExpired();
    }
    m_now = std::max(m_now, limit);
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

int ManualClock::liveIntervalCount() const
{
    return int(liveIntervals().size());
}

} // namespace olvex
