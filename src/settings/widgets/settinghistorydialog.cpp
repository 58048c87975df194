#include "settings/widgets/settinghistorydialog.h"

#include "settings/widgets/dialogframe.h"

#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace olvex {

SettingHistoryDialog::SettingHistoryDialog(QWidget *parent)
    : QDialog(parent)
    , m_heading(makeSettingHeading(*this))
    , m_summary(new QLabel(this))
    , m_lines(new QTreeWidget(this))
{
    setObjectName(QStringLiteral("dlgSettingHistory"));
    setModal(true);
    m_summary->setObjectName(QStringLiteral("lblSummary"));
    m_summary->setWordWrap(true);
    m_lines->setObjectName(QStringLiteral("lsvHistory"));
    m_lines->setRootIsDecorated(false);
    m_lines->setUniformRowHeights(true);
    m_lines->setAlternatingRowColors(true);
    m_lines->setHeaderLabels({QStringLiteral("When"), QStringLiteral("User"),
                              QStringLiteral("Client"), QStringLiteral("Old Value"),
                              QStringLiteral("New Value")});
    auto *close = new QPushButton(QStringLiteral("Close"), this);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_heading);
    layout->addWidget(m_summary);
    layout->addWidget(m_lines, 1);
    layout->addLayout(dialogButtonRow(*this, close));
    resize(760, 380);
}

void SettingHistoryDialog::setHistory(const QString &name, const QString &unit,
                                      const QList<HistoryLine> &lines, bool truncated)
{
    setWindowTitle(u"History of " + name);
    setSettingHeading(*m_heading, name, unit);
    m_lines->clear();
    for (const HistoryLine &line : lines) {
        auto *item = new QTreeWidgetItem(
            m_lines, {line.when, line.user, line.client, line.oldValue, line.newValue});
        item->setToolTip(3, line.oldValue);
        item->setToolTip(4, line.newValue);
    }
    if (lines.isEmpty()) {
        m_summary->setText(QStringLiteral("No change of this setting's value is recorded."));
    } else {
        const QString count = QString::number(lines.size());
        if (truncated) {
            m_summary->setText(u"The latest " + count
                               + u" changes, newest first (older ones are not shown).");
        } else {
            m_summary->setText(count + (lines.size() == 1 ? u" change" : u" changes")
                               + u", newest first.");
        }
    }
    for (int column = 0; column < m_lines->columnCount(); ++column) {
        m_lines->resizeColumnToContents(column);
        m_lines->setColumnWidth(column, m_lines->columnWidth(column) + 16);
    }
    if (QTreeWidgetItem *first = m_lines->topLevelItem(0)) {
        m_lines->setCurrentItem(first);
    }
}

} // namespace olvex
