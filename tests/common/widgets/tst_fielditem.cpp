// Items that keep part of their data in fields must behave like any other item to the view.
#include "common/widgets/fielditem.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTreeWidget>

namespace olvex {
namespace {

constexpr int KeyRole = Qt::UserRole + 1;

// Column 0's text and a key role in fields, everything else in the item's own lists.
class TwoFields final : public FieldItem
{
protected:
    QVariant *field(int column, int role) override
    {
        if (column != 0)
            return nullptr;
        return role == Qt::DisplayRole ? &m_text : role == KeyRole ? &m_key : nullptr;
    }

private:
    QVariant m_text;
    QVariant m_key;
};

TEST(FieldItem, FieldsReadAndAnnounceLikeTheItemsOwnData)
{
    QTreeWidget tree;
    tree.setColumnCount(2);
    auto *item = new TwoFields;
    tree.addTopLevelItem(item);
    QSignalSpy changed(&tree, &QTreeWidget::itemChanged);

    // Column, role, value.
    const std::tuple<int, int, QVariant> cases[] = {
        {0, Qt::DisplayRole, QStringLiteral("in a field")},
        {0, KeyRole, QStringLiteral("K1")},
        {0, Qt::ToolTipRole, QStringLiteral("in the item's list")},
        {1, Qt::DisplayRole, QStringLiteral("column 1, in the item's list")},
    };
    for (const auto &[column, role, value] : cases) {
        SCOPED_TRACE(value.toString().toStdString());
        const qsizetype before = changed.count();
        item->setData(column, role, value);
        EXPECT_EQ(item->data(column, role), value);
        EXPECT_EQ(tree.model()->index(0, column).data(role), value);
        EXPECT_GT(changed.count(), before) << "the view hears of the change";
    }
    EXPECT_EQ(item->text(0), QStringLiteral("in a field"));
    EXPECT_FALSE(item->data(1, KeyRole).isValid()) << "a field belongs to its column only";
    EXPECT_EQ(item->columnCount(), 2) << "column 1's text is in the item's own lists";
}

} // namespace
} // namespace olvex
