#pragma once

#include "common/decimal.h"
#include "common/olvexexport.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <optional>
#include <variant>

namespace olvex {

// The data interface's dynamically typed value. Empty (never set) and Null (explicitly no value)
// are different kinds and stay different end to end: store, CSV, display.
//
// The conversions follow the host system's rules, in one place so no component reinvents them:
// - isNumeric: numbers, Booleans and numeric text; Empty, Null, dates and arrays are not numeric.
// - isDate: date-time values and text that reads as a date or a time.
// - Boolean true is -1 as a number and "True" as text.
// - toText of a date is the locale's general date: date and long time, the date alone at
//   midnight, the time alone on the zero date (1899-12-30).
class OLVEX_CORE_EXPORT Value
{
public:
    enum class Kind { Empty, Null, Boolean, Integer, Double, Text, DateTime, Array };

    Value() = default;
    Value(bool b)
        : m_data(b)
    {}
    Value(int i)
        : m_data(qint64(i))
    {}
    Value(qint64 i)
        : m_data(i)
    {}
    Value(double d)
        : m_data(d)
    {}
    Value(const QString &s)
        : m_data(s)
    {}
    Value(const char *utf8)
        : m_data(QString::fromUtf8(utf8))
    {}
    Value(const char16_t *s)
        : m_data(QString::fromUtf16(s))
    {}
    Value(const QDateTime &dt)
        : m_data(dt)
    {}
    Value(QList<Value> array)
        : m_data(std::move(array))
    {}
    Value(const void *) = delete; // no accidental pointer-to-bool

    static Value null();

    Kind kind() const;
    bool isEmpty() const { return kind() == Kind::Empty; }
    bool isNull() const { return kind() == Kind::Null; }
    bool isBoolean() const { return kind() == Kind::Boolean; }
    bool isText() const { return kind() == Kind::Text; }
    bool isDateTime() const { return kind() == Kind::DateTime; }
    bool isArray() const { return kind() == Kind::Array; }
    bool isNullOrEmpty() const { return isNull() || isEmpty(); }

    bool isNumeric() const;
    bool isDate() const;

    // Numeric conversions: nullopt when the value has no number. Empty reads as 0, as in the
    // host system's arithmetic; test isNumeric first where Empty must not count.
    std::optional<double> toDouble() const;
    std::optional<qint64> toInteger() const; // rounds half to even
    std::optional<Decimal> toDecimal() const;
    // "True"/"False" (any case), numbers (non-zero is true), numeric text; Empty is false.
    std::optional<bool> toBoolean() const;
    std::optional<QDateTime> toDateTime() const;

    // Text form; Empty, Null and arrays give empty text.
    QString toText() const;
    // toBoolean() or false: "anything that is not true counts as false".
    bool isTrue() const { return toBoolean().value_or(false); }

    // The elements of an array; empty for any other kind.
    QList<Value> toArray() const;

    // Identity: same kind and same content (1 and 1.0 differ, so do Null and Empty).
    bool operator==(const Value &other) const;

    // For test output and logs: kind and content, e.g. Text("abc"), Null.
    QString debugText() const;

private:
    struct NullTag
    {
        bool operator==(const NullTag &) const = default;
    };
    using Data = std::variant<std::monostate, NullTag, bool, qint64, double, QString, QDateTime,
                              QList<Value>>;
    Data m_data;
};

// Empty for Null, the value itself otherwise.
OLVEX_CORE_EXPORT Value NullToEmpty(const Value &value);

} // namespace olvex
