#include "host/audittrailread.h"

#include "host/rowreader.h"
#include "host/sitestore.h"
#include "host/storedvalue.h"

namespace olvex {

QList<AuditEntry> readAuditTrail(SiteStore &store, qint32 pid, bool valuesOnly, int maxEntries)
{
    RowReader rows(store.sql(),
                   QStringLiteral("SELECT changed_ms, user_name, client_name, client_address,"
                                  " attribute, old_vkind, old_val, new_vkind, new_val, source"
                                  " FROM audit_trail WHERE pid = ?")
                       + (valuesOnly ? QStringLiteral(" AND attribute IS NULL") : QString())
                       + QStringLiteral(" ORDER BY changed_ms DESC, id DESC LIMIT ?"));
    rows.bind(pid);
    rows.bind(qMax(0, maxEntries));
    rows.exec();
    QList<AuditEntry> entries;
    while (rows.next()) {
        AuditEntry entry;
        entry.when = QDateTime::fromMSecsSinceEpoch(rows.integer(0)).toLocalTime();
        entry.userName = rows.text(1);
        entry.clientName = rows.text(2);
        entry.clientAddress = rows.text(3);
        if (!rows.isNull(4)) {
            entry.attribute = int(rows.integer(4));
        }
        entry.oldValue = decodeValue(int(rows.integer(5)), rows.text(6));
        entry.newValue = decodeValue(int(rows.integer(7)), rows.text(8));
        entry.source = rows.text(9);
        entries.append(entry);
    }
    return entries;
}

} // namespace olvex
