#include "calstart/calstartrecord.h"

#include "calstart/calstartrules.h"

#include "common/datetime.h"
#include "common/value.h"
#include "common/xml.h"

#include <QHash>

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

CalStartRecord CalStartRecord::read(const XmlDocument &document)
{
    // One selection instead of one per field: the children of every CalStart element in
    // document order, the first of each name being what //CalStart/<name> would select.
    QHash<QString, XmlNode> fields;
    for (const XmlNode &node : document.selectNodes(QStringLiteral("//CalStart/*"))) {
        const QString name = node.name();
        if (!fields.contains(name)) {
            fields.insert(name, node);
        }
    }
    const auto text = [&](QStringView element) {
        const auto it = fields.constFind(element.toString());
        return it == fields.cend() ? QString() : it->text().trimmed();
    };
    // Anything that is not true counts as false: a missing element, empty or unconvertible text.
    const auto flag = [&](QStringView element) {
        const QString t = text(element);
        if (t.size() == 1 && (t[0] == u'0' || t[0] == u'1')) {
            return t[0] == u'1'; // what the service writes
        }
        return !t.isEmpty() && Value(t).toBoolean().value_or(false);
    };
    const auto ioid = [&](QStringView element) {
        const auto it = fields.constFind(element.toString());
        return it == fields.cend() ? QString() : it->attribute(QStringLiteral("ioid")).trimmed();
    };

    CalStartRecord record;
    record.calEnabled = flag(u"CalEnabled");
    record.calEnabledIoid = ioid(u"CalEnabled");
    record.calStartTimeUser = readTimeOfDay(text(u"CalStartTimeUser"));
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
    record.manualCalStartIoid = ioid(u"ManualCalStartSupported");
    record.manualCalAbortSupported = flag(u"ManualCalAbortSupported");
    record.manualCalAbortIoid = ioid(u"ManualCalAbortSupported");

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
