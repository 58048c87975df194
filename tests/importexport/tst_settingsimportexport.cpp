// Export and import of the settings file against a fake site.
#include "importexport/settingsimportexport.h"

#include "common/datetime.h"
#include "importexport_test_util.h"
#include "support/fake_data_interface.h"
#include "support/fake_log.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <tuple>

using namespace olvex;
using namespace olvex::testutil;
using namespace Qt::StringLiterals;

namespace {

// total, modified, notModified, parseErrors, configErrors, blanks, readOnly, failures
using Counts = std::array<int, 8>;
Counts all(const ImportCounts &c)
{
    return {c.total,        c.modified, c.notModified, c.parseErrors,
            c.configErrors, c.blanks,   c.readOnly,    c.failures};
}

constexpr qint32 kNumber = 123456789;   // 1-234-5-67-89
constexpr qint32 kText = 100000001;     // 1-000-0-00-01
constexpr qint32 kReadOnly = 100000008; // 1-000-0-00-08
constexpr qint32 kBroken = 100000011;   // 1-000-0-00-11
const QString kReadOnlyReason = "[CSET-0072] Cannot import setting. Setting is read-only.";

class TransferTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        data->clock()->setNow(QDateTime(QDate(2025, 12, 31), QTime(23, 59, 58)));
        data->addSetting(kNumber, "SO2 span", 1, Value(12.5), Value(10));
        data->setUnitsText(kNumber, "ppm");
        data->addSetting(kText, "Label", 7, Value("abc"));
        data->addSetting(kReadOnly, "Serial", 7, Value("A-1"))
            ->setAttributeValue(FakeAttributes::Changeable, false);
        data->addSetting(kBroken, "Broken", 1, Value(1))
            ->setFailure(FakeParameter::Op::SetValues, Error(9, "Write refused"));
        data->addGroup(100000100, "Group", {kNumber}); // 1-000-0-01-00, not a setting
    }

    // Every file in the folder: a temporary file left beside the export shows up here.
    QStringList folderEntries() const
    {
        return QDir(dir.path()).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    // Adds n changeable number settings, a hundred to a PID group, from first on; returns their
    // PIDs.
    QList<qint32> addNumberSettings(int n, qint32 first)
    {
        QList<qint32> pids;
        for (int i = 0; i < n; ++i) {
            pids.append(first + (i / 100) * 100000 + i % 100);
            data->addSetting(pids.last(), QStringLiteral("Setting %1").arg(i), 1, Value(i + 1));
        }
        return pids;
    }
    bool importBytes(const QByteArray &bytes, ImportPreview *preview = nullptr)
    {
        writeBytes(path, bytes);
        return transfer.ImportSettings(path, errorText, counts, preview);
    }
    // Imports the site line and the given lines.
    bool import(const QStringList &lines, ImportPreview *preview = nullptr)
    {
        return importBytes(settingsFile(QStringList{";SiteID=PLANT1"} + lines), preview);
    }
    QList<FakeParameter::ValueWrite> writes(qint32 pid) const
    {
        return data->parameter(pid)->valueWrites();
    }

    QTemporaryDir dir;
    QString path = dir.filePath("settings.csv");
    std::shared_ptr<FakeDataInterface> data = std::make_shared<FakeDataInterface>();
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    SettingsImportExport transfer{data, log};
    ExportCounts exported;
    QString errorText;
    ImportCounts counts;
};

// Over a longer file of that name, which must go entirely.
TEST_F(TransferTest, WritesHeaderAndOneLinePerSetting)
{
    writeBytes(path, QByteArray(10000, 'x'));
    const QDateTime when(QDate(2024, 5, 6), QTime(7, 8, 9));
    data->addSetting(100000002, "Limit, hourly", 7, Value("say \"hi\" now"));
    data->setUnitsText(100000002, "lb/hr, avg");
    data->addSetting(100000003, "Not yet read", 1, Value::null(), Value(0));
    data->addSetting(100000004, "Last cal", 4, Value(when));
    data->addSetting(100000005, "Cal day", 2, Value(when));
    data->addSetting(100000006, "Cal time", 3, Value(when));
    data->addSetting(100000007, "Auto cal", 5, Value(true), Value(true));
    data->addSetting(100000009, "Manual cal", 5, Value(0), Value(false));
    data->addSetting(99999, "Orphan", 7, Value("x"));
    data->addSetting(100000010, "Notes", 7, Value("line1\r\nline2\nline3\rline4"));
    data->addSetting(100000012, u"Temp \u00B0F"_s, 7, Value(u"\u201Equoted\u201C"_s));
    data->setUnitsText(100000012, u"\u20AC/MWh"_s);

    ASSERT_TRUE(transfer.ExportSettings(path, exported));
    const QByteArray bytes = readBytes(path);
    const QStringList expected = {
        ";SiteID=PLANT1",
        ";Time=2025-12-31 23:59:58",
        ";PID,UNIT,SETTING,VALUE,DEFAULT",
        "1-234-5-67-89,ppm,SO2 span,12.5,10",
        "1-000-0-00-01,,Label,abc,",
        "1-000-0-00-08,,Serial,A-1,,Read only",
        "1-000-0-00-11,,Broken,1,",
        "1-000-0-00-02,\"lb/hr, avg\",\"Limit, hourly\",\"say \"\"hi\"\" now\",",
        "1-000-0-00-03,,Not yet read,,0",
        "1-000-0-00-04,,Last cal,2024/05/06 07:08:09,",
        "1-000-0-00-05,,Cal day,2024/05/06,",
        "1-000-0-00-06,,Cal time,07:08:09,",
        "1-000-0-00-07,,Auto cal,True,-1",
        "1-000-0-00-09,,Manual cal,0,0",
        ",,Orphan,x,",
        "1-000-0-00-10,,Notes,line1 line2 line3 line4,",
        u"1-000-0-00-12,\u20AC/MWh,Temp \u00B0F,\u201Equoted\u201C,"_s,
    };
    EXPECT_EQ(fileLines(bytes), expected);
    EXPECT_EQ(std::tuple(exported.count, exported.nullCount, exported.allNullOrZero),
              std::tuple(14, 1, false));
    EXPECT_TRUE(log->isEmpty());
    EXPECT_EQ(folderEntries(), QStringList{"settings.csv"});

    // Read back, the file changes nothing it can change but the text that lost its line breaks;
    // the setting without a PID, the one without a value and the read-only one are refused.
    ASSERT_TRUE(transfer.ImportSettings(path, errorText, counts));
    EXPECT_EQ(all(counts), (Counts{14, 1, 10, 1, 0, 1, 1}));
    for (const auto &p : data->parameters())
        EXPECT_EQ(p->valueWrites().size(), p->PidNumber() == 100000010 ? 1 : 0) << p->PidNumber();
    // Once the service has applied it, the same file is "not changed" there too.
    data->applyPendingWrites();
    ASSERT_TRUE(transfer.ImportSettings(path, errorText, counts));
    EXPECT_EQ(counts.notModified, 11);
}

TEST_F(TransferTest, AllNullOrZeroFlag)
{
    const QDateTime zero = zeroDate();
    // Data types and current values; the flag; the count of Null values.
    const std::tuple<const char *, QList<std::pair<int, Value>>, bool, int> cases[] = {
        {"no settings: the header alone", {}, true, 0},
        {"zeros",
         {{1, Value(0)}, {7, Value("")}, {4, Value(zero)}, {2, Value(zero)}, {1, Value()}},
         true,
         0},
        {"a number", {{1, Value::null()}, {1, Value::null()}, {1, Value(5)}}, false, 2},
        {"zero written otherwise", {{1, Value("0.0")}}, false, 0},
        {"zero day, not midnight", {{3, Value(zero.addSecs(3600))}}, false, 0},
    };
    for (const auto &[name, values, allNullOrZero, nullCount] : cases) {
        SCOPED_TRACE(name);
        auto site = std::make_shared<FakeDataInterface>();
        qint32 pid = 100000001;
        for (const auto &[type, value] : values)
            site->addSetting(pid++, "s", type, value);
        exported = ExportCounts{99, 99, false};
        ASSERT_TRUE(SettingsImportExport(site, nullptr).ExportSettings(path, exported));
        EXPECT_EQ(std::tuple(exported.count, exported.nullCount, exported.allNullOrZero),
                  std::tuple(values.size(), nullCount, allNullOrZero));
        EXPECT_EQ(fileLines(readBytes(path)).size(), 3 + values.size());
    }
}

// Whatever goes wrong, the file of that name is the one that was there before, and no
// temporary file is left beside it.
TEST_F(TransferTest, FailureLeavesTheOldFile)
{
    addNumberSettings(600, 300000000);
    const QByteArray old("old content\r\n");
    // Exports to target and fails; logLine is the start of the one line logged (empty:
    // cancelled, nothing logged).
    const auto failsKeepingTheOldFile = [&](const QString &target, const QString &logLine) {
        SCOPED_TRACE(logLine.toStdString());
        writeBytes(path, old);
        log->clear();
        EXPECT_FALSE(transfer.ExportSettings(target, exported));
        EXPECT_EQ(transfer.wasCancelled(), logLine.isEmpty());
        EXPECT_EQ(readBytes(path), old);
        EXPECT_EQ(folderEntries(), QStringList{"settings.csv"});
        EXPECT_EQ(log->lines().size(), logLine.isEmpty() ? 0 : 1);
        for (const LogLine &line : log->lines()) {
            EXPECT_EQ(line.severity, Severity::Error);
            EXPECT_TRUE(line.text.startsWith(logLine) && line.text.endsWith(" [CSET-0058]"))
                << line.text.toStdString();
        }
    };
    transfer.setProgressHandler([](qint64 done, qint64 total) {
        EXPECT_EQ(total, 604);
        return done < 300; // cancelled halfway
    });
    failsKeepingTheOldFile(path, "");
    transfer.setProgressHandler({});
    const QString failed = "Cannot export settings. Error ";
    failsKeepingTheOldFile(dir.filePath("settings.csv/x.csv"), failed + "75, "); // no folder
    data->setFailure(300000000 + 4 * 100000 + 17, FakeParameter::Op::GetCurrentValue,
                     Error(9, "Value unreadable")); // halfway
    failsKeepingTheOldFile(path, failed + "9, Value unreadable [CSET-0058]");
    data->setFailure(FakeDataInterface::Op::GetPidsOfTypes, Error(5, "Store offline"));
    failsKeepingTheOldFile(path, failed + "5, Store offline [CSET-0058]");
}

// The first line must name this site (a file that is not there: the command line's test).
// Comments and blank lines are not counted; any line end will do; the file is Windows-1252
// unless a byte order mark says UTF-8.
TEST_F(TransferTest, WholeFiles)
{
    const QString notFound = "Cannot import settings. Cannot find site ID. [CSET-0063] First line "
                             "in file must start with ;SiteID=";
    const QString blank = "Cannot import settings. Site ID is blank. First line in file must "
                          "specify the Olvex site ID. [CSET-0064]";
    const auto firstLine = [](const QStringList &lines) {
        return settingsFile(lines + QStringList{"1-234-5-67-89,,,13"});
    };
    const QString text = u"\u20AC \u201Equoted\u201C 5\u00B0"_s;
    data->parameter(kText)->setCurrentValue(Value(text));
    const QByteArray ansi = "\x80 \x84quoted\x93 5\xB0";
    // The file, the error (empty: accepted) and the counts of an accepted one.
    const QList<std::tuple<QByteArray, QString, Counts>> cases = {
        {firstLine({";SiteID=plant1"}), "", {1, 1}},
        {firstLine({";SiteID=PLANT1,,,,"}), "", {1, 1}},
        {firstLine({"   ;SiteID=PLANT1   "}), "", {1, 1}},
        {firstLine({";SiteID= PLANT1 second word"}), "", {1, 1}},
        {firstLine({";SiteID= "}), blank, {}},
        {firstLine({"SiteID=PLANT1"}), notFound, {}},
        {firstLine({";SiteID=south"}),
         "Cannot import settings. Site ID 'SOUTH' in file does not match the Olvex site ID "
         "'PLANT1'. [CSET-0065]",
         {}},
        {settingsFile({";SiteID=PLANT1", ";Time=2025-12-31 23:59:58",
                       ";PID,UNIT,SETTING,VALUE,DEFAULT", "", "     ", "  ; indented comment",
                       "1-234-5-67-89,ppm,SO2 span,13,10", ""}),
         "",
         {1, 1}},
        {";SiteID=PLANT1\r1-234-5-67-89,,,13\n\r1-000-0-00-01,,," + ansi + "\n", "", {2, 1, 1}},
        {"\xEF\xBB\xBF;SiteID=PLANT1\r\n1-000-0-00-01,,Label," + text.toUtf8() + "\r\n",
         "",
         {1, 0, 1}},
    };
    for (const auto &[bytes, error, expected] : cases) {
        SCOPED_TRACE(bytes.toStdString());
        const qsizetype writesBefore = writes(kNumber).size();
        EXPECT_EQ(importBytes(bytes), error.isEmpty());
        EXPECT_EQ(errorText, error);
        if (error.isEmpty())
            EXPECT_EQ(all(counts), expected);
        else
            EXPECT_EQ(writes(kNumber).size(), writesBefore);
    }
    EXPECT_TRUE(log->isEmpty());
}

// Each refused line is logged as the reason, two blanks and the line.
TEST_F(TransferTest, EachLineIsCountedAndLogged)
{
    const int err = Severity::Error;
    const int note = Severity::Note;
    const QString blank = "[CSET-0069] Cannot import setting. Value is blank.";
    const QString noPid = "[CSET-0068] Cannot import setting. Cannot parse PID.";
    const QString tooShort
        = "[CSET-0067] Cannot import setting. Line does not contain enough items.";
    const QString undefined = "[CSET-0070] Cannot import setting. PID not defined.";
    const QString notSetting = "[CSET-0071] Cannot import setting. PID is not a Setting parameter.";
    // The line, its counts, the severity of its one log line (0: none) and its reason. The CSV
    // parser's own table pins its faults; here, that its text follows the import's.
    const std::tuple<QString, Counts, int, QString> cases[] = {
        {"1-234-5-67-89,ppm,SO2 span,12.5,10", {1, 0, 1}, 0, ""},
        {"1-234-5-67-89,ppm,SO2 span,13,10", {1, 1}, 0, ""},
        {"123456789,,,13", {1, 1}, 0, ""},
        {"1-234-5-67-89,ppm,SO2 span, \"12.5\" ,10", {1, 0, 1}, 0, ""},
        {"  1-000-0-00-01,,Label,abc  ", {1, 0, 1}, 0, ""},
        {"1-000-0-00-01,,Label,ABC", {1, 1}, 0, ""},
        {"1-234-5-67-89,ppm,\"a\"b,1",
         {1, 0, 0, 1},
         err,
         "[CSET-0066] Cannot import setting. Cannot parse line. [CSV-0002] Parse error at "
         "position 22. Quote followed by illegal character."},
        {"1-234-5-67-89,ppm,SO2 span", {1, 0, 0, 0, 0, 1}, note, tooShort},
        {"no pid,ppm,x,5", {1, 0, 0, 1}, err, noPid},
        {"1-234-5-67-89,ppm,SO2 span,   ,10", {1, 0, 0, 0, 0, 1}, note, blank},
        {"1-234-5-67-89,ppm,SO2 span,\"\",10", {1, 0, 0, 0, 0, 1}, note, blank},
        {"1-000-0-00-50,,Unknown,5", {1, 0, 0, 0, 1}, err, undefined},
        {"1-000-0-01-00,,Group,5", {1, 0, 0, 0, 1}, err, notSetting},
        {"1-000-0-00-08,,Serial,B-2,,Read only", {1, 0, 0, 0, 0, 0, 1}, err, kReadOnlyReason},
        // Read only comes before the comparison: an unchanged value is refused all the same.
        {"1-000-0-00-08,,Serial,A-1,,Read only", {1, 0, 0, 0, 0, 0, 1}, err, kReadOnlyReason},
    };
    // Each line alone, looked up PID by PID (a small file) and against the batch of all
    // settings read up front (a large one): the outcome must not depend on the way.
    for (const bool batch : {false, true}) {
        transfer.setBatchFromLines(batch ? 0 : 1000000);
        for (const auto &[line, expected, severity, reason] : cases) {
            SCOPED_TRACE((batch ? "batch: " : "by PID: ") + line.toStdString());
            log->clear();
            ASSERT_TRUE(import({line})) << errorText.toStdString();
            EXPECT_EQ(all(counts), expected);
            EXPECT_TRUE(errorText.isEmpty());
            if (severity == 0)
                EXPECT_TRUE(log->isEmpty()) << log->texts().join('\n').toStdString();
            else
                EXPECT_EQ(log->lines(), (QList<LogLine>{{severity, reason + "  " + line}}));
        }
    }
    EXPECT_EQ(data->pidsOfTypesRequests().size(), std::size(cases));

    // A whole file out of the site's order, a PID twice: every line finds its own setting.
    QStringList lines;
    Counts sum{};
    for (auto it = std::rbegin(cases); it != std::rend(cases); ++it) {
        lines.append(std::get<0>(*it));
        for (size_t i = 0; i < sum.size(); ++i)
            sum[i] += std::get<1>(*it)[i];
    }
    lines.append(std::get<0>(cases[0]));
    sum[0] += 1; // total
    sum[2] += 1; // not changed
    for (const bool batch : {false, true}) {
        SCOPED_TRACE(batch ? "batch" : "by PID");
        transfer.setBatchFromLines(batch ? 0 : 1000000);
        ASSERT_TRUE(import(lines)) << errorText.toStdString();
        EXPECT_EQ(all(counts), sum);
    }
}

// A long file of refused lines costs a few writes of the log, not one per line; what is held goes
// out before a change, so the log keeps the order of what happened.
TEST_F(TransferTest, RefusedLinesAreLoggedInGroupsAheadOfAnyChange)
{
    struct GroupLog : RecordingLog
    {
        QList<qsizetype> groups;
        std::function<void()> onGroup;
        void LogMessages(const QList<LogLine> &lines) override
        {
            groups.append(lines.size());
            onGroup();
            RecordingLog::LogMessages(lines);
        }
    };
    auto groupLog = std::make_shared<GroupLog>();
    QList<qsizetype> writesBefore;
    groupLog->onGroup = [&] {
        writesBefore.append(writes(kNumber).size());
    };
    SettingsImportExport grouped(data, groupLog);
    QStringList lines(1200, "1-000-0-00-08,,Serial,B-2");
    lines << "1-234-5-67-89,ppm,SO2 span,13,10"
          << "no pid,ppm,x,5";
    writeBytes(path, settingsFile(QStringList{";SiteID=PLANT1"} + lines));
    ASSERT_TRUE(grouped.ImportSettings(path, errorText, counts));
    EXPECT_EQ(groupLog->groups, (QList<qsizetype>{500, 500, 200, 1}));
    EXPECT_EQ(writesBefore, (QList<qsizetype>{0, 0, 0, 1}));
    ASSERT_EQ(groupLog->lines().size(), 1201);
    EXPECT_TRUE(groupLog->lines().last().text.startsWith("[CSET-0068]"));
}

// First as a preview: what would change and what is refused, with no write and no log line (a
// write that would fail is not tried, so it is a change). Then for real: the value goes to the
// setting as the text of the file in a list of one; a write the store refuses is counted and
// logged with its reason. Last with the store failing.
TEST_F(TransferTest, PreviewThenImport)
{
    const QStringList lines
        = {"1-000-0-00-11,,Broken,2", "1-234-5-67-89,ppm,SO2 span,13,10",
           "1-000-0-00-01,,Label,\"x, y\"", "1-000-0-00-08,,Serial,B-2,,Read only"};
    ImportPreview preview;
    ASSERT_TRUE(import(lines, &preview));
    EXPECT_EQ(all(counts), (Counts{4, 3, 0, 0, 0, 0, 1}));
    ASSERT_EQ(preview.changes.size(), 3);
    const ImportChange &change = preview.changes[1];
    EXPECT_EQ(
        std::tuple(change.lineNumber, change.pid, change.name, change.currentText, change.fileText),
        std::tuple(3, kNumber, u"SO2 span"_s, u"12.5"_s, u"13"_s));
    ASSERT_EQ(preview.refusals.size(), 1);
    const ImportRefusal &refusal = preview.refusals[0];
    EXPECT_EQ(std::tuple(refusal.lineNumber, refusal.reason, refusal.line),
              std::tuple(5, kReadOnlyReason, lines[3]));
    for (const qint32 pid : {kNumber, kText, kBroken})
        EXPECT_TRUE(writes(pid).isEmpty());
    EXPECT_TRUE(log->isEmpty());

    ASSERT_TRUE(import(lines));
    EXPECT_EQ(all(counts), (Counts{4, 2, 0, 0, 0, 0, 1, 1}));
    using Writes = QList<FakeParameter::ValueWrite>;
    EXPECT_EQ(writes(kNumber), (Writes{{3, Value(QList<Value>{Value("13")})}}));
    EXPECT_EQ(writes(kText), (Writes{{3, Value(QList<Value>{Value("x, y")})}}));
    EXPECT_EQ(log->texts(),
              (QStringList{"[CSET-0078] Error 9, Write refused; PID=1-000-0-00-11",
                           "[CSET-0073] Cannot import setting. Attempt to change setting failed.  "
                               + lines[0],
                           kReadOnlyReason + "  " + lines[3]}));
    for (const LogLine &line : log->lines())
        EXPECT_EQ(line.severity, Severity::Error);

    // A store that fails unexpectedly stops the import; what changed before stays changed.
    log->clear();
    data->parameter(kText)->setFailure(FakeParameter::Op::GetAttribute, Error(5, "Store offline"),
                                       FakeAttributes::Changeable);
    EXPECT_FALSE(import(lines.mid(1)));
    EXPECT_EQ(errorText, "Cannot import settings. Error 5, Store offline [CSET-0074]");
    EXPECT_EQ(log->lines(), (QList<LogLine>{{Severity::Error, errorText}}));
    EXPECT_EQ(all(counts), (Counts{2, 1}));
    EXPECT_EQ(writes(kNumber).size(), 2);
}

TEST_F(TransferTest, CancelKeepsWhatChangedAndTheCountsSoFar)
{
    const QList<qint32> pids = addNumberSettings(1000, 200000000);
    QStringList lines;
    for (const qint32 pid : pids)
        lines.append(QStringLiteral("%1,,s,0").arg(pid));
    transfer.setProgressHandler([](qint64 done, qint64 total) {
        EXPECT_EQ(total, 1001);
        return done < 512;
    });
    ASSERT_TRUE(import(lines));
    EXPECT_TRUE(transfer.wasCancelled());
    EXPECT_TRUE(errorText.startsWith("Import cancelled after line 511."))
        << errorText.toStdString();
    // Lines 2 to 511 were imported; the rest of the file was not touched.
    EXPECT_EQ(all(counts), (Counts{510, 510}));
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(writes(pids[i]).size(), i < 510 ? 1 : 0) << "line " << i + 2;
}

} // namespace
