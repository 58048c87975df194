// DISettings: what selecting a row enables, and why a disabled button is disabled.
#include "settings/widgets/disettings.h"

#include "common/error.h"
#include "common/vocabulary.h"
#include "common/widgets/reportlist.h"
#include "settings/settingdisplay.h"
#include "settings/widgets/settingicons.h"

#include <QPushButton>

namespace olvex {

QString DISettings::userName()
{
    const std::shared_ptr<User> user = mobjDI->GetUser();
    return user ? user->UserName() : QString();
}

QString DISettings::privilegeRefusal(qint32 pid)
{
    if (mobjSecurity && mobjSecurity->CanChangeSetting(pid, true)) {
        return {};
    }
    return u"Account '" + userName() + u"' does not have privileges to change this setting.";
}

void DISettings::disableSettingButtons(const QString &why)
{
    for (QPushButton *button : {m_cmdChange, m_cmdChangeToDefault}) {
        button->setEnabled(false);
        button->setToolTip(why);
    }
}

void DISettings::disableAlarmButton(const QString &why)
{
    m_cmdChangeAlarm->setEnabled(false);
    m_cmdChangeAlarm->setToolTip(why);
}

void DISettings::lsvSettings_ItemClick(QTreeWidgetItem *row)
{
    guarded(
        [&] {
            const std::optional<RowTarget> target = rowTarget(row);
            if (!target) {
                return;
            }
            if (!target->definition) {
                disableSettingButtons(QStringLiteral("This PID has no definition."));
                return;
            }
            const qint32 pid = target->pid;
            const ParameterPtr &definition = target->definition;
            const int dataType
                = int(definition->GetAttribute(SettingAttr::DataType).toInteger().value_or(0));
            const int icon = ReportList::smallIcon(row);
            switch (dataType) {
            case SettingType::Number:
            case SettingType::Date:
            case SettingType::Time:
            case SettingType::Text:
                m_cmdChange->setText(QStringLiteral("Change Value..."));
                break;
            case SettingType::YesNo:
            case SettingType::OnOff:
                if (SettingIcon::isReadWrite(icon)) {
                    m_cmdChange->setText(QStringLiteral("Change Value"));
                } else if (SettingIcon::isWriteOnly(icon)) {
                    m_cmdChange->setText(QStringLiteral("Change Value..."));
                }
                break;
            default:
                break;
            }

            if (!SettingIcon::isChangeable(icon)) {
                disableSettingButtons(icon == SettingIcon::ReadOnly
                                              || icon == SettingIcon::ReadOnlyHighLevel
                                          ? QStringLiteral("This setting is read-only.")
                                          : QStringLiteral("This setting cannot be changed now."));
                return;
            }
            if (const QString refusal = privilegeRefusal(pid); !refusal.isEmpty()) {
                disableSettingButtons(refusal);
                return;
            }
            const QString name = row->text(0);
            m_cmdChange->setEnabled(true);
            m_cmdChange->setToolTip(u"Enter a new value for " + name + u'.');
            m_cmdChangeToDefault->setEnabled(true);
            m_cmdChangeToDefault->setToolTip(u"Set " + name + u" to its default value ("
                                             + row->text(2) + u").");
            setDefaultButtonState(row, *definition, dataType);
        },
        [this](const CaughtError &error) {
            emitProblem(QStringLiteral("SED-010/UI-028: "), error);
        });
}

void DISettings::lsvAlarmSettings_ItemClick(QTreeWidgetItem *row)
{
    guarded(
        [&] {
            if (!row || !mobjDI) {
                return;
            }
            if (!m_lsvAlarmSettings->contains(row)) {
                disableAlarmButton(QStringLiteral("Select an alarm first."));
                return;
            }
            const qint32 pid = PidFromTag(ReportList::rowTag(row));
            if (!directory()->PidExists(pid)) {
                disableAlarmButton(QStringLiteral("This PID has no definition."));
                return;
            }
            if (const QString refusal = privilegeRefusal(pid); !refusal.isEmpty()) {
                disableAlarmButton(refusal);
                return;
            }
            m_cmdChangeAlarm->setEnabled(true);
            m_cmdChangeAlarm->setToolTip(u"Change the alarm setpoints of " + row->text(0) + u'.');
        },
        [this](const CaughtError &error) {
            emitProblem(QStringLiteral("SED-008/UI-096: "), error);
        });
}

} // namespace olvex
