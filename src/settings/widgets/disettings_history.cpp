// DISettings: the recorded changes of the selected setting.
#include "settings/widgets/disettings.h"

#include "common/audittrail.h"
#include "common/error.h"
#include "common/widgets/reportlist.h"
#include "common/widgets/uiservices.h"
#include "settings/settinghistory.h"
#include "settings/widgets/settinghistorydialog.h"

namespace olvex {

void DISettings::cmdHistory_Click()
{
    guarded(
        [&] {
            const std::optional<RowTarget> target = rowTarget(m_lsvSettings->selectedRow());
            auto *trail = dynamic_cast<AuditTrail *>(mobjDI.get());
            if (!target || !target->definition || !trail) {
                return;
            }
            // One more than shown tells whether older changes were left out.
            QList<AuditEntry> entries = trail->ReadAuditTrail(target->pid, true, kHistoryLimit + 1);
            const bool truncated = entries.size() > kHistoryLimit;
            entries = entries.mid(0, kHistoryLimit);
            const std::shared_ptr<MessageLog> log = mobjDI->MessageLog();
            SettingHistoryDialog dialog(this);
            dialog.setHistory(target->definition->GetName(0), unitText(target->pid),
                              historyLines(*target->definition, entries, log.get()), truncated);
            UiServices::resolve(m_ui).runModal(dialog);
        },
        [this](const CaughtError &error) { RaiseProblem(error.errorText()); });
}

} // namespace olvex
