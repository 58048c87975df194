#pragma once

#include "common/olvexexport.h"

#include <QDialog>
#include <QString>

class QLabel;
class QLineEdit;
class QPushButton;

namespace olvex {

class UiServices;

// The entry of a number or text setting: the current and default values for reference, and the
// new value. Modal; NewValue is read after it was accepted. Cancel closes it with no new value.
class OLVEX_WIDGETS_EXPORT frmSettings_GetNumber : public QDialog
{
    Q_OBJECT
public:
    explicit frmSettings_GetNumber(UiServices *ui = nullptr, QWidget *parent = nullptr);

    QString CurrentValue() const;
    void setCurrentValue(const QString &text);
    QString DefaultValue() const;
    void setDefaultValue(const QString &text);
    QString NewValue() const;
    void setNewValue(const QString &text);
    // A hint below the entry, e.g. the recommended range; hidden when empty.
    void setHint(const QString &text);
    // Names the setting (and its unit) in the dialog's first line and, for a number setting,
    // shows under the entry how it reads while the operator types.
    void setSetting(const QString &name, const QString &unit, int dataType);

    QLineEdit *txtNewValue() const { return m_newValue; }
    QPushButton *cmdOK() const { return m_ok; }
    QPushButton *cmdCancel() const { return m_cancel; }

private:
    QLineEdit *m_currentValue;
    QLineEdit *m_defaultValue;
    QLineEdit *m_newValue;
    QLabel *m_heading;
    QLabel *m_reading;
    QLabel *m_hint;
    QPushButton *m_ok;
    QPushButton *m_cancel;
};

} // namespace olvex
