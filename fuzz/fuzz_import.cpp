// ImportSettings over any file content, against an in-memory site of a few settings: number,
// date, text, read-only, a group, a parameter whose write fails. The first byte chooses a real
// import or a dry run. Checks that the counts add up: every counted line is counted once.
#include "common/error.h"
#include "common/host.h"
#include "importexport/settingsimportexport.h"

#include <QHash>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace olvex;

namespace {

class MemoryParameter : public Parameter
{
public:
    MemoryParameter(qint32 pid, int type, int dataType, Value value, bool changeable = true,
                    bool failWrites = false)
        : m_pid(pid)
        , m_type(type)
        , m_dataType(dataType)
        , m_changeable(changeable)
        , m_failWrites(failWrites)
    {
        m_current.Value = std::move(value);
    }
    QString GetName(int) const override { return QStringLiteral("setting"); }
    int ParameterType() const override { return m_type; }
    qint32 PidNumber() const override { return m_pid; }
    Value GetAttribute(int number) const override
    {
        if (number == -14)
            return Value(m_dataType);
        if (number == -10)
            return Value(m_changeable);
        return Value::null();
    }
    void SetAttribute(int, const Value &) override {}
    CurrentValue GetCurrentValue() const override { return m_current; }
    void SetValues(int, const Value &value) override
    {
        if (m_failWrites)
            throw Error(9, QStringLiteral("Write refused"));
        const QList<Value> elements = value.toArray();
        m_current.Value = elements.isEmpty() ? value : elements.constFirst();
    }
    bool InError() const override { return false; }
    QString UnitName() const override { return {}; }

private:
    qint32 m_pid;
    int m_type;
    int m_dataType;
    bool m_changeable;
    bool m_failWrites;
    CurrentValue m_current;
};

class MemoryDirectory : public PidDirectory
{
public:
    QHash<qint32, ParameterPtr> parameters;
    bool PidExists(qint32 pid) const override { return parameters.contains(pid); }
    ParameterPtr GetPid(qint32 pid, bool) const override
    {
        const auto p = parameters.value(pid);
        if (!p)
            throw Error(1001, QStringLiteral("not defined"));
        return p;
    }
};

class MemoryLog : public MessageLog
{
public:
    void LogMessage(int, const QString &) override { ++lines; }
    int lines = 0;
};

class MemorySite : public DataInterface
{
public:
    MemorySite()
        : m_directory(std::make_shared<MemoryDirectory>())
    {
        const QDateTime when(QDate(2024, 5, 6), QTime(7, 8, 9));
        add(std::make_shared<MemoryParameter>(123456789, 4, 1, Value(12.5)));
        add(std::make_shared<MemoryParameter>(100000001, 4, 4, Value(when)));
        add(std::make_shared<MemoryParameter>(100000002, 4, 7, Value("abc")));
        add(std::make_shared<MemoryParameter>(100000003, 4, 7, Value("ro"), false));
        add(std::make_shared<MemoryParameter>(100000004, 5, 0, Value::null()));
        add(std::make_shared<MemoryParameter>(100000005, 4, 1, Value(1), true, true));
        add(std::make_shared<MemoryParameter>(100000006, 4, 5, Value::null()));
    }
    QString ClientName() const override { return QStringLiteral("fuzz"); }
    QString ClientAddress() const override { return QStringLiteral("127.0.0.1"); }
    ConnectionDescription ConnectionSettings() const override { return {}; }
    std::shared_ptr<ClockLibrary> Clock() override { return nullptr; }
    QString GetSiteId() const override { return QStringLiteral("PLANT1"); }
    ParameterList GetPidsOfTypes(const QList<int> &) override
    {
        return m_directory->parameters.values();
    }
    std::shared_ptr<PidDirectory> GetPidDirectory() override { return m_directory; }
    std::shared_ptr<UnitsLookup> GetUnitsLookup() override { return nullptr; }
    std::shared_ptr<User> GetUser() override { return nullptr; }
    std::shared_ptr<MessageRecords> GetMessageRecords() override { return nullptr; }
    int GetChannelKind(int) override { return 0; }
    std::shared_ptr<olvex::MessageLog> MessageLog() override { return nullptr; }
    bool AlternativeState() const override { return false; }

private:
    void add(const std::shared_ptr<MemoryParameter> &p)
    {
        m_directory->parameters.insert(p->PidNumber(), p);
    }
    std::shared_ptr<MemoryDirectory> m_directory;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const bool dryRun = data[0] & 1;
    // Most inputs get a valid site line, so that the fuzzer spends its time on the lines.
    QByteArray file = (data[0] & 2) ? QByteArray(";SiteID=plant1\r\n") : QByteArray();
    file.append(reinterpret_cast<const char *>(data + 1), qsizetype(size - 1));

    auto site = std::make_shared<MemorySite>();
    auto log = std::make_shared<MemoryLog>();
    SettingsImportExport transfer(site, log);
    QString errorText;
    ImportCounts counts;
    ImportPreview preview;
    const bool ok = transfer.importFromData(file, errorText, counts, dryRun ? &preview : nullptr);
    const int sum = counts.modified + counts.notModified + counts.parseErrors + counts.configErrors
                    + counts.blanks + counts.readOnly + counts.failures;
    if (ok && sum != counts.total)
        abort();
    if (!ok && errorText.isEmpty())
        abort();
    if (dryRun && (log->lines != 0 || preview.changes.size() != counts.modified))
        abort();
    return 0;
}
