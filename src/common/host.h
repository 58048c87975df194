#pragma once

#include "common/olvexexport.h"

// The host's objects as the components see them. The components acquire no data: they read
// and write only through these interfaces, handed to their Setup as std::shared_ptr. Every
// operation may throw olvex::Error; the components catch it in the handler that called.
//
// Operation names are the host system's own, so the component code reads like its
// description.

#include "common/value.h"
#include "common/vocabulary.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

namespace olvex {

struct OLVEX_CORE_EXPORT LogLine
{
    int severity = 0;
    QString text;

    bool operator==(const LogLine &) const = default;
};

class OLVEX_CORE_EXPORT MessageLog
{
public:
    virtual ~MessageLog() = default;
    virtual void LogMessage(int severity, const QString &text) = 0;
    // Several lines, in their order. A log over a database may store them together (one commit
    // instead of one per line: long runs of refused import lines); this default writes them one
    // by one.
    virtual void LogMessages(const QList<LogLine> &lines)
    {
        for (const LogLine &line : lines) {
            LogMessage(line.severity, line.text);
        }
    }
};

// The value of a parameter as the data acquisition service last stored it.
struct OLVEX_CORE_EXPORT CurrentValue
{
    olvex::Value Value;
    int Status = 0;
    QDateTime Time;
};

// A parameter object: the definition of one PID (setting, group, calibration parameter,
// cylinder, ...) with its current value.
class OLVEX_CORE_EXPORT Parameter
{
public:
    virtual ~Parameter() = default;
    virtual QString GetName(int form = 0) const = 0;
    virtual int ParameterType() const = 0;
    virtual qint32 PidNumber() const = 0;
    // Null when the attribute is unset.
    virtual Value GetAttribute(int number) const = 0;
    virtual void SetAttribute(int number, const Value &value) = 0;
    virtual CurrentValue GetCurrentValue() const = 0;
    // mode 3 queues a write for the data acquisition service; the setting reads change-pending
    // (attribute -91) until the service has applied it.
    virtual void SetValues(int mode, const Value &value) = 0;
    // The data interface flags the parameter in error.
    virtual bool InError() const = 0;
    // Name of the plant unit the parameter belongs to (empty when it belongs to none).
    virtual QString UnitName() const = 0;
};
using ParameterPtr = std::shared_ptr<Parameter>;
using ParameterList = QList<ParameterPtr>;

class OLVEX_CORE_EXPORT PidDirectory
{
public:
    virtual ~PidDirectory() = default;
    virtual bool PidExists(qint32 pid) const = 0;
    // Throws olvex::Error when the PID has no definition.
    virtual ParameterPtr GetPid(qint32 pid, bool definition = true) const = 0;
    // The parameters of pids, one for each in the same order; null for a PID without
    // definition. A list fill asks for its rows in one call, so that a directory over a
    // database can read them together instead of one round trip per row; the objects still
    // read their current values when asked, never from an earlier call. This default asks one
    // by one.
    virtual ParameterList GetPids(const QList<qint32> &pids) const
    {
        ParameterList parameters;
        parameters.reserve(pids.size());
        for (const qint32 pid : pids) {
            parameters.append(PidExists(pid) ? GetPid(pid, true) : nullptr);
        }
        return parameters;
    }
};

class OLVEX_CORE_EXPORT UnitsLookup
{
public:
    virtual ~UnitsLookup() = default;
    // The engineering unit text of a parameter ("ppm", "lb/hr"); empty when it has none.
    virtual QString UnitsText(qint32 pid) const = 0;
};

class OLVEX_CORE_EXPORT User
{
public:
    virtual ~User() = default;
    virtual QString UserName() const = 0;
    virtual bool HasPrivilege(int privilege) const = 0;
};

// The writer of command and message records for the data acquisition service.
class OLVEX_CORE_EXPORT MessageRecords
{
public:
    virtual ~MessageRecords() = default;
    // Posts one record. errorText receives the writer's error text; ok tells whether the
    // record was written. It reports failure only through those two, never by throwing.
    virtual void PostMessageRecord(QString &errorText, const QString &siteId,
                                   const QString &recordType, const QString &text,
                                   const QString &empty1, const QString &empty2,
                                   const QString &sourceCode, bool &ok)
        = 0;
};

// A timer of the host's clock library. IntervalExpired arrives on the user-interface thread.
// Destroying the object stops it.
class OLVEX_CORE_EXPORT Interval : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    virtual void Stop() = 0;
    // Drops (nullptr) or replaces the log the timer reports its own faults to.
    virtual void SetMessageLog(std::shared_ptr<MessageLog> log) = 0;
    virtual QString Name() const = 0;

Q_SIGNALS:
    void IntervalExpired();
};
using IntervalPtr = std::shared_ptr<Interval>;

// The arguments of CreateInterval, in the clock library's order. Only the period, the first due
// time, the name and repeat have a meaning here; the others are passed through unchanged.
struct OLVEX_CORE_EXPORT IntervalSpec
{
    int periodSeconds = 60;
    int id = 0;
    std::optional<QDateTime> firstDue; // omitted: one period from now
    QString name;
    bool repeat = true;
    bool arg6 = false;
    bool arg7 = true;
    int resolutionMs = 1000;
    int arg9 = 0;
};

class OLVEX_CORE_EXPORT ClockLibrary
{
public:
    virtual ~ClockLibrary() = default;
    virtual QDateTime Now() const = 0;
    virtual IntervalPtr CreateInterval(const IntervalSpec &spec) = 0;
};

// The connection description of the data interface. The four connection texts are passed to
// the security object as they stand.
struct OLVEX_CORE_EXPORT ConnectionDescription
{
    QString DataConnection;
    QString SecondaryDataConnection;
    QString DasConnection;
    QString SecondaryDasConnection;
    QString ExportFolder;
};

// The host's data interface.
class OLVEX_CORE_EXPORT DataInterface : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    virtual QString ClientName() const = 0;
    // The client computer's address, carried in command records.
    virtual QString ClientAddress() const = 0;
    virtual ConnectionDescription ConnectionSettings() const = 0;
    virtual std::shared_ptr<ClockLibrary> Clock() = 0;
    virtual QString GetSiteId() const = 0;
    // All parameters of the given types, in the data interface's order.
    virtual ParameterList GetPidsOfTypes(const QList<int> &types) = 0;
    // The same for a caller that is going to read the attributes numbered `attributes` of
    // every parameter in the list: a data interface over a database may read them together
    // with the list instead of on first use. The objects behave as those of GetPidsOfTypes.
    virtual ParameterList GetPidsOfTypesWith(const QList<int> &types, const QList<int> &attributes)
    {
        Q_UNUSED(attributes);
        return GetPidsOfTypes(types);
    }
    virtual std::shared_ptr<PidDirectory> GetPidDirectory() = 0;
    virtual std::shared_ptr<UnitsLookup> GetUnitsLookup() = 0;
    virtual std::shared_ptr<User> GetUser() = 0;
    virtual std::shared_ptr<MessageRecords> GetMessageRecords() = 0;
    // 1 Q1 channel, 2 Q1 implicit, 3 Q2 channel, 4 Q2 multivalue CSV, 5 Q2 multivalue UDT,
    // anything else: no such channel.
    virtual int GetChannelKind(int channel) = 0;
    // The data interface's own message log; may be null.
    virtual std::shared_ptr<olvex::MessageLog> MessageLog() = 0;
    // The alternative state: settings then report readability and changeability through
    // attributes -92 and -93 instead of -9 and -10.
    virtual bool AlternativeState() const = 0;

Q_SIGNALS:
    void UseSecondaryDasConnectionStringsChanged();
};
using DataInterfacePtr = std::shared_ptr<DataInterface>;

class OLVEX_CORE_EXPORT CurrentDataItem
{
public:
    virtual ~CurrentDataItem() = default;
    virtual QString Text() const = 0;
    // 71: the realtime data has expired.
    virtual int Status() const = 0;
};

class OLVEX_CORE_EXPORT CurrentDataReader
{
public:
    virtual ~CurrentDataReader() = default;
    // Null when the reader holds no item of that PID and key ("1m").
    virtual std::shared_ptr<CurrentDataItem> GetCurrentDataItem(qint32 pid, const QString &key) = 0;
};

// The string library's security object: answers privilege questions for the host's user.
// A security object that was never initialised refuses everything.
class OLVEX_CORE_EXPORT Security
{
public:
    virtual ~Security() = default;
    virtual void Initialize(const QString &text1, const QString &text2, const QString &text3,
                            const QString &text4, const QString &clientName, int flags)
        = 0;
    virtual bool CanChangeSetting(qint32 pid, bool defined) = 0;
};

} // namespace olvex
