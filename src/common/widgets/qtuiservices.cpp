#include "common/widgets/qtuiservices.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>

namespace olvex {

namespace {

// The string library's style is a sum: the low nibble picks the buttons, 16/32/48/64 the icon,
// 256/512 which button is the default. Only OK (0), OK/Cancel (1), Yes/No/Cancel (3) and
// Yes/No (4) exist here; anything else shows OK.
enum Buttons { ButtonsOk = 0, ButtonsOkCancel = 1, ButtonsYesNoCancel = 3, ButtonsYesNo = 4 };
constexpr int kCancelAnswer = 2;

QMessageBox::Icon iconOf(int style)
{
    switch (style & 0x70) {
    case 16:
        return QMessageBox::Critical;
    case 32:
        return QMessageBox::Question;
    case 48:
        return QMessageBox::Warning;
    case 64:
        return QMessageBox::Information;
    default:
        return QMessageBox::NoIcon;
    }
}

// The parent for a message box: the active window, so the box is centred over it and stays
// in front of it.
QWidget *dialogParent()
{
    if (QWidget *modal = QApplication::activeModalWidget()) {
        return modal;
    }
    return QApplication::activeWindow();
}

// Refuses everything: what the host gets until it supplies its own security factory.
class RefusingSecurity : public Security
{
public:
    void Initialize(const QString &, const QString &, const QString &, const QString &,
                    const QString &, int) override
    {}
    bool CanChangeSetting(qint32, bool) override { return false; }
};

// Set once by the host program at start-up, read on the user-interface thread.
std::function<std::shared_ptr<Security>()> &securityFactory()
{
    static std::function<std::shared_ptr<Security>()> factory;
    return factory;
}

} // namespace

void setSecurityFactory(std::function<std::shared_ptr<Security>()> factory)
{
    securityFactory() = std::move(factory);
}

int QtUiServices::ShowMessageBox(const QString &text, int style, const QString &title)
{
    QMessageBox box(dialogParent());
    box.setIcon(iconOf(style));
    box.setWindowTitle(title.isEmpty() ? applicationTitle() : title);
    // The host's texts break lines with CR LF and may hold "<" or "&": never rich text.
    box.setTextFormat(Qt::PlainText);
    QString plain = text;
    plain.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    box.setText(plain);

    struct Choice
    {
        QMessageBox::StandardButton button;
        int answer;
    };
    QList<Choice> choices;
    switch (style & 0x0F) {
    case ButtonsYesNo:
        choices
            = {{QMessageBox::Yes, MessageBoxAnswer::Yes}, {QMessageBox::No, MessageBoxAnswer::No}};
        break;
    case ButtonsYesNoCancel:
        choices = {{QMessageBox::Yes, MessageBoxAnswer::Yes},
                   {QMessageBox::No, MessageBoxAnswer::No},
                   {QMessageBox::Cancel, kCancelAnswer}};
        break;
    case ButtonsOkCancel:
        choices = {{QMessageBox::Ok, MessageBoxAnswer::Ok}, {QMessageBox::Cancel, kCancelAnswer}};
        break;
    default:
        choices = {{QMessageBox::Ok, MessageBoxAnswer::Ok}};
        break;
    }
    QMessageBox::StandardButtons buttons;
    for (const Choice &c : std::as_const(choices)) {
        buttons |= c.button;
    }
    box.setStandardButtons(buttons);

    // A question that commands the plant must not be answered Yes by a stray Enter: No is the
    // default, and Escape (or closing the box) also means No. Cancel, where offered, wins
    // Escape.
    QMessageBox::StandardButton defaultButton = choices.constFirst().button;
    QMessageBox::StandardButton escapeButton = choices.constLast().button;
    if (buttons.testFlag(QMessageBox::No)) {
        defaultButton = QMessageBox::No;
    }
    box.setDefaultButton(defaultButton);
    box.setEscapeButton(escapeButton);

    box.exec();
    const auto clicked = box.standardButton(box.clickedButton());
    for (const Choice &c : std::as_const(choices)) {
        if (c.button == clicked) {
            return c.answer;
        }
    }
    // Closed without a button (the window closed under it): the escape answer.
    for (const Choice &c : std::as_const(choices)) {
        if (c.button == escapeButton) {
            return c.answer;
        }
    }
    return MessageBoxAnswer::Ok;
}

int QtUiServices::runModal(QDialog &dialog)
{
    return dialog.exec();
}

QString QtUiServices::getSaveFileName(QWidget *parent, const QString &title,
                                      const QString &proposedName, const QString &filter,
                                      const QString &defaultExtension)
{
    QFileDialog dialog(parent ? parent : dialogParent(), title);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilter(toQtFileFilter(filter));
    QString suffix = defaultExtension;
    if (suffix.startsWith(u'.')) {
        suffix.remove(0, 1);
    }
    dialog.setDefaultSuffix(suffix);
    if (!proposedName.isEmpty()) {
        dialog.selectFile(QDir::fromNativeSeparators(proposedName));
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return {};
    }
    return dialog.selectedFiles().constFirst();
}

QString QtUiServices::getOpenFileName(QWidget *parent, const QString &title,
                                      const QString &proposedName, const QString &filter)
{
    QFileDialog dialog(parent ? parent : dialogParent(), title);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setNameFilter(toQtFileFilter(filter));
    if (!proposedName.isEmpty()) {
        dialog.selectFile(QDir::fromNativeSeparators(proposedName));
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return {};
    }
    return dialog.selectedFiles().constFirst();
}

bool QtUiServices::openWithAssociatedProgram(const QString &path)
{
    return QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

void QtUiServices::beep()
{
    QApplication::beep();
}

QString QtUiServices::applicationTitle() const
{
    const QString display = QGuiApplication::applicationDisplayName();
    return display.isEmpty() ? QCoreApplication::applicationName() : display;
}

std::shared_ptr<Security> QtUiServices::createSecurity()
{
    if (const auto &factory = securityFactory()) {
        if (auto security = factory()) {
            return security;
        }
    }
    return std::make_shared<RefusingSecurity>();
}

} // namespace olvex
