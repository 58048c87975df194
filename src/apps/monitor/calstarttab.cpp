#include "calstart/widgets/dicalstart.h"
#include "monitortabs.h"
#include "monitorwindow.h"

#include "common/host.h"

#include <QTabWidget>

#include <algorithm>

namespace olvex {

QWidget *createCalStartTab(MonitorWindow &window, const MonitorContext &context)
{
    auto *calStart = new DICalStart(context.ui, &window);
    calStart->Setup(context.messageLog, context.dataInterface);
    // The list and the whole settings panel in view: the window grows to the control's width.
    const int width
        = calStart->DesiredWidth() + window.frameGeometry().width() - window.geometry().width() + 8;
    window.resize(std::max(window.width(), width), window.height());
    // Close leaves the operator where the window starts: the first tab.
    QObject::connect(calStart, &DICalStart::CloseClicked, &window,
                     [&window] { window.tabs()->setCurrentIndex(0); });
    return calStart;
}

} // namespace olvex
