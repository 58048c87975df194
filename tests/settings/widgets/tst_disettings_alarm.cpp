// Alarm setpoints: the row, the dialog's checks, and writing only what changed.
#include "settings_fixture.h"

#include <QLineEdit>

namespace olvex::testing {
namespace {

class AlarmTest : public SettingsEditorTest
{
protected:
    void SetUp() override
    {
        SettingsEditorTest::SetUp();
        buildSite();
        setup();
        showGroup(kAlarms);
        selectAlarm(kSO2Alarm);
    }

    // The operator types the four setpoints (blank for unused levels) and presses OK.
    static ScriptedUi::ModalHandler typeSetpoints(const QStringList &texts)
    {
        return ScriptedUi::acceptAfter([texts](QDialog &dialog) {
            auto &setpoints = dynamic_cast<frmSettings_AlarmSetpoints &>(dialog);
            for (int rank = 0; rank < 4; ++rank) {
                setpoints.field(rank)->setText(texts.at(rank));
            }
        });
    }

    QList<FakeParameter::AttributeWrite> attributeWrites() const
    {
        return di->parameter(kSO2Alarm)->attributeWrites();
    }
};

struct OrderCase
{
    const char *name;
    QStringList setpoints; // high high, high, low, low low
    QString message;       // empty: accepted
};

TEST_F(AlarmTest, TheOrderCheckNamesTheFirstPairOutOfOrder)
{
    const std::vector<OrderCase> cases = {
        {"in order", {"100", "90", "10", "5"}, {}},
        {"equal values", {"90", "90", "10", "10"}, {}},
        {"unused levels", {"", "90", "", "5"}, {}},
        {"high above high-high",
         {"80", "90", "10", "5"},
         "The high value is larger than the high-high value."},
        {"low above high-high",
         {"80", "", "95", ""},
         "The low value is larger than the high-high value."},
        {"low-low above high-high",
         {"80", "", "", "85"},
         "The low-low value is larger than the high-high value."},
        {"low above high, high-high unused",
         {"", "90", "95", ""},
         "The low value is larger than the high value."},
        {"low-low above high",
         {"", "90", "", "91"},
         "The low-low value is larger than the high value."},
        {"low-low above low",
         {"100", "90", "10", "11"},
         "The low-low value is larger than the low value."},
        {"several pairs: the first is named",
         {"10", "20", "30", "40"},
         "The high value is larger than the high-high value."},
    };
    for (const OrderCase &c : cases) {
        SCOPED_TRACE(c.name);
        ui.clearMessageBoxes();
        FakeParameterPtr alarm = di->parameter(kSO2Alarm);
        const qsizetype before = alarm->attributeWrites().size();
        ui.queueModal(typeSetpoints(c.setpoints));
        editor->cmdChangeAlarm_Click();
        if (c.message.isEmpty()) {
            EXPECT_TRUE(ui.messageBoxes().isEmpty());
            EXPECT_EQ(ui.modalDialogs().constLast().result, int(QDialog::Accepted));
        } else {
            ASSERT_EQ(ui.messageBoxes().size(), 1);
            EXPECT_EQ(ui.messageBoxes().constFirst().text, c.message);
            EXPECT_EQ(ui.messageBoxes().constFirst().style, 48);
            EXPECT_EQ(alarm->attributeWrites().size(), before); // nothing written
        }
    }
    EXPECT_TRUE(problems.isEmpty()) << problems.join(u'\n').toStdString();
}

TEST_F(AlarmTest, OnlyChangedSetpointsAreWritten)
{
    ui.queueModal(typeSetpoints({"100", "85", "10", ""}));
    editor->cmdChangeAlarm_Click();
    EXPECT_EQ(attributeWrites(),
              (QList<FakeParameter::AttributeWrite>{{SettingAttr::SetpointH, Value(qint64(85))}}));
    QTreeWidgetItem *row = editor->lsvAlarmSettings()->findByKey(rowKey(kSO2Alarm));
    EXPECT_EQ(rowTexts(row), (QStringList{"SO2 alarm", "100", "85", "10", ""}));
    EXPECT_TRUE(editor->cmdChangeAlarm()->isEnabled());
}

TEST_F(AlarmTest, ClearingAndSettingLevels)
{
    ui.queueModal(typeSetpoints({"", "90", "10", "2.5"}));
    editor->cmdChangeAlarm_Click();
    EXPECT_EQ(attributeWrites(), (QList<FakeParameter::AttributeWrite>{
                                     {SettingAttr::SetpointHH, Value()},
                                     {SettingAttr::SetpointLL, Value(2.5)},
                                 }));
}

TEST_F(AlarmTest, TheDialogShowsThePresentSetpoints)
{
    di->parameter(kSO2Alarm)->setAttributeValue(SettingAttr::SetpointLL, Value::null());
    QStringList shown;
    ui.queueModal([&](QDialog &dialog) {
        auto &setpoints = dynamic_cast<frmSettings_AlarmSetpoints &>(dialog);
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Alarm Settings"));
        for (int rank = 0; rank < 4; ++rank) {
            shown << setpoints.field(rank)->text();
        }
        EXPECT_EQ(setpoints.SetpointHH(), Value(qint64(100)));
        EXPECT_EQ(setpoints.SetpointLL(), Value());
        return int(QDialog::Rejected);
    });
    editor->cmdChangeAlarm_Click();
    EXPECT_EQ(shown, (QStringList{"100", "90", "10", ""}));
    EXPECT_TRUE(attributeWrites().isEmpty());
}

TEST_F(AlarmTest, TextThatIsNoNumberIsRefused)
{
    ui.queueModal(typeSetpoints({"100", "ninety", "10", ""}));
    editor->cmdChangeAlarm_Click();
    ASSERT_EQ(ui.messageBoxes().size(), 1);
    EXPECT_TRUE(ui.messageBoxes().constFirst().text.startsWith(u"The high value is not a number."));
    EXPECT_TRUE(attributeWrites().isEmpty());
}

TEST_F(AlarmTest, ARefusedPrivilegeIsShownAndRaised)
{
    ui.security()->setCanChangeSetting(kSO2Alarm, false);
    editor->cmdChangeAlarm_Click();
    EXPECT_EQ(ui.lastMessageBox().text,
              QStringLiteral("Access denied. Account 'jdoe' does not have privileges."));
    EXPECT_EQ(problems, QStringList{"SED-013: Account 'jdoe' does not have privileges."});
    EXPECT_TRUE(ui.modalDialogs().isEmpty());
}

TEST_F(AlarmTest, AFailingWriteIsRaisedWithTheFlowsCode)
{
    di->setFailure(kSO2Alarm, FakeParameter::Op::SetAttribute,
                   Error(440, QStringLiteral("locked")));
    ui.queueModal(typeSetpoints({"100", "85", "10", ""}));
    editor->cmdChangeAlarm_Click();
    EXPECT_EQ(problems, QStringList{"SED-002/UI-095: Error 440, locked"});
}

TEST_F(AlarmTest, RowFillFailuresCarryTheirCode)
{
    di->setFailure(kNOxAlarm, FakeParameter::Op::GetAttribute, Error(7, QStringLiteral("gone")),
                   SettingAttr::SetpointL);
    showGroup(kAlarms);
    EXPECT_EQ(problems, QStringList{"SED-005/UI-094: Error 7, gone"});
    EXPECT_EQ(editor->lsvAlarmSettings()->rowCount(), 2);
}

} // namespace
} // namespace olvex::testing
