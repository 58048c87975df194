#include "importexport/widgets/disettingsimportexport.h"

#include "common/error.h"
#include "common/widgets/uiservices.h"
#include "importexport/importexporttexts.h"
#include "importexport/widgets/filedropfilter.h"
#include "importexport/widgets/importpreviewdialog.h"
#include "importexport/widgets/importresultview.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QSettings>
#include <QVBoxLayout>

namespace olvex {

namespace texts = importexporttexts;

namespace {

const QString kFileFilter = QStringLiteral("CSV Files (*.csv)|*.csv|All Files (*.*)|*.*");
const QString kDefaultExtension = QStringLiteral(".csv");

QPushButton *makeButton(const QString &name, const QString &caption, QWidget *parent)
{
    auto *button = new QPushButton(caption, parent);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

QLineEdit *makeFileBox(const QString &name, QWidget *parent)
{
    auto *box = new QLineEdit(parent);
    box->setObjectName(name);
    box->setClearButtonEnabled(true);
    new FileDropFilter(box);
    return box;
}

// The last folders the operator chose a file in, kept between runs in the user's settings.
const QString kLastExportFolder = QStringLiteral("folders/export");
const QString kLastImportFolder = QStringLiteral("folders/import");

void rememberFolder(const QString &chosenFile, const QString &key)
{
    QSettings().setValue(key, QFileInfo(chosenFile).absolutePath());
}

// Where a file dialog opens: the file in the box when its folder exists, else the same name in
// the folder last chosen.
QString startingPoint(const QString &boxText, const QString &key)
{
    const QString text = boxText.trimmed();
    const QFileInfo file(text);
    if (!text.isEmpty() && file.dir().exists()) {
        return text;
    }
    const QString folder = QSettings().value(key).toString();
    if (folder.isEmpty() || !QDir(folder).exists()) {
        return text;
    }
    return QDir(folder).filePath(file.fileName());
}

// Sets the enabled state and, for a disabled control, the reason as its tooltip.
void enableWithReason(QWidget *control, const QString &reasonWhenDisabled, bool enabled,
                      const QString &tooltipWhenEnabled = {})
{
    control->setEnabled(enabled);
    control->setToolTip(enabled ? tooltipWhenEnabled : reasonWhenDisabled);
}

} // namespace

DISettingsImportExport::DISettingsImportExport(UiServices *ui, QWidget *parent)
    : QWidget(parent)
    , m_ui(UiServices::resolve(ui))
{
    setObjectName(QStringLiteral("DISettingsImportExport"));

    auto *exportFrame = new QGroupBox(tr("Export Settings"), this);
    exportFrame->setObjectName(QStringLiteral("fraExport"));
    m_txtExportFile = makeFileBox(QStringLiteral("txtExportFile"), exportFrame);
    m_cmdGetExportFilename
        = makeButton(QStringLiteral("cmdGetExportFilename"), QStringLiteral("..."), exportFrame);
    m_cmdGetExportFilename->setAccessibleName(tr("Choose the file to export to"));
    m_cmdGetExportFilename->setFixedWidth(m_cmdGetExportFilename->sizeHint().height() * 2);
    m_cmdExport = makeButton(QStringLiteral("cmdExport"), tr("&Export"), exportFrame);
    m_chkOpenExportedFile = new QCheckBox(tr("Open file after saving"), exportFrame);
    m_chkOpenExportedFile->setObjectName(QStringLiteral("chkOpenExportedFile"));
    auto *exportLabel = new QLabel(tr("E&xport all settings to this file:"), exportFrame);
    exportLabel->setBuddy(m_txtExportFile);
    auto *exportLayout = new QGridLayout(exportFrame);
    exportLayout->addWidget(exportLabel, 0, 0, 1, 3);
    exportLayout->addWidget(m_txtExportFile, 1, 0);
    exportLayout->addWidget(m_cmdGetExportFilename, 1, 1);
    exportLayout->addWidget(m_cmdExport, 1, 2);
    exportLayout->addWidget(m_chkOpenExportedFile, 2, 0, 1, 3);
    exportLayout->setColumnStretch(0, 1);

    auto *importFrame = new QGroupBox(tr("Import Settings"), this);
    importFrame->setObjectName(QStringLiteral("fraImport"));
    m_txtImportFile = makeFileBox(QStringLiteral("txtImportFile"), importFrame);
    m_cmdGetImportFilename
        = makeButton(QStringLiteral("cmdGetImportFilename"), QStringLiteral("..."), importFrame);
    m_cmdGetImportFilename->setAccessibleName(tr("Choose the file to import"));
    m_cmdGetImportFilename->setFixedWidth(m_cmdGetImportFilename->sizeHint().height() * 2);
    m_cmdImport = makeButton(QStringLiteral("cmdImport"), tr("&Import"), importFrame);
    m_cmdPreviewImport
        = makeButton(QStringLiteral("cmdPreviewImport"), tr("Pre&view..."), importFrame);
    auto *importLabel = new QLabel(tr("Import settings from this &file:"), importFrame);
    importLabel->setBuddy(m_txtImportFile);
    auto *importLayout = new QGridLayout(importFrame);
    importLayout->addWidget(importLabel, 0, 0, 1, 4);
    importLayout->addWidget(m_txtImportFile, 1, 0);
    importLayout->addWidget(m_cmdGetImportFilename, 1, 1);
    importLayout->addWidget(m_cmdPreviewImport, 1, 2);
    importLayout->addWidget(m_cmdImport, 1, 3);
    importLayout->setColumnStretch(0, 1);

    m_importResult = new ImportResultView(m_ui, this);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(exportFrame);
    layout->addWidget(importFrame);
    layout->addWidget(m_importResult, 1);
    layout->addStretch(0);

    connect(m_cmdGetExportFilename, &QPushButton::clicked, this,
            &DISettingsImportExport::chooseExportFile);
    connect(m_cmdGetImportFilename, &QPushButton::clicked, this,
            &DISettingsImportExport::chooseImportFile);
    connect(m_cmdExport, &QPushButton::clicked, this, &DISettingsImportExport::exportClicked);
    connect(m_cmdImport, &QPushButton::clicked, this, &DISettingsImportExport::importClicked);
    connect(m_cmdPreviewImport, &QPushButton::clicked, this,
            &DISettingsImportExport::previewClicked);
    connect(m_txtExportFile, &QLineEdit::textChanged, this,
            &DISettingsImportExport::updateControls);
    connect(m_txtImportFile, &QLineEdit::textChanged, this,
            &DISettingsImportExport::updateControls);
    updateControls();
}

DISettingsImportExport::~DISettingsImportExport() = default;

void DISettingsImportExport::Setup(std::shared_ptr<MessageLog> messageLog,
                                   DataInterfacePtr dataInterface)
{
    m_log = std::move(messageLog);
    m_data = std::move(dataInterface);
    m_transfer.reset();
    guarded(
        [&] {
            if (!m_data)
                return;
            m_transfer = std::make_unique<SettingsImportExport>(m_data, m_log);
            m_txtExportFile->setText(
                SettingsImportExport::proposedExportFileName(*m_data, m_transfer->now()));
        },
        [&](const CaughtError &error) { logError(texts::handlerFault(error.errorText())); });
    updateControls();
}

QString DISettingsImportExport::title() const
{
    return m_ui.applicationTitle();
}

void DISettingsImportExport::logError(const QString &text)
{
    if (m_log)
        m_log->LogMessage(Severity::Error, text);
}

void DISettingsImportExport::updateControls()
{
    const bool ready = m_transfer && !m_busy;
    const QString notReady = m_busy ? tr("Wait until the running export or import has finished.")
                                    : tr("Not connected to a site.");
    const bool haveExportFile = !m_txtExportFile->text().trimmed().isEmpty();
    const bool haveImportFile = !m_txtImportFile->text().trimmed().isEmpty();

    enableWithReason(m_txtExportFile, notReady, !m_busy);
    enableWithReason(m_txtImportFile, notReady, !m_busy);
    enableWithReason(m_cmdGetExportFilename, notReady, !m_busy, tr("Choose the file to export to"));
    enableWithReason(m_cmdGetImportFilename, notReady, !m_busy, tr("Choose the file to import"));
    enableWithReason(m_cmdExport, ready ? tr("Enter or choose the file to export to.") : notReady,
                     ready && haveExportFile, tr("Save every setting of the site to the file"));
    const QString noImportFile = tr("Enter or choose the file to import.");
    enableWithReason(m_cmdImport, ready ? noImportFile : notReady, ready && haveImportFile,
                     tr("Change every setting whose value in the file differs"));
    enableWithReason(m_cmdPreviewImport, ready ? noImportFile : notReady, ready && haveImportFile,
                     tr("List what an import of the file would change, without changing it"));
    enableWithReason(m_chkOpenExportedFile, notReady, !m_busy);
}

void DISettingsImportExport::setBusy(bool busy)
{
    m_busy = busy;
    updateControls();
}

void DISettingsImportExport::chooseExportFile()
{
    guarded(
        [&] {
            const QString chosen
                = m_ui.getSaveFileName(this, tr("Export Settings"),
                                       startingPoint(m_txtExportFile->text(), kLastExportFolder),
                                       kFileFilter, kDefaultExtension);
            if (!chosen.isEmpty()) {
                m_txtExportFile->setText(QDir::toNativeSeparators(chosen));
                m_confirmedExportFile = m_txtExportFile->text();
                rememberFolder(chosen, kLastExportFolder);
            }
        },
        [&](const CaughtError &error) { logError(texts::handlerFault(error.errorText())); });
}

void DISettingsImportExport::chooseImportFile()
{
    guarded(
        [&] {
            const QString chosen = m_ui.getOpenFileName(
                this, tr("Import Settings"),
                startingPoint(m_txtImportFile->text(), kLastImportFolder), kFileFilter);
            if (!chosen.isEmpty()) {
                m_txtImportFile->setText(QDir::toNativeSeparators(chosen));
                rememberFolder(chosen, kLastImportFolder);
            }
        },
        [&](const CaughtError &error) { logError(texts::handlerFault(error.errorText())); });
}

ProgressHandler DISettingsImportExport::progressHandler(const QString &label,
                                                        std::unique_ptr<QProgressDialog> &holder)
{
    return [this, label, &holder](qint64 done, qint64 total) {
        if (total < m_progressThreshold)
            return true;
        if (!holder) {
            holder = std::make_unique<QProgressDialog>(label, tr("Cancel"), 0, 100, this);
            holder->setObjectName(QStringLiteral("dlgProgress"));
            holder->setWindowTitle(title());
            holder->setWindowModality(Qt::WindowModal);
            holder->setMinimumDuration(0);
            holder->setAutoClose(false);
            holder->setAutoReset(false);
            holder->show();
        }
        // Per mille keeps the bar's range small whatever the size of the work.
        holder->setValue(int(done * 1000 / qMax<qint64>(total, 1)) / 10);
        QCoreApplication::processEvents();
        return !holder->wasCanceled();
    };
}

void DISettingsImportExport::exportClicked()
{
    if (m_busy || !m_transfer)
        return;
    setBusy(true);
    std::unique_ptr<QProgressDialog> progress;
    guarded(
        [&] {
            const QString fileName = m_txtExportFile->text().trimmed();
            if (QFileInfo::exists(fileName) && fileName != m_confirmedExportFile
                && m_ui.ShowMessageBox(texts::exportReplaceQuestion(fileName),
                                       MessageBoxStyle::ExclamationYesNo, title())
                       != MessageBoxAnswer::Yes)
                return;
            m_transfer->setProgressHandler(progressHandler(tr("Exporting settings..."), progress));
            ExportCounts counts;
            const bool ok = m_transfer->ExportSettings(fileName, counts);
            m_transfer->setProgressHandler({});
            progress.reset();
            if (m_transfer->wasCancelled()) {
                m_ui.ShowMessageBox(texts::exportCancelled(fileName), MessageBoxStyle::Information,
                                    title());
            } else if (!ok) {
                m_ui.ShowMessageBox(texts::exportFailed(m_transfer->exportErrorText()),
                                    MessageBoxStyle::Exclamation, title());
            } else {
                QString text = texts::exportSucceeded(fileName, counts);
                if (const QString loss = texts::exportLossNote(counts); !loss.isEmpty())
                    text += QString(texts::kNewline) + texts::kNewline + loss;
                m_ui.ShowMessageBox(text, MessageBoxStyle::Information, title());
                if (m_chkOpenExportedFile->isChecked()
                    && !m_ui.openWithAssociatedProgram(fileName)) {
                    m_ui.ShowMessageBox(tr("The settings were saved, but no program could open "
                                           "'%1'.")
                                            .arg(fileName),
                                        MessageBoxStyle::Exclamation, title());
                }
            }
        },
        [&](const CaughtError &error) { logError(texts::handlerFault(error.errorText())); });
    if (m_transfer)
        m_transfer->setProgressHandler({});
    progress.reset();
    setBusy(false);
}

bool DISettingsImportExport::hasImportPrivilege()
{
    const auto user = m_data->GetUser();
    if (user && user->HasPrivilege(Privileges::ImportSettings))
        return true;
    const QString name = user ? user->UserName() : QString();
    m_ui.ShowMessageBox(texts::accessDenied(name), MessageBoxStyle::Exclamation, title());
    if (m_log)
        m_log->LogMessage(Severity::Error, texts::accessDeniedLogLine(name));
    return false;
}

void DISettingsImportExport::importClicked()
{
    if (m_busy || !m_transfer)
        return;
    setBusy(true);
    runImport();
    setBusy(false);
}

// The import proper: privilege, the file, the summary. Any fault is the import's failure.
void DISettingsImportExport::runImport()
{
    std::unique_ptr<QProgressDialog> progress;
    guarded(
        [&] {
            if (!hasImportPrivilege())
                return;
            const QString fileName = m_txtImportFile->text().trimmed();
            m_transfer->setProgressHandler(progressHandler(tr("Importing settings..."), progress));
            QString errorText;
            ImportCounts counts;
            const bool ok = m_transfer->ImportSettings(fileName, errorText, counts);
            m_transfer->setProgressHandler({});
            progress.reset();
            Q_EMIT Imported();
            if (ok) {
                const QString summary = texts::importSummary(fileName, counts, errorText);
                m_importResult->showResult(summary, m_transfer->linesNotChanged());
                m_ui.ShowMessageBox(summary, MessageBoxStyle::Information, title());
            } else
                m_ui.ShowMessageBox(texts::importFailed(errorText), MessageBoxStyle::Exclamation,
                                    title());
        },
        [&](const CaughtError &error) { reportImportError(error); });
    if (m_transfer)
        m_transfer->setProgressHandler({});
}

void DISettingsImportExport::reportImportError(const CaughtError &error)
{
    const QString errorText = texts::importError(error.errorText());
    logError(errorText);
    m_ui.ShowMessageBox(texts::importFailed(errorText), MessageBoxStyle::Exclamation, title());
}

void DISettingsImportExport::previewClicked()
{
    if (m_busy || !m_transfer)
        return;
    setBusy(true);
    bool importNow = false;
    std::unique_ptr<QProgressDialog> progress;
    guarded(
        [&] {
            const QString fileName = m_txtImportFile->text().trimmed();
            m_transfer->setProgressHandler(progressHandler(tr("Reading settings..."), progress));
            QString errorText;
            ImportCounts counts;
            ImportPreview preview;
            const bool ok = m_transfer->ImportSettings(fileName, errorText, counts, &preview);
            m_transfer->setProgressHandler({});
            progress.reset();
            if (!ok) {
                m_ui.ShowMessageBox(texts::importFailed(errorText), MessageBoxStyle::Exclamation,
                                    title());
                return;
            }
            ImportPreviewDialog dialog(fileName, counts, preview, errorText, this);
            importNow = m_ui.runModal(dialog) == QDialog::Accepted;
        },
        [&](const CaughtError &error) { reportImportError(error); });
    if (m_transfer)
        m_transfer->setProgressHandler({});
    progress.reset();
    if (importNow)
        runImport();
    setBusy(false);
}

} // namespace olvex
