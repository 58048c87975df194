// The refresh timer, the data interface's event and the teardown order.
#include "settings_fixture.h"

#include <QTest>

namespace olvex::testing {
namespace {

class RefreshTest : public EditorOnGroup<kLimits, true>
{
protected:
    std::shared_ptr<ManualInterval> timer() const
    {
        return di->clock()->liveInterval(QStringLiteral("Refresh Setting window"));
    }
};

TEST_F(RefreshTest, KeepsTheSelectedRowButAnUndefinedOneCannotBeSelectedAgain)
{
    editor->lsvSettings()->setCurrentItem(editor->lsvSettings()->row(3));
    di->parameter(kSpan)->setCurrentValue(Value(81));
    di->clock()->advance(60);
    const QStringList lines = takeProblems();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines.constFirst().startsWith(u"SED-009/UI-077: Error 9, "))
        << lines.constFirst().toStdString();
    EXPECT_EQ(editor->lsvSettings()->rowCount(), 4); // rebuilt all the same
    EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("81"));
    // No row is selected after the failed refresh; the timer keeps running for the next one.
    EXPECT_EQ(editor->lsvSettings()->selectedRow(), nullptr);
    ASSERT_NE(timer(), nullptr);
    selectSetting(kZero);
    di->parameter(kZero)->setCurrentValue(Value(0.75));
    di->parameter(kZero)->setAttributeValue(SettingAttr::Changeable, false);
    EXPECT_EQ(di->clock()->advance(60), 1);
    EXPECT_EQ(editor->lsvSettings()->selectedRow(), settingRow(kZero));
    EXPECT_EQ(settingRow(kZero)->text(1), QStringLiteral("0.75"));
    // The buttons follow the state read again: the setting became read-only.
    EXPECT_FALSE(editor->cmdChange()->isEnabled());
}

TEST_F(RefreshTest, DoesNothingWithoutASelectedRowOrInTheAlarmView)
{
    const auto expectNoReads = [&] {
        di->parameter(kSpan)->resetCallCounts();
        di->parameter(kSO2Alarm)->resetCallCounts();
        di->clock()->advance(60);
        EXPECT_EQ(di->parameter(kSpan)->callCount(FakeParameter::Op::GetCurrentValue), 0);
        EXPECT_EQ(di->parameter(kSO2Alarm)->callCount(FakeParameter::Op::GetAttribute), 0);
    };
    editor->lsvSettings()->selectRow(nullptr);
    expectNoReads();
    showGroup(kAlarms);
    selectAlarm(kSO2Alarm);
    expectNoReads();
}

TEST_F(RefreshTest, ChangeToDefaultShowsUpdatingUntilTheServiceHasAppliedIt)
{
    selectSetting(kSpan);
    QTest::mouseClick(editor->cmdChangeToDefault(), Qt::LeftButton);
    EXPECT_EQ(writes(kSpan), (Writes{{3, Value(50)}}));
    EXPECT_TRUE(ui.messageBoxes().isEmpty()); // no questions, no dialog
    EXPECT_TRUE(ui.modalDialogs().isEmpty());
    EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("Updating..."));
    di->clock()->advance(60);
    EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("Updating..."));
    di->applyPendingWrites();
    di->clock()->advance(60);
    EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("50"));
}

// The secondary connection event drops the timer's log and changes nothing else; teardown, by
// call or by destruction, stops the timer first and releases the data interface and security.
TEST_F(RefreshTest, TheSecondaryConnectionEventDropsTheLogAndTeardownReleasesAll)
{
    ASSERT_NE(timer(), nullptr);
    di->raiseUseSecondaryDasConnectionStringsChanged();
    EXPECT_EQ(timer()->setMessageLogCalls(), 1);
    EXPECT_EQ(timer()->messageLog(), nullptr);
    EXPECT_EQ(editor->lsvSettings()->rowCount(), 4);

    const long securityHolders = ui.security().use_count();
    editor->Teardown();
    EXPECT_EQ(di->clock()->liveIntervalCount(), 0);
    EXPECT_EQ(di.use_count(), 1); // only the test holds it now
    EXPECT_EQ(ui.security().use_count(), securityHolders - 1);
    // Nothing reaches the torn-down control any more.
    di->raiseUseSecondaryDasConnectionStringsChanged();
    di->clock()->advance(120);
    editor->cmdChange_Click();
    EXPECT_TRUE(ui.modalDialogs().isEmpty());

    open(kLimits, true);
    ASSERT_EQ(di->clock()->liveIntervalCount(), 1);
    editor.reset();
    EXPECT_EQ(di->clock()->liveIntervalCount(), 0);
    EXPECT_EQ(di.use_count(), 1);
}

} // namespace
} // namespace olvex::testing
