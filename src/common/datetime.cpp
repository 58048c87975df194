#include "common/datetime.h"

#include "common/error.h"
#include "common/value.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace olvex {

namespace {

constexpr qint64 kMsPerDay = 86400000;

// Date-time values are naive calendar values: arithmetic runs on a zone-free copy so that a
// daylight-saving change never shifts the wall-clock result.
QDateTime naive(const QDateTime &local)
{
    return QDateTime(local.date(), local.time(), Qt::UTC);
}

QDateTime local(const QDateTime &naiveValue)
{
    return QDateTime(naiveValue.date(), naiveValue.time());
}

// Removes Qt's time-zone token ('t' to 'tttt' outside quotes) with what only stands there for it:
// brackets around it ("(t)", "[t]") and the blank before it. The system's times carry no zone.
QString withoutTimeZone(const QString &pattern)
{
    QString out;
    bool quoted = false;
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        const QChar c = pattern.at(i);
        if (c == u'\'') {
            quoted = !quoted;
        }
        if (quoted || c != u't') {
            out.append(c);
            continue;
        }
        while (i + 1 < pattern.size() && pattern.at(i + 1) == u't') {
            ++i;
        }
        const QChar next = i + 1 < pattern.size() ? pattern.at(i + 1) : QChar();
        if (!out.isEmpty()
            && ((out.back() == u'(' && next == u')') || (out.back() == u'[' && next == u']'))) {
            out.chop(1);
            ++i;
        }
        while (!out.isEmpty() && out.back().isSpace()) {
            out.chop(1);
        }
    }
    return out.trimmed();
}

// Two-digit years are ambiguous in emission records; dates always show four.
QString withFourDigitYear(const QString &pattern)
{
    if (pattern.contains(u"yyyy") || !pattern.contains(u"yy")) {
        return pattern;
    }
    QString out = pattern;
    out.replace(QStringLiteral("yy"), QStringLiteral("yyyy"));
    return out;
}

// The formats an operator's text is read with, built once per locale.
struct ReadFormats
{
    QString localeName;
    QStringList dates;
    QStringList times;
};

const ReadFormats &readFormats()
{
    thread_local ReadFormats cached;
    const QLocale locale;
    if (cached.localeName != locale.name() || cached.dates.isEmpty()) {
        cached.localeName = locale.name();
        cached.dates = {QStringLiteral("yyyy-MM-dd"), QStringLiteral("yyyy/MM/dd"),
                        QStringLiteral("yyyy-M-d"), QStringLiteral("yyyy/M/d")};
        const QString shortDate = locale.dateFormat(QLocale::ShortFormat);
        cached.dates << withFourDigitYear(shortDate) << shortDate
                     << locale.dateFormat(QLocale::LongFormat);
        cached.dates.removeDuplicates();
        cached.times = {QStringLiteral("H:mm"),
                        QStringLiteral("H:mm:ss"),
                        QStringLiteral("H:mm:ss.z"),
                        QStringLiteral("h:mm AP"),
                        QStringLiteral("h:mm:ss AP"),
                        QStringLiteral("h AP"),
                        QStringLiteral("h:mmAP"),
                        QStringLiteral("h:mm:ssAP"),
                        withoutTimeZone(locale.timeFormat(QLocale::ShortFormat)),
                        withoutTimeZone(locale.timeFormat(QLocale::LongFormat))};
        cached.times.removeDuplicates();
    }
    return cached;
}

std::optional<QDate> readDate(const QString &text, const ReadFormats &formats)
{
    for (const QLocale &locale : {QLocale::c(), QLocale()}) {
        for (const QString &format : formats.dates) {
            QDate d = locale.toDate(text, format);
            if (!d.isValid()) {
                continue;
            }
            // A two-digit year reads into the window 1930-2029.
            if (format.contains(u"yy") && !format.contains(u"yyyy") && d.year() < 1930) {
                d = d.addYears(100);
            }
            return d;
        }
    }
    return std::nullopt;
}

std::optional<QTime> readTime(const QString &text, const ReadFormats &formats)
{
    const QString upper = text.toUpper(); // "am" reads like "AM"
    for (const QLocale &locale : {QLocale::c(), QLocale()}) {
        for (const QString &format : formats.times) {
            const QTime t = locale.toTime(upper, format);
            if (t.isValid()) {
                return t;
            }
        }
    }
    return std::nullopt;
}

// Where the time of day starts in a simplified text: at the first word holding ":", or at a
// trailing "9 AM" pair; -1 when there is no time part.
qsizetype timeStart(const QStringList &words)
{
    for (qsizetype i = 0; i < words.size(); ++i) {
        if (words[i].contains(u':')) {
            return i;
        }
    }
    if (words.size() >= 2) {
        const QLocale locale;
        const QString last = words.back().toUpper();
        const bool designator = last == u"AM" || last == u"PM"
                                || last == locale.amText().toUpper()
                                || last == locale.pmText().toUpper();
        bool number = false;
        words[words.size() - 2].toInt(&number);
        if (designator && number) {
            return words.size() - 2;
        }
    }
    return -1;
}

} // namespace

QDateTime zeroDate()
{
    return QDateTime(QDate(1899, 12, 30), QTime(0, 0));
}

bool isZeroDate(const QDateTime &value)
{
    return value.date() == QDate(1899, 12, 30) && value.time() == QTime(0, 0);
}

double toDayNumber(const QDateTime &value)
{
    const qint64 days = QDate(1899, 12, 30).daysTo(value.date());
    const double fraction = double(value.time().msecsSinceStartOfDay()) / double(kMsPerDay);
    // Before the zero date the fraction still counts forward from midnight (-1.25 is
    // 1899-12-29 06:00), as the host system's calendar has it.
    return days >= 0 ? double(days) + fraction : double(days) - fraction;
}

QDateTime fromDayNumber(double dayNumber)
{
    double whole = std::trunc(dayNumber);
    qint64 ms = std::llround(std::fabs(dayNumber - whole) * double(kMsPerDay));
    if (ms >= kMsPerDay) {
        ms -= kMsPerDay;
        whole += dayNumber >= 0 ? 1 : -1;
    }
    return QDateTime(QDate(1899, 12, 30).addDays(qint64(whole)),
                     QTime::fromMSecsSinceStartOfDay(int(ms)));
}

QString namedFormatPattern(NamedFormat format)
{
    const QLocale locale;
    switch (format) {
    case NamedFormat::LongTime:
        return withoutTimeZone(locale.timeFormat(QLocale::LongFormat));
    case NamedFormat::MediumTime:
        // Hours and minutes on the 12-hour clock with two-digit hours, on every locale.
        return QStringLiteral("hh:mm AP");
    case NamedFormat::ShortTime:
        return withoutTimeZone(locale.timeFormat(QLocale::ShortFormat));
    case NamedFormat::ShortDate:
        return withFourDigitYear(locale.dateFormat(QLocale::ShortFormat));
    }
    return {};
}

QString formatNamed(const QDateTime &value, NamedFormat format)
{
    return QLocale().toString(value, namedFormatPattern(format));
}

bool localeUses12Hour()
{
    const QString sample = formatNamed(QDateTime(QDate(2000, 1, 1), QTime(9, 5)),
                                       NamedFormat::LongTime)
                               .toUpper();
    return sample.contains(u'A') || sample.contains(u'P');
}

std::optional<QDateTime> parseDateText(const QString &text)
{
    QString t = text.simplified();
    if (t.isEmpty() || std::none_of(t.cbegin(), t.cend(), [](QChar c) { return c.isDigit(); })) {
        return std::nullopt;
    }
    // ISO "2024-05-01T13:45:10": the T separates date and time like a blank.
    const qsizetype tee = t.indexOf(u'T');
    if (tee > 0 && tee + 1 < t.size() && t[tee - 1].isDigit() && t[tee + 1].isDigit()) {
        t[tee] = u' ';
    }
    const ReadFormats &formats = readFormats();
    const QStringList words = t.split(u' ');
    const qsizetype split = timeStart(words);
    const QString datePart = words.mid(0, split < 0 ? words.size() : split).join(u' ');
    const QString timePart = split < 0 ? QString() : words.mid(split).join(u' ');

    QDate date = zeroDate().date();
    if (!datePart.isEmpty()) {
        const auto d = readDate(datePart, formats);
        if (!d) {
            return std::nullopt;
        }
        date = *d;
    }
    QTime time(0, 0);
    if (!timePart.isEmpty()) {
        const auto tm = readTime(timePart, formats);
        if (!tm) {
            return std::nullopt;
        }
        time = *tm;
    }
    return QDateTime(date, time);
}

QDateTime Now()
{
    return QDateTime::currentDateTime();
}

QString DateTimeText(const QDateTime &value, int style)
{
    QString pattern;
    bool automatic = false;
    bool twoDigitHours = false;
    switch (style) {
    case -3:
    case 1:
    case 11:
        pattern = namedFormatPattern(NamedFormat::LongTime);
        break;
    case -2:
        pattern = namedFormatPattern(NamedFormat::MediumTime);
        break;
    case -1:
        pattern = namedFormatPattern(NamedFormat::ShortTime);
        break;
    case 13:
        pattern = namedFormatPattern(NamedFormat::ShortDate);
        break;
    default: {
        automatic = true;
        const QString longTime = formatNamed(value, NamedFormat::LongTime).toUpper();
        const bool twelveHour = longTime.contains(u'A') || longTime.contains(u'P');
        twoDigitHours = Value(longTime.left(2)).isNumeric();
        if (style == 2 || style == 12) {
            if (twelveHour) {
                pattern = twoDigitHours ? QStringLiteral("hh AP") : QStringLiteral("h AP");
            } else {
                pattern = twoDigitHours ? QStringLiteral("HH") : QStringLiteral("H");
            }
        } else {
            pattern = namedFormatPattern(twelveHour ? NamedFormat::MediumTime
                                                    : NamedFormat::ShortTime);
        }
        break;
    }
    }

    QString text = QLocale().toString(value, pattern);
    if (automatic && !twoDigitHours && text.size() > 1 && Value(text.left(2)).isNumeric()
        && text.startsWith(u'0')) {
        text.remove(0, 1);
    }
    if (style == 10 || style == 11 || style == 12) {
        text = formatNamed(value, NamedFormat::ShortDate) + u' ' + text;
    }
    return text;
}

QDateTime DateAddWhole(const QString &interval, int number, const QDateTime &value)
{
    const QString unit = interval.toLower();
    const QDateTime start = naive(value);
    QDateTime sum;
    if (unit == u"yyyy") {
        sum = start.addYears(number);
    } else if (unit == u"q") {
        sum = start.addMonths(3 * number);
    } else if (unit == u"m") {
        sum = start.addMonths(number);
    } else if (unit == u"y" || unit == u"d" || unit == u"w") {
        sum = start.addDays(number);
    } else if (unit == u"ww") {
        sum = start.addDays(7 * qint64(number));
    } else if (unit == u"h") {
        sum = start.addSecs(3600 * qint64(number));
    } else if (unit == u"n") {
        sum = start.addSecs(60 * qint64(number));
    } else if (unit == u"s") {
        sum = start.addSecs(number);
    } else {
        throw Error(5, u"Invalid procedure call or argument: interval '" + interval + u'\'');
    }
    if (unit == u"s" || unit == u"n" || unit == u"h") {
        const QTime t = sum.time();
        const int seconds = t.hour() * 3600 + t.minute() * 60 + t.second();
        sum = QDateTime(sum.date(), QTime(0, 0), Qt::UTC).addSecs(seconds);
    }
    return local(sum);
}

} // namespace olvex
