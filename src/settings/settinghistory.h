#pragma once

#include "common/olvexexport.h"

#include "common/audittrail.h"
#include "common/host.h"

#include <QList>
#include <QString>

namespace olvex {

// One recorded change of a setting's value as the operator reads it: the values shown as the
// settings list shows them.
struct HistoryLine
{
    QString when;
    QString user;
    QString client; // "name (address)"
    QString oldValue;
    QString newValue;
};

// How many changes the history shows at most.
inline constexpr int kHistoryLimit = 500;

// The lines of entries (newest first, as the trail gives them), values formatted for definition;
// values that do not fit its type are logged to messageLog (may be null) and shown empty.
OLVEX_CORE_EXPORT QList<HistoryLine>
historyLines(const Parameter &definition, const QList<AuditEntry> &entries, MessageLog *messageLog);

} // namespace olvex
