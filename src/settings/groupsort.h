#pragma once

#include "common/host.h"
#include "common/olvexexport.h"

#include <QList>
#include <QString>

#include <functional>

namespace olvex {

// Finds a definition by PID; null when the PID has none.
using DefinitionLookup = std::function<ParameterPtr(qint32 pid)>;

// The full sort key of a group: its parents' keys from the root down, each "0000,Name" (order
// number zero-filled to four digits, a comma, the name), joined by ";", then suffix after a ";"
// when suffix is not empty. A group without parent, or whose parent has no definition, starts
// the path; so does a parent seen twice on the way up (a loop in the data).
OLVEX_CORE_EXPORT QString GroupSortKey(const Parameter &group, const QString &suffix,
                                       const DefinitionLookup &lookup);

// One setting group in tree order.
struct OLVEX_CORE_EXPORT SortedGroup
{
    QString sortLine; // full key, a tab, "[", the PID, "]": what the order is taken from
    ParameterPtr group;
    QString name;     // the group's name, as read for its key
    qint32 parentPid; // its parent attribute as it stands (0: none)
};

// All setting groups (parameter type 5) of the data interface, parents before their children
// and siblings by order number, then name: the lines sorted by character code. Parents are
// looked up among the groups first and in the PID directory otherwise, each once.
// Without sort lines (sortLine left empty) the order costs a few allocations for the whole list
// instead of one more for each group: enough for a caller that only builds the tree.
OLVEX_CORE_EXPORT QList<SortedGroup> sortedSettingGroups(DataInterface &dataInterface,
                                                         bool withSortLines = true);

} // namespace olvex
