// Export and import on the reference host's demo site (SQLite), with the reference service
// applying what the import queued: the round trip an operator makes.
#include "common/pid.h"
#include "das/dasservice.h"
#include "host/demosite.h"
#include "host/sitedatainterface.h"
#include "host/sitestore.h"
#include "importexport/csvline.h"
#include "importexport/importexport_test_util.h"
#include "importexport/settingsimportexport.h"
#include "support/fake_log.h"

#include <QRegularExpression>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace olvex;
using namespace olvex::testutil;

namespace {

class DemoSiteTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        store = createDemoSite(dir.filePath("site.db"));
        data = std::make_shared<SiteDataInterface>(store, HostSession{QStringLiteral("admin")});
    }

    ImportCounts importFile(QString *errorText = nullptr)
    {
        SettingsImportExport transfer(data, log);
        QString error;
        ImportCounts counts;
        EXPECT_TRUE(transfer.ImportSettings(path, error, counts)) << error.toStdString();
        if (errorText)
            *errorText = error;
        return counts;
    }

    QTemporaryDir dir;
    QString path = dir.filePath("settings.csv");
    std::shared_ptr<SiteStore> store;
    std::shared_ptr<SiteDataInterface> data;
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
};

TEST_F(DemoSiteTest, ExportThenImportChangesNothing)
{
    SettingsImportExport transfer(data, log);
    ExportCounts exported;
    ASSERT_TRUE(transfer.ExportSettings(path, exported));
    const int settings = store->counts().parametersByType.value(ParameterTypes::Setting);
    EXPECT_EQ(exported.count, settings);
    const QStringList lines = fileLines(readBytes(path));
    ASSERT_EQ(lines.size(), 3 + settings);
    EXPECT_EQ(lines[0], ";SiteID=MILLCREEK");
    EXPECT_TRUE(lines[1].startsWith(";Time="));
    EXPECT_EQ(lines[2], ";PID,UNIT,SETTING,VALUE,DEFAULT");

    const ImportCounts counts = importFile();
    EXPECT_EQ(counts.total, settings);
    EXPECT_EQ(counts.modified, 0);
    EXPECT_EQ(counts.failures, 0);
    EXPECT_EQ(counts.parseErrors, 0);
    EXPECT_EQ(counts.configErrors, 0);
    // Read-only settings and those without a value are refused by their own counts; every
    // other setting is "not changed".
    int emptyValues = 0;
    int readOnly = 0;
    for (qsizetype i = 3; i < lines.size(); ++i) {
        QString error;
        const auto fields = ParseCsvLine(lines[i], error);
        ASSERT_TRUE(fields) << error.toStdString();
        if (fields->size() == 6)
            ++readOnly;
        else if (fields->at(3).trimmed().isEmpty())
            ++emptyValues;
    }
    EXPECT_EQ(counts.readOnly, readOnly);
    EXPECT_EQ(counts.blanks, emptyValues);
    EXPECT_EQ(counts.notModified, settings - readOnly - emptyValues);
    EXPECT_GT(counts.notModified, 0);
    EXPECT_EQ(log->linesStartingWith("[CSET-0072]").size(), readOnly);
}

TEST_F(DemoSiteTest, ThreeEditedValuesAreChangedAndAudited)
{
    SettingsImportExport transfer(data, log);
    ExportCounts exported;
    ASSERT_TRUE(transfer.ExportSettings(path, exported));
    QStringList lines = fileLines(readBytes(path));

    // Three changeable whole-number settings get their value raised by one.
    const QRegularExpression number(QStringLiteral("^-?\\d+$"));
    QHash<qint32, QString> edited;
    for (qsizetype i = 3; i < lines.size() && edited.size() < 3; ++i) {
        QStringList fields = lines[i].split(u',');
        if (fields.size() != 5 || !number.match(fields[3]).hasMatch())
            continue;
        const qint32 pid = ParsePid(fields[0]);
        fields[3] = QString::number(fields[3].toLongLong() + 1);
        edited.insert(pid, fields[3]);
        lines[i] = fields.join(u',');
    }
    ASSERT_EQ(edited.size(), 3);
    writeBytes(path, settingsFile(lines));

    const ImportCounts counts = importFile();
    EXPECT_EQ(counts.modified, 3);
    EXPECT_EQ(counts.failures, 0);

    // The service applies the queued writes; the audit trail then names each change.
    DasService service(store);
    for (int step = 0; step < 100 && service.outstanding() > 0; ++step)
        service.runOnce();
    EXPECT_EQ(service.outstanding(), 0);
    QSqlQuery audit(store->sql().database());
    ASSERT_TRUE(audit.exec(
        QStringLiteral("SELECT pid, new_val, user_name FROM audit_trail WHERE attribute IS NULL")));
    QHash<qint32, QString> audited;
    while (audit.next()) {
        const qint32 pid = audit.value(0).toInt();
        if (edited.contains(pid)) {
            audited.insert(pid, audit.value(1).toString());
            EXPECT_EQ(audit.value(2).toString(), "admin");
        }
    }
    EXPECT_EQ(audited, edited);
}

} // namespace
