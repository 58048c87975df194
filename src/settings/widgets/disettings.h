#pragma once

#include "common/host.h"
#include "common/olvexexport.h"
#include "settings/settingfind.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

class QAction;
class QFrame;
class QLineEdit;
class QPushButton;
class QSplitter;
class QTextEdit;
class QTreeWidgetItem;

namespace olvex {

class KeyedTree;
class ReportList;
class UiServices;
struct CaughtError;

// The settings editor: the tree of setting groups on the left and, on the right, either the
// settings of the selected group with their values, defaults and recommended ranges, or the
// setpoints of an alarm group. The operator changes a value within limits, subject to the
// account's privileges. Every value shown is read from the data interface.
//
// Every handler catches its own errors and raises them through Problem as one coded line.
// Teardown (also run by the destructor) stops the refresh timer before it releases the data
// interface and the security object.
class OLVEX_WIDGETS_EXPORT DISettings : public QWidget
{
    Q_OBJECT
public:
    explicit DISettings(UiServices *ui = nullptr, QWidget *parent = nullptr);
    ~DISettings() override;

    // Keeps the data interface, prepares the security object, loads the group tree and shows
    // the first group; with startRefresh the shown values are re-read once a minute.
    void Setup(std::shared_ptr<DataInterface> dataInterface, bool startRefresh);
    void Teardown();

    void ShowGroup(qint32 groupNumber, bool selectFirst);
    void FillSettingsList(const Value &pids, bool selectFirst);
    void FillAlarmList(const Value &pids, bool selectFirst);
    void FillSettingsRow(QTreeWidgetItem *row);
    void FillAlarmRow(QTreeWidgetItem *row);
    // The PID of a row tag "PID(digits)"; 0 for anything else.
    static qint32 PidFromTag(const QString &tag);
    void RaiseProblem(const QString &text);

    // Handlers, public so that a host (or a test) can drive the control as the user would.
    void mobjDI_UseSecondaryDasConnectionStringsChanged();
    void mobjRefreshValues_IntervalExpired();
    void tvwGroups_NodeClick(QTreeWidgetItem *node);
    void lsvSettings_ItemClick(QTreeWidgetItem *row);
    void lsvAlarmSettings_ItemClick(QTreeWidgetItem *row);
    void cmdChange_Click();
    void cmdChangeToDefault_Click();
    void cmdChangeAlarm_Click();
    void cmdHistory_Click();

    // Re-reads the shown group at once, keeping the selected row (F5, Refresh, after an import).
    void Refresh();
    // Re-reads the rows whose change waits for the service: called when the service has applied
    // items, and every second while such rows are shown.
    void RefreshPendingRows();
    // Shows only the groups and settings whose name holds text, or the setting of the PID text
    // names; empty text shows all again.
    void ApplyFind(const QString &text);
    // What hovering a settings row shows: its name, unit, recommended range, whether the value
    // lies outside it, and what its icon means.
    QString RowToolTip(QTreeWidgetItem *row);

    // The controls, by their names.
    KeyedTree *tvwGroups() const { return m_tvwGroups; }
    QFrame *fraSettings() const { return m_fraSettings; }
    ReportList *lsvSettings() const { return m_lsvSettings; }
    QPushButton *cmdChange() const { return m_cmdChange; }
    QPushButton *cmdChangeToDefault() const { return m_cmdChangeToDefault; }
    QTextEdit *rtfboxInstructions1() const { return m_rtfboxInstructions1; }
    QFrame *fraAlarmSettings() const { return m_fraAlarmSettings; }
    ReportList *lsvAlarmSettings() const { return m_lsvAlarmSettings; }
    QPushButton *cmdChangeAlarm() const { return m_cmdChangeAlarm; }
    QTextEdit *rtfboxInstructions2() const { return m_rtfboxInstructions2; }
    QLineEdit *txtFind() const { return m_txtFind; }
    QAction *actRefresh() const { return m_actRefresh; }
    QPushButton *cmdHistory() const { return m_cmdHistory; }
    QSplitter *splitter() const { return m_splitter; }

    bool hasRefreshTimer() const { return mobjRefreshValues != nullptr; }
    bool isWatchingPendingRows() const { return mobjWatchPending != nullptr; }

Q_SIGNALS:
    void Problem(const QString &message);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildControls();
    void buildFindBar(QWidget *bar);
    void buildContextMenu();
    void setCaptions();
    void emitProblem(const QString &prefix, const CaughtError &error);
    void clearViews();
    void showInstructions(const QString &text, bool alarmGroup);
    void addUndefinedRow(qint32 pid);
    // A row for each member of a group, in order: addRow for a defined parameter (all of them
    // read in one call), the "N/A" row for an undefined one. A member that is no PID stops the
    // fill after the rows before it (thrown).
    void addMemberRows(const QList<Value> &members,
                       const std::function<void(qint32, const Parameter &)> &addRow);
    // The Value cell and icon of a settings row, and the setpoint cells and icon of an alarm
    // row, from a definition at hand; the callers catch and code the errors.
    void showSettingState(QTreeWidgetItem *row, const Parameter &definition, bool alternativeState,
                          MessageLog *log);
    void showAlarmSetpoints(QTreeWidgetItem *row, const Parameter &definition);
    // The amber mark of a shown number value outside its recommended range (the tooltip,
    // RowToolTip, is made when asked for: a fill of thousands of rows does not pay for it).
    void showRowFacts(QTreeWidgetItem *row, const Parameter &definition, const Value &shownValue);
    // Starts the one-second watch when a shown row waits for the service, ends it when none
    // does.
    void watchPendingRows();
    void stopWatchingPendingRows();
    // The Find text applied to the tree and to the shown list; the shown group changes to the
    // first one left when the find hides it.
    void applyFindToTree();
    void applyFindToRows();
    // The rows in the order of the column header the operator clicked (none: the group's).
    void applySortOrder();
    // Disables the default button when the shown value already is the default.
    void setDefaultButtonState(QTreeWidgetItem *row, const Parameter &definition, int dataType);
    // Whether writing wanted would leave the shown, settled value as it is: nothing is posted.
    bool wouldChangeNothing(QTreeWidgetItem *row, const Parameter &definition, const Value &wanted);
    void disableSettingButtons(const QString &why);
    void disableAlarmButton(const QString &why);
    // Why the selected setting cannot be changed by this account; empty when it can.
    QString privilegeRefusal(qint32 pid);
    // True when this account may not change pid, after telling the operator (the box titled
    // title) and raising the problem line under code.
    bool refuseChange(qint32 pid, const QString &title, const QString &code);
    // The unit the entry dialogs name; empty when the host has no units.
    QString unitText(qint32 pid);
    // After a fill: selects the first settings row and shows it with onSelected, or leaves the
    // buttons disabled.
    void selectFirstSetting(bool selectFirst, void (DISettings::*onSelected)(QTreeWidgetItem *));
    QString userName();
    std::shared_ptr<PidDirectory> directory();
    // The PID of a row and its definition (null for a PID without one); none without a row or
    // without a data interface.
    struct RowTarget
    {
        qint32 pid = 0;
        ParameterPtr definition;
    };
    std::optional<RowTarget> rowTarget(QTreeWidgetItem *row);

    UiServices *m_ui;
    std::shared_ptr<DataInterface> mobjDI;
    std::shared_ptr<Security> mobjSecurity;
    IntervalPtr mobjRefreshValues;
    IntervalPtr mobjWatchPending;
    bool m_live = false; // set up with the minute's refresh: also watch pending rows

    SettingFind m_find;
    bool m_rowsFiltered = false; // some row of the lists may be hidden by a find
    // Each group's member settings (PID, name), read when a find first needs them.
    QHash<qint32, QList<std::pair<qint32, QString>>> m_groupMembers;
    int m_sortColumn = -1;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;

    QSplitter *m_splitter = nullptr;
    KeyedTree *m_tvwGroups = nullptr;
    QFrame *m_fraSettings = nullptr;
    ReportList *m_lsvSettings = nullptr;
    QPushButton *m_cmdChange = nullptr;
    QPushButton *m_cmdChangeToDefault = nullptr;
    QTextEdit *m_rtfboxInstructions1 = nullptr;
    QFrame *m_fraAlarmSettings = nullptr;
    ReportList *m_lsvAlarmSettings = nullptr;
    QPushButton *m_cmdChangeAlarm = nullptr;
    QTextEdit *m_rtfboxInstructions2 = nullptr;
    QLineEdit *m_txtFind = nullptr;
    QAction *m_actRefresh = nullptr;
    QPushButton *m_cmdHistory = nullptr;
};

} // namespace olvex
