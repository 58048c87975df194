#pragma once

#include "settings/settinghistory.h"

#include <QDialog>

class QLabel;
class QTreeWidget;

namespace olvex {

// The recorded changes of one setting, newest first: when, who, from which client, the old
// and the new value. Read-only; Close or Escape ends it.
class SettingHistoryDialog : public QDialog
{
    Q_OBJECT
public:
    explicit SettingHistoryDialog(QWidget *parent = nullptr);

    // name and unit head the dialog; truncated says that older changes are left out.
    void setHistory(const QString &name, const QString &unit, const QList<HistoryLine> &lines,
                    bool truncated);
    QTreeWidget *lines() const { return m_lines; }
    QLabel *summary() const { return m_summary; }

private:
    QLabel *m_heading;
    QLabel *m_summary;
    QTreeWidget *m_lines;
};

} // namespace olvex
