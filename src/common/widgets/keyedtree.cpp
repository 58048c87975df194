#include "common/widgets/keyedtree.h"

#include "common/widgets/fielditem.h"

#include <QHeaderView>

namespace olvex {

namespace {

constexpr int KeyRole = Qt::UserRole + 1;

// A node keeps its text, key and image in fields (see FieldItem).
class KeyedNode final : public FieldItem
{
public:
    KeyedNode(const QString &text, const QString &key, const QIcon &icon)
        : m_text(text)
        , m_key(key)
    {
        if (!icon.isNull()) {
            m_image = icon;
        }
    }

protected:
    QVariant *field(int column, int role) override
    {
        if (column != 0) {
            return nullptr;
        }
        switch (role) {
        case Qt::DisplayRole:
        case Qt::EditRole:
            return &m_text;
        case KeyRole:
            return &m_key;
        case Qt::DecorationRole:
            return &m_image;
        default:
            return nullptr;
        }
    }

private:
    QVariant m_text;
    QVariant m_key;
    QVariant m_image;
};

} // namespace

KeyedTree::KeyedTree(QWidget *parent)
    : QTreeWidget(parent)
{
    setHeaderHidden(true);
    setColumnCount(1);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setIconSize(QSize(16, 16));
    m_designedIndentation = indentation();
    connect(this, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem *current, QTreeWidgetItem *) {
                if (!m_selectingInCode && current) {
                    Q_EMIT nodeClicked(current);
                }
            });
}

QTreeWidgetItem *KeyedTree::addNode(const QString &key, const QString &parentKey,
                                    const QString &text, const QIcon &icon)
{
    return addNode(key, findByKey(parentKey), text, icon);
}

QTreeWidgetItem *KeyedTree::addNode(const QString &key, QTreeWidgetItem *parent,
                                    const QString &text, const QIcon &icon)
{
    if (key.isEmpty()) {
        return nullptr;
    }
    const auto [slot, added] = m_byKey.try_emplace(key, nullptr);
    if (!added) {
        return nullptr;
    }
    // Filled before it is attached, so the view hears of the node once.
    auto *item = new KeyedNode(text, key, icon);
    if (parent) {
        parent->addChild(item);
    } else {
        m_pendingRoots.add(item);
    }
    slot->second = item;
    return item;
}

void KeyedTree::clearNodes()
{
    m_byKey.clear();
    m_pendingRoots.discard();
    const bool wasSelecting = m_selectingInCode;
    m_selectingInCode = true;
    clear();
    m_selectingInCode = wasSelecting;
}

QTreeWidgetItem *KeyedTree::findByKey(const QString &key) const
{
    if (key.isEmpty()) {
        return nullptr;
    }
    const auto found = m_byKey.find(key);
    return found == m_byKey.end() ? nullptr : found->second;
}

QString KeyedTree::nodeKey(const QTreeWidgetItem *item)
{
    return item ? item->data(0, KeyRole).toString() : QString();
}

bool KeyedTree::anyNodeHasChildren() const
{
    for (const QTreeWidgetItem *root : m_pendingRoots.items()) {
        if (root->childCount() > 0) {
            return true;
        }
    }
    for (int i = 0; i < topLevelItemCount(); ++i) {
        if (topLevelItem(i)->childCount() > 0) {
            return true;
        }
    }
    return false;
}

void KeyedTree::setFlatList(bool flat)
{
    setRootIsDecorated(!flat);
    setIndentation(flat ? 0 : m_designedIndentation);
}

QTreeWidgetItem *KeyedTree::selectedNode() const
{
    const QList<QTreeWidgetItem *> selected = selectedItems();
    return selected.isEmpty() ? nullptr : selected.first();
}

void KeyedTree::selectNode(QTreeWidgetItem *item)
{
    m_pendingRoots.flush();
    const bool wasSelecting = m_selectingInCode;
    m_selectingInCode = true;
    if (item) {
        for (QTreeWidgetItem *up = item->parent(); up; up = up->parent()) {
            up->setExpanded(true);
        }
        setCurrentItem(item);
        item->setSelected(true);
        scrollToItem(item);
    } else {
        clearSelection();
        setCurrentItem(nullptr);
    }
    m_selectingInCode = wasSelecting;
}

} // namespace olvex
