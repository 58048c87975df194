// What the entry dialogs tell the operator while typing, before anything is checked or written.
#include "common/vocabulary.h"
#include "settings/widgets/frmsettings_alarmsetpoints.h"
#include "settings/widgets/frmsettings_getnumber.h"
#include "settings/widgets/frmsettings_getyesno.h"
#include "settings/widgets/valueinputdialog.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

namespace olvex {
namespace {

QLabel *label(const QWidget &dialog, const QString &name)
{
    auto *found = dialog.findChild<QLabel *>(name);
    EXPECT_TRUE(found) << name.toStdString();
    return found;
}

// The shown reading after typing entry, or empty when the reading is hidden.
QString readingAfter(QLineEdit *field, const QLabel *reading, const QString &entry)
{
    field->clear();
    QTest::keyClicks(field, entry);
    return reading->isVisible() ? reading->text() : QString();
}

TEST(EntryHints, NumberDialogNamesTheSettingAndReadsTheEntry)
{
    frmSettings_GetNumber dialog;
    dialog.show();
    const QLabel *reading = label(dialog, "lblReading_txtNewValue");
    EXPECT_EQ(readingAfter(dialog.txtNewValue(), reading, "2,5"), QString()); // not asked for
    dialog.setSetting("SO2 span", "ppm", SettingType::Number);
    EXPECT_EQ(label(dialog, "lblSetting")->text(), "SO2 span (ppm)");
    EXPECT_EQ(dialog.windowTitle(), "Enter New Value");
    for (const auto &[entry, shown] :
         std::vector<std::pair<QString, QString>>{{"2,5", "not a number"},
                                                  {"1,5e3", "not a number"},
                                                  {"abc", "not a number"},
                                                  {"25", "reads as 25"},
                                                  {"", ""}}) {
        EXPECT_EQ(readingAfter(dialog.txtNewValue(), reading, entry), shown) << entry.toStdString();
    }
    // Free text has no reading; the entry is taken as it stands.
    dialog.setSetting("Label", {}, SettingType::Text);
    EXPECT_EQ(readingAfter(dialog.txtNewValue(), reading, "abc"), QString());
    EXPECT_FALSE(dialog.findChild<QLineEdit *>("txtCurrentValue")->hasFrame());
}

TEST(EntryHints, DateDialogAndAlarmFields)
{
    ValueInputDialog dates;
    dates.show();
    const QLabel *reading = label(dates, "lblReading_txtValue");
    EXPECT_EQ(readingAfter(dates.txtValue(), reading, "31 Feb 2026"), "not a date");
    dates.setReadingType(SettingType::Time);
    EXPECT_EQ(readingAfter(dates.txtValue(), reading, "25:70:00"), "not a time");

    frmSettings_AlarmSetpoints alarms;
    alarms.setSetting("NOx 1h average", "lb/MMBtu");
    alarms.show();
    EXPECT_EQ(label(alarms, "lblSetting")->text(), "NOx 1h average (lb/MMBtu)");
    EXPECT_EQ(readingAfter(alarms.field(1), label(alarms, "lblReading_txtSetpointH"), "0,4"),
              "not a number");
}

TEST(EntryHints, YesNoHasCancel)
{
    frmSettings_GetYesNo dialog;
    dialog.setSetting("Purge on start");
    dialog.setCurrentValue(true);
    dialog.show();
    EXPECT_EQ(label(dialog, "lblSetting")->text(), "Purge on start");
    dialog.optFalse()->setChecked(true);
    QTest::mouseClick(dialog.cmdCancel(), Qt::LeftButton);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.NewValue(), std::nullopt);
}

} // namespace
} // namespace olvex
