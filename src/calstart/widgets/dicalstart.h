#pragma once

#include "common/olvexexport.h"

#include "calstart/calstartcommands.h"
#include "calstart/calstartrecord.h"
#include "calstart/calstatus.h"
#include "common/host.h"

#include <QList>
#include <QString>
#include <QWidget>

#include <memory>
#include <optional>

class QButtonGroup;
class QCheckBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QScrollArea;
class QVBoxLayout;

namespace olvex {

class UiServices;
struct CaughtError;

// The automatic calibration start settings of each calibration parameter (type 62): the list
// of parameters on the left, the selected one's calibration start record on the right (daily
// check, unit startup and normal-operation checks, the 26-operating-hour rule, the confirmation
// prompt), the manual start and abort buttons, and two status lines refreshed every ten
// seconds from the host's clock.
//
// The control never writes the record: Save posts a ChangeCalStartSettings command, and the
// buttons post channel writes; the service carries them out. Every handler catches its own
// errors; background failures go to the message log, user errors to a message box.
class OLVEX_WIDGETS_EXPORT DICalStart : public QWidget
{
    Q_OBJECT
public:
    explicit DICalStart(UiServices *ui = nullptr, QWidget *parent = nullptr);
    ~DICalStart() override;

    // Keeps the three objects, builds the parameter list and loads the first row (the settings
    // stay disabled without rows); starts the status timer. False when the list could not be
    // built (the failure is logged).
    bool Setup(std::shared_ptr<MessageLog> messageLog, std::shared_ptr<DataInterface> dataInterface,
               std::shared_ptr<void> third = nullptr);
    // Stops the status timer, then releases the three objects.
    void Teardown();

    // The width that shows the list and the settings panel in full.
    int DesiredWidth() const;

    // Handlers, public so that a host (or a test) can drive the control as the user would.
    void SelectParameter(int row);
    void cmdSave_Click();
    void cmdCancel_Click();
    void cmdClose_Click();
    void StartCalCheck();
    void AbortCal();
    void cmdTime_Click();
    void cmdHelp26_Click();
    void cmdHelpConfirm_Click();
    void UpdateOnlineCalStatus();
    void UpdateAutoCalStatus();
    void tmrUpdateOnlineCalStatus_IntervalExpired();
    // Checks and normalises a field as the operator leaves it; false (focus kept) when the
    // text cannot stand.
    bool ValidateField(QLineEdit *field);

    // State, for the host and the tests.
    int rowCount() const { return int(m_rows.size()); }
    int selectedRow() const { return m_selected; }
    QString rowCaption(int row) const;
    bool isDirty() const { return m_dirty; }
    // The entry as the fields hold it now.
    CalStartEntry entry() const;

    // The controls, by their names.
    QCheckBox *chkDisable() const { return m_chkDisable; }
    QLineEdit *txtTime() const { return m_txtTime; }
    QCheckBox *chkAfterStartup() const { return m_chkAfterStartup; }
    QCheckBox *chkAfterNormalOps() const { return m_chkAfterNormalOps; }
    QLineEdit *txtStartupDelay() const { return m_txtStartupDelay; }
    QLineEdit *txtNormalOpsDelay() const { return m_txtNormalOpsDelay; }
    QCheckBox *chkEvery26() const { return m_chkEvery26; }
    QCheckBox *chkConfirm() const { return m_chkConfirm; }
    QLineEdit *txtConfirmTimeout() const { return m_txtConfirmTimeout; }
    QLabel *lblOnlineCalStatus() const { return m_lblOnlineStatus; }
    QLabel *lblAutoCalStatus() const { return m_lblAutoStatus; }
    QPushButton *cmdStartCal() const { return m_cmdStart; }
    QPushButton *cmdAbortCal() const { return m_cmdAbort; }
    QPushButton *cmdSave() const { return m_cmdSave; }
    QPushButton *cmdCancel() const { return m_cmdCancel; }
    QPushButton *cmdTime() const { return m_cmdTime; }
    QWidget *fraConfirm() const;
    QLabel *lblNoData() const { return m_lblNoData; }
    bool hasStatusTimer() const { return tmrUpdateOnlineCalStatus != nullptr; }

Q_SIGNALS:
    void CloseClicked();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Row
    {
        ParameterPtr parameter;
        qint32 pid = 0;
        QString caption;
        QRadioButton *option = nullptr;
    };

    void buildControls();
    void buildList();
    void clearRows();
    // Reads the selected parameter's value once and shows it; withStatus: the status lines too.
    void loadSelected(bool withStatus = false);
    void showOnlineStatus(const StatusLine &line);
    void showStatus(const StatusLine &online, const StatusLine &autoCal);
    void applyEnabling();
    void setDefaults();
    void showEntry(const CalStartEntry &entry);
    void showNoData(bool noData);
    void edited();
    void triggerToggled(bool startup, bool checked);
    QWidget *makeUpDown(QLineEdit *field, int low, int high);
    // Builds and posts the change command for the selected row; true when posted.
    bool postChange();
    void refreshStatus();
    void logError(const QString &prefix, const CaughtError &error);
    QString selectedCaption() const;
    qint32 selectedPid() const;

    UiServices *m_ui;
    std::shared_ptr<MessageLog> mobjLog;
    std::shared_ptr<DataInterface> mobjDI;
    std::shared_ptr<void> mobjThird;
    IntervalPtr tmrUpdateOnlineCalStatus;

    QList<Row> m_rows;
    int m_selected = -1;
    std::optional<CalStartRecord> m_record;
    bool m_dirty = false;
    bool m_loading = false;
    bool m_inStartupToggle = false;
    bool m_inNormalToggle = false;

    QScrollArea *m_listArea = nullptr;
    QWidget *m_listPanel = nullptr;
    QVBoxLayout *m_listLayout = nullptr;
    QButtonGroup *m_options = nullptr;
    QScrollArea *m_settingsArea = nullptr;
    QWidget *m_settingsPanel = nullptr;
    QLabel *m_lblNoData = nullptr;
    QCheckBox *m_chkDisable = nullptr;
    QGroupBox *m_fraDaily = nullptr;
    QLabel *m_lblTime = nullptr;
    QLineEdit *m_txtTime = nullptr;
    QPushButton *m_cmdTime = nullptr;
    QCheckBox *m_chkSkipOffline = nullptr;
    QCheckBox *m_chkSkipDailyIfOnline = nullptr;
    QGroupBox *m_fraStartup = nullptr;
    QCheckBox *m_chkAfterStartup = nullptr;
    QLineEdit *m_txtStartupDelay = nullptr;
    QWidget *m_udStartupDelay = nullptr;
    QLabel *m_lblStartupTail = nullptr;
    QCheckBox *m_chkAfterNormalOps = nullptr;
    QLineEdit *m_txtNormalOpsDelay = nullptr;
    QWidget *m_udNormalOpsDelay = nullptr;
    QLabel *m_lblNormalOpsTail = nullptr;
    QCheckBox *m_chkSkipStartupIfOnline = nullptr;
    QGroupBox *m_fra26 = nullptr;
    QCheckBox *m_chkEvery26 = nullptr;
    QLabel *m_lblOnlineStatus = nullptr;
    QPushButton *m_cmdHelp26 = nullptr;
    QGroupBox *m_fraConfirm = nullptr;
    QCheckBox *m_chkConfirm = nullptr;
    QLabel *m_lblWait = nullptr;
    QLineEdit *m_txtConfirmTimeout = nullptr;
    QWidget *m_udConfirmTimeout = nullptr;
    QLabel *m_lblWaitTail = nullptr;
    QRadioButton *m_optRunOnTimeout = nullptr;
    QRadioButton *m_optSkipOnTimeout = nullptr;
    QPushButton *m_cmdHelpConfirm = nullptr;
    QPushButton *m_cmdStart = nullptr;
    QPushButton *m_cmdAbort = nullptr;
    QPushButton *m_cmdSave = nullptr;
    QPushButton *m_cmdCancel = nullptr;
    QPushButton *m_cmdClose = nullptr;
    QLabel *m_lblAutoStatus = nullptr;
};

} // namespace olvex
