#include "common/decimal.h"

#include <QLocale>
#include <QRegularExpression>

namespace olvex {

namespace {

// Digits, one optional decimal point, optional exponent, optional sign: the C form.
std::optional<Decimal> parseCForm(const QString &text)
{
    static const QRegularExpression number(
        QStringLiteral(R"(^[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d{1,4})?$)"));
    if (!number.match(text).hasMatch()) {
        return std::nullopt;
    }
    try {
        return Decimal(text.toStdString());
    } catch (const std::exception &) {
        return std::nullopt;
    }
}

} // namespace

std::optional<Decimal> parseDecimal(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty()) {
        return std::nullopt;
    }
    if (auto c = parseCForm(trimmed)) {
        return c;
    }
    // The locale's form: drop its group separators, turn its decimal point into ".".
    const QLocale locale;
    QString normalised = trimmed;
    const QString group = locale.groupSeparator();
    const QString point = locale.decimalPoint();
    if (!group.isEmpty() && group != point) {
        normalised.remove(group);
    }
    if (point != u".") {
        if (normalised.contains(u'.')) {
            return std::nullopt;
        }
        normalised.replace(point, QStringLiteral("."));
    }
    normalised.replace(locale.negativeSign(), QStringLiteral("-"));
    normalised.replace(locale.positiveSign(), QStringLiteral("+"));
    return parseCForm(normalised);
}

QString decimalText(const Decimal &value)
{
    std::string s = value.str(0, std::ios_base::fixed);
    if (s.find('.') != std::string::npos) {
        while (!s.empty() && s.back() == '0') {
            s.pop_back();
        }
        if (!s.empty() && s.back() == '.') {
            s.pop_back();
        }
    }
    if (s == "-0") {
        s = "0";
    }
    QString text = QString::fromStdString(s);
    const QString point = QLocale().decimalPoint();
    if (point != u".") {
        text.replace(u'.', point);
    }
    return text;
}

} // namespace olvex
