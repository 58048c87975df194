#pragma once

#include "common/olvexexport.h"

// The operator's texts of the import/export panel, with their placeholders filled. The command
// line prints the same texts, so both say the same thing about the same outcome.

#include "importexport/settingsimportexport.h"

#include <QString>

namespace olvex::importexporttexts {

// What "$newline$" becomes.
inline constexpr char16_t kNewline = u'\n';

OLVEX_CORE_EXPORT QString exportSucceeded(const QString &fileName, const ExportCounts &counts);
OLVEX_CORE_EXPORT QString exportFailed();
OLVEX_CORE_EXPORT QString exportCancelled(const QString &fileName);

OLVEX_CORE_EXPORT QString importSummary(const QString &fileName, const ImportCounts &counts,
                                        const QString &errorText);
OLVEX_CORE_EXPORT QString importFailed(const QString &errorText);
// The error text of an import stopped by an unexpected error: "Cannot import settings. Error n,
// description [CSET-0074]".
OLVEX_CORE_EXPORT QString importError(const QString &errorText);

OLVEX_CORE_EXPORT QString accessDenied(const QString &userName);
// The message log's line for the same refusal.
OLVEX_CORE_EXPORT QString accessDeniedLogLine(const QString &userName);
// Logged when a handler itself fails: "Error n, description [CSET-0057]".
OLVEX_CORE_EXPORT QString handlerFault(const QString &errorText);

// The dry run's findings as plain text: one line per change and per refused line, then the
// summary of the counts.
OLVEX_CORE_EXPORT QString previewReport(const QString &fileName, const ImportCounts &counts,
                                        const ImportPreview &preview, const QString &errorText);

} // namespace olvex::importexporttexts
