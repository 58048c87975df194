#include "servicestatus.h"

#include "common/error.h"
#include "das/dasrunner.h"
#include "host/queuestatus.h"
#include "monitorwindow.h"
#include "settings/widgets/disettings.h"

#include <QLabel>
#include <QStatusBar>

namespace olvex {

namespace {

// A service polls every second: an item nobody has claimed for this long has nobody to do it.
constexpr qint64 kUnclaimedSeconds = 5;

QString itemsText(int count)
{
    return count == 1 ? QStringLiteral("1 item waits") : QString::number(count) + u" items wait";
}

} // namespace

ServiceStatus::ServiceStatus(MonitorWindow &window, std::shared_ptr<SiteStore> store,
                             DasRunner *runner, DISettings *settings)
    : QObject(&window)
    , m_store(std::move(store))
    , m_runner(runner)
    , m_settings(settings)
    , m_label(new QLabel(&window))
{
    m_label->setObjectName(QStringLiteral("lblService"));
    m_label->setContentsMargins(6, 0, 6, 0);
    window.statusBar()->addPermanentWidget(m_label);
    m_poll.setInterval(2000);
    connect(&m_poll, &QTimer::timeout, this, &ServiceStatus::update);
    m_poll.start();
    if (m_runner) {
        connect(m_runner, &DasRunner::itemFinished, this, &ServiceStatus::itemsFinished);
    }
    update();
}

std::pair<QString, bool> ServiceStatus::describe(bool serviceHere, const QueueStatus &queue,
                                                 const QDateTime &now)
{
    if (serviceHere) {
        return {
            u"Service: running here, "
                + (queue.waiting == 0 ? QStringLiteral("nothing waits") : itemsText(queue.waiting)),
            false};
    }
    if (queue.waiting == 0) {
        return {QStringLiteral("Service: elsewhere, nothing waits"), false};
    }
    if (queue.heldClaims > 0) {
        return {u"Service: running, " + itemsText(queue.waiting), false};
    }
    if (queue.oldestPosted.isValid() && queue.oldestPosted.secsTo(now) >= kUnclaimedSeconds) {
        return {u"Service not running: changes wait for the data acquisition service ("
                    + itemsText(queue.waiting) + u')',
                true};
    }
    return {u"Service: " + itemsText(queue.waiting), false};
}

void ServiceStatus::update()
{
    guarded(
        [&] {
            const bool here = m_runner && m_runner->isActive();
            const auto [text, warn]
                = describe(here, readQueueStatus(*m_store), QDateTime::currentDateTime());
            m_label->setText(text);
            m_label->setStyleSheet(warn ? QStringLiteral("color: #B06A00; font-weight: bold;")
                                        : QString());
            m_label->setToolTip(
                here ? QStringLiteral("This window carries out the changes it queues.")
                     : QStringLiteral("Changes are carried out by an olvex-das process beside "
                                      "the site."));
        },
        [this](const CaughtError &error) {
            m_label->setText(u"Service: unknown (" + error.errorText() + u')');
        });
}

void ServiceStatus::itemsFinished()
{
    if (m_rereadQueued) {
        return;
    }
    m_rereadQueued = true;
    QTimer::singleShot(0, this, [this] {
        m_rereadQueued = false;
        if (m_settings) {
            m_settings->RefreshPendingRows();
        }
        update();
    });
}

} // namespace olvex
