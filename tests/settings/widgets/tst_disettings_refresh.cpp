// The refresh timer, the data interface's event and the teardown order.
#include "settings_fixture.h"

namespace olvex::testing {
namespace {

class RefreshTest : public SettingsEditorTest
{
protected:
    void SetUp() override
    {
        SettingsEditorTest::SetUp();
        buildSite();
        setup(true);
        showGroup(kLimits);
    }

    std::shared_ptr<ManualInterval> timer() const
    {
        return di->clock()->liveInterval(QStringLiteral("Refresh Setting window"));
    }
};

TEST_F(RefreshTest, KeepsTheSelectedRowAndShowsNewValues)
{
    selectSetting(kZero);
    di->parameter(kZero)->setCurrentValue(Value(0.75));
    di->parameter(kZero)->setAttributeValue(SettingAttr::Changeable, false);
    EXPECT_EQ(di->clock()->advance(60), 1);
    EXPECT_EQ(editor->lsvSettings()->selectedRow(), settingRow(kZero));
    EXPECT_EQ(settingRow(kZero)->text(1), QStringLiteral("0.75"));
    // The buttons follow the state read again: the setting became read-only.
    EXPECT_FALSE(editor->cmdChange()->isEnabled());
    EXPECT_TRUE(problems.isEmpty()) << problems.join(u'\n').toStdString();
}

TEST_F(RefreshTest, AnUndefinedRowCannotBeSelectedAgain)
{
    editor->lsvSettings()->setCurrentItem(editor->lsvSettings()->row(3));
    di->parameter(kSpan)->setCurrentValue(Value(81));
    di->clock()->advance(60);
    ASSERT_EQ(problems.size(), 1);
    EXPECT_TRUE(problems.constFirst().startsWith(u"SED-009/UI-077: Error 9, "))
        << problems.constFirst().toStdString();
    EXPECT_EQ(editor->lsvSettings()->rowCount(), 4); // rebuilt all the same
    EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("81"));
    // No row is selected after the failed refresh; the timer keeps running for the next one.
    EXPECT_EQ(editor->lsvSettings()->selectedRow(), nullptr);
    ASSERT_NE(timer(), nullptr);
    selectSetting(kSpan);
    di->parameter(kSpan)->setCurrentValue(Value(82));
    di->clock()->advance(60);
    EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("82"));
    EXPECT_EQ(problems.size(), 1);
}

TEST_F(RefreshTest, DoesNothingWithoutASelectedRowOrInTheAlarmView)
{
    struct Case
    {
        const char *name;
        std::function<void()> arrange;
    };
    const std::vector<Case> cases = {
        {"no row selected",
         [&] {
             editor->lsvSettings()->selectRow(nullptr);
         }},
        {"alarm view",
         [&] {
             showGroup(kAlarms);
             selectAlarm(kSO2Alarm);
         }},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        c.arrange();
        di->parameter(kSpan)->resetCallCounts();
        di->parameter(kSO2Alarm)->resetCallCounts();
        di->clock()->advance(60);
        EXPECT_EQ(di->parameter(kSpan)->callCount(FakeParameter::Op::GetCurrentValue), 0);
        EXPECT_EQ(di->parameter(kSO2Alarm)->callCount(FakeParameter::Op::GetAttribute), 0);
    }
    EXPECT_TRUE(problems.isEmpty());
}

TEST_F(RefreshTest, ShowsUpdatingUntilTheServiceHasAppliedTheWrite)
{
    ui.queueModal(typeNumber(QStringLiteral("60")));
    editor->cmdChange_Click();
    EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("Updating..."));
    di->clock()->advance(60);
    EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("Updating..."));
    di->applyPendingWrites();
    di->clock()->advance(60);
    EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("60"));
}

TEST_F(RefreshTest, TheSecondaryConnectionEventDropsTheTimersLog)
{
    ASSERT_NE(timer(), nullptr);
    di->raiseUseSecondaryDasConnectionStringsChanged();
    EXPECT_EQ(timer()->setMessageLogCalls(), 1);
    EXPECT_EQ(timer()->messageLog(), nullptr);
    EXPECT_EQ(editor->lsvSettings()->rowCount(), 4); // nothing else changes
}

TEST_F(RefreshTest, TeardownStopsTheTimerAndReleasesTheDataInterface)
{
    const std::weak_ptr<ManualInterval> interval = timer();
    const long securityHolders = ui.security().use_count();
    editor->Teardown();
    EXPECT_TRUE(interval.expired() || interval.lock()->isStopped());
    EXPECT_EQ(di->clock()->liveIntervalCount(), 0);
    EXPECT_EQ(di.use_count(), 1); // only the test holds it now
    EXPECT_EQ(ui.security().use_count(), securityHolders - 1);

    // Nothing reaches the torn-down control any more.
    di->raiseUseSecondaryDasConnectionStringsChanged();
    di->clock()->advance(120);
    editor->cmdChange_Click();
    EXPECT_TRUE(problems.isEmpty());
    EXPECT_TRUE(ui.modalDialogs().isEmpty());
}

TEST_F(RefreshTest, DestroyingTheControlTearsItDown)
{
    editor.reset();
    EXPECT_EQ(di->clock()->liveIntervalCount(), 0);
    EXPECT_EQ(di.use_count(), 1);
}

} // namespace
} // namespace olvex::testing
