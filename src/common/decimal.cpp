#include "common/decimal.h"

#include <QLocale>
#include <QRegularExpression>

#include <algorithm>

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

// Group separators stand only between groups of three digits of the whole part: "1,234.5" is a
// number in en_US, "2,5" and "1,5e3" are not (a comma typed for a decimal point must not turn
// 2.5 into 25).
bool groupsInPlace(const QString &text, const QString &group, const QString &point)
{
    qsizetype end = text.indexOf(point);
    if (end < 0) {
        end = text.indexOf(QRegularExpression(QStringLiteral("[eE]")));
    }
    if (end < 0) {
        end = text.size();
    }
    if (text.indexOf(group, end) >= 0) {
        return false;
    }
    qsizetype begin = 0;
    while (begin < end && !text[begin].isDigit()) {
        ++begin;
    }
    const QStringList groups = text.mid(begin, end - begin).split(group);
    for (qsizetype i = 0; i < groups.size(); ++i) {
        const QString &digits = groups[i];
        const bool sized = i == 0 ? digits.size() >= 1 && digits.size() <= 3 : digits.size() == 3;
        if (!sized
            || std::any_of(digits.cbegin(), digits.cend(), [](QChar c) { return !c.isDigit(); })) {
            return false;
        }
    }
    return true;
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
    if (!group.isEmpty() && group != point && normalised.contains(group)) {
        if (!groupsInPlace(normalised, group, point)) {
            return std::nullopt;
        }
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
