#pragma once

#include "das/dasservice.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <memory>

namespace olvex {

// Runs the service on the event loop of the thread that owns the store: in-process in the
// operator window, and the body of olvex-das.
//
//     olvex::DasRunner runner(store, std::chrono::milliseconds(1000));
//     runner.start();
//
// While items come one after another they are carried out back to back, one group per turn of
// the event loop, so a window stays responsive and a stop request is seen after the group in
// hand;
// when the queue is idle the runner looks again every interval.
class DasRunner : public QObject
{
    Q_OBJECT

public:
    explicit DasRunner(std::shared_ptr<SiteStore> store,
                       std::chrono::milliseconds interval = std::chrono::milliseconds(1000),
                       DasOptions options = DasOptions(), QObject *parent = nullptr);
    ~DasRunner() override;

    DasService &service() { return m_service; }

    std::chrono::milliseconds interval() const { return m_interval; }
    void setInterval(std::chrono::milliseconds interval);

    // Runs until stop().
    void start();
    // Runs until no item is queued or claimed on the site any more (waiting for the leases of
    // other services' claims to run out), then stops and emits drained().
    void drain();
    // Takes effect between groups; the group in hand is always finished first.
    void stop();
    bool isActive() const { return m_active; }
    bool isDraining() const { return m_draining; }

    // Carries out, here and now, every item that can be claimed; returns how many were
    // finished. For a window that wants the queue empty before it closes.
    int runPending();

    // Steps that failed one after another (a store that went away); 0 after a step that worked.
    int consecutiveFailures() const { return m_consecutiveFailures; }

Q_SIGNALS:
    void itemFinished(const olvex::DasResult &result);
    void stepFailed(const QString &error);
    void drained();

private:
    void tick();
    void schedule(std::chrono::milliseconds delay);

    DasService m_service;
    QTimer m_timer;
    std::chrono::milliseconds m_interval;
    int m_consecutiveFailures = 0;
    bool m_active = false;
    bool m_draining = false;
};

} // namespace olvex
