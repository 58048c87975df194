#pragma once

#include "common/olvexexport.h"

#include "calconfirm/calconfirmfunctions.h"
#include "common/host.h"
#include "common/xml.h"

#include <QWidget>

#include <memory>
#include <optional>

class QGridLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace olvex {

// One calibration waiting for the operator: its reason, scheduled start time and what happens
// at the deadline, with Confirm and Cancel. The panel (DICalConfirm) creates, updates and
// clears the rows; a cleared row shows for its one-minute HoldInterval what happens next
// ("Starting Now" or "Canceling Now") and then asks the panel to take it away (HoldExpired).
//
// Every procedure catches its own errors and logs them under its code (CSET-0042 clean-up,
// 0043 Setup, 0044 AddPendingCal, 0045 ClearPendingCal, 0046 the buttons).
class OLVEX_WIDGETS_EXPORT DICalConfirmSingle : public QWidget
{
    Q_OBJECT
public:
    explicit DICalConfirmSingle(QWidget *parent = nullptr);
    ~DICalConfirmSingle() override;

    // document: the calibration's record, or its CalStart element.
    void Setup(std::shared_ptr<MessageLog> messageLog, std::shared_ptr<DataInterface> dataInterface,
               std::shared_ptr<CurrentDataReader> currentDataReader, XmlNode document);
    // Shows the pending calibration of pid from the row's document; raises the add message
    // (isNew) or, when the texts changed, the changed message.
    void AddPendingCal(qint32 pid, bool isNew);
    // The record the next AddPendingCal shows (the panel's newer reading), with the texts the
    // panel already read from it.
    void setDocument(XmlNode document, const PendingCalTexts &texts)
    {
        mobjXml = std::move(document);
        m_readTexts = texts;
    }
    // The pending state ended: "Starting Now" unless the operator canceled. With log, raises
    // and logs the clear message.
    void ClearPendingCal(bool log);
    void HoldInterval_IntervalExpired();
    // The one-shot timer after which the cleared row goes away; the row owns it from now on.
    void setHoldInterval(IntervalPtr interval);
    // Stops the hold timer; the row keeps the object until its clean-up, since the timer may be
    // the one whose expiry is being handled.
    void stopHoldInterval();
    // Releases the objects given to Setup and the hold timer (also run by the destructor).
    void cleanUp();

    bool Enabled() const { return isEnabled(); }
    void setEnabled(bool enabled) { QWidget::setEnabled(enabled); }
    qint32 Param() const { return m_pid; }
    void setParam(qint32 pid) { m_pid = pid; }
    bool ShouldBeVisible() const { return m_shouldBeVisible; }
    void setShouldBeVisible(bool visible) { m_shouldBeVisible = visible; }
    int Height() const { return height(); }
    void setHeight(int height) { resize(width(), height); }
    int Top() const { return y(); }
    void setTop(int top) { move(x(), top); }
    bool Visible() const { return !isHidden(); }
    int Index() const { return m_index; }
    void setIndex(int index) { m_index = index; }
    // True once ClearPendingCal ran: the row waits for its hold to end.
    bool isCleared() const { return m_cleared; }

    void btnConfirmCal_Click();
    void btnCancelCal_Click();

    QGroupBox *fraCalConfirm() const { return m_fraCalConfirm; }
    QLabel *lblCalReason() const { return m_lblCalReason; }
    QLabel *lblStartTime() const { return m_lblStartTime; }
    QLineEdit *txtReason() const { return m_txtReason; }
    QLineEdit *txtStartTime() const { return m_txtStartTime; }
    QLabel *txtDefaultAction() const { return m_txtDefaultAction; }
    QPushButton *btnConfirmCal() const { return m_btnConfirmCal; }
    QPushButton *btnCancelCal() const { return m_btnCancelCal; }
    // The default-action text as read (with its CR LF), as it is compared and raised.
    const PendingCalTexts &texts() const { return m_texts; }

Q_SIGNALS:
    // The hold ended: the panel removes the row of this PID.
    void HoldExpired(qint32 pid);

private:
    void answer(bool confirm);
    // Puts the buttons back side by side, both enabled, with their captions.
    void resetButtons();
    void showTexts(const PendingCalTexts &texts);
    void logError(const QString &code, const QString &errorText) const;
    QString pidText() const;
    QString parameterName() const;

    std::shared_ptr<MessageLog> mobjLog;
    std::shared_ptr<DataInterface> mobjDI;
    std::shared_ptr<CurrentDataReader> mobjCDR;
    XmlNode mobjXml;
    std::optional<PendingCalTexts> m_readTexts;
    ParameterPtr mobjParam;
    IntervalPtr m_holdInterval;
    qint32 m_pid = 0;
    int m_index = 0;
    bool m_shouldBeVisible = false;
    bool m_cleared = false;
    PendingCalTexts m_texts;

    QGroupBox *m_fraCalConfirm;
    QGridLayout *m_grid;
    QLabel *m_lblCalReason;
    QLabel *m_lblStartTime;
    QLineEdit *m_txtReason;
    QLineEdit *m_txtStartTime;
    QLabel *m_txtDefaultAction;
    QPushButton *m_btnConfirmCal;
    QPushButton *m_btnCancelCal;
};

} // namespace olvex
