// The order of the setting group tree: parents first, siblings by order number, then name.
#include "common/vocabulary.h"
#include "settings/groupsort.h"
#include "support/fake_data_interface.h"

#include <gtest/gtest.h>

namespace olvex {
namespace {

class GroupSort : public ::testing::Test
{
protected:
    FakeParameterPtr group(qint32 pid, const QString &name, const Value &order, qint32 parent = 0)
    {
        auto g = di.addGroup(pid, name, {});
        g->setAttributeValue(GroupAttr::Order, order);
        g->setAttributeValue(GroupAttr::HasParent, parent != 0 ? 1 : 0);
        g->setAttributeValue(GroupAttr::ParentPid, qint64(parent));
        return g;
    }

    QStringList sortedLines()
    {
        QStringList lines;
        for (const SortedGroup &g : sortedSettingGroups(di)) {
            lines << g.sortLine;
        }
        return lines;
    }

    FakeDataInterface di;
};

TEST_F(GroupSort, LinesPutParentsFirstThenOrderThenName)
{
    // Added in an order that is none of the expected ones.
    group(100005, "Zeta", 10, 100001);
    group(100004, "Beta", 2, 100001);
    group(100003, "Alpha", 2, 100001);
    group(100001, "Plant", 1);
    group(100006, "Big", 12345, 100001); // five digits sort as text
    group(100002, "Alarms", 0);
    group(100007, "Orphan", 3, 199999); // the parent has no definition
    group(100008, "Flagless", 4, 100001)->setAttributeValue(GroupAttr::HasParent, 0);
    // A parent that is no group is found in the directory all the same.
    di.addSetting(100009, "Holder", 7, Value("x"))->setAttributeValue(GroupAttr::Order, 9);
    group(100010, "Child", 1, 100009);
    group(100011, "Unordered", Value::null(), 100001); // no order: 0
    group(100012, "Below", -5, 100001);
    group(100013, "As text", "7", 100001);
    EXPECT_EQ(sortedLines(), (QStringList{
                                 "0000,Alarms\t[100002]",
                                 "0001,Plant\t[100001]",
                                 "0001,Plant;-0005,Below\t[100012]",
                                 "0001,Plant;0000,Unordered\t[100011]",
                                 "0001,Plant;0002,Alpha\t[100003]",
                                 "0001,Plant;0002,Beta\t[100004]",
                                 "0001,Plant;0007,As text\t[100013]",
                                 "0001,Plant;0010,Zeta\t[100005]",
                                 "0001,Plant;12345,Big\t[100006]",
                                 "0003,Orphan\t[100007]",
                                 "0004,Flagless\t[100008]",
                                 "0009,Holder;0001,Child\t[100010]",
                             }));
}

TEST_F(GroupSort, TheOrderAloneIsTheOrderOfTheLinesAndALoopEndsThePath)
{
    // Names that are prefixes of each other, a negative order, a parent from the directory and
    // a loop: the cases where the lines' characters decide.
    group(100001, "Unit", 1);
    group(100002, "Unit 2", 1);
    group(100003, "Stack", 2, 100001);
    group(100004, "Stack", -2, 100002);
    group(100005, "Loop A", 5, 100006);
    group(100006, "Loop B", 5, 100005);
    di.addSetting(100009, "Holder", 7, Value("x"));
    group(100007, "Held", 3, 100009);
    const QList<SortedGroup> lines = sortedSettingGroups(di);
    const QList<SortedGroup> order = sortedSettingGroups(di, false);
    ASSERT_EQ(order.size(), lines.size());
    for (qsizetype i = 0; i < lines.size(); ++i) {
        SCOPED_TRACE(lines[i].sortLine.toStdString());
        EXPECT_EQ(order[i].group->PidNumber(), lines[i].group->PidNumber());
        EXPECT_EQ(order[i].name, lines[i].name);
        EXPECT_EQ(order[i].parentPid, lines[i].parentPid);
        EXPECT_TRUE(order[i].sortLine.isEmpty());
    }
    // Whichever of the loop starts the path, the other one hangs below it, once.
    const QStringList loop = sortedLines().filter(QStringLiteral("Loop"));
    ASSERT_EQ(loop.size(), 2);
    EXPECT_EQ(loop.at(0).count(u';'), 0);
    EXPECT_EQ(loop.at(1).count(u';'), 1);
}

} // namespace
} // namespace olvex
