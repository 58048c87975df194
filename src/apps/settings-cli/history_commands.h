#pragma once

// olvex-settings history: the recorded changes of one setting, as the editor's History dialog
// shows them.

#include <QStringList>
#include <QTextStream>

namespace olvex::cli {

// history --site SITE PID
int historyCommand(const QStringList &args, QTextStream &out, QTextStream &err);

} // namespace olvex::cli
