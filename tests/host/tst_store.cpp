// The site store on each backend: values come back exactly, and what is not a site (or is a
// site of a newer program) is refused without being touched.
#include "testsite.h"

#include "common/error.h"
#include "host/commandqueue.h"
#include "host/connectiontext.h"
#include "host/schema.h"
#include "host/sqlconnection.h"
#include "host/storeerrors.h"

#include <QCryptographicHash>
#include <QFile>
#include <QSqlQuery>

#include <cmath>
#include <limits>

using namespace olvex;
using namespace olvex::test;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qint32 kPid = 101100001; // 1-011-0-00-01

// Whole doubles stay doubles, numeric text stays text, 1899-12-30 is a time of day alone.
QList<Value> everyKind()
{
    const QDateTime local(QDate(2024, 2, 29), QTime(23, 59, 58, 123));
    using Limits = std::numeric_limits<qint64>;
    return QList<Value>()
           << Value() << Value::null() << Value(true) << Value(false) << Value(0) << Value(-1)
           << Value(Limits::max()) << Value(Limits::min()) << Value(3.0) << Value(0.1)
           << Value(-0.0) << Value(-2.5e-300) << Value(1.7976931348623157e308) << Value(4.9e-324)
           << Value(std::nan("")) << Value(-std::numeric_limits<double>::infinity()) << Value(u""_s)
           << Value(u"12"_s)
           << Value(u"O'Brien \"quoted\"; 50 \u00b0F \u00e4\u00f6\u00fc \u2603 \U0001F600"_s)
           << Value(u"line one\r\nline two\ttab"_s) << Value(local)
           << Value(QDateTime(QDate(2024, 7, 1), QTime(12, 0), Qt::UTC))
           << Value(QDateTime(QDate(1899, 12, 30), QTime(6, 50)))
           << Value(QList<Value>{Value(101100001), Value(101100002), Value(101100003)})
           << Value(QList<Value>{})
           << Value(QList<Value>{Value::null(), Value(), Value(u"[1,\"x\"]"_s), Value(2.5),
                                 Value(QList<Value>{Value(true), Value(local)})});
}

// Same kind and same content, down to the time zone of a date and the sign of a zero (the text
// alone for what does not even equal itself: not-a-number).
void expectSame(const Value &expected, const Value &actual)
{
    EXPECT_EQ(expected.debugText().toStdString(), actual.debugText().toStdString());
    if (expected == expected) {
        EXPECT_TRUE(expected == actual) << expected.debugText().toStdString();
    }
}

// What a database holds: its tables, its schema version and, for SQLite, the file's digest.
QStringList contentOf(const SitePlace &place)
{
    SqlConnection sql(parseConnectionText(place.connectionText()), false);
    QSqlQuery query = sql.prepare(
        sql.isSqlite() ? u"SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name"_s
                       : u"SELECT tablename FROM pg_catalog.pg_tables"
                         u" WHERE schemaname = current_schema() ORDER BY 1"_s);
    sql.exec(query);
    QStringList content;
    while (query.next()) {
        content.append(query.value(0).toString());
    }
    if (content.contains(u"olvex_schema"_s)) {
        content.append(QString::number(readSchemaVersion(sql)));
    }
    if (sql.isSqlite()) {
        QFile file(place.filePath());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        content.append(QString::fromLatin1(
            QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256).toHex()));
    }
    return content;
}

SiteInfo siteInfo(const QString &siteId)
{
    SiteInfo info;
    info.siteId = siteId;
    return info;
}

using StoreTest = BackendTest;

TEST_P(StoreTest, EveryValueKindComesBackExactly)
{
    auto store = emptySite();
    {
        Transaction t(store->sql(), SqlConnection::TransactionKind::Write);
        QSqlQuery q = store->sql().prepare(
            u"INSERT INTO parameters (pid, name, ptype) VALUES (?, 'Probe', 4)"_s);
        q.addBindValue(kPid);
        store->sql().exec(q);
        t.commit();
    }
    const QList<Value> values = everyKind();
    const Actor who{u"admin"_s, u"TEST"_s, u"127.0.0.1"_s};
    for (int i = 0; i < values.size(); ++i) {
        store->setAttribute(kPid, -500 - i, values[i], who);
    }
    // Read back through a connection of its own: nothing may come from a cache.
    auto reopened = SiteStore::open(site());
    const auto record = reopened->parameter(kPid);
    ASSERT_TRUE(record);
    const auto batch = reopened->parametersOfTypes({4});
    ASSERT_EQ(batch.size(), 1);
    for (int i = 0; i < values.size(); ++i) {
        SCOPED_TRACE(values[i].debugText().toStdString());
        ASSERT_NE(record->attribute(-500 - i), nullptr);
        expectSame(values[i], *record->attribute(-500 - i));
        expectSame(values[i], *batch.first().attribute(-500 - i));
        // Current values take the same path through another table.
        store->setCurrentValue(kPid, values[i], 7, who, u"test"_s);
        const LiveState live = reopened->liveState(kPid);
        expectSame(values[i], live.current.Value);
        EXPECT_EQ(live.current.Status, 7);
    }
}

TEST_P(StoreTest, WhatIsNotASiteOfThisProgramIsRefusedUntouched)
{
    // name, prepare, error, forcedCreationRefused (create with replace set leaves it alone too).
    const QList<std::tuple<const char *, std::function<void(SitePlace &)>, int, bool>> cases{
        {"other tables",
         [](SitePlace &place) {
             SqlConnection raw(parseConnectionText(place.connectionText()), true);
             raw.execute(u"CREATE TABLE inventory (item TEXT, count INTEGER)"_s);
             raw.execute(u"INSERT INTO inventory VALUES ('filters', 12)"_s);
         },
         // A PostgreSQL schema may hold other programs' tables beside a site.
         StoreError::NotASite, isSqlite()},
        {"empty database",
         [](SitePlace &place) {
             if (place.backend() == Backend::Sqlite) {
                 QFile empty(place.filePath());
                 ASSERT_TRUE(empty.open(QIODevice::WriteOnly));
             }
         },
         StoreError::NotASite, false},
        {"newer schema",
         [](SitePlace &place) {
             SiteStore::create(place.connectionText(), siteInfo(u"NEW"_s), false);
             SqlConnection raw(parseConnectionText(place.connectionText()), false);
             raw.execute(u"UPDATE olvex_schema SET version = "_s
                         + QString::number(kSchemaVersion + 1));
             raw.execute(u"CREATE TABLE future_things (x INTEGER)"_s);
         },
         StoreError::NewerSchema, true},
    };
    for (const auto &[name, prepare, error, forcedCreationRefused] : cases) {
        SCOPED_TRACE(name);
        SitePlace place(GetParam());
        prepare(place);
        const QStringList before = contentOf(place);
        EXPECT_EQ(errorOf([&] { SiteStore::open(place.connectionText()); }).number(), error);
        if (forcedCreationRefused) {
            EXPECT_EQ(errorOf([&] {
                          SiteStore::create(place.connectionText(), siteInfo(u"X"_s), true);
                      }).number(),
                      error);
        }
        EXPECT_EQ(contentOf(place), before);
    }
}

TEST_P(StoreTest, OlderSiteIsMigratedForwardKeepingItsContent)
{
    {
        SqlConnection raw(parseConnectionText(site()), true);
        createSchema(raw, 1);
        raw.execute(
            u"INSERT INTO site (id, site_id, name, created_ms) VALUES (1, 'OLDSITE', 'Old', 0)"_s);
        raw.execute(u"INSERT INTO parameters (pid, name, ptype) VALUES (101100001, 'Kept', 4)"_s);
        raw.execute(
            u"INSERT INTO attributes (pid, number, vkind, val) VALUES (101100001, -14, 3, '1')"_s);
        // What the service had left: a log line, an audit row, a write still queued.
        raw.execute(u"INSERT INTO message_log (logged_ms, severity, text) VALUES (0, 1, 'Old')"_s);
        raw.execute(u"INSERT INTO audit_trail (changed_ms, pid, old_vkind, new_vkind, new_val)"
                    u" VALUES (0, 101100001, 0, 3, '1')"_s);
        raw.execute(u"INSERT INTO pending_writes (pid, vkind, val, posted_ms)"
                    u" VALUES (101100001, 3, '2', 0)"_s);
        ASSERT_EQ(readSchemaVersion(raw), 1);
    }
    auto store = SiteStore::open(site());
    EXPECT_EQ(store->schemaVersion(), kSchemaVersion);
    EXPECT_EQ(store->siteId(), u"OLDSITE"_s);
    const auto record = store->parameter(101100001);
    ASSERT_TRUE(record);
    expectSame(Value(1), *record->attribute(-14));
    // What the later steps added is there, and what they replaced is gone.
    const QString indexes = u" IN ('audit_trail_by_pid', 'attributes_by_number',"
                            u" 'pending_writes_unfinished', 'command_records_unfinished',"
                            u" 'pending_writes_by_state', 'command_records_by_state')"_s;
    EXPECT_EQ(store->sql()
                  .scalar(isSqlite() ? u"SELECT count(*) FROM sqlite_master WHERE name"_s + indexes
                                     : u"SELECT count(*) FROM pg_indexes WHERE schemaname ="
                                       u" current_schema() AND indexname"_s
                                           + indexes)
                  .toInt(),
              4);
    EXPECT_EQ(store->sql().scalar(u"SELECT text FROM message_log"_s), u"Old"_s);
    const auto queued = CommandQueue(*store).claimPendingWrite(u"A"_s, 60s);
    ASSERT_TRUE(queued);
    ASSERT_TRUE(CommandQueue(*store).applyPendingWrite(*queued, u"A"_s));
    EXPECT_EQ(store->sql().scalar(u"SELECT count(*) FROM audit_trail"_s).toInt(), 2);
    EXPECT_EQ(store->sql().scalar(u"SELECT new_val FROM audit_trail ORDER BY id DESC"_s), u"2"_s)
        << "the new audit row numbered after the old one";
    const SiteStore::ListRead list = store->readList({4}, {-14});
    ASSERT_EQ(list.records.size(), 1);
    ASSERT_TRUE(list.columns.at(-14).at(0));
    expectSame(Value(1), *list.columns.at(-14).at(0));
    SqlConnection raw(parseConnectionText(site()), false);
    EXPECT_EQ(readSchemaVersion(raw), kSchemaVersion);
}

TEST_P(StoreTest, CreationReplacesASiteOnlyWhenAskedAndOnlyWhenItSucceeds)
{
    emptySite(u"FIRST"_s)->setAlternativeState(true);
    m_store.reset();
    const auto createError = [&](const QString &siteId, bool replace,
                                 const std::function<void(SiteStore &)> &fill = {}) {
        return errorOf([&] { SiteStore::create(site(), siteInfo(siteId), replace, fill); })
            .number();
    };
    // Site ids that files cannot carry.
    for (const QString &id : {QString(), u" "_s, u"A B"_s, u"A,B"_s, u"A;B"_s}) {
        EXPECT_EQ(createError(id, true), StoreError::InvalidRequest) << id.toStdString();
    }
    EXPECT_EQ(createError(u"SECOND"_s, false), StoreError::SiteExists);
    EXPECT_EQ(createError(u"NEW"_s, true, [](SiteStore &) { throw Error(42, u"broke"_s); }), 42);
    EXPECT_EQ(SiteStore::open(site())->siteId(), u"FIRST"_s);

    auto second = SiteStore::create(site(), siteInfo(u"SECOND"_s), true);
    EXPECT_EQ(second->siteId(), u"SECOND"_s);
    EXPECT_FALSE(second->site().alternativeState);
}

INSTANTIATE_TEST_SUITE_P(Store, StoreTest, OLVEX_TEST_BACKENDS, backendName);

} // namespace
