// What only an SQLite file can show: files that are not sites stay untouched, a missing site is
// not created by opening it; and the reference clock's intervals.
#include "testsite.h"

#include "common/error.h"
#include "host/demosite.h"
#include "host/siteclock.h"
#include "host/storeerrors.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QSignalSpy>

using namespace olvex;
using namespace olvex::test;

namespace {

int openError(const QString &text)
{
    try {
        SiteStore::open(text);
    } catch (const Error &error) {
        return error.number();
    }
    return 0;
}

TEST(SqliteSiteFile, FilesThatAreNotSitesAreRefusedUntouched)
{
    SitePlace place(Backend::Sqlite);
    struct Case
    {
        const char *name;
        QByteArray content;
    };
    const QList<Case> cases{
        {"passwd", QByteArray("root:x:0:0:root:/root:/bin/bash\n")},
        {"export.csv", QByteArray(";SiteID=MILLCREEK\r\n;PID,UNIT,SETTING,VALUE,DEFAULT\r\n")},
        {"short", QByteArray("SQLite")},
        {"binary", QByteArray(4096, '\xff')},
    };
    for (const Case &c : cases) {
        const QString path = place.filePath(QString::fromLatin1(c.name));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(c.content);
        file.close();
        EXPECT_EQ(openError(path), StoreError::NotASite) << c.name;
        EXPECT_EQ(openError(u"sqlite:" + path), StoreError::NotASite) << c.name;
        QFile check(path);
        ASSERT_TRUE(check.open(QIODevice::ReadOnly));
        EXPECT_EQ(check.readAll(), c.content) << c.name;
    }
    EXPECT_EQ(openError(place.filePath(QString())), StoreError::NotASite) << "a folder";
    EXPECT_EQ(QDir(place.filePath(QString())).entryList(QDir::Files).size(), cases.size())
        << "no journal or lock files were left beside them";
}

TEST(SqliteSiteFile, OpeningAMissingSiteCreatesNothing)
{
    SitePlace place(Backend::Sqlite);
    const QString path = place.filePath(QStringLiteral("missing.db"));
    EXPECT_EQ(openError(path), StoreError::NoSite);
    EXPECT_EQ(openError(place.filePath(QStringLiteral("no/such/folder/site.db"))),
              StoreError::NoSite);
    EXPECT_FALSE(QFile::exists(path));

    SiteInfo info;
    info.siteId = QStringLiteral("X");
    try {
        SiteStore::create(place.filePath(QStringLiteral("no/such/folder/site.db")), info, false);
        ADD_FAILURE() << "created a site in a folder that does not exist";
    } catch (const Error &error) {
        EXPECT_EQ(error.number(), StoreError::CannotConnect);
        EXPECT_TRUE(error.description().contains(u"folder does not exist"));
    }
    EXPECT_FALSE(QDir(place.filePath(QStringLiteral("no"))).exists());
}

TEST(SqliteSiteFile, ABrokenCreationLeavesNoFilesBehind)
{
    SitePlace place(Backend::Sqlite);
    SiteInfo info;
    info.siteId = QStringLiteral("X");
    EXPECT_THROW(SiteStore::create(place.filePath(), info, false,
                                   [](SiteStore &) { throw Error(1, QStringLiteral("broken")); }),
                 Error);
    EXPECT_TRUE(QDir(place.filePath(QString())).entryList(QDir::Files).isEmpty());
}

TEST(SqliteSiteFile, SiteIsWrittenWithWriteAheadLogging)
{
    SitePlace place(Backend::Sqlite);
    auto store = createDemoSite(place.filePath());
    EXPECT_EQ(store->sql().scalar(QStringLiteral("PRAGMA journal_mode")).toString(),
              QStringLiteral("wal"));
    EXPECT_EQ(store->sql().scalar(QStringLiteral("PRAGMA synchronous")).toInt(), 2); // FULL
    EXPECT_EQ(store->sql().scalar(QStringLiteral("PRAGMA foreign_keys")).toInt(), 1);
}

TEST(SiteClockIntervals, DueTimesRepeatAndStop)
{
    SiteClock clock;
    EXPECT_LE(qAbs(clock.Now().secsTo(QDateTime::currentDateTime())), 2);

    IntervalSpec once;
    once.name = QStringLiteral("HoldInterval");
    once.firstDue = QDateTime::currentDateTime().addSecs(-5); // already due
    once.repeat = false;
    IntervalPtr single = clock.CreateInterval(once);
    EXPECT_EQ(single->Name(), QStringLiteral("HoldInterval"));
    QSignalSpy singleSpy(single.get(), &Interval::IntervalExpired);

    IntervalSpec every = once;
    every.name = QStringLiteral("Refresh Setting window");
    every.repeat = true;
    every.periodSeconds = 60;
    IntervalPtr repeating = clock.CreateInterval(every);
    QSignalSpy repeatingSpy(repeating.get(), &Interval::IntervalExpired);

    ASSERT_TRUE(singleSpy.wait(5000));
    if (repeatingSpy.isEmpty()) {
        ASSERT_TRUE(repeatingSpy.wait(5000));
    }
    auto *timerSingle = dynamic_cast<TimerInterval *>(single.get());
    auto *timerRepeating = dynamic_cast<TimerInterval *>(repeating.get());
    ASSERT_TRUE(timerSingle && timerRepeating);
    EXPECT_FALSE(timerSingle->isActive()) << "a one-shot interval ends after it fired";
    EXPECT_TRUE(timerRepeating->isActive()) << "a repeating one goes on for the next period";
    repeating->Stop();
    EXPECT_FALSE(timerRepeating->isActive());

    // Without a first due time the first expiry is a period away.
    IntervalSpec later;
    later.periodSeconds = 3600;
    IntervalPtr distant = clock.CreateInterval(later);
    QSignalSpy distantSpy(distant.get(), &Interval::IntervalExpired);
    EXPECT_FALSE(distantSpy.wait(200));
}

} // namespace
