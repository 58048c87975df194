#include "host/schema.h"

#include "common/error.h"
#include "host/sqlconnection.h"
#include "host/storeerrors.h"

#include <QSqlQuery>

namespace olvex {

using namespace Qt::StringLiterals;

namespace {

// The columns after the key of the two logs, as version 1 made them (so never edited); version 6
// makes the tables again around another key.
constexpr auto kMessageLogColumns = " logged_ms BIGINT NOT NULL,"
                                    " severity INTEGER NOT NULL,"
                                    " text TEXT NOT NULL,"
                                    " user_name TEXT NOT NULL DEFAULT '',"
                                    " client_name TEXT NOT NULL DEFAULT '')";
constexpr auto kAuditTrailColumns = " changed_ms BIGINT NOT NULL,"
                                    " user_name TEXT NOT NULL DEFAULT '',"
                                    " client_name TEXT NOT NULL DEFAULT '',"
                                    " client_address TEXT NOT NULL DEFAULT '',"
                                    " pid INTEGER NOT NULL,"
                                    " attribute INTEGER,"
                                    " old_vkind SMALLINT NOT NULL,"
                                    " old_val TEXT,"
                                    " new_vkind SMALLINT NOT NULL,"
                                    " new_val TEXT,"
                                    " source TEXT NOT NULL DEFAULT '')";

// Each step brings the schema from the previous version to its own. Steps are never edited
// once released: a site made by an older program must migrate the same way forever.
// %ID% is the backend's auto-numbered key; %WITHOUT_ROWID% clusters SQLite tables on their key;
// %ATTRIBUTE_VALUE% adds an attribute's value to an index where the backend allows it; a
// statement that begins with %SQLITE% runs on SQLite sites only.
const QList<QStringList> &steps()
{
    static const QList<QStringList> all{
        // Version 1: the site.
        {
            QStringLiteral("CREATE TABLE olvex_schema (version INTEGER NOT NULL)"),
            QStringLiteral("CREATE TABLE site ("
                           " id INTEGER PRIMARY KEY CHECK (id = 1),"
                           " site_id TEXT NOT NULL,"
                           " name TEXT NOT NULL,"
                           " export_folder TEXT NOT NULL DEFAULT '',"
                           " alternative_state INTEGER NOT NULL DEFAULT 0,"
                           " revision BIGINT NOT NULL DEFAULT 1,"
                           " created_ms BIGINT NOT NULL)"),
            QStringLiteral("CREATE TABLE plant_units ("
                           " unit_number INTEGER PRIMARY KEY,"
                           " name TEXT NOT NULL)"),
            QStringLiteral("CREATE TABLE parameters ("
                           " pid INTEGER PRIMARY KEY,"
                           " name TEXT NOT NULL,"
                           " ptype INTEGER NOT NULL,"
                           " plant_unit INTEGER REFERENCES plant_units (unit_number),"
                           " units_text TEXT NOT NULL DEFAULT '',"
                           " in_error INTEGER NOT NULL DEFAULT 0)"),
            QStringLiteral("CREATE INDEX parameters_by_type ON parameters (ptype, pid)"),
            QStringLiteral("CREATE TABLE attributes ("
                           " pid INTEGER NOT NULL REFERENCES parameters (pid) ON DELETE CASCADE,"
                           " number INTEGER NOT NULL,"
                           " vkind SMALLINT NOT NULL,"
                           " val TEXT,"
                           " PRIMARY KEY (pid, number))%WITHOUT_ROWID%"),
            QStringLiteral("CREATE TABLE current_values ("
                           " pid INTEGER PRIMARY KEY REFERENCES parameters (pid) ON DELETE CASCADE,"
                           " vkind SMALLINT NOT NULL,"
                           " val TEXT,"
                           " status INTEGER NOT NULL DEFAULT 0,"
                           " time TEXT)"),
            QStringLiteral("CREATE TABLE current_data ("
                           " pid INTEGER NOT NULL REFERENCES parameters (pid) ON DELETE CASCADE,"
                           " item_key TEXT NOT NULL,"
                           " text TEXT NOT NULL DEFAULT '',"
                           " status INTEGER NOT NULL DEFAULT 0,"
                           " time TEXT,"
                           " PRIMARY KEY (pid, item_key))%WITHOUT_ROWID%"),
            QStringLiteral("CREATE TABLE users ("
                           " name TEXT PRIMARY KEY,"
                           " full_name TEXT NOT NULL DEFAULT '',"
                           " all_privileges INTEGER NOT NULL DEFAULT 0)"),
            QStringLiteral("CREATE TABLE user_privileges ("
                           " user_name TEXT NOT NULL REFERENCES users (name) ON DELETE CASCADE,"
                           " privilege INTEGER NOT NULL,"
                           " PRIMARY KEY (user_name, privilege))%WITHOUT_ROWID%"),
            QStringLiteral("CREATE TABLE channels ("
                           " channel INTEGER PRIMARY KEY,"
                           " kind INTEGER NOT NULL,"
                           " name TEXT NOT NULL DEFAULT '',"
                           " vkind SMALLINT NOT NULL DEFAULT 0,"
                           " val TEXT,"
                           " written_ms BIGINT)"),
            QStringLiteral("CREATE TABLE command_records ("
                           " id %ID%,"
                           " site_id TEXT NOT NULL,"
                           " record_type TEXT NOT NULL,"
                           " text TEXT NOT NULL,"
                           " source_code TEXT NOT NULL DEFAULT '',"
                           " user_name TEXT NOT NULL DEFAULT '',"
                           " client_name TEXT NOT NULL DEFAULT '',"
                           " client_address TEXT NOT NULL DEFAULT '',"
                           " posted_ms BIGINT NOT NULL,"
                           " state TEXT NOT NULL DEFAULT 'queued'"
                           "  CHECK (state IN ('queued', 'claimed', 'done', 'failed')),"
                           " claimed_by TEXT,"
                           " claimed_until_ms BIGINT,"
                           " attempts INTEGER NOT NULL DEFAULT 0,"
                           " done_ms BIGINT,"
                           " result TEXT)"),
            QStringLiteral("CREATE TABLE pending_writes ("
                           " id %ID%,"
                           " pid INTEGER NOT NULL REFERENCES parameters (pid) ON DELETE CASCADE,"
                           " vkind SMALLINT NOT NULL,"
                           " val TEXT,"
                           " user_name TEXT NOT NULL DEFAULT '',"
                           " client_name TEXT NOT NULL DEFAULT '',"
                           " client_address TEXT NOT NULL DEFAULT '',"
                           " posted_ms BIGINT NOT NULL,"
                           " state TEXT NOT NULL DEFAULT 'queued'"
                           "  CHECK (state IN ('queued', 'claimed', 'done', 'failed')),"
                           " claimed_by TEXT,"
                           " claimed_until_ms BIGINT,"
                           " attempts INTEGER NOT NULL DEFAULT 0,"
                           " done_ms BIGINT,"
                           " result TEXT)"),
            QStringLiteral("CREATE INDEX pending_writes_by_pid ON pending_writes (pid, state)"),
            u"CREATE TABLE message_log ( id %ID%,"_s + QLatin1StringView(kMessageLogColumns),
            QStringLiteral("CREATE TABLE system_messages ("
                           " id %ID%,"
                           " raised_ms BIGINT NOT NULL,"
                           " msg_type INTEGER NOT NULL,"
                           " pid INTEGER,"
                           " text TEXT NOT NULL,"
                           " user_name TEXT NOT NULL DEFAULT '',"
                           " client_address TEXT NOT NULL DEFAULT '',"
                           " command_id BIGINT)"),
            QStringLiteral("CREATE TABLE autocal_log ("
                           " id %ID%,"
                           " logged_ms BIGINT NOT NULL,"
                           " pid INTEGER NOT NULL,"
                           " text TEXT NOT NULL,"
                           " user_name TEXT NOT NULL DEFAULT '',"
                           " client_address TEXT NOT NULL DEFAULT '')"),
            QStringLiteral("CREATE TABLE cal_checks ("
                           " id %ID%,"
                           " cal_pid INTEGER NOT NULL,"
                           " cylinder_pid INTEGER,"
                           " started TEXT NOT NULL,"
                           " ended TEXT,"
                           " result TEXT NOT NULL DEFAULT '',"
                           " cylinder_id TEXT NOT NULL DEFAULT '',"
                           " expiration_date TEXT,"
                           " vendor_id TEXT NOT NULL DEFAULT '',"
                           " gas_codes TEXT NOT NULL DEFAULT '')"),
            u"CREATE TABLE audit_trail ( id %ID%,"_s + QLatin1StringView(kAuditTrailColumns),
        },
        // Version 2: the service claims the oldest queued item by state, and the audit trail
        // is read per parameter.
        {
            QStringLiteral("CREATE INDEX command_records_by_state ON command_records (state, id)"),
            QStringLiteral("CREATE INDEX pending_writes_by_state ON pending_writes (state, id)"),
            QStringLiteral("CREATE INDEX audit_trail_by_pid ON audit_trail (pid, changed_ms)"),
            QStringLiteral(
                "CREATE INDEX cal_checks_by_cylinder ON cal_checks (cylinder_pid, started)"),
        },
        // Version 3: a bulk read of a list walks each attribute it needs in PID order instead
        // of looking it up once per parameter; SQLite keeps the values in the index too, so the
        // walk never leaves it.
        {
            QStringLiteral("CREATE INDEX attributes_by_number"
                           " ON attributes (number, pid%ATTRIBUTE_VALUE%)"),
        },
        // Version 4: the calibration check runner keeps a running check in cal_checks (ended
        // NULL) with who started it, by hand or not, and whether the unit was online; a channel
        // keeps who wrote it last; the site says how long a calibration check takes.
        {
            QStringLiteral("ALTER TABLE cal_checks ADD COLUMN started_by TEXT NOT NULL DEFAULT ''"),
            QStringLiteral(
                "ALTER TABLE cal_checks ADD COLUMN client_address TEXT NOT NULL DEFAULT ''"),
            QStringLiteral("ALTER TABLE cal_checks ADD COLUMN manual INTEGER NOT NULL DEFAULT 0"),
            QStringLiteral("ALTER TABLE cal_checks ADD COLUMN online INTEGER NOT NULL DEFAULT 1"),
            QStringLiteral("CREATE INDEX cal_checks_by_parameter ON cal_checks (cal_pid, started)"),
            QStringLiteral(
                "CREATE INDEX cal_checks_running ON cal_checks (cal_pid) WHERE ended IS NULL"),
            QStringLiteral("ALTER TABLE channels ADD COLUMN written_by TEXT NOT NULL DEFAULT ''"),
            QStringLiteral(
                "ALTER TABLE channels ADD COLUMN written_client TEXT NOT NULL DEFAULT ''"),
            QStringLiteral(
                "ALTER TABLE site ADD COLUMN cal_check_seconds INTEGER NOT NULL DEFAULT 900"),
        },
        // Version 5: the plant state of each unit, which the service's calibration scheduler
        // follows: online or not, in normal operation or not, operating hours while online.
        {
            QStringLiteral("ALTER TABLE plant_units ADD COLUMN online INTEGER NOT NULL DEFAULT 1"),
            QStringLiteral(
                "ALTER TABLE plant_units ADD COLUMN normal_ops INTEGER NOT NULL DEFAULT 1"),
            QStringLiteral(
                "ALTER TABLE plant_units ADD COLUMN op_hours DOUBLE PRECISION NOT NULL DEFAULT 0"),
        },
        // Version 6: fewer pages written per item the service carries out. The queues index
        // only their unfinished items, so that finishing one takes it out of the index instead
        // of moving it to the finished end; and SQLite numbers the message log and the audit
        // trail, which only ever grow, without a sequence table written at every insert.
        {
            QStringLiteral("DROP INDEX command_records_by_state"),
            QStringLiteral("CREATE INDEX command_records_unfinished ON command_records (state, id)"
                           " WHERE state IN ('queued', 'claimed')"),
            QStringLiteral("DROP INDEX pending_writes_by_state"),
            QStringLiteral("CREATE INDEX pending_writes_unfinished ON pending_writes (state, id)"
                           " WHERE state IN ('queued', 'claimed')"),
            u"%SQLITE%CREATE TABLE message_log_new ( id INTEGER PRIMARY KEY,"_s
                + QLatin1StringView(kMessageLogColumns),
            QStringLiteral("%SQLITE%INSERT INTO message_log_new SELECT * FROM message_log"),
            QStringLiteral("%SQLITE%DROP TABLE message_log"),
            QStringLiteral("%SQLITE%ALTER TABLE message_log_new RENAME TO message_log"),
            u"%SQLITE%CREATE TABLE audit_trail_new ( id INTEGER PRIMARY KEY,"_s
                + QLatin1StringView(kAuditTrailColumns),
            QStringLiteral("%SQLITE%INSERT INTO audit_trail_new SELECT * FROM audit_trail"),
            QStringLiteral("%SQLITE%DROP TABLE audit_trail"),
            QStringLiteral("%SQLITE%ALTER TABLE audit_trail_new RENAME TO audit_trail"),
            QStringLiteral(
                "%SQLITE%CREATE INDEX audit_trail_by_pid ON audit_trail (pid, changed_ms)"),
        },
    };
    return all;
}

QString rewrite(const SqlConnection &connection, const QString &sql)
{
    QString out = connection.dialect(sql);
    out.replace(QStringLiteral("%WITHOUT_ROWID%"),
                connection.isSqlite() ? QStringLiteral(" WITHOUT ROWID") : QString());
    // PostgreSQL refuses index entries over a third of a page, and a value may be that long.
    out.replace(QStringLiteral("%ATTRIBUTE_VALUE%"),
                connection.isSqlite() ? QStringLiteral(", vkind, val") : QString());
    return out;
}

// A statement marked %SQLITE% is for SQLite sites only.
void runStep(SqlConnection &connection, int version)
{
    static const QString sqliteOnly = QStringLiteral("%SQLITE%");
    for (const QString &sql : steps().at(version - 1)) {
        if (!sql.startsWith(sqliteOnly)) {
            connection.execute(rewrite(connection, sql));
        } else if (connection.isSqlite()) {
            connection.execute(rewrite(connection, sql.mid(sqliteOnly.size())));
        }
    }
}

void setVersion(SqlConnection &connection, int version)
{
    QSqlQuery query = connection.prepare(QStringLiteral("UPDATE olvex_schema SET version = ?"));
    query.addBindValue(version);
    connection.exec(query);
}

} // namespace

void createSchema(SqlConnection &connection, int version)
{
    Q_ASSERT(version >= 1 && version <= kSchemaVersion);
    static_assert(kSchemaVersion >= 1);
    Transaction transaction(connection, SqlConnection::TransactionKind::Write);
    for (int v = 1; v <= version; ++v) {
        runStep(connection, v);
    }
    QSqlQuery query
        = connection.prepare(QStringLiteral("INSERT INTO olvex_schema (version) VALUES (?)"));
    query.addBindValue(version);
    connection.exec(query);
    transaction.commit();
}

void migrateSchema(SqlConnection &connection, int fromVersion)
{
    if (int(steps().size()) != kSchemaVersion) {
        throw Error(StoreError::SqlFailed, QStringLiteral("site store: migration steps missing"));
    }
    Transaction transaction(connection, SqlConnection::TransactionKind::Write);
    // Another program may have migrated the site while this one waited for the lock.
    const int current = readSchemaVersion(connection);
    for (int v = std::max(current, fromVersion) + 1; v <= kSchemaVersion; ++v) {
        runStep(connection, v);
    }
    if (current < kSchemaVersion) {
        setVersion(connection, kSchemaVersion);
    }
    transaction.commit();
}

namespace {

// The bulk tables' keys to parameters, as the schema creates them (PostgreSQL's names).
const char *const kBulkKeys[][2] = {
    {"attributes", "attributes_pid_fkey"},
    {"current_values", "current_values_pid_fkey"},
    {"current_data", "current_data_pid_fkey"},
};

} // namespace

void suspendBulkForeignKeys(SqlConnection &connection)
{
    if (connection.isSqlite()) {
        return;
    }
    for (const auto &[table, key] : kBulkKeys) {
        connection.execute(u"ALTER TABLE " + QLatin1StringView(table) + u" DROP CONSTRAINT "
                           + QLatin1StringView(key));
    }
}

void restoreBulkForeignKeys(SqlConnection &connection)
{
    if (connection.isSqlite()) {
        return;
    }
    for (const auto &[table, key] : kBulkKeys) {
        connection.execute(u"ALTER TABLE " + QLatin1StringView(table) + u" ADD CONSTRAINT "
                           + QLatin1StringView(key)
                           + u" FOREIGN KEY (pid) REFERENCES parameters (pid) ON DELETE CASCADE");
    }
}

void dropSchema(SqlConnection &connection)
{
    static const char *const tables[] = {
        "audit_trail",    "cal_checks",      "autocal_log", "system_messages", "message_log",
        "pending_writes", "command_records", "channels",    "user_privileges", "users",
        "current_data",   "current_values",  "attributes",  "parameters",      "plant_units",
        "site",           "olvex_schema",
    };
    for (const char *table : tables) {
        connection.execute(u"DROP TABLE IF EXISTS " + QLatin1StringView(table)
                           + (connection.isSqlite() ? QString() : QStringLiteral(" CASCADE")));
    }
}

int readSchemaVersion(SqlConnection &connection)
{
    const QVariant present = connection.scalar(
        connection.isSqlite()
            ? QStringLiteral("SELECT count(*) FROM sqlite_master"
                             " WHERE type = 'table' AND name = 'olvex_schema'")
            : QStringLiteral(
                "SELECT count(*) FROM pg_catalog.pg_tables"
                " WHERE schemaname = current_schema() AND tablename = 'olvex_schema'"));
    if (present.toInt() == 0) {
        return 0;
    }
    const QVariant version
        = connection.scalar(QStringLiteral("SELECT max(version) FROM olvex_schema"));
    return version.isNull() ? 0 : version.toInt();
}

} // namespace olvex
