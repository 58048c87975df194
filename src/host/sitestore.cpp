// Opening and creating a site: the checks that keep a program from touching what is not a site,
// the schema brought up to date, a new site built out of sight and put in place whole.
#include "host/sitestore.h"

#include "common/error.h"
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

} // namespace olvex
