#include "importexport/settingsimportexport.h"

#include "common/datetime.h"
#include "common/error.h"
#include "common/pid.h"
#include "importexport/csvline.h"
#include "importexport/settingrules.h"
#include "importexport/windows1252.h"

#include <QDir>
#include <QSaveFile>
#include <QStandardPaths>

namespace olvex {

namespace {

using settingrules::isReadOnly;
using settingrules::kAttrChangeable;
using settingrules::kAttrDataType;
using settingrules::kAttrDefault;

// Value data types that decide how a date value is written.
constexpr int kTypeDate = 2;
constexpr int kTypeTime = 3;
constexpr int kTypeDateTime = 4;

// Error numbers of file faults, in the host system's numbering.
constexpr int kFileAccessError = 75;
constexpr int kDeviceIoError = 57;

// Flush the line buffer to the file past this size.
constexpr qsizetype kWriteChunk = 256 * 1024;

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

QString defaultText(const Value &value)
{
    if (value.isBoolean())
        return value.isTrue() ? QStringLiteral("-1") : QStringLiteral("0");
    return value.toText(); // Null and Empty give empty text
}

[[noreturn]] void throwFileError(const QFileDevice &file, int number)
{
    throw Error(number, file.errorString());
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
        appendWindows1252(m_buffer, line);
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
    if (m_log)
        m_log->LogMessage(severity, text);
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
    switch (parameter.GetAttribute(kAttrDataType).toInteger().value_or(0)) {
    case kTypeDateTime:
        result.text = when.toString(QStringLiteral("yyyy/MM/dd HH:mm:ss"));
        break;
    case kTypeDate:
        result.text = when.toString(QStringLiteral("yyyy/MM/dd"));
        break;
    case kTypeTime:
        result.text = when.toString(QStringLiteral("HH:mm:ss"));
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
    try {
        QSaveFile file(fileName);
        if (!file.open(QIODevice::WriteOnly))
            throwFileError(file, kFileAccessError);
        LineWriter out(file);
        out.writeLine(QString(QStringLiteral(";SiteID=") + m_data->GetSiteId()));
        out.writeLine(QString(QStringLiteral(";Time=")
                              + now().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))));
        out.writeLine(u";PID,UNIT,SETTING,VALUE,DEFAULT");

        const ParameterList settings = m_data->GetPidsOfTypes({ParameterTypes::Setting});
        counts.count = int(settings.size());
        const auto units = m_data->GetUnitsLookup();
        if (!reportProgress(0, counts.count))
            return false;

        QString line;
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

            line.clear();
            line += FormatPid(pid);
            line += u',';
            line += CsvField(oneLine(units ? units->UnitsText(pid) : QString()));
            line += u',';
            line += CsvField(oneLine(setting.GetName(0)));
            line += u',';
            line += CsvField(oneLine(value.text));
            line += u',';
            line += CsvField(oneLine(defaultText(setting.GetAttribute(kAttrDefault))));
            if (isReadOnly(setting.GetAttribute(kAttrChangeable)))
                line += QLatin1String(",Read only");
            out.writeLine(line);
        }
        out.flush();
        if (!reportProgress(counts.count, counts.count))
            return false;
        if (!file.commit())
            throwFileError(file, kDeviceIoError);
        return true;
    } catch (...) {
        const CaughtError error = currentError();
        log(Severity::Error, QStringLiteral("Cannot export settings. ") + error.errorText()
                                 + QStringLiteral(" [CSET-0058]"));
        return false;
    }
}

} // namespace olvex
