// The list and tree helpers every component builds on.
#include "common/widgets/keyedtree.h"
#include "common/widgets/reportlist.h"

#include <gtest/gtest.h>

#include <QPixmap>
#include <QSignalSpy>
#include <QTest>

namespace olvex {
namespace {

QIcon coloured(Qt::GlobalColor colour)
{
    QPixmap pixmap(16, 16);
    pixmap.fill(colour);
    return QIcon(pixmap);
}

TEST(ReportList, RowsCarryKeyTagIconAndSubItems)
{
    ReportList list;
    list.setColumns({"Name", "Value"});
    list.setSmallIcons({{1, coloured(Qt::gray)}, {4, coloured(Qt::green)}});
    QTreeWidgetItem *a = list.addRow("K1", "first", "PID(1)", 4);
    QTreeWidgetItem *b = list.addRow({}, "second", "PID(2)", 1);
    ReportList::setSubItem(a, 1, "12.5");
    EXPECT_EQ(list.rowCount(), 2);
    EXPECT_EQ(list.findByKey("K1"), a);
    EXPECT_EQ(list.findByKey(""), nullptr);
    EXPECT_EQ(ReportList::rowKey(b), QString());
    EXPECT_EQ(ReportList::rowTag(b), QStringLiteral("PID(2)"));
    EXPECT_EQ(ReportList::smallIcon(a), 4);
    EXPECT_FALSE(a->icon(0).isNull());
    EXPECT_EQ(a->text(1), QStringLiteral("12.5"));
    list.setSmallIcon(a, 7); // an icon the set lacks: the number is kept, no image
    EXPECT_EQ(ReportList::smallIcon(a), 7);
    EXPECT_TRUE(a->icon(0).isNull());
}

TEST(ReportList, ADuplicateKeyStaysWithTheFirstRow)
{
    ReportList list;
    list.setColumns({"Name"});
    QTreeWidgetItem *first = list.addRow("K1", "first", "PID(1)");
    QTreeWidgetItem *second = list.addRow("K1", "again", "PID(1)");
    EXPECT_EQ(list.rowCount(), 2);
    EXPECT_EQ(list.findByKey("K1"), first);
    EXPECT_EQ(ReportList::rowKey(second), QString());
    list.clearRows();
    EXPECT_EQ(list.rowCount(), 0);
    EXPECT_EQ(list.findByKey("K1"), nullptr);
}

TEST(ReportList, ABatchShowsItsRowsWhenItEnds)
{
    ReportList list;
    list.setColumns({"Name"});
    {
        ReportList::Batch batch(list);
        for (int i = 0; i < 5; ++i) {
            list.addRow(u'K' + QString::number(i), QString::number(i), {});
        }
        EXPECT_EQ(list.rowCount(), 5);
        EXPECT_EQ(list.topLevelItemCount(), 0);
        EXPECT_EQ(list.row(3)->text(0), QStringLiteral("3"));
        EXPECT_TRUE(list.contains(list.row(3)));
    }
    EXPECT_EQ(list.topLevelItemCount(), 5);
    EXPECT_EQ(list.findByKey("K4"), list.topLevelItem(4));
}

TEST(ReportList, OnlyTheUserSelectingEmitsRowClicked)
{
    ReportList list;
    list.setColumns({"Name"});
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
    list.selectRow(nullptr);
    EXPECT_EQ(list.selectedRow(), nullptr);
}

TEST(ReportList, AutoSizedColumnsFitTheirHeader)
{
    ReportList list;
    list.setColumns({"Name", "A rather long header text"});
    list.addRow("K1", "a", {})->setText(1, "1");
    list.autoSizeColumn(1);
    EXPECT_GE(list.columnWidth(1),
              list.fontMetrics().horizontalAdvance("A rather long header text"));
}

TEST(KeyedTree, NodesHangBelowTheirParentsKey)
{
    KeyedTree tree;
    QTreeWidgetItem *root = tree.addNode("K1", {}, "root");
    QTreeWidgetItem *child = tree.addNode("K2", "K1", "child");
    QTreeWidgetItem *orphan = tree.addNode("K3", "K99", "orphan"); // unknown parent: root
    EXPECT_EQ(child->parent(), root);
    EXPECT_EQ(orphan->parent(), nullptr);
    EXPECT_EQ(tree.topLevelItemCount(), 2);
    EXPECT_EQ(tree.addNode("K2", {}, "duplicate"), nullptr);
    EXPECT_EQ(tree.addNode({}, {}, "no key"), nullptr);
    EXPECT_EQ(tree.nodeCount(), 3);
    EXPECT_EQ(tree.findByKey("K2"), child);
    EXPECT_EQ(KeyedTree::nodeKey(child), QStringLiteral("K2"));
    EXPECT_TRUE(tree.anyNodeHasChildren());
    tree.clearNodes();
    EXPECT_EQ(tree.findByKey("K2"), nullptr);
    EXPECT_FALSE(tree.anyNodeHasChildren());
}

TEST(KeyedTree, FlatListAndSelection)
{
    KeyedTree tree;
    QTreeWidgetItem *a = tree.addNode("K1", {}, "a");
    tree.addNode("K2", {}, "b");
    QSignalSpy clicked(&tree, &KeyedTree::nodeClicked);
    tree.setFlatList(true);
    EXPECT_FALSE(tree.rootIsDecorated());
    tree.setFlatList(false);
    EXPECT_TRUE(tree.rootIsDecorated());
    EXPECT_GT(tree.indentation(), 0);
    tree.selectNode(a);
    EXPECT_EQ(tree.selectedNode(), a);
    EXPECT_EQ(clicked.count(), 0);
    tree.show();
    QTest::keyClick(&tree, Qt::Key_Down);
    EXPECT_EQ(clicked.count(), 1);
}

} // namespace
} // namespace olvex
