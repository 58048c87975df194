#include "host/queuestatus.h"

#include "host/rowreader.h"
#include "host/sitestore.h"

namespace olvex {

QueueStatus readQueueStatus(SiteStore &store)
{
    QueueStatus status;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    std::optional<qint64> oldest;
    for (const char *table : {"pending_writes", "command_records"}) {
        RowReader rows(store.sql(),
                       u"SELECT count(*), min(posted_ms),"
                       u" sum(CASE WHEN state = 'claimed' AND claimed_until_ms > ? THEN 1 ELSE 0"
                       u" END) FROM "
                           + QString::fromLatin1(table) + u" WHERE state IN ('queued', 'claimed')");
        rows.bind(now);
        rows.exec();
        if (!rows.next()) {
            continue;
        }
        status.waiting += int(rows.integer(0));
        if (!rows.isNull(1)) {
            oldest = std::min(oldest.value_or(rows.integer(1)), rows.integer(1));
        }
        status.heldClaims += rows.isNull(2) ? 0 : int(rows.integer(2));
    }
    if (oldest) {
        status.oldestPosted = QDateTime::fromMSecsSinceEpoch(*oldest);
    }
    return status;
}

} // namespace olvex
