#include "calconfirm/widgets/dicalconfirmsingle.h"

#include "common/error.h"
#include "common/pid.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace olvex {

namespace {

constexpr int kButtonRow = 3;

QLineEdit *readOnlyLine(QWidget *parent, const QString &name)
{
    auto *edit = new QLineEdit(parent);
    edit->setObjectName(name);
    edit->setReadOnly(true);
    return edit;
}

} // namespace

DICalConfirmSingle::DICalConfirmSingle(QWidget *parent)
    : QWidget(parent)
    , m_fraCalConfirm(new QGroupBox(this))
    , m_grid(new QGridLayout(m_fraCalConfirm))
    , m_lblCalReason(new QLabel(QStringLiteral("Reason For Calibration:"), m_fraCalConfirm))
    , m_lblStartTime(new QLabel(QStringLiteral("Scheduled Start Time:"), m_fraCalConfirm))
    , m_txtReason(readOnlyLine(m_fraCalConfirm, QStringLiteral("txtReason")))
    , m_txtStartTime(readOnlyLine(m_fraCalConfirm, QStringLiteral("txtStartTime")))
    , m_txtDefaultAction(new QLabel(m_fraCalConfirm))
    , m_btnConfirmCal(new QPushButton(m_fraCalConfirm))
    , m_btnCancelCal(new QPushButton(m_fraCalConfirm))
{
    setObjectName(QStringLiteral("DICalConfirmSingle"));
    m_fraCalConfirm->setObjectName(QStringLiteral("fraCalConfirm"));
    m_lblCalReason->setObjectName(QStringLiteral("lblCalReason"));
    m_lblStartTime->setObjectName(QStringLiteral("lblStartTime"));
    m_lblCalReason->setBuddy(m_txtReason);
    m_lblStartTime->setBuddy(m_txtStartTime);
    m_txtDefaultAction->setObjectName(QStringLiteral("txtDefaultAction"));
    // Read-only text that wraps to the row's width: the deadline must never be cut off.
    m_txtDefaultAction->setWordWrap(true);
    m_txtDefaultAction->setTextFormat(Qt::PlainText);
    m_txtDefaultAction->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // The calibration's name stands out in the frame's caption; the contents do not.
    QFont title = m_fraCalConfirm->font();
    title.setBold(true);
    m_fraCalConfirm->setFont(title);
    QFont contents = title;
    contents.setBold(false);
    for (QWidget *child : m_fraCalConfirm->findChildren<QWidget *>()) {
        child->setFont(contents);
    }
    m_btnConfirmCal->setObjectName(QStringLiteral("btnConfirmCal"));
    m_btnCancelCal->setObjectName(QStringLiteral("btnCancelCal"));

    m_grid->addWidget(m_lblCalReason, 0, 0);
    m_grid->addWidget(m_txtReason, 0, 1);
    m_grid->addWidget(m_lblStartTime, 1, 0);
    m_grid->addWidget(m_txtStartTime, 1, 1);
    m_grid->addWidget(m_txtDefaultAction, 2, 0, 1, 2);
    m_grid->setColumnStretch(1, 1);
    // The two buttons share the row equally however wide a host makes the panel; the one that
    // was pressed takes the whole row once the other is hidden.
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_btnConfirmCal, 1);
    buttons->addWidget(m_btnCancelCal, 1);
    m_grid->addLayout(buttons, kButtonRow, 0, 1, 2);
    resetButtons();

    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(m_fraCalConfirm);

    connect(m_btnConfirmCal, &QPushButton::clicked, this, &DICalConfirmSingle::btnConfirmCal_Click);
    connect(m_btnCancelCal, &QPushButton::clicked, this, &DICalConfirmSingle::btnCancelCal_Click);
}

DICalConfirmSingle::~DICalConfirmSingle()
{
    cleanUp();
}

void DICalConfirmSingle::logError(const QString &code, const QString &errorText) const
{
    guarded(
        [&] {
            if (mobjLog) {
                mobjLog->LogMessage(Severity::Error, code + u": " + errorText);
            }
        },
        [](const CaughtError &) {});
}

QString DICalConfirmSingle::pidText() const
{
    return FormatPid(m_pid);
}

QString DICalConfirmSingle::parameterName() const
{
    return mobjParam ? mobjParam->GetName(0) : QString();
}

void DICalConfirmSingle::cleanUp()
{
    guarded(
        [&] {
            stopHoldInterval();
            m_holdInterval.reset();
            mobjParam.reset();
            mobjXml = XmlNode();
            m_readTexts.reset();
            mobjCDR.reset();
            mobjDI.reset();
            mobjLog.reset();
        },
        [this](const CaughtError &error) {
            logError(QStringLiteral("CSET-0042"), error.errorText());
        });
}

void DICalConfirmSingle::Setup(std::shared_ptr<MessageLog> messageLog,
                               std::shared_ptr<DataInterface> dataInterface,
                               std::shared_ptr<CurrentDataReader> currentDataReader,
                               XmlNode document)
{
    guarded(
        [&] {
            mobjLog = std::move(messageLog);
            mobjDI = std::move(dataInterface);
            mobjCDR = std::move(currentDataReader);
            mobjXml = std::move(document);
            m_readTexts.reset();
            m_cleared = false;
            m_texts = {};
            resetButtons();
            m_lblStartTime->show();
            m_txtDefaultAction->show();
        },
        [this](const CaughtError &error) {
            logError(QStringLiteral("CSET-0043"), error.errorText());
        });
}

void DICalConfirmSingle::showTexts(const PendingCalTexts &texts)
{
    m_txtReason->setText(texts.reason);
    m_txtReason->setCursorPosition(0);
    m_txtStartTime->setText(texts.startTime);
    m_txtStartTime->setCursorPosition(0);
    QString shown = texts.defaultAction;
    shown.remove(u'\r');
    m_txtDefaultAction->setText(shown);
}

void DICalConfirmSingle::AddPendingCal(qint32 pid, bool isNew)
{
    guarded(
        [&] {
            if (!mobjDI) {
                return;
            }
            if (isNew || !mobjParam || pid != m_pid) {
                mobjParam = mobjDI->GetPidDirectory()->GetPid(pid, true);
            }
            m_pid = pid;
            const QString name = parameterName();
            // Setting a caption lays it out again even when it is the same: only on a change.
            if (m_fraCalConfirm->title() != name) {
                m_fraCalConfirm->setTitle(name);
            }
            if (isNew) {
                m_fraCalConfirm->setProperty("tag", FormatPidPlain(pid));
            }
            const XmlNode calStart = mobjXml.name() == u"CalStart"
                                         ? mobjXml
                                         : mobjXml.selectSingleNode(QStringLiteral("//CalStart"));
            const PendingCalTexts texts = m_readTexts ? *std::exchange(m_readTexts, std::nullopt)
                                                      : ReadPendingCalState(calStart).texts;
            if (!isNew && texts == m_texts) {
                return;
            }
            // The screen changes only when a text did: an unchanged row keeps its selection.
            showTexts(texts);
            m_texts = texts;
            const QString message = isNew ? AddPendingCalMessage(pidText(), name, texts)
                                          : PendingCalChangedMessage(pidText(), name, texts);
            SendRaiseMsgCommand(*mobjDI, mobjLog.get(), m_pid, kCalConfirmMsgType, message);
        },
        [this](const CaughtError &error) {
            logError(QStringLiteral("CSET-0044"), error.errorText());
        });
}

void DICalConfirmSingle::ClearPendingCal(bool log)
{
    guarded(
        [&] {
            m_cleared = true;
            m_lblStartTime->hide();
            if (!m_btnConfirmCal->isHidden()) {
                m_txtStartTime->setText(QStringLiteral("Starting Now"));
            } else if (!m_btnCancelCal->isHidden()) {
                m_txtStartTime->setText(QStringLiteral("Canceling Now"));
            }
            if (log && mobjDI) {
                const QString message
                    = ClearPendingCalMessage(pidText(), parameterName(), m_txtStartTime->text());
                SendRaiseMsgCommand(*mobjDI, mobjLog.get(), m_pid, kCalConfirmMsgType, message);
                if (mobjLog) {
                    mobjLog->LogMessage(int(kCalConfirmMsgType), message);
                }
            }
        },
        [this](const CaughtError &error) {
            logError(QStringLiteral("CSET-0045"), error.errorText());
        });
}

void DICalConfirmSingle::setHoldInterval(IntervalPtr interval)
{
    stopHoldInterval();
    m_holdInterval.reset();
    m_holdInterval = std::move(interval);
    if (m_holdInterval) {
        connect(m_holdInterval.get(), &Interval::IntervalExpired, this,
                &DICalConfirmSingle::HoldInterval_IntervalExpired);
    }
}

void DICalConfirmSingle::stopHoldInterval()
{
    if (m_holdInterval) {
        disconnect(m_holdInterval.get(), nullptr, this, nullptr);
        m_holdInterval->Stop();
    }
}

void DICalConfirmSingle::HoldInterval_IntervalExpired()
{
    Q_EMIT HoldExpired(m_pid);
}

void DICalConfirmSingle::resetButtons()
{
    for (QPushButton *button : {m_btnConfirmCal, m_btnCancelCal}) {
        button->setEnabled(true);
        button->show();
    }
    m_btnConfirmCal->setText(QStringLiteral("Confirm"));
    m_btnCancelCal->setText(QStringLiteral("Cancel"));
    m_btnConfirmCal->setToolTip(QStringLiteral("Start this calibration now"));
    m_btnCancelCal->setToolTip(QStringLiteral("Skip this calibration"));
}

void DICalConfirmSingle::btnConfirmCal_Click()
{
    answer(true);
}

void DICalConfirmSingle::btnCancelCal_Click()
{
    answer(false);
}

void DICalConfirmSingle::answer(bool confirm)
{
    guarded(
        [&] {
            if (!mobjDI || m_cleared) {
                return;
            }
            // Answer only what the realtime data still shows as a calibration record.
            if (!mobjCDR || !GetCalConfirmDocument(mobjLog.get(), *mobjCDR, m_pid)) {
                logError(QStringLiteral("CSET-0050"),
                         u"Can't confirm/cancel cal; no XValue available (" + pidText() + u')');
                return;
            }
            QPushButton *pressed = confirm ? m_btnConfirmCal : m_btnCancelCal;
            QPushButton *other = confirm ? m_btnCancelCal : m_btnConfirmCal;
            pressed->setText(confirm ? QStringLiteral("Confirmed") : QStringLiteral("Canceled"));
            const QString answered = confirm ? QStringLiteral("Confirmed; the calibration starts "
                                                              "when the service takes the answer")
                                             : QStringLiteral("Canceled; the calibration is "
                                                              "skipped when the service takes "
                                                              "the answer");
            for (QPushButton *button : {pressed, other}) {
                button->setEnabled(false);
                button->setToolTip(answered);
            }
            other->hide();
            m_txtDefaultAction->hide();
            if (!SendCalPendingPromptAction(*mobjDI, mobjLog.get(), m_pid, confirm, !confirm)) {
                // The service never heard the answer: let the operator give it again.
                resetButtons();
                m_txtDefaultAction->show();
            }
        },
        [&](const CaughtError &error) {
            resetButtons();
            m_txtDefaultAction->show();
            logError(QStringLiteral("CSET-0046"), error.errorText());
        });
}

} // namespace olvex
