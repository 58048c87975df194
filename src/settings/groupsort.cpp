#include "settings/groupsort.h"

#include "settings/settingattributes.h"

#include <QHash>

#include <algorithm>
#include <vector>

namespace olvex {

namespace {

// "0000" as a number format writes it: at least four digits, the sign in front.
QString orderText(qint64 order)
{
    const QString digits = QString::number(order < 0 ? -order : order).rightJustified(4, u'0');
    return order < 0 ? u'-' + digits : digits;
}

// What the key of one group needs, read once per group.
struct KeyNode
{
    ParameterPtr group;
    QString name;
    QString ownKey;
    qint32 parentPid = 0; // the parent attribute as it stands (0: none)
    bool startsPath = true;
    int parent = -1; // index of the parent's node; -1 while unknown or for a path start
    QString fullKey;
    enum class State : quint8 { New, OnPath, Done } state = State::New;
};

KeyNode readNode(const ParameterPtr &group)
{
    KeyNode node;
    node.group = group;
    node.name = group->GetName(0);
    node.ownKey = orderText(group->GetAttribute(GroupAttr::Order).toInteger().value_or(0)) + u','
                  + node.name;
    const qint64 parent = group->GetAttribute(GroupAttr::ParentPid).toInteger().value_or(0);
    node.parentPid = parent == qint32(parent) ? qint32(parent) : 0;
    node.startsPath = node.parentPid == 0 || !group->GetAttribute(GroupAttr::HasParent).isTrue();
    return node;
}

// Full keys of a set of groups and of the parents they name, each group's key built once.
class KeyForest
{
public:
    explicit KeyForest(DefinitionLookup lookup)
        : m_lookup(std::move(lookup))
    {}

    int add(const ParameterPtr &group)
    {
        const qint32 pid = group->PidNumber();
        if (const auto known = m_index.constFind(pid); known != m_index.constEnd()) {
            return *known;
        }
        m_nodes.push_back(readNode(group));
        m_index.insert(pid, int(m_nodes.size()) - 1);
        return int(m_nodes.size()) - 1;
    }

    void reserve(qsizetype count)
    {
        m_nodes.reserve(size_t(count));
        m_index.reserve(count);
    }

    const KeyNode &node(int index) const { return m_nodes[size_t(index)]; }

    // Walks up to the first node whose key is known (or a path start, or a node already on the
    // way: a loop in the data ends the path there), then builds the keys on the way down.
    const QString &fullKey(int index)
    {
        std::vector<int> path;
        int at = index;
        while (at >= 0 && m_nodes[size_t(at)].state == KeyNode::State::New) {
            m_nodes[size_t(at)].state = KeyNode::State::OnPath;
            path.push_back(at);
            at = parentIndex(at);
        }
        // at is -1, a finished node, or a node on this path (a loop).
        for (auto it = path.rbegin(); it != path.rend(); ++it) {
            KeyNode &node = m_nodes[size_t(*it)];
            const int parent = parentIndex(*it);
            const bool hasParentKey
                = parent >= 0 && m_nodes[size_t(parent)].state == KeyNode::State::Done;
            node.fullKey
                = hasParentKey ? m_nodes[size_t(parent)].fullKey + u';' + node.ownKey : node.ownKey;
            node.state = KeyNode::State::Done;
        }
        return m_nodes[size_t(index)].fullKey;
    }

private:
    int parentIndex(int index)
    {
        KeyNode &node = m_nodes[size_t(index)];
        if (node.startsPath) {
            return -1;
        }
        if (node.parent < 0) {
            node.parent = m_index.value(node.parentPid, -1);
            if (node.parent < 0) {
                const ParameterPtr parent = m_lookup ? m_lookup(node.parentPid) : nullptr;
                if (!parent) {
                    m_nodes[size_t(index)].startsPath = true; // parent has no definition
                    return -1;
                }
                const int added = add(parent); // may move the nodes: index again below
                m_nodes[size_t(index)].parent = added;
            }
        }
        return m_nodes[size_t(index)].parent;
    }

    DefinitionLookup m_lookup;
    std::vector<KeyNode> m_nodes;
    QHash<qint32, int> m_index;
};

} // namespace

QString GroupSortKey(const Parameter &group, const QString &suffix, const DefinitionLookup &lookup)
{
    KeyForest forest(lookup);
    // The forest keeps shared definitions; the group given here is borrowed for the call.
    const int index = forest.add(ParameterPtr(ParameterPtr(), const_cast<Parameter *>(&group)));
    QString key = forest.fullKey(index);
    if (!suffix.isEmpty()) {
        key += u';' + suffix;
    }
    return key;
}

QList<SortedGroup> sortedSettingGroups(DataInterface &dataInterface)
{
    const ParameterList groups = dataInterface.GetPidsOfTypes({ParameterTypes::SettingGroup});
    std::shared_ptr<PidDirectory> directory;
    KeyForest forest([&](qint32 pid) -> ParameterPtr {
        if (!directory) {
            directory = dataInterface.GetPidDirectory();
        }
        if (!directory || !directory->PidExists(pid)) {
            return nullptr;
        }
        return directory->GetPid(pid, true);
    });
    forest.reserve(groups.size());
    std::vector<int> nodes;
    nodes.reserve(size_t(groups.size()));
    for (const ParameterPtr &group : groups) {
        nodes.push_back(forest.add(group));
    }

    QList<SortedGroup> lines;
    lines.reserve(groups.size());
    for (const int index : nodes) {
        const QString &key = forest.fullKey(index);
        const KeyNode &node = forest.node(index);
        lines.append({key + u"\t[" + QString::number(node.group->PidNumber()) + u']', node.group,
                      node.name, node.parentPid});
    }
    // Ordinal comparison of UTF-16 code units: the order of the shell sort of texts. The PID at
    // the end makes every line distinct, so a stable sort is not needed.
    std::sort(lines.begin(), lines.end(), [](const SortedGroup &a, const SortedGroup &b) {
        return QString::compare(a.sortLine, b.sortLine, Qt::CaseSensitive) < 0;
    });
    return lines;
}

} // namespace olvex
