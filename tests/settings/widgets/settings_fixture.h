#pragma once

// A settings editor on an in-memory site, with a scripted operator.
#include "common/widgets/keyedtree.h"
#include "common/widgets/reportlist.h"
#include "common/vocabulary.h"
#include "settings/widgets/disettings.h"
#include "settings/widgets/frmsettings_alarmsetpoints.h"
#include "settings/widgets/frmsettings_getnumber.h"
#include "settings/widgets/frmsettings_getyesno.h"
#include "settings/widgets/valueinputdialog.h"
#include "support/fake_data_interface.h"
#include "support/fake_log.h"
#include "support/widgets/scripted_ui.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidgetItem>

#include <memory>
#include <utility>

namespace olvex::testing {

// Groups and settings of the test site. Valid PIDs: the fifth digit from the right is 0.
inline constexpr qint32 kPlant = 100100;     // root group
inline constexpr qint32 kLimits = 100200;    // child of Plant: number settings
inline constexpr qint32 kSwitches = 100300;  // child of Plant: yes/no, on/off, text, dates
inline constexpr qint32 kAlarms = 100400;    // alarm group
inline constexpr qint32 kSpan = 200100;      // number 80, default 50, recommended 0 ... 100
inline constexpr qint32 kZero = 200200;      // number, no range
inline constexpr qint32 kReadOnly = 200300;  // number, read only
inline constexpr qint32 kUndefined = 209900; // member without definition
inline constexpr qint32 kPurge = 200400;     // yes/no
inline constexpr qint32 kHeater = 200500;    // on/off
inline constexpr qint32 kTag = 200600;       // text
inline constexpr qint32 kCalDate = 200700;   // date
inline constexpr qint32 kSO2Alarm = 200800;  // alarm parameter
inline constexpr qint32 kNOxAlarm = 200900;  // alarm parameter

inline QString rowKey(qint32 pid)
{
    return u'K' + QString::number(pid);
}

class SettingsEditorTest : public ::testing::Test
{
protected:
    using Writes = QList<FakeParameter::ValueWrite>;

    void SetUp() override
    {
        freshSite();
        editor = std::make_unique<DISettings>(&ui);
        QObject::connect(editor.get(), &DISettings::Problem,
                         [this](const QString &line) { problems << line; });
    }

    // A problem a test expects is taken with takeProblems(); any other one fails the test.
    void TearDown() override
    {
        editor.reset();
        EXPECT_TRUE(problems.isEmpty()) << problems.join(u'\n').toStdString();
    }

    QStringList takeProblems() { return std::exchange(problems, {}); }

    // A new in-memory site: Plant > Limits (numbers) and Switches, and the alarm group Alarms;
    // without build, an empty one.
    void freshSite(bool build = true)
    {
        di = std::make_shared<FakeDataInterface>();
        log = std::make_shared<RecordingLog>();
        di->setMessageLog(log);
        di->setUser(QStringLiteral("jdoe"));
        if (!build) {
            return;
        }
        group(kPlant, "Plant", 1, 0, {});
        group(kLimits, "Limits", 1, kPlant, {kSpan, kZero, kReadOnly, kUndefined});
        group(kSwitches, "Switches", 2, kPlant, {kPurge, kHeater, kTag, kCalDate});
        group(kAlarms, "Alarms", 3, 0, {kSO2Alarm, kNOxAlarm}, true);
        auto span = di->addSetting(kSpan, "Span gas", SettingType::Number, 80, 50);
        span->setAttributeValue(SettingAttr::RecommendedLow, 0);
        span->setAttributeValue(SettingAttr::RecommendedHigh, 100);
        di->addSetting(kZero, "Zero offset", SettingType::Number, 0.5, 0);
        di->addSetting(kReadOnly, "Stack height", SettingType::Number, 120)
            ->setAttributeValue(SettingAttr::Changeable, false);
        di->addSetting(kPurge, "Purge enabled", SettingType::YesNo, -1, 0);
        di->addSetting(kHeater, "Heater", SettingType::OnOff, 0, 1);
        di->addSetting(kTag, "Stack tag", SettingType::Text, "STK-1");
        di->addSetting(kCalDate, "Last audit", SettingType::Date,
                       QDateTime(QDate(2024, 3, 5), QTime(0, 0)));
        for (auto [pid, name] : {std::pair{kSO2Alarm, "SO2 alarm"}, {kNOxAlarm, "NOx alarm"}}) {
            auto alarm = di->addParameter(pid, ParameterTypes::Setting, QString::fromLatin1(name));
            alarm->setAttributeValue(SettingAttr::SetpointHH, 100);
            alarm->setAttributeValue(SettingAttr::SetpointH, 90);
            alarm->setAttributeValue(SettingAttr::SetpointL, 10);
            alarm->setAttributeValue(SettingAttr::SetpointLL, Value());
        }
    }

    FakeParameterPtr group(qint32 pid, const char *name, int order, qint32 parent,
                           const QList<qint32> &members, bool alarm = false)
    {
        auto g = di->addGroup(pid, QString::fromLatin1(name), members, alarm);
        g->setAttributeValue(GroupAttr::Order, order);
        g->setAttributeValue(GroupAttr::HasParent, parent != 0 ? 1 : 0);
        g->setAttributeValue(GroupAttr::ParentPid, qint64(parent));
        return g;
    }

    void setup(bool refresh = false) { editor->Setup(di, refresh); }

    // Sets the editor up and shows a group, as the operator's first click does.
    void open(qint32 groupPid, bool refresh = false)
    {
        setup(refresh);
        showGroup(groupPid);
    }

    // Shows a group as a click on its node does.
    void showGroup(qint32 pid)
    {
        QTreeWidgetItem *node
            = editor->tvwGroups()->findByKey(u'K' + QString::number(pid).rightJustified(10, u'0'));
        ASSERT_NE(node, nullptr) << pid;
        editor->tvwGroups()->selectNode(node);
        editor->tvwGroups_NodeClick(node);
    }

    QTreeWidgetItem *settingRow(qint32 pid) const
    {
        return editor->lsvSettings()->findByKey(rowKey(pid));
    }

    // Selects a row of the settings or the alarm list as the operator's click does.
    void selectSetting(qint32 pid, bool alarm = false)
    {
        ReportList *list = alarm ? editor->lsvAlarmSettings() : editor->lsvSettings();
        QTreeWidgetItem *row = list->findByKey(rowKey(pid));
        ASSERT_NE(row, nullptr) << pid;
        list->setCurrentItem(row);
    }

    void selectAlarm(qint32 pid) { selectSetting(pid, true); }

    static QStringList rowTexts(const QTreeWidgetItem *row)
    {
        QStringList texts;
        for (int c = 0; c < row->columnCount(); ++c) {
            texts << row->text(c);
        }
        return texts;
    }

    // The operator types text into the number dialog and presses OK.
    static ScriptedUi::ModalHandler typeNumber(const QString &text)
    {
        return ScriptedUi::acceptAfter([text](QDialog &dialog) {
            dynamic_cast<frmSettings_GetNumber &>(dialog).txtNewValue()->setText(text);
        });
    }

    // The operator types the four alarm setpoints (blank for unused levels) and presses OK.
    static ScriptedUi::ModalHandler typeSetpoints(const QStringList &texts)
    {
        return ScriptedUi::acceptAfter([texts](QDialog &dialog) {
            auto &setpoints = dynamic_cast<frmSettings_AlarmSetpoints &>(dialog);
            for (int rank = 0; rank < 4; ++rank) {
                setpoints.field(rank)->setText(texts.at(rank));
            }
        });
    }

    Writes writes(qint32 pid) const { return di->parameter(pid)->valueWrites(); }

    std::shared_ptr<FakeDataInterface> di;
    std::shared_ptr<RecordingLog> log;
    ScriptedUi ui;
    std::unique_ptr<DISettings> editor;
    QStringList problems;
};

// The editor set up on one group, the timer created if asked for.
template<qint32 GroupPid, bool Refresh = false>
class EditorOnGroup : public SettingsEditorTest
{
protected:
    void SetUp() override
    {
        SettingsEditorTest::SetUp();
        open(GroupPid, Refresh);
    }
};

} // namespace olvex::testing
