#pragma once

#include "host/commandqueue.h"
#include "host/sitestore.h"

#include <QList>
#include <QString>

#include <memory>

namespace olvex {
class DasService;
}

namespace olvex::test {

inline const Actor kOperator{QStringLiteral("operator"), QStringLiteral("WS-7"),
                             QStringLiteral("10.0.0.7")};

// A site of `settings` number settings (readable, changeable, value 0) at the connection text.
// Returns the store; pids receives the settings' PIDs in order.
std::shared_ptr<SiteStore> createServiceSite(const QString &connectionText, int settings,
                                             QList<qint32> &pids);

// Queues writes[i] = value for pid, all in one transaction; returns the ids in order.
QList<qint64> queueWrites(SiteStore &store, const QList<std::pair<qint32, Value>> &writes);

// Posts a command record as kOperator and lets the service carry out all that is queued; the
// record as it ended.
CommandRecord carryOut(SiteStore &store, DasService &service, const QString &recordType,
                       const QString &text,
                       const QString &sourceCode = QStringLiteral("CSET-0031"));
// The record of that id; an empty one when there is none.
CommandRecord commandRecord(SiteStore &store, qint64 id);
// An element of a calibration's start record, "<missing>" when it has none.
QString calElement(SiteStore &store, qint32 calPid, const QString &name);

// The path of the olvex-das program of this build.
QString dasProgram();

} // namespace olvex::test
