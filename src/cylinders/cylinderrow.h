#pragma once

#include "common/olvexexport.h"

// The texts of one row of the cylinder list, shared by the list control and the command line,
// so that both show a cylinder the same way.

#include "common/host.h"

#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace olvex {

// How close a cylinder is to its expiration date.
enum class CylinderExpiry { Unknown, Valid, ExpiresSoon, Expired };

// A cylinder is "expiring" this many days ahead.
inline constexpr int kCylinderExpiryWarningDays = 30;

struct CylinderRow
{
    QString key; // "K" + the PID in ten digits
    // The six columns, in order: Cylinder ID, Expiration Date, Component Gases, EPA Vendor ID,
    // Cylinder Contains, Pressure.
    QStringList cells;
    // Days from today to the expiration date; none when it is not a date.
    std::optional<qint64> daysToExpiry;
    CylinderExpiry expiry = CylinderExpiry::Unknown;
};

// The column captions of the cylinder list.
OLVEX_CORE_EXPORT QStringList cylinderColumns();

// "K0000001234".
OLVEX_CORE_EXPORT QString cylinderRowKey(qint32 pid);
// The PID of a row key; 0 for a key that is not one.
OLVEX_CORE_EXPORT qint32 cylinderPidFromKey(const QString &key);

// "SO2,450.5,ppm;NO,250,ppm" -> "SO2 450.5 ppm,  NO 250 ppm".
OLVEX_CORE_EXPORT QString componentGasesText(const Value &stored);
// "1850 psig" when the pressure is numeric, else empty.
OLVEX_CORE_EXPORT QString pressureText(const Value &pressure, const Value &unit);
// The expiration date in the locale's short date when it is a date, else as stored.
OLVEX_CORE_EXPORT QString expirationText(const Value &stored);

OLVEX_CORE_EXPORT CylinderExpiry cylinderExpiry(std::optional<qint64> daysToExpiry);
// "Expired 12 days ago", "Expires in 5 days", "Expires today"; empty when the cylinder is
// neither expired nor expiring soon.
OLVEX_CORE_EXPORT QString expiryNote(std::optional<qint64> daysToExpiry);

// The row of one cylinder parameter, with the days counted from today.
OLVEX_CORE_EXPORT CylinderRow cylinderRow(const Parameter &cylinder, const QDate &today);

// The PIDs of a cylinder list text ("0,12" -> {12}); pieces whose integer value is 0 are
// skipped.
OLVEX_CORE_EXPORT QList<qint32> cylinderListPids(const QString &cylinderList);

// The attributes a row reads, for a list that reads them together.
OLVEX_CORE_EXPORT QList<int> cylinderRowAttributes();

} // namespace olvex
