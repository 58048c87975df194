#include "common/widgets/reportlist.h"

#include "common/widgets/fielditem.h"
#include "common/widgets/plaintextwidths.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QStyledItemDelegate>

#include <cmath>

namespace olvex {

namespace {

enum Role { KeyRole = Qt::UserRole + 1, TagRole, IconRole };

// A row keeps its key, tag, icon number and image in fields (see FieldItem); its texts stay in
// the item's own lists, so that columnCount() counts them.
class ReportRow final : public FieldItem
{
protected:
    QVariant *field(int column, int role) override
    {
        if (column != 0) {
            return nullptr;
        }
        switch (role) {
        case KeyRole:
            return &m_key;
        case TagRole:
            return &m_tag;
        case IconRole:
            return &m_icon;
        case Qt::DecorationRole:
            return &m_image;
        default:
            return nullptr;
        }
    }

private:
    QVariant m_key;
    QVariant m_tag;
    QVariant m_icon;
    QVariant m_image;
};

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

ReportList::~ReportList() = default;

void ReportList::setColumns(const QStringList &headers)
{
    setColumnCount(int(headers.size()));
    setHeaderLabels(headers);
}

QTreeWidgetItem *ReportList::addRow(const QString &key, const QString &text, const QString &tag,
                                    int smallIcon)
{
    auto *item = new ReportRow;
    item->setText(0, text);
    item->setData(0, TagRole, tag);
    if (!key.isEmpty() && m_byKey.count(key) == 0) {
        item->setData(0, KeyRole, key);
        m_byKey.emplace(key, item);
    }
    if (smallIcon != 0 || m_icons.contains(0)) {
        setSmallIcon(item, smallIcon); // a new row reads as icon 0 without an image already
    }
    m_pending.add(item);
    return item;
}

void ReportList::clearRows()
{
    m_byKey.clear();
    m_pending.discard();
    const bool wasSelecting = m_selectingInCode;
    m_selectingInCode = true;
    clear();
    m_selectingInCode = wasSelecting;
}

int ReportList::rowCount() const
{
    return topLevelItemCount() + int(m_pending.items().size());
}

QTreeWidgetItem *ReportList::row(int index) const
{
    if (index < 0) {
        return nullptr;
    }
    if (index < topLevelItemCount()) {
        return topLevelItem(index);
    }
    return m_pending.items().value(index - topLevelItemCount());
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
               || m_pending.items().contains(const_cast<QTreeWidgetItem *>(item)));
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
    m_pending.flush();
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
    m_pending.flush();
    if (const std::optional<int> widest = widestPlainText(column)) {
        setColumnWidth(column, *widest);
    } else {
        resizeColumnToContents(column);
    }
    const int headerWidth = header()->sectionSizeHint(column);
    if (columnWidth(column) < headerWidth) {
        setColumnWidth(column, headerWidth);
    }
}

// The width the delegate asks for the widest text of a column of plain-text cells, over all rows,
// without asking it for every row: a list of thousands of values would spend more time there than
// on filling itself. The summed widths (PlainTextWidths) pick the widest text; the delegate sizes
// that one and the texts the sums cannot weigh, and the others differ from it only by their
// text's width. nullopt, and the view measures as it always does, for anything else: column 0
// (icons, indentation), a delegate of its own, word wrap, a cell with an icon, font, check box or
// size hint, or a font that does not shape the widest text as the sums say.
std::optional<int> ReportList::widestPlainText(int column)
{
    const int rows = topLevelItemCount();
    if (column <= 0 || column >= columnCount() || rows == 0 || wordWrap()
        || itemDelegateForColumn(column)
        || itemDelegate()->metaObject() != &QStyledItemDelegate::staticMetaObject) {
        return std::nullopt;
    }
    if (!m_textWidths) {
        m_textWidths = std::make_unique<PlainTextWidths>(font());
    }
    int widest = 0;
    int widestSummed = -1; // the row of the widest sum
    qreal widestSum = 0;
    for (int i = 0; i < rows; ++i) {
        const QTreeWidgetItem *item = topLevelItem(i);
        for (const int role :
             {Qt::DecorationRole, Qt::FontRole, Qt::CheckStateRole, Qt::SizeHintRole}) {
            if (item->data(column, role).isValid()) {
                return std::nullopt;
            }
        }
        const QString text = item->text(column);
        if (const std::optional<qreal> sum = m_textWidths->width(text)) {
            if (widestSummed < 0 || *sum > widestSum) {
                widestSummed = i;
                widestSum = *sum;
            }
        } else {
            widest = std::max(widest, sizeHintForIndex(indexFromItem(item, column)).width());
        }
    }
    if (widestSummed >= 0) {
        const QTreeWidgetItem *item = topLevelItem(widestSummed);
        const qreal exact = m_textWidths->exactWidth(item->text(column));
        if (std::abs(exact - widestSum) > 1e-3) {
            return std::nullopt;
        }
        widest = std::max(widest, sizeHintForIndex(indexFromItem(item, column)).width());
    }
    return widest;
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

void ReportList::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        m_textWidths.reset();
    }
    QTreeWidget::changeEvent(event);
}

} // namespace olvex
