#include "settings/groupsort.h"

#include "common/vocabulary.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <vector>

namespace olvex {

namespace {

// The longest end of a sort line: a tab, "[", a sign, ten digits, "]".
constexpr size_t kLineEndRoom = 14;
// The longest own key besides the name: a sign, nineteen digits, a comma.
constexpr size_t kOwnKeyRoom = 21;

// What the key of one group needs, read once per group, and where its sort line lies in the
// forest's text once built (the first keyLength characters are its full key).
struct KeyNode
{
    ParameterPtr group;
    QString name;
    qint64 order = 0;
    qint32 parentPid = 0; // the parent attribute as it stands (0: none)
    bool startsPath = true;
    int parent = -1; // index of the parent's node; -1 while unknown or for a path start
    size_t start = 0;
    size_t keyLength = 0;
    size_t lineLength = 0;
    enum class State : quint8 { New, OnPath, Done } state = State::New;
};

KeyNode readNode(const ParameterPtr &group)
{
    KeyNode node;
    node.group = group;
    node.name = group->GetName(0);
    node.order = group->GetAttribute(GroupAttr::Order).toInteger().value_or(0);
    const qint64 parent = group->GetAttribute(GroupAttr::ParentPid).toInteger().value_or(0);
    node.parentPid = parent == qint32(parent) ? qint32(parent) : 0;
    node.startsPath = node.parentPid == 0 || !group->GetAttribute(GroupAttr::HasParent).isTrue();
    return node;
}

// Full keys of a set of groups and of the parents they name, each group's key built once. All
// sort lines lie in one text: a child's key starts with a copy of its parent's, and a tree of
// thousands of groups costs a few allocations instead of one or more per group.
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
        m_text.reserve(size_t(count) * 64);
    }

    KeyNode &node(int index) { return m_nodes[size_t(index)]; }

    QStringView key(int index) const
    {
        const KeyNode &node = m_nodes[size_t(index)];
        return QStringView(m_text.data() + node.start, qsizetype(node.keyLength));
    }

    QStringView line(int index) const
    {
        const KeyNode &node = m_nodes[size_t(index)];
        return QStringView(m_text.data() + node.start, qsizetype(node.lineLength));
    }

    // Walks up to the first node whose key is known (or a path start, or a node already on the
    // way: a loop in the data ends the path there), then builds the keys on the way down.
    void build(int index)
    {
        std::vector<int> &path = m_path;
        path.clear();
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
            const bool underParent
                = parent >= 0 && m_nodes[size_t(parent)].state == KeyNode::State::Done;
            const size_t up = underParent ? m_nodes[size_t(parent)].keyLength : 0;
            makeRoom(up + 1 + kOwnKeyRoom + size_t(node.name.size()) + kLineEndRoom);
            node.start = m_text.size();
            if (underParent) {
                // Within the room made, so the parent's characters stay where they are.
                const size_t from = m_nodes[size_t(parent)].start;
                m_text.resize(node.start + up);
                std::copy_n(m_text.begin() + qsizetype(from), up,
                            m_text.begin() + qsizetype(node.start));
                m_text.push_back(u';');
            }
            appendOwnKey(node.order, node.name);
            node.keyLength = m_text.size() - node.start;
            appendLineEnd(node.group->PidNumber());
            node.lineLength = m_text.size() - node.start;
            node.state = KeyNode::State::Done;
        }
    }

private:
    void makeRoom(size_t more)
    {
        if (m_text.capacity() - m_text.size() < more) {
            m_text.reserve(std::max(m_text.size() + more, 2 * m_text.capacity()));
        }
    }

    // "0000" as a number format writes the order (at least four digits, the sign in front), a
    // comma and the name: a group's own key.
    void appendOwnKey(qint64 order, const QString &name)
    {
        std::array<char16_t, kOwnKeyRoom> text{};
        size_t at = text.size();
        text[--at] = u',';
        quint64 magnitude = order < 0 ? 0 - quint64(order) : quint64(order);
        size_t digits = 0;
        do {
            text[--at] = char16_t(u'0' + magnitude % 10);
            magnitude /= 10;
            ++digits;
        } while (magnitude != 0);
        for (; digits < 4; ++digits) {
            text[--at] = u'0';
        }
        if (order < 0) {
            text[--at] = u'-';
        }
        m_text.insert(m_text.end(), text.begin() + qsizetype(at), text.end());
        const char16_t *chars = reinterpret_cast<const char16_t *>(name.constData());
        m_text.insert(m_text.end(), chars, chars + name.size());
    }

    // "\t[PID]": the end of a sort line.
    void appendLineEnd(qint32 pid)
    {
        std::array<char16_t, kLineEndRoom> text{};
        size_t at = text.size();
        text[--at] = u']';
        quint32 magnitude = pid < 0 ? 0 - quint32(pid) : quint32(pid);
        do {
            text[--at] = char16_t(u'0' + magnitude % 10);
            magnitude /= 10;
        } while (magnitude != 0);
        if (pid < 0) {
            text[--at] = u'-';
        }
        text[--at] = u'[';
        text[--at] = u'\t';
        m_text.insert(m_text.end(), text.begin() + qsizetype(at), text.end());
    }

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
    std::vector<char16_t> m_text; // every sort line built so far, one after the other
    std::vector<int> m_path;      // build()'s way up, kept for the next call
};

} // namespace

QString GroupSortKey(const Parameter &group, const QString &suffix, const DefinitionLookup &lookup)
{
    KeyForest forest(lookup);
    // The forest keeps shared definitions; the group given here is borrowed for the call.
    const int index = forest.add(ParameterPtr(ParameterPtr(), const_cast<Parameter *>(&group)));
    forest.build(index);
    QString key = forest.key(index).toString();
    if (!suffix.isEmpty()) {
        key += u';' + suffix;
    }
    return key;
}

QList<SortedGroup> sortedSettingGroups(DataInterface &dataInterface, bool withSortLines)
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
    for (const int index : nodes) {
        forest.build(index);
    }
    // Ordinal comparison of UTF-16 code units: the order of the shell sort of texts. The PID at
    // the end makes every line distinct, so a stable sort is not needed.
    std::sort(nodes.begin(), nodes.end(), [&forest](int a, int b) {
        return forest.line(a).compare(forest.line(b), Qt::CaseSensitive) < 0;
    });
    QList<SortedGroup> lines;
    lines.reserve(groups.size());
    for (const int index : nodes) {
        KeyNode &node = forest.node(index);
        lines.append({withSortLines ? forest.line(index).toString() : QString(),
                      std::move(node.group), std::move(node.name), node.parentPid});
    }
    return lines;
}

} // namespace olvex
