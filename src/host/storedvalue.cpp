#include "host/storedvalue.h"

#include "common/error.h"
#include "host/storeerrors.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLocale>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace olvex {

namespace {

constexpr int kKindCount = 8;

[[noreturn]] void damaged(int kind, const QString &text)
{
    QString shown = text.left(40);
    throw Error(StoreError::SqlFailed, u"site store: unreadable stored value (kind "
                                           + QString::number(kind) + u", \"" + shown + u"\")");
}

// Two-digit and four-digit fields of the fixed date-time layout, without the cost of a
// general parser: reading every current value of a large site goes through here.
char16_t codeUnit(QChar c)
{
    return c.unicode();
}
char16_t codeUnit(char c)
{
    return static_cast<unsigned char>(c);
}

template<class Text>
int digits(const Text &text, qsizetype at, qsizetype count, bool &ok)
{
    int n = 0;
    for (qsizetype i = at; i < at + count; ++i) {
        const char16_t c = codeUnit(text[i]);
        if (c < u'0' || c > u'9') {
            ok = false;
            return 0;
        }
        n = n * 10 + (c - u'0');
    }
    return n;
}

// The calendar fields of "yyyy-MM-ddTHH:mm:ss.zzz[Z]"; nullopt for any other text.
struct DateTimeFields
{
    int year, month, day, hour, minute, second, ms;
    bool utc;

    // Fields out of range make no valid date-time and are not packed (they could collide).
    bool packable() const
    {
        return month <= 12 && day <= 31 && hour <= 23 && minute <= 59 && second <= 59;
    }
    quint64 packed() const
    {
        return ((((((quint64(year) * 13 + quint64(month)) * 32 + quint64(day)) * 24 + quint64(hour))
                      * 60
                  + quint64(minute))
                     * 60
                 + quint64(second))
                    * 1000
                + quint64(ms))
                   * 2
               + (utc ? 1 : 0);
    }
    // offsetChanges: per Julian day, whether the UTC offset changes that day (a batch's cache;
    // null: always look).
    QDateTime toDateTime(QHash<qint64, bool> *offsetChanges = nullptr) const
    {
        const QDate date(year, month, day);
        const QTime time(hour, minute, second, ms);
        if (!date.isValid() || !time.isValid()) {
            return QDateTime();
        }
        if (utc) {
            return QDateTime(date, time, Qt::UTC);
        }
        // A wall-clock time that comes twice (the hour the clocks go back) is the first of the
        // two, always: left to the C library, the choice depends on the times it converted
        // before. The second one is standard time and reads the same an hour earlier.
        const QDateTime local(date, time);
        if (local.isDaylightTime() || !mayRepeat(date, offsetChanges)) {
            return local;
        }
        const QDateTime hourBefore = local.addSecs(-3600);
        return hourBefore.time() == time && hourBefore.date() == date ? hourBefore : local;
    }
    // Whether the clocks may go back on date: only on a day whose UTC offset changes.
    static bool mayRepeat(const QDate &date, QHash<qint64, bool> *offsetChanges)
    {
        const auto changes = [&date] {
            return QDateTime(date, QTime(0, 0)).offsetFromUtc()
                   != QDateTime(date.addDays(1), QTime(0, 0)).offsetFromUtc();
        };
        if (!offsetChanges) {
            return changes();
        }
        auto it = offsetChanges->constFind(date.toJulianDay());
        if (it == offsetChanges->constEnd()) {
            it = offsetChanges->insert(date.toJulianDay(), changes());
        }
        return *it;
    }
};

template<class Text>
std::optional<DateTimeFields> dateTimeFields(const Text &v, qsizetype size)
{
    if (size != 23 && size != 24) {
        return std::nullopt;
    }
    bool ok = true;
    DateTimeFields f{};
    f.year = digits(v, 0, 4, ok);
    f.month = digits(v, 5, 2, ok);
    f.day = digits(v, 8, 2, ok);
    f.hour = digits(v, 11, 2, ok);
    f.minute = digits(v, 14, 2, ok);
    f.second = digits(v, 17, 2, ok);
    f.ms = digits(v, 20, 3, ok);
    f.utc = size == 24;
    if (!ok) {
        return std::nullopt;
    }
    return f;
}

QString doubleToText(double d)
{
    if (std::isnan(d)) {
        return QStringLiteral("nan");
    }
    if (std::isinf(d)) {
        return d > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    }
    return QString::number(d, 'g', QLocale::FloatingPointShortest);
}

// The stored form of an ordinary double ("-12.5", "1.25e-07") read with std::from_chars, which
// is several times faster than QString::toDouble and rounds the same (both exactly). Anything
// else, and results where the two could disagree on what counts as out of range, is left to Qt.
// The text as UTF-8 bytes.
std::optional<double> plainDoubleFromUtf8(QByteArrayView text)
{
    if (text.isEmpty() || text.size() > 32 || text.front() == '+') {
        return std::nullopt;
    }
    for (const char c : text) {
        const bool allowed
            = (c >= '0' && c <= '9') || c == '.' || c == 'e' || c == 'E' || c == '+' || c == '-';
        if (!allowed) {
            return std::nullopt;
        }
    }
    double d = 0;
    const char *end = text.data() + text.size();
    const auto [ptr, ec] = std::from_chars(text.data(), end, d);
    if (ec != std::errc() || ptr != end || !(std::isnormal(d) || d == 0)) {
        return std::nullopt;
    }
    return d;
}

// plainDoubleFromUtf8 of a QString: only ASCII can be a plain double.
std::optional<double> plainDoubleFromText(const QString &text)
{
    std::array<char, 32> buf;
    if (text.size() > qsizetype(buf.size())) {
        return std::nullopt;
    }
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c >= 0x80) {
            return std::nullopt;
        }
        buf[size_t(i)] = char(c);
    }
    return plainDoubleFromUtf8(QByteArrayView(buf.data(), text.size()));
}

std::optional<double> doubleFromText(const QString &text)
{
    if (text == u"nan") {
        return std::nan("");
    }
    if (text == u"inf") {
        return HUGE_VAL;
    }
    if (text == u"-inf") {
        return -HUGE_VAL;
    }
    if (const std::optional<double> plain = plainDoubleFromText(text)) {
        return plain;
    }
    bool ok = false;
    const double d = text.toDouble(&ok);
    return ok ? std::optional<double>(d) : std::nullopt;
}

QString encodeArray(const Value &value)
{
    QJsonArray array;
    for (const Value &element : value.toArray()) {
        const StoredValue stored = encodeValue(element);
        QJsonArray pair{stored.kind};
        if (!stored.text.isNull()) {
            pair.append(stored.text.toString());
        }
        array.append(pair);
    }
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

Value decodeArray(const QString &text)
{
    QJsonParseError error{};
    const QJsonDocument doc = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !doc.isArray()) {
        damaged(int(Value::Kind::Array), text);
    }
    QList<Value> elements;
    const QJsonArray array = doc.array();
    elements.reserve(array.size());
    for (const QJsonValue &item : array) {
        const QJsonArray pair = item.toArray();
        if (pair.isEmpty() || !pair.at(0).isDouble()) {
            damaged(int(Value::Kind::Array), text);
        }
        const int kind = pair.at(0).toInt();
        elements.append(pair.size() > 1 ? decodeValue(kind, pair.at(1).toString())
                                        : decodeValue(kind, QString()));
    }
    return Value(std::move(elements));
}

} // namespace

QString dateTimeText(const QDateTime &value)
{
    if (!value.isValid()) {
        return QString();
    }
    QString text
        = value.date().toString(u"yyyy-MM-dd") + u'T' + value.time().toString(u"HH:mm:ss.zzz");
    if (value.timeSpec() == Qt::UTC) {
        text += u'Z';
    }
    return text;
}

QDateTime dateTimeFromText(const QString &text)
{
    // yyyy-MM-ddTHH:mm:ss.zzz[Z]
    const QStringView v(text);
    const auto fields = dateTimeFields(v, v.size());
    return fields ? fields->toDateTime() : QDateTime();
}

QDateTime DateTimeTexts::fromUtf8(QByteArrayView text)
{
    if (text.size() == m_lastSize && std::equal(text.cbegin(), text.cend(), m_lastText.cbegin())) {
        return m_last;
    }
    const auto fields = dateTimeFields(text, text.size());
    if (!fields || !fields->packable()) {
        return fields ? fields->toDateTime() : QDateTime();
    }
    const quint64 key = fields->packed();
    auto it = m_seen.constFind(key);
    if (it == m_seen.constEnd()) {
        it = m_seen.insert(key, fields->toDateTime(&m_offsetChanges));
    }
    // A packable text is 23 or 24 bytes long.
    std::copy(text.cbegin(), text.cend(), m_lastText.begin());
    m_lastSize = text.size();
    m_last = *it;
    return m_last;
}

StoredValue encodeValue(const Value &value)
{
    StoredValue stored;
    stored.kind = int(value.kind());
    switch (value.kind()) {
    case Value::Kind::Empty:
    case Value::Kind::Null:
        stored.text = QVariant(QMetaType(QMetaType::QString));
        break;
    case Value::Kind::Boolean:
        stored.text = value.isTrue() ? QStringLiteral("1") : QStringLiteral("0");
        break;
    case Value::Kind::Integer:
        stored.text = QString::number(*value.toInteger());
        break;
    case Value::Kind::Double:
        stored.text = doubleToText(*value.toDouble());
        break;
    case Value::Kind::Text:
        stored.text = value.toText();
        break;
    case Value::Kind::DateTime:
        stored.text = dateTimeText(*value.toDateTime());
        break;
    case Value::Kind::Array:
        stored.text = encodeArray(value);
        break;
    }
    return stored;
}

Value decodeValue(int kind, const QString &text)
{
    switch (kind) {
    case int(Value::Kind::Empty):
        return Value();
    case int(Value::Kind::Null):
        return Value::null();
    case int(Value::Kind::Boolean):
        return Value(text == u"1");
    case int(Value::Kind::Integer): {
        bool ok = false;
        const qint64 n = text.toLongLong(&ok);
        if (!ok) {
            damaged(kind, text);
        }
        return Value(n);
    }
    case int(Value::Kind::Double): {
        const auto d = doubleFromText(text);
        if (!d) {
            damaged(kind, text);
        }
        return Value(*d);
    }
    case int(Value::Kind::Text):
        return Value(text);
    case int(Value::Kind::DateTime): {
        const QDateTime dt = dateTimeFromText(text);
        if (!dt.isValid() && !text.isEmpty()) {
            damaged(kind, text);
        }
        return Value(dt);
    }
    case int(Value::Kind::Array):
        return decodeArray(text);
    default:
        damaged(kind, text);
    }
    static_assert(int(Value::Kind::Array) == kKindCount - 1);
}

Value decodeValue(int kind, QByteArrayView text, DateTimeTexts &times)
{
    switch (kind) {
    case int(Value::Kind::Boolean):
        return Value(text == "1");
    case int(Value::Kind::Integer): {
        // The stored form is plain decimal digits; anything else takes the general way.
        qint64 n = 0;
        const char *end = text.data() + text.size();
        const auto [ptr, ec] = std::from_chars(text.data(), end, n);
        if (!text.isEmpty() && ec == std::errc() && ptr == end && text.front() != '+') {
            return Value(n);
        }
        break;
    }
    case int(Value::Kind::Double):
        if (const std::optional<double> d = plainDoubleFromUtf8(text)) {
            return Value(*d);
        }
        break;
    case int(Value::Kind::Text):
        return Value(QString::fromUtf8(text));
    case int(Value::Kind::DateTime): {
        const QDateTime dt = times.fromUtf8(text);
        if (!dt.isValid() && !text.isEmpty()) {
            damaged(kind, QString::fromUtf8(text));
        }
        return Value(dt);
    }
    default:
        break;
    }
    return decodeValue(kind, QString::fromUtf8(text));
}

Value decodeValue(int kind, const QVariant &text)
{
    return decodeValue(kind, text.toString());
}

qint64 toStoreTime(const QDateTime &time)
{
    return time.toMSecsSinceEpoch();
}

QDateTime fromStoreTime(const QVariant &ms)
{
    if (ms.isNull()) {
        return QDateTime();
    }
    return QDateTime::fromMSecsSinceEpoch(ms.toLongLong());
}

} // namespace olvex
