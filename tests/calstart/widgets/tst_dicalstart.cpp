// The calibration start control on an in-memory site with a scripted operator: the list, the
// enabling rules as the operator meets them, leaving fields, the dirty prompt, Save, the
// 10-second status timer and Teardown.
#include "calstart/calstart_test_util.h"
#include "calstart/widgets/dicalstart.h"
#include "common/pid.h"
#include "support/fake_data_interface.h"
#include "support/fake_log.h"
#include "support/widgets/scripted_ui.h"

#include <gmock/gmock.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRadioButton>

using namespace olvex;
using namespace olvex::test;
using namespace Qt::StringLiterals;

namespace {

const qint32 kFirst = BuildPid(1, 101, 3, 0, 1);
const qint32 kSecond = BuildPid(2, 102, 3, 0, 1);
const qint32 kNoValue = BuildPid(2, 105, 3, 0, 1);

QStringList fullRecord(const QString &every26, const QString &hours)
{
    return u"CalEnabled@C12|1|CalStartTimeUser|06:30|CalDelayMinutes|30|CalAfterStartup|1|"
           u"NormalOpSupported|1|CanDetermineOpHours|1|CalConfirmSupported|1|CalConfirmEnabled|1|"
           u"CalConfirmTimeout|45|ManualCalStartSupported@C12|1|UserFriendlyStatus|"
           u"Idle; next daily cal check at 06:30|CalEvery26OpHours"_s.split(u'|')
           + QStringList{every26, u"OpHoursSinceOnlineCal"_s, hours, u"OpHoursStatusString"_s,
                         hours + u" hours since the last online check"_s};
}

class DICalStartTest : public testing::Test
{
protected:
    void SetUp() override
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        const auto first = di->addParameter(kFirst, ParameterTypes::Calibration, u"SO2 Cal"_s);
        first->setUnitName(u"Unit 1"_s);
        first->setCurrentValue(Value(calRecord(fullRecord(u"1"_s, u"12"_s))));
        di->addParameter(BuildPid(1, 101, 1, 0, 1), ParameterTypes::Setting, u"A setting"_s);
        const auto second
            = di->addParameter(kSecond, ParameterTypes::Calibration, u"Unit 2 NOx Cal"_s);
        second->setUnitName(u"Unit 2"_s);
        second->setCurrentValue(
            Value(calRecord({u"CalEnabled@Cx"_s, u"0"_s, u"CalStartTimeUser"_s, u"07:15"_s})));
        const auto noValue = di->addParameter(kNoValue, ParameterTypes::Calibration, u"CO Cal"_s);
        noValue->setUnitName(u"Unit 2"_s);
        noValue->setInError(true);
        di->setUser(u"operator"_s, {Privileges::ChangeSettings});
        di->setChannelKind(12, 1);
        control.Setup(log, di);
    }
    void TearDown() override { QLocale::setDefault(QLocale::c()); }

    QList<PostedRecord> posts() const { return di->messageRecords()->posts(); }

    ScriptedUi ui;
    std::shared_ptr<FakeDataInterface> di = std::make_shared<FakeDataInterface>();
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    DICalStart control{&ui};
};

TEST_F(DICalStartTest, ListsCalibrationParametersAndLoadsTheFirst)
{
    ASSERT_EQ(control.rowCount(), 3);
    EXPECT_EQ(control.rowCaption(0), u"(Unit 1) SO2 Cal"_s);
    EXPECT_EQ(control.rowCaption(1), u"Unit 2 NOx Cal"_s);
    EXPECT_EQ(control.rowCaption(2), u"[ERROR] (Unit 2) CO Cal"_s);
    EXPECT_EQ(control.selectedRow(), 0);
    EXPECT_EQ(control.txtTime()->text(), u"6:30 AM"_s);
    EXPECT_EQ(control.lblAutoCalStatus()->text(), u"Idle; next daily cal check at 06:30"_s);
    EXPECT_TRUE(control.cmdStartCal()->isEnabled());
    EXPECT_FALSE(control.cmdAbortCal()->isEnabled());
    EXPECT_FALSE(control.cmdAbortCal()->toolTip().isEmpty());
    EXPECT_FALSE(control.isDirty());
    // The start button posts the channel write.
    control.cmdStartCal()->click();
    ASSERT_EQ(posts().size(), 2);
    EXPECT_EQ(posts().first().recordType, u"Q1IOCOMMAND"_s);

    // No value: the no-data state.
    control.SelectParameter(2);
    EXPECT_FALSE(control.lblNoData()->isHidden());
    EXPECT_FALSE(control.cmdSave()->isEnabled());
}

TEST_F(DICalStartTest, EnablingRulesAsTheOperatorMeetsThem)
{
    control.chkAfterNormalOps()->click();
    EXPECT_FALSE(control.chkAfterStartup()->isChecked());
    EXPECT_FALSE(control.txtStartupDelay()->isEnabled());
    EXPECT_TRUE(control.txtNormalOpsDelay()->isEnabled());
    control.txtNormalOpsDelay()->setText(u"15"_s);
    Q_EMIT control.txtNormalOpsDelay()->textEdited(u"15"_s);
    EXPECT_EQ(control.entry().startupDelay, u"15"_s);
    EXPECT_TRUE(control.isDirty());

    control.chkDisable()->click();
    for (QWidget *item : {static_cast<QWidget *>(control.txtTime()),
                          static_cast<QWidget *>(control.chkAfterNormalOps()),
                          static_cast<QWidget *>(control.chkEvery26()),
                          static_cast<QWidget *>(control.chkConfirm())}) {
        EXPECT_FALSE(item->isEnabled()) << item->objectName().toStdString();
    }
    EXPECT_TRUE(control.lblOnlineCalStatus()->text().isEmpty());
    EXPECT_TRUE(control.fraConfirm()->isEnabled());
    EXPECT_FALSE(control.txtConfirmTimeout()->isEnabled());

    // A record whose enable channel is unusable shows the choice but does not offer it.
    control.SelectParameter(1); // the prompt is answered No
    EXPECT_TRUE(control.chkDisable()->isChecked());
    EXPECT_FALSE(control.chkDisable()->isEnabled());
    EXPECT_FALSE(control.fraConfirm()->isEnabled());
}

TEST_F(DICalStartTest, LeavingFieldsChecksAndNormalises)
{
    const std::tuple<QLineEdit *, QString, bool, QString> cases[] = {
        {control.txtTime(), u"12:03 AM"_s, true, u"12:05 AM"_s},
        {control.txtTime(), u"half past"_s, false, u"half past"_s},
        {control.txtConfirmTimeout(), u"481"_s, true, u"480"_s},
        {control.txtConfirmTimeout(), u"x"_s, false, u"x"_s},
        {control.txtStartupDelay(), u"a"_s, false, u"a"_s},
    };
    for (const auto &[field, typed, accepted, shown] : cases) {
        field->setText(typed);
        EXPECT_EQ(control.ValidateField(field), accepted) << typed.toStdString();
        EXPECT_EQ(field->text(), shown);
    }
    EXPECT_EQ(ui.beepCount(), 3);
}

TEST_F(DICalStartTest, SaveChecksThePrivilegeAndPostsTheChange)
{
    di->setUser(u"viewer"_s);
    control.cmdSave()->click();
    EXPECT_EQ(ui.lastMessageBox().text,
              u"Access denied. Account 'viewer' does not have privileges."_s);
    EXPECT_TRUE(posts().isEmpty());

    di->setUser(u"operator"_s, {Privileges::ChangeSettings});
    control.chkDisable()->click();
    control.cmdSave()->click();
    ASSERT_EQ(posts().size(), 1);
    EXPECT_EQ(posts().first().recordType, u"Q1DRCOMMAND-CAL"_s);
    EXPECT_EQ(posts().first().sourceCode, u"CSET-0023"_s);
    EXPECT_THAT(posts().first().text.toStdString(),
                testing::HasSubstr("<Item id=\"CalEnabled\" newValue=\"0\" />"));
    EXPECT_EQ(ui.lastMessageBox().text,
              u"Please allow up to 2 minutes for the changes to take effect."_s);
    EXPECT_FALSE(control.isDirty());
}

TEST_F(DICalStartTest, DirtyPromptYesSavesNoDiscards)
{
    for (const int answer : {MessageBoxAnswer::No, MessageBoxAnswer::Yes}) {
        control.SelectParameter(0);
        control.chkEvery26()->click();
        ui.queueAnswers({answer});
        control.SelectParameter(1);
        EXPECT_EQ(ui.messageBoxes().value(0).text,
                  u"Do you want to save your changes to (Unit 1) SO2 Cal?"_s);
        EXPECT_EQ(control.selectedRow(), 1);
        EXPECT_FALSE(control.isDirty());
        ui.clearMessageBoxes();
    }
    ASSERT_EQ(posts().size(), 1);
    EXPECT_THAT(posts().first().text.toStdString(),
                testing::HasSubstr("<Item id=\"CalEvery26OpHours\" newValue=\"0\" />"));
    // The row already selected is not loaded again.
    control.SelectParameter(0);
    control.chkEvery26()->click();
    control.SelectParameter(0);
    EXPECT_TRUE(control.isDirty());
}

TEST_F(DICalStartTest, StatusTimerTicksEveryTenSecondsUntilTeardown)
{
    EXPECT_EQ(control.lblOnlineCalStatus()->text(), u"12 hours since the last online check"_s);
    di->parameter(kFirst)->setCurrentValue(Value(calRecord(fullRecord(u"1"_s, u"26"_s))));
    di->clock()->advance(9);
    EXPECT_THAT(control.lblOnlineCalStatus()->text().toStdString(), testing::StartsWith("12 "));
    di->clock()->advance(1);
    EXPECT_EQ(control.lblOnlineCalStatus()->text(), u"26 hours since the last online check"_s);
    EXPECT_EQ(control.lblOnlineCalStatus()->palette().color(QPalette::WindowText),
              QColor(255, 0, 0));

    control.Teardown();
    const auto parameter = di->parameter(kFirst);
    parameter->resetCallCounts();
    di->clock()->advance(60);
    control.StartCalCheck();
    control.cmdSave()->click();
    EXPECT_EQ(parameter->callCount(FakeParameter::Op::GetCurrentValue), 0);
    EXPECT_EQ(di->clock()->liveIntervalCount(), 0);
    EXPECT_TRUE(posts().isEmpty());
}

} // namespace
