#include "settings/settingvaluecheck.h"

#include "common/error.h"
#include "common/vocabulary.h"
#include "settings/settingentry.h"

namespace olvex {

namespace {

QString quoted(const Value &value)
{
    return u'\'' + value.toText() + u'\'';
}

[[noreturn]] void mismatch(const Value &value, const QString &what)
{
    throw Error(ValueCheckError::TypeMismatch,
                u"Type mismatch: " + quoted(value) + u" is not " + what);
}

std::optional<bool> booleanFromText(const QString &text)
{
    const QString t = text.trimmed();
    for (const auto *word : {u"yes", u"on"}) {
        if (t.compare(QStringView(word), Qt::CaseInsensitive) == 0) {
            return true;
        }
    }
    for (const auto *word : {u"no", u"off"}) {
        if (t.compare(QStringView(word), Qt::CaseInsensitive) == 0) {
            return false;
        }
    }
    return Value(t).toBoolean();
}

// A number beyond the absolute limits is refused whatever its form.
void checkLimits(const Value &value, const Decimal &number)
{
    if (number > absoluteMaximum()) {
        throw Error(ValueCheckError::Overflow, u"Overflow: " + quoted(value)
                                                   + u" is greater than the maximum value ("
                                                   + absoluteMaximumText() + u')');
    }
    if (number < absoluteMinimum()) {
        throw Error(ValueCheckError::Overflow, u"Overflow: " + quoted(value)
                                                   + u" is less than the minimum value ("
                                                   + absoluteMinimumText() + u')');
    }
}

Value coerceNumber(const Value &value)
{
    if (value.isBoolean()) {
        return Value(value.isTrue() ? -1 : 0);
    }
    const bool isNumber
        = value.kind() == Value::Kind::Integer || value.kind() == Value::Kind::Double;
    if (isNumber || value.isText()) {
        if (const std::optional<Decimal> number = value.toDecimal()) {
            checkLimits(value, *number);
            if (isNumber) {
                return value;
            }
            if (auto v = valueToWrite(EntryKind::Number, value.toText())) {
                return *v;
            }
        }
    }
    mismatch(value, QStringLiteral("a number"));
}

} // namespace

Value coerceToDataType(int dataType, const Value &given)
{
    Value value = given;
    if (value.isArray()) {
        const QList<Value> elements = value.toArray();
        if (elements.size() != 1) {
            throw Error(ValueCheckError::TypeMismatch,
                        u"Type mismatch: " + given.debugText() + u" is not a single value");
        }
        value = elements.first();
    }
    if (value.isNullOrEmpty()) {
        return value;
    }
    switch (dataType) {
    case SettingType::Number:
        return coerceNumber(value);
    case SettingType::Date:
    case SettingType::Time:
    case SettingType::DateTime:
        if (value.isDateTime()) {
            return value;
        }
        if (value.isText()) {
            if (auto v = valueToWrite(EntryKind::DateTime, value.toText())) {
                return *v;
            }
        } else if (auto dt = value.toDateTime()) {
            return Value(*dt);
        }
        mismatch(value, dataType == SettingType::Time ? QStringLiteral("a time")
                                                      : QStringLiteral("a date"));
    case SettingType::YesNo:
    case SettingType::OnOff:
        if (value.isBoolean()) {
            return value;
        }
        if (value.isText()) {
            if (auto b = booleanFromText(value.toText())) {
                return Value(*b);
            }
        } else if (value.isNumeric()) {
            return Value(value.isTrue());
        }
        mismatch(value, dataType == SettingType::OnOff ? QStringLiteral("On or Off")
                                                       : QStringLiteral("Yes or No"));
    case SettingType::Text:
        if (value.isText()) {
            return value;
        }
        return Value(value.toText());
    default:
        return value;
    }
}

QString valueRefusal(int dataType, const Value &value)
{
    try {
        coerceToDataType(dataType, value);
        return {};
    } catch (const Error &error) {
        return error.description();
    }
}

} // namespace olvex
