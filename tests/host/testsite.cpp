#include "testsite.h"

#include "host/connectiontext.h"
#include "host/demosite.h"
#include "host/sqlconnection.h"

#include <QProcess>
#include <QSqlQuery>
#include <QUuid>

namespace olvex::test {

std::string backendName(const testing::TestParamInfo<Backend> &info)
{
    return info.param == Backend::Sqlite ? "Sqlite" : "Postgres";
}

void PrintTo(Backend backend, std::ostream *os)
{
    *os << (backend == Backend::Sqlite ? "SQLite" : "PostgreSQL");
}

SitePlace::SitePlace(Backend backend)
    : m_backend(backend)
{
    if (backend == Backend::Sqlite) {
        m_available = m_dir.isValid();
        m_connectionText = filePath();
        return;
    }
    m_base = qEnvironmentVariable("OLVEX_TEST_PG");
    if (m_base.isEmpty()) {
        return;
    }
    m_schema = u"olvex_t_" + QUuid::createUuid().toString(QUuid::Id128).left(16);
    SqlConnection admin(parseConnectionText(m_base), false);
    admin.execute(u"CREATE SCHEMA " + m_schema);
    m_connectionText = m_base + (m_base.contains(u'?') ? u'&' : u'?')
                       + u"options=-c%20search_path%3D" + m_schema;
    m_available = true;
}

SitePlace::~SitePlace()
{
    if (!m_schema.isEmpty()) {
        try {
            SqlConnection admin(parseConnectionText(m_base), false);
            admin.execute(u"DROP SCHEMA IF EXISTS " + m_schema + u" CASCADE");
        } catch (...) {
            // A schema left behind costs disk space, not correctness.
        }
    }
}

QString SitePlace::filePath(const QString &name) const
{
    return m_dir.filePath(name);
}

void BackendTest::SetUp()
{
    m_place = std::make_unique<SitePlace>(GetParam());
    if (!m_place->available()) {
        GTEST_SKIP() << "OLVEX_TEST_PG names no PostgreSQL database";
    }
}

void BackendTest::TearDown()
{
    m_store.reset();
    m_place.reset();
}

std::shared_ptr<SiteStore> BackendTest::demo()
{
    m_store = createDemoSite(site());
    return m_store;
}

QStringList BackendTest::rows(const QString &sql) const
{
    QSqlQuery query = m_store->sql().prepare(sql);
    m_store->sql().exec(query);
    QStringList values;
    while (query.next()) {
        values.append(query.value(0).toString());
    }
    return values;
}

qint64 BackendTest::count(const QString &from) const
{
    return rows(QStringLiteral("SELECT count(*) FROM ") + from).value(0).toLongLong();
}

std::shared_ptr<SiteStore> BackendTest::emptySite(const QString &siteId)
{
    SiteInfo info;
    info.siteId = siteId;
    info.name = QStringLiteral("Test site");
    m_store = SiteStore::create(site(), info, false);
    return m_store;
}

Error errorOf(const std::function<void()> &body)
{
    try {
        body();
    } catch (const Error &error) {
        return error;
    }
    return Error(0, QString());
}

ProgramRun runProgram(const QString &program, const QStringList &arguments, int timeoutMs)
{
    QProcess process;
    process.start(program, arguments);
    ProgramRun run;
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

} // namespace olvex::test
