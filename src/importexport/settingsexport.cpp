#include "importexport/settingsimportexport.h"

#include "common/datetime.h"
#include "common/error.h"
#include "common/pid.h"
#include "common/vocabulary.h"
#include "importexport/csvline.h"
#include "importexport/settingrules.h"
#include "importexport/windows1252.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>
#include <QStandardPaths>

#include <utility>

namespace olvex {

namespace {

using SettingAttr::Changeable;
using SettingAttr::DataType;
using SettingAttr::DefaultValue;
using settingrules::isReadOnly;

// Error numbers of file faults, in the host system's numbering.
constexpr int kFileAccessError = 75;
constexpr int kDeviceIoError = 57;

// Flush the line buffer to the file past this size.
constexpr qsizetype kWriteChunk = 256 * 1024;
// Log lines an import holds at most before it writes them.
constexpr qsizetype kHeldLogLines = 500;

const QString kCrLf = QStringLiteral("\r\n");

// CsvField turns CR LF pairs into a blank; a lone CR or LF would still split the record when
// the file is read back, so those become blanks too before the field is written.
QString oneLine(const QString &text)
{
    if (!text.contains(u'\r') && !text.contains(u'\n'))
        return text;
    QString result = text;
    result.replace(QLatin1String("\r\n"), QStringLiteral(" "));
    result.replace(u'\r', u' ');
    result.replace(u'\n', u' ');
    return result;
}

// The file's text of a default value. A date-time default is written in the locale's named
// formats, which cost far more than the rest of a line; a site's defaults repeat, so each
// distinct one is formatted once per export.
class DefaultTexts
{
public:
    QString text(const Value &value)
    {
        if (value.isBoolean())
            return value.isTrue() ? QStringLiteral("-1") : QStringLiteral("0");
        if (!value.isDateTime())
            return value.toText(); // Null and Empty give empty text
        const QDateTime when = *value.toDateTime();
        // Local and UTC times are told apart by their calendar fields alone; an offset or zone
        // time is formatted each time.
        if (when.timeSpec() != Qt::LocalTime && when.timeSpec() != Qt::UTC)
            return value.toText();
        const Key key{when.date().toJulianDay(), when.time().msecsSinceStartOfDay(),
                      when.timeSpec() == Qt::UTC};
        auto it = m_dates.constFind(key);
        if (it != m_dates.constEnd())
            return *it;
        QString text = value.toText();
        m_dates.insert(key, text);
        return text;
    }

private:
    struct Key
    {
        qint64 day;
        int ms;
        bool utc;
        friend bool operator==(const Key &a, const Key &b)
        {
            return a.day == b.day && a.ms == b.ms && a.utc == b.utc;
        }
        friend size_t qHash(const Key &key, size_t seed = 0)
        {
            return qHashMulti(seed, key.day, key.ms, key.utc);
        }
    };
    QHash<Key, QString> m_dates;
};

[[noreturn]] void throwFileError(const QFileDevice &file, int number)
{
    throw Error(number, file.errorString());
}

void appendDigits(char16_t *&out, int value, int count)
{
    for (int i = count - 1; i >= 0; --i) {
        out[i] = char16_t(u'0' + value % 10);
        value /= 10;
    }
    out += count;
}

// "yyyy/MM/dd", "HH:mm:ss" or both, as QDateTime::toString writes them, digit by digit (the
// locale-aware formatter costs more than the rest of a line); nullopt for a year outside
// 1000-9999, which is left to QDateTime::toString.
std::optional<QString> fixedDateTimeText(const QDateTime &when, bool withDate, bool withTime)
{
    const QDate date = when.date();
    const QTime time = when.time();
    if (withDate && (date.year() < 1000 || date.year() > 9999))
        return std::nullopt;
    char16_t text[19];
    char16_t *out = text;
    if (withDate) {
        appendDigits(out, date.year(), 4);
        *out++ = u'/';
        appendDigits(out, date.month(), 2);
        *out++ = u'/';
        appendDigits(out, date.day(), 2);
    }
    if (withDate && withTime)
        *out++ = u' ';
    if (withTime) {
        appendDigits(out, time.hour(), 2);
        *out++ = u':';
        appendDigits(out, time.minute(), 2);
        *out++ = u':';
        appendDigits(out, time.second(), 2);
    }
    return QString(reinterpret_cast<const QChar *>(text), out - text);
}

class LineWriter
{
public:
    explicit LineWriter(QSaveFile &file)
        : m_file(file)
    {
        m_buffer.reserve(kWriteChunk + 4096);
    }

    void writeLine(QStringView line)
    {
        append(line);
        endLine();
    }
    // text as it stands.
    void append(QStringView text) { appendWindows1252(m_buffer, text); }
    void append(char c) { m_buffer.append(c); }
    // text as one CSV field: CsvField(oneLine(text)). A field of plain ASCII without comma,
    // quote or line break (nearly every field) goes into the buffer as it is. Returns false when
    // the code page could not carry every character.
    bool appendField(const QString &text)
    {
        const qsizetype start = m_buffer.size();
        m_buffer.resize(start + text.size());
        char *dst = m_buffer.data() + start;
        for (const QChar ch : text) {
            const char16_t c = ch.unicode();
            if (c >= 0x80 || c == u',' || c == u'"' || c == u'\r' || c == u'\n') {
                m_buffer.truncate(start);
                appendWindows1252(m_buffer, CsvField(oneLine(text)));
                return fitsWindows1252(text);
            }
            *dst++ = char(c);
        }
        return true;
    }
    void endLine()
    {
        m_buffer.append("\r\n", 2);
        if (m_buffer.size() >= kWriteChunk)
            flush();
    }
    void flush()
    {
        if (m_buffer.isEmpty())
            return;
        if (m_file.write(m_buffer) != m_buffer.size())
            throwFileError(m_file, kDeviceIoError);
        m_buffer.clear();
    }

private:
    QSaveFile &m_file;
    QByteArray m_buffer;
};

} // namespace

SettingsImportExport::SettingsImportExport(DataInterfacePtr dataInterface,
                                           std::shared_ptr<MessageLog> messageLog)
    : m_data(std::move(dataInterface))
    , m_log(std::move(messageLog))
{}

void SettingsImportExport::log(int severity, const QString &text) const
{
    if (!m_log)
        return;
    if (!m_holdingLog) {
        m_log->LogMessage(severity, text);
        return;
    }
    m_heldLog.append({severity, text});
    if (m_heldLog.size() >= kHeldLogLines)
        flushLog();
}

void SettingsImportExport::holdLog(bool hold) const
{
    m_holdingLog = hold;
}

void SettingsImportExport::flushLog() const
{
    if (m_log && !m_heldLog.isEmpty())
        m_log->LogMessages(std::exchange(m_heldLog, {}));
}

bool SettingsImportExport::reportProgress(qint64 done, qint64 total)
{
    if (m_progress && !m_progress(done, total))
        m_cancelled = true;
    return !m_cancelled;
}

QDateTime SettingsImportExport::now() const
{
    const auto clock = m_data->Clock();
    return clock ? clock->Now() : Now();
}

QString SettingsImportExport::proposedExportFileName(const DataInterface &dataInterface,
                                                     const QDateTime &now)
{
    QString folder = dataInterface.ConnectionSettings().ExportFolder;
    if (folder.trimmed().isEmpty())
        folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    QString site = dataInterface.GetSiteId();
    // A site identifier is free text; keep it from naming another folder.
    for (QChar &c : site) {
        if (QStringLiteral("/\\:*?\"<>|").contains(c))
            c = u'_';
    }
    const QString name = QStringLiteral("Olvex Settings ") + site + u' '
                         + now.toString(QStringLiteral("yyyy-MM-dd HH.mm"))
                         + QStringLiteral(".csv");
    return QDir::toNativeSeparators(QDir(QDir::fromNativeSeparators(folder)).filePath(name));
}

SettingValueText SettingsImportExport::GetSettingValueText(qint32 pid) const
{
    const auto parameter = m_data->GetPidDirectory()->GetPid(pid, true);
    if (!parameter)
        throw Error(kInternalError,
                    QStringLiteral("PID ") + FormatPid(pid) + QStringLiteral(" has no definition"));
    return GetSettingValueText(*parameter);
}

SettingValueText SettingsImportExport::GetSettingValueText(const Parameter &parameter)
{
    SettingValueText result;
    const Value value = parameter.GetCurrentValue().Value;
    if (value.isNull()) {
        result.isNull = true;
        return result;
    }
    if (!value.isDateTime()) {
        result.text = value.toText();
        return result;
    }
    const QDateTime when = *value.toDateTime();
    result.isZeroDate = isZeroDate(when);
    std::optional<QString> fixed;
    switch (parameter.GetAttribute(SettingAttr::DataType).toInteger().value_or(0)) {
    case SettingType::DateTime:
        fixed = fixedDateTimeText(when, true, true);
        result.text = fixed ? *fixed : when.toString(QStringLiteral("yyyy/MM/dd HH:mm:ss"));
        break;
    case SettingType::Date:
        fixed = fixedDateTimeText(when, true, false);
        result.text = fixed ? *fixed : when.toString(QStringLiteral("yyyy/MM/dd"));
        break;
    case SettingType::Time:
        fixed = fixedDateTimeText(when, false, true);
        result.text = fixed ? *fixed : when.toString(QStringLiteral("HH:mm:ss"));
        break;
    default:
        result.text = value.toText();
        break;
    }
    return result;
}

bool SettingsImportExport::ExportSettings(const QString &fileName, ExportCounts &counts)
{
    counts = ExportCounts{};
    m_cancelled = false;
    m_exportError.clear();
    try {
        // The export folder of a fresh workstation does not exist until the first export.
        const QString folder = QFileInfo(fileName).absolutePath();
        if (!QDir().mkpath(folder))
            throw Error(kFileAccessError, QStringLiteral("Cannot create the folder '")
                                              + QDir::toNativeSeparators(folder)
                                              + QStringLiteral("'"));
        QSaveFile file(fileName);
        if (!file.open(QIODevice::WriteOnly))
            throwFileError(file, kFileAccessError);
        LineWriter out(file);
        out.writeLine(QString(QStringLiteral(";SiteID=") + m_data->GetSiteId()));
        out.writeLine(QString(QStringLiteral(";Time=")
                              + now().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))));
        out.writeLine(u";PID,UNIT,SETTING,VALUE,DEFAULT");

        const ParameterList settings = m_data->GetPidsOfTypesWith(
            {ParameterTypes::Setting},
            {SettingAttr::DefaultValue, SettingAttr::DataType, SettingAttr::Changeable});
        counts.count = int(settings.size());
        const auto units = m_data->GetUnitsLookup();
        if (!reportProgress(0, counts.count))
            return false;

        DefaultTexts defaults;
        for (qsizetype i = 0; i < settings.size(); ++i) {
            if (i > 0 && i % kProgressStep == 0 && !reportProgress(i, counts.count))
                return false; // the temporary file goes with `file`
            const Parameter &setting = *settings.at(i);
            const qint32 pid = setting.PidNumber();
            const SettingValueText value = GetSettingValueText(setting);
            if (value.isNull)
                ++counts.nullCount;
            if (counts.allNullOrZero && value.text != u"0" && !value.text.isEmpty()
                && !value.isZeroDate)
                counts.allNullOrZero = false;

            char16_t pidText[kFormattedPidSize];
            out.append(QStringView(pidText, formatPidInto(pid, pidText)));
            out.append(',');
            bool carried = out.appendField(units ? units->UnitsText(pid) : QString());
            out.append(',');
            const QString name = setting.GetName(0);
            carried &= out.appendField(name);
            out.append(',');
            carried &= out.appendField(value.text);
            out.append(',');
            carried
                &= out.appendField(defaults.text(setting.GetAttribute(SettingAttr::DefaultValue)));
            if (!carried)
                counts.lossy.append({pid, name});
            if (isReadOnly(setting.GetAttribute(SettingAttr::Changeable)))
                out.append(QStringView(u",Read only"));
            out.endLine();
        }
        out.flush();
        if (!reportProgress(counts.count, counts.count))
            return false;
        if (!file.commit())
            throwFileError(file, kDeviceIoError);
        return true;
    } catch (...) {
        const CaughtError error = currentError();
        m_exportError = u'\'' + fileName + QStringLiteral("': ") + error.description;
        log(Severity::Error, QStringLiteral("Cannot export settings. ") + error.errorText()
                                 + QStringLiteral(" [CSET-0058]"));
        return false;
    }
}

} // namespace olvex
