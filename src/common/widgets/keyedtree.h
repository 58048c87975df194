#pragma once

#include "common/widgets/keyhash.h"
#include "common/widgets/pendingitems.h"

#include <QHash>
#include <QIcon>
#include <QString>
#include <QTreeWidget>

#include <memory_resource>

namespace olvex {

// A tree whose nodes carry unique keys: nodes are added below a parent named by its key and
// found by key in constant time. nodeClicked follows the user's click or keyboard move;
// selectNode() never emits it. The tree has one column; its nodes keep their text, key and image
// in fields (see FieldItem), so a node's columnCount() is 0.
class KeyedTree : public QTreeWidget
{
    Q_OBJECT
public:
    explicit KeyedTree(QWidget *parent = nullptr);

    // Adds a node below the node of parentKey, or at the root when parentKey is empty or no
    // node has it. A key already in the tree is refused: the node is not added, null returned.
    QTreeWidgetItem *addNode(const QString &key, const QString &parentKey, const QString &text,
                             const QIcon &icon = {});
    // The same below a parent node at hand (null: at the root).
    QTreeWidgetItem *addNode(const QString &key, QTreeWidgetItem *parent, const QString &text,
                             const QIcon &icon = {});
    void clearNodes();
    // Room for count nodes, so a large fill does not grow the key index step by step.
    void reserveNodes(int count) { m_byKey.reserve(size_t(count)); }

    int nodeCount() const { return int(m_byKey.size()); }
    QTreeWidgetItem *findByKey(const QString &key) const;
    static QString nodeKey(const QTreeWidgetItem *item);
    bool anyNodeHasChildren() const;
    // Without lines to a parent: the look of a flat list.
    void setFlatList(bool flat);

    QTreeWidgetItem *selectedNode() const;
    // Makes item the current, selected node, its parents expanded and the node scrolled into
    // view (null clears the selection).
    void selectNode(QTreeWidgetItem *item);

    // Nodes added inside a batch are built apart from the view and reach it in one insertion
    // when the batch ends: a large tree costs the view one update instead of one per node.
    // (Updates stay enabled: turning them back on would repaint the scroll bars too.)
    class Batch : public PendingTopLevelItems::Scope
    {
    public:
        explicit Batch(KeyedTree &tree)
            : Scope(tree.m_pendingRoots)
        {}
    };

Q_SIGNALS:
    void nodeClicked(QTreeWidgetItem *item);

private:
    std::pmr::unsynchronized_pool_resource m_keyPool;
    KeyIndex m_byKey{&m_keyPool};
    PendingTopLevelItems m_pendingRoots{*this};
    bool m_selectingInCode = false;
    int m_designedIndentation = 0;
};

} // namespace olvex
