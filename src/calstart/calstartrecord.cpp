#include "calstart/calstartrecord.h"

#include "common/datetime.h"
#include "common/value.h"
#include "common/xml.h"

namespace olvex {

QString channelIdText(const QString &ioid)
{
    return ioid.startsWith(u'C') ? ioid.mid(1) : ioid;
}

std::optional<int> usableChannel(const QString &ioid)
{
    const QString text = channelIdText(ioid);
    const Value value(text);
    if (text.isEmpty() || !value.isNumeric()) {
        return std::nullopt;
    }
    const std::optional<double> number = value.toDouble();
    if (!number || *number <= 0 || *number > 2147483647.0) {
        return std::nullopt;
    }
    return int(*value.toInteger());
}

namespace {

QString path(QStringView element)
{
    return u"//CalStart/" + element;
}

} // namespace

CalStartRecord CalStartRecord::read(const XmlDocument &document)
{
    const auto flag = [&](QStringView element) {
        return GetNodeBool(document, path(element)).value_or(false);
    };
    const auto text = [&](QStringView element) {
        return GetNodeText(document, path(element));
    };

    CalStartRecord record;
    record.calEnabled = flag(u"CalEnabled");
    record.calEnabledIoid = GetNodeText(document, path(u"CalEnabled/@ioid"));
    const QString time = text(u"CalStartTimeUser");
    if (const std::optional<QDateTime> parsed = parseDateText(time); parsed && !time.isEmpty()) {
        record.calStartTimeUser = QTime(parsed->time().hour(), parsed->time().minute());
    }
    record.skipIfOffline = flag(u"SkipIfOffline");
    record.skipDailyCalIfOnlineCalExists = flag(u"SkipDailyCalIfOnlineCalExists");
    const QString delay = text(u"CalDelayMinutes");
    record.calDelayMinutes = Value(delay).isNumeric() ? delay : QStringLiteral("0");
    record.calAfterStartup = flag(u"CalAfterStartup");
    record.calAfterEnterNormalOps = flag(u"CalAfterEnterNormalOps");
    record.skipStartupCalIfOnlineCalExists = flag(u"SkipStartupCalIfOnlineCalExists");
    record.calEvery26OpHours = flag(u"CalEvery26OpHours");
    record.calConfirmEnabled = flag(u"CalConfirmEnabled");
    record.calConfirmTimeout = text(u"CalConfirmTimeout");
    record.calConfirmDefaultConfirm = flag(u"CalConfirmDefaultConfirm");

    record.normalOpSupported = flag(u"NormalOpSupported");
    record.canDetermineOpHours = flag(u"CanDetermineOpHours");
    record.calConfirmSupported = flag(u"CalConfirmSupported");
    record.manualCalStartSupported = flag(u"ManualCalStartSupported");
    record.manualCalStartIoid = GetNodeText(document, path(u"ManualCalStartSupported/@ioid"));
    record.manualCalAbortSupported = flag(u"ManualCalAbortSupported");
    record.manualCalAbortIoid = GetNodeText(document, path(u"ManualCalAbortSupported/@ioid"));

    record.userFriendlyStatus = text(u"UserFriendlyStatus");
    record.opHoursSinceOnlineCal = text(u"OpHoursSinceOnlineCal");
    record.opHoursStatusString = text(u"OpHoursStatusString");
    return record;
}

std::optional<CalStartRecord> CalStartRecord::fromXml(MessageLog *log, const QString &text)
{
    if (text.isEmpty()) {
        return std::nullopt;
    }
    const XmlDocument document = LoadXmlDocument(log, text);
    if (document.isNull()) {
        return std::nullopt;
    }
    return read(document);
}

} // namespace olvex
