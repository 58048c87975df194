#pragma once

#include <QStringList>

namespace olvex {

class SqlConnection;

// The site schema, one for SQLite and PostgreSQL, and its forward migrations.
//
// Tables (all times of the queue and the logs are milliseconds since the epoch, UTC; typed
// values are a kind column and a text column, see storedvalue.h):
//   olvex_schema     the schema version (one row); its presence marks a database as a site
//   site             the one site: site id, name, export folder, alternative state, and the
//                    definition revision that every definition change counts up
//   plant_units      the plant's units (number, name) and their state (online, normal operation,
//                    operating hours); a parameter may belong to one
//   parameters       pid, name, parameter type, plant unit, engineering units text, error flag
//   attributes       (pid, number) -> typed value: the definition attributes
//   current_values   pid -> typed value, status, time: the last value the service stored
//   current_data     (pid, key) -> text, status, time: the current-data reader's items ("1m")
//   users            user name, full name, all_privileges flag
//   user_privileges  (user, privilege number)
//   channels         channel number -> kind (1..5), name, typed value last written, by whom
//   command_records  the queue of message records for the service: who, from where, when,
//                    record type, text, source code, state (queued, claimed, done, failed),
//                    claimed by, claimed until (lease), attempts, done at, result
//   pending_writes   value writes waiting for the service (SetValues mode 3), same queue columns
//   message_log      the message log: when, severity, text, user, client
//   system_messages  messages raised through the service (RaiseMsg): type, pid, text, who
//   autocal_log      the automatic calibration log: when, pid, text, user, client address
//   cal_checks       calibration-check records, with the cylinder data they were made with;
//                    a running check has no end yet
//   audit_trail      every value and attribute write: when, who, client, pid, attribute
//                    (NULL for a value), old and new typed value, and the source of the write
inline constexpr int kSchemaVersion = 6;

// Creates the schema of the given version in an empty database (inside the caller's
// transaction); version defaults to the newest. Older versions exist so that the migrations
// can be tested from a real starting point.
void createSchema(SqlConnection &connection, int version = kSchemaVersion);

// Brings a site of an older version to kSchemaVersion, one step at a time, in one transaction.
// The caller has checked that the version is not newer.
void migrateSchema(SqlConnection &connection, int fromVersion);

// PostgreSQL checks a foreign key row by row; filling a new site of a million attributes goes
// several times faster when the keys of the bulk tables are dropped for the fill and added back
// after it (checked in one pass), inside the creating transaction. No-ops on SQLite.
void suspendBulkForeignKeys(SqlConnection &connection);
void restoreBulkForeignKeys(SqlConnection &connection);

// Drops every table of the schema (PostgreSQL, replacing a site in place).
void dropSchema(SqlConnection &connection);

// The schema version of an open database; 0 when it holds no site. Reads only.
int readSchemaVersion(SqlConnection &connection);

} // namespace olvex
