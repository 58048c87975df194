#pragma once

#include "host/sqlconnection.h"

#include <QString>

#include <functional>

namespace olvex {

// Runs "head VALUES (?, ...), (?, ...) tail" for count rows of columns values each, many rows a
// statement. The statements come in a few fixed sizes, so each stays prepared on the connection
// whatever the count; bindRow(query, i) binds row i's values in order.
//     insertRows(sql, QStringLiteral("INSERT INTO t (a, b)"), 2, rows.size(),
//                [&](QSqlQuery &q, qsizetype i) { q.addBindValue(rows[i].a); ... });
void insertRows(SqlConnection &sql, const QString &head, int columns, qsizetype count,
                const std::function<void(QSqlQuery &, qsizetype)> &bindRow,
                const QString &tail = QString());

} // namespace olvex
