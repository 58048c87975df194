#include "importexport/settingsimportexport.h"

#include "importexport_test_util.h"
#include "support/fake_data_interface.h"
#include "support/fake_log.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <ostream>

namespace olvex {
bool operator==(const ImportCounts &a, const ImportCounts &b)
{
    return a.total == b.total && a.modified == b.modified && a.notModified == b.notModified
           && a.parseErrors == b.parseErrors && a.configErrors == b.configErrors
           && a.blanks == b.blanks && a.readOnly == b.readOnly && a.failures == b.failures;
}
void PrintTo(const ImportCounts &c, std::ostream *os)
{
    *os << "{total " << c.total << ", modified " << c.modified << ", notModified " << c.notModified
        << ", parseErrors " << c.parseErrors << ", configErrors " << c.configErrors << ", blanks "
        << c.blanks << ", readOnly " << c.readOnly << ", failures " << c.failures << '}';
}
} // namespace olvex

using namespace olvex;
using namespace olvex::testutil;
using namespace Qt::StringLiterals;

namespace {

constexpr qint32 kNumber = 123456789;   // 1-234-5-67-89
constexpr qint32 kText = 100000001;     // 1-000-0-00-01
constexpr qint32 kReadOnly = 100000008; // 1-000-0-00-08
constexpr qint32 kBroken = 100000011;   // 1-000-0-00-11
constexpr qint32 kGroup = 100000100;    // 1-000-0-01-00

ImportCounts counted(int total, int modified, int notModified, int parseErrors = 0,
                     int configErrors = 0, int blanks = 0, int readOnly = 0, int failures = 0)
{
    return {total, modified, notModified, parseErrors, configErrors, blanks, readOnly, failures};
}

class ImportTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        data->addSetting(kNumber, "SO2 span", 1, Value(12.5), Value(10));
        data->addSetting(kText, "Label", 7, Value("abc"));
        data->addSetting(kReadOnly, "Serial", 7, Value("A-1"))
            ->setAttributeValue(FakeAttributes::Changeable, false);
        data->addSetting(kBroken, "Broken", 1, Value(1))
            ->setFailure(FakeParameter::Op::SetValues, Error(9, "Write refused"));
        data->addGroup(kGroup, "Group", {kNumber});
    }

    QString writeFile(const QStringList &lines)
    {
        writeBytes(path, settingsFile(lines));
        return path;
    }
    // Imports the site line and the given lines.
    bool import(const QStringList &lines, ImportPreview *preview = nullptr)
    {
        writeFile(QStringList{";SiteID=PLANT1"} + lines);
        return transfer.ImportSettings(path, errorText, counts, preview);
    }
    QList<FakeParameter::ValueWrite> writes(qint32 pid) const
    {
        return data->parameter(pid)->valueWrites();
    }

    QTemporaryDir dir;
    QString path = dir.filePath("import.csv");
    std::shared_ptr<FakeDataInterface> data = std::make_shared<FakeDataInterface>();
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    SettingsImportExport transfer{data, log};
    QString errorText;
    ImportCounts counts;
};

TEST_F(ImportTest, SiteLine)
{
    const struct
    {
        QStringList lines;
        QString error; // empty: accepted
    } cases[] = {
        {{";SiteID=PLANT1"}, ""},
        {{";SiteID=plant1"}, ""},
        {{";SiteID=PLANT1,,,,"}, ""},
        {{"   ;SiteID=PLANT1   "}, ""},
        {{";SiteID= PLANT1 second word"}, ""},
        {{";SiteID= "},
         "Cannot import settings. Site ID is blank. First line in file must specify the Olvex "
         "site ID. [CSET-0064]"},
        {{";SiteID=,,,"},
         "Cannot import settings. Site ID is blank. First line in file must specify the Olvex "
         "site ID. [CSET-0064]"},
        {{"SiteID=PLANT1"},
         "Cannot import settings. Cannot find site ID. [CSET-0063] First line in file must start "
         "with ;SiteID="},
        {{"", ";SiteID=PLANT1"},
         "Cannot import settings. Cannot find site ID. [CSET-0063] First line in file must start "
         "with ;SiteID="},
        {{},
         "Cannot import settings. Cannot find site ID. [CSET-0063] First line in file must start "
         "with ;SiteID="},
        {{";SiteID=south"},
         "Cannot import settings. Site ID 'SOUTH' in file does not match the Olvex site ID "
         "'PLANT1'. [CSET-0065]"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.lines.join('|').toStdString());
        writeFile(c.lines + QStringList{"1-234-5-67-89,ppm,SO2 span,13,10"});
        const qsizetype writesBefore = writes(kNumber).size();
        const bool ok = transfer.ImportSettings(path, errorText, counts);
        EXPECT_EQ(ok, c.error.isEmpty());
        EXPECT_EQ(errorText, c.error);
        EXPECT_EQ(counts.modified, c.error.isEmpty() ? 1 : 0);
        EXPECT_EQ(writes(kNumber).size() - writesBefore, c.error.isEmpty() ? 1 : 0);
    }
    EXPECT_TRUE(log->isEmpty());
}

TEST_F(ImportTest, GetSiteIdFromLine)
{
    EXPECT_EQ(SettingsImportExport::GetSiteIdFromLine(";SiteID=abc,,"), "ABC");
    EXPECT_EQ(SettingsImportExport::GetSiteIdFromLine(";SiteID=a,b"), "A,B");
    EXPECT_EQ(SettingsImportExport::GetSiteIdFromLine(";SiteID=  x y"), "X");
    EXPECT_EQ(SettingsImportExport::GetSiteIdFromLine(";SiteID="), "");
    EXPECT_EQ(SettingsImportExport::GetSiteIdFromLine(";Time=2025"), "");
}

TEST_F(ImportTest, EachLineIsCountedAndLogged)
{
    const struct
    {
        QString line;
        ImportCounts counts;
        int severity; // of the one log line, 0: none
        QString logText;
    } cases[] = {
        {"1-234-5-67-89,ppm,SO2 span,12.5,10", counted(1, 0, 1), 0, ""},
        {"1-234-5-67-89,ppm,SO2 span,13,10", counted(1, 1, 0), 0, ""},
        {"123456789,,,13", counted(1, 1, 0), 0, ""},
        {"#123456789,,,13", counted(1, 1, 0), 0, ""},
        {"1-234-5-67-89,ppm,SO2 span, \"12.5\" ,10", counted(1, 0, 1), 0, ""},
        {"  1-000-0-00-01,,Label,abc  ", counted(1, 0, 1), 0, ""},
        {"1-000-0-00-01,,Label,ABC", counted(1, 1, 0), 0, ""},
        {"1-234-5-67-89,ppm,\"a\"b,1", counted(1, 0, 0, 1), Severity::Error,
         "[CSET-0066] Cannot import setting. Cannot parse line. [CSV-0002] Parse error at "
         "position 22. Quote followed by illegal character.  1-234-5-67-89,ppm,\"a\"b,1"},
        {"1-234-5-67-89,ppm,\"SO2", counted(1, 0, 0, 1), Severity::Error,
         "[CSET-0066] Cannot import setting. Cannot parse line. [CSV-0001] Parse error at "
         "position 23. Found unpaired quote.  1-234-5-67-89,ppm,\"SO2"},
        {"1-234-5-67-89,ppm,SO2 span", counted(1, 0, 0, 0, 0, 1), Severity::Note,
         "[CSET-0067] Cannot import setting. Line does not contain enough items.  "
         "1-234-5-67-89,ppm,SO2 span"},
        {"no pid,ppm,x,5", counted(1, 0, 0, 1), Severity::Error,
         "[CSET-0068] Cannot import setting. Cannot parse PID.  no pid,ppm,x,5"},
        {",,Orphan,5", counted(1, 0, 0, 1), Severity::Error,
         "[CSET-0068] Cannot import setting. Cannot parse PID.  ,,Orphan,5"},
        {"1-234-5-67-89,ppm,SO2 span,   ,10", counted(1, 0, 0, 0, 0, 1), Severity::Note,
         "[CSET-0069] Cannot import setting. Value is blank.  1-234-5-67-89,ppm,SO2 span,   ,10"},
        {"1-234-5-67-89,ppm,SO2 span,\"\",10", counted(1, 0, 0, 0, 0, 1), Severity::Note,
         "[CSET-0069] Cannot import setting. Value is blank.  1-234-5-67-89,ppm,SO2 span,\"\",10"},
        {"1-000-0-00-50,,Unknown,5", counted(1, 0, 0, 0, 1), Severity::Error,
         "[CSET-0070] Cannot import setting. PID not defined.  1-000-0-00-50,,Unknown,5"},
        {"1-000-0-01-00,,Group,5", counted(1, 0, 0, 0, 1), Severity::Error,
         "[CSET-0071] Cannot import setting. PID is not a Setting parameter.  "
         "1-000-0-01-00,,Group,5"},
        {"1-000-0-00-08,,Serial,B-2,,Read only", counted(1, 0, 0, 0, 0, 0, 1), Severity::Error,
         "[CSET-0072] Cannot import setting. Setting is read-only.  "
         "1-000-0-00-08,,Serial,B-2,,Read only"},
        // Read only comes before the comparison: an unchanged value is refused all the same.
        {"1-000-0-00-08,,Serial,A-1,,Read only", counted(1, 0, 0, 0, 0, 0, 1), Severity::Error,
         "[CSET-0072] Cannot import setting. Setting is read-only.  "
         "1-000-0-00-08,,Serial,A-1,,Read only"},
    };
    // Each line alone, looked up PID by PID (a small file) and against the batch of all
    // settings read up front (a large one): the outcome must not depend on the way.
    for (const bool batch : {false, true}) {
        transfer.setBatchFromLines(batch ? 0 : 1000000);
        for (const auto &c : cases) {
            SCOPED_TRACE((batch ? "batch: " : "by PID: ") + c.line.toStdString());
            log->clear();
            ASSERT_TRUE(import({c.line})) << errorText.toStdString();
            EXPECT_EQ(counts, c.counts);
            EXPECT_TRUE(errorText.isEmpty());
            if (c.severity == 0)
                EXPECT_TRUE(log->isEmpty()) << log->texts().join('\n').toStdString();
            else
                EXPECT_EQ(log->lines(), (QList<LogLine>{{c.severity, c.logText}}));
        }
    }
    EXPECT_EQ(data->pidsOfTypesRequests().size(), std::size(cases));
}

TEST_F(ImportTest, WritesTheTextAsAOneElementList)
{
    ASSERT_TRUE(import({"1-234-5-67-89,ppm,SO2 span,13,10", "1-000-0-00-01,,Label,\"x, y\""}));
    EXPECT_EQ(writes(kNumber),
              (QList<FakeParameter::ValueWrite>{{3, Value(QList<Value>{Value("13")})}}));
    EXPECT_EQ(writes(kText),
              (QList<FakeParameter::ValueWrite>{{3, Value(QList<Value>{Value("x, y")})}}));
    EXPECT_TRUE(writes(kReadOnly).isEmpty());
}

TEST_F(ImportTest, RefusedWriteCountsAsFailure)
{
    ASSERT_TRUE(import({"1-000-0-00-11,,Broken,2", "1-234-5-67-89,ppm,SO2 span,13,10"}));
    EXPECT_EQ(counts, counted(2, 1, 0, 0, 0, 0, 0, 1));
    EXPECT_EQ(log->lines(), (QList<LogLine>{{Severity::Error, "[CSET-0078] Error 9, Write refused; "
                                                              "PID=1-000-0-00-11"},
                                            {Severity::Error,
                                             "[CSET-0073] Cannot import setting. Attempt to "
                                             "change setting failed.  1-000-0-00-11,,Broken,2"}}));
}

TEST_F(ImportTest, CommentsAndBlankLinesAreNotCounted)
{
    ASSERT_TRUE(import({";Time=2025-12-31 23:59:58", ";PID,UNIT,SETTING,VALUE,DEFAULT", "", "     ",
                        "  ; indented comment", "1-234-5-67-89,ppm,SO2 span,13,10", ""}));
    EXPECT_EQ(counts, counted(1, 1, 0));
}

TEST_F(ImportTest, AnyLineEndWillDo)
{
    const QByteArray bodies[] = {
        ";SiteID=PLANT1\n1-234-5-67-89,,,13\n1-000-0-00-01,,,abc",
        ";SiteID=PLANT1\r1-234-5-67-89,,,13\r1-000-0-00-01,,,abc\r",
        ";SiteID=PLANT1\r\n1-234-5-67-89,,,13\n\r1-000-0-00-01,,,abc\r\n",
    };
    for (const QByteArray &body : bodies) {
        SCOPED_TRACE(body.toStdString());
        writeBytes(path, body);
        ASSERT_TRUE(transfer.ImportSettings(path, errorText, counts));
        EXPECT_EQ(counts.modified, 1);
        EXPECT_EQ(counts.notModified, 1);
        EXPECT_EQ(counts.total, 2);
    }
}

TEST_F(ImportTest, ReadsWindows1252AndUtf8WithByteOrderMark)
{
    data->parameter(kText)->setCurrentValue(Value(u"\u20AC \u201Equoted\u201C 5\u00B0"_s));
    // The same text, once in the file's own code page, once as a spreadsheet's UTF-8 file.
    writeBytes(path, ";SiteID=PLANT1\r\n1-000-0-00-01,,Label,\x80 \x84quoted\x93 5\xB0\r\n");
    ASSERT_TRUE(transfer.ImportSettings(path, errorText, counts));
    EXPECT_EQ(counts, counted(1, 0, 1));

    writeBytes(path, QByteArray("\xEF\xBB\xBF;SiteID=PLANT1\r\n1-000-0-00-01,,Label,")
                         + u"\u20AC \u201Equoted\u201C 5\u00B0"_s.toUtf8() + "\r\n");
    ASSERT_TRUE(transfer.ImportSettings(path, errorText, counts));
    EXPECT_EQ(counts, counted(1, 0, 1));
}

TEST_F(ImportTest, MissingFile)
{
    const QString missing = dir.filePath("nope.csv");
    EXPECT_FALSE(transfer.ImportSettings(missing, errorText, counts));
    EXPECT_EQ(errorText, "Cannot import settings. Cannot find '" + missing + "'. [CSET-0062]");
}

TEST_F(ImportTest, UnexpectedErrorStopsButKeepsEarlierChanges)
{
    data->parameter(kText)->setFailure(FakeParameter::Op::GetAttribute, Error(5, "Store offline"),
                                       FakeAttributes::Changeable);
    EXPECT_FALSE(import({"1-234-5-67-89,ppm,SO2 span,13,10", "1-000-0-00-01,,Label,xyz",
                         "1-000-0-00-08,,Serial,B-2"}));
    const QString expected = "Cannot import settings. Error 5, Store offline [CSET-0074]";
    EXPECT_EQ(errorText, expected);
    EXPECT_EQ(log->lines(), (QList<LogLine>{{Severity::Error, expected}}));
    EXPECT_EQ(writes(kNumber).size(), 1);
    EXPECT_EQ(counts.modified, 1);
    EXPECT_EQ(counts.total, 2);
}

TEST_F(ImportTest, DryRunListsWithoutWriting)
{
    ImportPreview preview;
    ASSERT_TRUE(import({"1-234-5-67-89,ppm,SO2 span,13,10", "1-000-0-00-01,,Label,abc",
                        "1-000-0-00-08,,Serial,B-2,,Read only", "1-000-0-00-50,,Unknown,5",
                        "1-000-0-00-11,,Broken,2"},
                       &preview));
    EXPECT_EQ(counts, counted(5, 2, 1, 0, 1, 0, 1));
    ASSERT_EQ(preview.changes.size(), 2);
    EXPECT_EQ(preview.changes[0].lineNumber, 2);
    EXPECT_EQ(preview.changes[0].pid, kNumber);
    EXPECT_EQ(preview.changes[0].name, "SO2 span");
    EXPECT_EQ(preview.changes[0].currentText, "12.5");
    EXPECT_EQ(preview.changes[0].fileText, "13");
    EXPECT_EQ(preview.changes[1].pid, kBroken);
    ASSERT_EQ(preview.refusals.size(), 2);
    EXPECT_EQ(preview.refusals[0].lineNumber, 4);
    EXPECT_EQ(preview.refusals[0].reason,
              "[CSET-0072] Cannot import setting. Setting is read-only.");
    EXPECT_EQ(preview.refusals[0].line, "1-000-0-00-08,,Serial,B-2,,Read only");
    EXPECT_EQ(preview.refusals[1].reason, "[CSET-0070] Cannot import setting. PID not defined.");
    for (const qint32 pid : {kNumber, kText, kReadOnly, kBroken})
        EXPECT_TRUE(writes(pid).isEmpty());
    EXPECT_TRUE(log->isEmpty());
}

TEST_F(ImportTest, CancelKeepsWhatChangedAndTheCountsSoFar)
{
    QStringList lines;
    for (int i = 0; i < 1000; ++i) {
        const qint32 pid = 200000000 + (i / 100) * 100000 + i % 100;
        data->addSetting(pid, "s", 1, Value(0));
        lines.append(QStringLiteral("%1,,s,%2").arg(pid).arg(i + 1));
    }
    transfer.setProgressHandler([](qint64 done, qint64 total) {
        EXPECT_EQ(total, 1001);
        return done < 512;
    });
    ASSERT_TRUE(import(lines));
    EXPECT_TRUE(transfer.wasCancelled());
    EXPECT_TRUE(errorText.startsWith("Import cancelled after line 511."))
        << errorText.toStdString();
    // Lines 2 to 511 were imported; the rest of the file was not touched.
    EXPECT_EQ(counts, counted(510, 510, 0));
    int written = 0;
    for (int i = 0; i < 1000; ++i)
        written += int(writes(200000000 + (i / 100) * 100000 + i % 100).size());
    EXPECT_EQ(written, 510);
    EXPECT_EQ(writes(200000000 + 5 * 100000 + 9).size(), 1);  // line 511
    EXPECT_EQ(writes(200000000 + 5 * 100000 + 10).size(), 0); // line 512
}

} // namespace
