#pragma once

#include "common/error.h"
#include "common/host.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>

#include <array>
#include <optional>

namespace olvex {

// Attribute numbers the fakes set themselves.
namespace FakeAttributes {
inline constexpr int Readable = -9;
inline constexpr int Changeable = -10;
inline constexpr int DataType = -14;
inline constexpr int DefaultValue = -19;
inline constexpr int MemberPids = -46;
inline constexpr int ChangePending = -91;
inline constexpr int AlarmGroup = -106;
} // namespace FakeAttributes

// An in-memory parameter object.
//
// Test-side setters (lower case) change the parameter silently; the interface operations
// (upper case) are what a component calls, and those that write are recorded.
//
// SetValues(3, v) behaves like the real data interface: it queues the write and marks the
// parameter change-pending (attribute -91 true); the current value changes only when the
// test calls applyPendingWrites(), which plays the data acquisition service. A value written
// as a one-element array (the import writes it that way) is applied as that element.
// Any other mode is applied at once.
class FakeParameter : public Parameter
{
public:
    // The operations that failure injection and call counting know.
    enum class Op { GetName, GetAttribute, SetAttribute, GetCurrentValue, SetValues, Count };

    struct ValueWrite
    {
        int mode = 0;
        Value value;
        bool operator==(const ValueWrite &) const = default;
    };
    struct AttributeWrite
    {
        int number = 0;
        Value value;
        bool operator==(const AttributeWrite &) const = default;
    };

    FakeParameter(qint32 pid, int parameterType, const QString &name);

    // Parameter
    QString GetName(int form = 0) const override;
    int ParameterType() const override { return m_type; }
    qint32 PidNumber() const override { return m_pid; }
    Value GetAttribute(int number) const override;
    void SetAttribute(int number, const Value &value) override;
    CurrentValue GetCurrentValue() const override;
    void SetValues(int mode, const Value &value) override;
    bool InError() const override { return m_inError; }
    QString UnitName() const override { return m_unitName; }

    // Test side.
    void setAttributeValue(int number, const Value &value) { m_attributes.insert(number, value); }
    void setInError(bool inError) { m_inError = inError; }
    void setUnitName(const QString &name) { m_unitName = name; }
    void setCurrentValue(const Value &value, int status = 0, const QDateTime &time = {})
    {
        m_current = {value, status, time};
    }

    // Writes made through the interface, oldest first.
    const QList<ValueWrite> &valueWrites() const { return m_valueWrites; }
    const QList<AttributeWrite> &attributeWrites() const { return m_attributeWrites; }
    // Applies the queued writes in order (the last one wins), clears attribute -91, and stamps
    // the value with time and status 0. Returns how many writes were applied.
    int applyPendingWrites(const QDateTime &time = {});
    // Forgets the queued writes without applying them (the service refused them).
    void dropPendingWrites();

    // Failure injection: from now on op throws error. For GetAttribute and SetAttribute an
    // attribute number limits it to that attribute. clearFailures() undoes all.
    void setFailure(Op op, const Error &error, std::optional<int> attribute = std::nullopt);
    void clearFailures() { m_failures.clear(); }

    // How often a component called op (failed calls included).
    int callCount(Op op) const { return m_calls[size_t(op)]; }
    void resetCallCounts() { m_calls.fill(0); }

private:
    void enter(Op op, std::optional<int> attribute = std::nullopt) const;

    qint32 m_pid;
    int m_type;
    QString m_name;
    bool m_inError = false;
    QString m_unitName;
    QHash<int, Value> m_attributes;
    CurrentValue m_current;
    QList<ValueWrite> m_valueWrites;
    QList<AttributeWrite> m_attributeWrites;
    QList<Value> m_pending;

    struct Failure
    {
        Op op;
        std::optional<int> attribute;
        Error error;
    };
    QList<Failure> m_failures;
    mutable std::array<int, size_t(Op::Count)> m_calls{};
};
using FakeParameterPtr = std::shared_ptr<FakeParameter>;

} // namespace olvex
