// The entry dialogs on their own: what OK, Enter, Escape and Cancel leave behind; the choices
// and texts they carry are checked through the editor.
#include "settings/widgets/frmsettings_alarmsetpoints.h"
#include "settings/widgets/frmsettings_getnumber.h"
#include "settings/widgets/frmsettings_getyesno.h"
#include "support/widgets/scripted_ui.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

namespace olvex {
namespace {

TEST(GetYesNo, OkWaitsForAChoiceAndClosingLeavesNoValue)
{
    frmSettings_GetYesNo dialog;
    dialog.SetCaptions(QStringLiteral("Off"), QStringLiteral("On"));
    dialog.show();
    EXPECT_FALSE(dialog.cmdOK()->isEnabled());
    EXPECT_EQ(dialog.cmdOK()->toolTip(), QStringLiteral("Choose Off or On first."));
    dialog.accept(); // Enter with nothing chosen changes nothing
    EXPECT_TRUE(dialog.isVisible());

    dialog.optTrue()->setChecked(true);
    EXPECT_TRUE(dialog.cmdOK()->isEnabled());
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.NewValue(), std::nullopt);
}

TEST(GetNumber, LabelsAndButtons)
{
    frmSettings_GetNumber dialog;
    dialog.setCurrentValue(QStringLiteral("80"));
    dialog.setDefaultValue(QStringLiteral("50"));
    dialog.show();
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Enter New Value"));
    EXPECT_TRUE(dialog.findChild<QLineEdit *>(QStringLiteral("txtCurrentValue"))->isReadOnly());
    EXPECT_TRUE(dialog.findChild<QLineEdit *>(QStringLiteral("txtDefaultValue"))->isReadOnly());
    QTest::keyClicks(dialog.txtNewValue(), QStringLiteral("42"));
    QTest::keyClick(dialog.txtNewValue(), Qt::Key_Return); // Enter is OK
    EXPECT_EQ(dialog.result(), int(QDialog::Accepted));
    EXPECT_EQ(dialog.NewValue(), QStringLiteral("42"));

    frmSettings_GetNumber cancelled;
    cancelled.show();
    QTest::mouseClick(cancelled.cmdCancel(), Qt::LeftButton);
    EXPECT_EQ(cancelled.result(), int(QDialog::Rejected));
}

TEST(AlarmSetpoints, CancelAndOk)
{
    ScriptedUi ui;
    frmSettings_AlarmSetpoints dialog(&ui);
    dialog.setSetpointH(Value(90));
    dialog.setSetpointL(Value(95));
    dialog.show();
    QTest::mouseClick(dialog.cmdOK(), Qt::LeftButton);
    EXPECT_TRUE(dialog.isVisible()); // out of order: stays open, its message is shown
    EXPECT_EQ(ui.messageBoxes().size(), 1);
    dialog.field(2)->setText(QStringLiteral("9.5"));
    QTest::mouseClick(dialog.cmdOK(), Qt::LeftButton);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_FALSE(dialog.Cancelled());

    frmSettings_AlarmSetpoints other(&ui);
    other.show();
    QTest::mouseClick(other.cmdCancel(), Qt::LeftButton);
    EXPECT_TRUE(other.Cancelled());
}

} // namespace
} // namespace olvex
