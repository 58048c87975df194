#pragma once

#include "common/host.h"

#include <QDateTime>
#include <QElapsedTimer>

namespace olvex {

// The service's time for a demonstration: starts at the wall clock's time and runs `speed`
// times faster (olvex-das --speed 600: ten simulated minutes a second). Intervals keep real
// time; the service takes only Now() from it.
class ScaledClock final : public ClockLibrary
{
public:
    explicit ScaledClock(double speed);

    QDateTime Now() const override;
    IntervalPtr CreateInterval(const IntervalSpec &spec) override;

private:
    double m_speed;
    QDateTime m_start;
    QElapsedTimer m_elapsed;
    std::shared_ptr<ClockLibrary> m_real;
};

} // namespace olvex
