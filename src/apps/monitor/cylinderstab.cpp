// The "Gas Cylinders" tab: the site's cylinder list, with the edit dialog's picture for
// --screenshot.
#include "monitortabs.h"

#include "common/error.h"
#include "common/host.h"
#include "common/widgets/reportlist.h"
#include "cylinders/cylinderrow.h"
#include "cylinders/widgets/disysdefcylinders.h"
#include "cylinders/widgets/frmeditcylinderinfo.h"
#include "monitorwindow.h"

namespace olvex {

namespace {

// The edit dialog on the list's first cylinder with several component gases (else its first), as
// the operator would open it; null when the site has no cylinder.
std::unique_ptr<QWidget> editDialogShot(DISysDefCylinders &list, const MonitorContext &context)
{
    ReportList *rows = list.lsvCylinders();
    const std::shared_ptr<PidDirectory> directory = context.dataInterface->GetPidDirectory();
    ParameterPtr chosen;
    for (int i = 0; i < rows->rowCount(); ++i) {
        const qint32 pid = cylinderPidFromKey(ReportList::rowKey(rows->row(i)));
        if (pid == 0 || !directory->PidExists(pid)) {
            continue;
        }
        ParameterPtr cylinder = directory->GetPid(pid, true);
        const bool severalGases
            = cylinder->GetAttribute(CylinderAttr::GasPids).toArray().size() > 1;
        if (!chosen || severalGases) {
            chosen = std::move(cylinder);
        }
        if (severalGases) {
            break;
        }
    }
    if (!chosen) {
        return nullptr;
    }
    auto dialog = std::make_unique<frmEditCylinderInfo>(context.ui);
    if (!dialog->Setup(chosen, context.dataInterface, context.messageLog)) {
        return nullptr;
    }
    return dialog;
}

} // namespace

QWidget *createCylindersTab(MonitorWindow &window, const MonitorContext &context)
{
    auto *cylinders = new DISysDefCylinders(context.ui, &window);
    cylinders->Setup(context.messageLog, context.dataInterface, QString());
    window.addShot(QStringLiteral("cylinder-edit"), [cylinders, context, &window] {
        try {
            return editDialogShot(*cylinders, context);
        } catch (...) {
            window.showProblem(u"CSET-0005: " + currentError().description);
            return std::unique_ptr<QWidget>();
        }
    });
    return cylinders;
}

} // namespace olvex
