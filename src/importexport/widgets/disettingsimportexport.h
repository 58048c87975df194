#pragma once

#include "common/error.h"
#include "common/host.h"
#include "common/olvexexport.h"
#include "importexport/settingsimportexport.h"

#include <QWidget>

#include <memory>

class QCheckBox;
class QLineEdit;
class QProgressDialog;
class QPushButton;

namespace olvex {

class ImportResultView;
class UiServices;

// The settings import/export panel: saves every setting parameter of the site to a settings
// CSV file, and loads such a file back after a site check, with a preview that changes nothing.
// The work itself is SettingsImportExport's; this class asks, shows and reports.
class OLVEX_WIDGETS_EXPORT DISettingsImportExport : public QWidget
{
    Q_OBJECT
public:
    // ui: the services that ask the user (nullptr: the Qt implementation).
    explicit DISettingsImportExport(UiServices *ui = nullptr, QWidget *parent = nullptr);
    ~DISettingsImportExport() override;

    // Keeps both for the panel's life (a null log logs nothing) and proposes an export file
    // name in the site's export folder.
    void Setup(std::shared_ptr<MessageLog> messageLog, DataInterfacePtr dataInterface);

    // The outcome of the last import on the panel: summary and the lines not changed as asked.
    ImportResultView *importResult() const { return m_importResult; }

    // Work of at least this many lines shows a progress dialog with Cancel.
    void setProgressThreshold(int lines) { m_progressThreshold = lines; }

Q_SIGNALS:
    // An import ran: settings of the site may have changed (or wait for the service).
    void Imported();

private:
    void chooseExportFile();
    void chooseImportFile();
    void exportClicked();
    void importClicked();
    void previewClicked();

    bool hasImportPrivilege();
    void runImport();
    // A progress handler that shows a dialog once the work is large enough; the dialog lives
    // as long as `holder`.
    ProgressHandler progressHandler(const QString &label, std::unique_ptr<QProgressDialog> &holder);
    void updateControls();
    void setBusy(bool busy);
    void logError(const QString &text);
    // An import or preview stopped by an unexpected error: logged and shown.
    void reportImportError(const CaughtError &error);
    QString title() const;

    UiServices &m_ui;
    std::shared_ptr<MessageLog> m_log;
    DataInterfacePtr m_data;
    std::unique_ptr<SettingsImportExport> m_transfer;
    int m_progressThreshold = 2000;
    bool m_busy = false;

    QLineEdit *m_txtExportFile;
    QPushButton *m_cmdGetExportFilename;
    QPushButton *m_cmdExport;
    QCheckBox *m_chkOpenExportedFile;
    QLineEdit *m_txtImportFile;
    QPushButton *m_cmdGetImportFilename;
    QPushButton *m_cmdImport;
    QPushButton *m_cmdPreviewImport;
    ImportResultView *m_importResult;
    // The file the Save As dialog chose: its own question about replacing it was answered.
    QString m_confirmedExportFile;
};

} // namespace olvex
