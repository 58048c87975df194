#pragma once

#include <QStringList>

namespace olvex {

// olvex-das --site SITE plant [--unit N] start|stop|normal-ops|hours H: sets the plant state
// that the running service's calibration scheduler follows. args are the positional arguments
// after "plant"; unit 0 means every unit. Returns the exit code.
int runPlantCommand(const QString &site, int unit, const QStringList &args);

} // namespace olvex
