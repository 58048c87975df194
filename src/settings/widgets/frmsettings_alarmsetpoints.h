#pragma once

#include "common/olvexexport.h"
#include "common/value.h"

#include <QDialog>

#include <array>

class QLabel;
class QLineEdit;
class QPushButton;

namespace olvex {

class UiServices;

// The four setpoints of one alarm parameter. OK checks that each setpoint is a number or
// blank, and that no lower setpoint exceeds a higher one; the dialog closes only when both
// hold. Cancel closes it and leaves it cancelled.
class OLVEX_WIDGETS_EXPORT frmSettings_AlarmSetpoints : public QDialog
{
    Q_OBJECT
public:
    explicit frmSettings_AlarmSetpoints(UiServices *ui = nullptr, QWidget *parent = nullptr);

    Value SetpointHH() const { return setpoint(0); }
    void setSetpointHH(const Value &value) { setSetpoint(0, value); }
    Value SetpointH() const { return setpoint(1); }
    void setSetpointH(const Value &value) { setSetpoint(1, value); }
    Value SetpointL() const { return setpoint(2); }
    void setSetpointL(const Value &value) { setSetpoint(2, value); }
    Value SetpointLL() const { return setpoint(3); }
    void setSetpointLL(const Value &value) { setSetpoint(3, value); }

    // By rank: 0 high high, 1 high, 2 low, 3 low low.
    Value setpoint(int rank) const;
    void setSetpoint(int rank, const Value &value);
    QLineEdit *field(int rank) const { return m_fields.at(size_t(rank)); }
    // Names the alarm parameter (and its unit) in the dialog's first line.
    void setSetting(const QString &name, const QString &unit);
    bool Cancelled() const { return result() != QDialog::Accepted; }

    QPushButton *cmdOK() const { return m_ok; }
    QPushButton *cmdCancel() const { return m_cancel; }

public Q_SLOTS:
    // The checks of OK; closes the dialog only when they pass.
    void accept() override;

private:
    UiServices *m_ui;
    std::array<QLineEdit *, 4> m_fields{};
    QPushButton *m_ok;
    QPushButton *m_cancel;
    QLabel *m_heading;
};

} // namespace olvex
