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

// An in-memory data interface: parameters, the user, units, the site and the client, command
// records, a manual clock. Every companion object it hands out (directory, units lookup, user,
// record writer, clock) shares its state, so a test may change the data at any time and the
// component sees it on its next read, as it would on a live site.
//
// Parameters keep the order in which they were added; GetPidsOfTypes returns them in that
// order. GetPid of an unknown PID throws. Channels exist once given a kind; the alternative
// state is off.
class FakeDataInterface : public DataInterface
{
    Q_OBJECT
public:
    // Operations that failure injection knows.
    enum class Op { GetSiteId, GetPidsOfTypes, Count };

    explicit FakeDataInterface(QObject *parent = nullptr);
    ~FakeDataInterface() override;

    // DataInterface
    QString ClientName() const override { return QStringLiteral("WS1"); }
    QString ClientAddress() const override { return m_state->clientAddress; }
    ConnectionDescription ConnectionSettings() const override { return m_state->connection; }
    std::shared_ptr<ClockLibrary> Clock() override { return m_state->clock; }
    QString GetSiteId() const override;
    ParameterList GetPidsOfTypes(const QList<int> &types) override;
    std::shared_ptr<PidDirectory> GetPidDirectory() override;
    std::shared_ptr<UnitsLookup> GetUnitsLookup() override;
    std::shared_ptr<User> GetUser() override { return m_state->user; }
    std::shared_ptr<MessageRecords> GetMessageRecords() override { return m_state->records; }
    int GetChannelKind(int channel) override { return m_state->channelKinds.value(channel); }
    std::shared_ptr<olvex::MessageLog> MessageLog() override { return m_state->log; }
    bool AlternativeState() const override { return false; }

    // Parameters. addParameter gives a bare parameter of any type with a Null current value.
    FakeParameterPtr addParameter(qint32 pid, int parameterType, const QString &name);
    // A setting (type 4) that can be read and changed: data type -14, current value, and the
    // default -19 when given.
    FakeParameterPtr addSetting(qint32 pid, const QString &name, int dataType, const Value &current,
                                const std::optional<Value> &defaultValue = {});
    // A setting group (type 5): members -46 as an array of PIDs, alarm flag -106.
    FakeParameterPtr addGroup(qint32 pid, const QString &name, const QList<qint32> &members,
                              bool alarmGroup = false);
    FakeParameterPtr parameter(qint32 pid) const; // null when unknown
    QList<FakeParameterPtr> parameters() const;
    // Shorthand for parameter(pid)->setFailure(...).
    void setFailure(qint32 pid, FakeParameter::Op op, const Error &error,
                    std::optional<int> attribute = std::nullopt);
    // Applies every parameter's queued writes at the clock's time; returns how many.
    int applyPendingWrites();

    void setChannelKind(int channel, int kind) { m_state->channelKinds.insert(channel, kind); }
    void setSiteId(const QString &siteId) { m_state->siteId = siteId; }
    void setClientAddress(const QString &address) { m_state->clientAddress = address; }
    void setConnectionSettings(const ConnectionDescription &c) { m_state->connection = c; }
    // The current user object (shared with what GetUser returned).
    std::shared_ptr<FakeUser> user() const { return m_state->user; }
    void setUser(const QString &name, const QSet<int> &privileges = {});
    void setUnitsText(qint32 pid, const QString &text) { m_state->units.insert(pid, text); }
    std::shared_ptr<FakeMessageRecords> messageRecords() const { return m_state->records; }
    std::shared_ptr<ManualClock> clock() const { return m_state->clock; }
    void setMessageLog(std::shared_ptr<olvex::MessageLog> log) { m_state->log = std::move(log); }
    // Every GetPidsOfTypes request, in order.
    const QList<QList<int>> &pidsOfTypesRequests() const { return m_state->pidsOfTypesRequests; }

    // Failure injection on the data interface itself: from now on op throws error.
    void setFailure(Op op, const Error &error) { m_state->failures[size_t(op)] = error; }
    void clearFailures() { m_state->failures.fill(std::nullopt); }

    // Raises UseSecondaryDasConnectionStringsChanged, as the host does when it switches.
    void raiseUseSecondaryDasConnectionStringsChanged()
    {
        Q_EMIT UseSecondaryDasConnectionStringsChanged();
    }

    // Shared with the companions.
    struct State
    {
        QHash<qint32, FakeParameterPtr> parameters;
        QList<qint32> order;
        QString siteId = QStringLiteral("PLANT1");
        QString clientAddress = QStringLiteral("10.0.0.5");
        ConnectionDescription connection{
            QStringLiteral("data-primary"), QStringLiteral("data-secondary"),
            QStringLiteral("das-primary"), QStringLiteral("das-secondary"),
            QStringLiteral("/olvex/export")};
        std::shared_ptr<FakeUser> user = std::make_shared<FakeUser>();
        QHash<qint32, QString> units;
        QHash<int, int> channelKinds;
        std::shared_ptr<FakeMessageRecords> records = std::make_shared<FakeMessageRecords>();
        std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
        std::shared_ptr<olvex::MessageLog> log;
        QList<QList<int>> pidsOfTypesRequests;
        std::array<std::optional<Error>, size_t(Op::Count)> failures;

        void enter(Op op) const
        {
            if (const auto &failure = failures[size_t(op)]) {
                throw *failure;
            }
        }
    };

private:
    std::shared_ptr<State> m_state;
};
using FakeDataInterfacePtr = std::shared_ptr<FakeDataInterface>;

} // namespace olvex
