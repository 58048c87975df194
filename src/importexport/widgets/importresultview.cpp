#include "importexport/widgets/importresultview.h"

#include "common/error.h"
#include "common/widgets/uiservices.h"
#include "importexport/importexporttexts.h"

#include <QDir>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSaveFile>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace olvex {

namespace texts = importexporttexts;

ImportResultView::ImportResultView(UiServices &ui, QWidget *parent)
    : QGroupBox(tr("Last Import"), parent)
    , m_ui(ui)
    , m_summary(new QLabel(this))
    , m_lines(new QTreeWidget(this))
    , m_save(new QPushButton(tr("&Save List..."), this))
{
    setObjectName(QStringLiteral("fraImportResult"));
    m_summary->setObjectName(QStringLiteral("lblImportResult"));
    m_summary->setWordWrap(true);
    m_summary->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_lines->setObjectName(QStringLiteral("lsvImportResult"));
    m_lines->setRootIsDecorated(false);
    m_lines->setUniformRowHeights(true);
    m_lines->setAlternatingRowColors(true);
    m_lines->setHeaderLabels({tr("Line"), tr("Reason"), tr("Text of the line")});
    m_lines->setAccessibleName(tr("Lines not changed as the file asked"));
    m_save->setObjectName(QStringLiteral("cmdSaveImportResult"));
    m_save->setAutoDefault(false);
    m_save->setToolTip(tr("Save the summary and the list to a text file"));

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_summary);
    layout->addWidget(m_lines, 1);
    layout->addWidget(m_save, 0, Qt::AlignRight);
    connect(m_save, &QPushButton::clicked, this, &ImportResultView::saveList);
    setVisible(false);
}

void ImportResultView::showResult(const QString &summary, const QList<ImportRefusal> &lines)
{
    m_summaryText = summary;
    // What failed comes first; the skipped lines of an own export follow.
    m_lineList = lines;
    std::stable_sort(
        m_lineList.begin(), m_lineList.end(),
        [](const ImportRefusal &a, const ImportRefusal &b) { return !a.skipped && b.skipped; });
    m_summary->setText(summary);
    m_lines->clear();
    QList<QTreeWidgetItem *> rows;
    rows.reserve(m_lineList.size());
    for (const ImportRefusal &r : std::as_const(m_lineList)) {
        auto *row
            = new QTreeWidgetItem(QStringList{QString::number(r.lineNumber), r.reason, r.line});
        row->setTextAlignment(0, Qt::AlignRight | Qt::AlignVCenter);
        if (r.skipped)
            row->setForeground(1, palette().placeholderText());
        rows.append(row);
    }
    m_lines->addTopLevelItems(rows);
    m_lines->resizeColumnToContents(0);
    m_lines->resizeColumnToContents(1);
    m_lines->setColumnWidth(1, qMin(m_lines->columnWidth(1), 520));
    m_lines->setVisible(!m_lineList.isEmpty());
    m_save->setEnabled(true);
    setVisible(true);
}

void ImportResultView::saveList()
{
    guarded(
        [&] {
            const QString name = m_ui.getSaveFileName(
                this, tr("Save Import Result"), QString(),
                QStringLiteral("Text Files (*.txt)|*.txt|All Files (*.*)|*.*"),
                QStringLiteral(".txt"));
            if (name.isEmpty())
                return;
            QSaveFile file(name);
            const QByteArray text = texts::importResultReport(m_summaryText, m_lineList)
                                        .toUtf8()
                                        .replace("\n", "\r\n");
            if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()
                || !file.commit()) {
                m_ui.ShowMessageBox(tr("Could not save '%1': %2")
                                        .arg(QDir::toNativeSeparators(name), file.errorString()),
                                    MessageBoxStyle::Exclamation, m_ui.applicationTitle());
            }
        },
        [&](const CaughtError &error) {
            m_ui.ShowMessageBox(error.errorText(), MessageBoxStyle::Exclamation,
                                m_ui.applicationTitle());
        });
}

} // namespace olvex
