#include "calstart/calstartrules.h"

#include "calstart/calstartrecord.h"
#include "common/datetime.h"
#include "common/host.h"
#include "common/pid.h"
#include "common/value.h"

#include <QLocale>
#include <QSet>

namespace olvex {

std::optional<QTime> readTimeOfDay(const QString &text)
{
    const QString t = text.trimmed();
    // The record's own "HH:nn" without the general reader (which builds local date-times).
    if (t.size() == 5 && t[2] == u':') {
        const QTime quick = QTime::fromString(t, QStringLiteral("HH:mm"));
        if (quick.isValid()) {
            return quick;
        }
    }
    if (t.isEmpty()) {
        return std::nullopt;
    }
    const std::optional<QDateTime> parsed = parseDateText(t);
    if (!parsed) {
        return std::nullopt;
    }
    return QTime(parsed->time().hour(), parsed->time().minute());
}

std::optional<QTime> acceptCalStartTime(const QString &text)
{
    const std::optional<QTime> read = readTimeOfDay(text);
    if (!read) {
        return std::nullopt;
    }
    const QTime time(read->hour(), read->minute());
    if (time < QTime(0, 5)) {
        return QTime(0, 5);
    }
    return time;
}

QString calStartTimeText(const QTime &time)
{
    // A time of day alone: no date, so no time-zone lookup.
    return QLocale().toString(time, namedFormatPattern(NamedFormat::ShortTime));
}

bool isMinutesText(const QString &text)
{
    return !text.trimmed().isEmpty() && Value(text.trimmed()).isNumeric();
}

std::optional<QString> clampConfirmTimeout(const QString &text)
{
    if (!isMinutesText(text)) {
        return std::nullopt;
    }
    const double minutes = Value(text.trimmed()).toDouble().value_or(0);
    if (minutes < 1) {
        return QStringLiteral("1");
    }
    if (minutes > 480) {
        return QStringLiteral("480");
    }
    return text;
}

CalStartEnabling calStartEnabling(const CalStartRecord &record, const CalStartTicks &ticks)
{
    const bool on = !ticks.disableAutoCal;
    CalStartEnabling e;
    e.disableBox = record.enableChannelUsable();
    e.dailyItems = on;
    e.startupFrame = on;
    e.startupDelay = on && ticks.calAfterStartup;
    e.normalOpsTrigger = on && record.normalOpSupported;
    e.normalOpsDelay = e.normalOpsTrigger && ticks.calAfterEnterNormalOps;
    e.every26Box = on && record.canDetermineOpHours;
    e.confirmFrame = record.calConfirmSupported;
    e.confirmWaitBox = record.calConfirmSupported && on;
    e.confirmDetails = e.confirmWaitBox && ticks.calConfirmEnabled;
    e.startButton = record.manualCalStartSupported;
    e.abortButton = record.manualCalAbortSupported;
    return e;
}

bool belongToSeveralUnits(const QList<std::shared_ptr<Parameter>> &parameters)
{
    QSet<int> units;
    for (const ParameterPtr &parameter : parameters) {
        if (parameter) {
            units.insert(GetPidPart(parameter->PidNumber(), 1));
        }
    }
    return units.size() > 1;
}

QString calParameterCaption(const Parameter &parameter, bool severalUnits)
{
    QString caption = parameter.GetName();
    const QString unit = parameter.UnitName();
    if (severalUnits && !unit.isEmpty() && !caption.contains(unit)) {
        caption = u'(' + unit + u") " + caption;
    }
    if (parameter.InError()) {
        caption.prepend(QStringLiteral("[ERROR] "));
    }
    return caption;
}

} // namespace olvex
