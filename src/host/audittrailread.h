#pragma once

#include "common/audittrail.h"

namespace olvex {

class SiteStore;

// The audit rows of pid, newest first (ties: the later row first), at most maxEntries; with
// valuesOnly only the changes of its current value. One query.
QList<AuditEntry> readAuditTrail(SiteStore &store, qint32 pid, bool valuesOnly, int maxEntries);

} // namespace olvex
