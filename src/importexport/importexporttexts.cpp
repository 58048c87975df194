#include "importexport/importexporttexts.h"

#include "common/pid.h"
#include "common/text.h"

#include <algorithm>

namespace olvex::importexporttexts {

namespace {

QString number(int n)
{
    return QString::number(n);
}

const QString kNewlineText = QString(kNewline);

} // namespace

QString exportSucceeded(const QString &fileName, const ExportCounts &counts)
{
    QString text = QStringLiteral("Exported $count$ settings to '$file$'.");
    if (counts.allNullOrZero)
        text += QStringLiteral("$newline$$newline$All settings have a Null or zero value. You may "
                               "need to retry in 30 seconds.");
    else if (counts.nullCount != 0)
        text += QStringLiteral("$newline$$newline$$nullcount$ settings had a Null value. You may "
                               "need to retry in 30 seconds.");
    // The file name goes in last, so that a "$...$" inside it is never taken for a placeholder.
    return fillPlaceholders(text, {{QStringLiteral("count"), number(counts.count)},
                                   {QStringLiteral("nullcount"), number(counts.nullCount)},
                                   {QStringLiteral("newline"), kNewlineText},
                                   {QStringLiteral("file"), fileName}});
}

QString exportFailed()
{
    return QStringLiteral("Failed. [CSET-0056]");
}

QString exportFailed(const QString &reason)
{
    return reason.isEmpty() ? exportFailed() : exportFailed() + kNewlineText + reason;
}

QString exportLossNote(const ExportCounts &counts)
{
    if (counts.lossy.isEmpty())
        return {};
    QString text = QString::number(counts.lossy.size())
                   + QStringLiteral(" settings hold characters that the file's code page "
                                    "(Windows-1252) cannot carry; the file has '?' in their "
                                    "place, and importing it would change these settings:");
    for (const auto &[pid, name] : counts.lossy)
        text += kNewlineText + FormatPid(pid) + u' ' + name;
    return text;
}

QString exportReplaceQuestion(const QString &fileName)
{
    return u'\'' + fileName + QStringLiteral("' already exists. Do you want to replace it?");
}

QString exportCancelled(const QString &fileName)
{
    return QStringLiteral("Export cancelled. '") + fileName
           + QStringLiteral("' was not written; an earlier file of that name is unchanged.");
}

QString importSummary(const QString &fileName, const ImportCounts &counts, const QString &errorText)
{
    QString text = QStringLiteral(
        "Found $totalcount$ settings in '$file$'."
        "$newline$$newline$$modifiedcount$ settings were changed."
        "$newline$$notmodifiedcount$ settings were not changed because the imported value "
        "matches the current value."
        "$newline$");
    if (counts.parseErrors != 0)
        text += QStringLiteral("$newline$$parseerrcount$ lines could not be imported from the "
                               "file due to parse errors.");
    if (counts.blanks != 0)
        text += QStringLiteral("$newline$$blankcount$ blank values were ignored and were not "
                               "imported.");
    if (counts.configErrors != 0)
        text += QStringLiteral("$newline$$configerrcount$ values could not be imported because "
                               "they are inconsistent with the Olvex configuration.");
    if (counts.readOnly != 0)
        text += QStringLiteral("$newline$$readonlycount$ read-only settings could not be "
                               "changed.");
    if (counts.failures != 0)
        text += QStringLiteral("$newline$$failcount$ settings could not be changed; attempts to "
                               "change the settings failed.");
    text = fillPlaceholders(text, {{QStringLiteral("totalcount"), number(counts.total)},
                                   {QStringLiteral("modifiedcount"), number(counts.modified)},
                                   {QStringLiteral("notmodifiedcount"), number(counts.notModified)},
                                   {QStringLiteral("parseerrcount"), number(counts.parseErrors)},
                                   {QStringLiteral("blankcount"), number(counts.blanks)},
                                   {QStringLiteral("configerrcount"), number(counts.configErrors)},
                                   {QStringLiteral("readonlycount"), number(counts.readOnly)},
                                   {QStringLiteral("failcount"), number(counts.failures)},
                                   {QStringLiteral("newline"), kNewlineText},
                                   {QStringLiteral("file"), fileName}});
    // The error text is added after the placeholders are filled: it is the system's own text
    // and may quote a file line holding anything.
    if (!errorText.isEmpty())
        text += kNewlineText + errorText;
    if (counts.readAsUtf8)
        text += kNewlineText + kNewlineText
                + QStringLiteral("The file has no byte order mark but holds UTF-8 text; it was "
                                 "read as UTF-8.");
    return text;
}

QString importFailed(const QString &errorText)
{
    return QStringLiteral("Failed. [CSET-0060] ") + errorText;
}

QString importError(const QString &errorText)
{
    return QStringLiteral("Cannot import settings. ") + errorText + QStringLiteral(" [CSET-0074]");
}

QString accessDenied(const QString &userName)
{
    return fillPlaceholders(
        QStringLiteral("Access denied. Account '$username$' does not have privileges."),
        {{QStringLiteral("username"), userName}});
}

QString accessDeniedLogLine(const QString &userName)
{
    return QStringLiteral("[CSET-0059] Account '") + userName
           + QStringLiteral("' does not have privileges.");
}

QString handlerFault(const QString &errorText)
{
    return errorText + QStringLiteral(" [CSET-0057]");
}

PreviewSort sortOf(const ImportChange &change)
{
    if (!change.refusal.isEmpty())
        return PreviewSort::Fail;
    return change.outsideRange.isEmpty() ? PreviewSort::Change : PreviewSort::OutsideRange;
}

PreviewSort sortOf(const ImportRefusal &refusal)
{
    return refusal.skipped ? PreviewSort::Skip : PreviewSort::Fail;
}

QString previewSortHeading(PreviewSort sort, qsizetype count)
{
    const QString n = QString::number(count);
    switch (sort) {
    case PreviewSort::Change:
        return n + QStringLiteral(" would change");
    case PreviewSort::OutsideRange:
        return n + QStringLiteral(" would change, outside the recommended range");
    case PreviewSort::Fail:
        return n + QStringLiteral(" would fail");
    case PreviewSort::Skip:
        return n + QStringLiteral(" skipped (read-only or blank, as in the site's own export)");
    }
    return n;
}

QString previewOutcome(const ImportChange &change)
{
    switch (sortOf(change)) {
    case PreviewSort::Fail:
        return QStringLiteral("would fail: ") + change.refusal;
    case PreviewSort::OutsideRange:
        return QStringLiteral("would change, outside the recommended range (") + change.outsideRange
               + u')';
    default:
        return QStringLiteral("would change");
    }
}

QString previewOutcome(const ImportRefusal &refusal)
{
    return (refusal.skipped ? QStringLiteral("skipped: ") : QStringLiteral("would fail: "))
           + refusal.reason;
}

namespace {

qsizetype countOf(const ImportPreview &preview, PreviewSort sort)
{
    return std::count_if(preview.changes.cbegin(), preview.changes.cend(),
                         [sort](const ImportChange &c) { return sortOf(c) == sort; })
           + std::count_if(preview.refusals.cbegin(), preview.refusals.cend(),
                           [sort](const ImportRefusal &r) { return sortOf(r) == sort; });
}

} // namespace

QString previewCounts(const QString &fileName, const ImportCounts &counts,
                      const ImportPreview &preview, const QString &errorText)
{
    QString text = QStringLiteral("Preview of '") + fileName
                   + QStringLiteral("': nothing has been changed. Of its ")
                   + QString::number(counts.total) + QStringLiteral(" settings:");
    for (const PreviewSort sort : kPreviewSorts)
        text += kNewlineText + previewSortHeading(sort, countOf(preview, sort));
    text += kNewlineText + QString::number(counts.notModified)
            + QStringLiteral(" already match the current value");
    if (counts.readAsUtf8)
        text += kNewlineText
                + QStringLiteral("The file has no byte order mark but holds UTF-8 text; it is "
                                 "read as UTF-8.");
    if (!errorText.isEmpty())
        text += kNewlineText + errorText;
    return text;
}

QString previewReport(const QString &fileName, const ImportCounts &counts,
                      const ImportPreview &preview, const QString &errorText)
{
    QString text = previewCounts(fileName, counts, preview, errorText) + kNewlineText;
    for (const PreviewSort sort : kPreviewSorts) {
        if (countOf(preview, sort) == 0)
            continue;
        text += kNewlineText + previewSortHeading(sort, countOf(preview, sort)) + u':'
                + kNewlineText;
        for (const ImportChange &c : preview.changes) {
            if (sortOf(c) != sort)
                continue;
            text += QStringLiteral("  line ") + QString::number(c.lineNumber) + QStringLiteral(": ")
                    + FormatPid(c.pid) + u' ' + c.name + QStringLiteral(": '") + c.currentText
                    + QStringLiteral("' -> '") + c.fileText + u'\'';
            if (sort != PreviewSort::Change)
                text += QStringLiteral(": ") + previewOutcome(c);
            text += kNewlineText;
        }
        for (const ImportRefusal &r : preview.refusals) {
            if (sortOf(r) == sort)
                text += QStringLiteral("  line ") + QString::number(r.lineNumber)
                        + QStringLiteral(": ") + r.reason + QStringLiteral("  ") + r.line
                        + kNewlineText;
        }
    }
    return text;
}

QString notChangedLine(const ImportRefusal &refusal)
{
    return QStringLiteral("line ") + QString::number(refusal.lineNumber) + QStringLiteral(": ")
           + refusal.reason + QStringLiteral("  ") + refusal.line;
}

QString importResultReport(const QString &summary, const QList<ImportRefusal> &lines)
{
    QString text = summary + kNewlineText + kNewlineText + QString::number(lines.size())
                   + QStringLiteral(" lines were not changed as the file asked:");
    for (const ImportRefusal &r : lines)
        text += kNewlineText + notChangedLine(r);
    return text + kNewlineText;
}

} // namespace olvex::importexporttexts
