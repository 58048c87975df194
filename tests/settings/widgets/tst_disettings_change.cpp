// Changing a setting value: the entry dialogs, the limit checks, the privilege check, the write.
#include "settings_fixture.h"

#include <QRadioButton>
#include <QTest>

namespace olvex::testing {
namespace {

const QString kMax = QStringLiteral("999999999999.9999999");

class ChangeTest : public SettingsEditorTest
{
protected:
    void SetUp() override
    {
        SettingsEditorTest::SetUp();
        buildSite();
        setup();
        showGroup(kLimits);
        selectSetting(kSpan);
    }
};

struct NumberCase
{
    const char *name;
    QString entry;
    QList<int> answers; // the operator's answers to the questions asked
    QList<int> styles;  // styles of the boxes shown, in order
    QString firstText;  // text of the first box, empty for none
    std::optional<Value> written;
    int beeps;
};

TEST_F(ChangeTest, NumberEntryFlows)
{
    const QString below = QStringLiteral(
        "The new value (-5) is less than the recommended minimum value (0).\r\n\r\n"
        "Are you sure you want to make this change?");
    const QString above = QStringLiteral(
        "The new value (150) is greater than the recommended maximum value (100).\r\n\r\n"
        "Are you sure you want to make this change?");
    const std::vector<NumberCase> cases = {
        {"within the range", "55", {}, {}, {}, Value(qint64(55)), 0},
        {"equal to the recommended maximum", "100", {}, {}, {}, Value(qint64(100)), 0},
        {"below the range, No", "-5", {MessageBoxAnswer::No}, {52}, below, std::nullopt, 0},
        {"below the range, Yes", "-5", {MessageBoxAnswer::Yes}, {52}, below, Value(qint64(-5)), 0},
        {"above the range, No", "150", {MessageBoxAnswer::No}, {52}, above, std::nullopt, 0},
        {"above the range, Yes",
         "150",
         {MessageBoxAnswer::Yes},
         {52},
         above,
         Value(qint64(150)),
         0},
        {"the absolute maximum itself", kMax, {MessageBoxAnswer::Yes}, {52}, {}, Value(kMax), 0},
        {"above the absolute maximum",
         "1000000000000",
         {},
         {48},
         "The new value (1000000000000) is greater than the maximum value (" + kMax + ").",
         std::nullopt,
         0},
        {"below the absolute minimum",
         "-1e13",
         {},
         {48},
         "The new value (-1e13) is less than the minimum value (-" + kMax + ").",
         std::nullopt,
         0},
        {"not numeric", "12x", {}, {}, {}, std::nullopt, 1},
    };
    for (const NumberCase &c : cases) {
        SCOPED_TRACE(c.name);
        auto span = di->parameter(kSpan);
        const qsizetype before = span->valueWrites().size();
        const int beepsBefore = ui.beepCount();
        ui.clearMessageBoxes();
        ui.queueAnswers(c.answers);
        ui.queueModal(typeNumber(c.entry));

        QTest::mouseClick(editor->cmdChange(), Qt::LeftButton);

        QList<int> styles;
        for (const MessageBoxCall &box : ui.messageBoxes()) {
            styles << box.style;
            EXPECT_EQ(box.title, QStringLiteral("Span gas"));
        }
        EXPECT_EQ(styles, c.styles);
        if (!c.firstText.isEmpty() && !ui.messageBoxes().isEmpty()) {
            EXPECT_EQ(ui.messageBoxes().constFirst().text, c.firstText);
        }
        EXPECT_EQ(ui.pendingAnswers(), 0);
        EXPECT_EQ(ui.beepCount() - beepsBefore, c.beeps);
        const QList<FakeParameter::ValueWrite> after = span->valueWrites().mid(before);
        if (c.written) {
            EXPECT_EQ(after, (QList<FakeParameter::ValueWrite>{{3, *c.written}}));
            EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("Updating..."));
            EXPECT_EQ(editor->lsvSettings()->selectedRow(), settingRow(kSpan));
        } else {
            EXPECT_TRUE(after.isEmpty());
        }
        span->dropPendingWrites();
        span->setAttributeValue(SettingAttr::ChangePending, false);
        editor->FillSettingsRow(settingRow(kSpan));
    }
    EXPECT_TRUE(problems.isEmpty()) << problems.join(u'\n').toStdString();
}

TEST_F(ChangeTest, TheNumberDialogShowsTheRowsValues)
{
    QString current;
    QString defaultValue;
    ui.queueModal([&](QDialog &dialog) {
        auto &number = dynamic_cast<frmSettings_GetNumber &>(dialog);
        EXPECT_EQ(number.windowTitle(), QStringLiteral("Enter New Value"));
        current = number.CurrentValue();
        defaultValue = number.DefaultValue();
        return int(QDialog::Rejected);
    });
    editor->cmdChange_Click();
    EXPECT_EQ(current, QStringLiteral("80"));
    EXPECT_EQ(defaultValue, QStringLiteral("50"));
}

TEST_F(ChangeTest, CancelWritesNothingAndDoesNotBeep)
{
    ui.queueModal(ScriptedUi::reject());
    editor->cmdChange_Click();
    EXPECT_TRUE(writes(kSpan).isEmpty());
    EXPECT_EQ(ui.beepCount(), 0);
    EXPECT_TRUE(ui.messageBoxes().isEmpty());
    EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("80"));
}

TEST_F(ChangeTest, ARefusedPrivilegeIsShownAndRaised)
{
    // The privilege is withdrawn while the row is selected.
    ui.security()->setCanChangeSetting(kSpan, false);
    editor->cmdChange_Click();
    ASSERT_EQ(ui.messageBoxes().size(), 1);
    EXPECT_EQ(ui.messageBoxes().constFirst().text,
              QStringLiteral("Access denied. Account 'jdoe' does not have privileges."));
    EXPECT_EQ(ui.messageBoxes().constFirst().style, 48);
    EXPECT_EQ(problems, QStringList{"SED-012: Account 'jdoe' does not have privileges."});
    EXPECT_TRUE(ui.modalDialogs().isEmpty());
    EXPECT_TRUE(writes(kSpan).isEmpty());
    EXPECT_EQ(ui.security()->queries().constLast(), (FakeSecurity::Query{kSpan, true}));
}

TEST_F(ChangeTest, ChangeToDefaultWritesTheDefaultWithoutQuestions)
{
    QTest::mouseClick(editor->cmdChangeToDefault(), Qt::LeftButton);
    EXPECT_EQ(writes(kSpan), (QList<FakeParameter::ValueWrite>{{3, Value(50)}}));
    EXPECT_TRUE(ui.messageBoxes().isEmpty());
    EXPECT_TRUE(ui.modalDialogs().isEmpty());
    EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("Updating..."));

    di->applyPendingWrites();
    editor->FillSettingsRow(settingRow(kSpan));
    EXPECT_EQ(settingRow(kSpan)->text(1), QStringLiteral("50"));
}

TEST_F(ChangeTest, ChangeToDefaultRefusedRaisesItsOwnCode)
{
    ui.security()->setCanChangeSetting(kSpan, false);
    editor->cmdChangeToDefault_Click();
    EXPECT_EQ(ui.lastMessageBox().text,
              QStringLiteral("Access denied. Account 'jdoe' does not have privileges."));
    EXPECT_EQ(problems, QStringList{"SED-014: Account 'jdoe' does not have privileges."});
    EXPECT_TRUE(writes(kSpan).isEmpty());
}

TEST_F(ChangeTest, AFailingWriteIsRaisedWithTheFlowsCode)
{
    di->setFailure(kSpan, FakeParameter::Op::SetValues, Error(440, QStringLiteral("refused")));
    ui.queueModal(typeNumber(QStringLiteral("55")));
    editor->cmdChange_Click();
    editor->cmdChangeToDefault_Click();
    EXPECT_EQ(problems, (QStringList{"SED-001/UI-029: Error 440, refused",
                                     "SED-003/UI-027: Error 440, refused"}));
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

using OtherTypesTest = SettingsEditorTest;

TEST_F(OtherTypesTest, YesNoAndOnOffUseTheirCaptions)
{
    buildSite();
    setup();
    showGroup(kSwitches);
    struct Case
    {
        qint32 pid;
        QString falseCaption;
        QString trueCaption;
        bool preselected; // the present state
        bool choose;
    };
    const std::vector<Case> cases = {
        {kPurge, "No", "Yes", true, false},
        {kHeater, "Off", "On", false, true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.pid);
        selectSetting(c.pid);
        QStringList captions;
        bool preselected = false;
        ui.queueModal(ScriptedUi::acceptAfter([&](QDialog &dialog) {
            auto &yesNo = dynamic_cast<frmSettings_GetYesNo &>(dialog);
            captions << yesNo.optFalse()->text() << yesNo.optTrue()->text();
            preselected = yesNo.optTrue()->isChecked();
            (c.choose ? yesNo.optTrue() : yesNo.optFalse())->setChecked(true);
        }));
        editor->cmdChange_Click();
        EXPECT_EQ(captions, (QStringList{c.falseCaption, c.trueCaption}));
        EXPECT_EQ(preselected, c.preselected);
        EXPECT_EQ(writes(c.pid), (QList<FakeParameter::ValueWrite>{{3, Value(c.choose)}}));
    }
}

TEST_F(OtherTypesTest, ClosingTheYesNoDialogWritesNothing)
{
    buildSite();
    setup();
    showGroup(kSwitches);
    selectSetting(kPurge);
    ui.queueModal(ScriptedUi::reject());
    editor->cmdChange_Click();
    EXPECT_TRUE(writes(kPurge).isEmpty());
    EXPECT_EQ(ui.beepCount(), 0);
}

TEST_F(OtherTypesTest, DatesMustReadAsDates)
{
    buildSite();
    setup();
    showGroup(kSwitches);
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
    EXPECT_EQ(writes(kCalDate), (QList<FakeParameter::ValueWrite>{
                                    {3, Value(QDateTime(QDate(2025, 4, 1), QTime(0, 0)))}}));
    EXPECT_EQ(ui.beepCount(), 1);
}

TEST_F(OtherTypesTest, TextIsWrittenWithoutNumericChecks)
{
    buildSite();
    setup();
    showGroup(kSwitches);
    selectSetting(kTag);
    ui.queueModal(typeNumber(QStringLiteral("STK-2 (north)")));
    editor->cmdChange_Click();
    EXPECT_EQ(writes(kTag), (QList<FakeParameter::ValueWrite>{{3, Value("STK-2 (north)")}}));
    EXPECT_TRUE(ui.messageBoxes().isEmpty());
    EXPECT_EQ(ui.beepCount(), 0);
}

} // namespace
} // namespace olvex::testing
