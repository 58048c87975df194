#include "settings/alarmsetpoints.h"

#include "common/text.h"

namespace olvex {

std::optional<QString> alarmOrderViolation(const AlarmValues &values)
{
    for (size_t i = 0; i + 1 < values.size(); ++i) {
        if (!values[i].isNumeric()) {
            continue;
        }
        const auto larger = values[i].toDecimal();
        for (size_t j = i + 1; j < values.size(); ++j) {
            if (!values[j].isNumeric()) {
                continue;
            }
            if (values[j].toDecimal() > larger) {
                return fillPlaceholders(
                    QStringLiteral("The $SmallValue$ value is larger than the $LargeValue$ value."),
                    {{QStringLiteral("SmallValue"), QString::fromLatin1(kAlarmSetpoints[j].name)},
                     {QStringLiteral("LargeValue"), QString::fromLatin1(kAlarmSetpoints[i].name)}});
            }
        }
    }
    return std::nullopt;
}

Value setpointFromText(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty()) {
        return Value();
    }
    const Value asText(trimmed);
    if (!asText.isNumeric()) {
        return asText;
    }
    const std::optional<double> number = asText.toDouble();
    if (number && *number == double(qint64(*number)) && qAbs(*number) < 9e15) {
        return Value(qint64(*number));
    }
    return Value(*number);
}

} // namespace olvex
