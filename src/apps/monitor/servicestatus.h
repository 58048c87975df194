#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>
#include <utility>

class QLabel;

namespace olvex {

class DasRunner;
class DISettings;
class MonitorWindow;
class SiteStore;
struct QueueStatus;

// The status bar field that tells the operator whether queued changes are being carried out:
// by this window's service, by one elsewhere (a claim of it is seen), or by none yet, in amber.
// When the window's own service finishes items, the settings tab re-reads its waiting rows at
// once, once per turn of the event loop however many items finished.
class ServiceStatus : public QObject
{
    Q_OBJECT
public:
    // runner: the window's own service, null when it runs elsewhere; settings may be null.
    ServiceStatus(MonitorWindow &window, std::shared_ptr<SiteStore> store, DasRunner *runner,
                  DISettings *settings);

    void update();
    // The field's text and whether it warns, for a runner here or not and what waits.
    static std::pair<QString, bool> describe(bool serviceHere, const QueueStatus &queue,
                                             const QDateTime &now);

private:
    void itemsFinished();

    std::shared_ptr<SiteStore> m_store;
    DasRunner *m_runner;
    DISettings *m_settings;
    QLabel *m_label;
    QTimer m_poll;
    bool m_rereadQueued = false;
};

} // namespace olvex
