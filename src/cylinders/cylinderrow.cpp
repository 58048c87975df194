#include "cylinders/cylinderrow.h"

#include "common/datetime.h"

namespace olvex {

QStringList cylinderColumns()
{
    return {QStringLiteral("Cylinder ID"),       QStringLiteral("Expiration Date"),
            QStringLiteral("Component Gases"),   QStringLiteral("EPA Vendor ID"),
            QStringLiteral("Cylinder Contains"), QStringLiteral("Pressure")};
}

QString cylinderRowKey(qint32 pid)
{
    return u'K' + QStringLiteral("%1").arg(pid, 10, 10, QLatin1Char('0'));
}

qint32 cylinderPidFromKey(const QString &key)
{
    if (!key.startsWith(u'K')) {
        return 0;
    }
    bool ok = false;
    const qint32 pid = QStringView(key).mid(1).toInt(&ok);
    return ok ? pid : 0;
}

QString componentGasesText(const Value &stored)
{
    QString text = stored.isNullOrEmpty() ? QString() : stored.toText();
    text.replace(u',', u' ');
    text.replace(u';', QStringLiteral(",  "));
    return text;
}

QString pressureText(const Value &pressure, const Value &unit)
{
    if (!pressure.isNumeric()) {
        return {};
    }
    return pressure.toText() + u' ' + (unit.isNullOrEmpty() ? QString() : unit.toText());
}

QString expirationText(const Value &stored)
{
    if (stored.isNullOrEmpty()) {
        return {};
    }
    if (stored.isDate()) {
        return formatNamed(*stored.toDateTime(), NamedFormat::ShortDate);
    }
    return stored.toText();
}

CylinderExpiry cylinderExpiry(std::optional<qint64> daysToExpiry)
{
    if (!daysToExpiry) {
        return CylinderExpiry::Unknown;
    }
    if (*daysToExpiry < 0) {
        return CylinderExpiry::Expired;
    }
    return *daysToExpiry <= kCylinderExpiryWarningDays ? CylinderExpiry::ExpiresSoon
                                                       : CylinderExpiry::Valid;
}

QString expiryNote(std::optional<qint64> daysToExpiry)
{
    switch (cylinderExpiry(daysToExpiry)) {
    case CylinderExpiry::Expired:
        return *daysToExpiry == -1 ? QStringLiteral("Expired yesterday")
                                   : u"Expired " + QString::number(-*daysToExpiry) + u" days ago";
    case CylinderExpiry::ExpiresSoon:
        if (*daysToExpiry == 0) {
            return QStringLiteral("Expires today");
        }
        return *daysToExpiry == 1 ? QStringLiteral("Expires tomorrow")
                                  : u"Expires in " + QString::number(*daysToExpiry) + u" days";
    case CylinderExpiry::Unknown:
    case CylinderExpiry::Valid:
        break;
    }
    return {};
}

CylinderRow cylinderRow(const Parameter &cylinder, const QDate &today)
{
    CylinderRow row;
    row.key = cylinderRowKey(cylinder.PidNumber());
    const Value id = cylinder.GetAttribute(CylinderAttr::CylinderId);
    const Value expiration = cylinder.GetAttribute(CylinderAttr::Expiration);
    const Value vendor = cylinder.GetAttribute(CylinderAttr::VendorId);
    const Value codes = cylinder.GetAttribute(CylinderAttr::GasCodes);
    const auto text = [](const Value &v) {
        return v.isNullOrEmpty() ? QString() : v.toText();
    };
    row.cells = {text(id),
                 expirationText(expiration),
                 componentGasesText(cylinder.GetAttribute(CylinderAttr::ComponentGases)),
                 text(vendor),
                 text(codes),
                 pressureText(cylinder.GetAttribute(CylinderAttr::Pressure),
                              cylinder.GetAttribute(CylinderAttr::PressureUnit))};
    if (!expiration.isNullOrEmpty() && expiration.isDate()) {
        row.daysToExpiry = today.daysTo(expiration.toDateTime()->date());
    }
    row.expiry = cylinderExpiry(row.daysToExpiry);
    return row;
}

QList<qint32> cylinderListPids(const QString &cylinderList)
{
    QList<qint32> pids;
    for (const QStringView piece : QStringView(cylinderList).split(u',')) {
        const qint32 pid = piece.trimmed().toInt();
        if (pid != 0) {
            pids.append(pid);
        }
    }
    return pids;
}

QList<int> cylinderRowAttributes()
{
    return {CylinderAttr::CylinderId,    CylinderAttr::Expiration, CylinderAttr::VendorId,
            CylinderAttr::GasCodes,      CylinderAttr::Pressure,   CylinderAttr::PressureUnit,
            CylinderAttr::ComponentGases};
}

} // namespace olvex
