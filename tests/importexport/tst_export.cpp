#include "importexport/settingsimportexport.h"

#include "common/datetime.h"
#include "importexport_test_util.h"
#include "support/fake_data_interface.h"
#include "support/fake_log.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace olvex;
using namespace olvex::testutil;
using namespace Qt::StringLiterals;

namespace {

class ExportTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        data->clock()->setNow(QDateTime(QDate(2025, 12, 31), QTime(23, 59, 58)));
    }

    QString path(const QString &name = QStringLiteral("settings.csv")) const
    {
        return dir.filePath(name);
    }
    QStringList folderEntries() const
    {
        return QDir(dir.path()).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    // Adds n changeable number settings 1-000-0-00-00, 1-000-0-00-01, ...
    void addNumberSettings(int n)
    {
        for (int i = 0; i < n; ++i)
            data->addSetting(100000000 + (i / 100) * 100000 + i % 100,
                             QStringLiteral("Setting %1").arg(i), 1, Value(i + 1));
    }

    QTemporaryDir dir;
    std::shared_ptr<FakeDataInterface> data = std::make_shared<FakeDataInterface>();
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    SettingsImportExport transfer{data, log};
};

TEST_F(ExportTest, WritesHeaderAndOneLinePerSetting)
{
    const QDateTime when(QDate(2024, 5, 6), QTime(7, 8, 9));
    data->addSetting(123456789, "SO2 span", 1, Value(12.5), Value(10));
    data->setUnitsText(123456789, "ppm");
    data->addSetting(100000001, "Limit, hourly", 7, Value("say \"hi\""));
    data->setUnitsText(100000001, "lb/hr, avg");
    data->addSetting(100000002, "Not yet read", 1, Value::null(), Value(0));
    data->addSetting(100000003, "Last cal", 4, Value(when));
    data->addSetting(100000004, "Cal day", 2, Value(when));
    data->addSetting(100000005, "Cal time", 3, Value(when));
    data->addSetting(100000006, "Auto cal", 5, Value(true), Value(true));
    data->addSetting(100000007, "Manual cal", 5, Value(0), Value(false));
    data->addSetting(100000008, "Serial", 7, Value("A-1"))
        ->setAttributeValue(FakeAttributes::Changeable, false);
    data->addSetting(99999, "Orphan", 7, Value("x"));
    data->addSetting(100000009, "Notes", 7, Value("line1\r\nline2\nline3\rline4"));
    data->addGroup(100000100, "Group", {123456789}); // not a setting: not written

    ExportCounts counts;
    ASSERT_TRUE(transfer.ExportSettings(path(), counts));

    const QStringList expected = {
        ";SiteID=PLANT1",
        ";Time=2025-12-31 23:59:58",
        ";PID,UNIT,SETTING,VALUE,DEFAULT",
        "1-234-5-67-89,ppm,SO2 span,12.5,10",
        "1-000-0-00-01,\"lb/hr, avg\",\"Limit, hourly\",\"say \"\"hi\"\"\",",
        "1-000-0-00-02,,Not yet read,,0",
        "1-000-0-00-03,,Last cal,2024/05/06 07:08:09,",
        "1-000-0-00-04,,Cal day,2024/05/06,",
        "1-000-0-00-05,,Cal time,07:08:09,",
        "1-000-0-00-06,,Auto cal,True,-1",
        "1-000-0-00-07,,Manual cal,0,0",
        "1-000-0-00-08,,Serial,A-1,,Read only",
        ",,Orphan,x,",
        "1-000-0-00-09,,Notes,line1 line2 line3 line4,",
    };
    EXPECT_EQ(fileLines(readBytes(path())), expected);
    EXPECT_EQ(counts.count, 11);
    EXPECT_EQ(counts.nullCount, 1);
    EXPECT_FALSE(counts.allNullOrZero);
    EXPECT_EQ(data->pidsOfTypesRequests(), (QList<QList<int>>{{ParameterTypes::Setting}}));
    EXPECT_TRUE(log->isEmpty());
    EXPECT_EQ(folderEntries(), QStringList{"settings.csv"});
}

TEST_F(ExportTest, NoSettingsGivesTheHeaderAlone)
{
    ExportCounts counts;
    counts.count = 99;
    ASSERT_TRUE(transfer.ExportSettings(path(), counts));
    EXPECT_EQ(fileLines(readBytes(path())).size(), 3);
    EXPECT_EQ(counts.count, 0);
    EXPECT_EQ(counts.nullCount, 0);
    EXPECT_TRUE(counts.allNullOrZero);
}

TEST_F(ExportTest, AllNullOrZeroFlag)
{
    const QDateTime zero = zeroDate();
    const struct
    {
        const char *name;
        QList<std::pair<int, Value>> values; // data type, current value
        bool allNullOrZero;
        int nullCount;
    } cases[] = {
        {"nulls", {{1, Value::null()}, {1, Value::null()}}, true, 2},
        {"zeros", {{1, Value(0)}, {7, Value("")}, {4, Value(zero)}, {1, Value()}}, true, 0},
        {"zero date by type", {{2, Value(zero)}, {3, Value(zero)}}, true, 0},
        {"a number", {{1, Value::null()}, {1, Value(5)}}, false, 1},
        {"zero written otherwise", {{1, Value("0.0")}}, false, 0},
        {"zero day, not midnight", {{3, Value(zero.addSecs(3600))}}, false, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        auto site = std::make_shared<FakeDataInterface>();
        qint32 pid = 100000001;
        for (const auto &[type, value] : c.values)
            site->addSetting(pid++, "s", type, value);
        SettingsImportExport exporter(site, nullptr);
        ExportCounts counts;
        ASSERT_TRUE(exporter.ExportSettings(path(), counts));
        EXPECT_EQ(counts.allNullOrZero, c.allNullOrZero);
        EXPECT_EQ(counts.nullCount, c.nullCount);
        EXPECT_EQ(counts.count, c.values.size());
    }
}

TEST_F(ExportTest, WritesWindows1252)
{
    data->addSetting(100000001, u"Temp \u00B0F"_qs, 7, Value(u"\u201Equoted\u201C"_qs));
    data->setUnitsText(100000001, u"\u20AC/MWh"_qs);
    ExportCounts counts;
    ASSERT_TRUE(transfer.ExportSettings(path(), counts));
    const QByteArray bytes = readBytes(path());
    EXPECT_TRUE(bytes.endsWith("1-000-0-00-01,\x80/MWh,Temp \xB0"
                               "F,\x84quoted\x93,\r\n"))
        << bytes.toStdString();
}

TEST_F(ExportTest, ReplacesAnExistingFile)
{
    writeBytes(path(), QByteArray(10000, 'x'));
    data->addSetting(100000001, "s", 1, Value(1));
    ExportCounts counts;
    ASSERT_TRUE(transfer.ExportSettings(path(), counts));
    EXPECT_EQ(fileLines(readBytes(path())).size(), 4);
    EXPECT_EQ(folderEntries(), QStringList{"settings.csv"});
}

// Whatever goes wrong, the file of that name is the one that was there before, and no
// temporary file is left beside it.
TEST_F(ExportTest, FailureLeavesTheOldFile)
{
    addNumberSettings(600);
    const QByteArray old("old content\r\n");
    const struct
    {
        const char *name;
        std::function<void()> breakIt;
        QString logLine; // empty: nothing logged
    } cases[] = {
        {"store offline",
         [&] {
             data->setFailure(FakeDataInterface::Op::GetPidsOfTypes, Error(5, "Store offline"));
         },
         "Cannot export settings. Error 5, Store offline [CSET-0058]"},
        {"value unreadable halfway",
         [&] {
             data->setFailure(100000000 + 4 * 100000 + 17, FakeParameter::Op::GetCurrentValue,
                              Error(9, "Value unreadable"));
         },
         "Cannot export settings. Error 9, Value unreadable [CSET-0058]"},
        {"cancelled halfway",
         [&] { transfer.setProgressHandler([](qint64 done, qint64) { return done < 300; }); },
         QString()},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        writeBytes(path(), old);
        log->clear();
        data->clearFailures();
        for (const auto &p : data->parameters())
            p->clearFailures();
        transfer.setProgressHandler({});
        c.breakIt();

        ExportCounts counts;
        EXPECT_FALSE(transfer.ExportSettings(path(), counts));
        EXPECT_EQ(transfer.wasCancelled(), c.logLine.isEmpty());
        EXPECT_EQ(readBytes(path()), old);
        EXPECT_EQ(folderEntries(), QStringList{"settings.csv"});
        if (c.logLine.isEmpty())
            EXPECT_TRUE(log->isEmpty());
        else
            EXPECT_EQ(log->lines(), (QList<LogLine>{{Severity::Error, c.logLine}}));
    }
}

TEST_F(ExportTest, MissingFolderFailsAndLogs)
{
    ExportCounts counts;
    EXPECT_FALSE(transfer.ExportSettings(dir.filePath("missing/settings.csv"), counts));
    ASSERT_EQ(log->lines().size(), 1);
    EXPECT_EQ(log->lines()[0].severity, Severity::Error);
    EXPECT_TRUE(log->lines()[0].text.startsWith("Cannot export settings. Error 75, "));
    EXPECT_TRUE(log->lines()[0].text.endsWith(" [CSET-0058]"));
}

TEST_F(ExportTest, ReportsProgressUpToTheCount)
{
    addNumberSettings(700);
    QList<qint64> done;
    transfer.setProgressHandler([&](qint64 d, qint64 total) {
        EXPECT_EQ(total, 700);
        done.append(d);
        return true;
    });
    ExportCounts counts;
    ASSERT_TRUE(transfer.ExportSettings(path(), counts));
    EXPECT_EQ(done, (QList<qint64>{0, 256, 512, 700}));
    EXPECT_FALSE(transfer.wasCancelled());
}

TEST_F(ExportTest, ProposedFileName)
{
    const QDateTime when(QDate(2026, 3, 1), QTime(14, 5, 31));
    ConnectionDescription connection;
    connection.ExportFolder = "/olvex/export";
    data->setConnectionSettings(connection);
    EXPECT_EQ(SettingsImportExport::proposedExportFileName(*data, when),
              QDir::toNativeSeparators("/olvex/export/Olvex Settings PLANT1 2026-03-01 14.05.csv"));

    data->setSiteId("NORTH/2");
    EXPECT_TRUE(SettingsImportExport::proposedExportFileName(*data, when)
                    .endsWith("Olvex Settings NORTH_2 2026-03-01 14.05.csv"));

    connection.ExportFolder.clear();
    data->setConnectionSettings(connection);
    const QString proposed = SettingsImportExport::proposedExportFileName(*data, when);
    EXPECT_TRUE(QDir::isAbsolutePath(proposed)) << proposed.toStdString();
}

} // namespace
