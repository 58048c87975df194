#pragma once

// The calibration-check records of a site: each names the cylinder it was made with and keeps
// that cylinder's data as it stood then (ID, expiration date, vendor ID, gas codes), because
// reports show a check with the cylinder it used, not the one installed today.

#include "host/sitestore.h"

#include <QDateTime>
#include <QList>
#include <QString>

namespace olvex {

struct CalCheckRecord
{
    qint64 id = 0;
    qint32 calPid = 0;
    qint32 cylinderPid = 0;
    QDateTime started;
    QDateTime ended;
    QString result;
    QString cylinderId;
    QDateTime expiration;
    QString vendorId;
    QString gasCodes;
};

// The cylinder data a record is rewritten with.
struct CalCheckCylinder
{
    QString cylinderId;
    QDateTime expiration; // invalid: none
    QString vendorId;
    QString gasCodes;
};

// The records of one cylinder (0: of all), oldest first.
QList<CalCheckRecord> calCheckRecords(SiteStore &store, qint32 cylinderPid = 0);

// Gives every record of cylinderPid that started from `from` to `to` (both included) the
// cylinder data, with one audit row per record (source "cal check <id>", old and new data as
// text), in one transaction. Returns the number of records changed; a record that already holds
// the data is left alone and not counted, so carrying a fix out twice changes nothing.
int rewriteCalCheckCylinder(SiteStore &store, qint32 cylinderPid, const QDateTime &from,
                            const QDateTime &to, const CalCheckCylinder &cylinder,
                            const Actor &who);

} // namespace olvex
