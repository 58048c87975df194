#include "host/calchecks.h"

#include "host/storedvalue.h"

#include <QSqlQuery>

namespace olvex {

namespace {

const QString kColumns = QStringLiteral(
    "id, cal_pid, cylinder_pid, started, ended, result, cylinder_id, expiration_date, vendor_id,"
    " gas_codes");

CalCheckRecord readRecord(const QSqlQuery &query)
{
    CalCheckRecord record;
    record.id = query.value(0).toLongLong();
    record.calPid = query.value(1).toInt();
    record.cylinderPid = query.value(2).toInt();
    record.started = dateTimeFromText(query.value(3).toString());
    record.ended = dateTimeFromText(query.value(4).toString());
    record.result = query.value(5).toString();
    record.cylinderId = query.value(6).toString();
    record.expiration = dateTimeFromText(query.value(7).toString());
    record.vendorId = query.value(8).toString();
    record.gasCodes = query.value(9).toString();
    return record;
}

QString expirationColumn(const QDateTime &expiration)
{
    return expiration.isValid() ? dateTimeText(expiration) : QString();
}

// The audit trail's picture of a record's cylinder data.
QString auditText(const QString &id, const QDateTime &expiration, const QString &vendor,
                  const QString &codes)
{
    return u"cylinder " + id + u", expires "
           + (expiration.isValid() ? expiration.toString(QStringLiteral("yyyy-MM-dd HH:mm"))
                                   : QStringLiteral("-"))
           + u", vendor " + vendor + u", gases " + codes;
}

} // namespace

QList<CalCheckRecord> calCheckRecords(SiteStore &store, qint32 cylinderPid)
{
    SqlConnection &sql = store.sql();
    QSqlQuery query
        = sql.prepare(u"SELECT " + kColumns + u" FROM cal_checks"
                      + (cylinderPid != 0 ? QStringLiteral(" WHERE cylinder_pid = ?") : QString())
                      + u" ORDER BY started, id");
    if (cylinderPid != 0) {
        query.addBindValue(cylinderPid);
    }
    sql.exec(query);
    QList<CalCheckRecord> records;
    while (query.next()) {
        records.append(readRecord(query));
    }
    return records;
}

int rewriteCalCheckCylinder(SiteStore &store, qint32 cylinderPid, const QDateTime &from,
                            const QDateTime &to, const CalCheckCylinder &cylinder, const Actor &who)
{
    SqlConnection &sql = store.sql();
    Transaction transaction(sql, SqlConnection::TransactionKind::Write);
    QList<CalCheckRecord> inWindow;
    {
        // The local date-time texts sort as the times they stand for.
        QSqlQuery query = sql.prepare(
            u"SELECT " + kColumns
            + u" FROM cal_checks WHERE cylinder_pid = ? AND started >= ? AND started <= ?"
              u" ORDER BY started, id"
            + (store.isSqlite() ? QString() : QStringLiteral(" FOR UPDATE")));
        query.addBindValue(cylinderPid);
        query.addBindValue(dateTimeText(from));
        query.addBindValue(dateTimeText(to));
        sql.exec(query);
        while (query.next()) {
            inWindow.append(readRecord(query));
        }
    }
    const QString expiration = expirationColumn(cylinder.expiration);
    const QString newText
        = auditText(cylinder.cylinderId, cylinder.expiration, cylinder.vendorId, cylinder.gasCodes);
    QSqlQuery &update
        = sql.prepared(QStringLiteral("UPDATE cal_checks SET cylinder_id = ?, expiration_date = ?,"
                                      " vendor_id = ?, gas_codes = ? WHERE id = ?"));
    QSqlQuery &audit = sql.prepared(QStringLiteral(
        "INSERT INTO audit_trail (changed_ms, user_name, client_name, client_address, pid,"
        " attribute, old_vkind, old_val, new_vkind, new_val, source)"
        " VALUES (?, ?, ?, ?, ?, NULL, ?, ?, ?, ?, ?)"));
    const StoredValue textKind = encodeValue(Value(QString()));
    int changed = 0;
    for (const CalCheckRecord &record : std::as_const(inWindow)) {
        if (record.cylinderId == cylinder.cylinderId
            && expirationColumn(record.expiration) == expiration
            && record.vendorId == cylinder.vendorId && record.gasCodes == cylinder.gasCodes) {
            continue;
        }
        update.addBindValue(notNull(cylinder.cylinderId));
        update.addBindValue(expiration.isEmpty() ? QVariant(QMetaType::fromType<QString>())
                                                 : QVariant(expiration));
        update.addBindValue(notNull(cylinder.vendorId));
        update.addBindValue(notNull(cylinder.gasCodes));
        update.addBindValue(record.id);
        sql.exec(update);

        audit.addBindValue(QDateTime::currentMSecsSinceEpoch());
        audit.addBindValue(notNull(who.userName));
        audit.addBindValue(notNull(who.clientName));
        audit.addBindValue(notNull(who.clientAddress));
        audit.addBindValue(cylinderPid);
        audit.addBindValue(textKind.kind);
        audit.addBindValue(
            auditText(record.cylinderId, record.expiration, record.vendorId, record.gasCodes));
        audit.addBindValue(textKind.kind);
        audit.addBindValue(newText);
        audit.addBindValue(QString(u"cal check " + QString::number(record.id)));
        sql.exec(audit);
        ++changed;
    }
    transaction.commit();
    return changed;
}

} // namespace olvex
