#include "das/dasrunner.h"

#include "common/error.h"

namespace olvex {

DasRunner::DasRunner(std::shared_ptr<SiteStore> store, std::chrono::milliseconds interval,
                     DasOptions options, QObject *parent)
    : QObject(parent)
    , m_service(std::move(store), std::move(options))
    , m_interval(std::max(interval, std::chrono::milliseconds(1)))
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &DasRunner::tick);
    m_service.setResultObserver([this](const DasResult &result) { Q_EMIT itemFinished(result); });
}

DasRunner::~DasRunner()
{
    m_timer.stop();
    m_service.setResultObserver({});
}

void DasRunner::setInterval(std::chrono::milliseconds interval)
{
    m_interval = std::max(interval, std::chrono::milliseconds(1));
}

void DasRunner::start()
{
    m_active = true;
    m_draining = false;
    schedule(std::chrono::milliseconds(0));
}

void DasRunner::drain()
{
    m_active = true;
    m_draining = true;
    schedule(std::chrono::milliseconds(0));
}

void DasRunner::stop()
{
    m_active = false;
    m_timer.stop();
    m_draining = false;
}

int DasRunner::runPending()
{
    int count = 0;
    for (int finished = m_service.runOnce(); finished > 0; finished = m_service.runOnce()) {
        count += finished;
    }
    return count;
}

void DasRunner::schedule(std::chrono::milliseconds delay)
{
    // A slot of itemFinished or stepFailed may have stopped the runner meanwhile.
    if (m_active) {
        m_timer.start(delay);
    }
}

void DasRunner::tick()
{
    guarded(
        [&] {
            const int result = m_service.runOnce();
            if (result < 0) {
                ++m_consecutiveFailures;
                schedule(m_interval);
                Q_EMIT stepFailed(m_service.lastError());
                return;
            }
            m_consecutiveFailures = 0;
            if (result > 0) {
                // More may be waiting: the next group on the next turn of the event loop.
                schedule(std::chrono::milliseconds(0));
                return;
            }
            if (m_draining && m_service.outstanding() == 0) {
                stop();
                Q_EMIT drained();
                return;
            }
            schedule(m_interval);
        },
        [&](const CaughtError &error) {
            ++m_consecutiveFailures;
            schedule(m_interval);
            Q_EMIT stepFailed(error.description);
        });
}

} // namespace olvex
