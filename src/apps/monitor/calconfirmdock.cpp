#include "calconfirmdock.h"

#include "calconfirm/widgets/dicalconfirm.h"
#include "common/host.h"
#include "host/siteservices.h"
#include "monitorwindow.h"

#include <QApplication>
#include <QDockWidget>

namespace olvex {

namespace {

void bringToOperator(MonitorWindow &window, QDockWidget &dock)
{
    if (window.isMinimized()) {
        window.showNormal();
    }
    window.show();
    window.raise();
    window.activateWindow();
    dock.show();
    dock.raise();
    // Flashes the taskbar entry until the operator looks, where the desktop supports it.
    QApplication::alert(&window);
}

} // namespace

DICalConfirm *addCalConfirmDock(MonitorWindow &window, const MonitorContext &context)
{
    auto *dock = new QDockWidget(QStringLiteral("Calibration Confirmation"), &window);
    dock->setObjectName(QStringLiteral("dockCalConfirm"));
    dock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    auto *panel = new DICalConfirm(dock);
    panel->setMinimumWidth(330);
    dock->setWidget(panel);
    window.addDock(dock, Qt::RightDockWidgetArea, QStringLiteral("calconfirm"));
    // The dock takes its width from the tabs' side: the window grows by it, so that the widest
    // tab (calibration start) keeps its whole panel in view.
    window.resize(window.width() + dock->sizeHint().width(), window.height());
    QObject::connect(
        panel, &DICalConfirm::NewCalConfirmPending, dock,
        [&window, dock](const NewCalConfirmEvent &) { bringToOperator(window, *dock); });
    panel->Setup(context.messageLog, context.dataInterface,
                 std::make_shared<SiteCurrentDataReader>(context.store));
    // The first look now, not a minute from now: a calibration may be waiting already.
    panel->RefreshWindow();
    return panel;
}

} // namespace olvex
