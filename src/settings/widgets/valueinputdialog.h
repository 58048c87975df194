#pragma once

#include <QDialog>
#include <QString>

class QLabel;
class QLineEdit;
class QPushButton;

namespace olvex {

class UiServices;

// The general input dialog: a prompt, one line of text, OK and Cancel. The settings editor
// uses it for dates and times; the entry is checked by the caller after OK. Under the entry it
// shows how the text reads as a date or a time while the operator types.
class ValueInputDialog : public QDialog
{
    Q_OBJECT
public:
    explicit ValueInputDialog(UiServices *ui = nullptr, QWidget *parent = nullptr);

    void setPrompt(const QString &prompt);
    QString prompt() const;
    QString value() const;
    void setValue(const QString &text);
    // The data type the reading under the entry follows (2 date, 3 time, 4 both; 0, the
    // start, a date or a time as entered).
    void setReadingType(int dataType);

    QLineEdit *txtValue() const { return m_value; }
    QPushButton *cmdOK() const { return m_ok; }
    QPushButton *cmdCancel() const { return m_cancel; }

private:
    QLabel *m_prompt;
    QLineEdit *m_value;
    QLabel *m_reading;
    QPushButton *m_ok;
    QPushButton *m_cancel;
};

} // namespace olvex
