// DICalStart: loading a parameter, the enabling rules, validation, Save / Cancel / selection,
// the manual start and abort buttons and the status lines.
#include "calstart/calstartrules.h"
#include "calstart/calstatus.h"
#include "calstart/widgets/dicalstart.h"
#include "common/datetime.h"
#include "common/error.h"
#include "common/pid.h"
#include "common/text.h"
#include "common/widgets/uiservices.h"
#include "common/xml.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QTimeEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace olvex {

namespace {

const QString kAllowTwoMinutes
    = QStringLiteral("Please allow up to 2 minutes for the changes to take effect.");

// Enables or disables a control and says why it is off. Unchanged state costs nothing: a
// selection reloads every item.
void enableWhy(QWidget *widget, bool enabled, const QString &why)
{
    widget->setEnabled(enabled);
    const QString tip = enabled ? QString() : why;
    if (widget->toolTip() != tip) {
        widget->setToolTip(tip);
    }
}

} // namespace

void DICalStart::logError(const QString &prefix, const CaughtError &error)
{
    if (mobjLog) {
        guarded([&] { mobjLog->LogMessage(Severity::Error, prefix + error.errorText()); },
                [](const CaughtError &) {});
    }
}

bool DICalStart::Setup(std::shared_ptr<MessageLog> messageLog,
                       std::shared_ptr<DataInterface> dataInterface, std::shared_ptr<void> third)
{
    Teardown();
    mobjLog = std::move(messageLog);
    mobjDI = std::move(dataInterface);
    mobjThird = std::move(third);
    m_lblOnlineStatus->clear();
    m_lblAutoStatus->clear();
    bool ok = false;
    guarded(
        [&] {
            buildList();
            if (!m_rows.isEmpty()) {
                m_selected = 0;
                m_rows.first().option->setChecked(true);
                loadSelected(true);
            }
            if (mobjDI) {
                IntervalSpec spec;
                spec.periodSeconds = 10;
                spec.name = QStringLiteral("tmrUpdateOnlineCalStatus");
                tmrUpdateOnlineCalStatus = mobjDI->Clock()->CreateInterval(spec);
                connect(tmrUpdateOnlineCalStatus.get(), &Interval::IntervalExpired, this,
                        &DICalStart::tmrUpdateOnlineCalStatus_IntervalExpired);
            }
            ok = true;
        },
        [&](const CaughtError &error) {
            logError(QStringLiteral("CSET-0020: Cannot set up the calibration start control; "),
                     error);
        });
    return ok;
}

void DICalStart::Teardown()
{
    if (tmrUpdateOnlineCalStatus) {
        guarded([&] { tmrUpdateOnlineCalStatus->Stop(); }, [](const CaughtError &) {});
        disconnect(tmrUpdateOnlineCalStatus.get(), nullptr, this, nullptr);
        tmrUpdateOnlineCalStatus.reset();
    }
    mobjThird.reset();
    mobjDI.reset();
    mobjLog.reset();
}

void DICalStart::clearRows()
{
    for (const Row &row : std::as_const(m_rows)) {
        delete row.option;
    }
    m_rows.clear();
    m_selected = -1;
}

void DICalStart::buildList()
{
    clearRows();
    if (!mobjDI) {
        return;
    }
    ParameterList parameters = mobjDI->GetPidsOfTypes({ParameterTypes::Calibration});
    parameters.removeIf([](const ParameterPtr &parameter) {
        return !parameter || parameter->ParameterType() != ParameterTypes::Calibration;
    });
    const bool severalUnits = belongToSeveralUnits(parameters);
    for (const ParameterPtr &parameter : std::as_const(parameters)) {
        Row row;
        row.parameter = parameter;
        row.pid = parameter->PidNumber();
        row.caption = calParameterCaption(*parameter, severalUnits);
        row.option = new QRadioButton(row.caption, m_listPanel);
        row.option->setObjectName(u"optParameter"_s + QString::number(m_rows.size()));
        row.option->setToolTip(FormatPid(row.pid));
        m_options->addButton(row.option);
        m_listLayout->insertWidget(int(m_rows.size()), row.option);
        const int index = int(m_rows.size());
        connect(row.option, &QRadioButton::clicked, this,
                [this, index] { SelectParameter(index); });
        m_rows.append(row);
    }
}

QString DICalStart::rowCaption(int row) const
{
    return row >= 0 && row < m_rows.size() ? m_rows.at(row).caption : QString();
}

QString DICalStart::selectedCaption() const
{
    return rowCaption(m_selected);
}

qint32 DICalStart::selectedPid() const
{
    return m_selected >= 0 && m_selected < m_rows.size() ? m_rows.at(m_selected).pid : 0;
}

void DICalStart::setDefaults()
{
    CalStartEntry defaults;
    defaults.startTime = calStartTimeText(QTime(6, 50));
    showEntry(defaults);
}

void DICalStart::showEntry(const CalStartEntry &e)
{
    // Unchanged texts stay as they are (a line edit's setText resets its cursor and undo).
    const auto setText = [](QLineEdit *field, const QString &text) {
        if (field->text() != text) {
            field->setText(text);
        }
    };
    m_chkDisable->setChecked(e.disableAutoCal);
    setText(m_txtTime, e.startTime);
    m_chkSkipOffline->setChecked(e.skipIfOffline);
    m_chkSkipDailyIfOnline->setChecked(e.skipDailyCalIfOnlineCalExists);
    setText(m_txtStartupDelay, e.startupDelay);
    setText(m_txtNormalOpsDelay, e.normalOpsDelay);
    m_chkAfterStartup->setChecked(e.calAfterStartup);
    m_chkAfterNormalOps->setChecked(e.calAfterEnterNormalOps);
    m_chkSkipStartupIfOnline->setChecked(e.skipStartupCalIfOnlineCalExists);
    m_chkEvery26->setChecked(e.calEvery26OpHours);
    m_chkConfirm->setChecked(e.calConfirmEnabled);
    setText(m_txtConfirmTimeout, e.confirmTimeout);
    (e.runOnTimeout ? m_optRunOnTimeout : m_optSkipOnTimeout)->setChecked(true);
}

void DICalStart::showNoData(bool noData)
{
    m_lblNoData->setVisible(noData);
}

void DICalStart::loadSelected(bool withStatus)
{
    m_loading = true;
    XmlDocument document;
    {
        const auto done = qScopeGuard([this] {
            applyEnabling();
            m_dirty = false;
            m_loading = false;
        });
        m_record.reset();
        QString xml;
        if (m_selected >= 0) {
            xml = m_rows.at(m_selected).parameter->GetCurrentValue().Value.toText();
        }
        if (!xml.isEmpty()) {
            document = LoadXmlDocument(mobjLog.get(), xml);
        }
        if (!document.isNull()) {
            m_record = CalStartRecord::read(document);
        }
        showNoData(m_selected >= 0 && !m_record);
        m_settingsPanel->setEnabled(m_record.has_value());
        if (m_record) {
            showEntry(CalStartEntryFromRecord(*m_record));
        } else {
            setDefaults();
        }
    }
    if (!withStatus) {
        return;
    }
    if (m_record) {
        // The value just read serves the status lines too.
        showStatus(onlineCalStatusOf(*m_record), autoCalStatusOf(*m_record));
    } else {
        // Read again, so that the lines log why they stay empty.
        refreshStatus();
    }
}

void DICalStart::applyEnabling()
{
    const CalStartRecord none;
    const CalStartRecord &record = m_record ? *m_record : none;
    const CalStartEnabling e
        = calStartEnabling(record, {m_chkDisable->isChecked(), m_chkAfterStartup->isChecked(),
                                    m_chkAfterNormalOps->isChecked(), m_chkConfirm->isChecked()});
    const QString disabled = tr("Automatic calibration checks are disabled");
    enableWhy(m_chkDisable, e.disableBox,
              tr("The channel that enables automatic calibration checks is not usable"));
    for (QWidget *item :
         {static_cast<QWidget *>(m_lblTime), static_cast<QWidget *>(m_txtTime),
          static_cast<QWidget *>(m_cmdTime), static_cast<QWidget *>(m_chkSkipOffline),
          static_cast<QWidget *>(m_chkSkipDailyIfOnline)}) {
        enableWhy(item, e.dailyItems, disabled);
    }
    enableWhy(m_fraStartup, e.startupFrame, disabled);
    enableWhy(m_txtStartupDelay, e.startupDelay, tr("The startup check is not chosen"));
    m_udStartupDelay->setEnabled(e.startupDelay);
    enableWhy(m_chkAfterNormalOps, e.normalOpsTrigger,
              e.startupFrame ? tr("The unit cannot report entering normal operation") : disabled);
    m_lblNormalOpsTail->setEnabled(e.normalOpsTrigger);
    enableWhy(m_txtNormalOpsDelay, e.normalOpsDelay,
              tr("The normal-operation check is not chosen"));
    m_udNormalOpsDelay->setEnabled(e.normalOpsDelay);
    enableWhy(m_chkEvery26, e.every26Box,
              e.dailyItems ? tr("The unit's operating hours are not known") : disabled);
    if (m_chkDisable->isChecked()) {
        m_lblOnlineStatus->clear();
    }
    enableWhy(m_fraConfirm, e.confirmFrame,
              tr("This parameter does not support calibration confirmation"));
    enableWhy(m_chkConfirm, e.confirmWaitBox, e.confirmFrame ? disabled : QString());
    for (QWidget *item :
         {static_cast<QWidget *>(m_lblWait), static_cast<QWidget *>(m_txtConfirmTimeout),
          m_udConfirmTimeout, static_cast<QWidget *>(m_lblWaitTail),
          static_cast<QWidget *>(m_optRunOnTimeout), static_cast<QWidget *>(m_optSkipOnTimeout)}) {
        enableWhy(item, e.confirmDetails,
                  tr("Used only while \"Wait for user acknowledgement\" is ticked"));
    }
    const bool haveRow = m_selected >= 0;
    enableWhy(m_cmdStart, haveRow && e.startButton,
              tr("A manual cal start is not supported for this parameter"));
    enableWhy(m_cmdAbort, haveRow && e.abortButton,
              tr("A manual cal abort is not supported for this parameter"));
    enableWhy(m_cmdSave, m_record.has_value(), tr("No calibration start settings to save"));
    enableWhy(m_cmdCancel, m_record.has_value(), tr("No calibration start settings to reload"));
}

void DICalStart::edited()
{
    if (!m_loading) {
        m_dirty = true;
    }
}

void DICalStart::triggerToggled(bool startup, bool checked)
{
    bool &guard = startup ? m_inStartupToggle : m_inNormalToggle;
    if (guard) {
        return;
    }
    guard = true;
    const auto release = qScopeGuard([&guard] { guard = false; });
    // The two triggers exclude each other.
    QCheckBox *other = startup ? m_chkAfterNormalOps : m_chkAfterStartup;
    if (checked && other->isChecked()) {
        other->setChecked(false);
    }
    applyEnabling();
    edited();
}

bool DICalStart::ValidateField(QLineEdit *field)
{
    bool ok = true;
    guarded(
        [&] {
            if (field == m_txtTime) {
                const std::optional<QTime> time = acceptCalStartTime(field->text());
                ok = time.has_value();
                if (ok && field->text() != calStartTimeText(*time)) {
                    field->setText(calStartTimeText(*time));
                }
            } else if (field == m_txtConfirmTimeout) {
                const std::optional<QString> minutes = clampConfirmTimeout(field->text());
                ok = minutes.has_value();
                if (ok && *minutes != field->text()) {
                    field->setText(*minutes);
                    edited();
                }
            } else {
                ok = isMinutesText(field->text());
            }
        },
        [&](const CaughtError &) { ok = false; });
    if (!ok && field->isEnabled()) {
        field->setToolTip(field == m_txtTime ? tr("Enter a time of day, for example 6:50 AM")
                                             : tr("Enter a number of minutes"));
        // After the focus change in progress has finished.
        QMetaObject::invokeMethod(
            field,
            [field] {
                field->setFocus(Qt::OtherFocusReason);
                field->selectAll();
            },
            Qt::QueuedConnection);
        UiServices::resolve(m_ui).beep();
    }
    return ok;
}

bool DICalStart::postChange()
{
    const qint32 pid = selectedPid();
    UiServices &ui = UiServices::resolve(m_ui);
    const CalStartEntry now = entry();
    if (!BuildCalStartCommand(pid, QString(), QString(), now)) {
        ui.ShowMessageBox(tr("The changes cannot be saved: the daily time must be a time of day "
                             "and the minutes fields must be numbers."),
                          MessageBoxStyle::Exclamation, selectedCaption());
        return false;
    }
    if (!PostCalStartChange(*mobjDI, mobjLog.get(), pid, now)) {
        ui.ShowMessageBox(u"CSET-0024: Can't create msg record to change cal start settings ("_s
                              + FormatPid(pid) + u')',
                          MessageBoxStyle::Exclamation, selectedCaption());
        return false;
    }
    ui.ShowMessageBox(kAllowTwoMinutes, MessageBoxStyle::Information, selectedCaption());
    return true;
}

CalStartEntry DICalStart::entry() const
{
    CalStartEntry e;
    e.disableAutoCal = m_chkDisable->isChecked();
    e.startTime = m_txtTime->text();
    e.skipIfOffline = m_chkSkipOffline->isChecked();
    e.skipDailyCalIfOnlineCalExists = m_chkSkipDailyIfOnline->isChecked();
    e.startupDelay = m_txtStartupDelay->text();
    e.normalOpsDelay = m_txtNormalOpsDelay->text();
    e.calAfterStartup = m_chkAfterStartup->isChecked();
    e.calAfterEnterNormalOps = m_chkAfterNormalOps->isChecked();
    e.skipStartupCalIfOnlineCalExists = m_chkSkipStartupIfOnline->isChecked();
    e.calEvery26OpHours = m_chkEvery26->isChecked();
    e.calConfirmEnabled = m_chkConfirm->isChecked();
    e.confirmTimeout = m_txtConfirmTimeout->text();
    e.runOnTimeout = m_optRunOnTimeout->isChecked();
    return e;
}

void DICalStart::SelectParameter(int row)
{
    if (row == m_selected || row < 0 || row >= m_rows.size() || !mobjDI) {
        return;
    }
    guarded(
        [&] {
            if (m_dirty && m_record) {
                const QString caption = selectedCaption();
                const int answer = UiServices::resolve(m_ui).ShowMessageBox(
                    fillPlaceholders(tr("Do you want to save your changes to $Param$?"),
                                     {{u"Param"_s, caption}}),
                    MessageBoxStyle::ExclamationYesNo, caption);
                if (answer == MessageBoxAnswer::Yes) {
                    postChange();
                }
            }
            m_selected = row;
            m_rows.at(row).option->setChecked(true);
            loadSelected(true);
        },
        [&](const CaughtError &error) {
            logError(QStringLiteral("CSET-0021: Cannot show the calibration start settings; "),
                     error);
        });
}

void DICalStart::cmdSave_Click()
{
    if (!mobjDI || !m_record) {
        return;
    }
    guarded(
        [&] {
            UiServices &ui = UiServices::resolve(m_ui);
            const std::shared_ptr<User> user = mobjDI->GetUser();
            if (!user || !user->HasPrivilege(Privileges::ChangeSettings)) {
                ui.ShowMessageBox(
                    fillPlaceholders(tr("Access denied. Account '$username$' does "
                                        "not have privileges."),
                                     {{u"username"_s, user ? user->UserName() : QString()}}),
                    MessageBoxStyle::Exclamation, selectedCaption());
                return;
            }
            if (postChange()) {
                m_dirty = false;
                refreshStatus();
            }
        },
        [&](const CaughtError &error) {
            logError(QStringLiteral("CSET-0022: Cannot save the calibration start settings; "),
                     error);
            UiServices::resolve(m_ui).ShowMessageBox(
                u"CSET-0022: Cannot save the calibration start settings; "_s + error.errorText(),
                MessageBoxStyle::Exclamation, selectedCaption());
        });
}

void DICalStart::cmdCancel_Click()
{
    if (!mobjDI) {
        return;
    }
    guarded([&] { loadSelected(true); },
            [&](const CaughtError &error) {
                logError(QStringLiteral("CSET-0021: Cannot show the calibration start settings; "),
                         error);
            });
}

void DICalStart::cmdClose_Click()
{
    Q_EMIT CloseClicked();
}

void DICalStart::StartCalCheck()
{
    if (!mobjDI || selectedPid() == 0) {
        return;
    }
    guarded([&] { olvex::StartCalCheck(*mobjDI, mobjLog.get(), selectedPid()); },
            [&](const CaughtError &error) {
                logError(u"CSET-0025: Can't start manual cal ("_s + FormatPid(selectedPid())
                             + u"); "_s,
                         error);
            });
}

void DICalStart::AbortCal()
{
    if (!mobjDI || selectedPid() == 0) {
        return;
    }
    guarded([&] { olvex::AbortCal(*mobjDI, mobjLog.get(), selectedPid()); },
            [&](const CaughtError &error) {
                logError(u"CSET-0013: Can't abort cal ("_s + FormatPid(selectedPid()) + u"); "_s,
                         error);
            });
}

void DICalStart::cmdTime_Click()
{
    guarded(
        [&] {
            QDialog dialog(this);
            dialog.setObjectName(u"frmCalStartTime"_s);
            dialog.setWindowTitle(tr("Auto Cal Start Time"));
            auto *layout = new QVBoxLayout(&dialog);
            auto *time = new QTimeEdit(&dialog);
            time->setObjectName(u"tmeStartTime"_s);
            time->setDisplayFormat(namedFormatPattern(NamedFormat::ShortTime));
            if (const std::optional<QTime> current = acceptCalStartTime(m_txtTime->text())) {
                time->setTime(*current);
            }
            layout->addWidget(time);
            auto *buttons
                = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
            layout->addWidget(buttons);
            connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
            connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
            if (UiServices::resolve(m_ui).runModal(dialog) == QDialog::Accepted) {
                m_txtTime->setText(calStartTimeText(time->time()));
                ValidateField(m_txtTime);
                edited();
            }
        },
        [&](const CaughtError &error) {
            logError(QStringLiteral("CSET-0021: Cannot show the time dialog; "), error);
        });
}

void DICalStart::cmdHelp26_Click()
{
    guarded(
        [&] {
            UiServices::resolve(m_ui).ShowMessageBox(
                OpHoursHelpText(), MessageBoxStyle::Information, tr("26 Operating Hour Rule"));
        },
        [](const CaughtError &) {});
}

void DICalStart::cmdHelpConfirm_Click()
{
    guarded(
        [&] {
            UiServices::resolve(m_ui).ShowMessageBox(ConfirmationHelpText(),
                                                     MessageBoxStyle::Information,
                                                     tr("Calibration Confirmation"));
        },
        [](const CaughtError &) {});
}

void DICalStart::showOnlineStatus(const StatusLine &line)
{
    QPalette palette = m_lblOnlineStatus->palette();
    const QColor colour = line.colour == StatusLine::Colour::Red
                              ? QColor(255, 0, 0)
                              : palette.color(QPalette::Highlight);
    if (palette.color(QPalette::WindowText) != colour) {
        palette.setColor(QPalette::WindowText, colour);
        m_lblOnlineStatus->setPalette(palette);
    }
    m_lblOnlineStatus->setText(line.text);
}

void DICalStart::showStatus(const StatusLine &online, const StatusLine &autoCal)
{
    showOnlineStatus(online);
    m_lblAutoStatus->setText(autoCal.text);
}

void DICalStart::UpdateOnlineCalStatus()
{
    m_lblOnlineStatus->clear();
    if (mobjDI && selectedPid() != 0) {
        showOnlineStatus(olvex::UpdateOnlineCalStatus(*mobjDI, mobjLog.get(), selectedPid()));
    }
}

void DICalStart::UpdateAutoCalStatus()
{
    m_lblAutoStatus->clear();
    if (mobjDI && selectedPid() != 0) {
        m_lblAutoStatus->setText(
            olvex::UpdateAutoCalStatus(*mobjDI, mobjLog.get(), selectedPid()).text);
    }
}

void DICalStart::refreshStatus()
{
    UpdateOnlineCalStatus();
    UpdateAutoCalStatus();
}

void DICalStart::tmrUpdateOnlineCalStatus_IntervalExpired()
{
    guarded([&] { refreshStatus(); },
            [&](const CaughtError &error) {
                logError(QStringLiteral("CSET-0088: Cannot update online cal status; "), error);
            });
}

} // namespace olvex
