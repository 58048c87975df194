#pragma once

// olvex-settings cylinders and checks: the gas cylinders as the cylinder list shows them, and
// the calibration-check records with the cylinder data each was made with.

#include <QStringList>
#include <QTextStream>

namespace olvex::cli {

// cylinders --site SITE [--list PIDS]
int cylindersCommand(const QStringList &args, QTextStream &out, QTextStream &err);
// checks --site SITE [--cylinder PID]
int checksCommand(const QStringList &args, QTextStream &out, QTextStream &err);

} // namespace olvex::cli
