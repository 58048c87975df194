#include "host/settingvalue.h"

#include "common/error.h"
#include "host/storeerrors.h"
#include "common/vocabulary.h"
#include "settings/settingentry.h"

namespace olvex {

namespace {

[[noreturn]] void mismatch(const Value &value, int dataType)
{
    throw Error(StoreError::TypeMismatch, u"Type mismatch: " + value.debugText()
                                              + u" does not fit data type "
                                              + QString::number(dataType));
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

} // namespace

Value coerceToDataType(int dataType, const Value &given)
{
    Value value = given;
    if (value.isArray()) {
        const QList<Value> elements = value.toArray();
        if (elements.size() != 1) {
            mismatch(given, dataType);
        }
        value = elements.first();
    }
    if (value.isNullOrEmpty()) {
        return value;
    }
    switch (dataType) {
    case SettingType::Number:
        if (value.kind() == Value::Kind::Integer || value.kind() == Value::Kind::Double) {
            return value;
        }
        if (value.isBoolean()) {
            return Value(value.isTrue() ? -1 : 0);
        }
        if (value.isText()) {
            if (auto v = valueToWrite(EntryKind::Number, value.toText())) {
                return *v;
            }
        }
        mismatch(given, dataType);
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
        mismatch(given, dataType);
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
        mismatch(given, dataType);
    case SettingType::Text:
        if (value.isText()) {
            return value;
        }
        return Value(value.toText());
    default:
        return value;
    }
}

} // namespace olvex
