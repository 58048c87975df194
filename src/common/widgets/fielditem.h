#pragma once

#include <QTreeWidgetItem>
#include <QVariant>

namespace olvex {

// A tree item that keeps some of its data in fields of its own instead of QTreeWidgetItem's
// lists of column and role data, which are allocated, grown and searched entry by entry: a list
// or tree of thousands of items fills and clears noticeably faster. data() and setData() reach
// the fields like any other data, and a change to one is announced to the view the same way. A
// field for the display role of a column takes that column out of the item's own lists, so
// columnCount() does not count it.
class FieldItem : public QTreeWidgetItem
{
public:
    QVariant data(int column, int role) const override;
    void setData(int column, int role, const QVariant &value) override;

protected:
    // The field that holds role of column; null for data the item's own lists keep.
    virtual QVariant *field(int column, int role) = 0;
};

} // namespace olvex
