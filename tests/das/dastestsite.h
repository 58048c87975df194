#pragma once

#include "host/sitestore.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

namespace olvex::test {

inline const Actor kOperator{QStringLiteral("operator"), QStringLiteral("WS-7"),
                             QStringLiteral("10.0.0.7")};

// A site of `settings` number settings (readable, changeable, value 0) at the connection text.
// Returns the store; pids receives the settings' PIDs in order.
std::shared_ptr<SiteStore> createServiceSite(const QString &connectionText, int settings,
                                             QList<qint32> *pids);

// Queues writes[i] = value for pid, all in one transaction; returns the ids in order.
QList<qint64> queueWrites(SiteStore &store, const QList<std::pair<qint32, Value>> &writes);

// The first column of the first row.
qint64 scalar(SiteStore &store, const QString &sql);
// How often each new value appears in the audit trail of current values, keyed by its stored
// text.
QHash<QString, int> auditedValues(SiteStore &store);
// The message log's texts, oldest first.
QStringList messageLog(SiteStore &store);

// The path of the olvex-das program of this build.
QString dasProgram();

} // namespace olvex::test
