#pragma once

#include "common/error.h"
#include "common/host.h"

#include <QDateTime>
#include <QList>

#include <memory>

namespace olvex {

// An interval of the manual clock. It fires only from ManualClock::advance; Stop() or
// destroying it ends it for good.
class ManualInterval : public Interval
{
    Q_OBJECT
public:
    ManualInterval(IntervalSpec spec, QDateTime firstDue, int sequence);

    void Stop() override { m_stopped = true; }
    void SetMessageLog(std::shared_ptr<MessageLog> log) override;
    QString Name() const override { return m_spec.name; }

    bool isStopped() const { return m_stopped; }
    // The log last given by SetMessageLog (null after SetMessageLog(nullptr)), and how often
    // SetMessageLog was called.
    std::shared_ptr<MessageLog> messageLog() const { return m_log; }
    int setMessageLogCalls() const { return m_setMessageLogCalls; }

private:
    friend class ManualClock;

    IntervalSpec m_spec;
    QDateTime m_due;
    int m_sequence;
    bool m_stopped = false;
    std::shared_ptr<MessageLog> m_log;
    int m_setMessageLogCalls = 0;
};

// A clock library whose time moves only when the test says so.
//
// advance() fires, in order of due time (ties in creation order), every live interval that
// falls due up to the new time; Now() reads the due time during each IntervalExpired, so a
// handler sees the time at which it fired. A repeating interval fires once per period passed;
// a one-shot fires once. Intervals that were stopped or destroyed never fire. Intervals
// created by a handler during advance() fire within the same advance if they fall due.
class ManualClock : public ClockLibrary
{
public:
    // Local time 2026-03-01 14:05:00 unless given.
    explicit ManualClock(const QDateTime &start = {});

    QDateTime Now() const override { return m_now; }
    IntervalPtr CreateInterval(const IntervalSpec &spec) override;

    // Sets the time without firing anything (a clock set by the operator; may go backwards).
    void setNow(const QDateTime &now) { m_now = now; }
    // Moves time forward and fires what falls due. Returns the number of firings.
    int advance(qint64 seconds);

    // Every CreateInterval call's arguments, in call order.
    const QList<IntervalSpec> &createdSpecs() const { return m_specs; }
    // The live (alive and not stopped) interval of that name, or null.
    std::shared_ptr<ManualInterval> liveInterval(const QString &name) const;
    int liveIntervalCount() const;

private:
    QList<std::shared_ptr<ManualInterval>> liveIntervals() const;

    QDateTime m_now;
    QList<IntervalSpec> m_specs;
    QList<std::weak_ptr<ManualInterval>> m_intervals;
    int m_sequence = 0;
};

} // namespace olvex
