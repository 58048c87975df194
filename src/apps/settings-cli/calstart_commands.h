#pragma once

#include <QStringList>
#include <QTextStream>

namespace olvex::cli {

// cal list|show|set|start|abort: the calibration start settings of the calibration parameters,
// changed and started through the same commands the calibration start control posts.
int calCommand(const QStringList &args, QTextStream &out, QTextStream &err);
// log [--auto-cal]: the site's message log, or its automatic calibration log.
int logCommand(const QStringList &args, QTextStream &out, QTextStream &err);

} // namespace olvex::cli
