#include "common/value.h"

#include "common/datetime.h"

#include <QLocale>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace olvex {

namespace {

// Number text as the host system reads it: the C form or the current locale's form, blanks
// around allowed; infinities and NaN are no numbers.
std::optional<double> numberFromText(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty()) {
        return std::nullopt;
    }
    bool ok = false;
    double d = QLocale::c().toDouble(trimmed, &ok);
    if (!ok) {
        d = QLocale().toDouble(trimmed, &ok);
    }
    if (!ok || !std::isfinite(d)) {
        return std::nullopt;
    }
    return d;
}

// The C form of d with up to 15 significant digits, exactly as QString::number(d, 'g', 15)
// writes it, into buf; false when only Qt's own conversion gets it right. A list of settings
// formats thousands of doubles, and std::to_chars is several times faster. The two roundings
// differ only on an exact tie at the sixteenth digit (Qt rounds it away from zero, to_chars to
// even): such a value is exactly its shortest form of sixteen digits ending in 5, and is left
// to Qt, as are zero (Qt drops the sign of -0), infinities and NaN.
bool fastDoubleText(double d, std::array<char, 32> &buf, size_t &length)
{
    if (!std::isfinite(d) || d == 0) {
        return false;
    }
    const auto shortest
        = std::to_chars(buf.data(), buf.data() + buf.size(), d, std::chars_format::scientific);
    if (shortest.ec != std::errc()) {
        return false;
    }
    int digits = 0;
    char last = 0;
    for (const char *p = buf.data(); p < shortest.ptr && *p != 'e'; ++p) {
        if (*p >= '0' && *p <= '9') {
            ++digits;
            last = *p;
        }
    }
    if (digits == 16 && last == '5') {
        return false;
    }
    const auto general
        = std::to_chars(buf.data(), buf.data() + buf.size(), d, std::chars_format::general, 15);
    if (general.ec != std::errc()) {
        return false;
    }
    length = size_t(general.ptr - buf.data());
    return true;
}

// Doubles as text: up to 15 significant digits, the locale's decimal point, "E+nn" exponents.
QString doubleText(double d)
{
    std::array<char, 32> buf;
    size_t length = 0;
    if (!fastDoubleText(d, buf, length)) {
        const QByteArray c = QString::number(d, 'g', 15).toLatin1();
        length = std::min(size_t(c.size()), buf.size());
        std::copy_n(c.constData(), length, buf.data());
    }
    QString text(qsizetype(length), Qt::Uninitialized);
    QChar *out = text.data();
    bool hasPoint = false;
    for (size_t i = 0; i < length; ++i) {
        const char c = buf[i];
        hasPoint = hasPoint || c == '.';
        out[i] = QLatin1Char(c == 'e' ? 'E' : c);
    }
    if (hasPoint) {
        const QString point = QLocale().decimalPoint();
        if (point != u".") {
            text.replace(u'.', point);
        }
    }
    return text;
}

} // namespace

Value Value::null()
{
    Value v;
    v.m_data = NullTag{};
    return v;
}

Value::Kind Value::kind() const
{
    return static_cast<Kind>(m_data.index());
}

bool Value::isNumeric() const
{
    switch (kind()) {
    case Kind::Boolean:
    case Kind::Integer:
    case Kind::Double:
        return true;
    case Kind::Text:
        return numberFromText(std::get<QString>(m_data)).has_value();
    default:
        return false;
    }
}

bool Value::isDate() const
{
    if (isDateTime()) {
        return std::get<QDateTime>(m_data).isValid();
    }
    if (isText()) {
        return parseDateText(std::get<QString>(m_data)).has_value();
    }
    return false;
}

std::optional<double> Value::toDouble() const
{
    switch (kind()) {
    case Kind::Empty:
        return 0.0;
    case Kind::Boolean:
        return std::get<bool>(m_data) ? -1.0 : 0.0;
    case Kind::Integer:
        return double(std::get<qint64>(m_data));
    case Kind::Double:
        return std::get<double>(m_data);
    case Kind::Text:
        return numberFromText(std::get<QString>(m_data));
    case Kind::DateTime:
        return toDayNumber(std::get<QDateTime>(m_data));
    default:
        return std::nullopt;
    }
}

std::optional<qint64> Value::toInteger() const
{
    if (kind() == Kind::Integer) {
        return std::get<qint64>(m_data);
    }
    const auto d = toDouble();
    if (!d) {
        return std::nullopt;
    }
    const double rounded = std::nearbyint(*d); // half to even under the default rounding mode
    if (rounded < double(std::numeric_limits<qint64>::min())
        || rounded >= double(std::numeric_limits<qint64>::max())) {
        return std::nullopt;
    }
    return qint64(rounded);
}

std::optional<Decimal> Value::toDecimal() const
{
    switch (kind()) {
    case Kind::Empty:
        return Decimal(0);
    case Kind::Boolean:
        return Decimal(std::get<bool>(m_data) ? -1 : 0);
    case Kind::Integer:
        return Decimal(std::get<qint64>(m_data));
    case Kind::Double:
        // Through 15 significant digits, as the host system converts doubles to decimals, so
        // 0.1 stays 0.1 and not its binary neighbour.
        return parseDecimal(QString::number(std::get<double>(m_data), 'g', 15));
    case Kind::Text:
        return parseDecimal(std::get<QString>(m_data));
    default:
        return std::nullopt;
    }
}

std::optional<bool> Value::toBoolean() const
{
    switch (kind()) {
    case Kind::Empty:
        return false;
    case Kind::Boolean:
        return std::get<bool>(m_data);
    case Kind::Integer:
        return std::get<qint64>(m_data) != 0;
    case Kind::Double:
        return std::get<double>(m_data) != 0.0;
    case Kind::DateTime:
        return toDayNumber(std::get<QDateTime>(m_data)) != 0.0;
    case Kind::Text: {
        const QString t = std::get<QString>(m_data).trimmed();
        if (t.compare(u"true", Qt::CaseInsensitive) == 0) {
            return true;
        }
        if (t.compare(u"false", Qt::CaseInsensitive) == 0) {
            return false;
        }
        if (const auto d = numberFromText(t)) {
            return *d != 0.0;
        }
        return std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

std::optional<QDateTime> Value::toDateTime() const
{
    switch (kind()) {
    case Kind::Empty:
        return zeroDate();
    case Kind::DateTime:
        return std::get<QDateTime>(m_data);
    case Kind::Text:
        return parseDateText(std::get<QString>(m_data));
    case Kind::Boolean:
    case Kind::Integer:
    case Kind::Double:
        return fromDayNumber(*toDouble());
    default:
        return std::nullopt;
    }
}

QString Value::toText() const
{
    switch (kind()) {
    case Kind::Boolean:
        return std::get<bool>(m_data) ? QStringLiteral("True") : QStringLiteral("False");
    case Kind::Integer:
        return QString::number(std::get<qint64>(m_data));
    case Kind::Double:
        return doubleText(std::get<double>(m_data));
    case Kind::Text:
        return std::get<QString>(m_data);
    case Kind::DateTime: {
        const QDateTime &dt = std::get<QDateTime>(m_data);
        const bool noDate = dt.date() == zeroDate().date();
        const bool noTime = dt.time() == QTime(0, 0);
        if (noDate && !noTime) {
            return formatNamed(dt, NamedFormat::LongTime);
        }
        if (noTime) {
            return formatNamed(dt, NamedFormat::ShortDate);
        }
        return formatNamed(dt, NamedFormat::ShortDate) + u' '
               + formatNamed(dt, NamedFormat::LongTime);
    }
    default:
        return {};
    }
}

QList<Value> Value::toArray() const
{
    if (isArray()) {
        return std::get<QList<Value>>(m_data);
    }
    return {};
}

bool Value::operator==(const Value &other) const
{
    return m_data == other.m_data;
}

QString Value::debugText() const
{
    switch (kind()) {
    case Kind::Empty:
        return QStringLiteral("Empty");
    case Kind::Null:
        return QStringLiteral("Null");
    case Kind::Boolean:
        return u"Boolean(" + toText() + u')';
    case Kind::Integer:
        return u"Integer(" + toText() + u')';
    case Kind::Double:
        return u"Double(" + QString::number(std::get<double>(m_data), 'g', 17) + u')';
    case Kind::Text:
        return u"Text(\"" + std::get<QString>(m_data) + u"\")";
    case Kind::DateTime:
        return u"DateTime(" + std::get<QDateTime>(m_data).toString(Qt::ISODateWithMs) + u')';
    case Kind::Array: {
        QStringList parts;
        for (const Value &v : std::get<QList<Value>>(m_data)) {
            parts.append(v.debugText());
        }
        return u"Array(" + parts.join(u", ") + u')';
    }
    }
    return {};
}

Value NullToEmpty(const Value &value)
{
    return value.isNull() ? Value() : value;
}

} // namespace olvex
