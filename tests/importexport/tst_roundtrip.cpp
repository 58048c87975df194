#include "importexport/settingsimportexport.h"

#include "importexport_test_util.h"
#include "support/fake_data_interface.h"
#include "support/fake_log.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace olvex;
using namespace olvex::testutil;
using namespace Qt::StringLiterals;

namespace {

// A site whose every setting can be changed and has a value: what the export writes must read
// back as "not changed", whatever the value's type and however awkward its text.
class RoundTripTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        const QDateTime when(QDate(2024, 5, 6), QTime(7, 8, 9));
        data->addSetting(100000001, "Number", 1, Value(12.5), Value(10));
        data->addSetting(100000002, "Integer", 1, Value(-7));
        data->addSetting(100000003, "Commas, quotes", 7, Value("a,\"b\",c"));
        data->addSetting(100000004, "Date and time", 4, Value(when));
        data->addSetting(100000005, "Date", 2, Value(QDateTime(when.date(), QTime(0, 0))));
        data->addSetting(100000006, "Time", 3, Value(when));
        data->addSetting(100000007, "Yes/No", 5, Value(true), Value(false));
        data->addSetting(100000008, "Code page", 7,
                         Value(u"\u20AC \u201E\u201C \u2013 \u00B0C \u00E9"_s));
        data->setUnitsText(100000001, "lb/hr, avg");
    }

    QTemporaryDir dir;
    QString path = dir.filePath("site.csv");
    std::shared_ptr<FakeDataInterface> data = std::make_shared<FakeDataInterface>();
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    SettingsImportExport transfer{data, log};
};

TEST_F(RoundTripTest, UnchangedSiteGivesOnlyNotChanged)
{
    ExportCounts exported;
    ASSERT_TRUE(transfer.ExportSettings(path, exported));
    QString errorText;
    ImportCounts counts;
    ASSERT_TRUE(transfer.ImportSettings(path, errorText, counts));
    EXPECT_EQ(counts.total, exported.count);
    EXPECT_EQ(counts.notModified, exported.count);
    EXPECT_EQ(counts.parseErrors + counts.configErrors + counts.blanks + counts.readOnly
                  + counts.failures,
              0);
    EXPECT_TRUE(errorText.isEmpty());
    EXPECT_TRUE(log->isEmpty()) << log->texts().join('\n').toStdString();
}

TEST_F(RoundTripTest, EditedValuesChangeExactlyThoseSettings)
{
    ExportCounts exported;
    ASSERT_TRUE(transfer.ExportSettings(path, exported));
    QStringList lines = fileLines(readBytes(path));
    for (QString &line : lines) {
        if (line.startsWith("1-000-0-00-01,"))
            line.replace(",12.5,", ",13.25,");
        else if (line.startsWith("1-000-0-00-04,"))
            line.replace("2024/05/06 07:08:09", "2024/05/07 07:08:09");
        else if (line.startsWith("1-000-0-00-08,"))
            line.replace(u"\u20AC"_s, "$");
    }
    writeBytes(path, settingsFile(lines));

    QString errorText;
    ImportCounts counts;
    ASSERT_TRUE(transfer.ImportSettings(path, errorText, counts));
    EXPECT_EQ(counts.modified, 3);
    EXPECT_EQ(counts.notModified, exported.count - 3);
    for (const auto &p : data->parameters()) {
        SCOPED_TRACE(p->GetName(0).toStdString());
        const qint32 pid = p->PidNumber();
        const bool edited = pid == 100000001 || pid == 100000004 || pid == 100000008;
        EXPECT_EQ(p->valueWrites().size(), edited ? 1 : 0);
    }
    EXPECT_EQ(data->parameter(100000004)->valueWrites().constFirst().value,
              Value(QList<Value>{Value("2024/05/07 07:08:09")}));

    // Once the service has applied the writes, the same file is "not changed" throughout.
    data->applyPendingWrites();
    ASSERT_TRUE(transfer.ImportSettings(path, errorText, counts));
    EXPECT_EQ(counts.notModified, exported.count);
}

// What an export of a live site holds besides values the import can take: read-only settings
// and Null values are refused, each by its own count, and nothing is written.
TEST_F(RoundTripTest, ReadOnlyAndNullSettingsAreReportedNotChanged)
{
    data->parameter(100000002)->setAttributeValue(FakeAttributes::Changeable, false);
    data->parameter(100000003)->setCurrentValue(Value::null());
    ExportCounts exported;
    ASSERT_TRUE(transfer.ExportSettings(path, exported));
    QString errorText;
    ImportCounts counts;
    ASSERT_TRUE(transfer.ImportSettings(path, errorText, counts));
    EXPECT_EQ(counts.readOnly, 1);
    EXPECT_EQ(counts.blanks, 1);
    EXPECT_EQ(counts.notModified, exported.count - 2);
    EXPECT_EQ(counts.modified, 0);
    for (const auto &p : data->parameters())
        EXPECT_TRUE(p->valueWrites().isEmpty());
}

// The import trims the value it reads, so blanks around a text value do not survive the trip:
// the setting is written back without them.
TEST_F(RoundTripTest, OuterBlanksOfAValueAreTrimmed)
{
    data->addSetting(100000009, "Padded", 7, Value("  x  "));
    ExportCounts exported;
    ASSERT_TRUE(transfer.ExportSettings(path, exported));
    QString errorText;
    ImportCounts counts;
    ASSERT_TRUE(transfer.ImportSettings(path, errorText, counts));
    EXPECT_EQ(counts.modified, 1);
    EXPECT_EQ(data->parameter(100000009)->valueWrites().constFirst().value,
              Value(QList<Value>{Value("x")}));
}

} // namespace
