#include "importexport/importexporttexts.h"

#include "support/printers.h"

#include <gtest/gtest.h>

using namespace olvex;
namespace texts = olvex::importexporttexts;

namespace {

TEST(ImportExportTexts, ImportSummaryAddsEachNonZeroCountInOrder)
{
    ImportCounts all{11, 1, 2, 3, 4, 5, 6, 7};
    EXPECT_EQ(texts::importSummary("f.csv", all, "Import cancelled after line 9."),
              "Found 11 settings in 'f.csv'.\n\n1 settings were changed.\n2 settings were not "
              "changed because the imported value matches the current value.\n"
              "\n3 lines could not be imported from the file due to parse errors."
              "\n5 blank values were ignored and were not imported."
              "\n4 values could not be imported because they are inconsistent with the Olvex "
              "configuration."
              "\n6 read-only settings could not be changed."
              "\n7 settings could not be changed; attempts to change the settings failed."
              "\nImport cancelled after line 9.");

    const ImportCounts plain{3, 0, 3};
    EXPECT_EQ(texts::importSummary("f.csv", plain, ""),
              "Found 3 settings in 'f.csv'.\n\n0 settings were changed.\n3 settings were not "
              "changed because the imported value matches the current value.\n");
}

// A file may be named anything: its name must come out as it is, never taken for a placeholder.
TEST(ImportExportTexts, FileNameIsNotAPlaceholder)
{
    const QString odd = "$count$ $newline$ $totalcount$.csv";
    EXPECT_EQ(texts::exportSucceeded(odd, ExportCounts{4, 0, false}),
              "Exported 4 settings to '" + odd + "'.");
    EXPECT_TRUE(texts::importSummary(odd, ImportCounts{}, "")
                    .startsWith("Found 0 settings in '" + odd + "'."));
}

TEST(ImportExportTexts, ExportNotes)
{
    EXPECT_EQ(texts::exportSucceeded("f", ExportCounts{2, 2, true}),
              "Exported 2 settings to 'f'.\n\nAll settings have a Null or zero value. You may "
              "need to retry in 30 seconds.");
    EXPECT_EQ(texts::exportSucceeded("f", ExportCounts{5, 2, false}),
              "Exported 5 settings to 'f'.\n\n2 settings had a Null value. You may need to "
              "retry in 30 seconds.");
    EXPECT_EQ(texts::exportFailed(), "Failed. [CSET-0056]");
    EXPECT_EQ(texts::importFailed("x"), "Failed. [CSET-0060] x");
    EXPECT_EQ(texts::accessDenied("bob"), "Access denied. Account 'bob' does not have privileges.");
    EXPECT_EQ(texts::accessDeniedLogLine("bob"),
              "[CSET-0059] Account 'bob' does not have privileges.");
}

TEST(ImportExportTexts, PreviewReportListsChangesAndRefusals)
{
    ImportPreview preview;
    preview.changes.append({2, 123456789, "SO2 span", "12.5", "13"});
    preview.refusals.append({3, "x,y",
                             "[CSET-0067] Cannot import setting. Line does not "
                             "contain enough items."});
    const QString report
        = texts::previewReport("f.csv", ImportCounts{2, 1, 0, 0, 0, 1}, preview, "");
    EXPECT_TRUE(report.contains("  line 2: 1-234-5-67-89 SO2 span: '12.5' -> '13'\n"));
    EXPECT_TRUE(report.contains("  line 3: [CSET-0067] Cannot import setting. Line does not "
                                "contain enough items.  x,y\n"));
    EXPECT_TRUE(report.endsWith("\n1 blank values were ignored and were not imported."));
}

} // namespace
