// Setting up the editor, the group tree, what the two views show, and the failures' codes.
#include "settings_fixture.h"

#include "common/pid.h"

#include <QTextEdit>

namespace olvex::testing {
namespace {

using ViewTest = SettingsEditorTest;

TEST_F(ViewTest, SetupBuildsTheTreeAndShowsTheFirstGroup)
{
    setup();
    EXPECT_TRUE(di->clock()->createdSpecs().isEmpty()); // the timer only when asked for
    EXPECT_FALSE(editor->hasRefreshTimer());
    EXPECT_EQ(ui.createSecurityCount(), 1);
    EXPECT_EQ(ui.security()->initializeCalls(),
              (QList<FakeSecurity::InitializeCall>{{"data-primary", "data-secondary", "das-primary",
                                                    "das-secondary", "WS1:DISettings", 0}}));
    KeyedTree *tree = editor->tvwGroups();
    EXPECT_TRUE(tree->rootIsDecorated());
    ASSERT_EQ(tree->topLevelItemCount(), 2);
    EXPECT_EQ(tree->topLevelItem(1)->text(0), QStringLiteral("Alarms"));
    QTreeWidgetItem *plant = tree->topLevelItem(0);
    EXPECT_EQ(plant->text(0), QStringLiteral("Plant"));
    ASSERT_EQ(plant->childCount(), 2);
    EXPECT_EQ(plant->child(0)->text(0), QStringLiteral("Limits"));
    EXPECT_EQ(plant->child(1)->text(0), QStringLiteral("Switches"));
    // Plant sorts first; it has no members, so its list is empty and the buttons are off.
    EXPECT_EQ(tree->selectedNode(), plant);
    EXPECT_EQ(editor->lsvSettings()->rowCount(), 0);
    EXPECT_FALSE(editor->cmdChange()->isEnabled());

    showGroup(kLimits); // the first row is selected
    EXPECT_FALSE(editor->fraSettings()->isHidden());
    EXPECT_TRUE(editor->fraAlarmSettings()->isHidden());
    EXPECT_EQ(editor->lsvSettings()->selectedRow(), settingRow(kSpan));
    EXPECT_TRUE(editor->cmdChange()->isEnabled());
    EXPECT_TRUE(editor->cmdChangeToDefault()->isEnabled());
}

// A second Setup may bring another site: nothing of the first may stay on screen. A flat tree
// looks like a list; an empty one selects and fills nothing.
TEST_F(ViewTest, ASecondSetupShowsOnlyTheNewSite)
{
    open(kLimits);
    ASSERT_GT(editor->lsvSettings()->rowCount(), 0);
    freshSite(false);
    group(kLimits, "Limits", 1, 0, {});
    group(kSwitches, "Switches", 2, 0, {});
    setup();
    EXPECT_FALSE(editor->tvwGroups()->rootIsDecorated());
    EXPECT_EQ(editor->tvwGroups()->topLevelItemCount(), 2);

    freshSite(false);
    di->addSetting(kSpan, QStringLiteral("Span gas"), SettingType::Number, Value(1));
    setup(true);
    EXPECT_EQ(editor->tvwGroups()->topLevelItemCount(), 0);
    EXPECT_EQ(editor->tvwGroups()->selectedNode(), nullptr);
    EXPECT_EQ(editor->lsvSettings()->rowCount(), 0);
    EXPECT_EQ(editor->lsvAlarmSettings()->rowCount(), 0);
    EXPECT_FALSE(editor->cmdChange()->isEnabled());
    EXPECT_EQ(editor->cmdChange()->toolTip(), QStringLiteral("Select a setting first."));
    di->clock()->advance(60); // a refresh with nothing shown does nothing either
}

TEST_F(ViewTest, SettingsRowsShowNameValueDefaultAndRange)
{
    di->parameter(kZero)->setCurrentValue(Value("12x")); // a misfit: logged and shown empty
    open(kLimits);
    ReportList *list = editor->lsvSettings();
    EXPECT_EQ(list->headerItem()->text(0), QStringLiteral("Setting"));
    EXPECT_EQ(list->headerItem()->text(3), QStringLiteral("Value Range"));
    ASSERT_EQ(list->rowCount(), 4);
    EXPECT_EQ(rowTexts(list->row(0)), (QStringList{"Span gas", "80", "50", "0 ... 100"}));
    EXPECT_EQ(rowTexts(list->row(1)), (QStringList{"Zero offset", "", "0", ""}));
    EXPECT_EQ(log->texts(), QStringList{u"DM-014: value should be a number but isn't (PID="
                                        + FormatPid(kZero) + u')'});
    // No default: the Null shows as such, like any other Null value.
    EXPECT_EQ(rowTexts(list->row(2)), (QStringList{"Stack height", "120", "<Null>", ""}));
    // A member without definition still gets a row, without key.
    EXPECT_EQ(rowTexts(list->row(3)), (QStringList{FormatPid(kUndefined), "N/A"}));
    const std::vector<std::tuple<int, QString, QString, int>> rows
        = {{0, "PID(200100)", "K200100", 4},
           {2, "PID(200300)", "K200300", 2},
           {3, "PID(209900)", "", 1}};
    for (const auto &[index, tag, key, icon] : rows) {
        EXPECT_EQ(ReportList::rowTag(list->row(index)), tag);
        EXPECT_EQ(ReportList::rowKey(list->row(index)), key);
        EXPECT_EQ(ReportList::smallIcon(list->row(index)), icon);
    }
}

TEST_F(ViewTest, MembersThatAreNoArrayShowAnEmptyList)
{
    for (const Value &members : {Value::null(), Value(), Value(kSpan)}) {
        SCOPED_TRACE(members.debugText().toStdString());
        freshSite();
        di->parameter(kLimits)->setAttributeValue(GroupAttr::Members, members);
        open(kLimits);
        EXPECT_EQ(editor->lsvSettings()->rowCount(), 0);
        EXPECT_FALSE(editor->cmdChange()->isEnabled());
        EXPECT_FALSE(editor->cmdChangeToDefault()->isEnabled());
    }
}

// An undefined member of an alarm group lands in the hidden settings list, where the first-row
// rule selects it: no alarm row is selected and the alarm button stays off until the operator
// selects one.
TEST_F(ViewTest, AnAlarmGroupShowsTheAlarmViewWithNoAlarmSelected)
{
    group(kAlarms, "Alarms", 3, 0, {kSO2Alarm, kNOxAlarm, kUndefined}, true);
    di->parameter(kNOxAlarm)->setAttributeValue(SettingAttr::Level, 60);
    open(kAlarms);
    EXPECT_TRUE(editor->fraSettings()->isHidden());
    EXPECT_FALSE(editor->fraAlarmSettings()->isHidden());
    ReportList *alarms = editor->lsvAlarmSettings();
    ASSERT_EQ(alarms->rowCount(), 2);
    EXPECT_EQ(rowTexts(alarms->row(0)), (QStringList{"SO2 alarm", "100", "90", "10", ""}));
    EXPECT_EQ(ReportList::smallIcon(alarms->row(0)), 4);
    EXPECT_EQ(ReportList::smallIcon(alarms->row(1)), 5);
    ASSERT_EQ(editor->lsvSettings()->rowCount(), 1);
    EXPECT_EQ(editor->lsvSettings()->selectedRow(), editor->lsvSettings()->row(0));
    EXPECT_EQ(alarms->selectedRow(), nullptr);
    EXPECT_FALSE(editor->cmdChangeAlarm()->isEnabled());
    EXPECT_EQ(editor->cmdChangeAlarm()->toolTip(), QStringLiteral("Select an alarm first."));
    selectAlarm(kNOxAlarm);
    EXPECT_TRUE(editor->cmdChangeAlarm()->isEnabled());
}

TEST_F(ViewTest, CaptionOfChangeFollowsTheDataTypeAndIcon)
{
    di->parameter(kHeater)->setAttributeValue(SettingAttr::Readable, false); // write-only
    open(kSwitches);
    // The caption of a yes/no or on/off setting depends on the icon; the others always read
    // "Change Value...". Order matters: the previous caption must not leak into the next.
    const std::vector<std::pair<qint32, QString>> cases = {
        {kPurge, "Change Value"},     {kTag, "Change Value..."},     {kPurge, "Change Value"},
        {kHeater, "Change Value..."}, {kCalDate, "Change Value..."},
    };
    for (const auto &[pid, caption] : cases) {
        selectSetting(pid);
        EXPECT_EQ(editor->cmdChange()->text(), caption) << pid;
    }
}

TEST_F(ViewTest, DisabledButtonsSayWhy)
{
    open(kLimits);
    ui.security()->setCanChangeSetting(kZero, false);
    const std::vector<std::pair<int, QString>> cases = {
        {2, "This setting is read-only."},
        {3, "This PID has no definition."},
        {1, "Account 'jdoe' does not have privileges to change this setting."},
    };
    for (const auto &[row, why] : cases) {
        SCOPED_TRACE(why.toStdString());
        selectSetting(kSpan);
        ASSERT_TRUE(editor->cmdChange()->isEnabled());
        editor->lsvSettings()->setCurrentItem(editor->lsvSettings()->row(row));
        EXPECT_FALSE(editor->cmdChange()->isEnabled());
        EXPECT_FALSE(editor->cmdChangeToDefault()->isEnabled());
        EXPECT_EQ(editor->cmdChange()->toolTip(), why);
        EXPECT_EQ(editor->cmdChangeToDefault()->toolTip(), why);
    }
}

TEST_F(ViewTest, InstructionsArePlainOrRichText)
{
    di->parameter(kLimits)->setAttributeValue(GroupAttr::Instructions,
                                              QStringLiteral("  Calibrate <weekly> & log it.  "));
    di->parameter(kAlarms)->setAttributeValue(
        GroupAttr::Instructions, QStringLiteral("{\\rtf1\\ansi {\\b Alarm} limits\\par next}"));
    setup();
    // Per group: the plain box, then the rich one; no instructions leave both empty.
    const std::vector<std::tuple<qint32, QString, QString>> cases = {
        {kLimits, "Calibrate <weekly> & log it.", ""},
        {kAlarms, "", "Alarm limits\nnext"},
        {kSwitches, "", ""},
    };
    for (const auto &[pid, plain, rich] : cases) {
        showGroup(pid);
        EXPECT_EQ(editor->rtfboxInstructions1()->toPlainText(), plain) << pid;
        EXPECT_EQ(editor->rtfboxInstructions2()->toPlainText(), rich) << pid;
    }
}

TEST_F(ViewTest, FailuresCarryTheCodeOfWhereTheyHappened)
{
    struct Case
    {
        std::function<void()> inject;
        qint32 group;                // shown after the injection
        void (DISettings::*click)(); // then clicked, if any, on the first row
        QString code;
        int rows = -1; // the rows still listed, if checked
        QString reason = QStringLiteral("Error 3011, connection lost"); // or its start
    };
    using Op = FakeParameter::Op;
    const Error gone(3011, QStringLiteral("connection lost"));
    const auto fail = [&](qint32 pid, Op op, std::optional<int> attribute = {}) {
        return [=, this] {
            di->setFailure(pid, op, gone, attribute);
        };
    };
    const auto misfitWithFailingLog = [&] {
        log->setFailure(gone);
        di->parameter(kZero)->setCurrentValue(Value("x"));
    };
    const auto unreadableInstructions = [&] {
        di->parameter(kLimits)->setAttributeValue(GroupAttr::Instructions,
                                                  QStringLiteral("{\\rtf1 {\\b unclosed"));
    };
    const std::vector<Case> cases = {
        {fail(kLimits, Op::GetAttribute, GroupAttr::Members), kLimits, nullptr, "SED-004/UI-026"},
        {fail(kNOxAlarm, Op::GetAttribute, SettingAttr::SetpointL), kAlarms, nullptr,
         "SED-005/UI-094", 2},
        {fail(kZero, Op::GetAttribute, SettingAttr::Level), kLimits, nullptr, "SED-006/UI-076"},
        {misfitWithFailingLog, kLimits, nullptr, "SED-007/UI-025"},
        {[&] { ui.security()->setFailure(gone); }, kLimits, nullptr, "SED-010/UI-028"},
        {unreadableInstructions, kLimits, nullptr, "SED-012/UI-200", 4, "32000, "},
        {fail(kSpan, Op::SetValues), kLimits, &DISettings::cmdChange_Click, "SED-001/UI-029"},
        {fail(kSpan, Op::SetValues), kLimits, &DISettings::cmdChangeToDefault_Click,
         "SED-003/UI-027"},
        {fail(kSO2Alarm, Op::SetAttribute), kAlarms, &DISettings::cmdChangeAlarm_Click,
         "SED-002/UI-095"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.code.toStdString());
        freshSite();
        setup();
        c.inject();
        showGroup(c.group);
        ui.security()->setFailure(std::nullopt);
        ReportList *list = c.group == kAlarms ? editor->lsvAlarmSettings() : editor->lsvSettings();
        if (c.rows >= 0) {
            EXPECT_EQ(list->rowCount(), c.rows);
        }
        if (c.click) {
            list->setCurrentItem(list->row(0));
            ui.setDefaultModal(c.group == kAlarms ? typeSetpoints({"100", "85", "10", ""})
                                                  : typeNumber(QStringLiteral("55")));
            (editor.get()->*c.click)();
        }
        const QStringList lines = takeProblems();
        EXPECT_TRUE(std::ranges::any_of(lines, [&](const QString &line) {
            return line.startsWith(c.code + u": " + c.reason);
        })) << lines.join(u'\n').toStdString();
    }
}

} // namespace
} // namespace olvex::testing
