#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>

#include <charconv>
#include <utility>

namespace olvex {

// A list of numbers bound as one value: one statement text for any length, which stays
// prepared, and no backend's limit on bound values is reached. SQLite reads "[1,2]" as a JSON
// array, PostgreSQL "{1,2}" as an array.
template<class Number>
QString idListText(bool sqlite, const QList<Number> &ids)
{
    // At most twenty characters and a separator per number.
    QByteArray list(ids.size() * 21 + 2, Qt::Uninitialized);
    char *out = list.data();
    *out++ = sqlite ? '[' : '{';
    for (qsizetype i = 0; i < ids.size(); ++i) {
        if (i > 0) {
            *out++ = ',';
        }
        out = std::to_chars(out, list.data() + list.size(), ids[i]).ptr;
    }
    *out++ = sqlite ? ']' : '}';
    list.truncate(out - list.data());
    return QString::fromLatin1(list);
}

// Rewrites the list conditions of a statement for the backend: "column %IN_PIDS%" (or
// %IN_IDS% for 64-bit ids) is the condition that column is one of the bound list, and "%PIDS%"
// a table of the list (column pid) to join, which reads them as they come instead of first
// sorting them into an index.
inline QString withIdList(QString statement, bool sqlite)
{
    statement.replace(QStringLiteral("%IN_PIDS%"),
                      sqlite ? QStringLiteral("IN (SELECT value FROM json_each(?))")
                             : QStringLiteral("= ANY (CAST(? AS integer[]))"));
    statement.replace(QStringLiteral("%IN_IDS%"),
                      sqlite ? QStringLiteral("IN (SELECT value FROM json_each(?))")
                             : QStringLiteral("= ANY (CAST(? AS bigint[]))"));
    statement.replace(QStringLiteral("%PIDS%"),
                      sqlite ? QStringLiteral("(SELECT value AS pid FROM json_each(?))")
                             : QStringLiteral("(SELECT unnest(CAST(? AS integer[])) AS pid)"));
    return statement;
}

// The same for a list whose length the statement may depend on: SQLite copies a JSON list into
// a temporary index before the statement reads a row, which costs more than the rest of a
// one-row statement, so a list of one is compared as one number (bound with idListValue).
inline QString withIdList(QString statement, bool sqlite, qsizetype count)
{
    if (sqlite && count == 1) {
        statement.replace(QStringLiteral("%IN_PIDS%"), QStringLiteral("= ?"));
        statement.replace(QStringLiteral("%IN_IDS%"), QStringLiteral("= ?"));
        statement.replace(QStringLiteral("%PIDS%"), QStringLiteral("(SELECT ? AS pid)"));
    }
    return withIdList(std::move(statement), sqlite);
}

template<class Number>
QVariant idListValue(bool sqlite, const QList<Number> &ids)
{
    if (sqlite && ids.size() == 1) {
        return QVariant::fromValue(qint64(ids.constFirst()));
    }
    return idListText(sqlite, ids);
}

} // namespace olvex
