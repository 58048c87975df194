// DISettings: its controls, the life cycle over a data interface (setup, refresh timer,
// teardown) and the helpers the views and the change flows share.
#include "settings/widgets/disettings.h"

#include "common/error.h"
#include "common/widgets/keyedtree.h"
#include "common/widgets/reportlist.h"
#include "common/widgets/uiservices.h"
#include "settings/alarmsetpoints.h"
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
    m_cmdHistory = new QPushButton(QStringLiteral("History..."), m_fraSettings);
    m_cmdHistory->setObjectName(QStringLiteral("cmdHistory"));
    settingButtons->addWidget(m_cmdHistory);
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
    auto *findBar = new QWidget(this);
    buildFindBar(findBar);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(findBar);
    layout->addWidget(m_splitter, 1);

    connect(m_tvwGroups, &KeyedTree::nodeClicked, this, &DISettings::tvwGroups_NodeClick);
    connect(m_lsvSettings, &ReportList::rowClicked, this, &DISettings::lsvSettings_ItemClick);
    connect(m_lsvAlarmSettings, &ReportList::rowClicked, this,
            &DISettings::lsvAlarmSettings_ItemClick);
    connect(m_cmdChange, &QPushButton::clicked, this, &DISettings::cmdChange_Click);
    connect(m_cmdChangeToDefault, &QPushButton::clicked, this,
            &DISettings::cmdChangeToDefault_Click);
    connect(m_cmdChangeAlarm, &QPushButton::clicked, this, &DISettings::cmdChangeAlarm_Click);
    connect(m_cmdHistory, &QPushButton::clicked, this, &DISettings::cmdHistory_Click);
    buildContextMenu();
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
            m_groupMembers.clear();
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

            m_live = startRefresh;
            if (startRefresh) {
                watchPendingRows();
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
    // The timers go first: nothing may fire into a control whose data interface is gone.
    stopWatchingPendingRows();
    m_live = false;
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
