#include "settings/widgets/disettings.h"

#include "common/error.h"
#include "common/pid.h"
#include "common/widgets/keyedtree.h"
#include "common/widgets/reportlist.h"
#include "common/widgets/uiservices.h"
#include "settings/alarmsetpoints.h"
#include "settings/rtftohtml.h"
#include "common/vocabulary.h"
#include "settings/settingdisplay.h"
#include "settings/widgets/settinggroups.h"
#include "settings/widgets/settingicons.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QSplitter>
#include <QTextEdit>
#include <QVBoxLayout>

#include <optional>

namespace olvex {

namespace {

// What a row of an undefined PID shows: its display form, or its number when it is no PID.
QString pidDisplay(qint32 pid)
{
    const QString shown = FormatPid(pid);
    return shown.isEmpty() ? QString::number(pid) : shown;
}

QString rowTagOf(qint32 pid)
{
    return u"PID(" + QString::number(pid) + u')';
}

QString rowKeyOf(qint32 pid)
{
    return u'K' + QString::number(pid);
}

QTextEdit *instructionsBox(const QString &name, QWidget *parent)
{
    auto *box = new QTextEdit(parent);
    box->setObjectName(name);
    box->setReadOnly(true);
    box->setTabChangesFocus(true);
    box->setMinimumHeight(60);
    return box;
}

QFrame *viewFrame(const QString &name, QWidget *parent)
{
    auto *frame = new QFrame(parent);
    frame->setObjectName(name);
    frame->setFrameShape(QFrame::NoFrame);
    return frame;
}

} // namespace

DISettings::DISettings(UiServices *ui, QWidget *parent)
    : QWidget(parent)
    , m_ui(ui)
{
    setObjectName(QStringLiteral("DISettings"));
    buildControls();
    setCaptions();
    disableSettingButtons(QStringLiteral("Select a setting first."));
    disableAlarmButton(QStringLiteral("Select an alarm first."));
}

DISettings::~DISettings()
{
    Teardown();
}

void DISettings::buildControls()
{
    m_tvwGroups = new KeyedTree(this);
    m_tvwGroups->setObjectName(QStringLiteral("tvwGroups"));
    m_tvwGroups->setMinimumWidth(180);

    auto *views = new QWidget(this);
    auto *viewsLayout = new QVBoxLayout(views);
    viewsLayout->setContentsMargins(0, 0, 0, 0);

    // The settings view.
    m_fraSettings = viewFrame(QStringLiteral("fraSettings"), views);
    m_lsvSettings = new ReportList(m_fraSettings);
    m_lsvSettings->setObjectName(QStringLiteral("lsvSettings"));
    m_lsvSettings->setSmallIcons(settingIcons());
    m_cmdChange = new QPushButton(m_fraSettings);
    m_cmdChange->setObjectName(QStringLiteral("cmdChange"));
    m_cmdChangeToDefault = new QPushButton(m_fraSettings);
    m_cmdChangeToDefault->setObjectName(QStringLiteral("cmdChangeToDefault"));
    m_rtfboxInstructions1 = instructionsBox(QStringLiteral("rtfboxInstructions1"), m_fraSettings);
    auto *settingButtons = new QHBoxLayout;
    settingButtons->addWidget(m_cmdChange);
    settingButtons->addWidget(m_cmdChangeToDefault);
    settingButtons->addStretch();
    auto *settingsLayout = new QVBoxLayout(m_fraSettings);
    settingsLayout->setContentsMargins(0, 0, 0, 0);
    settingsLayout->addWidget(m_lsvSettings, 3);
    settingsLayout->addLayout(settingButtons);
    settingsLayout->addWidget(m_rtfboxInstructions1, 1);

    // The alarm view.
    m_fraAlarmSettings = viewFrame(QStringLiteral("fraAlarmSettings"), views);
    m_lsvAlarmSettings = new ReportList(m_fraAlarmSettings);
    m_lsvAlarmSettings->setObjectName(QStringLiteral("lsvAlarmSettings"));
    m_lsvAlarmSettings->setSmallIcons(settingIcons());
    m_cmdChangeAlarm = new QPushButton(m_fraAlarmSettings);
    m_cmdChangeAlarm->setObjectName(QStringLiteral("cmdChangeAlarm"));
    m_rtfboxInstructions2
        = instructionsBox(QStringLiteral("rtfboxInstructions2"), m_fraAlarmSettings);
    auto *alarmButtons = new QHBoxLayout;
    alarmButtons->addWidget(m_cmdChangeAlarm);
    alarmButtons->addStretch();
    auto *alarmLayout = new QVBoxLayout(m_fraAlarmSettings);
    alarmLayout->setContentsMargins(0, 0, 0, 0);
    alarmLayout->addWidget(m_lsvAlarmSettings, 3);
    alarmLayout->addLayout(alarmButtons);
    alarmLayout->addWidget(m_rtfboxInstructions2, 1);
    m_fraAlarmSettings->hide();

    viewsLayout->addWidget(m_fraSettings);
    viewsLayout->addWidget(m_fraAlarmSettings);

    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->addWidget(m_tvwGroups);
    m_splitter->addWidget(views);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 3);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_splitter);

    connect(m_tvwGroups, &KeyedTree::nodeClicked, this, &DISettings::tvwGroups_NodeClick);
    connect(m_lsvSettings, &ReportList::rowClicked, this, &DISettings::lsvSettings_ItemClick);
    connect(m_lsvAlarmSettings, &ReportList::rowClicked, this,
            &DISettings::lsvAlarmSettings_ItemClick);
    connect(m_cmdChange, &QPushButton::clicked, this, &DISettings::cmdChange_Click);
    connect(m_cmdChangeToDefault, &QPushButton::clicked, this,
            &DISettings::cmdChangeToDefault_Click);
    connect(m_cmdChangeAlarm, &QPushButton::clicked, this, &DISettings::cmdChangeAlarm_Click);
    // Enter or a double click on a row that can be changed starts the change; the flow itself
    // tells an account without the privilege why nothing happens.
    connect(m_lsvSettings, &ReportList::rowActivated, this, [this](QTreeWidgetItem *row) {
        if (row == m_lsvSettings->selectedRow()
            && SettingIcon::isChangeable(ReportList::smallIcon(row))) {
            cmdChange_Click();
        }
    });
    connect(m_lsvAlarmSettings, &ReportList::rowActivated, this, [this](QTreeWidgetItem *row) {
        if (row == m_lsvAlarmSettings->selectedRow() && !ReportList::rowKey(row).isEmpty()) {
            cmdChangeAlarm_Click();
        }
    });
}

void DISettings::setCaptions()
{
    m_cmdChange->setText(QStringLiteral("Change Value..."));
    m_cmdChangeToDefault->setText(QStringLiteral("Change To Default Value"));
    m_cmdChangeAlarm->setText(QStringLiteral("Change..."));
    m_lsvSettings->setColumns({QStringLiteral("Setting"), QStringLiteral("Value"),
                               QStringLiteral("Default Value"), QStringLiteral("Value Range")});
    QStringList alarmColumns{QStringLiteral("Alarm")};
    for (const AlarmSetpoint &setpoint : kAlarmSetpoints) {
        alarmColumns << QString::fromLatin1(setpoint.column);
    }
    m_lsvAlarmSettings->setColumns(alarmColumns);
    m_lsvSettings->setColumnWidth(0, 260);
    m_lsvAlarmSettings->setColumnWidth(0, 260);
}

void DISettings::Setup(std::shared_ptr<DataInterface> dataInterface, bool startRefresh)
{
    guarded(
        [&] {
            Teardown();
            // A second Setup may bring another site: nothing of the first may stay on screen.
            m_tvwGroups->clearNodes();
            clearViews();
            if (!dataInterface) {
                return;
            }
            mobjDI = std::move(dataInterface);
            connect(mobjDI.get(), &DataInterface::UseSecondaryDasConnectionStringsChanged, this,
                    &DISettings::mobjDI_UseSecondaryDasConnectionStringsChanged);

            mobjSecurity = UiServices::resolve(m_ui).createSecurity();
            const ConnectionDescription connection = mobjDI->ConnectionSettings();
            mobjSecurity->Initialize(connection.DataConnection, connection.SecondaryDataConnection,
                                     connection.DasConnection, connection.SecondaryDasConnection,
                                     mobjDI->ClientName() + u":DISettings", 0);

            LoadSettingGroups(*mobjDI, *m_tvwGroups, false);
            if (QTreeWidgetItem *first = m_tvwGroups->topLevelItem(0)) {
                m_tvwGroups->selectNode(first);
                tvwGroups_NodeClick(first);
            } else {
                m_tvwGroups->selectNode(nullptr);
            }

            if (startRefresh) {
                mobjRefreshValues = mobjDI->Clock()->CreateInterval(
                    IntervalSpec{60, 21, std::nullopt, QStringLiteral("Refresh Setting window"),
                                 true, false, true, 1000, 60});
                connect(mobjRefreshValues.get(), &Interval::IntervalExpired, this,
                        &DISettings::mobjRefreshValues_IntervalExpired);
            }
        },
        [this](const CaughtError &error) { RaiseProblem(error.errorText()); });
}

void DISettings::Teardown()
{
    // The timer goes first: nothing may fire into a control whose data interface is gone.
    if (mobjRefreshValues) {
        disconnect(mobjRefreshValues.get(), nullptr, this, nullptr);
        guarded([&] { mobjRefreshValues->Stop(); }, [](const CaughtError &) {});
        mobjRefreshValues.reset();
    }
    if (mobjDI) {
        disconnect(mobjDI.get(), nullptr, this, nullptr);
        mobjDI.reset();
    }
    mobjSecurity.reset();
}

void DISettings::mobjDI_UseSecondaryDasConnectionStringsChanged()
{
    guarded(
        [&] {
            if (mobjRefreshValues) {
                mobjRefreshValues->SetMessageLog(nullptr);
            }
        },
        [this](const CaughtError &error) { RaiseProblem(error.errorText()); });
}

void DISettings::tvwGroups_NodeClick(QTreeWidgetItem *node)
{
    if (!node || !mobjDI) {
        return;
    }
    ShowGroup(groupNumberFromKey(KeyedTree::nodeKey(node)), true);
}

void DISettings::clearViews()
{
    m_lsvSettings->clearRows();
    m_lsvAlarmSettings->clearRows();
    m_rtfboxInstructions1->clear();
    m_rtfboxInstructions2->clear();
    disableSettingButtons(QStringLiteral("Select a setting first."));
    disableAlarmButton(QStringLiteral("Select an alarm first."));
}

void DISettings::ShowGroup(qint32 groupNumber, bool selectFirst)
{
    guarded(
        [&] {
            clearViews();
            if (!mobjDI) {
                return;
            }
            const ParameterPtr group = directory()->GetPid(groupNumber, true);
            const bool alarmGroup = group->GetAttribute(GroupAttr::AlarmGroup).isTrue();
            const Value members = group->GetAttribute(GroupAttr::Members);
            const QString instructions
                = group->GetAttribute(GroupAttr::Instructions).toText().trimmed();
            m_fraSettings->setVisible(!alarmGroup);
            m_fraAlarmSettings->setVisible(alarmGroup);
            if (alarmGroup) {
                FillAlarmList(members, selectFirst);
            } else {
                FillSettingsList(members, selectFirst);
            }
            m_rtfboxInstructions1->clear();
            m_rtfboxInstructions2->clear();
            showInstructions(instructions, alarmGroup);
            if (layout()) {
                layout()->activate();
            }
        },
        [this](const CaughtError &error) {
            emitProblem(QStringLiteral("SED-004/UI-026: "), error);
        });
}

void DISettings::showInstructions(const QString &text, bool alarmGroup)
{
    if (text.isEmpty()) {
        return;
    }
    QTextEdit *box = alarmGroup ? m_rtfboxInstructions2 : m_rtfboxInstructions1;
    if (!looksLikeRtf(text)) {
        box->setPlainText(text);
        return;
    }
    guarded([&] { box->setHtml(rtfToHtml(text)); },
            [this](const CaughtError &error) {
                Q_EMIT Problem(u"SED-012/UI-200: " + error.numberAndDescription());
            });
}

void DISettings::addUndefinedRow(qint32 pid)
{
    QTreeWidgetItem *row
        = m_lsvSettings->addRow(QString(), pidDisplay(pid), rowTagOf(pid), SettingIcon::Undefined);
    ReportList::setSubItem(row, 1, QStringLiteral("N/A"));
}

namespace {

// A group's members as PIDs, up to the first member that is no PID: that one ends the fill with
// a type mismatch once the members before it are listed.
struct MemberPids
{
    QList<qint32> pids;
    std::optional<Error> stop;
};

MemberPids memberPids(const QList<Value> &members)
{
    MemberPids out;
    out.pids.reserve(members.size());
    for (const Value &element : members) {
        const std::optional<qint64> number
            = element.isNumeric() ? element.toInteger() : std::nullopt;
        if (!number || *number != qint32(*number)) {
            out.stop
                = Error(13, u"Type mismatch: the group member " + element.toText() + u" is no PID");
            break;
        }
        out.pids.append(qint32(*number));
    }
    return out;
}

} // namespace

void DISettings::FillSettingsList(const Value &pids, bool selectFirst)
{
    if (pids.isArray()) {
        // One directory, log and state for the whole fill, and the rows' parameters in one
        // call: each costs the data interface a look at the site.
        const std::shared_ptr<PidDirectory> dir = directory();
        const std::shared_ptr<MessageLog> log = mobjDI->MessageLog();
        const bool alternativeState = mobjDI->AlternativeState();
        const MemberPids members = memberPids(pids.toArray());
        const ParameterList definitions = dir->GetPids(members.pids);
        ReportList::Batch batch(*m_lsvSettings);
        for (qsizetype i = 0; i < members.pids.size(); ++i) {
            const qint32 pid = members.pids[i];
            const ParameterPtr definition = definitions.value(i);
            if (!definition) {
                addUndefinedRow(pid);
                continue;
            }
            QTreeWidgetItem *row
                = m_lsvSettings->addRow(rowKeyOf(pid), definition->GetName(0), rowTagOf(pid));
            guarded([&] { showSettingState(row, *definition, alternativeState, log.get()); },
                    [this](const CaughtError &error) {
                        emitProblem(QStringLiteral("SED-006/UI-076: "), error);
                    });
            const FormattedValue shownDefault = formatDefinitionValue(
                *definition, definition->GetAttribute(SettingAttr::DefaultValue), log.get());
            if (!shownDefault.problem.isEmpty()) {
                Q_EMIT Problem(shownDefault.problem);
            }
            ReportList::setSubItem(row, 2, shownDefault.text);
            ReportList::setSubItem(
                row, 3,
                ValueRangeText(definition->GetAttribute(SettingAttr::RecommendedLow),
                               definition->GetAttribute(SettingAttr::RecommendedHigh)));
        }
        if (members.stop) {
            throw *members.stop;
        }
    }
    selectFirstSetting(selectFirst, &DISettings::lsvSettings_ItemClick);
    m_lsvSettings->autoSizeColumn(1);
}

void DISettings::FillAlarmList(const Value &pids, bool selectFirst)
{
    if (pids.isArray()) {
        const std::shared_ptr<PidDirectory> dir = directory();
        const MemberPids members = memberPids(pids.toArray());
        const ParameterList definitions = dir->GetPids(members.pids);
        ReportList::Batch alarmBatch(*m_lsvAlarmSettings);
        ReportList::Batch settingsBatch(*m_lsvSettings);
        for (qsizetype i = 0; i < members.pids.size(); ++i) {
            const qint32 pid = members.pids[i];
            const ParameterPtr definition = definitions.value(i);
            if (!definition) {
                addUndefinedRow(pid);
                continue;
            }
            QTreeWidgetItem *row
                = m_lsvAlarmSettings->addRow(rowKeyOf(pid), definition->GetName(0), rowTagOf(pid));
            guarded([&] { showAlarmSetpoints(row, *definition); },
                    [this](const CaughtError &error) {
                        emitProblem(QStringLiteral("SED-005/UI-094: "), error);
                    });
        }
        if (members.stop) {
            throw *members.stop;
        }
    }
    // The first-row selection looks at the settings list, where only undefined members of an
    // alarm group land; an alarm row is selected only by the operator.
    selectFirstSetting(selectFirst, &DISettings::lsvAlarmSettings_ItemClick);
    m_lsvAlarmSettings->autoSizeColumn(1);
}

void DISettings::selectFirstSetting(bool selectFirst,
                                    void (DISettings::*onSelected)(QTreeWidgetItem *))
{
    if (m_lsvSettings->rowCount() > 0 && selectFirst) {
        QTreeWidgetItem *first = m_lsvSettings->row(0);
        m_lsvSettings->selectRow(first);
        (this->*onSelected)(first);
    } else {
        disableSettingButtons(QStringLiteral("Select a setting first."));
    }
}

void DISettings::FillSettingsRow(QTreeWidgetItem *row)
{
    guarded(
        [&] {
            const std::optional<RowTarget> target = rowTarget(row);
            if (!target || !target->definition) {
                return;
            }
            const std::shared_ptr<MessageLog> log = mobjDI->MessageLog();
            showSettingState(row, *target->definition, mobjDI->AlternativeState(), log.get());
        },
        [this](const CaughtError &error) {
            emitProblem(QStringLiteral("SED-006/UI-076: "), error);
        });
}

void DISettings::showSettingState(QTreeWidgetItem *row, const Parameter &definition,
                                  bool alternativeState, MessageLog *log)
{
    const SettingRowState state = settingRowState(definition, alternativeState, log);
    if (state.icon != SettingIcon::Unchanged) {
        m_lsvSettings->setSmallIcon(row, state.icon);
    }
    ReportList::setSubItem(row, 1, state.valueText);
    if (!state.formatProblem.isEmpty()) {
        Q_EMIT Problem(state.formatProblem);
    }
}

void DISettings::FillAlarmRow(QTreeWidgetItem *row)
{
    guarded(
        [&] {
            const std::optional<RowTarget> target = rowTarget(row);
            if (!target || !target->definition) {
                return;
            }
            showAlarmSetpoints(row, *target->definition);
        },
        [this](const CaughtError &error) {
            emitProblem(QStringLiteral("SED-005/UI-094: "), error);
        });
}

void DISettings::showAlarmSetpoints(QTreeWidgetItem *row, const Parameter &definition)
{
    const qint64 level = definition.GetAttribute(SettingAttr::Level).toInteger().value_or(0);
    for (size_t i = 0; i < kAlarmSetpoints.size(); ++i) {
        ReportList::setSubItem(
            row, int(i) + 1,
            YesNoText(definition.GetAttribute(kAlarmSetpoints[i].attribute), false));
    }
    m_lsvAlarmSettings->setSmallIcon(row, level > SettingIcon::kHighLevel
                                              ? SettingIcon::ChangeableHighLevel
                                              : SettingIcon::Changeable);
}

qint32 DISettings::PidFromTag(const QString &tag)
{
    if (!tag.startsWith(u"PID(") || !tag.endsWith(u')')) {
        return 0;
    }
    bool ok = false;
    const qint32 pid = QStringView(tag).mid(4, tag.size() - 5).toInt(&ok);
    return ok ? pid : 0;
}

void DISettings::RaiseProblem(const QString &text)
{
    Q_EMIT Problem(u"SED-011: " + text);
}

void DISettings::emitProblem(const QString &prefix, const CaughtError &error)
{
    Q_EMIT Problem(prefix + error.errorText());
}

std::optional<DISettings::RowTarget> DISettings::rowTarget(QTreeWidgetItem *row)
{
    if (!row || !mobjDI) {
        return std::nullopt;
    }
    RowTarget target;
    target.pid = PidFromTag(ReportList::rowTag(row));
    const std::shared_ptr<PidDirectory> dir = directory();
    if (dir->PidExists(target.pid)) {
        target.definition = dir->GetPid(target.pid, true);
    }
    return target;
}

std::shared_ptr<PidDirectory> DISettings::directory()
{
    std::shared_ptr<PidDirectory> dir = mobjDI->GetPidDirectory();
    if (!dir) {
        throw Error(91, QStringLiteral("The data interface has no PID directory"));
    }
    return dir;
}

void DISettings::mobjRefreshValues_IntervalExpired()
{
    guarded(
        [&] {
            if (!mobjDI || m_fraSettings->isHidden()) {
                return;
            }
            QTreeWidgetItem *node = m_tvwGroups->selectedNode();
            QTreeWidgetItem *row = m_lsvSettings->selectedRow();
            if (!node || !row) {
                return;
            }
            const QString key = ReportList::rowKey(row);
            ShowGroup(groupNumberFromKey(KeyedTree::nodeKey(node)), false);
            QTreeWidgetItem *again = m_lsvSettings->findByKey(key);
            if (!again) {
                throw Error(9, key.isEmpty()
                                   ? QStringLiteral("The selected row has no key: a PID "
                                                    "without definition cannot be selected "
                                                    "again")
                                   : u"The selected setting " + key + u" is no longer listed");
            }
            m_lsvSettings->selectRow(again);
            lsvSettings_ItemClick(again);
        },
        [this](const CaughtError &error) {
            emitProblem(QStringLiteral("SED-009/UI-077: "), error);
        });
}

} // namespace olvex
