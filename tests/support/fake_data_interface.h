#pragma once

#include "common/error.h"
#include "common/host.h"
#include "support/fake_clock.h"
#include "support/fake_message_records.h"
#include "support/fake_parameter.h"
#include "support/fake_user.h"

#include <QHash>
#include <QList>
#include <QString>

#include <array>
#include <memory>
#include <optional>

namespace olvex {

// An in-memory data interface: parameters, users, units, channels, the site and the client,
// command records, a manual clock. Every companion object it hands out (directory, units
// lookup, user, record writer, clock) shares its state, so a test may change the data at any
// time and the component sees it on its next read, as it would on a live site.
//
// Parameters keep the order in which they were added; GetPidsOfTypes returns them in that
// order. GetPid of an unknown PID throws Error(kUndefinedPidError, ...).
class FakeDataInterface : public DataInterface
{
    Q_OBJECT
public:
    // Operations that failure injection and call counting know.
    enum class Op {
        ClientName,
        ClientAddress,
        ConnectionSettings,
        Clock,
        GetSiteId,
        GetPidsOfTypes,
        GetPidDirectory,
        GetUnitsLookup,
        GetUser,
        GetMessageRecords,
        GetChannelKind,
        MessageLog,
        PidExists,
        GetPid,
        UnitsText,
        Count
    };
    static constexpr int kUndefinedPidError = 1001;

    explicit FakeDataInterface(QObject *parent = nullptr);
    ~FakeDataInterface() override;

    // DataInterface
    QString ClientName() const override;
    QString ClientAddress() const override;
    ConnectionDescription ConnectionSettings() const override;
    std::shared_ptr<ClockLibrary> Clock() override;
    QString GetSiteId() const override;
    ParameterList GetPidsOfTypes(const QList<int> &types) override;
    std::shared_ptr<PidDirectory> GetPidDirectory() override;
    std::shared_ptr<UnitsLookup> GetUnitsLookup() override;
    std::shared_ptr<User> GetUser() override;
    std::shared_ptr<MessageRecords> GetMessageRecords() override;
    int GetChannelKind(int channel) override;
    std::shared_ptr<olvex::MessageLog> MessageLog() override;
    bool AlternativeState() const override;

    // Parameters.
    FakeParameterPtr addParameter(qint32 pid, int parameterType, const QString &name);
    // Adds (or replaces, keeping its place) a parameter made by the test.
    void addParameter(const FakeParameterPtr &parameter);
    // A setting (type 4) that can be read and changed: data type -14, current value, and the
    // default -19 when given.
    FakeParameterPtr addSetting(qint32 pid, const QString &name, int dataType, const Value &current,
                                const std::optional<Value> &defaultValue = {});
    // A setting group (type 5): members -46 as an array of PIDs, alarm flag -106.
    FakeParameterPtr addGroup(qint32 pid, const QString &name, const QList<qint32> &members,
                              bool alarmGroup = false);
    void removeParameter(qint32 pid);
    FakeParameterPtr parameter(qint32 pid) const; // null when unknown
    QList<FakeParameterPtr> parameters() const;
    // Shorthand for parameter(pid)->setFailure(...).
    void setFailure(qint32 pid, FakeParameter::Op op, const Error &error,
                    std::optional<int> attribute = std::nullopt);
    // Applies every parameter's queued writes at the clock's time; returns how many.
    int applyPendingWrites();

    // Site, client, connection, state.
    void setSiteId(const QString &siteId);
    void setClientName(const QString &name);
    void setClientAddress(const QString &address);
    void setConnectionSettings(const ConnectionDescription &description);
    void setAlternativeState(bool on);

    // User: the current user object (replaced by setUser, shared with what GetUser returned).
    std::shared_ptr<FakeUser> user() const;
    void setUser(const QString &name, const QSet<int> &privileges = {});

    // Units and channels.
    void setUnitsText(qint32 pid, const QString &text);
    void setChannelKind(int channel, int kind);
    const QList<int> &channelKindQueries() const;

    // Companions.
    std::shared_ptr<FakeMessageRecords> messageRecords() const;
    std::shared_ptr<ManualClock> clock() const;
    void setMessageLog(std::shared_ptr<olvex::MessageLog> log);

    // Every GetPidsOfTypes request, in order.
    const QList<QList<int>> &pidsOfTypesRequests() const;

    // Failure injection on the data interface itself: from now on op throws error.
    void setFailure(Op op, const Error &error);
    void clearFailures();
    int callCount(Op op) const;

    // Raises UseSecondaryDasConnectionStringsChanged, as the host does when it switches.
    void raiseUseSecondaryDasConnectionStringsChanged();

    // Shared by the companions; public so the companion classes in the .cpp can reach it.
    struct State;

private:
    std::shared_ptr<State> m_state;
};
using FakeDataInterfacePtr = std::shared_ptr<FakeDataInterface>;

} // namespace olvex
