// What the panel leaves on screen after an import, and the questions and texts of its export.
#include "importexport/importexport_test_util.h"
#include "importexport/importexporttexts.h"
#include "importexport/widgets/disettingsimportexport.h"
#include "importexport/widgets/importresultview.h"
#include "support/fake_data_interface.h"
#include "support/widgets/scripted_ui.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

using namespace olvex;
using namespace olvex::testutil;
namespace texts = olvex::importexporttexts;

namespace {

class ResultTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        data->addSetting(100000001, "SO2 span", SettingType::Number, Value(12.5))
            ->setFailure(FakeParameter::Op::SetValues, Error(6, "Overflow: too large"));
        data->addSetting(100000002, "Label", SettingType::Text, Value("abc"));
        data->user()->grant(Privileges::ImportSettings);
        panel.Setup(nullptr, data);
    }
    void click(const char *name)
    {
        QTest::mouseClick(panel.findChild<QPushButton *>(name), Qt::LeftButton);
    }
    QLineEdit *box(const char *name) { return panel.findChild<QLineEdit *>(name); }

    QTemporaryDir dir;
    std::shared_ptr<FakeDataInterface> data = std::make_shared<FakeDataInterface>();
    ScriptedUi ui;
    DISettingsImportExport panel{&ui};
};

TEST_F(ResultTest, ImportLeavesItsSummaryAndUndoneLinesOnThePanel)
{
    writeBytes(dir.filePath("in.csv"),
               settingsFile({";SiteID=PLANT1", "1-000-0-00-01,,SO2 span,1e99",
                             "1-000-0-00-02,,Label,new", "1-000-0-00-02,,Label,"}));
    box("txtImportFile")->setText(dir.filePath("in.csv"));
    EXPECT_FALSE(panel.importResult()->isVisibleTo(&panel));
    click("cmdImport");
    ASSERT_EQ(ui.messageBoxes().size(), 1);
    EXPECT_TRUE(panel.importResult()->isVisibleTo(&panel));
    QTreeWidget *lines = panel.importResult()->lines();
    ASSERT_EQ(lines->topLevelItemCount(), 2);
    // The failure first, with its line number and the data interface's reason.
    EXPECT_EQ(lines->topLevelItem(0)->text(0), "2");
    EXPECT_EQ(lines->topLevelItem(0)->text(1), "[CSET-0078] Error 6, Overflow: too large");
    EXPECT_EQ(lines->topLevelItem(1)->text(0), "4");

    ui.queueSaveFileName(dir.filePath("result.txt"));
    panel.findChild<QPushButton *>("cmdSaveImportResult")->click();
    const QByteArray saved = readBytes(dir.filePath("result.txt"));
    EXPECT_TRUE(saved.startsWith(ui.messageBoxes().first().text.toUtf8().replace("\n", "\r\n")));
    EXPECT_TRUE(saved.contains("\r\nline 2: [CSET-0078] Error 6, Overflow: too large  "
                               "1-000-0-00-01,,SO2 span,1e99\r\n"));
}

// An existing file is replaced only on Yes; the one the Save As dialog chose asks no more.
TEST_F(ResultTest, ExportAsksBeforeReplacing)
{
    const QString out = dir.filePath("out.csv");
    writeBytes(out, "old\r\n");
    box("txtExportFile")->setText(out);
    click("cmdExport");
    ASSERT_EQ(ui.messageBoxes().size(), 1);
    EXPECT_EQ(ui.lastMessageBox().text, texts::exportReplaceQuestion(out));
    EXPECT_EQ(readBytes(out), "old\r\n"); // the cautious answer is No

    ui.queueAnswers({MessageBoxAnswer::Yes});
    click("cmdExport");
    EXPECT_TRUE(readBytes(out).startsWith(";SiteID=PLANT1\r\n"));

    ui.clearMessageBoxes();
    ui.queueSaveFileName(out);
    click("cmdGetExportFilename");
    click("cmdExport");
    ASSERT_EQ(ui.messageBoxes().size(), 1);
    EXPECT_TRUE(ui.lastMessageBox().text.startsWith("Exported 2 settings"));
}

} // namespace
