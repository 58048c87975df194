// The site store on each backend: values come back exactly, and what is not a site (or is a
// site of a newer program) is refused without being touched.
#include "testsite.h"

#include "common/error.h"
#include "host/connectiontext.h"
#include "host/schema.h"
#include "host/sqlconnection.h"
#include "host/storedvalue.h"
#include "host/storeerrors.h"

#include <QCryptographicHash>
#include <QFile>
#include <QSqlQuery>

#include <cmath>
#include <limits>

using namespace olvex;
using namespace olvex::test;

namespace {

constexpr qint32 kPid = 101100001; // 1-011-0-00-01

QList<Value> everyKind()
{
    const QDateTime local(QDate(2024, 2, 29), QTime(23, 59, 58, 123));
    return {
        Value(),
        Value::null(),
        Value(true),
        Value(false),
        Value(0),
        Value(-1),
        Value(std::numeric_limits<qint64>::max()),
        Value(std::numeric_limits<qint64>::min()),
        Value(3.0), // a double that happens to be whole stays a double
        Value(0.1),
        Value(-2.5e-300),
        Value(1.7976931348623157e308),
        Value(4.9e-324),
        Value(QStringLiteral("")),
        Value(QStringLiteral("12")), // numeric text stays text
        Value(
            QStringLiteral("O'Brien \"quoted\"; 50 \u00b0F \u00e4\u00f6\u00fc \u2603 \U0001F600")),
        Value(QStringLiteral("line one\r\nline two\ttab")),
        Value(local),
        Value(QDateTime(QDate(2024, 7, 1), QTime(12, 0), Qt::UTC)),
        Value(QDateTime(QDate(1899, 12, 30), QTime(6, 50))), // a time of day alone
        Value(QList<Value>{Value(101100001), Value(101100002), Value(101100003)}),
        Value(QList<Value>{}),
        Value(QList<Value>{Value::null(), Value(), Value(QStringLiteral("[1,\"x\"]")), Value(2.5),
                           Value(QList<Value>{Value(true), Value(local)})}),
    };
}

// Same kind and same content, down to the time zone of a date and the sign of a zero.
void expectSame(const Value &expected, const Value &actual)
{
    EXPECT_EQ(expected.debugText().toStdString(), actual.debugText().toStdString());
    EXPECT_TRUE(expected == actual) << expected.debugText().toStdString();
}

QByteArray fileDigest(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

// What a database holds, as a list of its tables, and (SQLite) the file's digest.
QStringList tablesOf(const QString &connectionText)
{
    SqlConnection sql(parseConnectionText(connectionText), false);
    QSqlQuery query = sql.prepare(
        sql.isSqlite() ? QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'"
                                        " ORDER BY name")
                       : QStringLiteral("SELECT tablename FROM pg_catalog.pg_tables"
                                        " WHERE schemaname = current_schema() ORDER BY 1"));
    sql.exec(query);
    QStringList tables;
    while (query.next()) {
        tables.append(query.value(0).toString());
    }
    return tables;
}

int errorNumberOf(const std::function<void()> &body)
{
    try {
        body();
    } catch (const Error &error) {
        return error.number();
    }
    return 0;
}

class StoreTest : public BackendTest
{
};

TEST_P(StoreTest, EveryValueKindComesBackExactly)
{
    auto store = emptySite();
    {
        Transaction t(store->sql(), SqlConnection::TransactionKind::Write);
        QSqlQuery q = store->sql().prepare(
            QStringLiteral("INSERT INTO parameters (pid, name, ptype) VALUES (?, 'Probe', 4)"));
        q.addBindValue(kPid);
        store->sql().exec(q);
        t.commit();
    }
    const QList<Value> values = everyKind();
    const Actor who{QStringLiteral("admin"), QStringLiteral("TEST"), QStringLiteral("127.0.0.1")};
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
        store->setCurrentValue(kPid, values[i], 7, who, QStringLiteral("test"));
        const LiveState live = reopened->liveState(kPid);
        expectSame(values[i], live.current.Value);
        EXPECT_EQ(live.current.Status, 7);
    }
}

TEST_P(StoreTest, NotANumberSurvivesAsNotANumber)
{
    auto store = emptySite();
    Transaction t(store->sql(), SqlConnection::TransactionKind::Write);
    QSqlQuery q = store->sql().prepare(
        QStringLiteral("INSERT INTO parameters (pid, name, ptype) VALUES (?, 'Probe', 4)"));
    q.addBindValue(kPid);
    store->sql().exec(q);
    t.commit();
    store->setAttribute(kPid, -1, Value(std::nan("")), Actor{});
    store->setAttribute(kPid, -2, Value(-std::numeric_limits<double>::infinity()), Actor{});
    const auto record = SiteStore::open(site())->parameter(kPid);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->attribute(-1)->kind(), Value::Kind::Double);
    EXPECT_TRUE(std::isnan(*record->attribute(-1)->toDouble()));
    EXPECT_EQ(*record->attribute(-2)->toDouble(), -std::numeric_limits<double>::infinity());
}

TEST_P(StoreTest, DatabaseWithOtherTablesIsNotASiteAndIsLeftAlone)
{
    {
        SqlConnection raw(parseConnectionText(site()), true);
        raw.execute(QStringLiteral("CREATE TABLE inventory (item TEXT, count INTEGER)"));
        raw.execute(QStringLiteral("INSERT INTO inventory VALUES ('filters', 12)"));
    }
    const QByteArray before = isSqlite() ? fileDigest(m_place->filePath()) : QByteArray();
    EXPECT_EQ(errorNumberOf([&] { SiteStore::open(site()); }), StoreError::NotASite);
    EXPECT_EQ(tablesOf(site()), QStringList{QStringLiteral("inventory")});
    if (isSqlite()) {
        // Not even a forced creation overwrites a file that is not a site.
        SiteInfo info;
        info.siteId = QStringLiteral("X");
        EXPECT_EQ(errorNumberOf([&] { SiteStore::create(site(), info, true); }),
                  StoreError::NotASite);
        EXPECT_EQ(fileDigest(m_place->filePath()), before);
    }
}

TEST_P(StoreTest, EmptyDatabaseIsNotASite)
{
    if (isSqlite()) {
        QFile empty(m_place->filePath());
        ASSERT_TRUE(empty.open(QIODevice::WriteOnly));
        empty.close();
    }
    EXPECT_EQ(errorNumberOf([&] { SiteStore::open(site()); }), StoreError::NotASite);
    EXPECT_TRUE(tablesOf(site()).isEmpty());
    if (isSqlite()) {
        EXPECT_EQ(QFile(m_place->filePath()).size(), 0);
    }
}

TEST_P(StoreTest, NewerSchemaIsRefusedAndLeftAsItIs)
{
    emptySite();
    m_store.reset();
    {
        SqlConnection raw(parseConnectionText(site()), false);
        raw.execute(u"UPDATE olvex_schema SET version = " + QString::number(kSchemaVersion + 1));
        raw.execute(QStringLiteral("CREATE TABLE future_things (x INTEGER)"));
    }
    const QStringList tablesBefore = tablesOf(site());
    const QByteArray before = isSqlite() ? fileDigest(m_place->filePath()) : QByteArray();

    EXPECT_EQ(errorNumberOf([&] { SiteStore::open(site()); }), StoreError::NewerSchema);
    SiteInfo info;
    info.siteId = QStringLiteral("X");
    EXPECT_EQ(errorNumberOf([&] { SiteStore::create(site(), info, true); }),
              StoreError::NewerSchema);

    EXPECT_EQ(tablesOf(site()), tablesBefore);
    if (isSqlite()) {
        EXPECT_EQ(fileDigest(m_place->filePath()), before);
    }
    SqlConnection raw(parseConnectionText(site()), false);
    EXPECT_EQ(readSchemaVersion(raw), kSchemaVersion + 1);
}

TEST_P(StoreTest, OlderSiteIsMigratedForwardKeepingItsContent)
{
    {
        SqlConnection raw(parseConnectionText(site()), true);
        createSchema(raw, 1);
        raw.execute(QStringLiteral("INSERT INTO site (id, site_id, name, created_ms)"
                                   " VALUES (1, 'OLDSITE', 'Old', 0)"));
        raw.execute(QStringLiteral(
            "INSERT INTO parameters (pid, name, ptype) VALUES (101100001, 'Kept', 4)"));
        raw.execute(QStringLiteral(
            "INSERT INTO attributes (pid, number, vkind, val) VALUES (101100001, -14, 3, '1')"));
        ASSERT_EQ(readSchemaVersion(raw), 1);
    }
    auto store = SiteStore::open(site());
    EXPECT_EQ(store->schemaVersion(), kSchemaVersion);
    EXPECT_EQ(store->siteId(), QStringLiteral("OLDSITE"));
    const auto record = store->parameter(101100001);
    ASSERT_TRUE(record);
    expectSame(Value(1), *record->attribute(-14));
    // What the later steps added is there.
    const QVariant index = store->sql().scalar(
        isSqlite() ? QStringLiteral("SELECT count(*) FROM sqlite_master"
                                    " WHERE name = 'audit_trail_by_pid'")
                   : QStringLiteral("SELECT count(*) FROM pg_indexes WHERE schemaname ="
                                    " current_schema() AND indexname = 'audit_trail_by_pid'"));
    EXPECT_EQ(index.toInt(), 1);
    SqlConnection raw(parseConnectionText(site()), false);
    EXPECT_EQ(readSchemaVersion(raw), kSchemaVersion);
}

TEST_P(StoreTest, CreateReplacesASiteOnlyWhenAsked)
{
    auto first = emptySite(QStringLiteral("FIRST"));
    first->setAlternativeState(true);
    m_store.reset();
    first.reset();

    SiteInfo info;
    info.siteId = QStringLiteral("SECOND");
    EXPECT_EQ(errorNumberOf([&] { SiteStore::create(site(), info, false); }),
              StoreError::SiteExists);
    EXPECT_EQ(SiteStore::open(site())->siteId(), QStringLiteral("FIRST"));

    auto second = SiteStore::create(site(), info, true);
    EXPECT_EQ(second->siteId(), QStringLiteral("SECOND"));
    EXPECT_FALSE(second->site().alternativeState);
}

TEST_P(StoreTest, FailedCreationLeavesTheOldSite)
{
    emptySite(QStringLiteral("KEEP"));
    m_store.reset();
    SiteInfo info;
    info.siteId = QStringLiteral("NEW");
    const int number = errorNumberOf([&] {
        SiteStore::create(site(), info, true, [](SiteStore &) {
            throw Error(42, QStringLiteral("the fill broke down"));
        });
    });
    EXPECT_EQ(number, 42);
    EXPECT_EQ(SiteStore::open(site())->siteId(), QStringLiteral("KEEP"));
}

TEST_P(StoreTest, SiteIdsThatFilesCannotCarryAreRefused)
{
    for (const QString &id : {QString(), QStringLiteral(" "), QStringLiteral("A B"),
                              QStringLiteral("A,B"), QStringLiteral("A;B")}) {
        SiteInfo info;
        info.siteId = id;
        EXPECT_EQ(errorNumberOf([&] { SiteStore::create(site(), info, false); }),
                  StoreError::InvalidRequest)
            << id.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Store, StoreTest, OLVEX_TEST_BACKENDS, backendName);

} // namespace
