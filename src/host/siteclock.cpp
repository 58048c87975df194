#include "host/siteclock.h"

#include "common/datetime.h"

#include <algorithm>
#include <limits>

namespace olvex {

TimerInterval::TimerInterval(const IntervalSpec &spec, QObject *parent)
    : Interval(parent)
    , m_timer(this)
    , m_name(spec.name)
    , m_periodMs(std::max(spec.periodSeconds, 1) * 1000)
    , m_repeat(spec.repeat)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::CoarseTimer);
    connect(&m_timer, &QTimer::timeout, this, &TimerInterval::expired);
    qint64 firstMs = m_periodMs;
    if (spec.firstDue && spec.firstDue->isValid()) {
        firstMs = std::clamp<qint64>(QDateTime::currentDateTime().msecsTo(*spec.firstDue), 0,
                                     std::numeric_limits<int>::max());
    }
    m_timer.start(int(firstMs));
}

void TimerInterval::expired()
{
    if (m_repeat && m_timer.isSingleShot()) {
        m_timer.setSingleShot(false);
        m_timer.start(m_periodMs);
    }
    Q_EMIT IntervalExpired();
}

void TimerInterval::Stop()
{
    m_timer.stop();
}

void TimerInterval::SetMessageLog(std::shared_ptr<MessageLog> log)
{
    m_log = std::move(log);
}

QDateTime SiteClock::Now() const
{
    return olvex::Now();
}

IntervalPtr SiteClock::CreateInterval(const IntervalSpec &spec)
{
    return std::make_shared<TimerInterval>(spec);
}

} // namespace olvex
