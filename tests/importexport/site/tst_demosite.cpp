// Export and import on the reference host's demo site (SQLite), with the reference service
// applying what the import queued: the round trip an operator makes.
#include "common/pid.h"
#include "das/dasservice.h"
#include "host/demosite.h"
#include "host/sitedatainterface.h"
#include "host/sitestore.h"
#include "importexport/importexport_test_util.h"
#include "importexport/settingsimportexport.h"
#include "support/fake_log.h"

#include <QRegularExpression>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

using namespace olvex;
using namespace olvex::testutil;

namespace {

TEST(DemoSite, ExportImportUnchangedThenEditedAndApplied)
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
    QStringList lines = fileLines(readBytes(path));
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

    // Three changeable whole-number settings get their value raised by one.
    const QRegularExpression number(QStringLiteral("^-?\\d+$"));
    QHash<qint32, QString> edited;
    for (qsizetype i = 3; i < lines.size() && edited.size() < 3; ++i) {
        QStringList fields = lines[i].split(u',');
        if (fields.size() != 5 || !number.match(fields[3]).hasMatch())
            continue;
        fields[3] = QString::number(fields[3].toLongLong() + 1);
        edited.insert(ParsePid(fields[0]), fields[3] + " by admin");
        lines[i] = fields.join(u',');
    }
    ASSERT_EQ(edited.size(), 3);
    writeBytes(path, settingsFile(lines));
    ASSERT_TRUE(transfer.ImportSettings(path, error, counts)) << error.toStdString();
    EXPECT_EQ(std::pair(counts.modified, counts.failures), std::pair(3, 0));

    // The service applies the queued writes; the audit trail then names each change.
    DasService service(store);
    for (int step = 0; step < 100 && service.outstanding() > 0; ++step)
        service.runOnce();
    EXPECT_EQ(service.outstanding(), 0);
    QSqlQuery audit(store->sql().database());
    ASSERT_TRUE(audit.exec(QStringLiteral(
        "SELECT pid, new_val || ' by ' || user_name FROM audit_trail WHERE attribute IS NULL")));
    QHash<qint32, QString> audited;
    while (audit.next())
        if (edited.contains(audit.value(0).toInt()))
            audited.insert(audit.value(0).toInt(), audit.value(1).toString());
    EXPECT_EQ(audited, edited);
}

} // namespace
