#pragma once

#include "importexport/settingsimportexport.h"

#include <QGroupBox>

class QLabel;
class QPushButton;
class QTreeWidget;

namespace olvex {

class UiServices;

// The outcome of the last import, kept on the panel after its message box is gone: the summary
// and every line of the file that was not changed as asked (line number, reason, the line),
// the failures first. "Save List..." writes both to a text file.
class ImportResultView : public QGroupBox
{
    Q_OBJECT
public:
    explicit ImportResultView(UiServices &ui, QWidget *parent = nullptr);

    void showResult(const QString &summary, const QList<ImportRefusal> &lines);

    QTreeWidget *lines() const { return m_lines; }

private:
    void saveList();

    UiServices &m_ui;
    QLabel *m_summary;
    QTreeWidget *m_lines;
    QPushButton *m_save;
    QString m_summaryText;
    QList<ImportRefusal> m_lineList;
};

} // namespace olvex
