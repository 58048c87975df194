#pragma once

#include <QStringList>
#include <QTextStream>

namespace olvex::cli {

// olvex-settings messages: the raised system messages, oldest first.
int messagesCommand(const QStringList &args, QTextStream &out, QTextStream &err);
// olvex-settings cal pending: the calibrations that wait for the operator's confirmation.
int calPendingCommand(const QStringList &args, QTextStream &out, QTextStream &err);

} // namespace olvex::cli
