#include "calconfirm/widgets/dicalconfirm.h"

#include "calconfirm/calconfirmfunctions.h"
#include "calconfirm/widgets/dicalconfirmsingle.h"
#include "common/datetime.h"
#include "common/error.h"
#include "common/pid.h"

#include <QLabel>
#include <QScrollBar>

namespace olvex {

namespace {

// The rows stand 60 twips apart.
constexpr int kRowGapTwips = 60;
constexpr int kTwipsPerInch = 1440;

} // namespace

DICalConfirm::DICalConfirm(QWidget *parent)
    : QWidget(parent)
    , m_picCalConfirmOuter(new QWidget(this))
    , m_picCalConfirmInner(new QWidget(m_picCalConfirmOuter))
    , m_fsbRowScroll(new QScrollBar(Qt::Vertical, this))
    , m_lblNoPendingCals(new QLabel(
          QStringLiteral("There are no calibrations pending confirmation"), m_picCalConfirmOuter))
{
    guarded(
        [&] {
            setObjectName(QStringLiteral("DICalConfirm"));
            m_picCalConfirmOuter->setObjectName(QStringLiteral("picCalConfirmOuter"));
            m_picCalConfirmInner->setObjectName(QStringLiteral("picCalConfirmInner"));
            m_fsbRowScroll->setObjectName(QStringLiteral("fsbRowScroll"));
            m_lblNoPendingCals->setObjectName(QStringLiteral("lblNoPendingCals"));
            m_lblNoPendingCals->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
            m_lblNoPendingCals->setWordWrap(true);
            m_fsbRowScroll->hide();
            connect(m_fsbRowScroll, &QScrollBar::valueChanged, this, &DICalConfirm::scrollRows);
            setMinimumSize(260, 120);
            layoutRows();
        },
        [this](const CaughtError &error) {
            logLine(Severity::Error, u"CSET-0047: " + error.errorText());
        });
}

DICalConfirm::~DICalConfirm()
{
    guarded([&] { Teardown(); },
            [this](const CaughtError &error) {
                logLine(Severity::Error, u"CSET-0048: " + error.errorText());
            });
}

void DICalConfirm::logLine(int severity, const QString &text) const
{
    guarded(
        [&] {
            if (mobjLog) {
                mobjLog->LogMessage(severity, text);
            }
        },
        [](const CaughtError &) {});
}

bool DICalConfirm::Setup(std::shared_ptr<MessageLog> messageLog,
                         std::shared_ptr<DataInterface> dataInterface,
                         std::shared_ptr<CurrentDataReader> currentDataReader)
{
    bool any = false;
    Teardown();
    mobjLog = std::move(messageLog);
    guarded(
        [&] {
            mobjDI = std::move(dataInterface);
            mobjCDR = std::move(currentDataReader);
            if (!mobjDI) {
                return;
            }
            const ParameterList parameters = mobjDI->GetPidsOfTypesWith(
                {ParameterTypes::Calibration}, {CalibrationAttr::SupportsConfirmation});
            for (const ParameterPtr &parameter : parameters) {
                if (parameter->GetAttribute(CalibrationAttr::SupportsConfirmation).isTrue()) {
                    m_pids.append(parameter->PidNumber());
                }
            }
            any = !m_pids.isEmpty();
            if (any) {
                mobjCalConfirmPendingInterval = mobjDI->Clock()->CreateInterval(IntervalSpec{
                    60, 29, std::nullopt, QStringLiteral("Update Calibration Confirmation Window"),
                    true, false, true, 1000, 0});
                connect(mobjCalConfirmPendingInterval.get(), &Interval::IntervalExpired, this,
                        &DICalConfirm::mobjCalConfirmPendingInterval_IntervalExpired);
            }
        },
        [this](const CaughtError &error) {
            logLine(Severity::Error, u"CSET-0047: " + error.errorText());
        });
    return any;
}

void DICalConfirm::Teardown()
{
    guarded(
        [&] {
            for (DICalConfirmSingle *row : std::as_const(m_rows)) {
                row->cleanUp();
                delete row;
            }
            m_rows.clear();
            m_pendingRows.clear();
            m_pendingTexts.clear();
            m_nextIndex = 0;
            m_showingRows = false;
            if (mobjCalConfirmPendingInterval) {
                disconnect(mobjCalConfirmPendingInterval.get(), nullptr, this, nullptr);
                mobjCalConfirmPendingInterval->Stop();
                mobjCalConfirmPendingInterval.reset();
            }
            m_pids.clear();
            mobjCDR.reset();
            mobjDI.reset();
            layoutRows();
        },
        [this](const CaughtError &error) {
            logLine(Severity::Error, u"CSET-0049: " + error.errorText());
        });
    mobjLog.reset();
}

void DICalConfirm::RefreshWindow()
{
    refresh();
}

void DICalConfirm::mobjCalConfirmPendingInterval_IntervalExpired()
{
    refresh();
}

DICalConfirmSingle *DICalConfirm::findRow(qint32 pid, bool cleared) const
{
    if (!cleared) {
        return m_pendingRows.value(pid);
    }
    for (DICalConfirmSingle *row : m_rows) {
        if (row->Param() == pid && row->isCleared() == cleared) {
            return row;
        }
    }
    return nullptr;
}

DICalConfirmSingle *DICalConfirm::rowOf(qint32 pid) const
{
    DICalConfirmSingle *row = findRow(pid, false);
    return row ? row : findRow(pid, true);
}

QList<DICalConfirmSingle *> DICalConfirm::visibleRows() const
{
    QList<DICalConfirmSingle *> rows;
    for (DICalConfirmSingle *row : m_rows) {
        if (row->ShouldBeVisible()) {
            rows.append(row);
        }
    }
    return rows;
}

DICalConfirmSingle *DICalConfirm::addRow(qint32 pid, const XmlNode &calStart,
                                         const PendingCalTexts &texts)
{
    auto *row = new DICalConfirmSingle(m_picCalConfirmInner);
    row->setIndex(m_nextIndex++);
    row->setParam(pid);
    row->Setup(mobjLog, mobjDI, mobjCDR, calStart);
    row->setDocument(calStart, texts);
    row->AddPendingCal(pid, true);
    row->setShouldBeVisible(true);
    connect(row, &DICalConfirmSingle::HoldExpired, this, &DICalConfirm::ClearPendingCal);
    m_rows.append(row);
    m_pendingRows.insert(pid, row);
    return row;
}

void DICalConfirm::clearRow(DICalConfirmSingle *row, const QDateTime &now)
{
    m_pendingRows.remove(row->Param());
    m_pendingTexts.remove(row->Param());
    logLine(Severity::Note,
            u"CSET-0091: Clear pending cal confirmation (" + FormatPid(row->Param()) + u')');
    row->setHoldInterval(mobjDI->Clock()->CreateInterval(
        IntervalSpec{60, 0, DateAddWhole(QStringLiteral("n"), 1, now),
                     QStringLiteral("HoldInterval"), false, false, true, 1000, 0}));
    row->ClearPendingCal(true);
    row->setEnabled(false);
}

void DICalConfirm::refresh()
{
    guarded(
        [&] {
            if (!mobjDI || !mobjCDR) {
                return;
            }
            const QDateTime now = mobjDI->Clock()->Now();
            bool changed = false;
            NewCalConfirmEvent added;
            for (const qint32 pid : std::as_const(m_pids)) {
                std::optional<QString> text;
                XmlNode calStart;
                DICalConfirmSingle *row = nullptr;
                bool unchanged = false;
                guarded(
                    [&] {
                        text = GetCalConfirmText(mobjLog.get(), *mobjCDR, pid);
                        row = findRow(pid, false);
                        unchanged = text && row && m_pendingTexts.value(pid) == *text;
                        if (text && !unchanged) {
                            calStart = CalConfirmNodeOfText(mobjLog.get(), *text, pid);
                        }
                    },
                    [&](const CaughtError &error) {
                        logLine(Severity::Error, u"CSET-0053: " + error.errorText());
                    });
                if (unchanged) {
                    continue;
                }
                if (!calStart) {
                    logLine(Severity::Error, u"CSET-0050: Can't confirm/cancel cal; no XValue "
                                             u"available ("
                                                 + FormatPid(pid) + u')');
                    continue;
                }
                const PendingCalState state = ReadPendingCalState(calStart);
                if (!state.pending) {
                    if (row) {
                        clearRow(row, now);
                        changed = true;
                    }
                    continue;
                }
                if (row) {
                    row->setDocument(calStart, state.texts);
                    row->AddPendingCal(pid, false);
                    m_pendingTexts.insert(pid, *text);
                    continue;
                }
                logLine(Severity::Note,
                        u"CSET-0090: Add pending cal confirmation (" + FormatPid(pid) + u')');
                guarded(
                    [&] {
                        addRow(pid, calStart, state.texts);
                        m_pendingTexts.insert(pid, *text);
                        added.pids.append(pid);
                        changed = true;
                    },
                    [&](const CaughtError &) {
                        logLine(Severity::Error, u"CSET-0092: Can't find/add cal confirm control ("
                                                     + FormatPid(pid) + u')');
                    });
            }
            if (changed) {
                layoutRows();
            }
            if (!added.pids.isEmpty()) {
                Q_EMIT NewCalConfirmPending(added);
            }
        },
        [this](const CaughtError &error) {
            logLine(Severity::Error, u"CSET-0052: " + error.errorText());
        });
}

void DICalConfirm::ClearPendingCal(qint32 pid)
{
    guarded(
        [&] {
            DICalConfirmSingle *row = findRow(pid, true);
            if (!row) {
                row = findRow(pid, false);
            }
            if (!row) {
                logLine(Severity::Error,
                        u"CSET-0093: Can't clear pending cal; cal confirm control does not exist ("
                            + FormatPid(pid) + u')');
                return;
            }
            row->stopHoldInterval();
            row->setShouldBeVisible(false);
            row->hide();
            m_rows.removeOne(row);
            if (m_pendingRows.value(pid) == row) {
                m_pendingRows.remove(pid);
                m_pendingTexts.remove(pid);
            }
            // Later: the hold timer that brought us here is still delivering its expiry.
            row->deleteLater();
            layoutRows();
        },
        [this](const CaughtError &error) {
            logLine(Severity::Error, u"CSET-0052: " + error.errorText());
        });
}

void DICalConfirm::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    guarded([&] { layoutRows(); },
            [this](const CaughtError &error) {
                logLine(Severity::Error, u"CSET-0052: " + error.errorText());
            });
}

void DICalConfirm::scrollRows(int value)
{
    m_picCalConfirmInner->move(0, -value);
}

void DICalConfirm::layoutRows()
{
    const QList<DICalConfirmSingle *> rows = visibleRows();
    const int dpi = logicalDpiY() > 0 ? logicalDpiY() : 96;
    const int gap = qMax(1, kRowGapTwips * dpi / kTwipsPerInch);

    // Word-wrapped texts make a row's height depend on the width it gets.
    const auto rowHeight = [](QWidget *row, int width) {
        return row->hasHeightForWidth() ? row->heightForWidth(width) : row->sizeHint().height();
    };
    int total = 0;
    for (DICalConfirmSingle *row : rows) {
        total += rowHeight(row, width()) + gap;
    }
    const bool scroll = total > height();
    const int barWidth = scroll ? m_fsbRowScroll->sizeHint().width() : 0;
    m_picCalConfirmOuter->setGeometry(0, 0, width() - barWidth, height());
    m_fsbRowScroll->setGeometry(width() - barWidth, 0, barWidth, height());
    m_fsbRowScroll->setVisible(scroll);

    const int innerWidth = m_picCalConfirmOuter->width();
    int top = 0;
    for (DICalConfirmSingle *row : rows) {
        const int height = rowHeight(row, innerWidth);
        row->setGeometry(0, top, innerWidth, height);
        row->show();
        top += height + gap;
    }
    m_picCalConfirmInner->resize(innerWidth, qMax(top, m_picCalConfirmOuter->height()));
    m_fsbRowScroll->setRange(0, qMax(0, top - m_picCalConfirmOuter->height()));
    m_fsbRowScroll->setPageStep(m_picCalConfirmOuter->height());
    m_fsbRowScroll->setSingleStep(qMax(1, top / qMax(1, int(rows.size())) / 4));
    if (!scroll) {
        m_fsbRowScroll->setValue(0);
    }
    scrollRows(m_fsbRowScroll->value());

    m_lblNoPendingCals->setGeometry(8, 16, qMax(0, innerWidth - 16), 60);
    m_lblNoPendingCals->setVisible(rows.isEmpty());
    m_lblNoPendingCals->raise();
    const bool wasShowing = std::exchange(m_showingRows, !rows.isEmpty());
    if (wasShowing && rows.isEmpty() && mobjDI) {
        SendRaiseMsgCommand(*mobjDI, mobjLog.get(), 0, kCalConfirmMsgType, NoPendingCalsMessage());
    }
}

} // namespace olvex
