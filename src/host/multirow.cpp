#include "host/multirow.h"

namespace olvex {

namespace {

// Largest first; 128 rows of a dozen columns stay well below either backend's limit on bound
// values, and a group of any size needs few statements.
constexpr qsizetype kChunkRows[] = {16, 4, 1};

QString statementText(const QString &head, int columns, qsizetype rows, const QString &tail)
{
    QString row = QStringLiteral("(?");
    for (int c = 1; c < columns; ++c) {
        row += QStringLiteral(", ?");
    }
    row += u')';
    QString text = head + QStringLiteral(" VALUES ") + row;
    text.reserve(text.size() + (row.size() + 2) * rows + tail.size() + 1);
    for (qsizetype r = 1; r < rows; ++r) {
        text += QStringLiteral(", ") + row;
    }
    if (!tail.isEmpty()) {
        text += u' ' + tail;
    }
    return text;
}

} // namespace

void insertRows(SqlConnection &sql, const QString &head, int columns, qsizetype count,
                const std::function<void(QSqlQuery &, qsizetype)> &bindRow, const QString &tail)
{
    qsizetype done = 0;
    for (const qsizetype size : kChunkRows) {
        if (count - done < size) {
            continue;
        }
        QSqlQuery &query = sql.prepared(statementText(head, columns, size, tail));
        while (count - done >= size) {
            for (qsizetype i = 0; i < size; ++i) {
                bindRow(query, done + i);
            }
            sql.exec(query);
            query.finish();
            done += size;
        }
    }
}

} // namespace olvex
