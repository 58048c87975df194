#pragma once

#include "importexport/importexporttexts.h"
#include "importexport/settingsimportexport.h"

#include <QDialog>

class QTreeWidget;
class QTreeWidgetItem;

namespace olvex {

// What an import of a file would do, sorted: the lines that would fail (with the reason), the
// changes outside the recommended range, the plain changes, and the lines skipped as the site's
// own export has them (read-only, blank). The counts stand at the top, in the present tense:
// nothing has been changed yet. Accepting it ("Import") asks for the real import; closing it
// changes nothing.
class ImportPreviewDialog : public QDialog
{
    Q_OBJECT
public:
    ImportPreviewDialog(const QString &fileName, const ImportCounts &counts,
                        const ImportPreview &preview, const QString &errorText,
                        QWidget *parent = nullptr);

    QTreeWidget *lines() const { return m_lines; }
    // The heading row of a sort; its children are the lines of that sort in file order.
    QTreeWidgetItem *section(importexporttexts::PreviewSort sort) const;

private:
    QTreeWidget *m_lines;
};

} // namespace olvex
