// What only an SQLite file can show: files that are not sites stay untouched, a missing site is
// not created by opening it; and the reference clock's intervals.
#include "testsite.h"

#include "host/demosite.h"
#include "host/siteclock.h"
#include "host/storeerrors.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>

using namespace olvex;
using namespace olvex::test;
using namespace Qt::StringLiterals;

namespace {

int openError(const QString &text)
{
    return errorOf([&] { SiteStore::open(text); }).number();
}

TEST(SqliteSiteFile, FilesThatAreNotSitesAreRefusedUntouched)
{
    SitePlace place(Backend::Sqlite);
    const QList<std::pair<QString, QByteArray>> cases{
        {u"passwd"_s, "root:x:0:0:root:/root:/bin/bash\n"},
        {u"export.csv"_s, ";SiteID=MILLCREEK\r\n;PID,UNIT,SETTING,VALUE,DEFAULT\r\n"},
        {u"short"_s, "SQLite"},
        {u"binary"_s, QByteArray(4096, '\xff')},
    };
    for (const auto &[name, content] : cases) {
        const QString path = place.filePath(name);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        EXPECT_EQ(openError(path), StoreError::NotASite) << name.toStdString();
        EXPECT_EQ(openError(u"sqlite:"_s + path), StoreError::NotASite) << name.toStdString();
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), content) << name.toStdString();
    }
    EXPECT_EQ(openError(place.filePath(QString())), StoreError::NotASite) << "a folder";
    EXPECT_EQ(QDir(place.filePath(QString())).entryList(QDir::Files).size(), cases.size())
        << "no journal or lock files were left beside them";
}

TEST(SqliteSiteFile, NeitherOpeningNorABrokenCreationLeavesFilesAndASiteIsDurable)
{
    SitePlace place(Backend::Sqlite);
    const QString inMissingFolder = place.filePath(u"no/such/folder/site.db"_s);
    EXPECT_EQ(openError(place.filePath(u"missing.db"_s)), StoreError::NoSite);
    EXPECT_EQ(openError(inMissingFolder), StoreError::NoSite);

    SiteInfo info;
    info.siteId = u"X"_s;
    const Error missingFolder = errorOf([&] { SiteStore::create(inMissingFolder, info, false); });
    EXPECT_EQ(missingFolder.number(), StoreError::CannotConnect);
    EXPECT_TRUE(missingFolder.description().contains(u"folder does not exist"));
    EXPECT_EQ(errorOf([&] {
                  SiteStore::create(place.filePath(), info, false,
                                    [](SiteStore &) { throw Error(1, u"broken"_s); });
              }).number(),
              1);
    EXPECT_TRUE(QDir(place.filePath(QString()))
                    .entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot)
                    .isEmpty());

    // A site that is created is written with write-ahead logging, fully synchronised.
    auto store = createDemoSite(place.filePath());
    EXPECT_EQ(store->sql().scalar(u"PRAGMA journal_mode"_s).toString(), u"wal"_s);
    EXPECT_EQ(store->sql().scalar(u"PRAGMA synchronous"_s).toInt(), 2); // FULL
    EXPECT_EQ(store->sql().scalar(u"PRAGMA foreign_keys"_s).toInt(), 1);
}

TEST(SiteClockIntervals, DueTimesRepeatAndStop)
{
    SiteClock clock;
    EXPECT_LE(qAbs(clock.Now().secsTo(QDateTime::currentDateTime())), 2);

    IntervalSpec once;
    once.name = u"HoldInterval"_s;
    once.firstDue = QDateTime::currentDateTime().addSecs(-5); // already due
    once.repeat = false;
    IntervalPtr single = clock.CreateInterval(once);
    EXPECT_EQ(single->Name(), u"HoldInterval"_s);
    QSignalSpy singleSpy(single.get(), &Interval::IntervalExpired);

    IntervalSpec every = once;
    every.repeat = true;
    every.periodSeconds = 60;
    IntervalPtr repeating = clock.CreateInterval(every);
    QSignalSpy repeatingSpy(repeating.get(), &Interval::IntervalExpired);

    ASSERT_TRUE(singleSpy.wait(5000));
    ASSERT_TRUE(!repeatingSpy.isEmpty() || repeatingSpy.wait(5000));
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
