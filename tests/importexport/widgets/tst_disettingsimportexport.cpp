#include "importexport/widgets/disettingsimportexport.h"

#include "importexport/importexport_test_util.h"
#include "importexport/importexporttexts.h"
#include "importexport/widgets/importpreviewdialog.h"
#include "support/fake_data_interface.h"
#include "support/fake_log.h"
#include "support/widgets/scripted_ui.h"

#include <QCheckBox>
#include <QDir>
#include <QLineEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

using namespace olvex;
using namespace olvex::testutil;
namespace texts = olvex::importexporttexts;

namespace {

using Box = std::pair<int, QString>; // style, text
constexpr int kInformation = MessageBoxStyle::Information;
constexpr int kExclamation = MessageBoxStyle::Exclamation;

class PanelTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        ConnectionDescription connection;
        connection.ExportFolder = "/olvex/export";
        data->setConnectionSettings(connection);
        data->addSetting(100000001, "SO2 span", 1, Value(12.5), Value(10));
        data->addSetting(100000002, "Label", 7, Value("abc"));
        data->user()->setName("jsmith");
        data->user()->grant(Privileges::ImportSettings);
        panel.Setup(log, data);
    }

    template<class T>
    T *child(const char *name) const
    {
        T *found = panel.findChild<T *>(QString::fromLatin1(name));
        EXPECT_TRUE(found) << name;
        return found;
    }
    // Clicks the button; returns the one message box it showed, under the application's title.
    Box click(const char *button)
    {
        ui.clearMessageBoxes();
        QTest::mouseClick(child<QPushButton>(button), Qt::LeftButton);
        EXPECT_LE(ui.messageBoxes().size(), 1);
        if (ui.messageBoxes().isEmpty())
            return {};
        EXPECT_EQ(ui.lastMessageBox().title, ui.applicationTitle());
        return {ui.lastMessageBox().style, ui.lastMessageBox().text};
    }
    QLineEdit *box(const char *name) const { return child<QLineEdit>(name); }
    QString file(const QString &name) const { return QDir::toNativeSeparators(dir.filePath(name)); }
    void writeImportFile(const QStringList &lines, const QString &site = "PLANT1")
    {
        writeBytes(file("in.csv"), settingsFile(QStringList{";SiteID=" + site} + lines));
        box("txtImportFile")->setText(file("in.csv"));
    }
    qsizetype writesTo(qint32 pid) const { return data->parameter(pid)->valueWrites().size(); }

    QTemporaryDir dir;
    std::shared_ptr<FakeDataInterface> data = std::make_shared<FakeDataInterface>();
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    ScriptedUi ui;
    DISettingsImportExport panel{&ui};
};

TEST_F(PanelTest, ControlsSayWhyTheyAreDisabledAndFileChoosersFillTheirBoxes)
{
    EXPECT_EQ(child<QCheckBox>("chkOpenExportedFile")->text(), "Open file after saving");
    EXPECT_EQ(box("txtExportFile")->text(),
              QDir::toNativeSeparators("/olvex/export/Olvex Settings PLANT1 2026-03-01 14.05.csv"));

    // A site ID is no folder.
    data->setSiteId("NORTH/2");
    DISettingsImportExport other(&ui);
    other.Setup(log, data);
    EXPECT_TRUE(other.findChild<QLineEdit *>("txtExportFile")
                    ->text()
                    .endsWith("Olvex Settings NORTH_2 2026-03-01 14.05.csv"));

    DISettingsImportExport unset(&ui);
    auto *exportButton = unset.findChild<QPushButton *>("cmdExport");
    EXPECT_FALSE(exportButton->isEnabled());
    EXPECT_FALSE(exportButton->toolTip().isEmpty());
    box("txtImportFile")->setText("");
    EXPECT_FALSE(child<QPushButton>("cmdImport")->isEnabled());
    EXPECT_EQ(child<QPushButton>("cmdImport")->toolTip(), "Enter or choose the file to import.");
    box("txtImportFile")->setText("x.csv");
    EXPECT_TRUE(child<QPushButton>("cmdImport")->isEnabled());
    EXPECT_TRUE(child<QPushButton>("cmdPreviewImport")->isEnabled());

    // The file choosers: a cancelled one leaves the box as it was.
    const QString proposed = box("txtExportFile")->text();
    click("cmdGetExportFilename");
    EXPECT_EQ(box("txtExportFile")->text(), proposed);
    ui.queueSaveFileName(dir.filePath("out.csv"));
    click("cmdGetExportFilename");
    EXPECT_EQ(box("txtExportFile")->text(), file("out.csv"));
    ui.queueOpenFileName(dir.filePath("in.csv"));
    click("cmdGetImportFilename");
    EXPECT_EQ(box("txtImportFile")->text(), file("in.csv"));

    ASSERT_EQ(ui.fileDialogs().size(), 3);
    // Each answer came from the dialog of its kind, or the box would not have it.
    const FileDialogCall &save = ui.fileDialogs()[0];
    const FileDialogCall &open = ui.fileDialogs()[2];
    EXPECT_EQ(save.proposedName, proposed);
    EXPECT_EQ(save.defaultExtension, ".csv");
    for (const QString &filter : {save.filter, open.filter})
        EXPECT_EQ(filter, "CSV Files (*.csv)|*.csv|All Files (*.*)|*.*");
}

// The failure's text is pinned by the command line's test; here, that it comes as a warning.
TEST_F(PanelTest, ExportMessages)
{
    const QString exported = "Exported 2 settings to '" + file("out.csv") + "'.";
    const QString retry = " You may need to retry in 30 seconds.";
    // Chosen in the Save As dialog, whose own question covers replacing it.
    ui.queueSaveFileName(dir.filePath("out.csv"));
    click("cmdGetExportFilename");
    EXPECT_EQ(click("cmdExport"), Box(kInformation, exported));
    data->parameter(100000002)->setCurrentValue(Value::null());
    EXPECT_EQ(click("cmdExport"),
              Box(kInformation, exported + "\n\n1 settings had a Null value." + retry));
    data->parameter(100000001)->setCurrentValue(Value(0));
    EXPECT_EQ(click("cmdExport"),
              Box(kInformation, exported + "\n\nAll settings have a Null or zero value." + retry));
    data->setFailure(FakeDataInterface::Op::GetPidsOfTypes, Error(5, "Offline"));
    EXPECT_EQ(click("cmdExport"),
              Box(kExclamation, texts::exportFailed("'" + file("out.csv") + "': Offline")));
    EXPECT_EQ(log->texts(), QStringList{"Cannot export settings. Error 5, Offline [CSET-0058]"});
    EXPECT_TRUE(ui.openedFiles().isEmpty());

    data->clearFailures();
    child<QCheckBox>("chkOpenExportedFile")->setChecked(true);
    click("cmdExport");
    EXPECT_EQ(ui.openedFiles(), QStringList{file("out.csv")});
}

// Import needs privilege 250; then the summary of what the file did, or the failure.
TEST_F(PanelTest, ImportMessages)
{
    data->user()->revoke(Privileges::ImportSettings);
    writeImportFile({"1-000-0-00-01,,SO2 span,13", "1-000-0-00-02,,Label,abc", "bad,,,1",
                     "1-000-0-00-02,,Label", "1-000-0-00-77,,Unknown,1"});
    EXPECT_EQ(click("cmdImport"),
              Box(kExclamation, "Access denied. Account 'jsmith' does not have privileges."));
    EXPECT_EQ(log->lines(), (QList<LogLine>{{Severity::Error, "[CSET-0059] Account 'jsmith' "
                                                              "does not have privileges."}}));
    EXPECT_EQ(data->user()->privilegeQueries(), QList<int>{250});
    EXPECT_EQ(writesTo(100000001), 0);

    data->user()->grant(Privileges::ImportSettings);
    EXPECT_EQ(click("cmdImport"),
              Box(kInformation,
                  texts::importSummary(file("in.csv"), ImportCounts{5, 1, 1, 1, 1, 1}, "")));
    EXPECT_EQ(writesTo(100000001), 1);

    writeImportFile({"1-000-0-00-01,,SO2 span,13"}, "SOUTH");
    const Box failed = click("cmdImport");
    EXPECT_EQ(failed.first, kExclamation);
    EXPECT_TRUE(failed.second.startsWith("Failed. [CSET-0060] Cannot import settings. Site ID "))
        << failed.second.toStdString();
    EXPECT_EQ(writesTo(100000001), 1);
}

TEST_F(PanelTest, PreviewListsAndImportsOnlyWhenAccepted)
{
    writeImportFile({"1-000-0-00-01,,SO2 span,13", "1-000-0-00-77,,Unknown,1"});
    QStringList change;
    QString refusal;
    ui.queueModal([&](QDialog &dialog) {
        auto &preview = dynamic_cast<ImportPreviewDialog &>(dialog);
        const QTreeWidgetItem *changes = preview.section(texts::PreviewSort::Change);
        EXPECT_EQ(changes->childCount(), 1);
        for (const int column : {1, 3, 4})
            change.append(changes->child(0)->text(column));
        refusal = preview.section(texts::PreviewSort::Fail)->child(0)->text(5);
        return int(QDialog::Rejected);
    });
    EXPECT_EQ(click("cmdPreviewImport"), Box());
    EXPECT_EQ(change, (QStringList{"1-000-0-00-01", "12.5", "13"}));
    EXPECT_TRUE(refusal.startsWith("would fail: [CSET-0070] ")) << refusal.toStdString();
    EXPECT_EQ(writesTo(100000001), 0);
    EXPECT_TRUE(log->isEmpty());

    ui.queueModal(ScriptedUi::acceptAfter());
    EXPECT_TRUE(click("cmdPreviewImport").second.startsWith("Found 2 settings in '"));
    EXPECT_EQ(writesTo(100000001), 1);
}

TEST_F(PanelTest, CancelledExportKeepsTheOldFile)
{
    for (int i = 0; i < 600; ++i)
        data->addSetting(200000000 + (i / 100) * 100000 + i % 100, "s", 1, Value(i));
    writeBytes(file("out.csv"), "old\r\n");
    ui.queueSaveFileName(dir.filePath("out.csv"));
    click("cmdGetExportFilename");
    panel.setProgressThreshold(100);
    // The user presses Cancel as soon as the progress dialog shows.
    QTimer::singleShot(0, &panel, [&] {
        if (auto *progress = panel.findChild<QProgressDialog *>("dlgProgress"))
            progress->cancel();
    });
    EXPECT_EQ(click("cmdExport"),
              Box(kInformation, "Export cancelled. '" + file("out.csv")
                                    + "' was not written; an earlier file of that name is "
                                      "unchanged."));
    EXPECT_EQ(readBytes(file("out.csv")), QByteArray("old\r\n"));
    EXPECT_FALSE(panel.findChild<QProgressDialog *>("dlgProgress"));
    EXPECT_TRUE(child<QPushButton>("cmdExport")->isEnabled());
}

} // namespace
