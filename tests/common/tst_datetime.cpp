#include "common/datetime.h"
#include "common/error.h"

#include <gtest/gtest.h>

#include <QLocale>

using namespace olvex;

namespace {

// Pins a locale for one test and restores the suite's default afterwards.
class LocaleScope
{
public:
    explicit LocaleScope(const QLocale &locale) : m_saved(QLocale()) { QLocale::setDefault(locale); }
    ~LocaleScope() { QLocale::setDefault(m_saved); }

private:
    QLocale m_saved;
};

QDateTime at(int y, int mo, int d, int h, int mi, int s, int ms = 0)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s, ms));
}

TEST(DateTime, DateTimeTextOnA12HourLocale)
{
    LocaleScope scope(QLocale(QLocale::English, QLocale::UnitedStates));
    const QDateTime morning = at(2024, 5, 1, 9, 5, 0);
    const QDateTime evening = at(2024, 5, 1, 21, 30, 15);
    struct Case
    {
        QDateTime value;
        int style;
        const char *expected;
    } cases[] = {
        {morning, 12, "5/1/2024 9 AM"},  // 12-hour, one-digit hours
        {morning, 2, "9 AM"},
        {evening, 2, "9 PM"},
        {morning, 0, "9:05 AM"},         // medium time, leading zero dropped
        {evening, 0, "9:30 PM"},
        {at(2024, 5, 1, 12, 15, 0), 0, "12:15 PM"}, // no leading zero to drop
        {morning, 10, "5/1/2024 9:05 AM"},
        {morning, 1, "9:05:00 AM"},      // long time, no time zone
        {morning, 11, "5/1/2024 9:05:00 AM"},
        {morning, -1, "9:05 AM"},        // short time
        {morning, -2, "09:05 AM"},       // medium time as it stands (not automatic)
        {morning, 13, "5/1/2024"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(DateTimeText(c.value, c.style), QString::fromLatin1(c.expected))
            << "style " << c.style;
    }
}

TEST(DateTime, DateTimeTextOnA24HourLocale)
{
    LocaleScope scope(QLocale(QLocale::German, QLocale::Germany));
    const QDateTime morning = at(2024, 5, 1, 9, 5, 0);
    struct Case
    {
        int style;
        const char *expected;
    } cases[] = {
        {12, "01.05.2024 09"}, // German writes two-digit hours: "HH"
        {2, "09"},
        {0, "09:05"}, // short time on a 24-hour locale
        {1, "09:05:00"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(DateTimeText(morning, c.style), QString::fromLatin1(c.expected))
            << "style " << c.style;
    }
}

TEST(DateTime, DateAddWholeKeepsWholeSeconds)
{
    struct Case
    {
        const char *interval;
        int number;
        QDateTime start, expected;
    } cases[] = {
        {"n", 1, at(2024, 5, 1, 10, 59, 59, 600), at(2024, 5, 1, 11, 0, 59)},
        {"s", 1, at(2024, 5, 1, 23, 59, 59, 999), at(2024, 5, 2, 0, 0, 0)},
        {"h", 2, at(2024, 5, 1, 23, 0, 0, 250), at(2024, 5, 2, 1, 0, 0)},
        {"N", -90, at(2024, 5, 1, 0, 30, 0), at(2024, 4, 30, 23, 0, 0)},
        {"d", 1, at(2024, 5, 1, 10, 59, 59, 600), at(2024, 5, 2, 10, 59, 59, 600)}, // untouched
        {"m", 1, at(2024, 1, 31, 6, 0, 0), at(2024, 2, 29, 6, 0, 0)},
        {"yyyy", -1, at(2024, 2, 29, 6, 0, 0), at(2023, 2, 28, 6, 0, 0)},
        {"ww", 2, at(2024, 5, 1, 6, 0, 0), at(2024, 5, 15, 6, 0, 0)},
        {"q", 1, at(2024, 11, 30, 6, 0, 0), at(2025, 2, 28, 6, 0, 0)},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(DateAddWhole(QString::fromLatin1(c.interval), c.number, c.start), c.expected)
            << c.interval << " " << c.number;
    }
    // Many small additions never drift.
    QDateTime t = at(2024, 5, 1, 0, 0, 0, 400);
    for (int i = 0; i < 1000; ++i) {
        t = DateAddWhole(QStringLiteral("s"), 1, t);
    }
    EXPECT_EQ(t, at(2024, 5, 1, 0, 16, 40));
    EXPECT_THROW(DateAddWhole(QStringLiteral("fortnight"), 1, t), Error);
}

TEST(DateTime, DayNumbers)
{
    struct Case
    {
        double day;
        QDateTime value;
    } cases[] = {
        {0.0, at(1899, 12, 30, 0, 0, 0)},
        {410.0 / 1440.0, at(1899, 12, 30, 6, 50, 0)},
        {45413.5, at(2024, 5, 1, 12, 0, 0)},
        {-1.25, at(1899, 12, 29, 6, 0, 0)},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(fromDayNumber(c.day), c.value) << c.day;
        EXPECT_DOUBLE_EQ(toDayNumber(c.value), c.day);
    }
    EXPECT_TRUE(isZeroDate(zeroDate()));
    EXPECT_FALSE(isZeroDate(at(1899, 12, 30, 0, 0, 1)));
}

TEST(DateTime, ParseDateText)
{
    const QDate zero(1899, 12, 30);
    struct Case
    {
        const char *text;
        std::optional<QDateTime> expected;
    } cases[] = {
        {"2024-05-01", at(2024, 5, 1, 0, 0, 0)},
        {"2024/05/01 13:45:10", at(2024, 5, 1, 13, 45, 10)},
        {"2024-05-01 13:45", at(2024, 5, 1, 13, 45, 0)},
        {"2024-05-01T13:45:10", at(2024, 5, 1, 13, 45, 10)},
        {"5/1/2024", at(2024, 5, 1, 0, 0, 0)},  // the locale's short date
        {"5/1/24", at(2024, 5, 1, 0, 0, 0)},    // two-digit years land in 1930-2029
        {"13:30", QDateTime(zero, QTime(13, 30))},
        {"1:30 PM", QDateTime(zero, QTime(13, 30))},
        {"12:05 am", QDateTime(zero, QTime(0, 5))},
        {" 6:50 ", QDateTime(zero, QTime(6, 50))},
        {"2024-13-45", std::nullopt},
        {"2024-02-30", std::nullopt},
        {"25:00", std::nullopt},
        {"garbage", std::nullopt},
        {"12", std::nullopt},
        {"", std::nullopt},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(parseDateText(QString::fromLatin1(c.text)), c.expected) << '"' << c.text << '"';
    }
}

TEST(DateTime, NamedFormatsCarryNoTimeZone)
{
    for (const QLocale &locale : {QLocale(QLocale::English, QLocale::UnitedStates),
                                  QLocale(QLocale::German, QLocale::Germany),
                                  QLocale(QLocale::French, QLocale::France)}) {
        LocaleScope scope(locale);
        const QString text = formatNamed(at(2024, 5, 1, 9, 5, 7), NamedFormat::LongTime);
        EXPECT_TRUE(text.contains(QStringLiteral("05"))) << text.toStdString();
        EXPECT_FALSE(text.contains(QStringLiteral("UTC"))) << text.toStdString();
        EXPECT_EQ(text, text.trimmed());
        EXPECT_TRUE(formatNamed(at(2024, 5, 1, 9, 5, 7), NamedFormat::ShortDate)
                        .contains(QStringLiteral("2024")));
    }
}

} // namespace
