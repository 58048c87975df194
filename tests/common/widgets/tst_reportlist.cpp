// The list and tree helpers every component builds on.
#include "common/widgets/keyedtree.h"
#include "common/widgets/reportlist.h"

#include <gtest/gtest.h>

#include <QPixmap>
#include <QSignalSpy>
#include <QTest>

namespace olvex {
namespace {

TEST(ReportList, RowsCarryKeyTagIconAndSubItems)
{
    ReportList list;
    list.setColumns({"Name", "Value"});
    const QIcon icon(QPixmap(16, 16));
    list.setSmallIcons({{1, icon}, {4, icon}});
    QTreeWidgetItem *a = nullptr;
    {
        // Rows added in a batch are there at once but reach the view when it ends.
        ReportList::Batch batch(list);
        a = list.addRow("K1", "first", "PID(1)", 4);
        list.addRow({}, "second", "PID(2)", 1);
        list.addRow("K1", "again", "PID(1)"); // the key stays with the first row
        EXPECT_EQ(list.rowCount(), 3);
        EXPECT_EQ(list.topLevelItemCount(), 0);
    }
    EXPECT_EQ(list.topLevelItemCount(), 3);
    EXPECT_EQ(list.findByKey("K1"), a);
    EXPECT_EQ(ReportList::rowKey(list.row(2)), QString());
    EXPECT_EQ(ReportList::smallIcon(a), 4);
    EXPECT_FALSE(a->icon(0).isNull());
    list.setSmallIcon(a, 7); // an icon the set lacks: the number is kept, no image
    EXPECT_EQ(ReportList::smallIcon(a), 7);
    EXPECT_TRUE(a->icon(0).isNull());
    list.clearRows();
    EXPECT_EQ(list.rowCount(), 0);
    EXPECT_EQ(list.findByKey("K1"), nullptr);
}

TEST(ReportList, OnlyTheUserSelectingEmitsRowClicked)
{
    ReportList list;
    list.setColumns({"Name", "Value"});
    QTreeWidgetItem *a = list.addRow("K1", "a", {});
    QTreeWidgetItem *b = list.addRow("K2", "b", {});
    QSignalSpy clicked(&list, &ReportList::rowClicked);
    QSignalSpy activated(&list, &ReportList::rowActivated);
    list.selectRow(a);
    EXPECT_EQ(list.selectedRow(), a);
    EXPECT_EQ(clicked.count(), 0);
    list.show();
    QTest::keyClick(&list, Qt::Key_Down);
    ASSERT_EQ(clicked.count(), 1);
    EXPECT_EQ(clicked.at(0).at(0).value<QTreeWidgetItem *>(), b);
    QTest::keyClick(&list, Qt::Key_Return);
    ASSERT_EQ(activated.count(), 1);
    EXPECT_EQ(activated.at(0).at(0).value<QTreeWidgetItem *>(), b);
}

TEST(KeyedTree, NodesHangBelowTheirParentsKey)
{
    KeyedTree tree;
    QTreeWidgetItem *root = tree.addNode("K1", {}, "root");
    QTreeWidgetItem *child = tree.addNode("K2", "K1", "child");
    QTreeWidgetItem *orphan = tree.addNode("K3", "K99", "orphan"); // unknown parent: root
    EXPECT_EQ(child->parent(), root);
    EXPECT_EQ(orphan->parent(), nullptr);
    EXPECT_EQ(tree.addNode("K2", {}, "duplicate"), nullptr);
    EXPECT_EQ(tree.addNode({}, {}, "no key"), nullptr);
    EXPECT_EQ(tree.findByKey("K2"), child);
    EXPECT_TRUE(tree.anyNodeHasChildren());

    // Only the user moving the selection emits nodeClicked.
    QSignalSpy clicked(&tree, &KeyedTree::nodeClicked);
    tree.selectNode(root);
    EXPECT_EQ(tree.selectedNode(), root);
    EXPECT_EQ(clicked.count(), 0);
    tree.show();
    QTest::keyClick(&tree, Qt::Key_Down);
    EXPECT_EQ(clicked.count(), 1);

    tree.clearNodes();
    EXPECT_EQ(tree.findByKey("K2"), nullptr);
    EXPECT_FALSE(tree.anyNodeHasChildren());
}

} // namespace
} // namespace olvex
