#include "host/sitestore.h"

#include "common/error.h"
#include "host/attributebatch.h"
#include "host/schema.h"
#include "host/storedvalue.h"
#include "host/storeerrors.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>
#include <QUuid>

#include <cstdio>

namespace olvex {

namespace {

QString siteName(const ConnectionTarget &target)
{
    if (target.isSqlite()) {
        return u'\'' + target.filePath + u'\'';
    }
    return u"database '" + target.displayText() + u'\'';
}

// Whether a file starts like an SQLite database, read without SQLite so that nothing is
// written to a file that turns out to be something else.
bool hasSqliteHeader(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw Error(StoreError::CannotConnect,
                    u"cannot read '" + path + u"': " + file.errorString());
    }
    static const QByteArray magic("SQLite format 3\0", 16);
    return file.read(16) == magic;
}

void checkExistingSqliteFile(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        throw Error(StoreError::NoSite, u"no site at '" + path + u"': no such file");
    }
    if (!info.isFile()) {
        throw Error(StoreError::NotASite, u'\'' + path + u"' is not an Olvex site: not a file");
    }
    if (!hasSqliteHeader(path)) {
        throw Error(StoreError::NotASite,
                    u'\'' + path + u"' is not an Olvex site: not an SQLite database");
    }
}

// The schema version of a connected database, or the refusal to open it.
int checkedVersion(SqlConnection &connection)
{
    int version = 0;
    try {
        version = readSchemaVersion(connection);
    } catch (const Error &error) {
        if (connection.isSqlite()) {
            throw Error(StoreError::NotASite, siteName(connection.target())
                                                  + u" is not an Olvex site: "
                                                  + error.description());
        }
        throw;
    }
    if (version == 0) {
        throw Error(StoreError::NotASite, siteName(connection.target())
                                              + u" is not an Olvex site: it holds no site tables");
    }
    if (version > kSchemaVersion) {
        throw Error(StoreError::NewerSchema,
                    siteName(connection.target()) + u" has site schema version "
                        + QString::number(version) + u", newer than this program's "
                        + QString::number(kSchemaVersion) + u"; use a newer program");
    }
    return version;
}

void setSqlitePragmas(SqlConnection &connection, bool building)
{
    connection.execute(QStringLiteral("PRAGMA journal_mode = WAL"));
    connection.execute(building ? QStringLiteral("PRAGMA synchronous = NORMAL")
                                : QStringLiteral("PRAGMA synchronous = FULL"));
    connection.execute(QStringLiteral("PRAGMA foreign_keys = ON"));
}

void checkSiteId(const QString &siteId)
{
    if (siteId.trimmed().isEmpty()) {
        throw Error(StoreError::InvalidRequest, QStringLiteral("a site needs a site id"));
    }
    for (const QChar c : siteId) {
        if (c.isSpace() || c == u',' || c == u';' || c == u'"') {
            throw Error(StoreError::InvalidRequest,
                        u"site id '" + siteId + u"' may not hold blanks, commas, ';' or quotes");
        }
    }
}

void insertSiteRow(SqlConnection &connection, const SiteInfo &info)
{
    QSqlQuery query = connection.prepare(QStringLiteral(
        "INSERT INTO site (id, site_id, name, export_folder, alternative_state, revision,"
        " created_ms) VALUES (1, ?, ?, ?, ?, 1, ?)"));
    query.addBindValue(notNull(info.siteId));
    query.addBindValue(notNull(info.name));
    query.addBindValue(notNull(info.exportFolder));
    query.addBindValue(info.alternativeState ? 1 : 0);
    query.addBindValue(QDateTime::currentMSecsSinceEpoch());
    connection.exec(query);
}

void removeSqliteFiles(const QString &path)
{
    QFile::remove(path);
    QFile::remove(path + u"-wal");
    QFile::remove(path + u"-shm");
    QFile::remove(path + u"-journal");
}

} // namespace

const Value *ParameterRecord::attribute(int number) const
{
    auto it = std::lower_bound(attributes.cbegin(), attributes.cend(), number,
                               [](const auto &entry, int n) { return entry.first < n; });
    if (it != attributes.cend() && it->first == number) {
        return &it->second;
    }
    return batch ? batch->attribute(batchIndex, number) : nullptr;
}

void ParameterRecord::setAttribute(int number, const Value &value)
{
    auto it = std::lower_bound(attributes.begin(), attributes.end(), number,
                               [](const auto &entry, int n) { return entry.first < n; });
    if (it != attributes.end() && it->first == number) {
        it->second = value;
    } else {
        attributes.insert(it, {number, value});
    }
}

SiteStore::SiteStore(std::unique_ptr<SqlConnection> connection)
    : m_sql(std::move(connection))
{}

SiteStore::~SiteStore() = default;

std::shared_ptr<SiteStore> SiteStore::open(const QString &connectionText)
{
    const ConnectionTarget target = parseConnectionText(connectionText);
    if (target.isSqlite()) {
        checkExistingSqliteFile(target.filePath);
    }
    return openConnection(target);
}

std::shared_ptr<SiteStore> SiteStore::openConnection(const ConnectionTarget &target)
{
    auto connection = std::make_unique<SqlConnection>(target, false);
    const int version = checkedVersion(*connection);
    if (connection->isSqlite()) {
        setSqlitePragmas(*connection, false);
    }
    if (version < kSchemaVersion) {
        migrateSchema(*connection, version);
    }
    std::shared_ptr<SiteStore> store(new SiteStore(std::move(connection)));
    store->m_schemaVersion = kSchemaVersion;
    store->readSite();
    return store;
}

std::shared_ptr<SiteStore> SiteStore::create(const QString &connectionText, const SiteInfo &info,
                                             bool replace,
                                             const std::function<void(SiteStore &)> &fill)
{
    checkSiteId(info.siteId);
    const ConnectionTarget target = parseConnectionText(connectionText);
    if (!target.isSqlite()) {
        auto connection = std::make_unique<SqlConnection>(target, false);
        std::shared_ptr<SiteStore> store(new SiteStore(std::move(connection)));
        SqlConnection &sql = store->sql();
        Transaction transaction(sql, SqlConnection::TransactionKind::Write);
        // One site per schema: wait for anyone else creating one here.
        sql.execute(QStringLiteral("SELECT pg_advisory_xact_lock(hashtext(current_schema()))"));
        const int existing = readSchemaVersion(sql);
        if (existing > kSchemaVersion) {
            checkedVersion(sql); // throws the newer-schema refusal
        }
        if (existing > 0) {
            if (!replace) {
                throw Error(StoreError::SiteExists,
                            u"a site already exists in " + siteName(target));
            }
            dropSchema(sql);
        }
        createSchema(sql);
        insertSiteRow(sql, info);
        store->m_schemaVersion = kSchemaVersion;
        store->m_siteId = info.siteId;
        if (fill) {
            suspendBulkForeignKeys(sql);
            fill(*store);
            restoreBulkForeignKeys(sql);
        }
        transaction.commit();
        store->readSite();
        return store;
    }

    const QString path = target.filePath;
    if (!QFileInfo(path).absoluteDir().exists()) {
        throw Error(StoreError::CannotConnect,
                    u"cannot create a site at '" + path + u"': its folder does not exist");
    }
    if (QFileInfo::exists(path)) {
        checkExistingSqliteFile(path);
        {
            SqlConnection probe(target, false);
            checkedVersion(probe);
        }
        if (!replace) {
            throw Error(StoreError::SiteExists, u"a site already exists at '" + path + u'\'');
        }
    }
    // Built beside the target and renamed into place: a reader never sees half a site, and a
    // failed build leaves the old one as it was.
    const QString building
        = path + u".building-" + QUuid::createUuid().toString(QUuid::Id128).left(8);
    ConnectionTarget buildTarget = target;
    buildTarget.filePath = building;
    try {
        {
            std::shared_ptr<SiteStore> store(
                new SiteStore(std::make_unique<SqlConnection>(buildTarget, true)));
            SqlConnection &sql = store->sql();
            setSqlitePragmas(sql, true);
            Transaction transaction(sql, SqlConnection::TransactionKind::Write);
            createSchema(sql);
            insertSiteRow(sql, info);
            store->m_schemaVersion = kSchemaVersion;
            store->m_siteId = info.siteId;
            if (fill) {
                fill(*store);
            }
            transaction.commit();
            sql.execute(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
        }
        // A leftover log of the old file must not be replayed into the new one.
        QFile::remove(path + u"-wal");
        QFile::remove(path + u"-shm");
        if (std::rename(QFile::encodeName(building).constData(),
                        QFile::encodeName(path).constData())
            != 0) {
            throw Error(StoreError::CannotConnect,
                        u"cannot move the new site into place at '" + path + u'\'');
        }
        QFile::remove(building + u"-wal");
        QFile::remove(building + u"-shm");
    } catch (...) {
        removeSqliteFiles(building);
        throw;
    }
    return open(path);
}

void SiteStore::readSite()
{
    QSqlQuery &query = m_sql->prepared(QStringLiteral("SELECT site_id FROM site WHERE id = 1"));
    QueryScope scope(query);
    m_sql->exec(query);
    if (!query.next()) {
        throw Error(StoreError::NotASite,
                    siteName(target()) + u" is not an Olvex site: its site row is missing");
    }
    m_siteId = query.value(0).toString();
}

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

} // namespace olvex
