#include "settings/settingdisplay.h"

#include "common/datetime.h"
#include "common/error.h"
#include "common/pid.h"
#include "common/vocabulary.h"

#include <algorithm>
#include <functional>

namespace olvex {

namespace {

const QString kProblemCode = QStringLiteral("SED-007/UI-025: ");

void logLine(MessageLog *log, const QString &text)
{
    if (log) {
        log->LogMessage(Severity::Error, text);
    }
}

// How a display format rounds: to a number of decimals, or (scientific) to a number of
// significant digits. nullopt: the format has no digit placeholders and leaves numbers alone.
struct Rounding
{
    int decimals = 0;
    bool scientific = false;
};

std::optional<Rounding> roundingOf(const QString &displayFormat)
{
    const QString format = displayFormat.trimmed();
    if (format.compare(u"Fixed", Qt::CaseInsensitive) == 0
        || format.compare(u"Standard", Qt::CaseInsensitive) == 0
        || format.compare(u"Currency", Qt::CaseInsensitive) == 0) {
        return Rounding{2, false};
    }
    if (format.compare(u"Percent", Qt::CaseInsensitive) == 0) {
        return Rounding{4, false}; // two shown decimals of the hundredfold value
    }
    if (format.compare(u"Scientific", Qt::CaseInsensitive) == 0) {
        return Rounding{2, true};
    }

    // Only the first section (positive numbers) decides; quoted text and escaped characters are
    // literals and take no part.
    bool sawPlaceholder = false;
    bool afterPoint = false;
    bool scientific = false;
    bool percent = false;
    int decimals = 0;
    for (qsizetype i = 0; i < format.size(); ++i) {
        const QChar c = format.at(i);
        if (c == u'"') {
            const qsizetype close = format.indexOf(u'"', i + 1);
            i = close < 0 ? format.size() : close;
            continue;
        }
        if (c == u'\\') {
            ++i;
            continue;
        }
        if (c == u';') {
            break;
        }
        if (c == u'0' || c == u'#') {
            sawPlaceholder = true;
            if (afterPoint && !scientific) {
                ++decimals;
            }
        } else if (c == u'.' && !scientific) {
            afterPoint = true;
        } else if ((c == u'E' || c == u'e') && i + 1 < format.size()
                   && (format.at(i + 1) == u'+' || format.at(i + 1) == u'-')) {
            scientific = true;
            ++i;
        } else if (c == u'%') {
            percent = true;
        }
    }
    if (!sawPlaceholder) {
        return std::nullopt;
    }
    // A percent format shows the hundredfold value; turned back into the number it stands for,
    // that keeps two more decimals.
    return Rounding{decimals + (percent ? 2 : 0), scientific};
}

Decimal powerOfTen(int exponent)
{
    Decimal result = 1;
    const Decimal step = exponent < 0 ? Decimal("0.1") : Decimal(10);
    for (int i = 0; i < std::abs(exponent); ++i) {
        result *= step;
    }
    return result;
}

// Half away from zero, as a display format rounds.
Decimal roundDecimals(const Decimal &value, int decimals)
{
    const Decimal scale = powerOfTen(decimals);
    return Decimal(boost::multiprecision::round(value * scale)) / scale;
}

// The PID text is only needed for a log line; making it costs more than formatting a value.
using PidText = std::function<QString()>;

FormattedValue formatNumber(const PidText &pidText, const Value &value,
                            const QString &displayFormat, MessageLog *log, bool applyFormat)
{
    FormattedValue out;
    if (!value.isNumeric()) {
        out.badValue = true;
        logLine(log, u"DM-014: value should be a number but isn't (PID=" + pidText() + u')');
        return out;
    }
    if (applyFormat && !displayFormat.trimmed().isEmpty()) {
        const std::optional<Decimal> number = value.toDecimal();
        if (!number) {
            throw Error(13, QStringLiteral("Type mismatch"));
        }
        out.text = decimalText(roundToDisplayFormat(*number, displayFormat));
        return out;
    }
    out.text = value.toText();
    return out;
}

FormattedValue formatDate(const PidText &pidText, int dataType, const Value &value, MessageLog *log)
{
    FormattedValue out;
    const std::optional<QDateTime> date = value.isDate() ? value.toDateTime() : std::nullopt;
    if (!date || !date->isValid()) {
        logLine(log, u"DM-015: value should be a date but isn't (PID=" + pidText() + u')');
        return out;
    }
    switch (dataType) {
    case SettingType::Date:
        out.text = formatNamed(*date, NamedFormat::ShortDate);
        break;
    case SettingType::Time:
        out.text = formatNamed(*date, NamedFormat::ShortTime);
        break;
    default:
        // The short date and the automatic time of day: how every time stamp of the system reads.
        out.text = DateTimeText(*date, 10);
        break;
    }
    return out;
}

FormattedValue formatTruth(const PidText &pidText, int dataType, const Value &value,
                           MessageLog *log)
{
    FormattedValue out;
    if (!value.isNumeric()) {
        logLine(log, u"DM-016: value should be a number (true/false) but is not (PID=" + pidText()
                         + u')');
        return out;
    }
    const bool truth = value.toDouble().value_or(0.0) != 0.0;
    if (dataType == SettingType::YesNo) {
        out.text = truth ? QStringLiteral("Yes") : QStringLiteral("No");
    } else {
        out.text = truth ? QStringLiteral("On") : QStringLiteral("Off");
    }
    return out;
}

FormattedValue formatValue(const PidText &pidText, int dataType, const Value &value,
                           const QString &displayFormat, MessageLog *messageLog, bool applyFormat)
{
    if (value.isNull()) {
        return {QStringLiteral("<Null>"), false, {}};
    }
    if (value.isEmpty()) {
        return {};
    }
    try {
        switch (dataType) {
        case SettingType::Number:
            return formatNumber(pidText, value, displayFormat, messageLog, applyFormat);
        case SettingType::Date:
        case SettingType::Time:
        case SettingType::DateTime:
            return formatDate(pidText, dataType, value, messageLog);
        case SettingType::YesNo:
        case SettingType::OnOff:
            return formatTruth(pidText, dataType, value, messageLog);
        default:
            return {value.toText(), false, {}};
        }
    } catch (...) {
        FormattedValue failed;
        failed.problem = kProblemCode + currentError().errorText();
        return failed;
    }
}

} // namespace

Decimal roundToDisplayFormat(const Decimal &value, const QString &displayFormat)
{
    const std::optional<Rounding> rounding = roundingOf(displayFormat);
    if (!rounding || value == 0) {
        return value;
    }
    if (!rounding->scientific) {
        return roundDecimals(value, rounding->decimals);
    }
    // Significant digits: one before the point plus the decimals of the mantissa.
    const Decimal magnitude = boost::multiprecision::abs(value);
    const int exponent = int(boost::multiprecision::floor(boost::multiprecision::log10(magnitude))
                                 .convert_to<long long>());
    const Decimal scale = powerOfTen(exponent);
    return roundDecimals(value / scale, rounding->decimals) * scale;
}

FormattedValue FormatSettingValue(const QString &pidText, int dataType, const Value &value,
                                  const QString &displayFormat, MessageLog *messageLog,
                                  bool applyFormat)
{
    return formatValue([&pidText] { return pidText; }, dataType, value, displayFormat, messageLog,
                       applyFormat);
}

QString YesNoText(const Value &value, bool asYesNo)
{
    if (!value.isNumeric()) {
        return {};
    }
    if (!asYesNo) {
        return value.toText();
    }
    return value.toDouble().value_or(0.0) != 0.0 ? QStringLiteral("Yes") : QStringLiteral("No");
}

QString ValueRangeText(const Value &lower, const Value &upper)
{
    const bool hasLower = !lower.isNullOrEmpty();
    const bool hasUpper = !upper.isNullOrEmpty();
    if (!hasLower && !hasUpper) {
        return {};
    }
    // One concatenation: a list of thousands of settings builds one range per row.
    return (hasLower ? lower.toText() : QString()) + u" ... "
           + (hasUpper ? upper.toText() : QString());
}

FormattedValue formatDefinitionValue(const Parameter &definition, const Value &value,
                                     MessageLog *messageLog)
{
    const int dataType
        = int(definition.GetAttribute(SettingAttr::DataType).toInteger().value_or(0));
    const QString displayFormat = definition.GetAttribute(SettingAttr::DisplayFormat).toText();
    return formatValue([&definition] { return FormatPid(definition.PidNumber()); }, dataType, value,
                       displayFormat, messageLog, !displayFormat.trimmed().isEmpty());
}

SettingRowState settingRowState(const Parameter &definition, bool alternativeState,
                                MessageLog *messageLog)
{
    const bool readable = definition.GetAttribute(SettingAttr::Readable).isTrue();
    const bool changeable = definition.GetAttribute(SettingAttr::Changeable).isTrue();
    const qint64 level = definition.GetAttribute(SettingAttr::Level).toInteger().value_or(0);
    const bool pending = definition.GetAttribute(SettingAttr::ChangePending).isTrue();
    bool shownReadable = readable;
    bool shownChangeable = changeable;
    if (alternativeState) {
        shownReadable = definition.GetAttribute(SettingAttr::AltReadable).isTrue();
        shownChangeable = definition.GetAttribute(SettingAttr::AltChangeable).isTrue();
    }

    SettingRowState state;
    if (shownReadable && shownChangeable) {
        state.icon = SettingIcon::Changeable;
    } else if (shownReadable) {
        state.icon = SettingIcon::ReadOnly;
    } else if (shownChangeable) {
        state.icon = SettingIcon::WriteOnly;
    }
    if (state.icon != SettingIcon::Unchanged && level > SettingIcon::kHighLevel) {
        ++state.icon;
    }

    if (pending) {
        state.valueText = QStringLiteral("Updating...");
    } else if (alternativeState && !shownReadable) {
        state.valueText
            = shownChangeable ? QStringLiteral("(Write-Only)") : QStringLiteral("(Offline)");
    } else if (!alternativeState && !readable) {
        state.valueText = changeable ? QStringLiteral("(Write-Only)") : QString();
    } else {
        state.shownValue = definition.GetCurrentValue().Value;
        const FormattedValue formatted
            = formatDefinitionValue(definition, state.shownValue, messageLog);
        state.valueText = formatted.text;
        state.formatProblem = formatted.problem;
    }
    return state;
}

} // namespace olvex
