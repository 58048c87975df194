// Changing a setting value: the entry dialogs, the limit checks, the privilege check, the write.
#include "settings_fixture.h"

#include "settings/settingentry.h"

#include <QRadioButton>
#include <QTest>

namespace olvex::testing {
namespace {

const QString kMax = QStringLiteral("999999999999.9999999");

using ChangeTest = EditorOnGroup<kLimits>; // the first row, Span gas, is selected

TEST_F(ChangeTest, NumberEntryFlows)
{
    using namespace MessageBoxAnswer;
    // The entry (a null text: the operator cancels the dialog), the operator's answers to the
    // questions asked, the styles of the boxes shown (52 asks Yes or No, No the default; 48
    // refuses), the value written, the beeps.
    using Case = std::tuple<QString, QList<int>, QList<int>, std::optional<Value>, int>;
    const std::vector<Case> cases = {
        {"55", {}, {}, 55, 0},
        {"-5", {No}, {52}, std::nullopt, 0}, // one side is enough: the check covers both
        {"-5", {Yes}, {52}, -5, 0},
        {kMax, {Yes}, {52}, Value(kMax), 0}, // the absolute maximum itself, kept as typed
        {"1000000000000", {}, {48}, std::nullopt, 0},
        {"-1e13", {}, {48}, std::nullopt, 0},
        {"12x", {}, {}, std::nullopt, 1},
        {QString(), {}, {}, std::nullopt, 0}, // cancelled
    };
    for (const auto &[entry, answers, expectedStyles, written, beeps] : cases) {
        SCOPED_TRACE(entry.toStdString());
        auto span = di->parameter(kSpan);
        const qsizetype before = span->valueWrites().size();
        const int beepsBefore = ui.beepCount();
        ui.clearMessageBoxes();
        ui.queueAnswers(answers);
        ui.queueModal([&](QDialog &dialog) {
            auto &number = dynamic_cast<frmSettings_GetNumber &>(dialog);
            EXPECT_EQ(number.CurrentValue(), QStringLiteral("80"));
            EXPECT_EQ(number.DefaultValue(), QStringLiteral("50"));
            return (entry.isNull() ? ScriptedUi::reject() : typeNumber(entry))(dialog);
        });

        QTest::mouseClick(editor->cmdChange(), Qt::LeftButton);

        // The boxes say what the entry check says; its texts are pinned with the check.
        const NumberEntryCheck check = checkNumberEntry(entry, Value(0), Value(100));
        QStringList texts;
        QList<int> styles;
        for (const MessageBoxCall &box : ui.messageBoxes()) {
            texts << box.text;
            styles << box.style;
            EXPECT_EQ(box.title, QStringLiteral("Span gas"));
        }
        EXPECT_EQ(texts, check.message.isEmpty() ? check.questions : QStringList{check.message});
        EXPECT_EQ(styles, expectedStyles);
        EXPECT_EQ(ui.pendingAnswers(), 0);
        EXPECT_EQ(ui.beepCount() - beepsBefore, beeps);
        const Writes after = span->valueWrites().mid(before);
        if (written) {
            EXPECT_EQ(after, (Writes{{3, *written}}));
            EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("Updating..."));
            EXPECT_EQ(editor->lsvSettings()->selectedRow(), settingRow(kSpan));
        } else {
            EXPECT_TRUE(after.isEmpty());
            EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("80"));
        }
        span->dropPendingWrites();
        span->setAttributeValue(SettingAttr::ChangePending, false);
        editor->FillSettingsRow(settingRow(kSpan));
    }
}

TEST_F(ChangeTest, ARefusedPrivilegeIsShownAndRaisedWithTheButtonsCode)
{
    const std::vector<std::tuple<qint32, void (DISettings::*)(), QString>> cases = {
        {kSpan, &DISettings::cmdChange_Click, "SED-012"},
        {kSpan, &DISettings::cmdChangeToDefault_Click, "SED-014"},
        {kSO2Alarm, &DISettings::cmdChangeAlarm_Click, "SED-013"},
    };
    for (const auto &[pid, click, code] : cases) {
        SCOPED_TRACE(code.toStdString());
        if (pid == kSO2Alarm) {
            showGroup(kAlarms);
            selectAlarm(kSO2Alarm);
        }
        ui.clearMessageBoxes();
        ui.security()->setCanChangeSetting(pid, false); // withdrawn while the row is selected
        (editor.get()->*click)();
        ASSERT_EQ(ui.messageBoxes().size(), 1);
        EXPECT_EQ(ui.messageBoxes().constFirst().text,
                  QStringLiteral("Access denied. Account 'jdoe' does not have privileges."));
        EXPECT_EQ(ui.messageBoxes().constFirst().style, 48);
        EXPECT_EQ(takeProblems(),
                  QStringList{code + u": Account 'jdoe' does not have privileges."});
        EXPECT_EQ(ui.security()->queries().constLast(), (FakeSecurity::Query{pid, true}));
    }
    EXPECT_TRUE(ui.modalDialogs().isEmpty());
    EXPECT_TRUE(writes(kSpan).isEmpty());
    EXPECT_TRUE(di->parameter(kSO2Alarm)->attributeWrites().isEmpty());
}

TEST_F(ChangeTest, EnterAndDoubleClickStartTheChange)
{
    ui.setDefaultModal(ScriptedUi::reject());
    QTest::keyClick(editor->lsvSettings(), Qt::Key_Return);
    EXPECT_EQ(ui.modalDialogs().size(), 1);

    Q_EMIT editor->lsvSettings()->itemDoubleClicked(settingRow(kSpan), 0);
    EXPECT_EQ(ui.modalDialogs().size(), 2);

    selectSetting(kReadOnly); // read-only: neither starts anything
    QTest::keyClick(editor->lsvSettings(), Qt::Key_Enter);
    Q_EMIT editor->lsvSettings()->itemDoubleClicked(settingRow(kReadOnly), 0);
    EXPECT_EQ(ui.modalDialogs().size(), 2);
}

using OtherTypesTest = EditorOnGroup<kSwitches>;

TEST_F(OtherTypesTest, YesNoAndOnOffUseTheirCaptionsAndPresentState)
{
    // The setting, its captions (false, true), its present state, the choice (none: the
    // operator closes the dialog).
    const std::vector<std::tuple<qint32, QStringList, bool, std::optional<bool>>> cases = {
        {kPurge, {"No", "Yes"}, true, std::nullopt},
        {kPurge, {"No", "Yes"}, true, false},
        {kHeater, {"Off", "On"}, false, true},
    };
    for (const auto &[pid, captions, preselected, choose] : cases) {
        SCOPED_TRACE(pid);
        selectSetting(pid);
        ui.queueModal([&](QDialog &dialog) {
            auto &yesNo = dynamic_cast<frmSettings_GetYesNo &>(dialog);
            EXPECT_EQ((QStringList{yesNo.optFalse()->text(), yesNo.optTrue()->text()}), captions);
            EXPECT_EQ(yesNo.optTrue()->isChecked(), preselected);
            if (!choose) {
                return int(QDialog::Rejected);
            }
            (*choose ? yesNo.optTrue() : yesNo.optFalse())->setChecked(true);
            dialog.accept();
            return dialog.result();
        });
        editor->cmdChange_Click();
        EXPECT_EQ(writes(pid), (choose ? Writes{{3, Value(*choose)}} : Writes{}));
    }
    EXPECT_EQ(ui.beepCount(), 0);
}

TEST_F(OtherTypesTest, DatesMustReadAsDatesAndTextIsWrittenAsTyped)
{
    selectSetting(kCalDate);
    const auto typeDate = [](const QString &text) {
        return ScriptedUi::acceptAfter([text](QDialog &dialog) {
            auto &input = dynamic_cast<ValueInputDialog &>(dialog);
            EXPECT_EQ(input.windowTitle(), QStringLiteral("Enter New Value"));
            EXPECT_EQ(input.value(), QStringLiteral("3/5/2024")); // the present value to edit
            input.setValue(text);
        });
    };
    ui.queueModal(typeDate(QStringLiteral("2024-13-45")));
    editor->cmdChange_Click();
    EXPECT_TRUE(writes(kCalDate).isEmpty());
    EXPECT_EQ(ui.beepCount(), 1);

    ui.queueModal(typeDate(QStringLiteral("4/1/2025")));
    editor->cmdChange_Click();
    EXPECT_EQ(writes(kCalDate), (Writes{{3, Value(QDateTime(QDate(2025, 4, 1), QTime(0, 0)))}}));

    selectSetting(kTag); // text: no numeric checks, kept as typed
    ui.queueModal(typeNumber(QStringLiteral(" STK-2 (north)")));
    editor->cmdChange_Click();
    EXPECT_EQ(writes(kTag), (Writes{{3, Value(" STK-2 (north)")}}));
    EXPECT_TRUE(ui.messageBoxes().isEmpty());
    EXPECT_EQ(ui.beepCount(), 1);
}

} // namespace
} // namespace olvex::testing
