// The file's building blocks: a CSV line read and written, the Windows-1252 code page, and the
// texts an operator reads after an export or an import.
#include "importexport/csvline.h"
#include "importexport/importexporttexts.h"
#include "importexport/windows1252.h"

#include <gtest/gtest.h>

#include <optional>

using namespace olvex;
using namespace Qt::StringLiterals;
namespace texts = olvex::importexporttexts;

namespace {

struct ParseCase
{
    const char16_t *line;
    std::optional<QStringList> fields; // nullopt: the line must be refused
    const char *error = "";
};

const ParseCase kParseCases[] = {
    // Lines without quotes are split as they stand.
    {u"", QStringList{}},
    {u"a,b,", QStringList{"a", "b", ""}},
    {u",", QStringList{"", ""}},
    {u" a , b ", QStringList{" a ", " b "}},
    {u"1-234-5-67-89,ppm,SO2 span,12.5,10",
     QStringList{"1-234-5-67-89", "ppm", "SO2 span", "12.5", "10"}},
    // Quoted fields.
    {u"a,\"b,c\",d", QStringList{"a", "b,c", "d"}},
    {u"\"x\"\"y\"", QStringList{"x\"y"}},
    {u"\"\"\"\"", QStringList{"\""}},
    {u"\"a\"\"\"", QStringList{"a\""}},
    {u"\"\",\"\"", QStringList{"", ""}},
    {u"a,\"\"", QStringList{"a", ""}},
    {u",\"a\",,", QStringList{"", "a", "", ""}},
    {u"\"\u20AC,\u00B0\",z", QStringList{u"\u20AC,\u00B0"_s, "z"}},
    // A quote that does not open a field is an ordinary character.
    {u"ab\"c,d", QStringList{"ab\"c", "d"}},
    {u" \"a\"", QStringList{" \"a\""}},
    {u"a,b\"\",c", QStringList{"a", "b\"\"", "c"}},
    // Faults, with the position of the offending character (the end of line is length + 1).
    {u"\"x\"y", std::nullopt,
     "[CSV-0002] Parse error at position 4. Quote followed by illegal character."},
    {u"a,b,\"c\"d", std::nullopt,
     "[CSV-0002] Parse error at position 8. Quote followed by illegal character."},
    {u"\"a\" ,b", std::nullopt,
     "[CSV-0002] Parse error at position 4. Quote followed by illegal character."},
    {u"\"abc", std::nullopt, "[CSV-0001] Parse error at position 5. Found unpaired quote."},
    {u"\"a\"\"", std::nullopt, "[CSV-0001] Parse error at position 5. Found unpaired quote."},
    {u"x,\"a,b", std::nullopt, "[CSV-0001] Parse error at position 7. Found unpaired quote."},
    {u"\"", std::nullopt, "[CSV-0001] Parse error at position 2. Found unpaired quote."},
};

// The error of an earlier call is cleared by a call that succeeds: each case starts with one.
TEST(ParseCsvLine, Table)
{
    for (const ParseCase &c : kParseCases) {
        const QString line = QString::fromUtf16(c.line);
        SCOPED_TRACE(line.toStdString());
        QString error = QStringLiteral("stale");
        const auto fields = ParseCsvLine(line, error);
        EXPECT_EQ(fields, c.fields);
        EXPECT_EQ(error, QString::fromUtf8(c.error));
    }
}

// What CsvField writes, ParseCsvLine reads back as the one field it was, line breaks aside. The
// export's line-by-line test pins how it writes commas, quotes and line breaks.
TEST(CsvField, ReadsBackAsTheOneFieldItWas)
{
    for (const QString text : {"", "\"", "\"\"", "\"a\"", "x\"y", " \" ", ",,\",,", "a\r\n,b"}) {
        SCOPED_TRACE(text.toStdString());
        QString error;
        const auto fields = ParseCsvLine(CsvField(text) + QStringLiteral(",tail"), error);
        ASSERT_TRUE(fields) << error.toStdString();
        EXPECT_EQ(*fields, (QStringList{QString(text).replace("\r\n", " "), "tail"}));
    }
}

// One leading and, on its own, one trailing quote go; blanks around them keep them.
TEST(StripQuotes, Table)
{
    const QList<std::pair<QString, QString>> cases = {
        {"\"a\"", "a"},         {"\"a", "a"}, {"a\"", "a"},           {"\"", ""},
        {"\"\"", ""},           {"a", "a"},   {"\"\"a\"\"", "\"a\""}, {"", ""},
        {" \"a\" ", " \"a\" "},
    };
    for (const auto &[text, stripped] : cases)
        EXPECT_EQ(StripQuotes(text), stripped) << text.toStdString();
}

TEST(Windows1252, EveryByteSurvivesARoundTripAndTheRestIsAQuestionMark)
{
    QByteArray all;
    for (int b = 0; b < 256; ++b)
        all.append(char(b));
    const QString text = fromWindows1252(all);
    // Latin-1 but for 0x80 to 0x9F; the five codes the page leaves undefined stay control codes.
    EXPECT_EQ(text.left(0x80), QString::fromLatin1(all.left(0x80)));
    EXPECT_EQ(text.mid(0x80, 0x20),
              u"\u20AC\u0081\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152"
              u"\u008D\u017D\u008F\u0090\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122"
              u"\u0161\u203A\u0153\u009D\u017E\u0178"_s);
    EXPECT_EQ(text.mid(0xA0), QString::fromLatin1(all.mid(0xA0)));
    EXPECT_EQ(toWindows1252(text), all);
    QByteArray appended("x");
    appendWindows1252(appended, text);
    EXPECT_EQ(appended, "x" + all);

    // U+0080 is a Latin-1 code, but not a Windows-1252 one; one '?' per character it cannot
    // hold, also for a character outside the basic plane.
    const QString foreign = u"a\u0080b\u4E2Dc"_s + QString::fromUcs4(U"\U0001F600") + u"d"_s;
    EXPECT_EQ(toWindows1252(foreign), QByteArray("a?b?c?d"));
}

// The export texts and the failure texts are pinned by the panel's and the command line's tests;
// the import summary is pinned here with every count, which no file there produces.
// A file may be named anything: its name must come out as it is, never taken for a placeholder.
TEST(ImportExportTexts, SummaryAddsEachNonZeroCountInOrderAndPreviewListsEachLine)
{
    const QString odd = "$count$ $newline$ $totalcount$.csv";
    EXPECT_EQ(texts::importSummary(odd, ImportCounts{11, 1, 2, 3, 4, 5, 6, 7},
                                   "Import cancelled after line 9."),
              "Found 11 settings in '" + odd
                  + "'.\n\n1 settings were changed.\n2 settings were not changed because the "
                    "imported value matches the current value.\n"
                    "\n3 lines could not be imported from the file due to parse errors."
                    "\n5 blank values were ignored and were not imported."
                    "\n4 values could not be imported because they are inconsistent with the "
                    "Olvex configuration."
                    "\n6 read-only settings could not be changed."
                    "\n7 settings could not be changed; attempts to change the settings failed."
                    "\nImport cancelled after line 9.");
    EXPECT_EQ(texts::importSummary("f.csv", ImportCounts{3, 0, 3}, ""),
              "Found 3 settings in 'f.csv'.\n\n0 settings were changed.\n3 settings were not "
              "changed because the imported value matches the current value.\n");
    EXPECT_EQ(texts::exportSucceeded(odd, ExportCounts{4, 0, false}),
              "Exported 4 settings to '" + odd + "'.");

    // The dry run's report gives the counts, then the lines by their sort.
    ImportPreview preview;
    preview.changes.append({2, 123456789, "SO2 span", "12.5", "13"});
    preview.refusals.append(
        {3, "x,y", "[CSET-0067] Cannot import setting. Line does not contain enough items."});
    const QString report
        = texts::previewReport("f.csv", ImportCounts{2, 1, 0, 0, 0, 1}, preview, "");
    EXPECT_TRUE(report.contains("  line 2: 1-234-5-67-89 SO2 span: '12.5' -> '13'\n"));
    EXPECT_TRUE(report.contains("  line 3: [CSET-0067] Cannot import setting. Line does not "
                                "contain enough items.  x,y\n"));
}

} // namespace
