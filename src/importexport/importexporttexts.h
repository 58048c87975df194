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
// The same with the file and the reason below it.
OLVEX_CORE_EXPORT QString exportFailed(const QString &reason);
// The settings whose text lost characters in the file, named one a line; empty when none did.
OLVEX_CORE_EXPORT QString exportLossNote(const ExportCounts &counts);
// Asked before an existing file is replaced.
OLVEX_CORE_EXPORT QString exportReplaceQuestion(const QString &fileName);
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

// How the dry run sorts a line of the file.
enum class PreviewSort { Change, OutsideRange, Fail, Skip };
inline constexpr PreviewSort kPreviewSorts[]
    = {PreviewSort::Fail, PreviewSort::OutsideRange, PreviewSort::Change, PreviewSort::Skip};
OLVEX_CORE_EXPORT PreviewSort sortOf(const ImportChange &change);
OLVEX_CORE_EXPORT PreviewSort sortOf(const ImportRefusal &refusal);
// The heading of a sort with its count: "2 would fail", "1 would change, outside the recommended
// range", ...
OLVEX_CORE_EXPORT QString previewSortHeading(PreviewSort sort, qsizetype count);
// What a change or refused line comes to, in the present tense: "would change", "would change,
// outside the recommended range (0 ... 5)", "would fail: reason", "skipped: reason".
OLVEX_CORE_EXPORT QString previewOutcome(const ImportChange &change);
OLVEX_CORE_EXPORT QString previewOutcome(const ImportRefusal &refusal);
// The counts of a dry run, present tense, one sort a line; nothing has been changed.
OLVEX_CORE_EXPORT QString previewCounts(const QString &fileName, const ImportCounts &counts,
                      const ImportPreview &preview, const QString &errorText);

// The dry run's findings as plain text: the counts, then every line by its sort.
OLVEX_CORE_EXPORT QString previewReport(const QString &fileName, const ImportCounts &counts,
                      const ImportPreview &preview, const QString &errorText);

// One line of the list after an import: "line 7: reason  text of the line".
OLVEX_CORE_EXPORT QString notChangedLine(const ImportRefusal &refusal);
// The summary followed by every line the import did not change as asked: what "Save List"
// writes. The summary and the lines are those the panel shows.
OLVEX_CORE_EXPORT QString importResultReport(const QString &summary, const QList<ImportRefusal> &lines);

} // namespace olvex::importexporttexts
