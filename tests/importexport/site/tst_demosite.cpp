// Export and import on the reference host's demo site (SQLite): every value the real store
// gives reads back from the file as unchanged. (A value an import queues, as the service applies
// and audits it: tests/host.)
#include "common/vocabulary.h"
#include "host/demosite.h"
#include "host/sitedatainterface.h"
#include "host/sitestore.h"
#include "importexport/importexport_test_util.h"
#include "importexport/settingsimportexport.h"
#include "support/fake_log.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

using namespace olvex;
using namespace olvex::testutil;

namespace {

TEST(DemoSite, ExportedFileImportsAsUnchanged)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath("settings.csv");
    const auto store = createDemoSite(dir.filePath("site.db"));
    const auto log = std::make_shared<RecordingLog>();
    SettingsImportExport transfer(
        std::make_shared<SiteDataInterface>(store, HostSession{QStringLiteral("admin")}), log);
    QString error;
    ExportCounts exported;
    ImportCounts counts;

    ASSERT_TRUE(transfer.ExportSettings(path, exported));
    const int settings = store->counts().parametersByType.value(ParameterTypes::Setting);
    EXPECT_EQ(exported.count, settings);
    const QStringList lines = fileLines(readBytes(path));
    ASSERT_EQ(lines.size(), 3 + settings);
    EXPECT_EQ(lines[0], ";SiteID=MILLCREEK");

    // Unchanged, the file changes nothing: read-only settings and those without a value are
    // refused by their own counts, every other setting is "not changed".
    ASSERT_TRUE(transfer.ImportSettings(path, error, counts)) << error.toStdString();
    const auto readOnly = std::count_if(lines.begin(), lines.end(), [](const QString &line) {
        return line.endsWith(",Read only");
    });
    EXPECT_EQ(std::tuple(counts.total, counts.readOnly, counts.notModified + counts.blanks),
              std::tuple(settings, readOnly, settings - readOnly));
    EXPECT_EQ(counts.modified + counts.failures + counts.parseErrors + counts.configErrors, 0);
    EXPECT_GT(counts.notModified, 0);
    EXPECT_EQ(log->linesStartingWith("[CSET-0072]").size(), readOnly);
}

} // namespace
