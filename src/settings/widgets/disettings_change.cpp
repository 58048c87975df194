// DISettings: the change flows: a new value, the default value, the alarm setpoints.
#include "settings/widgets/disettings.h"

#include "common/datetime.h"
#include "common/error.h"
#include "common/vocabulary.h"
#include "common/widgets/reportlist.h"
#include "common/widgets/uiservices.h"
#include "settings/alarmsetpoints.h"
#include "settings/settingdisplay.h"
#include "settings/settingentry.h"
#include "settings/widgets/frmsettings_alarmsetpoints.h"
#include "settings/widgets/frmsettings_getnumber.h"
#include "settings/widgets/frmsettings_getyesno.h"
#include "settings/widgets/valueinputdialog.h"

#include <QPushButton>

namespace olvex {

namespace {

// An example of the format a date, time or date-and-time entry is read in, in this locale.
QString dateExample(int dataType)
{
    const QDateTime sample(QDate(2024, 3, 5), QTime(14, 30));
    switch (dataType) {
    case SettingType::Date:
        return formatNamed(sample, NamedFormat::ShortDate);
    case SettingType::Time:
        return formatNamed(sample, NamedFormat::ShortTime);
    default:
        return formatNamed(sample, NamedFormat::ShortDate) + u' '
               + formatNamed(sample, NamedFormat::ShortTime);
    }
}

} // namespace

bool DISettings::refuseChange(qint32 pid, const QString &title, const QString &code)
{
    if (mobjSecurity && mobjSecurity->CanChangeSetting(pid, true)) {
        return false;
    }
    const QString account = userName();
    UiServices::resolve(m_ui).ShowMessageBox(accessDeniedText(account),
                                             MessageBoxStyle::Exclamation, title);
    Q_EMIT Problem(accessDeniedProblem(code, account));
    return true;
}

QString DISettings::unitText(qint32 pid)
{
    const std::shared_ptr<UnitsLookup> units = mobjDI ? mobjDI->GetUnitsLookup() : nullptr;
    return units ? units->UnitsText(pid) : QString();
}

void DISettings::cmdChange_Click()
{
    guarded(
        [&] {
            QTreeWidgetItem *row = m_lsvSettings->selectedRow();
            const std::optional<RowTarget> target = rowTarget(row);
            if (!target || !target->definition) {
                return;
            }
            const qint32 pid = target->pid;
            const ParameterPtr &definition = target->definition;
            const QString title = definition->GetName(0);
            if (refuseChange(pid, title, QStringLiteral("SED-012"))) {
                return;
            }
            UiServices &ui = UiServices::resolve(m_ui);

            const int dataType
                = int(definition->GetAttribute(SettingAttr::DataType).toInteger().value_or(0));
            const EntryKind kind = entryKindFor(dataType);
            const QString unit = unitText(pid);
            std::optional<Value> newValue;
            switch (kind) {
            case EntryKind::Number:
            case EntryKind::FreeText: {
                frmSettings_GetNumber dialog(m_ui, this);
                dialog.setSetting(title, unit, kind == EntryKind::Number ? dataType : 0);
                dialog.setCurrentValue(row->text(1));
                dialog.setDefaultValue(row->text(2));
                if (kind == EntryKind::Number && !row->text(3).isEmpty()) {
                    dialog.setHint(u"Recommended range: " + row->text(3));
                }
                if (ui.runModal(dialog) != QDialog::Accepted) {
                    return;
                }
                const QString entry = dialog.NewValue();
                if (kind == EntryKind::Number) {
                    const NumberEntryCheck check = checkNumberEntry(
                        entry, definition->GetAttribute(SettingAttr::RecommendedLow),
                        definition->GetAttribute(SettingAttr::RecommendedHigh));
                    if (check.refusal == NumberEntryCheck::Refusal::NotNumeric) {
                        ui.beep();
                        return;
                    }
                    if (check.refused()) {
                        ui.ShowMessageBox(check.message, MessageBoxStyle::Exclamation, title);
                        return;
                    }
                    for (const QString &question : check.questions) {
                        if (ui.ShowMessageBox(question, MessageBoxStyle::ExclamationYesNo, title)
                            != MessageBoxAnswer::Yes) {
                            return;
                        }
                    }
                }
                newValue = valueToWrite(kind, entry);
                break;
            }
            case EntryKind::DateTime: {
                ValueInputDialog dialog(m_ui, this);
                dialog.setPrompt(u"New value of " + title + u" (for example "
                                 + dateExample(dataType) + u"):");
                dialog.setReadingType(dataType);
                dialog.setValue(row->text(1));
                if (ui.runModal(dialog) != QDialog::Accepted) {
                    return;
                }
                newValue = valueToWrite(kind, dialog.value());
                break;
            }
            case EntryKind::YesNo:
            case EntryKind::OnOff: {
                const auto [falseCaption, trueCaption] = yesNoCaptions(kind);
                frmSettings_GetYesNo dialog(m_ui, this);
                dialog.setSetting(title);
                dialog.SetCaptions(falseCaption, trueCaption);
                const QString shown = row->text(1);
                dialog.setCurrentValue(shown == trueCaption    ? std::optional<bool>(true)
                                       : shown == falseCaption ? std::optional<bool>(false)
                                                               : std::nullopt);
                ui.runModal(dialog);
                const std::optional<bool> chosen = dialog.NewValue();
                if (!chosen) {
                    return;
                }
                newValue = Value(*chosen);
                break;
            }
            case EntryKind::None:
                break;
            }
            if (!newValue) {
                ui.beep(); // refused entry: nothing written
                return;
            }
            if (wouldChangeNothing(row, *definition, *newValue)) {
                return; // the setting holds that value already: nothing for the service to do
            }
            definition->SetValues(WriteMode::Queued, *newValue);
            FillSettingsRow(row);
            lsvSettings_ItemClick(row);
            watchPendingRows();
        },
        [this](const CaughtError &error) {
            emitProblem(QStringLiteral("SED-001/UI-029: "), error);
        });
}

void DISettings::cmdChangeToDefault_Click()
{
    guarded(
        [&] {
            QTreeWidgetItem *row = m_lsvSettings->selectedRow();
            if (!row || !mobjDI) {
                return;
            }
            const qint32 pid = PidFromTag(ReportList::rowTag(row));
            if (refuseChange(pid, row->text(0), QStringLiteral("SED-014"))) {
                return;
            }
            const ParameterPtr definition = directory()->GetPid(pid, true);
            const Value defaultValue = definition->GetAttribute(SettingAttr::DefaultValue);
            if (wouldChangeNothing(row, *definition, defaultValue)) {
                return;
            }
            definition->SetValues(WriteMode::Queued, defaultValue);
            FillSettingsRow(row);
            lsvSettings_ItemClick(row);
            watchPendingRows();
        },
        [this](const CaughtError &error) {
            emitProblem(QStringLiteral("SED-003/UI-027: "), error);
        });
}

void DISettings::cmdChangeAlarm_Click()
{
    guarded(
        [&] {
            QTreeWidgetItem *row = m_lsvAlarmSettings->selectedRow();
            const std::optional<RowTarget> target = rowTarget(row);
            if (!target || !target->definition) {
                return;
            }
            const qint32 pid = target->pid;
            if (refuseChange(pid, row->text(0), QStringLiteral("SED-013"))) {
                return;
            }
            UiServices &ui = UiServices::resolve(m_ui);
            const ParameterPtr &definition = target->definition;
            frmSettings_AlarmSetpoints dialog(m_ui, this);
            dialog.setSetting(row->text(0), unitText(pid));
            for (size_t i = 0; i < kAlarmSetpoints.size(); ++i) {
                dialog.setSetpoint(int(i), definition->GetAttribute(kAlarmSetpoints[i].attribute));
            }
            if (ui.runModal(dialog) != QDialog::Accepted) {
                return;
            }
            for (size_t i = 0; i < kAlarmSetpoints.size(); ++i) {
                const Value chosen = NullToEmpty(dialog.setpoint(int(i)));
                if (chosen.toText() != row->text(int(i) + 1)) {
                    definition->SetAttribute(kAlarmSetpoints[i].attribute, chosen);
                }
            }
            FillAlarmRow(row);
            lsvAlarmSettings_ItemClick(row);
        },
        [this](const CaughtError &error) {
            emitProblem(QStringLiteral("SED-002/UI-095: "), error);
        });
}

} // namespace olvex
