// Alarm setpoints: the row, the dialog's checks, and writing only what changed.
#include "settings_fixture.h"

namespace olvex::testing {
namespace {

class AlarmTest : public EditorOnGroup<kAlarms>
{
protected:
    void SetUp() override
    {
        EditorOnGroup::SetUp();
        selectAlarm(kSO2Alarm);
    }

    QList<FakeParameter::AttributeWrite> attributeWrites() const
    {
        return di->parameter(kSO2Alarm)->attributeWrites();
    }
};

QString larger(const char *lower, const char *higher)
{
    return QStringLiteral("The %1 value is larger than the %2 value.")
        .arg(QLatin1String(lower), QLatin1String(higher));
}

TEST_F(AlarmTest, TheChecksNameTheFirstPairOutOfOrderOrTheFieldThatIsNoNumber)
{
    const QString notANumber
        = QStringLiteral("The high value is not a number. Enter a number, or leave it blank when "
                         "this alarm level is not used.");
    // The setpoints high high, high, low, low low; the message, empty when accepted.
    const std::vector<std::pair<QStringList, QString>> cases = {
        {{"100", "90", "10", "5"}, {}},
        {{"90", "90", "10", "10"}, {}}, // equal values
        {{"", "90", "", "5"}, {}},      // unused levels
        {{"80", "90", "10", "5"}, larger("high", "high-high")},
        {{"80", "", "95", ""}, larger("low", "high-high")},
        {{"80", "", "", "85"}, larger("low-low", "high-high")},
        {{"", "90", "95", ""}, larger("low", "high")},
        {{"", "90", "", "91"}, larger("low-low", "high")},
        {{"100", "90", "10", "11"}, larger("low-low", "low")},
        {{"10", "20", "30", "40"}, larger("high", "high-high")}, // several: the first is named
        {{"100", "ninety", "10", ""}, notANumber},
    };
    for (const auto &[setpoints, message] : cases) {
        SCOPED_TRACE(setpoints.join(u' ').toStdString());
        ui.clearMessageBoxes();
        const qsizetype before = attributeWrites().size();
        ui.queueModal(typeSetpoints(setpoints));
        editor->cmdChangeAlarm_Click();
        if (message.isEmpty()) {
            EXPECT_TRUE(ui.messageBoxes().isEmpty());
            EXPECT_EQ(ui.modalDialogs().constLast().result, int(QDialog::Accepted));
        } else {
            ASSERT_EQ(ui.messageBoxes().size(), 1);
            EXPECT_EQ(ui.messageBoxes().constFirst().text, message);
            EXPECT_EQ(ui.messageBoxes().constFirst().style, 48);
            EXPECT_EQ(attributeWrites().size(), before); // nothing written
        }
    }
}

// The dialog shows the present setpoints (a Null one blank); only what changed is written.
TEST_F(AlarmTest, TheDialogShowsThePresentSetpointsAndOnlyChangesAreWritten)
{
    di->parameter(kSO2Alarm)->setAttributeValue(SettingAttr::SetpointLL, Value::null());
    QStringList shown;
    ui.queueModal([&](QDialog &dialog) {
        auto &setpoints = dynamic_cast<frmSettings_AlarmSetpoints &>(dialog);
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Alarm Settings"));
        for (int rank = 0; rank < 4; ++rank)
            shown << setpoints.field(rank)->text();
        EXPECT_EQ(setpoints.SetpointLL(), Value());
        return typeSetpoints({"100", "85", "10", ""})(dialog);
    });
    editor->cmdChangeAlarm_Click();
    EXPECT_EQ(shown, (QStringList{"100", "90", "10", ""}));
    EXPECT_EQ(attributeWrites(),
              (QList<FakeParameter::AttributeWrite>{{SettingAttr::SetpointH, Value(85)}}));
    QTreeWidgetItem *row = editor->lsvAlarmSettings()->findByKey(rowKey(kSO2Alarm));
    EXPECT_EQ(rowTexts(row), (QStringList{"SO2 alarm", "100", "85", "10", ""}));
    EXPECT_TRUE(editor->cmdChangeAlarm()->isEnabled());

    // Clearing a level writes an empty value; a new level is written as typed.
    ui.queueModal(typeSetpoints({"", "85", "10", "2.5"}));
    editor->cmdChangeAlarm_Click();
    EXPECT_EQ(attributeWrites().mid(1), (QList<FakeParameter::AttributeWrite>{
                                            {SettingAttr::SetpointHH, Value()},
                                            {SettingAttr::SetpointLL, Value(2.5)},
                                        }));
}

} // namespace
} // namespace olvex::testing
