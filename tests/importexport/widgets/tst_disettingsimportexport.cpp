#include "importexport/widgets/disettingsimportexport.h"

#include "importexport/importexport_test_util.h"
#include "importexport/widgets/importpreviewdialog.h"
#include "support/fake_data_interface.h"
#include "support/fake_log.h"
#include "support/widgets/scripted_ui.h"

#include <QCheckBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QProgressDialog>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <QUrl>

#include <gtest/gtest.h>

using namespace olvex;
using namespace olvex::testutil;

namespace {

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
    void click(const char *button)
    {
        QTest::mouseClick(child<QPushButton>(button), Qt::LeftButton);
    }
    void setText(const char *box, const QString &text) { child<QLineEdit>(box)->setText(text); }
    QString file(const QString &name) const { return QDir::toNativeSeparators(dir.filePath(name)); }
    void writeImportFile(const QStringList &lines)
    {
        writeBytes(file("in.csv"), settingsFile(QStringList{";SiteID=PLANT1"} + lines));
        setText("txtImportFile", file("in.csv"));
    }

    QTemporaryDir dir;
    std::shared_ptr<FakeDataInterface> data = std::make_shared<FakeDataInterface>();
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    ScriptedUi ui;
    DISettingsImportExport panel{&ui};
};

TEST_F(PanelTest, ControlsAndProposedName)
{
    EXPECT_EQ(panel.objectName(), "DISettingsImportExport");
    for (const char *name : {"cmdGetExportFilename", "cmdExport", "cmdGetImportFilename",
                             "cmdImport", "cmdPreviewImport"})
        EXPECT_TRUE(panel.findChild<QPushButton *>(name)) << name;
    EXPECT_EQ(child<QCheckBox>("chkOpenExportedFile")->text(), "Open file after saving");
    EXPECT_EQ(child<QLineEdit>("txtExportFile")->text(),
              QDir::toNativeSeparators("/olvex/export/Olvex Settings PLANT1 2026-03-01 14.05.csv"));
}

TEST_F(PanelTest, DisabledControlsSayWhy)
{
    DISettingsImportExport unset(&ui);
    auto *exportButton = unset.findChild<QPushButton *>("cmdExport");
    EXPECT_FALSE(exportButton->isEnabled());
    EXPECT_FALSE(exportButton->toolTip().isEmpty());

    setText("txtImportFile", "");
    EXPECT_FALSE(child<QPushButton>("cmdImport")->isEnabled());
    EXPECT_EQ(child<QPushButton>("cmdImport")->toolTip(), "Enter or choose the file to import.");
    setText("txtImportFile", "x.csv");
    EXPECT_TRUE(child<QPushButton>("cmdImport")->isEnabled());
    EXPECT_TRUE(child<QPushButton>("cmdPreviewImport")->isEnabled());
}

TEST_F(PanelTest, FileChoosers)
{
    const QString proposed = child<QLineEdit>("txtExportFile")->text();
    click("cmdGetExportFilename"); // cancelled: the name stays
    EXPECT_EQ(child<QLineEdit>("txtExportFile")->text(), proposed);
    ui.queueSaveFileName(dir.filePath("out.csv"));
    click("cmdGetExportFilename");
    EXPECT_EQ(child<QLineEdit>("txtExportFile")->text(), file("out.csv"));
    ui.queueOpenFileName(dir.filePath("in.csv"));
    click("cmdGetImportFilename");
    EXPECT_EQ(child<QLineEdit>("txtImportFile")->text(), file("in.csv"));

    ASSERT_EQ(ui.fileDialogs().size(), 3);
    const FileDialogCall &save = ui.fileDialogs()[0];
    EXPECT_EQ(save.kind, FileDialogCall::Kind::Save);
    EXPECT_EQ(save.proposedName, proposed);
    EXPECT_EQ(save.filter, "CSV Files (*.csv)|*.csv|All Files (*.*)|*.*");
    EXPECT_EQ(save.defaultExtension, ".csv");
    const FileDialogCall &open = ui.fileDialogs()[2];
    EXPECT_EQ(open.kind, FileDialogCall::Kind::Open);
    EXPECT_EQ(open.filter, "CSV Files (*.csv)|*.csv|All Files (*.*)|*.*");
}

TEST_F(PanelTest, ExportMessages)
{
    const QString path = file("out.csv");
    const struct
    {
        const char *name;
        std::function<void()> arrange;
        QString text;
        int style;
    } cases[] = {
        {"values", [] {}, "Exported 2 settings to '" + path + "'.", MessageBoxStyle::Information},
        {"one null", [&] { data->parameter(100000002)->setCurrentValue(Value::null()); },
         "Exported 2 settings to '" + path
             + "'.\n\n1 settings had a Null value. You may need to retry in 30 seconds.",
         MessageBoxStyle::Information},
        {"all null or zero", [&] { data->parameter(100000001)->setCurrentValue(Value(0)); },
         "Exported 2 settings to '" + path
             + "'.\n\nAll settings have a Null or zero value. You may need to retry in 30 seconds.",
         MessageBoxStyle::Information},
        {"store offline",
         [&] { data->setFailure(FakeDataInterface::Op::GetPidsOfTypes, Error(5, "Offline")); },
         "Failed. [CSET-0056]", MessageBoxStyle::Exclamation},
    };
    setText("txtExportFile", path);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        c.arrange();
        ui.clearMessageBoxes();
        click("cmdExport");
        ASSERT_EQ(ui.messageBoxes().size(), 1);
        EXPECT_EQ(ui.lastMessageBox().text, c.text);
        EXPECT_EQ(ui.lastMessageBox().style, c.style);
        EXPECT_EQ(ui.lastMessageBox().title, ui.applicationTitle());
    }
    EXPECT_EQ(log->texts(), QStringList{"Cannot export settings. Error 5, Offline [CSET-0058]"});
    EXPECT_TRUE(ui.openedFiles().isEmpty());
}

TEST_F(PanelTest, OpensTheExportedFileWhenAsked)
{
    setText("txtExportFile", file("out.csv"));
    child<QCheckBox>("chkOpenExportedFile")->setChecked(true);
    click("cmdExport");
    EXPECT_EQ(ui.openedFiles(), QStringList{file("out.csv")});
}

TEST_F(PanelTest, ImportNeedsPrivilege250)
{
    data->user()->revoke(Privileges::ImportSettings);
    writeImportFile({"1-000-0-00-01,,SO2 span,13"});
    click("cmdImport");
    ASSERT_EQ(ui.messageBoxes().size(), 1);
    EXPECT_EQ(ui.lastMessageBox().text,
              "Access denied. Account 'jsmith' does not have privileges.");
    EXPECT_EQ(ui.lastMessageBox().style, MessageBoxStyle::Exclamation);
    EXPECT_EQ(log->lines(), (QList<LogLine>{{Severity::Error, "[CSET-0059] Account 'jsmith' "
                                                              "does not have privileges."}}));
    EXPECT_TRUE(data->parameter(100000001)->valueWrites().isEmpty());
    EXPECT_EQ(data->user()->privilegeQueries(), QList<int>{250});
}

TEST_F(PanelTest, ImportSummary)
{
    writeImportFile({"1-000-0-00-01,,SO2 span,13", "1-000-0-00-02,,Label,abc", "bad,,,1",
                     "1-000-0-00-02,,Label", "1-000-0-00-77,,Unknown,1"});
    click("cmdImport");
    EXPECT_EQ(ui.lastMessageBox().text,
              "Found 5 settings in '" + file("in.csv")
                  + "'.\n\n1 settings were changed.\n1 settings were not changed because the "
                    "imported value matches the current value.\n"
                    "\n1 lines could not be imported from the file due to parse errors."
                    "\n1 blank values were ignored and were not imported."
                    "\n1 values could not be imported because they are inconsistent with the "
                    "Olvex configuration.");
    EXPECT_EQ(ui.lastMessageBox().style, MessageBoxStyle::Information);
    EXPECT_EQ(data->parameter(100000001)->valueWrites().size(), 1);
}

TEST_F(PanelTest, ImportFailure)
{
    writeBytes(file("in.csv"), settingsFile({";SiteID=SOUTH", "1-000-0-00-01,,SO2 span,13"}));
    setText("txtImportFile", file("in.csv"));
    click("cmdImport");
    EXPECT_EQ(ui.lastMessageBox().text,
              "Failed. [CSET-0060] Cannot import settings. Site ID 'SOUTH' in file does not match "
              "the Olvex site ID 'PLANT1'. [CSET-0065]");
    EXPECT_EQ(ui.lastMessageBox().style, MessageBoxStyle::Exclamation);
}

TEST_F(PanelTest, PreviewListsAndImportsOnlyWhenAccepted)
{
    writeImportFile({"1-000-0-00-01,,SO2 span,13", "1-000-0-00-77,,Unknown,1"});
    int changeRows = -1;
    QString refusal;
    ui.queueModal([&](QDialog &dialog) {
        auto &preview = dynamic_cast<ImportPreviewDialog &>(dialog);
        changeRows = preview.changesList()->topLevelItemCount();
        EXPECT_EQ(preview.changesList()->topLevelItem(0)->text(1), "1-000-0-00-01");
        EXPECT_EQ(preview.changesList()->topLevelItem(0)->text(3), "12.5");
        EXPECT_EQ(preview.changesList()->topLevelItem(0)->text(4), "13");
        refusal = preview.refusalsList()->topLevelItem(0)->text(1);
        return int(QDialog::Rejected);
    });
    click("cmdPreviewImport");
    EXPECT_EQ(changeRows, 1);
    EXPECT_EQ(refusal, "[CSET-0070] Cannot import setting. PID not defined.");
    EXPECT_TRUE(data->parameter(100000001)->valueWrites().isEmpty());
    EXPECT_TRUE(ui.messageBoxes().isEmpty());
    EXPECT_TRUE(log->isEmpty());

    ui.queueModal(ScriptedUi::acceptAfter());
    click("cmdPreviewImport");
    EXPECT_EQ(data->parameter(100000001)->valueWrites().size(), 1);
    EXPECT_TRUE(ui.lastMessageBox().text.startsWith("Found 2 settings in '"));
}

TEST_F(PanelTest, DropOfFilesOnBothBoxes)
{
    for (const char *name : {"txtExportFile", "txtImportFile"}) {
        SCOPED_TRACE(name);
        QLineEdit *box = child<QLineEdit>(name);
        box->setText("before");

        QMimeData text;
        text.setText("some text");
        QDragEnterEvent enterText(QPoint(5, 5), Qt::CopyAction | Qt::MoveAction, &text,
                                  Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(box, &enterText);
        EXPECT_FALSE(enterText.isAccepted());

        QMimeData files;
        files.setUrls({QUrl::fromLocalFile(dir.filePath("first.csv")),
                       QUrl::fromLocalFile(dir.filePath("second.csv"))});
        QDragEnterEvent enterFiles(QPoint(5, 5), Qt::CopyAction | Qt::MoveAction, &files,
                                   Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(box, &enterFiles);
        EXPECT_TRUE(enterFiles.isAccepted());
        EXPECT_EQ(enterFiles.dropAction(), Qt::CopyAction);

        QDropEvent dropFiles(QPointF(5, 5), Qt::CopyAction | Qt::MoveAction, &files, Qt::LeftButton,
                             Qt::NoModifier);
        QApplication::sendEvent(box, &dropFiles);
        EXPECT_EQ(box->text(), file("first.csv"));
        EXPECT_EQ(dropFiles.dropAction(), Qt::CopyAction);
    }
}

TEST_F(PanelTest, CancelledExportKeepsTheOldFile)
{
    for (int i = 0; i < 600; ++i)
        data->addSetting(200000000 + (i / 100) * 100000 + i % 100, "s", 1, Value(i));
    writeBytes(file("out.csv"), "old\r\n");
    setText("txtExportFile", file("out.csv"));
    panel.setProgressThreshold(100);
    // The user presses Cancel as soon as the progress dialog shows.
    QTimer::singleShot(0, &panel, [&] {
        if (auto *progress = panel.findChild<QProgressDialog *>("dlgProgress"))
            progress->cancel();
    });
    click("cmdExport");
    EXPECT_EQ(readBytes(file("out.csv")), QByteArray("old\r\n"));
    EXPECT_EQ(ui.lastMessageBox().text,
              "Export cancelled. '" + file("out.csv")
                  + "' was not written; an earlier file of that name is unchanged.");
    EXPECT_FALSE(panel.findChild<QProgressDialog *>("dlgProgress"));
    EXPECT_TRUE(child<QPushButton>("cmdExport")->isEnabled());
}

} // namespace
