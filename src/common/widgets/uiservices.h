#pragma once

#include "common/host.h"
#include "common/olvexexport.h"

#include <QString>

#include <functional>
#include <memory>

class QDialog;
class QWidget;

namespace olvex {

// Message box styles and answers of the host's string library.
namespace MessageBoxStyle {
inline constexpr int Exclamation = 48;      // OK button
inline constexpr int ExclamationYesNo = 52; // Yes and No; No is the default button
inline constexpr int Information = 64;      // OK button
} // namespace MessageBoxStyle
namespace MessageBoxAnswer {
inline constexpr int Ok = 1;
inline constexpr int Yes = 6;
inline constexpr int No = 7;
} // namespace MessageBoxAnswer

// The one seam between the components and anything that blocks on the user or the desktop:
// message boxes, modal dialogs, file choosers, opening a file, the beep. No component calls
// QMessageBox, QFileDialog or QDialog::exec itself, so a test can answer every question.
class OLVEX_WIDGETS_EXPORT UiServices
{
public:
    virtual ~UiServices() = default;

    // Returns MessageBoxAnswer::Ok, Yes or No. Questions default to No.
    virtual int ShowMessageBox(const QString &text, int style, const QString &title) = 0;
    // Runs a modal dialog; returns QDialog::Accepted or QDialog::Rejected.
    virtual int runModal(QDialog &dialog) = 0;
    // filter in the host system's form: "CSV Files (*.csv)|*.csv|All Files (*.*)|*.*".
    // Empty text when the user cancelled.
    virtual QString getSaveFileName(QWidget *parent, const QString &title,
                                    const QString &proposedName, const QString &filter,
                                    const QString &defaultExtension)
        = 0;
    virtual QString getOpenFileName(QWidget *parent, const QString &title,
                                    const QString &proposedName, const QString &filter)
        = 0;
    // Opens the file with the program the desktop associates with it; false when it could not.
    virtual bool openWithAssociatedProgram(const QString &path) = 0;
    virtual void beep() = 0;
    // The host application's title, used for information boxes.
    virtual QString applicationTitle() const = 0;
    // A new security object of the string library.
    virtual std::shared_ptr<Security> createSecurity() = 0;

    // The Qt implementation (QMessageBox, QFileDialog, QDesktopServices) shared by the process.
    static UiServices &qt();
    // given, or the Qt implementation when given is null.
    static UiServices &resolve(UiServices *given) { return given ? *given : qt(); }
};

// Lets the host program supply real security objects to the Qt implementation. Until it does,
// the Qt implementation's security refuses every change.
OLVEX_WIDGETS_EXPORT void setSecurityFactory(std::function<std::shared_ptr<Security>()> factory);

// "CSV Files (*.csv)|*.csv|All Files (*.*)|*.*" -> "CSV Files (*.csv);;All Files (*.*)".
OLVEX_WIDGETS_EXPORT QString toQtFileFilter(const QString &hostFilter);

} // namespace olvex
