// What keeps the operator's picture true: rows that follow the service at once, Refresh, the
// default button that would change nothing, Find, sorting and the range mark.
#include "settings_fixture.h"

#include "common/pid.h"

#include <QHeaderView>
#include <QTest>

namespace olvex::testing {
namespace {

using LiveEditor = EditorOnGroup<kLimits, true>;

QStringList shownNames(const ReportList &list)
{
    QStringList names;
    for (int i = 0; i < list.rowCount(); ++i) {
        if (!list.row(i)->isHidden()) {
            names << list.row(i)->text(0);
        }
    }
    return names;
}

TEST_F(LiveEditor, AnAppliedChangeShowsWithinASecondAndTheWatchEnds)
{
    const QString watch = QStringLiteral("Watch pending settings");
    EXPECT_EQ(di->clock()->liveInterval(watch), nullptr);
    ui.queueModal(typeNumber(QStringLiteral("55")));
    QTest::mouseClick(editor->cmdChange(), Qt::LeftButton);
    ASSERT_EQ(settingRow(kSpan)->text(1), QStringLiteral("Updating..."));
    ASSERT_NE(di->clock()->liveInterval(watch), nullptr);
    di->clock()->advance(1);
    EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("Updating..."));
    di->applyPendingWrites();
    di->clock()->advance(1);
    EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("55"));
    EXPECT_EQ(di->clock()->liveInterval(watch), nullptr);
    EXPECT_TRUE(editor->cmdChange()->isEnabled());
}

TEST_F(LiveEditor, RefreshKeepsTheSelectedRowAndReadsNewValues)
{
    selectSetting(kZero);
    di->parameter(kZero)->setCurrentValue(Value(0.75));
    editor->actRefresh()->trigger();
    EXPECT_EQ(editor->lsvSettings()->selectedRow(), settingRow(kZero));
    EXPECT_EQ(settingRow(kZero)->text(1), QStringLiteral("0.75"));
}

TEST_F(LiveEditor, AWriteThatChangesNothingPostsNothing)
{
    // Zero offset holds 0.5, its default 0: the default button works until the value is 0.
    selectSetting(kZero);
    EXPECT_TRUE(editor->cmdChangeToDefault()->isEnabled());
    di->parameter(kZero)->setCurrentValue(Value(0));
    editor->Refresh();
    EXPECT_FALSE(editor->cmdChangeToDefault()->isEnabled());
    EXPECT_TRUE(editor->cmdChangeToDefault()->toolTip().contains(u"already holds its default"));
    editor->cmdChangeToDefault_Click();
    for (const QString &entry : {QStringLiteral("0"), QStringLiteral("0.0")}) {
        ui.queueModal(typeNumber(entry));
        editor->cmdChange_Click();
    }
    EXPECT_TRUE(writes(kZero).isEmpty());
    // Once a write is on its way, the same value again must follow it.
    ui.queueModal(typeNumber(QStringLiteral("3")));
    editor->cmdChange_Click();
    ui.queueModal(typeNumber(QStringLiteral("0")));
    editor->cmdChange_Click();
    EXPECT_EQ(writes(kZero), (Writes{{3, Value(3)}, {3, Value(0)}}));
}

TEST_F(LiveEditor, FindFiltersTreeAndListByNameOrPid)
{
    struct Case
    {
        QString text;
        QStringList rows;
        bool switchesShown;
    };
    for (const Case &c : {
             Case{QStringLiteral("span"), {QStringLiteral("Span gas")}, false},
             Case{QStringLiteral("STACK"), {QStringLiteral("Stack height")}, true},
             Case{FormatPid(kZero), {QStringLiteral("Zero offset")}, false},
             Case{QString(),
                  {QStringLiteral("Span gas"), QStringLiteral("Zero offset"),
                   QStringLiteral("Stack height"), FormatPid(kUndefined)},
                  true},
         }) {
        SCOPED_TRACE(c.text.toStdString());
        showGroup(kLimits);
        editor->txtFind()->setText(c.text);
        EXPECT_EQ(shownNames(*editor->lsvSettings()), c.rows);
        const QTreeWidgetItem *switches = editor->tvwGroups()->findByKey(
            u'K' + QString::number(kSwitches).rightJustified(10, u'0'));
        EXPECT_EQ(!switches->isHidden(), c.switchesShown);
    }
    // A find that hides the shown group moves to the first group it found.
    editor->txtFind()->setText(QStringLiteral("heater"));
    EXPECT_EQ(shownNames(*editor->lsvSettings()), QStringList{QStringLiteral("Heater")});
    QTest::keyClick(editor->txtFind(), Qt::Key_Escape);
    EXPECT_TRUE(editor->txtFind()->text().isEmpty());
}

TEST_F(LiveEditor, HeadersSortAndTheGroupOrderComesBack)
{
    QHeaderView *header = editor->lsvSettings()->header();
    const QStringList groupOrder = shownNames(*editor->lsvSettings());
    Q_EMIT header->sectionClicked(0);
    EXPECT_EQ(editor->lsvSettings()->row(0)->text(0), FormatPid(kUndefined)); // digits first
    Q_EMIT header->sectionClicked(0);
    EXPECT_EQ(editor->lsvSettings()->row(0)->text(0), QStringLiteral("Zero offset"));
    Q_EMIT header->sectionClicked(0);
    EXPECT_EQ(shownNames(*editor->lsvSettings()), groupOrder);
}

TEST_F(LiveEditor, ValuesOutsideTheRecommendedRangeAreMarkedAndExplained)
{
    di->parameter(kSpan)->setCurrentValue(Value(120));
    editor->Refresh();
    QTreeWidgetItem *span = settingRow(kSpan);
    EXPECT_NE(span->foreground(1).color(), settingRow(kZero)->foreground(1).color());
    const QString tip = editor->RowToolTip(span);
    EXPECT_TRUE(tip.contains(u"Recommended range: 0 ... 100")) << tip.toStdString();
    EXPECT_TRUE(tip.contains(u"outside the recommended range")) << tip.toStdString();
    EXPECT_TRUE(tip.contains(u"Can be read and changed")) << tip.toStdString();
    EXPECT_FALSE(editor->RowToolTip(settingRow(kZero)).contains(u"outside"));
    // The fake site keeps no audit trail: History says why it is off.
    EXPECT_FALSE(editor->cmdHistory()->isEnabled());
    EXPECT_FALSE(editor->cmdHistory()->toolTip().isEmpty());
}

} // namespace
} // namespace olvex::testing
