#pragma once

#include "common/host.h"

#include <QTimer>

namespace olvex {

// An interval of the reference clock: a QTimer on the thread that created it. The first expiry
// comes at firstDue (at once if that is past), or one period from now; then every period while
// repeat is set. Stop() or destruction ends it.
class TimerInterval final : public Interval
{
    Q_OBJECT
public:
    explicit TimerInterval(const IntervalSpec &spec, QObject *parent = nullptr);
    void Stop() override;
    void SetMessageLog(std::shared_ptr<MessageLog> log) override;
    QString Name() const override { return m_name; }
    bool isActive() const { return m_timer.isActive(); }

private:
    void expired();

    QTimer m_timer;
    QString m_name;
    int m_periodMs;
    bool m_repeat;
    std::shared_ptr<MessageLog> m_log;
};

class SiteClock final : public ClockLibrary
{
public:
    QDateTime Now() const override;
    IntervalPtr CreateInterval(const IntervalSpec &spec) override;
};

} // namespace olvex
