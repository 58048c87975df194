#include "importexport/settingsimportexport.h"

#include "common/error.h"
#include "common/pid.h"
#include "common/text.h"
#include "common/vocabulary.h"
#include "importexport/csvline.h"
#include "importexport/importexporttexts.h"
#include "importexport/settingrules.h"
#include "importexport/windows1252.h"
#include "settings/settingdisplay.h"
#include "settings/settingvaluecheck.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>
#include <vector>

namespace olvex {

namespace {

constexpr int kFileAccessError = 75;

const QString kSiteIdPrefix = QStringLiteral(";SiteID=");

// Blanks only, as the file's own rules have it: a tab is content.
QStringView trimBlanks(QStringView text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text[begin] == u' ')
        ++begin;
    while (end > begin && text[end - 1] == u' ')
        --end;
    return text.mid(begin, end - begin);
}

// A file saved by a spreadsheet as UTF-8 starts with a byte order mark. Without one, a file
// whose bytes beyond ASCII all form valid UTF-8 was written as UTF-8 by some editor: 8-bit text
// with accents almost never does. Anything else is the file's own 8-bit code page.
QString decodeFile(const QByteArray &data, bool &readAsUtf8)
{
    static const QByteArray utf8Bom("\xEF\xBB\xBF");
    readAsUtf8 = false;
    if (data.startsWith(utf8Bom))
        return QString::fromUtf8(QByteArrayView(data).sliced(utf8Bom.size()));
    const bool ascii = std::all_of(data.cbegin(), data.cend(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (!ascii) {
        QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        QString text = utf8(data);
        if (!utf8.hasError()) {
            readAsUtf8 = true;
            return text;
        }
    }
    return fromWindows1252(data);
}

// The recommended range a number lies outside, or empty text.
QString outsideRecommendedRange(const Parameter &setting, const QString &text)
{
    const std::optional<Decimal> number = parseDecimal(text);
    if (!number)
        return {};
    const Value low = setting.GetAttribute(SettingAttr::RecommendedLow);
    const Value high = setting.GetAttribute(SettingAttr::RecommendedHigh);
    const auto beyond = [&](const Value &limit, bool below) {
        const std::optional<Decimal> l = limit.isNumeric() ? limit.toDecimal() : std::nullopt;
        return l && (below ? *number < *l : *number > *l);
    };
    if (beyond(low, true) || beyond(high, false))
        return ValueRangeText(low, high);
    return {};
}

// Walks the lines of a text: CR LF, LF and a lone CR all end a line.
class LineReader
{
public:
    explicit LineReader(const QString &text)
        : m_text(text)
    {}

    bool next(QStringView &line)
    {
        const qsizetype size = m_text.size();
        if (m_pos >= size)
            return false;
        const QChar *data = m_text.constData();
        qsizetype end = m_pos;
        while (end < size && data[end] != u'\n' && data[end] != u'\r')
            ++end;
        line = QStringView(m_text).mid(m_pos, end - m_pos);
        m_pos = end;
        if (m_pos < size && data[m_pos] == u'\r') {
            ++m_pos;
            if (m_pos < size && data[m_pos] == u'\n')
                ++m_pos;
        } else if (m_pos < size) {
            ++m_pos; // LF
        }
        ++m_lineNumber;
        return true;
    }
    int lineNumber() const { return m_lineNumber; }

private:
    const QString &m_text;
    qsizetype m_pos = 0;
    int m_lineNumber = 0;
};

qint64 countLines(const QString &text)
{
    return text.count(u'\n') + (text.endsWith(u'\n') ? 0 : 1);
}

} // namespace

// One run of the import: the counts, the preview and the log lines of the file's lines.
class SettingsImportExport::Import
{
public:
    Import(SettingsImportExport &owner, ImportCounts &counts, ImportPreview *preview)
        : m_owner(owner)
        , m_counts(counts)
        , m_preview(preview)
    {}

    // The site's settings read in one batch: a PID found here is known to exist and to be a
    // setting. Any other PID goes through the directory, with its own checks.
    void setKnownSettings(ParameterList settings)
    {
        m_settings = std::move(settings);
        m_known.reserve(size_t(m_settings.size()));
        for (const ParameterPtr &setting : std::as_const(m_settings))
            m_known.emplace_back(setting->PidNumber(), setting.get());
        if (!std::is_sorted(m_known.cbegin(), m_known.cend(), pidLess))
            std::sort(m_known.begin(), m_known.end(), pidLess);
    }

    void line(int lineNumber, QStringView line, PidDirectory &directory)
    {
        ++m_counts.total;
        // A line without quotes (nearly every line of a file the export wrote) is cut at its
        // commas in place, as ParseCsvLine would cut it; only a quoted one needs the parser.
        QStringView pidText;
        QStringView valueField; // trimmed, quotes stripped
        QString parsedPid;
        QString parsedValue;
        if (!line.contains(u'"')) {
            qsizetype fieldCount = 1;
            qsizetype from = 0;
            for (qsizetype i = 0; i < line.size(); ++i) {
                if (line[i] != u',')
                    continue;
                if (fieldCount == 1)
                    pidText = line.left(i);
                else if (fieldCount == 4)
                    valueField = line.mid(from, i - from);
                ++fieldCount;
                from = i + 1;
            }
            if (fieldCount == 4)
                valueField = line.mid(from);
            valueField = trimBlanks(valueField); // no quotes in the line: none to strip
            if (fieldCount < 4) {
                ++m_counts.blanks;
                skip(lineNumber, line,
                     QStringLiteral("[CSET-0067] Cannot import setting. Line does not contain "
                                    "enough items."));
                return;
            }
        } else {
            QString parseError;
            const auto fields = ParseCsvLine(line.toString(), parseError);
            if (!fields) {
                ++m_counts.parseErrors;
                refuse(lineNumber, line, Severity::Error,
                       QStringLiteral("[CSET-0066] Cannot import setting. Cannot parse line. ")
                           + parseError);
                return;
            }
            if (fields->size() < 4) {
                ++m_counts.blanks;
                skip(lineNumber, line,
                     QStringLiteral("[CSET-0067] Cannot import setting. Line does not contain "
                                    "enough items."));
                return;
            }
            parsedPid = fields->at(0);
            pidText = parsedPid;
            parsedValue = StripQuotes(trimBlanks(fields->at(3)).toString());
            valueField = parsedValue;
        }
        const qint32 pid = ParsePid(pidText, false);
        if (pid == 0) {
            ++m_counts.parseErrors;
            refuse(lineNumber, line, Severity::Error,
                   QStringLiteral("[CSET-0068] Cannot import setting. Cannot parse PID."));
            return;
        }
        const QStringView newText = valueField;
        if (newText.isEmpty()) {
            ++m_counts.blanks;
            skip(lineNumber, line,
                 QStringLiteral("[CSET-0069] Cannot import setting. Value is blank."));
            return;
        }
        Parameter *setting = knownSetting(pid);
        ParameterPtr looked;
        if (!setting && directory.PidExists(pid)) {
            looked = directory.GetPid(pid, true);
            setting = looked.get();
        }
        if (!setting) {
            ++m_counts.configErrors;
            refuse(lineNumber, line, Severity::Error,
                   QStringLiteral("[CSET-0070] Cannot import setting. PID not defined."));
            return;
        }
        if (setting->ParameterType() != ParameterTypes::Setting) {
            ++m_counts.configErrors;
            refuse(lineNumber, line, Severity::Error,
                   QStringLiteral(
                       "[CSET-0071] Cannot import setting. PID is not a Setting parameter."));
            return;
        }
        if (settingrules::isReadOnly(setting->GetAttribute(SettingAttr::Changeable))) {
            ++m_counts.readOnly;
            skip(lineNumber, line, Severity::Error,
                 QStringLiteral("[CSET-0072] Cannot import setting. Setting is read-only."));
            return;
        }
        const SettingValueText current = GetSettingValueText(*setting);
        if (current.text == newText) {
            ++m_counts.notModified;
            return;
        }
        if (m_preview) {
            // Checked as the data interface will check it, so that a value it would refuse
            // shows as a failure before anything is written.
            ImportChange change{lineNumber, pid, setting->GetName(0), current.text,
                                newText.toString()};
            const int dataType
                = int(setting->GetAttribute(SettingAttr::DataType).toInteger().value_or(0));
            change.refusal = valueRefusal(dataType, Value(change.fileText));
            if (!change.refusal.isEmpty())
                ++m_counts.failures;
            else
                ++m_counts.modified;
            if (change.refusal.isEmpty() && dataType == SettingType::Number)
                change.outsideRange = outsideRecommendedRange(*setting, change.fileText);
            m_preview->changes.append(change);
            return;
        }
        QString why;
        if (m_owner.changeSetting(*setting, pid, newText.toString(), &why)) {
            ++m_counts.modified;
        } else {
            ++m_counts.failures;
            m_owner.log(Severity::Error,
                        QStringLiteral("[CSET-0073] Cannot import setting. Attempt to change "
                                       "setting failed.  ")
                            + line.toString());
            m_owner.m_notChanged.append({lineNumber, line.toString(), why});
        }
    }

private:
    using Known = std::pair<qint32, Parameter *>;
    static bool pidLess(const Known &a, const Known &b) { return a.first < b.first; }

    Parameter *knownSetting(qint32 pid)
    {
        // A file the export wrote lists the settings in the site's order: the one after the
        // last found is the likely one.
        if (m_next < m_known.size() && m_known[m_next].first == pid)
            return m_known[m_next++].second;
        const auto at
            = std::lower_bound(m_known.cbegin(), m_known.cend(), Known{pid, nullptr}, pidLess);
        if (at == m_known.cend() || at->first != pid)
            return nullptr;
        m_next = size_t(at - m_known.cbegin()) + 1;
        return at->second;
    }

    void refuse(int lineNumber, QStringView line, int severity, const QString &reason,
                bool skipped = false)
    {
        const ImportRefusal refusal{lineNumber, line.toString(), reason, skipped};
        if (m_preview) {
            m_preview->refusals.append(refusal);
            return;
        }
        m_owner.log(severity, reason + QStringLiteral("  ") + refusal.line);
        m_owner.m_notChanged.append(refusal);
    }
    // A line of the site's own export that carries nothing to import.
    void skip(int lineNumber, QStringView line, int severity, const QString &reason)
    {
        refuse(lineNumber, line, severity, reason, true);
    }
    void skip(int lineNumber, QStringView line, const QString &reason)
    {
        refuse(lineNumber, line, Severity::Note, reason, true);
    }

    SettingsImportExport &m_owner;
    ImportCounts &m_counts;
    ImportPreview *m_preview;
    ParameterList m_settings;
    std::vector<Known> m_known; // ascending by PID
    size_t m_next = 0;
};

QString SettingsImportExport::GetSiteIdFromLine(const QString &line)
{
    if (!line.startsWith(kSiteIdPrefix))
        return {};
    QStringView site = QStringView(line).mid(kSiteIdPrefix.size());
    site = trimBlanks(site);
    const qsizetype blank = site.indexOf(u' ');
    if (blank >= 0)
        site = site.left(blank);
    while (site.endsWith(u','))
        site.chop(1);
    return trimBlanks(site).toString().toUpper();
}

bool SettingsImportExport::cancelledAt(int lastLine, QString &errorText)
{
    errorText = QStringLiteral("Import cancelled after line ") + QString::number(lastLine)
                + QStringLiteral(". Settings changed up to there stay changed; the rest of the "
                                 "file was not imported.");
    return true;
}

bool SettingsImportExport::failWith(const QString &text, QString &errorText,
                                    const ImportPreview *preview) const
{
    errorText = text;
    if (!preview)
        log(Severity::Error, errorText);
    return false;
}

bool SettingsImportExport::ChangeSetting(qint32 pid, const QString &newValueText)
{
    ParameterPtr setting;
    try {
        setting = m_data->GetPidDirectory()->GetPid(pid, true);
        if (!setting)
            throw Error(kInternalError, QStringLiteral("PID has no definition"));
    } catch (...) {
        log(Severity::Error, QStringLiteral("[CSET-0078] ") + currentError().errorText()
                                 + QStringLiteral("; PID=") + FormatPid(pid));
        return false;
    }
    return changeSetting(*setting, pid, newValueText);
}

bool SettingsImportExport::changeSetting(Parameter &parameter, qint32 pid,
                                         const QString &newValueText, QString *why)
{
    try {
        flushLog();
        parameter.SetValues(WriteMode::Queued, Value(QList<Value>{Value(newValueText)}));
        return true;
    } catch (...) {
        const QString reason = QStringLiteral("[CSET-0078] ") + currentError().errorText();
        log(Severity::Error, reason + QStringLiteral("; PID=") + FormatPid(pid));
        if (why)
            *why = reason;
        return false;
    }
}

bool SettingsImportExport::ImportSettings(const QString &fileName, QString &errorText,
                                          ImportCounts &counts, ImportPreview *preview)
{
    counts = ImportCounts{};
    errorText.clear();
    m_cancelled = false;
    if (preview)
        *preview = ImportPreview{};
    QByteArray data;
    try {
        const QFileInfo info(fileName);
        if (fileName.isEmpty() || !info.exists()) {
            errorText = QStringLiteral("Cannot import settings. Cannot find '") + fileName
                        + QStringLiteral("'. [CSET-0062]");
            return false;
        }
        QFile file(fileName);
        if (!file.open(QIODevice::ReadOnly))
            throw Error(kFileAccessError, file.errorString());
        data = file.readAll();
        if (file.error() != QFileDevice::NoError)
            throw Error(kFileAccessError, file.errorString());
    } catch (...) {
        return failWith(importexporttexts::importError(currentError().errorText()), errorText,
                        preview);
    }
    return importFromData(data, errorText, counts, preview);
}

bool SettingsImportExport::importFromData(const QByteArray &data, QString &errorText,
                                          ImportCounts &counts, ImportPreview *preview)
{
    counts = ImportCounts{};
    errorText.clear();
    m_cancelled = false;
    if (preview)
        *preview = ImportPreview{};
    else
        m_notChanged.clear();
    // The lines held while the import runs go out when it ends, however it ends.
    struct LogHold
    {
        const SettingsImportExport &owner;
        explicit LogHold(const SettingsImportExport &o)
            : owner(o)
        {
            owner.holdLog(true);
        }
        ~LogHold()
        {
            owner.holdLog(false);
            try {
                owner.flushLog();
            } catch (...) {
                // A log that fails here has nowhere left to report to.
            }
        }
        LogHold(const LogHold &) = delete;
        LogHold &operator=(const LogHold &) = delete;
    } hold(*this);
    try {
        const QString text = decodeFile(data, counts.readAsUtf8);
        LineReader reader(text);
        QStringView rawLine;
        QString first;
        if (reader.next(rawLine))
            first = trimBlanks(rawLine).toString();
        if (!first.startsWith(kSiteIdPrefix)) {
            errorText = QStringLiteral("Cannot import settings. Cannot find site ID. [CSET-0063] "
                                       "First line in file must start with ;SiteID=");
            return false;
        }
        const QString fileSite = GetSiteIdFromLine(first);
        if (fileSite.isEmpty()) {
            errorText = QStringLiteral("Cannot import settings. Site ID is blank. First line in "
                                       "file must specify the Olvex site ID. [CSET-0064]");
            return false;
        }
        const QString currentSite = m_data->GetSiteId();
        if (fileSite.compare(currentSite, Qt::CaseInsensitive) != 0) {
            errorText = fillPlaceholders(
                QStringLiteral("Cannot import settings. Site ID '$SiteIdInFile$' in file does not "
                               "match the Olvex site ID '$CurrentSiteId$'. [CSET-0065]"),
                {{QStringLiteral("SiteIdInFile"), fileSite},
                 {QStringLiteral("CurrentSiteId"), currentSite}});
            return false;
        }

        const auto directory = m_data->GetPidDirectory();
        if (!directory)
            throw Error(kInternalError, QStringLiteral("The data interface has no PID directory"));
        const qint64 lines = countLines(text);
        Import import(*this, counts, preview);
        // A large file holds most of the site's settings: one batched read of all of them costs
        // far less than a lookup per line. A small file is looked up line by line.
        if (lines >= m_batchFromLines) {
            QList<int> attributes{SettingAttr::Changeable, SettingAttr::DataType};
            if (preview)
                attributes << SettingAttr::RecommendedLow << SettingAttr::RecommendedHigh;
            import.setKnownSettings(
                m_data->GetPidsOfTypesWith({ParameterTypes::Setting}, attributes));
        }
        if (!reportProgress(reader.lineNumber(), lines))
            return cancelledAt(reader.lineNumber(), errorText);
        while (reader.next(rawLine)) {
            if (reader.lineNumber() % kProgressStep == 0
                && !reportProgress(reader.lineNumber(), lines))
                return cancelledAt(reader.lineNumber() - 1, errorText);
            const QStringView line = trimBlanks(rawLine);
            if (line.isEmpty() || line.startsWith(u';'))
                continue;
            import.line(reader.lineNumber(), line, *directory);
        }
        reportProgress(lines, lines);
        flushLog();
        m_cancelled = false; // the work was done; a late cancel changes nothing
        return true;
    } catch (...) {
        return failWith(importexporttexts::importError(currentError().errorText()), errorText,
                        preview);
    }
}

} // namespace olvex
