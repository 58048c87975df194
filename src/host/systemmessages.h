#pragma once

#include <QDateTime>
#include <QList>
#include <QString>

namespace olvex {

class SiteStore;

// A line of the system's message list, as a RaiseMsg command asked for it.
struct SystemMessage
{
    qint64 id = 0;
    QDateTime raised;
    quint32 msgType = 0;
    qint32 pid = 0; // 0: the message belongs to no parameter
    QString text;
    QString userName;
    QString clientAddress;
    qint64 commandId = 0; // the command record that raised it; 0: none
};

// Stores one message (in the caller's transaction where there is one).
void raiseSystemMessage(SiteStore &store, const SystemMessage &message);
// The newest `limit` messages, oldest first.
QList<SystemMessage> readSystemMessages(SiteStore &store, int limit = 200);

} // namespace olvex
