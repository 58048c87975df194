#pragma once

#include "common/olvexexport.h"
#include "common/widgets/uiservices.h"

namespace olvex {

// UiServices on plain Qt: QMessageBox, QDialog::exec, QFileDialog, QDesktopServices.
// Use UiServices::qt() for the process-wide instance; the class is public so a host can
// derive from it to change one service.
class OLVEX_WIDGETS_EXPORT QtUiServices : public UiServices
{
public:
    int ShowMessageBox(const QString &text, int style, const QString &title) override;
    int runModal(QDialog &dialog) override;
    QString getSaveFileName(QWidget *parent, const QString &title, const QString &proposedName,
                            const QString &filter, const QString &defaultExtension) override;
    QString getOpenFileName(QWidget *parent, const QString &title, const QString &proposedName,
                            const QString &filter) override;
    bool openWithAssociatedProgram(const QString &path) override;
    void beep() override;
    QString applicationTitle() const override;
    std::shared_ptr<Security> createSecurity() override;
};

} // namespace olvex
