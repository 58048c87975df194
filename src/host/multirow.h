#pragma once

#include "host/rowreader.h"
#include "host/sqlconnection.h"

#include <QString>

#include <functional>

namespace olvex {

// Runs "head VALUES (?, ...), (?, ...) tail" for count rows of columns values each, many rows a
// statement. The statements come in a few fixed sizes, so each stays prepared on the connection
// whatever the count; bindRow(rows, i) binds row i's values in order. On SQLite the values go
// through SQLite's own interface: Qt's binding costs more per value than SQLite's insert.
//     insertRows(sql, QStringLiteral("INSERT INTO t (a, b)"), 2, rows.size(),
//                [&](RowReader &r, qsizetype i) { r.bind(QVariant(rows[i].a)); ... });
void insertRows(SqlConnection &sql, const QString &head, int columns, qsizetype count,
                const std::function<void(RowReader &, qsizetype)> &bindRow,
                const QString &tail = QString());

} // namespace olvex
