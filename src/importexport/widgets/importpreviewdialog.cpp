#include "importexport/widgets/importpreviewdialog.h"

#include "common/pid.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace olvex {

namespace texts = importexporttexts;
using texts::PreviewSort;

namespace {

namespace Column {
enum { Line, Pid, Setting, Current, InFile, Outcome, Count };
}

// Text colours that read on light and dark palettes alike.
QBrush colourOf(PreviewSort sort, const QPalette &palette)
{
    switch (sort) {
    case PreviewSort::Fail:
        return QColor(0xC0, 0x20, 0x20);
    case PreviewSort::OutsideRange:
        return QColor(0xB0, 0x6A, 0x00);
    case PreviewSort::Skip:
        return palette.placeholderText();
    case PreviewSort::Change:
        break;
    }
    return palette.text();
}

} // namespace

ImportPreviewDialog::ImportPreviewDialog(const QString &fileName, const ImportCounts &counts,
                                         const ImportPreview &preview, const QString &errorText,
                                         QWidget *parent)
    : QDialog(parent)
    , m_lines(new QTreeWidget(this))
{
    setObjectName(QStringLiteral("frmImportPreview"));
    setWindowTitle(tr("Import Preview"));
    m_lines->setObjectName(QStringLiteral("lsvPreview"));
    m_lines->setUniformRowHeights(true);
    m_lines->setHeaderLabels({tr("Line"), tr("PID"), tr("Setting"), tr("Current value"),
                              tr("Value in file"), tr("Outcome")});
    m_lines->header()->setStretchLastSection(true);

    for (const PreviewSort sort : texts::kPreviewSorts) {
        QList<QTreeWidgetItem *> rows;
        for (const ImportChange &c : preview.changes) {
            if (texts::sortOf(c) == sort)
                rows.append(new QTreeWidgetItem(QStringList{QString::number(c.lineNumber),
                                                            FormatPid(c.pid), c.name, c.currentText,
                                                            c.fileText, texts::previewOutcome(c)}));
        }
        for (const ImportRefusal &r : preview.refusals) {
            // A refused line has no setting to name: its own text stands in the Setting column.
            if (texts::sortOf(r) == sort)
                rows.append(new QTreeWidgetItem(QStringList{
                    QString::number(r.lineNumber), {}, r.line, {}, {}, texts::previewOutcome(r)}));
        }
        auto *heading
            = new QTreeWidgetItem(m_lines, {texts::previewSortHeading(sort, rows.size())});
        heading->setData(0, Qt::UserRole, int(sort));
        heading->setFirstColumnSpanned(true);
        QFont bold = heading->font(0);
        bold.setBold(true);
        heading->setFont(0, bold);
        heading->setForeground(0, colourOf(sort, palette()));
        heading->setFlags(Qt::ItemIsEnabled);
        for (QTreeWidgetItem *row : std::as_const(rows)) {
            row->setTextAlignment(Column::Line, Qt::AlignRight | Qt::AlignVCenter);
            row->setForeground(Column::Outcome, colourOf(sort, palette()));
            row->setToolTip(Column::Outcome, row->text(Column::Outcome));
        }
        heading->addChildren(rows);
        // The skipped lines are the normal lines of an own export: there if wanted, not in
        // the way.
        heading->setExpanded(sort != PreviewSort::Skip && !rows.isEmpty());
    }
    for (int column = 0; column + 1 < Column::Count; ++column)
        m_lines->resizeColumnToContents(column);

    auto *summary = new QLabel(texts::previewCounts(fileName, counts, preview, errorText), this);
    summary->setObjectName(QStringLiteral("lblSummary"));
    summary->setWordWrap(true);
    summary->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *import = buttons->addButton(tr("&Import"), QDialogButtonBox::AcceptRole);
    import->setObjectName(QStringLiteral("cmdImport"));
    QPushButton *close = buttons->addButton(QDialogButtonBox::Close);
    close->setObjectName(QStringLiteral("cmdClose"));
    close->setDefault(true);
    if (counts.modified == 0) {
        import->setEnabled(false);
        import->setToolTip(tr("The file would change no setting."));
    }
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(summary);
    layout->addWidget(m_lines, 1);
    layout->addWidget(buttons);
    resize(900, 560);
}

QTreeWidgetItem *ImportPreviewDialog::section(PreviewSort sort) const
{
    for (int i = 0; i < m_lines->topLevelItemCount(); ++i) {
        QTreeWidgetItem *heading = m_lines->topLevelItem(i);
        if (heading->data(0, Qt::UserRole).toInt() == int(sort))
            return heading;
    }
    return nullptr;
}

} // namespace olvex
