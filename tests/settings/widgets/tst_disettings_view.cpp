// Setting up the editor, the group tree, and what the two views show.
#include "settings_fixture.h"

#include "common/pid.h"

#include <QTextDocument>
#include <QTextEdit>

namespace olvex::testing {
namespace {

using SetupTest = SettingsEditorTest;

TEST_F(SetupTest, InitializesTheSecurityObjectWithTheConnectionTexts)
{
    buildSite();
    setup();
    EXPECT_EQ(ui.createSecurityCount(), 1);
    EXPECT_EQ(ui.security()->initializeCalls(),
              (QList<FakeSecurity::InitializeCall>{{"data-primary", "data-secondary", "das-primary",
                                                    "das-secondary", "WS1:DISettings", 0}}));
    EXPECT_TRUE(problems.isEmpty()) << problems.join(u'\n').toStdString();
}

TEST_F(SetupTest, TheRefreshTimerExistsOnlyWhenAskedFor)
{
    buildSite();
    setup(false);
    EXPECT_TRUE(di->clock()->createdSpecs().isEmpty());
    EXPECT_FALSE(editor->hasRefreshTimer());

    setup(true);
    ASSERT_EQ(di->clock()->createdSpecs().size(), 1);
    const IntervalSpec spec = di->clock()->createdSpecs().constFirst();
    EXPECT_EQ(spec.periodSeconds, 60);
    EXPECT_EQ(spec.id, 21);
    EXPECT_FALSE(spec.firstDue.has_value());
    EXPECT_EQ(spec.name, QStringLiteral("Refresh Setting window"));
    EXPECT_TRUE(spec.repeat);
    EXPECT_FALSE(spec.arg6);
    EXPECT_TRUE(spec.arg7);
    EXPECT_EQ(spec.resolutionMs, 1000);
    EXPECT_EQ(spec.arg9, 60);
}

TEST_F(SetupTest, TheFirstGroupIsShownWithItsFirstRowSelected)
{
    buildSite();
    setup();
    // Plant sorts first; it has no members, so its list is empty and the buttons are off.
    EXPECT_EQ(KeyedTree::nodeKey(editor->tvwGroups()->selectedNode()),
              QStringLiteral("K0000100100"));
    EXPECT_EQ(editor->lsvSettings()->rowCount(), 0);
    EXPECT_FALSE(editor->cmdChange()->isEnabled());

    showGroup(kLimits);
    EXPECT_FALSE(editor->fraSettings()->isHidden());
    EXPECT_TRUE(editor->fraAlarmSettings()->isHidden());
    EXPECT_EQ(editor->lsvSettings()->selectedRow(), settingRow(kSpan));
    EXPECT_TRUE(editor->cmdChange()->isEnabled());
    EXPECT_TRUE(editor->cmdChangeToDefault()->isEnabled());
}

TEST_F(SetupTest, TheTreeNestsAndOrdersTheGroups)
{
    buildSite();
    setup();
    KeyedTree *tree = editor->tvwGroups();
    ASSERT_EQ(tree->topLevelItemCount(), 2);
    EXPECT_EQ(tree->topLevelItem(0)->text(0), QStringLiteral("Plant"));
    EXPECT_EQ(tree->topLevelItem(1)->text(0), QStringLiteral("Alarms"));
    QTreeWidgetItem *plant = tree->topLevelItem(0);
    ASSERT_EQ(plant->childCount(), 2);
    EXPECT_EQ(plant->child(0)->text(0), QStringLiteral("Limits"));
    EXPECT_EQ(KeyedTree::nodeKey(plant->child(1)), u"K" + FormatPidPadded(kSwitches));
    EXPECT_TRUE(tree->rootIsDecorated());
}

TEST_F(SetupTest, ATreeWithoutChildrenLooksLikeAList)
{
    group(kLimits, "Limits", 1, 0, {});
    group(kSwitches, "Switches", 2, 0, {});
    setup();
    EXPECT_FALSE(editor->tvwGroups()->rootIsDecorated());
}

TEST_F(SetupTest, AnEmptyTreeSelectsAndFillsNothing)
{
    di->addSetting(kSpan, QStringLiteral("Span gas"), SettingType::Number, Value(1));
    setup(true);
    EXPECT_EQ(editor->tvwGroups()->topLevelItemCount(), 0);
    EXPECT_EQ(editor->tvwGroups()->selectedNode(), nullptr);
    EXPECT_EQ(editor->lsvSettings()->rowCount(), 0);
    EXPECT_EQ(editor->lsvAlarmSettings()->rowCount(), 0);
    EXPECT_FALSE(editor->cmdChange()->isEnabled());
    EXPECT_EQ(editor->cmdChange()->toolTip(), QStringLiteral("Select a setting first."));
    di->clock()->advance(60); // a refresh with nothing shown does nothing either
    EXPECT_TRUE(problems.isEmpty()) << problems.join(u'\n').toStdString();
}

using ViewTest = SettingsEditorTest;

TEST_F(ViewTest, SettingsRowsShowNameValueDefaultAndRange)
{
    buildSite();
    setup();
    showGroup(kLimits);
    ReportList *list = editor->lsvSettings();
    EXPECT_EQ(list->headerItem()->text(0), QStringLiteral("Setting"));
    EXPECT_EQ(list->headerItem()->text(3), QStringLiteral("Value Range"));
    ASSERT_EQ(list->rowCount(), 4);
    EXPECT_EQ(rowTexts(list->row(0)), (QStringList{"Span gas", "80", "50", "0 ... 100"}));
    EXPECT_EQ(rowTexts(list->row(1)), (QStringList{"Zero offset", "0.5", "0", ""}));
    // No default: the Null shows as such, like any other Null value.
    EXPECT_EQ(rowTexts(list->row(2)), (QStringList{"Stack height", "120", "<Null>", ""}));
    EXPECT_EQ(ReportList::rowTag(list->row(0)), QStringLiteral("PID(200100)"));
    EXPECT_EQ(ReportList::rowKey(list->row(0)), QStringLiteral("K200100"));
    EXPECT_EQ(ReportList::smallIcon(list->row(0)), 4);
    EXPECT_EQ(ReportList::smallIcon(list->row(2)), 2);
}

TEST_F(ViewTest, AnUndefinedMemberStillGetsARow)
{
    buildSite();
    setup();
    showGroup(kLimits);
    QTreeWidgetItem *row = editor->lsvSettings()->row(3);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->text(0), FormatPid(kUndefined));
    EXPECT_EQ(row->text(1), QStringLiteral("N/A"));
    EXPECT_EQ(row->text(2), QString());
    EXPECT_EQ(ReportList::rowKey(row), QString());
    EXPECT_EQ(ReportList::rowTag(row), QStringLiteral("PID(209900)"));
    EXPECT_EQ(ReportList::smallIcon(row), 1);
}

TEST_F(ViewTest, MembersThatAreNoArrayShowAnEmptyList)
{
    for (const Value &members : {Value::null(), Value(), Value(kSpan)}) {
        SCOPED_TRACE(members.debugText().toStdString());
        di = std::make_shared<FakeDataInterface>();
        buildSite();
        di->parameter(kLimits)->setAttributeValue(GroupAttr::Members, members);
        setup();
        showGroup(kLimits);
        EXPECT_EQ(editor->lsvSettings()->rowCount(), 0);
        EXPECT_FALSE(editor->cmdChange()->isEnabled());
        EXPECT_FALSE(editor->cmdChangeToDefault()->isEnabled());
    }
}

TEST_F(ViewTest, AnAlarmGroupShowsTheAlarmViewWithNothingSelected)
{
    buildSite();
    setup();
    showGroup(kAlarms);
    EXPECT_TRUE(editor->fraSettings()->isHidden());
    EXPECT_FALSE(editor->fraAlarmSettings()->isHidden());
    ReportList *alarms = editor->lsvAlarmSettings();
    ASSERT_EQ(alarms->rowCount(), 2);
    EXPECT_EQ(rowTexts(alarms->row(0)), (QStringList{"SO2 alarm", "100", "90", "10", ""}));
    EXPECT_EQ(ReportList::smallIcon(alarms->row(0)), 4);
    EXPECT_EQ(alarms->selectedRow(), nullptr);
    EXPECT_FALSE(editor->cmdChange()->isEnabled());
    EXPECT_FALSE(editor->cmdChangeAlarm()->isEnabled());
    EXPECT_EQ(editor->cmdChangeAlarm()->toolTip(), QStringLiteral("Select an alarm first."));

    selectAlarm(kNOxAlarm);
    EXPECT_TRUE(editor->cmdChangeAlarm()->isEnabled());
}

TEST_F(ViewTest, AnUndefinedMemberOfAnAlarmGroupIsSelectedInTheHiddenSettingsList)
{
    buildSite();
    group(kAlarms, "Alarms", 3, 0, {kSO2Alarm, kUndefined}, true);
    di->parameter(kSO2Alarm)->setAttributeValue(SettingAttr::Level, 60);
    setup();
    showGroup(kAlarms);
    EXPECT_EQ(ReportList::smallIcon(editor->lsvAlarmSettings()->row(0)), 5);
    // The first-row rule looks at the settings list: the undefined member's row is selected
    // there, no alarm row is, and the alarm button stays off.
    ASSERT_EQ(editor->lsvSettings()->rowCount(), 1);
    EXPECT_EQ(editor->lsvSettings()->selectedRow(), editor->lsvSettings()->row(0));
    EXPECT_EQ(editor->lsvAlarmSettings()->selectedRow(), nullptr);
    EXPECT_FALSE(editor->cmdChangeAlarm()->isEnabled());
}

TEST_F(ViewTest, CaptionOfChangeFollowsTheDataTypeAndIcon)
{
    buildSite();
    di->parameter(kHeater)->setAttributeValue(SettingAttr::Readable, false); // write-only
    setup();
    showGroup(kSwitches);
    struct Case
    {
        qint32 pid;
        QString caption;
    };
    // The caption of a yes/no or on/off setting depends on the icon; the others always read
    // "Change Value...". Order matters: the previous caption must not leak into the next.
    const std::vector<Case> cases = {
        {kPurge, "Change Value"},     {kTag, "Change Value..."},     {kPurge, "Change Value"},
        {kHeater, "Change Value..."}, {kCalDate, "Change Value..."},
    };
    for (const Case &c : cases) {
        selectSetting(c.pid);
        EXPECT_EQ(editor->cmdChange()->text(), c.caption) << c.pid;
    }
}

TEST_F(ViewTest, DisabledButtonsSayWhy)
{
    buildSite();
    setup();
    showGroup(kLimits);
    struct Case
    {
        const char *name;
        std::function<void()> select;
        QString why;
    };
    ui.security()->setCanChangeSetting(kZero, false);
    const std::vector<Case> cases = {
        {"read-only", [&] { selectSetting(kReadOnly); }, "This setting is read-only."},
        {"undefined", [&] { editor->lsvSettings()->setCurrentItem(editor->lsvSettings()->row(3)); },
         "This PID has no definition."},
        {"no privilege", [&] { selectSetting(kZero); },
         "Account 'jdoe' does not have privileges to change this setting."},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        selectSetting(kSpan);
        ASSERT_TRUE(editor->cmdChange()->isEnabled());
        c.select();
        EXPECT_FALSE(editor->cmdChange()->isEnabled());
        EXPECT_FALSE(editor->cmdChangeToDefault()->isEnabled());
        EXPECT_EQ(editor->cmdChange()->toolTip(), c.why);
        EXPECT_EQ(editor->cmdChangeToDefault()->toolTip(), c.why);
    }
}

TEST_F(ViewTest, InstructionsArePlainOrRichText)
{
    buildSite();
    di->parameter(kLimits)->setAttributeValue(GroupAttr::Instructions,
                                              QStringLiteral("  Calibrate <weekly> & log it.  "));
    di->parameter(kAlarms)->setAttributeValue(
        GroupAttr::Instructions, QStringLiteral("{\\rtf1\\ansi {\\b Alarm} limits\\par next}"));
    setup();
    showGroup(kLimits);
    EXPECT_EQ(editor->rtfboxInstructions1()->toPlainText(),
              QStringLiteral("Calibrate <weekly> & log it."));
    EXPECT_TRUE(editor->rtfboxInstructions2()->toPlainText().isEmpty());

    showGroup(kAlarms);
    EXPECT_TRUE(editor->rtfboxInstructions1()->toPlainText().isEmpty());
    EXPECT_EQ(editor->rtfboxInstructions2()->toPlainText(), QStringLiteral("Alarm limits\nnext"));

    showGroup(kSwitches); // no instructions: both boxes empty
    EXPECT_TRUE(editor->rtfboxInstructions1()->toPlainText().isEmpty());
    EXPECT_TRUE(editor->rtfboxInstructions2()->toPlainText().isEmpty());
    EXPECT_TRUE(problems.isEmpty()) << problems.join(u'\n').toStdString();
}

TEST_F(ViewTest, UnreadableRichTextIsReportedAndTheListStaysFilled)
{
    buildSite();
    di->parameter(kLimits)->setAttributeValue(GroupAttr::Instructions,
                                              QStringLiteral("{\\rtf1 {\\b unclosed"));
    setup();
    showGroup(kLimits);
    EXPECT_EQ(editor->lsvSettings()->rowCount(), 4);
    EXPECT_TRUE(editor->cmdChange()->isEnabled());
    ASSERT_EQ(problems.size(), 1);
    EXPECT_TRUE(problems.constFirst().startsWith(u"SED-012/UI-200: 32000, "))
        << problems.constFirst().toStdString();
}

TEST_F(ViewTest, FailuresCarryTheCodeOfWhereTheyHappened)
{
    struct Case
    {
        const char *name;
        std::function<void()> inject;
        QString line;
    };
    const Error gone(3011, QStringLiteral("connection lost"));
    const std::vector<Case> cases = {
        {"group definition",
         [&] {
             di->setFailure(kLimits, FakeParameter::Op::GetAttribute, gone, GroupAttr::Members);
         },
         "SED-004/UI-026: Error 3011, connection lost"},
        {"value cell",
         [&] { di->setFailure(kZero, FakeParameter::Op::GetAttribute, gone, SettingAttr::Level); },
         "SED-006/UI-076: Error 3011, connection lost"},
        {"formatting",
         [&] {
             log->setFailure(gone);
             di->parameter(kZero)->setCurrentValue(Value("x"));
         },
         "SED-007/UI-025: Error 3011, connection lost"},
        {"row click", [&] { ui.security()->setFailure(gone); },
         "SED-010/UI-028: Error 3011, connection lost"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        di = std::make_shared<FakeDataInterface>();
        log = std::make_shared<RecordingLog>();
        di->setMessageLog(log);
        buildSite();
        setup();
        problems.clear();
        c.inject();
        showGroup(kLimits);
        EXPECT_TRUE(problems.contains(c.line)) << problems.join(u'\n').toStdString();
        ui.security()->setFailure(std::nullopt);
    }
}

TEST_F(ViewTest, AMisfitValueIsLoggedAndShownEmpty)
{
    buildSite();
    di->parameter(kZero)->setCurrentValue(Value("12x"));
    setup();
    showGroup(kLimits);
    EXPECT_EQ(settingRow(kZero)->text(1), QString());
    EXPECT_EQ(log->texts(), QStringList{u"DM-014: value should be a number but isn't (PID="
                                        + FormatPid(kZero) + u')'});
    EXPECT_TRUE(problems.isEmpty());
}

} // namespace
} // namespace olvex::testing
