#pragma once

#include "common/olvexexport.h"

#include <QString>
#include <QTime>

#include <optional>

namespace olvex {

class MessageLog;
class XmlDocument;

// A channel id as the record writes it in an `ioid` attribute: "17" or "C17". The leading C is
// dropped; what remains names a usable channel only when it is a whole number above 0.
OLVEX_CORE_EXPORT QString channelIdText(const QString &ioid);
OLVEX_CORE_EXPORT std::optional<int> usableChannel(const QString &ioid);

// The calibration start settings record of one calibration parameter, read from the
// parameter's XML value (elements under //CalStart/). A missing element reads as its type's
// empty value: false, "" or no time. The service owns the record; the control only reads it
// and sends changes by command.
struct OLVEX_CORE_EXPORT CalStartRecord
{
    // Edited by the operator.
    bool calEnabled = false;
    QString calEnabledIoid;
    std::optional<QTime> calStartTimeUser;
    bool skipIfOffline = false;
    bool skipDailyCalIfOnlineCalExists = false;
    QString calDelayMinutes = QStringLiteral("0"); // "0" when the text is not numeric
    bool calAfterStartup = false;
    bool calAfterEnterNormalOps = false;
    bool skipStartupCalIfOnlineCalExists = false;
    bool calEvery26OpHours = false;
    bool calConfirmEnabled = false;
    QString calConfirmTimeout;
    bool calConfirmDefaultConfirm = false;

    // Capabilities, set by the service.
    bool normalOpSupported = false;
    bool canDetermineOpHours = false;
    bool calConfirmSupported = false;
    bool manualCalStartSupported = false;
    QString manualCalStartIoid;
    bool manualCalAbortSupported = false;
    QString manualCalAbortIoid;

    // Status, refreshed by the service.
    QString userFriendlyStatus;
    QString opHoursSinceOnlineCal;
    QString opHoursStatusString;

    // The enable choice is offered only for a usable channel.
    bool enableChannelUsable() const { return usableChannel(calEnabledIoid).has_value(); }

    static CalStartRecord read(const XmlDocument &document);
    // Loads and reads text; nullopt when it is empty or does not load (logged when log is
    // given).
    static std::optional<CalStartRecord> fromXml(MessageLog *log, const QString &text);
};

} // namespace olvex
