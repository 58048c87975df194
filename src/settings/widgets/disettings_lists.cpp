// DISettings: what the two views show: a group's settings or alarm setpoints, row by row, and
// its instructions.
#include "settings/widgets/disettings.h"

#include "common/error.h"
#include "common/pid.h"
#include "common/vocabulary.h"
#include "common/widgets/reportlist.h"
#include "settings/alarmsetpoints.h"
#include "settings/rtftohtml.h"
#include "settings/settingdisplay.h"
#include "settings/widgets/settingicons.h"

#include <QFrame>
#include <QLayout>
#include <QTextEdit>

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

void DISettings::addMemberRows(const QList<Value> &members,
                               const std::function<void(qint32, const Parameter &)> &addRow)
{
    const MemberPids ids = memberPids(members);
    const ParameterList definitions = directory()->GetPids(ids.pids);
    for (qsizetype i = 0; i < ids.pids.size(); ++i) {
        if (const ParameterPtr definition = definitions.value(i)) {
            addRow(ids.pids[i], *definition);
        } else {
            addUndefinedRow(ids.pids[i]);
        }
    }
    if (ids.stop) {
        throw *ids.stop;
    }
}

void DISettings::FillSettingsList(const Value &pids, bool selectFirst)
{
    if (pids.isArray()) {
        // One log and state for the whole fill, and the rows' parameters in one call: each
        // costs the data interface a look at the site.
        const std::shared_ptr<MessageLog> log = mobjDI->MessageLog();
        const bool alternativeState = mobjDI->AlternativeState();
        ReportList::Batch batch(*m_lsvSettings);
        addMemberRows(pids.toArray(), [&](qint32 pid, const Parameter &definition) {
            QTreeWidgetItem *row
                = m_lsvSettings->addRow(rowKeyOf(pid), definition.GetName(0), rowTagOf(pid));
            guarded([&] { showSettingState(row, definition, alternativeState, log.get()); },
                    [this](const CaughtError &error) {
                        emitProblem(QStringLiteral("SED-006/UI-076: "), error);
                    });
            const FormattedValue shownDefault = formatDefinitionValue(
                definition, definition.GetAttribute(SettingAttr::DefaultValue), log.get());
            if (!shownDefault.problem.isEmpty()) {
                Q_EMIT Problem(shownDefault.problem);
            }
            ReportList::setSubItem(row, 2, shownDefault.text);
            ReportList::setSubItem(
                row, 3,
                ValueRangeText(definition.GetAttribute(SettingAttr::RecommendedLow),
                               definition.GetAttribute(SettingAttr::RecommendedHigh)));
        });
    }
    applyFindToRows();
    applySortOrder();
    selectFirstSetting(selectFirst, &DISettings::lsvSettings_ItemClick);
    m_lsvSettings->autoSizeColumn(1);
    watchPendingRows();
}

void DISettings::FillAlarmList(const Value &pids, bool selectFirst)
{
    if (pids.isArray()) {
        ReportList::Batch alarmBatch(*m_lsvAlarmSettings);
        ReportList::Batch settingsBatch(*m_lsvSettings);
        addMemberRows(pids.toArray(), [&](qint32 pid, const Parameter &definition) {
            QTreeWidgetItem *row
                = m_lsvAlarmSettings->addRow(rowKeyOf(pid), definition.GetName(0), rowTagOf(pid));
            guarded([&] { showAlarmSetpoints(row, definition); },
                    [this](const CaughtError &error) {
                        emitProblem(QStringLiteral("SED-005/UI-094: "), error);
                    });
        });
    }
    // The first-row selection looks at the settings list, where only undefined members of an
    // alarm group land; an alarm row is selected only by the operator.
    applyFindToRows();
    selectFirstSetting(selectFirst, &DISettings::lsvAlarmSettings_ItemClick);
    m_lsvAlarmSettings->autoSizeColumn(1);
}

void DISettings::selectFirstSetting(bool selectFirst,
                                    void (DISettings::*onSelected)(QTreeWidgetItem *))
{
    QTreeWidgetItem *first = nullptr;
    for (int i = 0; i < m_lsvSettings->rowCount() && !first; ++i) {
        first = m_lsvSettings->row(i)->isHidden() ? nullptr : m_lsvSettings->row(i);
    }
    if (first && selectFirst) {
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
    showRowFacts(row, definition, state.shownValue);
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

} // namespace olvex
