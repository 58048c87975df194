#pragma once

// The operator's texts of the import/export panel, with their placeholders filled. The command
// line prints the same texts, so both say the same thing about the same outcome.

#include "importexport/settingsimportexport.h"

#include <QString>

namespace olvex::importexporttexts {

// What "$newline$" becomes.
inline constexpr char16_t kNewline = u'\n';

QString exportSucceeded(const QString &fileName, const ExportCounts &counts);
QString exportFailed();
// The same with the file and the reason below it.
QString exportFailed(const QString &reason);
// The settings whose text lost characters in the file, named one a line; empty when none did.
QString exportLossNote(const ExportCounts &counts);
// Asked before an existing file is replaced.
QString exportReplaceQuestion(const QString &fileName);
QString exportCancelled(const QString &fileName);

QString importSummary(const QString &fileName, const ImportCounts &counts,
                      const QString &errorText);
QString importFailed(const QString &errorText);
// The error text of an import stopped by an unexpected error: "Cannot import settings. Error n,
// description [CSET-0074]".
QString importError(const QString &errorText);

QString accessDenied(const QString &userName);
// The message log's line for the same refusal.
QString accessDeniedLogLine(const QString &userName);
// Logged when a handler itself fails: "Error n, description [CSET-0057]".
QString handlerFault(const QString &errorText);

// How the dry run sorts a line of the file.
enum class PreviewSort { Change, OutsideRange, Fail, Skip };
inline constexpr PreviewSort kPreviewSorts[]
    = {PreviewSort::Fail, PreviewSort::OutsideRange, PreviewSort::Change, PreviewSort::Skip};
PreviewSort sortOf(const ImportChange &change);
PreviewSort sortOf(const ImportRefusal &refusal);
// The heading of a sort with its count: "2 would fail", "1 would change, outside the recommended
// range", ...
QString previewSortHeading(PreviewSort sort, qsizetype count);
// What a change or refused line comes to, in the present tense: "would change", "would change,
// outside the recommended range (0 ... 5)", "would fail: reason", "skipped: reason".
QString previewOutcome(const ImportChange &change);
QString previewOutcome(const ImportRefusal &refusal);
// The counts of a dry run, present tense, one sort a line; nothing has been changed.
QString previewCounts(const QString &fileName, const ImportCounts &counts,
                      const ImportPreview &preview, const QString &errorText);

// The dry run's findings as plain text: the counts, then every line by its sort.
QString previewReport(const QString &fileName, const ImportCounts &counts,
                      const ImportPreview &preview, const QString &errorText);

// One line of the list after an import: "line 7: reason  text of the line".
QString notChangedLine(const ImportRefusal &refusal);
// The summary followed by every line the import did not change as asked: what "Save List"
// writes. The summary and the lines are those the panel shows.
QString importResultReport(const QString &summary, const QList<ImportRefusal> &lines);

} // namespace olvex::importexporttexts
