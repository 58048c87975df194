#pragma once

#include "common/olvexexport.h"

// Export of every setting parameter of a site to a settings CSV file, and import of such a file
// back. Headless: the import/export panel and the command line both drive this class, so the
// file format, the checks, the counts and the log lines exist once.

#include "common/host.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>

#include <functional>
#include <memory>

namespace olvex {

struct OLVEX_CORE_EXPORT ExportCounts
{
    int count = 0;             // setting parameters written
    int nullCount = 0;         // of which with a Null value
    bool allNullOrZero = true; // every value Null, empty, "0" or the zero date
    // Settings with a character the file's code page cannot carry (written as '?').
    QList<std::pair<qint32, QString>> lossy = {}; // PID, setting name
};

struct OLVEX_CORE_EXPORT ImportCounts
{
    int total = 0; // lines other than blank and comment lines
    int modified = 0;
    int notModified = 0;
    int parseErrors = 0;
    int configErrors = 0;
    int blanks = 0;
    int readOnly = 0;
    int failures = 0;
    // The file had no byte order mark but held UTF-8 text, and was read as such.
    bool readAsUtf8 = false;
};

// The current value of a setting as the file holds it.
struct OLVEX_CORE_EXPORT SettingValueText
{
    bool isNull = false;
    bool isZeroDate = false;
    QString text;
};

// What an import would do, gathered by a dry run instead of writing.
struct OLVEX_CORE_EXPORT ImportChange
{
    int lineNumber = 0;
    qint32 pid = 0;
    QString name;
    QString currentText;
    QString fileText;
    // Why the data interface would refuse the value: the line would fail.
    QString refusal = {};
    // The recommended range a number lies outside ("0 ... 5"): the change needs a second look.
    QString outsideRange = {};
};
struct OLVEX_CORE_EXPORT ImportRefusal
{
    int lineNumber = 0;
    QString line;
    QString reason; // the coded message the real import logs, without the line
    // A read-only setting or a blank value: the normal lines of the site's own export.
    bool skipped = false;
};
struct OLVEX_CORE_EXPORT ImportPreview
{
    QList<ImportChange> changes;
    QList<ImportRefusal> refusals;
};

// Called now and then with the items done and the items in all (export: settings; import:
// lines of the file). Returning false cancels: an export then leaves no file behind, an import
// stops before the next line and keeps what it changed.
using ProgressHandler = std::function<bool(qint64 done, qint64 total)>;

class OLVEX_CORE_EXPORT SettingsImportExport
{
public:
    // A null message log logs nothing.
    SettingsImportExport(DataInterfacePtr dataInterface, std::shared_ptr<MessageLog> messageLog);

    void setProgressHandler(ProgressHandler handler) { m_progress = std::move(handler); }
    // An import of a file of at least this many lines reads all settings of the site in one
    // batch first instead of looking each PID up on its own.
    void setBatchFromLines(qint64 lines) { m_batchFromLines = lines; }
    // True when the last export or import was stopped by the progress handler.
    bool wasCancelled() const { return m_cancelled; }

    // Writes the file through a temporary file in the same folder that replaces fileName only
    // once it is complete: a failed or cancelled export leaves an existing file as it was.
    bool ExportSettings(const QString &fileName, ExportCounts &counts);

    SettingValueText GetSettingValueText(qint32 pid) const;
    static SettingValueText GetSettingValueText(const Parameter &parameter);

    // With a preview, nothing is written and nothing logged: the preview receives every change
    // the import would make and every line it would refuse, and the counts are those the
    // import would report. A cancelled import succeeds with a note in errorText.
    bool ImportSettings(const QString &fileName, QString &errorText, ImportCounts &counts,
                        ImportPreview *preview = nullptr);
    // The same over the bytes of a file already read.
    bool importFromData(const QByteArray &data, QString &errorText, ImportCounts &counts,
                        ImportPreview *preview = nullptr);
    // Every line the last import (not a preview) did not change as the file asked, in file
    // order, with the reason: refused lines and failed changes.
    const QList<ImportRefusal> &linesNotChanged() const { return m_notChanged; }
    // Why the last export failed: the file's name and the fault, for the operator.
    const QString &exportErrorText() const { return m_exportError; }

    // The site identifier of a first line ";SiteID=...": up to the next blank, trimmed, upper
    // case, without trailing commas.
    static QString GetSiteIdFromLine(const QString &line);

    // Queues newValueText as the setting's new value; false (and the CSET-0078 line logged)
    // when the data interface refuses.
    bool ChangeSetting(qint32 pid, const QString &newValueText);

    // "<folder>/Olvex Settings <site> yyyy-MM-dd HH.mm.csv" in the export folder of the
    // connection description (the user's documents folder when it names none), with the
    // platform's separators.
    static QString proposedExportFileName(const DataInterface &dataInterface, const QDateTime &now);
    // The present time by the data interface's clock.
    QDateTime now() const;

private:
    class Import;

    // why, when given, receives the refusal's coded text.
    bool changeSetting(Parameter &parameter, qint32 pid, const QString &newValueText,
                       QString *why = nullptr);
    bool reportProgress(qint64 done, qint64 total);
    // A cancelled import still succeeds; errorText tells where it stopped.
    static bool cancelledAt(int lastLine, QString &errorText);
    void log(int severity, const QString &text) const;
    // While an import runs, its log lines are held and written in groups (a file of thousands of
    // refused lines would otherwise cost a commit each); they go out before any change, so the
    // log keeps the order of what happened.
    void holdLog(bool hold) const;
    // Ends an import with errorText set to text, logged unless it is a preview: returns false.
    bool failWith(const QString &text, QString &errorText, const ImportPreview *preview) const;
    void flushLog() const;

    DataInterfacePtr m_data;
    std::shared_ptr<MessageLog> m_log;
    ProgressHandler m_progress;
    qint64 m_batchFromLines = 200;
    bool m_cancelled = false;
    QList<ImportRefusal> m_notChanged;
    QString m_exportError;
    mutable bool m_holdingLog = false;
    mutable QList<LogLine> m_heldLog;
};

// How often, in items, the progress handler is called.
inline constexpr int kProgressStep = 256;

} // namespace olvex
