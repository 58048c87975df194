#include "importexport/widgets/importpreviewdialog.h"

#include "common/pid.h"
#include "importexport/importexporttexts.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace olvex {

namespace {

QTreeWidget *makeList(const QStringList &headers, QWidget *parent)
{
    auto *list = new QTreeWidget(parent);
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setAlternatingRowColors(true);
    list->setHeaderLabels(headers);
    list->header()->setStretchLastSection(true);
    return list;
}

} // namespace

ImportPreviewDialog::ImportPreviewDialog(const QString &fileName, const ImportCounts &counts,
                                         const ImportPreview &preview, const QString &errorText,
                                         QWidget *parent)
    : QDialog(parent)
    , m_changes(makeList(
          {tr("Line"), tr("PID"), tr("Setting"), tr("Current value"), tr("Value in file")}, this))
    , m_refusals(makeList({tr("Line"), tr("Reason"), tr("Text of the line")}, this))
{
    setObjectName(QStringLiteral("frmImportPreview"));
    setWindowTitle(tr("Import Preview"));
    m_changes->setObjectName(QStringLiteral("lsvChanges"));
    m_refusals->setObjectName(QStringLiteral("lsvRefusals"));

    QList<QTreeWidgetItem *> rows;
    rows.reserve(preview.changes.size());
    for (const ImportChange &c : preview.changes) {
        rows.append(new QTreeWidgetItem(QStringList{QString::number(c.lineNumber), FormatPid(c.pid),
                                                    c.name, c.currentText, c.fileText}));
    }
    m_changes->addTopLevelItems(rows);
    rows.clear();
    for (const ImportRefusal &r : preview.refusals) {
        rows.append(
            new QTreeWidgetItem(QStringList{QString::number(r.lineNumber), r.reason, r.line}));
    }
    m_refusals->addTopLevelItems(rows);
    for (QTreeWidget *list : {m_changes, m_refusals}) {
        for (int column = 0; column + 1 < list->columnCount(); ++column)
            list->resizeColumnToContents(column);
    }

    auto *summary = new QLabel(importexporttexts::importSummary(fileName, counts, errorText), this);
    summary->setObjectName(QStringLiteral("lblSummary"));
    summary->setWordWrap(true);
    summary->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *import = buttons->addButton(tr("&Import"), QDialogButtonBox::AcceptRole);
    import->setObjectName(QStringLiteral("cmdImport"));
    QPushButton *close = buttons->addButton(QDialogButtonBox::Close);
    close->setObjectName(QStringLiteral("cmdClose"));
    close->setDefault(true);
    if (preview.changes.isEmpty()) {
        import->setEnabled(false);
        import->setToolTip(tr("The file would change no setting."));
    }
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    auto *changesLabel
        = new QLabel(tr("%n setting(s) would change:", nullptr, int(preview.changes.size())), this);
    changesLabel->setBuddy(m_changes);
    layout->addWidget(changesLabel);
    layout->addWidget(m_changes, 3);
    auto *refusalsLabel = new QLabel(
        tr("%n line(s) would be refused:", nullptr, int(preview.refusals.size())), this);
    refusalsLabel->setBuddy(m_refusals);
    layout->addWidget(refusalsLabel);
    layout->addWidget(m_refusals, 2);
    layout->addWidget(summary);
    layout->addWidget(buttons);
    resize(820, 560);
}

} // namespace olvex
