#include "settings/settingentry.h"

#include "common/datetime.h"
#include "common/text.h"
#include "common/vocabulary.h"

#include <QLocale>

namespace olvex {

namespace {

const QString kNines12 = QStringLiteral("999999999999");
const QString kNines7 = QStringLiteral("9999999");

// Limits in the locale's own number form, as the operator would write them.
QString limitText(bool negative)
{
    return (negative ? QStringLiteral("-") : QString()) + kNines12 + localeDecimalSeparator()
           + kNines7;
}

} // namespace

EntryKind entryKindFor(int dataType)
{
    switch (dataType) {
    case SettingType::Number:
        return EntryKind::Number;
    case SettingType::Text:
        return EntryKind::FreeText;
    case SettingType::Date:
    case SettingType::Time:
    case SettingType::DateTime:
        return EntryKind::DateTime;
    case SettingType::YesNo:
        return EntryKind::YesNo;
    case SettingType::OnOff:
        return EntryKind::OnOff;
    default:
        return EntryKind::None;
    }
}

std::pair<QString, QString> yesNoCaptions(EntryKind kind)
{
    if (kind == EntryKind::OnOff) {
        return {QStringLiteral("Off"), QStringLiteral("On")};
    }
    return {QStringLiteral("No"), QStringLiteral("Yes")};
}

QString localeDecimalSeparator()
{
    const QString sample = QLocale().toString(3.45);
    if (sample.contains(u'.')) {
        return QStringLiteral(".");
    }
    if (sample.contains(u',')) {
        return QStringLiteral(",");
    }
    return QStringLiteral(".");
}

Decimal absoluteMaximum()
{
    static const Decimal max(std::string("999999999999.9999999"));
    return max;
}

Decimal absoluteMinimum()
{
    return -absoluteMaximum();
}

QString absoluteMaximumText()
{
    return limitText(false);
}

QString absoluteMinimumText()
{
    return limitText(true);
}

QString withLineBreaks(QString text)
{
    text.replace(QStringLiteral("$NewLine$"), QStringLiteral("\r\n"));
    return text;
}

NumberEntryCheck checkNumberEntry(const QString &entry, const Value &recommendedLow,
                                  const Value &recommendedHigh)
{
    NumberEntryCheck check;
    const std::optional<Decimal> number = parseDecimal(entry);
    if (!number) {
        check.refusal = NumberEntryCheck::Refusal::NotNumeric;
        return check;
    }
    const QString shown = entry.trimmed();
    if (*number > absoluteMaximum()) {
        check.refusal = NumberEntryCheck::Refusal::AboveMaximum;
        check.message = fillPlaceholders(
            QStringLiteral("The new value ($NewValue$) is greater than the maximum value ($Max$)."),
            {{QStringLiteral("NewValue"), shown}, {QStringLiteral("Max"), absoluteMaximumText()}});
        return check;
    }
    if (*number < absoluteMinimum()) {
        check.refusal = NumberEntryCheck::Refusal::BelowMinimum;
        check.message = fillPlaceholders(
            QStringLiteral("The new value ($NewValue$) is less than the minimum value ($Min$)."),
            {{QStringLiteral("NewValue"), shown}, {QStringLiteral("Min"), absoluteMinimumText()}});
        return check;
    }
    const auto limit = [](const Value &v) -> std::optional<Decimal> {
        return v.isNumeric() ? v.toDecimal() : std::nullopt;
    };
    if (const auto low = limit(recommendedLow); low && *number < *low) {
        check.questions << withLineBreaks(fillPlaceholders(
            QStringLiteral("The new value ($NewValue$) is less than the recommended minimum value "
                           "($Recommended$).$NewLine$$NewLine$Are you sure you want to make this "
                           "change?"),
            {{QStringLiteral("NewValue"), shown},
             {QStringLiteral("Recommended"), recommendedLow.toText()}}));
    }
    if (const auto high = limit(recommendedHigh); high && *number > *high) {
        check.questions << withLineBreaks(fillPlaceholders(
            QStringLiteral("The new value ($NewValue$) is greater than the recommended maximum "
                           "value ($Recommended$).$NewLine$$NewLine$Are you sure you want to make "
                           "this change?"),
            {{QStringLiteral("NewValue"), shown},
             {QStringLiteral("Recommended"), recommendedHigh.toText()}}));
    }
    return check;
}

bool isDateEntry(const QString &entry)
{
    return parseDateText(entry.trimmed()).has_value();
}

std::optional<Value> valueToWrite(EntryKind kind, const QString &entry)
{
    switch (kind) {
    case EntryKind::FreeText:
        return Value(entry);
    case EntryKind::DateTime: {
        const std::optional<QDateTime> date = parseDateText(entry.trimmed());
        if (!date) {
            return std::nullopt;
        }
        return Value(*date);
    }
    case EntryKind::Number: {
        const std::optional<Decimal> number = parseDecimal(entry);
        if (!number) {
            return std::nullopt;
        }
        const Decimal whole = boost::multiprecision::trunc(*number);
        if (whole == *number && boost::multiprecision::abs(whole) < Decimal("9e15")) {
            return Value(whole.convert_to<qint64>());
        }
        const double asDouble = number->convert_to<double>();
        if (Value(asDouble).toDecimal() == number) {
            return Value(asDouble);
        }
        return Value(entry.trimmed());
    }
    case EntryKind::YesNo:
    case EntryKind::OnOff:
    case EntryKind::None:
        break;
    }
    return std::nullopt;
}

EntryReading readEntry(int dataType, const QString &entry)
{
    if (entry.trimmed().isEmpty()) {
        return {};
    }
    const QString readsAs = QStringLiteral("reads as ");
    switch (dataType) {
    case SettingType::Number: {
        const std::optional<Decimal> number = parseDecimal(entry);
        if (!number) {
            return {false, QStringLiteral("not a number")};
        }
        if (*number > absoluteMaximum()) {
            return {false, u"greater than the maximum value (" + absoluteMaximumText() + u')'};
        }
        if (*number < absoluteMinimum()) {
            return {false, u"less than the minimum value (" + absoluteMinimumText() + u')'};
        }
        return {true, readsAs + decimalText(*number)};
    }
    case 0:
    case SettingType::Date:
    case SettingType::Time:
    case SettingType::DateTime: {
        const std::optional<QDateTime> when = parseDateText(entry.trimmed());
        if (!when) {
            return {false, dataType == SettingType::Time ? QStringLiteral("not a time")
                                                         : QStringLiteral("not a date")};
        }
        const QLocale locale;
        const QString date = locale.toString(when->date(), QStringLiteral("d MMMM yyyy"));
        const QString time = locale.toString(when->time(), QStringLiteral("HH:mm:ss"));
        const bool hasDate = when->date() != zeroDate().date();
        const bool hasTime = entry.contains(u':') || when->time() != QTime(0, 0);
        switch (dataType) {
        case SettingType::Date:
            return {true, readsAs + date};
        case SettingType::Time:
            return {true, readsAs + time};
        case SettingType::DateTime:
            return {true, readsAs + date + u' ' + time};
        default:
            return {true, readsAs
                              + (hasDate && hasTime ? date + u' ' + time
                                 : hasDate          ? date
                                                    : time)};
        }
    }
    default:
        return {};
    }
}

QString accessDeniedText(const QString &userName)
{
    return fillPlaceholders(
        QStringLiteral("Access denied. Account '$username$' does not have privileges."),
        {{QStringLiteral("username"), userName}});
}

QString accessDeniedProblem(const QString &code, const QString &userName)
{
    return code + u": Account '" + userName + u"' does not have privileges.";
}

} // namespace olvex
