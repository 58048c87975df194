// The site's small tables: the site row and its revision, counts, users, channels, the
// current-data items and the message log.
#include "host/sitestore.h"

#include "host/multirow.h"
#include "host/storedvalue.h"

#include <QSqlQuery>

namespace olvex {
SiteInfo SiteStore::site()
{
    QSqlQuery &query = m_sql->prepared(QStringLiteral(
        "SELECT site_id, name, export_folder, alternative_state FROM site WHERE id = 1"));
    QueryScope scope(query);
    m_sql->exec(query);
    SiteInfo info;
    if (query.next()) {
        info.siteId = query.value(0).toString();
        info.name = query.value(1).toString();
        info.exportFolder = query.value(2).toString();
        info.alternativeState = query.value(3).toInt() != 0;
    }
    return info;
}

void SiteStore::setAlternativeState(bool on)
{
    Transaction transaction(*m_sql, SqlConnection::TransactionKind::Write);
    QSqlQuery &query = m_sql->prepared(QStringLiteral(
        "UPDATE site SET alternative_state = ?, revision = revision + 1 WHERE id = 1"));
    query.addBindValue(on ? 1 : 0);
    m_sql->exec(query);
    transaction.commit();
}

std::pair<qint64, bool> SiteStore::revisionAndState()
{
    QSqlQuery &query = m_sql->prepared(
        QStringLiteral("SELECT revision, alternative_state FROM site WHERE id = 1"));
    QueryScope scope(query);
    m_sql->exec(query);
    if (!query.next()) {
        return {0, false};
    }
    return {query.value(0).toLongLong(), query.value(1).toInt() != 0};
}

qint64 SiteStore::bumpRevision()
{
    QSqlQuery &query
        = m_sql->prepared(QStringLiteral("UPDATE site SET revision = revision + 1 WHERE id = 1"));
    m_sql->exec(query);
    return revisionAndState().first;
}

SiteCounts SiteStore::counts()
{
    SiteCounts counts;
    Transaction transaction(*m_sql, SqlConnection::TransactionKind::Read);
    {
        QSqlQuery &query = m_sql->prepared(
            QStringLiteral("SELECT ptype, count(*) FROM parameters GROUP BY ptype ORDER BY ptype"));
        QueryScope scope(query);
        m_sql->exec(query);
        while (query.next()) {
            counts.parametersByType.insert(query.value(0).toInt(), query.value(1).toInt());
        }
    }
    counts.users = m_sql->scalar(QStringLiteral("SELECT count(*) FROM users")).toInt();
    counts.channels = m_sql->scalar(QStringLiteral("SELECT count(*) FROM channels")).toInt();
    counts.queuedCommands
        = m_sql
              ->scalar(QStringLiteral(
                  "SELECT count(*) FROM command_records WHERE state IN ('queued', 'claimed')"))
              .toInt();
    counts.queuedWrites
        = m_sql
              ->scalar(QStringLiteral(
                  "SELECT count(*) FROM pending_writes WHERE state IN ('queued', 'claimed')"))
              .toInt();
    transaction.commit();
    return counts;
}

std::optional<UserRecord> SiteStore::user(const QString &name)
{
    QSqlQuery &query = m_sql->prepared(
        QStringLiteral("SELECT u.name, u.full_name, u.all_privileges, p.privilege FROM users u"
                       " LEFT JOIN user_privileges p ON p.user_name = u.name"
                       " WHERE lower(u.name) = lower(?) ORDER BY u.name"));
    QueryScope scope(query);
    query.addBindValue(name);
    m_sql->exec(query);
    std::optional<UserRecord> user;
    while (query.next()) {
        if (!user) {
            user.emplace();
            user->name = query.value(0).toString();
            user->fullName = query.value(1).toString();
            user->allPrivileges = query.value(2).toInt() != 0;
        } else if (query.value(0).toString() != user->name) {
            break; // two accounts differing only in case: the first one answers
        }
        if (!query.value(3).isNull()) {
            user->privileges.insert(query.value(3).toInt());
        }
    }
    return user;
}

int SiteStore::channelKind(int channel)
{
    QSqlQuery &query
        = m_sql->prepared(QStringLiteral("SELECT kind FROM channels WHERE channel = ?"));
    QueryScope scope(query);
    query.addBindValue(channel);
    m_sql->exec(query);
    return query.next() ? query.value(0).toInt() : 0;
}

std::optional<SiteStore::DataItem> SiteStore::currentData(qint32 pid, const QString &key)
{
    QSqlQuery &query = m_sql->prepared(QStringLiteral(
        "SELECT text, status, time FROM current_data WHERE pid = ? AND item_key = ?"));
    QueryScope scope(query);
    query.addBindValue(pid);
    query.addBindValue(notNull(key));
    m_sql->exec(query);
    if (!query.next()) {
        return std::nullopt;
    }
    return DataItem{query.value(0).toString(), query.value(1).toInt(),
                    dateTimeFromText(query.value(2).toString())};
}

void SiteStore::setCurrentData(qint32 pid, const QString &key, const QString &text, int status)
{
    QSqlQuery &query = m_sql->prepared(QStringLiteral(
        "INSERT INTO current_data (pid, item_key, text, status, time) VALUES (?, ?, ?, ?, ?)"
        " ON CONFLICT (pid, item_key) DO UPDATE SET text = excluded.text,"
        " status = excluded.status, time = excluded.time"));
    query.addBindValue(pid);
    query.addBindValue(notNull(key));
    query.addBindValue(notNull(text));
    query.addBindValue(status);
    query.addBindValue(dateTimeText(QDateTime::currentDateTime()));
    m_sql->exec(query);
}

void SiteStore::logMessage(int severity, const QString &text, const Actor &who)
{
    QSqlQuery &query = m_sql->prepared(
        QStringLiteral("INSERT INTO message_log (logged_ms, severity, text, user_name, client_name)"
                       " VALUES (?, ?, ?, ?, ?)"));
    query.addBindValue(QDateTime::currentMSecsSinceEpoch());
    query.addBindValue(severity);
    query.addBindValue(notNull(text));
    query.addBindValue(notNull(who.userName));
    query.addBindValue(notNull(who.clientName));
    m_sql->exec(query);
}

void SiteStore::logMessages(const QList<std::pair<int, QString>> &lines, const Actor &who)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    insertRows(*m_sql,
               QStringLiteral(
                   "INSERT INTO message_log (logged_ms, severity, text, user_name, client_name)"),
               5, lines.size(), [&](QSqlQuery &query, qsizetype i) {
                   query.addBindValue(now);
                   query.addBindValue(lines[i].first);
                   query.addBindValue(notNull(lines[i].second));
                   query.addBindValue(notNull(who.userName));
                   query.addBindValue(notNull(who.clientName));
               });
}

} // namespace olvex
