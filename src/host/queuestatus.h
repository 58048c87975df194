#pragma once

#include <QDateTime>

#include <optional>

namespace olvex {

class SiteStore;

// What waits for the data acquisition service on a site: queued and claimed items of both
// queues. Tells a window whether some service is at work (a claim whose lease still holds) or
// the items only wait.
struct QueueStatus
{
    int waiting = 0;        // queued or claimed
    int heldClaims = 0;     // claimed, lease not run out
    QDateTime oldestPosted; // of the waiting items; invalid when none waits
};

// Two small queries over the queues' state indexes.
QueueStatus readQueueStatus(SiteStore &store);

} // namespace olvex
