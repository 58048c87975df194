#pragma once

#include <QString>

namespace olvex {

// A name for one running service, unique across machines and restarts: "host:pid:random". It is
// what a claim records as its owner, so two services (or one restarted under a recycled process
// id) never mistake each other's claims for their own.
QString makeWorkerId();

} // namespace olvex
