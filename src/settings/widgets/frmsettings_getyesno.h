#pragma once

#include "common/olvexexport.h"

#include <QDialog>
#include <QString>

#include <optional>

class QLabel;
class QPushButton;
class QRadioButton;

namespace olvex {

class UiServices;

// The entry of a two-state setting (Yes/No, On/Off). Modal; NewValue is the chosen state, or
// empty when the dialog was closed without OK.
class OLVEX_WIDGETS_EXPORT frmSettings_GetYesNo : public QDialog
{
    Q_OBJECT
public:
    explicit frmSettings_GetYesNo(UiServices *ui = nullptr, QWidget *parent = nullptr);

    void SetCaptions(const QString &falseCaption, const QString &trueCaption);
    // Names the setting in the dialog's first line.
    void setSetting(const QString &name);
    // Preselects the setting's present state; nothing is chosen while it is unknown.
    void setCurrentValue(std::optional<bool> value);
    std::optional<bool> NewValue() const;

    QRadioButton *optFalse() const { return m_false; }
    QRadioButton *optTrue() const { return m_true; }
    QPushButton *cmdOK() const { return m_ok; }
    QPushButton *cmdCancel() const { return m_cancel; }

    void done(int result) override;

private:
    void updateOk();

    QRadioButton *m_false;
    QRadioButton *m_true;
    QPushButton *m_ok;
    QPushButton *m_cancel;
    QLabel *m_heading;
    std::optional<bool> m_newValue;
};

} // namespace olvex
