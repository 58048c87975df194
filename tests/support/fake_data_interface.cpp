#include "support/fake_data_interface.h"

namespace olvex {

namespace {

using State = FakeDataInterface::State;

class FakePidDirectory : public PidDirectory
{
public:
    explicit FakePidDirectory(std::shared_ptr<State> state)
        : m_state(std::move(state))
    {}

    bool PidExists(qint32 pid) const override { return m_state->parameters.contains(pid); }

    ParameterPtr GetPid(qint32 pid, bool /*definition*/) const override
    {
        if (auto parameter = m_state->parameters.value(pid)) {
            return parameter;
        }
        throw Error(1001, u"PID " + QString::number(pid) + u" is not defined");
    }

private:
    std::shared_ptr<State> m_state;
};

class FakeUnitsLookup : public UnitsLookup
{
public:
    explicit FakeUnitsLookup(std::shared_ptr<State> state)
        : m_state(std::move(state))
    {}

    QString UnitsText(qint32 pid) const override { return m_state->units.value(pid); }

private:
    std::shared_ptr<State> m_state;
};

} // namespace

FakeDataInterface::FakeDataInterface(QObject *parent)
    : DataInterface(parent)
    , m_state(std::make_shared<State>())
{}

FakeDataInterface::~FakeDataInterface() = default;

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
    for (const FakeParameterPtr &parameter : parameters()) {
        if (types.contains(parameter->ParameterType())) {
            result.append(parameter);
        }
    }
    return result;
}

std::shared_ptr<PidDirectory> FakeDataInterface::GetPidDirectory()
{
    return std::make_shared<FakePidDirectory>(m_state);
}

std::shared_ptr<UnitsLookup> FakeDataInterface::GetUnitsLookup()
{
    return std::make_shared<FakeUnitsLookup>(m_state);
}

FakeParameterPtr FakeDataInterface::addParameter(qint32 pid, int parameterType, const QString &name)
{
    auto parameter = std::make_shared<FakeParameter>(pid, parameterType, name);
    parameter->setCurrentValue(Value::null(), 0, m_state->clock->Now());
    if (!m_state->parameters.contains(pid)) {
        m_state->order.append(pid);
    }
    m_state->parameters.insert(pid, parameter);
    return parameter;
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
    for (qint32 member : members) {
        array.append(Value(qint64(member)));
    }
    group->setAttributeValue(FakeAttributes::MemberPids, Value(std::move(array)));
    group->setAttributeValue(FakeAttributes::AlarmGroup, alarmGroup);
    return group;
}

FakeParameterPtr FakeDataInterface::parameter(qint32 pid) const
{
    return m_state->parameters.value(pid);
}

QList<FakeParameterPtr> FakeDataInterface::parameters() const
{
    QList<FakeParameterPtr> result;
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

void FakeDataInterface::setUser(const QString &name, const QSet<int> &privileges)
{
    m_state->user->setName(name);
    m_state->user->setPrivileges(privileges);
}

} // namespace olvex
