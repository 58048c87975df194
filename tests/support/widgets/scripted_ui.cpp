#include "support/widgets/scripted_ui.h"

#include <QDialog>

#include <gtest/gtest.h>

namespace olvex {

int ScriptedUi::ShowMessageBox(const QString &text, int style, const QString &title)
{
    const bool question = style == MessageBoxStyle::ExclamationYesNo;
    const int answer = !m_answers.isEmpty() ? m_answers.takeFirst()
                       : question           ? MessageBoxAnswer::No
                                            : MessageBoxAnswer::Ok;
    if (!question && style != MessageBoxStyle::Exclamation
        && style != MessageBoxStyle::Information) {
        ADD_FAILURE() << "message box of unknown style " << style << ": " << text.toStdString();
    } else if (question ? answer != MessageBoxAnswer::Yes && answer != MessageBoxAnswer::No
                        : answer != MessageBoxAnswer::Ok) {
        ADD_FAILURE() << "scripted answer " << answer << " cannot answer a box of style " << style
                      << ": " << text.toStdString();
    }
    m_boxes.append({text, style, title, answer});
    return answer;
}

MessageBoxCall ScriptedUi::lastMessageBox() const
{
    if (m_boxes.isEmpty()) {
        ADD_FAILURE() << "no message box was shown";
        return {};
    }
    return m_boxes.constLast();
}

int ScriptedUi::runModal(QDialog &dialog)
{
    const ModalHandler handler
        = m_modalHandlers.isEmpty() ? m_defaultModal : m_modalHandlers.takeFirst();
    dialog.setResult(QDialog::Rejected);
    dialog.show();
    const int result = handler ? handler(dialog) : int(QDialog::Rejected);
    if (dialog.isVisible()) {
        dialog.done(result);
    }
    m_modals.append(ModalDialogCall{result});
    return result;
}

ScriptedUi::ModalHandler ScriptedUi::acceptAfter(std::function<void(QDialog &)> fill)
{
    return [fill = std::move(fill)](QDialog &dialog) {
        if (fill) {
            fill(dialog);
        }
        if (dialog.isVisible()) {
            dialog.accept();
        }
        return dialog.result();
    };
}

ScriptedUi::ModalHandler ScriptedUi::reject()
{
    return [](QDialog &dialog) {
        dialog.reject();
        return int(QDialog::Rejected);
    };
}

QString ScriptedUi::getSaveFileName(QWidget * /*parent*/, const QString &title,
                                    const QString &proposedName, const QString &filter,
                                    const QString &defaultExtension)
{
    QString answer = m_saveNames.isEmpty() ? QString() : m_saveNames.takeFirst();
    m_fileDialogs.append(
        {FileDialogCall::Kind::Save, title, proposedName, filter, defaultExtension, answer});
    return answer;
}

QString ScriptedUi::getOpenFileName(QWidget * /*parent*/, const QString &title,
                                    const QString &proposedName, const QString &filter)
{
    QString answer = m_openNames.isEmpty() ? QString() : m_openNames.takeFirst();
    m_fileDialogs.append({FileDialogCall::Kind::Open, title, proposedName, filter, {}, answer});
    return answer;
}

bool ScriptedUi::openWithAssociatedProgram(const QString &path)
{
    m_openedFiles.append(path);
    return true;
}

std::shared_ptr<Security> ScriptedUi::createSecurity()
{
    ++m_createSecurityCount;
    return m_security;
}

} // namespace olvex
