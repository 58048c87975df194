#pragma once

#include "common/host.h"

#include <QString>

class QTreeWidgetItem;

namespace olvex {

class KeyedTree;

// The key of a group's node: "K" and the group's PID in ten digits. groupNumberFromKey reads
// the PID back (0 for a key that is no group key).
QString groupNodeKey(qint32 pid);
qint32 groupNumberFromKey(const QString &key);

// Fills tree with every setting group of the data interface, parents before children and
// siblings in their order (sortedSettingGroups). When no group has a child the tree takes the
// look of a flat list. With withMembers each group node also gets its member settings as
// leaves (keys "M" + group + ":" + member), which the settings editor does not use.
void LoadSettingGroups(DataInterface &dataInterface, KeyedTree &tree, bool withMembers);

// Adds the node of one group below the node of parentPid (at the root when parentPid is 0 or
// has no node). Returns the node, or null when the tree has the group already.
QTreeWidgetItem *AddGroupNode(DataInterface &dataInterface, const Parameter &group,
                              qint32 parentPid, KeyedTree &tree, bool withMembers);

} // namespace olvex
