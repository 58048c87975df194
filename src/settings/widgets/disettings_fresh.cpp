// DISettings: fresh values: the re-read on demand (F5, Refresh, after an import), the watch of
// rows whose change waits for the service, and the default button that says when it would
// change nothing.
#include "settings/widgets/disettings.h"

#include "common/error.h"
#include "common/vocabulary.h"
#include "common/widgets/keyedtree.h"
#include "common/widgets/reportlist.h"
#include "settings/settingcompare.h"
#include "settings/settingdisplay.h"
#include "settings/widgets/settinggroups.h"

#include <QFrame>
#include <QPushButton>

namespace olvex {

namespace {

// The Value cell of a row whose change the service has not applied yet.
const QString kUpdating = QStringLiteral("Updating...");

bool anyRowUpdating(const ReportList &list)
{
    for (int i = 0; i < list.rowCount(); ++i) {
        if (list.row(i)->text(1) == kUpdating) {
            return true;
        }
    }
    return false;
}

} // namespace

void DISettings::Refresh()
{
    guarded(
        [&] {
            QTreeWidgetItem *node = m_tvwGroups->selectedNode();
            if (!mobjDI || !node) {
                return;
            }
            // Names and members may have changed since a find read them.
            m_groupMembers.clear();
            const bool alarmGroup = m_fraSettings->isHidden();
            ReportList *list = alarmGroup ? m_lsvAlarmSettings : m_lsvSettings;
            QTreeWidgetItem *selected = list->selectedRow();
            const QString key = selected ? ReportList::rowKey(selected) : QString();
            ShowGroup(groupNumberFromKey(KeyedTree::nodeKey(node)), key.isEmpty());
            QTreeWidgetItem *again = key.isEmpty() ? nullptr : list->findByKey(key);
            if (!again || again->isHidden()) {
                return;
            }
            list->selectRow(again);
            if (alarmGroup) {
                lsvAlarmSettings_ItemClick(again);
            } else {
                lsvSettings_ItemClick(again);
            }
        },
        [this](const CaughtError &error) { RaiseProblem(error.errorText()); });
}

void DISettings::RefreshPendingRows()
{
    guarded(
        [&] {
            if (!mobjDI || m_fraSettings->isHidden()) {
                stopWatchingPendingRows();
                return;
            }
            QTreeWidgetItem *selected = m_lsvSettings->selectedRow();
            for (int i = 0; i < m_lsvSettings->rowCount(); ++i) {
                QTreeWidgetItem *row = m_lsvSettings->row(i);
                if (row->text(1) != kUpdating) {
                    continue;
                }
                FillSettingsRow(row);
                if (row == selected && row->text(1) != kUpdating) {
                    lsvSettings_ItemClick(row);
                }
            }
            watchPendingRows();
        },
        [this](const CaughtError &error) { RaiseProblem(error.errorText()); });
}

void DISettings::watchPendingRows()
{
    if (!m_live || !mobjDI || m_fraSettings->isHidden() || !anyRowUpdating(*m_lsvSettings)) {
        stopWatchingPendingRows();
        return;
    }
    if (mobjWatchPending) {
        return;
    }
    // A service elsewhere applies a change within a second or two: the row follows as soon as
    // the site shows it, not at the next minute's refresh.
    mobjWatchPending = mobjDI->Clock()->CreateInterval(IntervalSpec{
        1, 22, std::nullopt, QStringLiteral("Watch pending settings"), true, false, true, 1000, 1});
    connect(mobjWatchPending.get(), &Interval::IntervalExpired, this,
            &DISettings::RefreshPendingRows);
}

void DISettings::stopWatchingPendingRows()
{
    if (!mobjWatchPending) {
        return;
    }
    disconnect(mobjWatchPending.get(), nullptr, this, nullptr);
    guarded([&] { mobjWatchPending->Stop(); }, [](const CaughtError &) {});
    mobjWatchPending.reset();
}

void DISettings::setDefaultButtonState(QTreeWidgetItem *row, const Parameter &definition,
                                       int dataType)
{
    // Only a value the row shows can be compared: a write-only setting or one whose change is
    // still on its way may well differ from its default.
    if (row->text(1) == kUpdating || !SettingIcon::isReadWrite(ReportList::smallIcon(row))) {
        return;
    }
    if (sameSettingValue(dataType, definition.GetCurrentValue().Value,
                         definition.GetAttribute(SettingAttr::DefaultValue))) {
        m_cmdChangeToDefault->setEnabled(false);
        m_cmdChangeToDefault->setToolTip(row->text(0) + u" already holds its default value ("
                                         + row->text(2) + u").");
    }
}

bool DISettings::wouldChangeNothing(QTreeWidgetItem *row, const Parameter &definition,
                                    const Value &wanted)
{
    if (row->text(1) == kUpdating || definition.GetAttribute(SettingAttr::ChangePending).isTrue()) {
        return false; // the write on its way may differ: this one must follow it
    }
    const int dataType
        = int(definition.GetAttribute(SettingAttr::DataType).toInteger().value_or(0));
    return sameSettingValue(dataType, definition.GetCurrentValue().Value, wanted);
}

} // namespace olvex
