#include "settings/widgets/settinggroups.h"

#include "common/pid.h"
#include "common/widgets/keyedtree.h"
#include "settings/groupsort.h"
#include "common/vocabulary.h"
#include "settings/widgets/settingicons.h"

#include <QHash>

namespace olvex {

namespace {

// prefix and the padded ten-digit form, built in one go (the tree asks for thousands of keys).
// A number that is no valid PID still gets its ten digits, so such a group keeps a node.
QString tenDigits(qint32 pid, char16_t prefix = 0)
{
    if (pid < 0 || pid > 999999999) {
        const QString head = prefix != 0 ? QString(QChar(prefix)) : QString();
        return head + QString::number(pid).rightJustified(10, u'0');
    }
    const int offset = prefix != 0 ? 1 : 0;
    QString key(10 + offset, Qt::Uninitialized);
    QChar *out = key.data();
    if (prefix != 0) {
        out[0] = QChar(prefix);
    }
    for (int i = 9; i >= 0; --i) {
        out[offset + i] = QChar(char16_t(u'0' + pid % 10));
        pid /= 10;
    }
    return key;
}

void addMemberNodes(DataInterface &dataInterface, const Parameter &group, KeyedTree &tree)
{
    const Value members = group.GetAttribute(GroupAttr::Members);
    if (!members.isArray()) {
        return;
    }
    const std::shared_ptr<PidDirectory> directory = dataInterface.GetPidDirectory();
    const QString groupKey = groupNodeKey(group.PidNumber());
    for (const Value &member : members.toArray()) {
        const qint32 pid = qint32(member.toInteger().value_or(0));
        if (!directory->PidExists(pid)) {
            continue;
        }
        const ParameterPtr setting = directory->GetPid(pid, true);
        tree.addNode(u'M' + tenDigits(group.PidNumber()) + u':' + tenDigits(pid), groupKey,
                     setting->GetName(0));
    }
}

struct GroupImages
{
    QIcon plain;
    QIcon alarm;
};

// The node images, kept with the tree: every load hands out the same two icon objects, whose
// engine keeps what it rendered; new icons would render their images again at each load's first
// paint.
class TreeGroupImages final : public QObject
{
public:
    static constexpr const char *kName = "olvexGroupImages";

    explicit TreeGroupImages(QObject *tree)
        : QObject(tree)
        , images{groupIcon(false), groupIcon(true)}
    {
        setObjectName(QLatin1String(kName));
    }

    const GroupImages images;
};

const GroupImages &groupImages(KeyedTree &tree)
{
    auto *held = dynamic_cast<TreeGroupImages *>(tree.findChild<QObject *>(
        QLatin1String(TreeGroupImages::kName), Qt::FindDirectChildrenOnly));
    if (!held) {
        held = new TreeGroupImages(&tree); // owned by the tree
    }
    return held->images;
}

QTreeWidgetItem *addGroupNode(DataInterface &dataInterface, const Parameter &group,
                              const QString &name, QTreeWidgetItem *parent, KeyedTree &tree,
                              bool withMembers, const GroupImages &images)
{
    const bool alarmGroup = group.GetAttribute(GroupAttr::AlarmGroup).isTrue();
    QTreeWidgetItem *node = tree.addNode(groupNodeKey(group.PidNumber()), parent, name,
                                         alarmGroup ? images.alarm : images.plain);
    if (node && withMembers) {
        addMemberNodes(dataInterface, group, tree);
    }
    return node;
}

} // namespace

QString groupNodeKey(qint32 pid)
{
    return tenDigits(pid, u'K');
}

qint32 groupNumberFromKey(const QString &key)
{
    if (!key.startsWith(u'K')) {
        return 0;
    }
    bool ok = false;
    const qint32 number = QStringView(key).mid(1).toInt(&ok);
    return ok ? number : 0;
}

QTreeWidgetItem *AddGroupNode(DataInterface &dataInterface, const Parameter &group,
                              qint32 parentPid, KeyedTree &tree, bool withMembers)
{
    QTreeWidgetItem *parent = parentPid != 0 ? tree.findByKey(groupNodeKey(parentPid)) : nullptr;
    return addGroupNode(dataInterface, group, group.GetName(0), parent, tree, withMembers,
                        groupImages(tree));
}

void LoadSettingGroups(DataInterface &dataInterface, KeyedTree &tree, bool withMembers)
{
    const QList<SortedGroup> groups = sortedSettingGroups(dataInterface, false);
    const GroupImages &images = groupImages(tree);
    // Parents by PID: cheaper than building each parent's key to find its node.
    QHash<qint32, QTreeWidgetItem *> nodes;
    nodes.reserve(groups.size());
    {
        KeyedTree::Batch batch(tree);
        tree.reserveNodes(tree.nodeCount() + int(groups.size()));
        for (const SortedGroup &line : groups) {
            QTreeWidgetItem *parent = nullptr;
            if (line.parentPid != 0) {
                const auto found = nodes.constFind(line.parentPid);
                parent = found != nodes.constEnd()
                             ? *found
                             : tree.findByKey(groupNodeKey(line.parentPid)); // an earlier load
            }
            if (QTreeWidgetItem *node = addGroupNode(dataInterface, *line.group, line.name, parent,
                                                     tree, withMembers, images)) {
                nodes.insert(line.group->PidNumber(), node);
            }
        }
    }
    tree.setFlatList(!tree.anyNodeHasChildren());
}

} // namespace olvex
