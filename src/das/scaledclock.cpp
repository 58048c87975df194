#include "das/scaledclock.h"

#include "host/siteclock.h"

#include <cmath>

namespace olvex {

ScaledClock::ScaledClock(double speed)
    : m_speed(speed)
    , m_start(QDateTime::currentDateTime())
    , m_real(std::make_shared<SiteClock>())
{
    m_elapsed.start();
}

QDateTime ScaledClock::Now() const
{
    return m_start.addMSecs(qint64(std::llround(double(m_elapsed.elapsed()) * m_speed)));
}

IntervalPtr ScaledClock::CreateInterval(const IntervalSpec &spec)
{
    return m_real->CreateInterval(spec);
}

} // namespace olvex
