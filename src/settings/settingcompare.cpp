#include "settings/settingcompare.h"

#include "common/error.h"
#include "settings/settingvaluecheck.h"

namespace olvex {

namespace {

std::optional<double> plainNumber(const Value &value)
{
    return value.isNumeric() && !value.isText() ? value.toDouble() : std::nullopt;
}

} // namespace

bool sameSettingValue(int dataType, const Value &current, const Value &wanted)
{
    Value a;
    Value b;
    try {
        a = coerceToDataType(dataType, current);
        b = coerceToDataType(dataType, wanted);
    } catch (const Error &) {
        return false;
    }
    if (a.isNullOrEmpty() || b.isNullOrEmpty()) {
        return a.kind() == b.kind();
    }
    const std::optional<double> x = plainNumber(a);
    const std::optional<double> y = plainNumber(b);
    if (x && y) {
        return *x == *y;
    }
    if (a.isDateTime() && b.isDateTime()) {
        return a.toDateTime() == b.toDateTime();
    }
    return a.kind() == b.kind() && a.toText() == b.toText();
}

bool outsideRecommendedRange(const Value &value, const Value &low, const Value &high)
{
    const std::optional<double> number = plainNumber(value);
    if (!number || value.isBoolean()) {
        return false;
    }
    const std::optional<double> lower = low.isNumeric() ? low.toDouble() : std::nullopt;
    const std::optional<double> upper = high.isNumeric() ? high.toDouble() : std::nullopt;
    return (lower && *number < *lower) || (upper && *number > *upper);
}

} // namespace olvex
