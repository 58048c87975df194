// Finding a setting, telling whether a write changes anything, the recommended-range mark and
// the history lines.
#include "common/pid.h"
#include "common/vocabulary.h"
#include "settings/settingcompare.h"
#include "settings/settingfind.h"
#include "settings/settinghistory.h"
#include "support/fake_parameter.h"

#include <gtest/gtest.h>

namespace olvex {
namespace {

TEST(SettingFind, NamePartOrAnyPidForm)
{
    const qint32 span = BuildPid(1, 101, 1, 0, 14);
    struct Case
    {
        const char *text;
        const char *name;
        qint32 pid;
        bool found;
    };
    for (const Case &c : {
             Case{"", "Anything", span, true},
             Case{"span", "Unit 1 SO2 Span Gas", span, true},
             Case{"  SPAN ", "Unit 1 SO2 span gas", span, true},
             Case{"zero", "Unit 1 SO2 Span Gas", span, false},
             Case{"1-101-1-00-14", "No word of it", span, true},
             Case{"110110014", "No word of it", span, true},
             Case{"[1 101 1 00 14]", "No word of it", span, true},
             Case{"1-101-1-00-15", "1-101-1-00-14 in the name", span, false},
         }) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(SettingFind(QString::fromUtf8(c.text)).matches(QString::fromUtf8(c.name), c.pid),
                  c.found);
    }
}

TEST(SettingCompare, SameValueAfterTheDataTypeAndRangeMark)
{
    using namespace SettingType;
    struct Same
    {
        int type;
        Value current;
        Value wanted;
        bool same;
    };
    for (const Same &c : {
             Same{Number, Value(25), Value("25"), true},
             Same{Number, Value(25), Value(25.0), true},
             Same{Number, Value(25), Value("25.5"), false},
             Same{Number, Value(25), Value("abc"), false},
             Same{Number, Value(), Value(0), false},
             Same{YesNo, Value(-1), Value(true), true},
             Same{YesNo, Value(0), Value("Yes"), false},
             Same{Text, Value("STK-1"), Value("STK-1"), true},
             Same{Text, Value("STK-1"), Value("stk-1"), false},
         }) {
        SCOPED_TRACE(c.current.debugText().toStdString() + " / "
                     + c.wanted.debugText().toStdString());
        EXPECT_EQ(sameSettingValue(c.type, c.current, c.wanted), c.same);
    }
    struct Range
    {
        Value value;
        Value low;
        Value high;
        bool outside;
    };
    for (const Range &c : {
             Range{Value(7), Value(0), Value(5), true}, Range{Value(5), Value(0), Value(5), false},
             Range{Value(-0.1), Value(0), Value(), true},
             Range{Value(5000), Value(), Value(1200), true},
             Range{Value(3), Value(), Value(), false},
             Range{Value("7"), Value(0), Value(5), false}, // text is no number to mark
         }) {
        EXPECT_EQ(outsideRecommendedRange(c.value, c.low, c.high), c.outside)
            << c.value.debugText().toStdString();
    }
}

TEST(SettingHistory, LinesShowValuesAsTheListDoes)
{
    FakeParameter purge(BuildPid(1, 101, 1, 0, 20), ParameterTypes::Setting,
                        QStringLiteral("Purge"));
    purge.setAttributeValue(SettingAttr::DataType, SettingType::YesNo);
    AuditEntry entry;
    entry.when = QDateTime(QDate(2026, 3, 5), QTime(14, 30, 5));
    entry.userName = QStringLiteral("operator");
    entry.clientName = QStringLiteral("OPS-1");
    entry.clientAddress = QStringLiteral("10.0.0.7");
    entry.oldValue = Value(0);
    entry.newValue = Value(-1);
    AuditEntry local = entry;
    local.clientAddress = local.clientName;
    const QList<HistoryLine> lines = historyLines(purge, {entry, local}, nullptr);
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0].oldValue, QStringLiteral("No"));
    EXPECT_EQ(lines[0].newValue, QStringLiteral("Yes"));
    EXPECT_EQ(lines[0].client, QStringLiteral("OPS-1 (10.0.0.7)"));
    EXPECT_EQ(lines[1].client, QStringLiteral("OPS-1"));
    EXPECT_TRUE(lines[0].when.contains(QStringLiteral("30"))) << lines[0].when.toStdString();
}

} // namespace
} // namespace olvex
