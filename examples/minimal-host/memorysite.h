#pragma once

// The host objects of a site held in memory: every interface a component's Setup takes,
// implemented in the few lines a host program needs. A real host reads its site from a database
// or from the data acquisition system; the components cannot tell the difference.

#include "common/host.h"

#include <QHash>
#include <QList>

#include <memory>

class MemoryParameter : public olvex::Parameter
{
public:
    MemoryParameter(qint32 pid, QString name, int type, olvex::Value value = {});

    QString GetName(int) const override { return m_name; }
    int ParameterType() const override { return m_type; }
    qint32 PidNumber() const override { return m_pid; }
    olvex::Value GetAttribute(int number) const override;
    void SetAttribute(int number, const olvex::Value &value) override;
    olvex::CurrentValue GetCurrentValue() const override;
    void SetValues(int mode, const olvex::Value &value) override;
    bool InError() const override { return false; }
    QString UnitName() const override { return QStringLiteral("Unit 1"); }

private:
    qint32 m_pid;
    QString m_name;
    int m_type;
    olvex::Value m_value;
    QHash<int, olvex::Value> m_attributes;
};

// The data interface with its directory, units, user and record writer. Posted command records
// are kept in memory (a real host hands them to its data acquisition service).
class MemorySite : public olvex::DataInterface,
                   public olvex::PidDirectory,
                   public olvex::UnitsLookup,
                   public olvex::User,
                   public olvex::MessageRecords,
                   public olvex::ClockLibrary,
                   public olvex::CurrentDataReader,
                   public std::enable_shared_from_this<MemorySite>
{
public:
    std::shared_ptr<MemoryParameter> add(qint32 pid, const QString &name, int type,
                                         const olvex::Value &value = {});
    void setUnits(qint32 pid, const QString &units) { m_units.insert(pid, units); }
    // kind: 1 a channel of the plant's I/O system (see DataInterface::GetChannelKind).
    void addChannel(int channel, int kind) { m_channels.insert(channel, kind); }
    QStringList postedRecords() const { return m_posted; }

    // DataInterface
    QString ClientName() const override { return QStringLiteral("minimal-host"); }
    QString ClientAddress() const override { return QStringLiteral("127.0.0.1"); }
    olvex::ConnectionDescription ConnectionSettings() const override;
    std::shared_ptr<olvex::ClockLibrary> Clock() override { return shared_from_this(); }
    QString GetSiteId() const override { return QStringLiteral("MEMORY-SITE"); }
    olvex::ParameterList GetPidsOfTypes(const QList<int> &types) override;
    std::shared_ptr<olvex::PidDirectory> GetPidDirectory() override { return shared_from_this(); }
    std::shared_ptr<olvex::UnitsLookup> GetUnitsLookup() override { return shared_from_this(); }
    std::shared_ptr<olvex::User> GetUser() override { return shared_from_this(); }
    std::shared_ptr<olvex::MessageRecords> GetMessageRecords() override
    {
        return shared_from_this();
    }
    int GetChannelKind(int channel) override { return m_channels.value(channel, 0); }
    std::shared_ptr<olvex::MessageLog> MessageLog() override { return nullptr; }
    bool AlternativeState() const override { return false; }

    // PidDirectory
    bool PidExists(qint32 pid) const override { return m_parameters.contains(pid); }
    olvex::ParameterPtr GetPid(qint32 pid, bool definition) const override;

    // UnitsLookup, User
    QString UnitsText(qint32 pid) const override;
    QString UserName() const override { return QStringLiteral("operator"); }
    bool HasPrivilege(int) const override { return true; }

    // MessageRecords
    void PostMessageRecord(QString &errorText, const QString &siteId, const QString &recordType,
                           const QString &text, const QString &, const QString &,
                           const QString &sourceCode, bool &ok) override;

    // ClockLibrary: intervals over QTimer, on the user-interface thread.
    QDateTime Now() const override { return QDateTime::currentDateTime(); }
    olvex::IntervalPtr CreateInterval(const olvex::IntervalSpec &spec) override;

    // CurrentDataReader: the realtime data of a calibration parameter is its record, as the
    // data acquisition service last wrote it.
    std::shared_ptr<olvex::CurrentDataItem> GetCurrentDataItem(qint32 pid,
                                                               const QString &key) override;

private:
    QList<qint32> m_order;
    QHash<qint32, std::shared_ptr<MemoryParameter>> m_parameters;
    QHash<qint32, QString> m_units;
    QHash<int, int> m_channels;
    QStringList m_posted;
};

// Lets every account change every setting; a real host asks its security system.
class OpenSecurity : public olvex::Security
{
public:
    void Initialize(const QString &, const QString &, const QString &, const QString &,
                    const QString &, int) override
    {}
    bool CanChangeSetting(qint32, bool) override { return true; }
};

// A message log on standard error.
class StderrLog : public olvex::MessageLog
{
public:
    void LogMessage(int severity, const QString &text) override;
};

// The demonstration data set: a settings group and an alarm group with their settings, two
// calibration parameters (one waiting for the operator's confirmation) and a gas cylinder.
std::shared_ptr<MemorySite> makeDemoSite();
