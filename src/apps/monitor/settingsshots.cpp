// The settings tab's extra pictures for --screenshot: Find at work, and the History dialog of
// the first setting shown that has recorded changes.
#include "common/audittrail.h"
#include "common/error.h"
#include "common/widgets/reportlist.h"
#include "monitortabs.h"
#include "monitorwindow.h"
#include "settings/settinghistory.h"
#include "settings/widgets/disettings.h"
#include "settings/widgets/settinghistorydialog.h"

#include <QLineEdit>

namespace olvex {

namespace {

std::unique_ptr<QWidget> findShot(const MonitorContext &context)
{
    auto settings = std::make_unique<DISettings>(context.ui);
    settings->Setup(context.dataInterface, false);
    settings->txtFind()->setText(QStringLiteral("span"));
    settings->resize(1180, 640);
    return settings;
}

std::unique_ptr<QWidget> historyShot(const DISettings &shown, const MonitorContext &context)
{
    auto *trail = dynamic_cast<AuditTrail *>(context.dataInterface.get());
    const std::shared_ptr<PidDirectory> directory = context.dataInterface->GetPidDirectory();
    if (!trail || !directory) {
        return nullptr;
    }
    for (int i = 0; i < shown.lsvSettings()->rowCount(); ++i) {
        const qint32 pid = DISettings::PidFromTag(ReportList::rowTag(shown.lsvSettings()->row(i)));
        if (!directory->PidExists(pid)) {
            continue;
        }
        const QList<AuditEntry> entries = trail->ReadAuditTrail(pid, true, kHistoryLimit);
        if (entries.isEmpty()) {
            continue;
        }
        const ParameterPtr definition = directory->GetPid(pid, true);
        const std::shared_ptr<UnitsLookup> units = context.dataInterface->GetUnitsLookup();
        auto dialog = std::make_unique<SettingHistoryDialog>();
        dialog->setHistory(definition->GetName(0), units ? units->UnitsText(pid) : QString(),
                           historyLines(*definition, entries, nullptr), false);
        return dialog;
    }
    return nullptr;
}

} // namespace

void addSettingsShots(MonitorWindow &window, const DISettings &settings,
                      const MonitorContext &context)
{
    window.addShot(QStringLiteral("settings-find"), [context] { return findShot(context); });
    window.addShot(QStringLiteral("setting-history"), [&settings, context, &window] {
        try {
            return historyShot(settings, context);
        } catch (...) {
            window.showProblem(currentError().errorText());
            return std::unique_ptr<QWidget>();
        }
    });
}

} // namespace olvex
