#pragma once

#include "common/olvexexport.h"

// The audit trail as the components see it: an optional interface a data interface may also
// implement (a component asks with dynamic_cast and does without when it is absent).

#include "common/value.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <optional>

namespace olvex {

// One change of a parameter: of its current value (attribute nullopt) or of one attribute.
struct OLVEX_CORE_EXPORT AuditEntry
{
    QDateTime when;
    QString userName;
    QString clientName;
    QString clientAddress;
    std::optional<int> attribute;
    Value oldValue;
    Value newValue;
    QString source;
};

class OLVEX_CORE_EXPORT AuditTrail
{
public:
    virtual ~AuditTrail() = default;
    // The changes of pid, newest first, at most maxEntries of them; valuesOnly leaves the
    // attribute changes out.
    virtual QList<AuditEntry> ReadAuditTrail(qint32 pid, bool valuesOnly, int maxEntries) = 0;
};

} // namespace olvex
