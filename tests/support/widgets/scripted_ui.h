#pragma once

#include "common/widgets/uiservices.h"
#include "support/fake_security.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <ostream>

class QDialog;

namespace olvex {

struct MessageBoxCall
{
    QString text;
    int style = 0;
    QString title;
    int answer = 0; // what the scripted user answered
};

inline void PrintTo(const MessageBoxCall &c, std::ostream *os)
{
    *os << "MessageBox(style " << c.style << ", title \"" << c.title.toStdString() << "\", \""
        << c.text.toStdString() << "\" -> " << c.answer << ')';
}

struct FileDialogCall
{
    enum class Kind { Save, Open };
    Kind kind = Kind::Save;
    QString title;
    QString proposedName;
    QString filter;
    QString defaultExtension; // Save only
    QString answer;           // empty: cancelled
};

struct ModalDialogCall
{
    int result = 0;
};

// UI services for tests: every question a component asks is answered from a script and
// recorded, and nothing blocks.
//
// Message boxes take the queued answers in order; with the queue empty a box is answered as a
// cautious user would: OK for styles 48 and 64, No for 52. An answer that the box's buttons
// cannot give, or a style other than 48, 52 and 64, fails the running test.
//
// runModal shows the dialog, then hands it to the next queued handler (else to the default
// handler, else rejects it). The handler acts as the user: fill the fields, press a button,
// and return the result runModal is to give, usually dialog.result() after pressing OK.
// A dialog still shown afterwards is closed with that result.
class ScriptedUi : public UiServices
{
public:
    using ModalHandler = std::function<int(QDialog &)>;

    // UiServices
    int ShowMessageBox(const QString &text, int style, const QString &title) override;
    int runModal(QDialog &dialog) override;
    QString getSaveFileName(QWidget *parent, const QString &title, const QString &proposedName,
                            const QString &filter, const QString &defaultExtension) override;
    QString getOpenFileName(QWidget *parent, const QString &title, const QString &proposedName,
                            const QString &filter) override;
    bool openWithAssociatedProgram(const QString &path) override;
    void beep() override { ++m_beeps; }
    QString applicationTitle() const override { return QStringLiteral("Olvex Test Host"); }
    std::shared_ptr<Security> createSecurity() override;

    // Message boxes.
    void queueAnswers(const QList<int> &answers) { m_answers.append(answers); }
    int pendingAnswers() const { return int(m_answers.size()); }
    const QList<MessageBoxCall> &messageBoxes() const { return m_boxes; }
    // The last box shown; fails the test and returns an empty call when none was.
    MessageBoxCall lastMessageBox() const;
    void clearMessageBoxes() { m_boxes.clear(); }

    int beepCount() const { return m_beeps; }

    // Modal dialogs.
    void queueModal(ModalHandler handler) { m_modalHandlers.append(std::move(handler)); }
    void setDefaultModal(ModalHandler handler) { m_defaultModal = std::move(handler); }
    const QList<ModalDialogCall> &modalDialogs() const { return m_modals; }
    // A handler that runs fill, then accepts the dialog through its own accept() (so the
    // dialog's checks run), and returns the dialog's result.
    static ModalHandler acceptAfter(std::function<void(QDialog &)> fill = {});
    static ModalHandler reject();

    // File dialogs: queued names per kind; an empty queue means the user cancelled.
    void queueSaveFileName(const QString &name) { m_saveNames.append(name); }
    void queueOpenFileName(const QString &name) { m_openNames.append(name); }
    const QList<FileDialogCall> &fileDialogs() const { return m_fileDialogs; }

    // Files opened with their program (which always succeeds).
    const QStringList &openedFiles() const { return m_openedFiles; }

    // The security object createSecurity hands out (the same one every time, so the test can
    // configure and inspect it).
    std::shared_ptr<FakeSecurity> security() const { return m_security; }
    int createSecurityCount() const { return m_createSecurityCount; }

private:
    QList<int> m_answers;
    QList<MessageBoxCall> m_boxes;
    int m_beeps = 0;
    QList<ModalHandler> m_modalHandlers;
    ModalHandler m_defaultModal;
    QList<ModalDialogCall> m_modals;
    QStringList m_saveNames;
    QStringList m_openNames;
    QList<FileDialogCall> m_fileDialogs;
    QStringList m_openedFiles;
    std::shared_ptr<FakeSecurity> m_security = std::make_shared<FakeSecurity>();
    int m_createSecurityCount = 0;
};

} // namespace olvex
