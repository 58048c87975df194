#include "importexport/importexporttexts.h"

#include "common/pid.h"
#include "common/text.h"

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

QString previewReport(const QString &fileName, const ImportCounts &counts,
                      const ImportPreview &preview, const QString &errorText)
{
    QString text = QStringLiteral("Preview of '") + fileName
                   + QStringLiteral("': nothing has been changed.") + kNewlineText;
    text += kNewlineText + QString::number(preview.changes.size())
            + QStringLiteral(" settings would change:") + kNewlineText;
    for (const ImportChange &c : preview.changes) {
        text += QStringLiteral("  line ") + QString::number(c.lineNumber) + QStringLiteral(": ")
                + FormatPid(c.pid) + QStringLiteral(" ") + c.name + QStringLiteral(": '")
                + c.currentText + QStringLiteral("' -> '") + c.fileText + QStringLiteral("'")
                + kNewlineText;
    }
    text += kNewlineText + QString::number(preview.refusals.size())
            + QStringLiteral(" lines would be refused:") + kNewlineText;
    for (const ImportRefusal &r : preview.refusals) {
        text += QStringLiteral("  line ") + QString::number(r.lineNumber) + QStringLiteral(": ")
                + r.reason + QStringLiteral("  ") + r.line + kNewlineText;
    }
    return text + kNewlineText + QStringLiteral("If the file were imported:") + kNewlineText
           + importSummary(fileName, counts, errorText);
}

} // namespace olvex::importexporttexts
