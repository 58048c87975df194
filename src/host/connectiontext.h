#pragma once

#include <QString>

namespace olvex {

// Where a site lives, read from its connection text:
// - a file path, or "sqlite:PATH" (also "sqlite:///abs/path"): an SQLite file;
// - a libpq URI, "postgresql://[user[:password]@][host][:port][/dbname][?key=value&...]"
//   ("postgres://" too). The query keys host, port, user, password and dbname override the
//   URI's parts, so "postgresql:///olvex?host=/var/run/postgresql" reaches the local socket;
//   every other key (sslmode, connect_timeout, options, application_name, ...) is passed on
//   to libpq as it stands.
struct ConnectionTarget
{
    enum class Backend { Sqlite, Postgres };

    Backend backend = Backend::Sqlite;
    QString text;     // the connection text as given
    QString filePath; // SQLite: the file
    // PostgreSQL:
    QString host; // a name, an address or a socket directory; empty: libpq's default
    int port = -1;
    QString user;
    QString password;
    QString database;
    // libpq keywords in conninfo form ("key='value'" separated by ";"), for
    // QSqlDatabase::setConnectOptions.
    QString connectOptions;

    bool isSqlite() const { return backend == Backend::Sqlite; }
    // The text to show in messages: the connection text without its password.
    QString displayText() const;
};

// Throws olvex::Error (StoreError::BadConnectionText) with one clear line when the text names
// nothing this program can open.
ConnectionTarget parseConnectionText(const QString &text);

} // namespace olvex
