#pragma once

// olvex-settings export and import: the settings CSV file of a site, through the same headless
// export and import as the panel, printing the panel's own texts.

#include <QStringList>
#include <QTextStream>

namespace olvex::cli {

// export --site SITE [--user USER] FILE
int exportCommand(const QStringList &args, QTextStream &out, QTextStream &err);
// import --site SITE --user USER [--dry-run] FILE
int importCommand(const QStringList &args, QTextStream &out, QTextStream &err);

} // namespace olvex::cli
