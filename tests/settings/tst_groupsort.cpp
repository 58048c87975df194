// The order of the setting group tree: parents first, siblings by order number, then name.
#include "settings/groupsort.h"
#include "settings/settingattributes.h"
#include "support/fake_data_interface.h"

#include <gtest/gtest.h>

namespace olvex {
namespace {

class GroupSort : public ::testing::Test
{
protected:
    FakeParameterPtr group(qint32 pid, const QString &name, int order, qint32 parent = 0)
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

    DefinitionLookup lookup()
    {
        return [this](qint32 pid) -> ParameterPtr {
            return di.parameter(pid);
        };
    }

    FakeDataInterface di;
};

TEST_F(GroupSort, KeyOfANestedGroupStartsAtItsRoot)
{
    group(100001, QStringLiteral("Plant"), 1);
    auto limits = group(100002, QStringLiteral("Limits"), 2, 100001);
    EXPECT_EQ(GroupSortKey(*limits, {}, lookup()), QStringLiteral("0001,Plant;0002,Limits"));
    EXPECT_EQ(GroupSortKey(*limits, QStringLiteral("x"), lookup()),
              QStringLiteral("0001,Plant;0002,Limits;x"));
}

TEST_F(GroupSort, OrderNumbersAreZeroFilled)
{
    struct Case
    {
        Value order;
        QString key;
    };
    const std::vector<Case> cases = {
        {Value(2), "0002,G"},   {Value(10), "0010,G"},     {Value(12345), "12345,G"},
        {Value(-5), "-0005,G"}, {Value::null(), "0000,G"}, {Value("7"), "0007,G"},
    };
    auto g = group(100001, QStringLiteral("G"), 0);
    for (const Case &c : cases) {
        g->setAttributeValue(GroupAttr::Order, c.order);
        EXPECT_EQ(GroupSortKey(*g, {}, lookup()), c.key) << c.order.debugText().toStdString();
    }
}

TEST_F(GroupSort, SiblingsSortByOrderThenNameAndParentsComeFirst)
{
    // Added in an order that is none of the expected ones.
    group(100005, QStringLiteral("Zeta"), 10, 100001);
    group(100004, QStringLiteral("Beta"), 2, 100001);
    group(100003, QStringLiteral("Alpha"), 2, 100001);
    group(100001, QStringLiteral("Plant"), 1);
    group(100006, QStringLiteral("Big"), 12345, 100001); // five digits sort as text
    group(100002, QStringLiteral("Alarms"), 0);
    EXPECT_EQ(sortedLines(), (QStringList{
                                 "0000,Alarms\t[100002]",
                                 "0001,Plant\t[100001]",
                                 "0001,Plant;0002,Alpha\t[100003]",
                                 "0001,Plant;0002,Beta\t[100004]",
                                 "0001,Plant;0010,Zeta\t[100005]",
                                 "0001,Plant;12345,Big\t[100006]",
                             }));
}

TEST_F(GroupSort, ParentsWithoutDefinitionOrWithoutTheFlagStartThePath)
{
    group(100001, QStringLiteral("Plant"), 1);
    group(100002, QStringLiteral("Orphan"), 3, 199999); // parent has no definition
    auto unflagged = group(100003, QStringLiteral("Flagless"), 4, 100001);
    unflagged->setAttributeValue(GroupAttr::HasParent, 0); // the flag says: no parent
    EXPECT_EQ(sortedLines(), (QStringList{"0001,Plant\t[100001]", "0003,Orphan\t[100002]",
                                          "0004,Flagless\t[100003]"}));
}

TEST_F(GroupSort, AParentThatIsNoGroupIsFoundInTheDirectory)
{
    di.addSetting(100009, QStringLiteral("Holder"), 7, Value("x"));
    di.parameter(100009)->setAttributeValue(GroupAttr::Order, 9);
    group(100001, QStringLiteral("Child"), 1, 100009);
    EXPECT_EQ(sortedLines(), QStringList{"0009,Holder;0001,Child\t[100001]"});
}

TEST_F(GroupSort, ALoopInTheParentsEndsThePath)
{
    group(100001, QStringLiteral("A"), 1, 100002);
    group(100002, QStringLiteral("B"), 2, 100001);
    const QStringList lines = sortedLines();
    ASSERT_EQ(lines.size(), 2);
    // Whichever starts the path, the other one hangs below it, once.
    EXPECT_EQ(lines.at(0).count(u';'), 0);
    EXPECT_EQ(lines.at(1).count(u';'), 1);
}

TEST_F(GroupSort, TheOrderAloneIsTheOrderOfTheLines)
{
    // Names that are prefixes of each other, a negative order, a parent from the directory and
    // a loop: the cases where the lines' characters decide.
    group(100001, QStringLiteral("Unit"), 1);
    group(100002, QStringLiteral("Unit 2"), 1);
    group(100003, QStringLiteral("Stack"), 2, 100001);
    group(100004, QStringLiteral("Stack"), -2, 100002);
    group(100005, QStringLiteral("Loop A"), 5, 100006);
    group(100006, QStringLiteral("Loop B"), 5, 100005);
    di.addSetting(100009, QStringLiteral("Holder"), 7, Value("x"));
    group(100007, QStringLiteral("Held"), 3, 100009);
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
}

TEST_F(GroupSort, NoGroupsGiveNoLines)
{
    di.addSetting(100009, QStringLiteral("Setting"), 1, Value(1));
    EXPECT_TRUE(sortedLines().isEmpty());
    EXPECT_EQ(di.pidsOfTypesRequests(), (QList<QList<int>>{{ParameterTypes::SettingGroup}}));
}

} // namespace
} // namespace olvex
