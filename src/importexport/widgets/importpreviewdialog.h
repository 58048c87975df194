#pragma once

#include "importexport/settingsimportexport.h"

#include <QDialog>

class QTreeWidget;

namespace olvex {

// What an import of a file would do: every setting it would change (PID, name, current value,
// value in the file), every line it would refuse and why, and the summary it would show.
// Accepting it ("Import") asks for the real import; closing it changes nothing.
class ImportPreviewDialog : public QDialog
{
    Q_OBJECT
public:
    ImportPreviewDialog(const QString &fileName, const ImportCounts &counts,
                        const ImportPreview &preview, const QString &errorText,
                        QWidget *parent = nullptr);

    QTreeWidget *changesList() const { return m_changes; }
    QTreeWidget *refusalsList() const { return m_refusals; }

private:
    QTreeWidget *m_changes;
    QTreeWidget *m_refusals;
};

} // namespace olvex
