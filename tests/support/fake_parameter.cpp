#include "support/fake_parameter.h"

namespace olvex {

namespace {
// The data interface's own write mode that queues a change for the service.
constexpr int kQueuedWrite = 3;
} // namespace

FakeParameter::FakeParameter(qint32 pid, int parameterType, const QString &name)
    : m_pid(pid)
    , m_type(parameterType)
    , m_name(name)
{
    m_current.Value = Value::null();
}

void FakeParameter::enter(Op op, std::optional<int> attribute) const
{
    ++m_calls[size_t(op)];
    for (const Failure &f : m_failures) {
        if (f.op == op && (!f.attribute || f.attribute == attribute)) {
            throw f.error;
        }
    }
}

QString FakeParameter::GetName(int /*form*/) const
{
    enter(Op::GetName);
    return m_name;
}

Value FakeParameter::GetAttribute(int number) const
{
    enter(Op::GetAttribute, number);
    return m_attributes.value(number, Value::null());
}

void FakeParameter::SetAttribute(int number, const Value &value)
{
    enter(Op::SetAttribute, number);
    m_attributeWrites.append({number, value});
    m_attributes.insert(number, value);
}

CurrentValue FakeParameter::GetCurrentValue() const
{
    enter(Op::GetCurrentValue);
    return m_current;
}

void FakeParameter::SetValues(int mode, const Value &value)
{
    enter(Op::SetValues);
    m_valueWrites.append({mode, value});
    if (mode == kQueuedWrite) {
        m_pending.append(value);
        m_attributes.insert(FakeAttributes::ChangePending, Value(true));
    } else {
        m_current.Value = value;
        m_current.Status = 0;
    }
}

int FakeParameter::applyPendingWrites(const QDateTime &time)
{
    const int applied = int(m_pending.size());
    if (applied == 0) {
        return 0;
    }
    Value last = m_pending.constLast();
    if (last.isArray() && last.toArray().size() == 1) {
        last = last.toArray().constFirst();
    }
    m_current = {last, 0, time};
    m_pending.clear();
    m_attributes.insert(FakeAttributes::ChangePending, Value(false));
    return applied;
}

void FakeParameter::dropPendingWrites()
{
    m_pending.clear();
    m_attributes.insert(FakeAttributes::ChangePending, Value(false));
}

void FakeParameter::setFailure(Op op, const Error &error, std::optional<int> attribute)
{
    m_failures.append({op, attribute, error});
}

} // namespace olvex
