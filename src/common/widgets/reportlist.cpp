#include "common/widgets/reportlist.h"

#include <QHeaderView>
#include <QKeyEvent>

namespace olvex {

namespace {

enum Role { KeyRole = Qt::UserRole + 1, TagRole, IconRole };

} // namespace

ReportList::ReportList(QWidget *parent)
    : QTreeWidget(parent)
{
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setIconSize(QSize(16, 16));
    header()->setStretchLastSection(true);
    header()->setSectionsMovable(false);

    connect(this, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem *current, QTreeWidgetItem *) {
                if (!m_selectingInCode && current) {
                    Q_EMIT rowClicked(current);
                }
            });
    connect(this, &QTreeWidget::itemDoubleClicked, this,
            [this](QTreeWidgetItem *item, int) { Q_EMIT rowActivated(item); });
}

void ReportList::setColumns(const QStringList &headers)
{
    setColumnCount(int(headers.size()));
    setHeaderLabels(headers);
}

QTreeWidgetItem *ReportList::addRow(const QString &key, const QString &text, const QString &tag,
                                    int smallIcon)
{
    auto *item = new QTreeWidgetItem;
    item->setText(0, text);
    item->setData(0, TagRole, tag);
    if (!key.isEmpty() && m_byKey.count(key) == 0) {
        item->setData(0, KeyRole, key);
        m_byKey.emplace(key, item);
    }
    setSmallIcon(item, smallIcon);
    if (m_batchDepth > 0) {
        m_pending.append(item);
    } else {
        addTopLevelItem(item);
    }
    return item;
}

void ReportList::clearRows()
{
    m_byKey.clear();
    qDeleteAll(m_pending);
    m_pending.clear();
    const bool wasSelecting = m_selectingInCode;
    m_selectingInCode = true;
    clear();
    m_selectingInCode = wasSelecting;
}

int ReportList::rowCount() const
{
    return topLevelItemCount() + int(m_pending.size());
}

QTreeWidgetItem *ReportList::row(int index) const
{
    if (index < 0) {
        return nullptr;
    }
    if (index < topLevelItemCount()) {
        return topLevelItem(index);
    }
    return m_pending.value(index - topLevelItemCount());
}

QTreeWidgetItem *ReportList::findByKey(const QString &key) const
{
    if (key.isEmpty()) {
        return nullptr;
    }
    const auto found = m_byKey.find(key);
    return found == m_byKey.end() ? nullptr : found->second;
}

bool ReportList::contains(const QTreeWidgetItem *item) const
{
    return item
           && (item->treeWidget() == this
               || m_pending.contains(const_cast<QTreeWidgetItem *>(item)));
}

QString ReportList::rowKey(const QTreeWidgetItem *item)
{
    return item ? item->data(0, KeyRole).toString() : QString();
}

QString ReportList::rowTag(const QTreeWidgetItem *item)
{
    return item ? item->data(0, TagRole).toString() : QString();
}

int ReportList::smallIcon(const QTreeWidgetItem *item)
{
    return item ? item->data(0, IconRole).toInt() : 0;
}

void ReportList::setSmallIcon(QTreeWidgetItem *item, int icon) const
{
    if (!item) {
        return;
    }
    item->setData(0, IconRole, icon);
    item->setIcon(0, m_icons.value(icon));
}

void ReportList::setSubItem(QTreeWidgetItem *item, int column, const QString &text)
{
    if (item) {
        item->setText(column, text);
    }
}

QTreeWidgetItem *ReportList::selectedRow() const
{
    const QList<QTreeWidgetItem *> selected = selectedItems();
    return selected.isEmpty() ? nullptr : selected.first();
}

void ReportList::selectRow(QTreeWidgetItem *item)
{
    flushPending();
    const bool wasSelecting = m_selectingInCode;
    m_selectingInCode = true;
    if (item) {
        setCurrentItem(item);
        item->setSelected(true);
        scrollToItem(item);
    } else {
        clearSelection();
        setCurrentItem(nullptr);
    }
    m_selectingInCode = wasSelecting;
}

void ReportList::autoSizeColumn(int column)
{
    flushPending();
    resizeColumnToContents(column);
    const int headerWidth = header()->sectionSizeHint(column);
    if (columnWidth(column) < headerWidth) {
        setColumnWidth(column, headerWidth);
    }
}

void ReportList::keyPressEvent(QKeyEvent *event)
{
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && currentItem()) {
        Q_EMIT rowActivated(currentItem());
        event->accept();
        return;
    }
    QTreeWidget::keyPressEvent(event);
}

void ReportList::flushPending()
{
    if (m_pending.isEmpty()) {
        return;
    }
    const QList<QTreeWidgetItem *> rows = std::exchange(m_pending, {});
    addTopLevelItems(rows);
}

ReportList::Batch::Batch(ReportList &list)
    : m_list(list)
{
    if (m_list.m_batchDepth++ == 0) {
        m_list.setUpdatesEnabled(false);
    }
}

ReportList::Batch::~Batch()
{
    if (--m_list.m_batchDepth == 0) {
        m_list.flushPending();
        m_list.setUpdatesEnabled(true);
    }
}

} // namespace olvex
