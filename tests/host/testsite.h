#pragma once

#include "common/error.h"
#include "host/sitestore.h"

#include <gtest/gtest.h>

#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <string>

namespace olvex::test {

enum class Backend { Sqlite, Postgres };

std::string backendName(const testing::TestParamInfo<Backend> &info);
void PrintTo(Backend backend, std::ostream *os);

// The backends this test program runs its store cases on.
#ifdef OLVEX_TEST_POSTGRES
#define OLVEX_TEST_BACKENDS ::testing::Values(::olvex::test::Backend::Postgres)
#else
#define OLVEX_TEST_BACKENDS ::testing::Values(::olvex::test::Backend::Sqlite)
#endif

// Where one test keeps its site: a file in a fresh temporary folder, or a fresh schema of the
// OLVEX_TEST_PG database that is dropped again at the end. Without OLVEX_TEST_PG a PostgreSQL
// place is not available and the test skips itself.
class SitePlace
{
public:
    explicit SitePlace(Backend backend);
    ~SitePlace();
    SitePlace(const SitePlace &) = delete;
    SitePlace &operator=(const SitePlace &) = delete;

    bool available() const { return m_available; }
    Backend backend() const { return m_backend; }
    QString connectionText() const { return m_connectionText; }
    // SQLite: the site's file; another file next to it for name.
    QString filePath(const QString &name = QStringLiteral("site.db")) const;

private:
    Backend m_backend;
    bool m_available = false;
    QTemporaryDir m_dir;
    QString m_connectionText;
    QString m_schema;
    QString m_base;
};

// Base of the store cases: a place per test, and the demo site on demand.
class BackendTest : public testing::TestWithParam<Backend>
{
protected:
    void SetUp() override;
    void TearDown() override;

    QString site() const { return m_place->connectionText(); }
    bool isSqlite() const { return GetParam() == Backend::Sqlite; }
    // Creates the demo site at the place and keeps the store open.
    std::shared_ptr<SiteStore> demo();
    // An empty site with the given id.
    std::shared_ptr<SiteStore> emptySite(const QString &siteId = QStringLiteral("TEST"));
    // The first column of each row the query gives, as text; the count of rows of "FROM from".
    QStringList rows(const QString &sql) const;
    qint64 count(const QString &from) const;

    std::unique_ptr<SitePlace> m_place;
    std::shared_ptr<SiteStore> m_store;
};

// Runs a program to its end; returns its exit code (-1 when it did not finish) and what it
// wrote.
struct ProgramRun
{
    int exitCode = -1;
    QString out;
    QString err;
};
// What body threw; number 0 when it threw nothing.
Error errorOf(const std::function<void()> &body);

ProgramRun runProgram(const QString &program, const QStringList &arguments, int timeoutMs = 60000);

} // namespace olvex::test
