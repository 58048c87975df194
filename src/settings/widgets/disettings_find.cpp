// DISettings: finding settings by name or PID, sorting the list by a column, and what a row
// tells on its own: its tooltip and the amber mark of a value outside the recommended range.
#include "settings/widgets/disettings.h"

#include "common/audittrail.h"
#include "common/error.h"
#include "common/vocabulary.h"
#include "common/widgets/keyedtree.h"
#include "common/widgets/reportlist.h"
#include "settings/settingcompare.h"
#include "settings/settingdisplay.h"
#include "settings/widgets/settinggroups.h"
#include "settings/widgets/settingicons.h"

#include <QAction>
#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>
#include <QToolTip>
#include <QTreeWidgetItemIterator>

#include <functional>

namespace olvex {

namespace {

// Dark enough to read on a white list, plainly not the text colour.
const QColor kAmber(0xB0, 0x6A, 0x00);

QFont boldFont(const QTreeWidgetItem &row)
{
    QFont font = row.font(1);
    font.setBold(true);
    return font;
}

} // namespace

void DISettings::buildFindBar(QWidget *bar)
{
    auto *label = new QLabel(QStringLiteral("&Find:"), bar);
    m_txtFind = new QLineEdit(bar);
    m_txtFind->setObjectName(QStringLiteral("txtFind"));
    m_txtFind->setPlaceholderText(QStringLiteral("Setting name or PID (Ctrl+F)"));
    m_txtFind->setClearButtonEnabled(true);
    m_txtFind->setToolTip(
        QStringLiteral("Shows only the settings whose name holds this text, or the setting of "
                       "this PID. Escape shows all again."));
    label->setBuddy(m_txtFind);

    auto *focusFind = new QAction(this);
    focusFind->setShortcut(QKeySequence::Find);
    focusFind->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    addAction(focusFind);
    m_txtFind->installEventFilter(this); // Escape clears it

    m_actRefresh = new QAction(QStringLiteral("Refresh"), this);
    m_actRefresh->setObjectName(QStringLiteral("actRefresh"));
    m_actRefresh->setShortcut(QKeySequence::Refresh);
    m_actRefresh->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    m_actRefresh->setToolTip(QStringLiteral("Read the values of this group again now (F5)"));
    addAction(m_actRefresh);
    auto *refreshButton = new QToolButton(bar);
    refreshButton->setObjectName(QStringLiteral("cmdRefresh"));
    refreshButton->setDefaultAction(m_actRefresh);
    refreshButton->setToolButtonStyle(Qt::ToolButtonTextOnly);

    auto *layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 4);
    layout->addWidget(label);
    layout->addWidget(m_txtFind, 1);
    layout->addWidget(refreshButton);

    connect(focusFind, &QAction::triggered, this, [this] {
        m_txtFind->setFocus(Qt::ShortcutFocusReason);
        m_txtFind->selectAll();
    });
    connect(m_txtFind, &QLineEdit::textChanged, this, &DISettings::ApplyFind);
    connect(m_actRefresh, &QAction::triggered, this, &DISettings::Refresh);

    QHeaderView *header = m_lsvSettings->header();
    header->setSectionsClickable(true);
    connect(header, &QHeaderView::sectionClicked, this, [this](int column) {
        guarded(
            [&] {
                // Ascending, descending, then the group's own order again.
                if (column != m_sortColumn) {
                    m_sortColumn = column;
                    m_sortOrder = Qt::AscendingOrder;
                } else if (m_sortOrder == Qt::AscendingOrder) {
                    m_sortOrder = Qt::DescendingOrder;
                } else {
                    m_sortColumn = -1;
                    Refresh();
                    return;
                }
                applySortOrder();
            },
            [this](const CaughtError &error) { RaiseProblem(error.errorText()); });
    });
    m_lsvSettings->viewport()->installEventFilter(this);
}

void DISettings::buildContextMenu()
{
    m_lsvSettings->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_lsvSettings, &QWidget::customContextMenuRequested, this, [this](const QPoint &at) {
        guarded(
            [&] {
                QTreeWidgetItem *row = m_lsvSettings->itemAt(at);
                if (!row) {
                    return;
                }
                if (row != m_lsvSettings->selectedRow()) {
                    m_lsvSettings->selectRow(row);
                    lsvSettings_ItemClick(row);
                }
                QMenu menu(this);
                menu.setToolTipsVisible(true);
                for (QPushButton *button : {m_cmdChange, m_cmdChangeToDefault, m_cmdHistory}) {
                    QAction *action = menu.addAction(button->text());
                    action->setEnabled(button->isEnabled());
                    action->setToolTip(button->toolTip());
                    connect(action, &QAction::triggered, button, &QPushButton::click);
                }
                menu.exec(m_lsvSettings->viewport()->mapToGlobal(at));
            },
            [this](const CaughtError &error) { RaiseProblem(error.errorText()); });
    });
    connect(m_lsvSettings, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *row) {
        const bool defined = row && !ReportList::rowKey(row).isEmpty();
        const bool recorded = dynamic_cast<AuditTrail *>(mobjDI.get()) != nullptr;
        m_cmdHistory->setEnabled(defined && recorded);
        m_cmdHistory->setToolTip(!recorded ? QStringLiteral("This site keeps no record of changes.")
                                 : !defined
                                     ? QStringLiteral("Select a setting first.")
                                     : u"Show every recorded change of " + row->text(0) + u'.');
    });
    m_cmdHistory->setEnabled(false);
    m_cmdHistory->setToolTip(QStringLiteral("Select a setting first."));
}

void DISettings::ApplyFind(const QString &text)
{
    guarded(
        [&] {
            m_find = SettingFind(text);
            m_rowsFiltered = true; // the shown rows may hold the last find's marks
            applyFindToTree();
            applyFindToRows();
        },
        [this](const CaughtError &error) { RaiseProblem(error.errorText()); });
}

void DISettings::applyFindToTree()
{
    if (!mobjDI) {
        return;
    }
    if (!m_find.isEmpty() && m_groupMembers.isEmpty()) {
        const std::shared_ptr<PidDirectory> dir = directory();
        for (QTreeWidgetItemIterator it(m_tvwGroups); *it; ++it) {
            const qint32 group = groupNumberFromKey(KeyedTree::nodeKey(*it));
            if (!dir->PidExists(group)) {
                continue;
            }
            QList<qint32> pids;
            for (const Value &member :
                 dir->GetPid(group, true)->GetAttribute(GroupAttr::Members).toArray()) {
                pids.append(qint32(member.toInteger().value_or(0)));
            }
            const ParameterList definitions = dir->GetPids(pids);
            auto &members = m_groupMembers[group];
            for (qsizetype i = 0; i < pids.size(); ++i) {
                const ParameterPtr &definition = definitions.value(i);
                members.append({pids[i], definition ? definition->GetName(0) : QString()});
            }
        }
    }
    // A node shows when one of its settings or one of the nodes below it is found.
    const std::function<bool(QTreeWidgetItem *)> show = [&](QTreeWidgetItem *node) {
        bool found = false;
        for (const auto &[pid, name] :
             m_groupMembers.value(groupNumberFromKey(KeyedTree::nodeKey(node)))) {
            found = found || m_find.matches(name, pid);
        }
        for (int i = 0; i < node->childCount(); ++i) {
            found = show(node->child(i)) || found;
        }
        node->setHidden(!m_find.isEmpty() && !found);
        if (found && !m_find.isEmpty()) {
            node->setExpanded(true);
        }
        return m_find.isEmpty() || found;
    };
    QTreeWidgetItem *firstFound = nullptr;
    for (int i = 0; i < m_tvwGroups->topLevelItemCount(); ++i) {
        show(m_tvwGroups->topLevelItem(i));
    }
    if (m_find.isEmpty()) {
        return;
    }
    for (QTreeWidgetItemIterator it(m_tvwGroups); *it && !firstFound; ++it) {
        const auto &members = m_groupMembers.value(groupNumberFromKey(KeyedTree::nodeKey(*it)));
        for (const auto &[pid, name] : members) {
            if (!(*it)->isHidden() && m_find.matches(name, pid)) {
                firstFound = *it;
                break;
            }
        }
    }
    QTreeWidgetItem *shown = m_tvwGroups->selectedNode();
    bool shownHolds = false;
    if (shown && !shown->isHidden()) {
        for (const auto &[pid, name] :
             m_groupMembers.value(groupNumberFromKey(KeyedTree::nodeKey(shown)))) {
            shownHolds = shownHolds || m_find.matches(name, pid);
        }
    }
    if (!shownHolds && firstFound) {
        m_tvwGroups->selectNode(firstFound);
        tvwGroups_NodeClick(firstFound);
    }
}

void DISettings::applyFindToRows()
{
    // Without a find a fresh fill hides nothing: nothing to walk.
    if (m_find.isEmpty() && !m_rowsFiltered) {
        return;
    }
    m_rowsFiltered = !m_find.isEmpty();
    for (ReportList *list : {m_lsvSettings, m_lsvAlarmSettings}) {
        QTreeWidgetItem *selected = list->selectedRow();
        for (int i = 0; i < list->rowCount(); ++i) {
            QTreeWidgetItem *row = list->row(i);
            row->setHidden(!m_find.matches(row->text(0), PidFromTag(ReportList::rowTag(row))));
        }
        if (selected && selected->isHidden()) {
            list->selectRow(nullptr);
            if (list == m_lsvSettings) {
                disableSettingButtons(QStringLiteral("Select a setting first."));
            } else {
                disableAlarmButton(QStringLiteral("Select an alarm first."));
            }
        }
    }
}

void DISettings::applySortOrder()
{
    QHeaderView *header = m_lsvSettings->header();
    header->setSortIndicatorShown(m_sortColumn >= 0);
    if (m_sortColumn < 0) {
        return;
    }
    header->setSortIndicator(m_sortColumn, m_sortOrder);
    m_lsvSettings->sortItems(m_sortColumn, m_sortOrder);
    if (QTreeWidgetItem *selected = m_lsvSettings->selectedRow()) {
        m_lsvSettings->scrollToItem(selected);
    }
}

QString DISettings::RowToolTip(QTreeWidgetItem *row)
{
    if (!row || !mobjDI) {
        return {};
    }
    QStringList lines{row->text(0)};
    const qint32 pid = PidFromTag(ReportList::rowTag(row));
    if (const QString unit = unitText(pid); !unit.isEmpty()) {
        lines << u"Unit: " + unit;
    }
    const QString range = row->columnCount() > 3 ? row->text(3) : QString();
    lines << (range.trimmed().isEmpty() ? QStringLiteral("No recommended range.")
                                        : u"Recommended range: " + range);
    if (row->foreground(1).color() == kAmber) {
        lines << QStringLiteral("The value lies outside the recommended range.");
    }
    if (const QString meaning = settingIconMeaning(ReportList::smallIcon(row));
        !meaning.isEmpty()) {
        lines << meaning;
    }
    return lines.join(u'\n');
}

bool DISettings::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_txtFind && event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape
        && !m_txtFind->text().isEmpty()) {
        m_txtFind->clear();
        return true;
    }
    if (event->type() == QEvent::ToolTip && watched == m_lsvSettings->viewport()) {
        guarded(
            [&] {
                const auto *help = static_cast<QHelpEvent *>(event);
                const QString text = RowToolTip(m_lsvSettings->itemAt(help->pos()));
                if (text.isEmpty()) {
                    QToolTip::hideText();
                } else {
                    QToolTip::showText(help->globalPos(), text, m_lsvSettings->viewport());
                }
            },
            [this](const CaughtError &error) { RaiseProblem(error.errorText()); });
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void DISettings::showRowFacts(QTreeWidgetItem *row, const Parameter &definition,
                              const Value &shownValue)
{
    // The value the row shows, as read for it: a second read would cost the site a query a row.
    const bool outside
        = definition.GetAttribute(SettingAttr::DataType).toInteger() == SettingType::Number
          && outsideRecommendedRange(shownValue,
                                     definition.GetAttribute(SettingAttr::RecommendedLow),
                                     definition.GetAttribute(SettingAttr::RecommendedHigh));
    // Rows in range (nearly all) are left untouched: a fill of thousands pays nothing for it.
    if (!outside && !row->data(1, Qt::ForegroundRole).isValid()) {
        return;
    }
    row->setData(1, Qt::ForegroundRole, outside ? QVariant(QBrush(kAmber)) : QVariant());
    row->setData(1, Qt::FontRole, outside ? QVariant(boldFont(*row)) : QVariant());
}

} // namespace olvex
