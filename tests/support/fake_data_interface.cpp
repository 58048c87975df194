#include "support/fake_data_interface.h"

#include <QHash>

namespace olvex {

struct FakeDataInterface::State
{
    QHash<qint32, FakeParameterPtr> parameters;
    QList<qint32> order;

    QString siteId = QStringLiteral("PLANT1");
    QString clientName = QStringLiteral("WS1");
    QString clientAddress = QStringLiteral("10.0.0.5");
    ConnectionDescription connection{QStringLiteral("data-primary"),
                                     QStringLiteral("data-secondary"),
                                     QStringLiteral("das-primary"), QStringLiteral("das-secondary"),
                                     QStringLiteral("/olvex/export")};
    bool alternativeState = false;

    std::shared_ptr<FakeUser> user = std::make_shared<FakeUser>();
    QHash<qint32, QString> units;
    QHash<int, int> channelKinds;
    QList<int> channelKindQueries;
    std::shared_ptr<FakeMessageRecords> records = std::make_shared<FakeMessageRecords>();
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<olvex::MessageLog> log;
    QList<QList<int>> pidsOfTypesRequests;

    std::array<std::optional<Error>, size_t(Op::Count)> failures;
    std::array<int, size_t(Op::Count)> calls{};

    void enter(Op op)
    {
        ++calls[size_t(op)];
        if (const auto &failure = failures[size_t(op)]) {
            throw *failure;
        }
    }
};

namespace {

class FakePidDirectory : public PidDirectory
{
public:
    explicit FakePidDirectory(std::shared_ptr<FakeDataInterface::State> state)
        : m_state(std::move(state))
    {}

    bool PidExists(qint32 pid) const override
    {
        m_state->enter(FakeDataInterface::Op::PidExists);
        return m_state->parameters.contains(pid);
    }

    ParameterPtr GetPid(qint32 pid, bool /*definition*/) const override
    {
        m_state->enter(FakeDataInterface::Op::GetPid);
        auto parameter = m_state->parameters.value(pid);
        if (!parameter) {
            throw Error(FakeDataInterface::kUndefinedPidError,
                        u"PID " + QString::number(pid) + u" is not defined");
        }
        return parameter;
    }

private:
    std::shared_ptr<FakeDataInterface::State> m_state;
};

class FakeUnitsLookup : public UnitsLookup
{
public:
    explicit FakeUnitsLookup(std::shared_ptr<FakeDataInterface::State> state)
        : m_state(std::move(state))
    {}

    QString UnitsText(qint32 pid) const override
    {
        m_state->enter(FakeDataInterface::Op::UnitsText);
        return m_state->units.value(pid);
    }

private:
    std::shared_ptr<FakeDataInterface::State> m_state;
};

} // namespace

FakeDataInterface::FakeDataInterface(QObject *parent)
    : DataInterface(parent)
    , m_state(std::make_shared<State>())
{}

FakeDataInterface::~FakeDataInterface() = default;

QString FakeDataInterface::ClientName() const
{
    m_state->enter(Op::ClientName);
    return m_state->clientName;
}

QString FakeDataInterface::ClientAddress() const
{
    m_state->enter(Op::ClientAddress);
    return m_state->clientAddress;
}

ConnectionDescription FakeDataInterface::ConnectionSettings() const
{
    m_state->enter(Op::ConnectionSettings);
    return m_state->connection;
}

std::shared_ptr<ClockLibrary> FakeDataInterface::Clock()
{
    m_state->enter(Op::Clock);
    return m_state->clock;
}

QString FakeDataInterface::GetSiteId() const
{
    m_state->enter(Op::GetSiteId);
    return m_state->siteId;
}

ParameterList FakeDataInterface::GetPidsOfTypes(const QList<int> &types)
{
    m_state->pidsOfTypesRequests.append(types);
    m_state->enter(Op::GetPidsOfTypes);
    ParameterList result;
    for (qint32 pid : std::as_const(m_state->order)) {
        const FakeParameterPtr &parameter = m_state->parameters[pid];
        if (types.contains(parameter->ParameterType())) {
            result.append(parameter);
        }
    }
    return result;
}

std::shared_ptr<PidDirectory> FakeDataInterface::GetPidDirectory()
{
    m_state->enter(Op::GetPidDirectory);
    return std::make_shared<FakePidDirectory>(m_state);
}

std::shared_ptr<UnitsLookup> FakeDataInterface::GetUnitsLookup()
{
    m_state->enter(Op::GetUnitsLookup);
    return std::make_shared<FakeUnitsLookup>(m_state);
}

std::shared_ptr<User> FakeDataInterface::GetUser()
{
    m_state->enter(Op::GetUser);
    return m_state->user;
}

std::shared_ptr<MessageRecords> FakeDataInterface::GetMessageRecords()
{
    m_state->enter(Op::GetMessageRecords);
    return m_state->records;
}

int FakeDataInterface::GetChannelKind(int channel)
{
    m_state->channelKindQueries.append(channel);
    m_state->enter(Op::GetChannelKind);
    return m_state->channelKinds.value(channel, 0);
}

std::shared_ptr<MessageLog> FakeDataInterface::MessageLog()
{
    m_state->enter(Op::MessageLog);
    return m_state->log;
}

bool FakeDataInterface::AlternativeState() const
{
    return m_state->alternativeState;
}

FakeParameterPtr FakeDataInterface::addParameter(qint32 pid, int parameterType, const QString &name)
{
    auto parameter = std::make_shared<FakeParameter>(pid, parameterType, name);
    parameter->setCurrentValue(Value::null(), 0, m_state->clock->Now());
    addParameter(parameter);
    return parameter;
}

void FakeDataInterface::addParameter(const FakeParameterPtr &parameter)
{
    const qint32 pid = parameter->PidNumber();
    if (!m_state->parameters.contains(pid)) {
        m_state->order.append(pid);
    }
    m_state->parameters.insert(pid, parameter);
}

FakeParameterPtr FakeDataInterface::addSetting(qint32 pid, const QString &name, int dataType,
                                               const Value &current,
                                               const std::optional<Value> &defaultValue)
{
    auto setting = addParameter(pid, ParameterTypes::Setting, name);
    setting->setAttributeValue(FakeAttributes::DataType, dataType);
    setting->setAttributeValue(FakeAttributes::Readable, true);
    setting->setAttributeValue(FakeAttributes::Changeable, true);
    if (defaultValue) {
        setting->setAttributeValue(FakeAttributes::DefaultValue, *defaultValue);
    }
    setting->setCurrentValue(current, 0, m_state->clock->Now());
    return setting;
}

FakeParameterPtr FakeDataInterface::addGroup(qint32 pid, const QString &name,
                                             const QList<qint32> &members, bool alarmGroup)
{
    auto group = addParameter(pid, ParameterTypes::SettingGroup, name);
    QList<Value> array;
    array.reserve(members.size());
    for (qint32 member : members) {
        array.append(Value(qint64(member)));
    }
    group->setAttributeValue(FakeAttributes::MemberPids, Value(std::move(array)));
    group->setAttributeValue(FakeAttributes::AlarmGroup, alarmGroup);
    return group;
}

void FakeDataInterface::removeParameter(qint32 pid)
{
    m_state->parameters.remove(pid);
    m_state->order.removeAll(pid);
}

FakeParameterPtr FakeDataInterface::parameter(qint32 pid) const
{
    return m_state->parameters.value(pid);
}

QList<FakeParameterPtr> FakeDataInterface::parameters() const
{
    QList<FakeParameterPtr> result;
    result.reserve(m_state->order.size());
    for (qint32 pid : std::as_const(m_state->order)) {
        result.append(m_state->parameters.value(pid));
    }
    return result;
}

void FakeDataInterface::setFailure(qint32 pid, FakeParameter::Op op, const Error &error,
                                   std::optional<int> attribute)
{
    if (auto p = parameter(pid)) {
        p->setFailure(op, error, attribute);
    }
}

int FakeDataInterface::applyPendingWrites()
{
    int applied = 0;
    for (const FakeParameterPtr &p : parameters()) {
        applied += p->applyPendingWrites(m_state->clock->Now());
    }
    return applied;
}

void FakeDataInterface::setSiteId(const QString &siteId)
{
    m_state->siteId = siteId;
}

void FakeDataInterface::setClientName(const QString &name)
{
    m_state->clientName = name;
}

void FakeDataInterface::setClientAddress(const QString &address)
{
    m_state->clientAddress = address;
}

void FakeDataInterface::setConnectionSettings(const ConnectionDescription &description)
{
    m_state->connection = description;
}

void FakeDataInterface::setAlternativeState(bool on)
{
    m_state->alternativeState = on;
}

std::shared_ptr<FakeUser> FakeDataInterface::user() const
{
    return m_state->user;
}

void FakeDataInterface::setUser(const QString &name, const QSet<int> &privileges)
{
    m_state->user->setName(name);
    m_state->user->setPrivileges(privileges);
}

void FakeDataInterface::setUnitsText(qint32 pid, const QString &text)
{
    m_state->units.insert(pid, text);
}

void FakeDataInterface::setChannelKind(int channel, int kind)
{
    m_state->channelKinds.insert(channel, kind);
}

const QList<int> &FakeDataInterface::channelKindQueries() const
{
    return m_state->channelKindQueries;
}

std::shared_ptr<FakeMessageRecords> FakeDataInterface::messageRecords() const
{
    return m_state->records;
}

std::shared_ptr<ManualClock> FakeDataInterface::clock() const
{
    return m_state->clock;
}

void FakeDataInterface::setMessageLog(std::shared_ptr<olvex::MessageLog> log)
{
    m_state->log = std::move(log);
}

const QList<QList<int>> &FakeDataInterface::pidsOfTypesRequests() const
{
    return m_state->pidsOfTypesRequests;
}

void FakeDataInterface::setFailure(Op op, const Error &error)
{
    m_state->failures[size_t(op)] = error;
}

void FakeDataInterface::clearFailures()
{
    m_state->failures.fill(std::nullopt);
}

int FakeDataInterface::callCount(Op op) const
{
    return m_state->calls[size_t(op)];
}

void FakeDataInterface::raiseUseSecondaryDasConnectionStringsChanged()
{
    Q_EMIT UseSecondaryDasConnectionStringsChanged();
}

} // namespace olvex
