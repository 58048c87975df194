#include "common/datetime.h"
#include "common/error.h"

#include <gtest/gtest.h>

#include <QLocale>

using namespace olvex;

namespace {

QDateTime at(int y, int mo, int d, int h, int mi, int s, int ms = 0)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s, ms));
}

TEST(DateTime, DateTimeTextFollowsTheLocalesClock)
{
    const QLocale us(QLocale::English, QLocale::UnitedStates);
    const QLocale de(QLocale::German, QLocale::Germany);
    const QDateTime morning = at(2024, 5, 1, 9, 5, 0);
    const std::tuple<QLocale, QDateTime, int, const char *> cases[] = {
        {us, morning, 12, "5/1/2024 9 AM"}, // 12-hour, one-digit hours
        {us, at(2024, 5, 1, 21, 30, 15), 2, "9 PM"},
        {us, morning, 0, "9:05 AM"},                    // medium time, leading zero dropped
        {us, at(2024, 5, 1, 12, 15, 0), 0, "12:15 PM"}, // no leading zero to drop
        {us, morning, 1, "9:05:00 AM"},                 // long time, no time zone
        {us, morning, 11, "5/1/2024 9:05:00 AM"},
        {us, morning, -1, "9:05 AM"},  // short time
        {us, morning, -2, "09:05 AM"}, // medium time as it stands (not automatic)
        {us, morning, 13, "5/1/2024"},
        {de, morning, 12, "01.05.2024 09"}, // German writes two-digit hours: "HH"
        {de, morning, 0, "09:05"},          // short time on a 24-hour locale
        {de, morning, 1, "09:05:00"},
    };
    for (const auto &[locale, value, style, expected] : cases) {
        QLocale::setDefault(locale);
        EXPECT_EQ(DateTimeText(value, style), QString::fromLatin1(expected))
            << locale.name().toStdString() << " style " << style;
    }
    QLocale::setDefault(us); // the suite's locale
}

// Where a locale's long time carries a zone in brackets ("H:mm:ss (t)" in es_ES, "[t]" in zh_TW),
// the zone goes with its brackets: no empty pair and no trailing blank is left in any locale.
TEST(DateTime, LongTimeLeavesNothingOfTheZone)
{
    const QLocale us(QLocale::English, QLocale::UnitedStates);
    const QDateTime morning = at(2024, 1, 5, 9, 5, 7);
    QLocale::setDefault(QLocale(QLocale::Spanish, QLocale::Spain));
    EXPECT_EQ(DateTimeText(morning, 1), QStringLiteral("9:05:07"));
    EXPECT_EQ(DateTimeText(morning, 11), QStringLiteral("5/1/2024 9:05:07"));
    const QList<QLocale> all
        = QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyTerritory);
    for (const QLocale &locale : all) {
        QLocale::setDefault(locale);
        for (const int style : {1, 11}) {
            QString text = DateTimeText(morning, style);
            EXPECT_FALSE(text.endsWith(u' ') || text.back().isSpace())
                << locale.name().toStdString() << " style " << style;
            text.remove(u' ');
            EXPECT_FALSE(text.contains(u"()") || text.contains(u"[]"))
                << locale.name().toStdString() << " style " << style << ": "
                << DateTimeText(morning, style).toStdString();
        }
    }
    QLocale::setDefault(us);
}

TEST(DateTime, DateAddWholeKeepsWholeSeconds)
{
    const std::tuple<const char *, int, QDateTime, QDateTime> cases[] = {
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
    for (const auto &[interval, number, start, expected] : cases)
        EXPECT_EQ(DateAddWhole(QString::fromLatin1(interval), number, start), expected)
            << interval << " " << number;
    EXPECT_THROW(DateAddWhole(QStringLiteral("fortnight"), 1, at(2024, 5, 1, 0, 0, 0)), Error);
}

TEST(DateTime, DayNumbers)
{
    const std::pair<double, QDateTime> cases[] = {{0.0, at(1899, 12, 30, 0, 0, 0)},
                                                  {410.0 / 1440.0, at(1899, 12, 30, 6, 50, 0)},
                                                  {45413.5, at(2024, 5, 1, 12, 0, 0)},
                                                  {-1.25, at(1899, 12, 29, 6, 0, 0)}};
    for (const auto &[day, value] : cases) {
        EXPECT_EQ(fromDayNumber(day), value) << day;
        EXPECT_DOUBLE_EQ(toDayNumber(value), day);
    }
    EXPECT_TRUE(isZeroDate(zeroDate()));
    EXPECT_FALSE(isZeroDate(at(1899, 12, 30, 0, 0, 1)));
}

TEST(DateTime, ParseDateText)
{
    const QDate zero(1899, 12, 30);
    const std::pair<const char *, std::optional<QDateTime>> cases[] = {
        {"2024-05-01", at(2024, 5, 1, 0, 0, 0)},
        {"2024/05/01 13:45:10", at(2024, 5, 1, 13, 45, 10)},
        {"5/1/2024", at(2024, 5, 1, 0, 0, 0)}, // the locale's short date
        {"5/1/24", at(2024, 5, 1, 0, 0, 0)},   // two-digit years land in 1930-2029
        {"13:30", QDateTime(zero, QTime(13, 30))},
        {"1:30 PM", QDateTime(zero, QTime(13, 30))},
        {"12:05 am", QDateTime(zero, QTime(0, 5))},
        {" 6:50 ", QDateTime(zero, QTime(6, 50))},
        {"2024-13-45", std::nullopt},
        {"2024-02-30", std::nullopt},
        {"25:00", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto &[text, expected] : cases)
        EXPECT_EQ(parseDateText(QString::fromLatin1(text)), expected) << '"' << text << '"';
}

} // namespace
