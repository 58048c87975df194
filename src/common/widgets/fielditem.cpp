#include "common/widgets/fielditem.h"

namespace olvex {

QVariant FieldItem::data(int column, int role) const
{
    // field() only points at the data; reading through it changes nothing.
    if (const QVariant *held = const_cast<FieldItem *>(this)->field(column, role)) {
        return *held;
    }
    return QTreeWidgetItem::data(column, role);
}

void FieldItem::setData(int column, int role, const QVariant &value)
{
    QVariant *held = field(column, role);
    if (!held) {
        QTreeWidgetItem::setData(column, role, value);
        return;
    }
    *held = value;
    emitDataChanged();
}

} // namespace olvex
