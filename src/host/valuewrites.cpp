// The service's side of the pending value writes: a group of them applied with a few
// statements, however many it holds.
#include "host/commandqueue.h"

#include "common/pid.h"
#include "common/vocabulary.h"
#include "host/idlist.h"
#include "host/multirow.h"
#include "host/rowreader.h"
#include "host/storedvalue.h"

#include <QSet>
#include <QSqlQuery>

namespace olvex {

namespace {

struct Stored
{
    qint64 kind = 0;
    QString text; // null for SQL NULL
};

void bind(RowReader &rows, const Stored &value)
{
    rows.bind(value.kind);
    rows.bind(value.text.isNull() ? QVariant() : QVariant(value.text));
}

Stored stored(const Value &value)
{
    const StoredValue encoded = encodeValue(value);
    return {encoded.kind, encoded.text.isNull() ? QString() : encoded.text.toString()};
}

// A cylinder's component gases are listed, with their certified values, in its attribute -312
// ("SO2,450.5,ppm;NO,250,ppm"), in the order of its gas PIDs (-46). When a gas's value changes,
// the list follows, in the same transaction, so the cylinder list never shows an old value.
void refreshCylinder(SiteStore &store, const ParameterRecord &cylinder,
                     const QHash<qint32, const PendingWrite *> &written)
{
    const Value *members = cylinder.attribute(CylinderAttr::GasPids);
    const Value *listed = cylinder.attribute(CylinderAttr::ComponentGases);
    if (!members || !listed) {
        return;
    }
    const QList<Value> pids = members->toArray();
    QStringList entries = listed->toText().split(u';');
    const PendingWrite *last = nullptr;
    for (qsizetype i = 0; i < pids.size() && i < entries.size(); ++i) {
        const PendingWrite *write = written.value(qint32(pids[i].toInteger().value_or(0)));
        QStringList parts = entries[i].split(u',');
        if (write == nullptr || parts.size() < 2) {
            continue;
        }
        const Value &value = write->value;
        parts[1] = value.isNumeric() && !value.isText() ? stored(value).text : value.toText();
        entries[i] = parts.join(u',');
        last = write;
    }
    if (last != nullptr) {
        store.setAttribute(cylinder.pid, CylinderAttr::ComponentGases, Value(entries.join(u';')),
                           Actor{last->userName, last->clientName, last->clientAddress},
                           QStringLiteral("component gas value"));
    }
}

// The cylinders whose gases are among the written PIDs: one read of every cylinder's gas list,
// which most groups find holds none of them.
void refreshCylinders(SiteStore &store, const QHash<qint32, const PendingWrite *> &written)
{
    QList<qint32> cylinders;
    {
        RowReader rows(store.sql(),
                       u"SELECT p.pid, a.vkind, a.val FROM parameters p JOIN attributes a"
                       u" ON a.pid = p.pid AND a.number = "
                           + QString::number(CylinderAttr::GasPids) + u" WHERE p.ptype = "
                           + QString::number(ParameterTypes::GasCylinder));
        rows.exec();
        while (rows.next()) {
            const Value gases = decodeValue(int(rows.integer(1)), rows.text(2));
            for (const Value &gas : gases.toArray()) {
                if (written.contains(qint32(gas.toInteger().value_or(0)))) {
                    cylinders.append(qint32(rows.integer(0)));
                    break;
                }
            }
        }
    }
    for (const qint32 pid : cylinders) {
        if (const std::optional<ParameterRecord> cylinder = store.parameter(pid)) {
            refreshCylinder(store, *cylinder, written);
        }
    }
}

} // namespace

QStringList CommandQueue::applyPendingWrites(const QList<PendingWrite> &writes,
                                             const QString &worker)
{
    SqlConnection &sql = m_store.sql();
    const bool sqlite = m_store.isSqlite();
    Transaction transaction(sql, SqlConnection::TransactionKind::Write);

    // What each setting holds now, for its audit row, straight as stored.
    QList<qint32> pids;
    pids.reserve(writes.size());
    for (const PendingWrite &write : writes) {
        pids.append(write.pid);
    }
    QHash<qint32, Stored> old;
    old.reserve(writes.size());
    {
        RowReader rows(sql, withIdList(QStringLiteral("SELECT p.pid, c.vkind, c.val FROM %PIDS% l"
                                                      " JOIN parameters p ON p.pid = l.pid"
                                                      " LEFT JOIN current_values c"
                                                      " ON c.pid = p.pid"),
                                       sqlite));
        rows.bind(idListText(sqlite, pids));
        rows.exec();
        const Stored none = stored(Value());
        while (rows.next()) {
            old.insert(qint32(rows.integer(0)),
                       rows.isNull(1) ? none : Stored{rows.integer(1), rows.text(2)});
        }
    }

    QStringList reasons;
    QList<const PendingWrite *> applied;
    QList<Stored> values;
    QList<qint64> ids;
    QHash<qint32, const PendingWrite *> written;
    for (const PendingWrite &write : writes) {
        if (!old.contains(write.pid)) {
            const QString shown = FormatPid(write.pid);
            reasons.append(u"PID " + (shown.isEmpty() ? QString::number(write.pid) : shown)
                           + u" is not defined");
            continue;
        }
        reasons.append(QString());
        applied.append(&write);
        values.append(stored(write.value));
        ids.append(write.id);
        written.insert(write.pid, &write);
    }
    if (applied.isEmpty()) {
        transaction.commit();
        return reasons;
    }

    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const QString time = dateTimeText(QDateTime::fromMSecsSinceEpoch(now));
    insertRows(
        sql, QStringLiteral("INSERT INTO current_values (pid, vkind, val, status, time)"), 5,
        applied.size(),
        [&](RowReader &rows, qsizetype i) {
            rows.bind(qint64(applied[i]->pid));
            bind(rows, values[i]);
            rows.bind(qint64(0));
            rows.bind(time);
        },
        QStringLiteral("ON CONFLICT (pid) DO UPDATE SET vkind = excluded.vkind,"
                       " val = excluded.val, status = excluded.status,"
                       " time = excluded.time"));
    insertRows(sql,
               QStringLiteral("INSERT INTO audit_trail (changed_ms, user_name, client_name,"
                              " client_address, pid, attribute, old_vkind, old_val, new_vkind,"
                              " new_val, source)"),
               11, applied.size(), [&](RowReader &rows, qsizetype i) {
                   const PendingWrite &write = *applied[i];
                   rows.bind(now);
                   rows.bind(notNull(write.userName));
                   rows.bind(notNull(write.clientName));
                   rows.bind(notNull(write.clientAddress));
                   rows.bind(qint64(write.pid));
                   rows.bind(QVariant()); // a value, not an attribute
                   bind(rows, old.value(write.pid));
                   bind(rows, values[i]);
                   rows.bind(QString(u"pending write " + QString::number(write.id)));
               });
    {
        // A write read by nextPendingWrites (SQLite) is claimed here, and done at once.
        QSqlQuery &query = sql.prepared(withIdList(
            QStringLiteral("UPDATE pending_writes SET attempts = attempts + CASE WHEN"
                           " state = 'claimed' AND claimed_by = ? THEN 0 ELSE 1 END,"
                           " state = 'done', claimed_by = ?, done_ms = ?, result = 'applied'"
                           " WHERE id %IN_IDS%"),
            sqlite, ids.size()));
        query.addBindValue(notNull(worker));
        query.addBindValue(notNull(worker));
        query.addBindValue(now);
        query.addBindValue(idListValue(sqlite, ids));
        sql.exec(query);
        query.finish();
    }
    refreshCylinders(m_store, written);
    transaction.commit();
    return reasons;
}

} // namespace olvex
