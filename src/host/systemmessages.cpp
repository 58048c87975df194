#include "host/systemmessages.h"

#include "host/sitestore.h"
#include "host/storedvalue.h"

#include <QSqlQuery>
#include <QVariant>

#include <algorithm>

namespace olvex {

void raiseSystemMessage(SiteStore &store, const SystemMessage &message)
{
    SqlConnection &sql = store.sql();
    QSqlQuery &query = sql.prepared(QStringLiteral(
        "INSERT INTO system_messages (raised_ms, msg_type, pid, text, user_name, client_address,"
        " command_id) VALUES (?, ?, ?, ?, ?, ?, ?)"));
    query.addBindValue(message.raised.toMSecsSinceEpoch());
    query.addBindValue(qint64(message.msgType));
    query.addBindValue(message.pid == 0 ? QVariant(QMetaType(QMetaType::Int))
                                        : QVariant(message.pid));
    query.addBindValue(notNull(message.text));
    query.addBindValue(notNull(message.userName));
    query.addBindValue(notNull(message.clientAddress));
    query.addBindValue(message.commandId == 0 ? QVariant(QMetaType(QMetaType::LongLong))
                                              : QVariant(message.commandId));
    sql.exec(query);
}

QList<SystemMessage> readSystemMessages(SiteStore &store, int limit)
{
    SqlConnection &sql = store.sql();
    QSqlQuery &query = sql.prepared(QStringLiteral(
        "SELECT id, raised_ms, msg_type, pid, text, user_name, client_address, command_id"
        " FROM system_messages ORDER BY id DESC LIMIT ?"));
    query.addBindValue(limit);
    sql.exec(query);
    QueryScope scope(query);
    QList<SystemMessage> messages;
    while (query.next()) {
        SystemMessage m;
        m.id = query.value(0).toLongLong();
        m.raised = QDateTime::fromMSecsSinceEpoch(query.value(1).toLongLong());
        m.msgType = quint32(query.value(2).toLongLong());
        m.pid = query.value(3).isNull() ? 0 : query.value(3).toInt();
        m.text = query.value(4).toString();
        m.userName = query.value(5).toString();
        m.clientAddress = query.value(6).toString();
        m.commandId = query.value(7).isNull() ? 0 : query.value(7).toLongLong();
        messages.append(m);
    }
    std::reverse(messages.begin(), messages.end());
    return messages;
}

} // namespace olvex
