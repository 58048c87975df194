#include "support/widgets/scripted_ui.h"

#include <QDialog>

#include <gtest/gtest.h>

namespace olvex {

namespace {

bool answerFitsStyle(int answer, int style)
{
    switch (style) {
    case MessageBoxStyle::Exclamation:
    case MessageBoxStyle::Information:
        return answer == MessageBoxAnswer::Ok;
    case MessageBoxStyle::ExclamationYesNo:
        return answer == MessageBoxAnswer::Yes || answer == MessageBoxAnswer::No;
    default:
        return false;
    }
}

} // namespace

ScriptedUi::ScriptedUi()
    : m_security(std::make_shared<FakeSecurity>())
{}

int ScriptedUi::ShowMessageBox(const QString &text, int style, const QString &title)
{
    int answer = 0;
    if (!m_answers.isEmpty()) {
        answer = m_answers.takeFirst();
    } else if (style == MessageBoxStyle::ExclamationYesNo) {
        answer = MessageBoxAnswer::No;
    } else {
        answer = MessageBoxAnswer::Ok;
    }
    if (style != MessageBoxStyle::Exclamation && style != MessageBoxStyle::ExclamationYesNo
        && style != MessageBoxStyle::Information) {
        ADD_FAILURE() << "message box of unknown style " << style << ": " << text.toStdString();
    } else if (!answerFitsStyle(answer, style)) {
        ADD_FAILURE() << "scripted answer " << answer << " cannot answer a box of style " << style
                      << ": " << text.toStdString();
    }
    m_boxes.append({text, style, title, answer});
    return answer;
}

QStringList ScriptedUi::messageTexts() const
{
    QStringList texts;
    for (const MessageBoxCall &box : m_boxes) {
        texts.append(box.text);
    }
    return texts;
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
    ModalHandler handler;
    if (!m_modalHandlers.isEmpty()) {
        handler = m_modalHandlers.takeFirst();
    } else {
        handler = m_defaultModal;
    }
    dialog.setResult(QDialog::Rejected);
    dialog.show();
    const int result = handler ? handler(dialog) : int(QDialog::Rejected);
    if (dialog.isVisible()) {
        dialog.done(result);
    }
    m_modals.append({dialog.objectName(), dialog.windowTitle(), result});
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
    return m_openResult;
}

std::shared_ptr<Security> ScriptedUi::createSecurity()
{
    ++m_createSecurityCount;
    return m_security;
}

} // namespace olvex
