// The Qt side of the UI seam, driven for real on the offscreen platform: the message box must
// default to No on a question, and host file filters must reach QFileDialog in Qt's form.
#include "common/widgets/qtuiservices.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <functional>

using namespace olvex;

namespace {

// Runs show() while a timer waits for the modal box to appear and hands it to act. A box that
// never appears is closed by a safety net so the test fails instead of hanging.
int withModal(const std::function<int()> &show, const std::function<void(QWidget *)> &act)
{
    QTimer poll;
    poll.setInterval(10);
    bool acted = false;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (QWidget *modal = QApplication::activeModalWidget(); modal && !acted) {
            acted = true;
            poll.stop();
            act(modal);
        }
    });
    QTimer safetyNet;
    safetyNet.setSingleShot(true);
    QObject::connect(&safetyNet, &QTimer::timeout, [] {
        ADD_FAILURE() << "no modal widget appeared";
        if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
            dialog->reject();
        }
    });
    poll.start();
    safetyNet.start(20000);
    const int result = show();
    EXPECT_TRUE(acted);
    return result;
}

} // namespace

TEST(QtUiServices, MessageBoxButtonsIconsAndDefaults)
{
    const auto press = [](int key) {
        return [key](QMessageBox *box) {
            QTest::keyClick(box, Qt::Key(key));
        };
    };
    const auto click = [](QMessageBox::StandardButton b) {
        return [b](QMessageBox *box) {
            box->button(b)->click();
        };
    };
    const QList<std::tuple<const char *, int, QMessageBox::Icon, QMessageBox::StandardButtons,
                           QMessageBox::StandardButton, std::function<void(QMessageBox *)>, int>>
        cases = {
            {"question, Enter takes the default No", 52, QMessageBox::Warning,
             QMessageBox::Yes | QMessageBox::No, QMessageBox::No, press(Qt::Key_Return),
             MessageBoxAnswer::No},
            {"question, Escape means No", 52, QMessageBox::Warning,
             QMessageBox::Yes | QMessageBox::No, QMessageBox::No, press(Qt::Key_Escape),
             MessageBoxAnswer::No},
            {"question, Yes clicked", 52, QMessageBox::Warning, QMessageBox::Yes | QMessageBox::No,
             QMessageBox::No, click(QMessageBox::Yes), MessageBoxAnswer::Yes},
            {"information, Escape", 64, QMessageBox::Information, QMessageBox::Ok, QMessageBox::Ok,
             press(Qt::Key_Escape), MessageBoxAnswer::Ok},
        };
    QtUiServices ui;
    for (const auto &[name, style, icon, buttons, defaultButton, user, expected] : cases) {
        SCOPED_TRACE(name);
        QString seenText;
        QString seenTitle;
        const int answer = withModal(
            [&] {
                return ui.ShowMessageBox(QStringLiteral("<b>A & B</b>\r\nsecond line"), style,
                                         QStringLiteral("Span Gas"));
            },
            [&](QWidget *modal) {
                auto *box = qobject_cast<QMessageBox *>(modal);
                ASSERT_NE(box, nullptr);
                EXPECT_EQ(box->icon(), icon);
                EXPECT_EQ(box->standardButtons(), buttons);
                EXPECT_EQ(box->standardButton(box->defaultButton()), defaultButton);
                EXPECT_EQ(box->textFormat(), Qt::PlainText);
                seenText = box->text();
                seenTitle = box->windowTitle();
                user(box);
            });
        EXPECT_EQ(answer, expected);
        EXPECT_EQ(seenText, QStringLiteral("<b>A & B</b>\nsecond line"));
        EXPECT_EQ(seenTitle, QStringLiteral("Span Gas"));
    }
}

TEST(QtUiServices, FileFilterConversion)
{
    const QList<std::tuple<QString, QString>> cases = {
        {QStringLiteral("CSV Files (*.csv)|*.csv|All Files (*.*)|*.*"),
         QStringLiteral("CSV Files (*.csv);;All Files (*.*)")},
        // Description without its patterns: they are appended.
        {QStringLiteral("Settings|*.csv"), QStringLiteral("Settings (*.csv)")},
        // Several patterns: Qt separates them with blanks, not semicolons.
        {QStringLiteral("Text (*.txt;*.log)|*.txt;*.log"), QStringLiteral("Text (*.txt *.log)")},
        // Parentheses that are not the patterns stay part of the description.
        {QStringLiteral("Exports (old)|*.csv"), QStringLiteral("Exports (old) (*.csv)")},
        // A description with no pattern after it matches everything.
        {QStringLiteral("Anything"), QStringLiteral("Anything (*)")},
        {QString(), QString()},
    };
    for (const auto &[host, qt] : cases) {
        EXPECT_EQ(toQtFileFilter(host), qt) << host.toStdString();
    }
}

TEST(QtUiServices, SecurityRefusesUntilTheHostSuppliesAFactory)
{
    class AllowingSecurity : public Security
    {
    public:
        void Initialize(const QString &, const QString &, const QString &, const QString &,
                        const QString &, int) override
        {}
        bool CanChangeSetting(qint32, bool) override { return true; }
    };

    auto &ui = UiServices::qt();
    EXPECT_EQ(&UiServices::resolve(nullptr), &ui);
    auto refusing = ui.createSecurity();
    refusing->Initialize({}, {}, {}, {}, QStringLiteral("WS1"), 0);
    EXPECT_FALSE(refusing->CanChangeSetting(1000201, true));

    setSecurityFactory([] { return std::make_shared<AllowingSecurity>(); });
    EXPECT_TRUE(ui.createSecurity()->CanChangeSetting(1000201, true));
    setSecurityFactory(nullptr);
    EXPECT_FALSE(ui.createSecurity()->CanChangeSetting(1000201, true));
}
