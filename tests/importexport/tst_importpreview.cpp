// What the preview promises and what the import then reports, on a fake site.
#include "importexport/importexporttexts.h"
#include "importexport/settingsimportexport.h"

#include "importexport_test_util.h"
#include "support/fake_data_interface.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace olvex;
using namespace olvex::testutil;
namespace texts = olvex::importexporttexts;

namespace {

constexpr qint32 kRanged = 100000001; // 1-000-0-00-01, recommended 0 ... 5
constexpr qint32 kTime = 100000002;
constexpr qint32 kReadOnly = 100000003;
constexpr qint32 kText = 100000004;

class PreviewTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        auto ranged = data->addSetting(kRanged, "Drift limit", SettingType::Number, Value(2));
        ranged->setAttributeValue(SettingAttr::RecommendedLow, Value(0));
        ranged->setAttributeValue(SettingAttr::RecommendedHigh, Value(5));
        data->addSetting(kTime, "Daily cal", SettingType::Time, Value("06:00:00"));
        data->addSetting(kReadOnly, "Serial", SettingType::Text, Value("A-1"))
            ->setAttributeValue(SettingAttr::Changeable, false);
        data->addSetting(kText, "Label", SettingType::Text, Value("x"));
    }
    QString file(const QByteArray &bytes)
    {
        const QString name = dir.filePath("in.csv");
        writeBytes(name, bytes);
        return name;
    }

    QTemporaryDir dir;
    std::shared_ptr<FakeDataInterface> data = std::make_shared<FakeDataInterface>();
    SettingsImportExport transfer{data, nullptr};
};

// The lines of the operator's report: a recommended-range warning, three values no setting may
// hold, and the normal lines of an own export (read-only, blank) kept apart from the failures.
TEST_F(PreviewTest, SortsEveryLineAndSpeaksInThePresentTense)
{
    const QString name = file(settingsFile(
        {";SiteID=PLANT1", "1-000-0-00-01,,Drift limit,7",
         "1-000-0-00-01,,Drift limit,10000000000000", "1-000-0-00-01,,Drift limit,abc",
         "1-000-0-00-02,,Daily cal,25:70:00", "1-000-0-00-03,,Serial,B-2,,Read only",
         "1-000-0-00-04,,Label,", "1-000-0-00-04,,Label,y", "1-000-0-00-77,,Unknown,1"}));
    QString errorText;
    ImportCounts counts;
    ImportPreview preview;
    ASSERT_TRUE(transfer.ImportSettings(name, errorText, counts, &preview));
    QList<std::pair<int, texts::PreviewSort>> sorted;
    for (const ImportChange &c : preview.changes)
        sorted.append({c.lineNumber, texts::sortOf(c)});
    for (const ImportRefusal &r : preview.refusals)
        sorted.append({r.lineNumber, texts::sortOf(r)});
    using enum texts::PreviewSort;
    EXPECT_EQ(sorted, (QList<std::pair<int, texts::PreviewSort>>{{2, OutsideRange},
                                                                 {3, Fail},
                                                                 {4, Fail},
                                                                 {5, Fail},
                                                                 {8, Change},
                                                                 {6, Skip},
                                                                 {7, Skip},
                                                                 {9, Fail}}));
    EXPECT_EQ(texts::previewOutcome(preview.changes[0]),
              "would change, outside the recommended range (0 ... 5)");
    EXPECT_TRUE(preview.changes[1].refusal.contains("greater than the maximum value"));
    EXPECT_TRUE(preview.changes[2].refusal.contains("'abc' is not a number"));
    EXPECT_TRUE(preview.changes[3].refusal.contains("'25:70:00' is not a time"));
    // The counts are those the import would report: failures are not changes.
    EXPECT_EQ(counts.modified, 2);
    EXPECT_EQ(counts.failures, 3);

    const QString report = texts::previewReport(name, counts, preview, errorText);
    EXPECT_TRUE(report.contains("\n1 would change\n") && report.contains("\n4 would fail\n")
                && report.contains("\n1 would change, outside the recommended range\n"))
        << report.toStdString();
    EXPECT_TRUE(report.contains("  line 5: 1-000-0-00-02 Daily cal: '06:00:00' -> '25:70:00': "
                                "would fail: Type mismatch: '25:70:00' is not a time\n"));
    EXPECT_FALSE(report.contains(" were ")) << "past tense before anything was imported";
}

// After the import, every line not changed as asked is kept with its reason; a refused write
// carries the data interface's own words.
TEST_F(PreviewTest, TheImportKeepsTheLinesItDidNotChange)
{
    data->parameter(kText)->setFailure(FakeParameter::Op::SetValues,
                                       Error(13, "Type mismatch: 'y' is not a number"));
    const QString name = file(
        settingsFile({";SiteID=PLANT1", "1-000-0-00-04,,Label,y", "1-000-0-00-01,,Drift limit,3",
                      "bad,,,1", "1-000-0-00-03,,Serial,B-2,,Read only"}));
    QString errorText;
    ImportCounts counts;
    ASSERT_TRUE(transfer.ImportSettings(name, errorText, counts));
    const QList<ImportRefusal> &lines = transfer.linesNotChanged();
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(texts::notChangedLine(lines[0]),
              "line 2: [CSET-0078] Error 13, Type mismatch: 'y' is not a number  "
              "1-000-0-00-04,,Label,y");
    EXPECT_EQ(lines[1].lineNumber, 4);
    EXPECT_FALSE(lines[1].skipped);
    EXPECT_TRUE(lines[2].skipped);
    EXPECT_TRUE(texts::importResultReport("S", lines)
                    .startsWith("S\n\n3 lines were not changed as the file asked:\nline 2: "));
}

// A UTF-8 file without a byte order mark is read as UTF-8 and said so; the site's own
// Windows-1252 export, and plain ASCII, are read as before.
TEST_F(PreviewTest, Utf8WithoutByteOrderMark)
{
    const QString zurich = QStringLiteral("Z\u00fcrich \u2713");
    const QByteArray header(";SiteID=PLANT1\r\n1-000-0-00-04,,Label,");
    const std::vector<std::tuple<QByteArray, bool, QString>> cases = {
        {header + zurich.toUtf8() + "\r\n", true, zurich},
        {header + "Z\xFCrich \x80\r\n", false, QStringLiteral("Z\u00fcrich \u20ac")},
        {header + "Zurich\r\n", false, QStringLiteral("Zurich")},
    };
    for (const auto &[bytes, utf8, value] : cases) {
        SCOPED_TRACE(value.toStdString());
        QString errorText;
        ImportCounts counts;
        ImportPreview preview;
        ASSERT_TRUE(transfer.ImportSettings(file(bytes), errorText, counts, &preview));
        EXPECT_EQ(counts.readAsUtf8, utf8);
        ASSERT_EQ(preview.changes.size(), 1);
        EXPECT_EQ(preview.changes[0].fileText, value);
        EXPECT_EQ(texts::importSummary("f", counts, {}).endsWith("it was read as UTF-8."), utf8);
    }
}

// The export names what the code page lost, creates a missing folder, and says where and why
// it failed.
TEST_F(PreviewTest, ExportNamesLossAndFailures)
{
    data->parameter(kText)->setCurrentValue(Value(QStringLiteral("ok \u2713")));
    ExportCounts counts;
    const QString nested = dir.filePath("new/folder/out.csv");
    ASSERT_TRUE(transfer.ExportSettings(nested, counts));
    EXPECT_EQ(counts.lossy, (QList<std::pair<qint32, QString>>{{kText, "Label"}}));
    EXPECT_TRUE(texts::exportLossNote(counts).endsWith("\n1-000-0-00-04 Label"));

    writeBytes(dir.filePath("plain"), "x");
    const QString blocked = dir.filePath("plain/out.csv");
    EXPECT_FALSE(transfer.ExportSettings(blocked, counts));
    const QString shown = texts::exportFailed(transfer.exportErrorText());
    EXPECT_TRUE(shown.startsWith("Failed. [CSET-0056]\n'" + blocked
                                 + "': Cannot create the "
                                   "folder"))
        << shown.toStdString();
}

} // namespace
