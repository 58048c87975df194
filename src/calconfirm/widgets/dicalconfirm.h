#pragma once

#include "common/olvexexport.h"

#include "calconfirm/calconfirmfunctions.h"
#include "common/host.h"
#include "common/xml.h"

#include <QHash>
#include <QList>
#include <QWidget>

#include <memory>

class QLabel;
class QScrollBar;

namespace olvex {

class DICalConfirmSingle;

// What NewCalConfirmPending carries: the PIDs whose rows the refresh added.
struct NewCalConfirmEvent
{
    QList<qint32> pids;
};

// The calibrations that wait for the operator to confirm or cancel them, one DICalConfirmSingle
// row each. Polls the realtime data every minute ("Update Calibration Confirmation Window" from
// the host's clock), adds a row when a calibration becomes pending, updates it while it stays
// pending, and when the pending state ends shows the outcome for one minute before the row goes.
//
// Every procedure catches its own errors and logs them under its code (CSET-0047 start-up,
// 0048 shut-down, 0049 clean-up, 0052 refresh, 0053 reading the realtime data). Teardown (also
// run by the destructor) unloads the rows, then releases the timer, the current-data reader,
// the data interface and the message log, in that order.
class OLVEX_WIDGETS_EXPORT DICalConfirm : public QWidget
{
    Q_OBJECT
public:
    explicit DICalConfirm(QWidget *parent = nullptr);
    ~DICalConfirm() override;

    // Keeps the objects and collects the calibration parameters that support confirmation;
    // false (and no timer) when there are none.
    bool Setup(std::shared_ptr<MessageLog> messageLog, std::shared_ptr<DataInterface> dataInterface,
               std::shared_ptr<CurrentDataReader> currentDataReader);
    void Teardown();

    bool Enabled() const { return isEnabled(); }
    void setEnabled(bool enabled) { QWidget::setEnabled(enabled); }
    void RefreshWindow();
    // Takes away the cleared row of pid at the end of its hold.
    void ClearPendingCal(qint32 pid);
    void mobjCalConfirmPendingInterval_IntervalExpired();

    // The rows that show, in index order.
    QList<DICalConfirmSingle *> visibleRows() const;
    // The row of pid still in the list (pending, or cleared and holding); null when none.
    DICalConfirmSingle *rowOf(qint32 pid) const;
    QList<qint32> calibrationPids() const { return m_pids; }
    bool hasRefreshTimer() const { return mobjCalConfirmPendingInterval != nullptr; }

    QLabel *lblNoPendingCals() const { return m_lblNoPendingCals; }
    QScrollBar *fsbRowScroll() const { return m_fsbRowScroll; }
    QWidget *picCalConfirmInner() const { return m_picCalConfirmInner; }

Q_SIGNALS:
    void NewCalConfirmPending(const olvex::NewCalConfirmEvent &event);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void refresh();
    void layoutRows();
    void logLine(int severity, const QString &text) const;
    DICalConfirmSingle *findRow(qint32 pid, bool cleared) const;
    DICalConfirmSingle *addRow(qint32 pid, const XmlNode &calStart, const PendingCalTexts &texts);
    void clearRow(DICalConfirmSingle *row, const QDateTime &now);
    void scrollRows(int value);

    std::shared_ptr<MessageLog> mobjLog;
    std::shared_ptr<DataInterface> mobjDI;
    std::shared_ptr<CurrentDataReader> mobjCDR;
    IntervalPtr mobjCalConfirmPendingInterval;
    QList<qint32> m_pids;
    QList<DICalConfirmSingle *> m_rows;
    // The rows still pending, by PID: each refresh looks up every calibration parameter.
    QHash<qint32, DICalConfirmSingle *> m_pendingRows;
    // The record text each pending row was last read from: the same text again changes nothing,
    // and the minute's refresh of an unchanged panel then parses nothing.
    QHash<qint32, QString> m_pendingTexts;
    int m_nextIndex = 0;
    bool m_showingRows = false;

    QWidget *m_picCalConfirmOuter;
    QWidget *m_picCalConfirmInner;
    QScrollBar *m_fsbRowScroll;
    QLabel *m_lblNoPendingCals;
};

} // namespace olvex
