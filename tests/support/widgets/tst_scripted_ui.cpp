// The scripted UI answers every question a component asks in tests; a wrong default here
// would let a component "confirm" a plant change no test meant to confirm.
#include "support/widgets/scripted_ui.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <QDialog>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

using namespace olvex;

namespace {

// A dialog that refuses OK while its field is empty, as the value dialogs do.
class NameDialog : public QDialog
{
public:
    NameDialog()
    {
        auto *layout = new QVBoxLayout(this);
        field = new QLineEdit(this);
        field->setObjectName(QStringLiteral("txtName"));
        auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
        layout->addWidget(field);
        layout->addWidget(buttons);
        connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
        connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    }

    void accept() override
    {
        if (!field->text().isEmpty()) {
            QDialog::accept();
        }
    }

    QLineEdit *field = nullptr;
};

} // namespace

TEST(ScriptedUi, AnswersFromQueueThenCautiousDefaults)
{
    ScriptedUi ui;
    ui.queueAnswers({MessageBoxAnswer::Yes, MessageBoxAnswer::Ok});
    const QList<std::pair<int, int>> asks = {
        {MessageBoxStyle::ExclamationYesNo, MessageBoxAnswer::Yes}, // queued
        {MessageBoxStyle::Information, MessageBoxAnswer::Ok},       // queued
        {MessageBoxStyle::ExclamationYesNo, MessageBoxAnswer::No},  // queue empty: No
        {MessageBoxStyle::Exclamation, MessageBoxAnswer::Ok},
        {MessageBoxStyle::Information, MessageBoxAnswer::Ok},
    };
    for (const auto &[style, expected] : asks) {
        EXPECT_EQ(ui.ShowMessageBox(QStringLiteral("question"), style, QStringLiteral("Span")),
                  expected)
            << "style " << style;
        EXPECT_EQ(ui.lastMessageBox().style, style);
    }
    EXPECT_EQ(ui.messageBoxes().size(), asks.size());
    EXPECT_EQ(ui.pendingAnswers(), 0);

    // An answer the box's buttons cannot give, or a box of unknown style, fails the test.
    ui.queueAnswers({MessageBoxAnswer::Yes});
    EXPECT_NONFATAL_FAILURE(
        ui.ShowMessageBox(QStringLiteral("Exported"), MessageBoxStyle::Information, QString()),
        "cannot answer a box of style 64");
    EXPECT_NONFATAL_FAILURE(ui.ShowMessageBox(QStringLiteral("Odd"), 16, QString()),
                            "unknown style 16");
}

TEST(ScriptedUi, ModalDialogsAreDrivenByHandlers)
{
    ScriptedUi ui;
    ui.queueModal(ScriptedUi::acceptAfter([](QDialog &d) {
        EXPECT_TRUE(d.isVisible());
        QTest::keyClicks(d.findChild<QLineEdit *>(QStringLiteral("txtName")),
                         QStringLiteral("12.5"));
    }));
    ui.queueModal(ScriptedUi::acceptAfter()); // OK on an empty field: the dialog refuses
    ui.queueModal([](QDialog &d) {
        d.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Cancel)->click();
        return d.result();
    });

    NameDialog filled, empty, cancelled, unscripted;
    EXPECT_EQ(ui.runModal(filled), QDialog::Accepted);
    EXPECT_EQ(filled.field->text(), QStringLiteral("12.5"));
    EXPECT_EQ(ui.runModal(empty), QDialog::Rejected);
    EXPECT_EQ(ui.runModal(cancelled), QDialog::Rejected);
    EXPECT_EQ(ui.runModal(unscripted), QDialog::Rejected); // no handler left: the user closes it
    for (const NameDialog *d : {&filled, &empty, &cancelled, &unscripted}) {
        EXPECT_FALSE(d->isVisible());
    }
    ASSERT_EQ(ui.modalDialogs().size(), 4);
    EXPECT_EQ(ui.modalDialogs().at(0).result, QDialog::Accepted);
}

TEST(ScriptedUi, FileDialogsAnswerFromTheirOwnQueueOrCancel)
{
    ScriptedUi ui;
    const QString filter = QStringLiteral("CSV Files (*.csv)|*.csv|All Files (*.*)|*.*");
    ui.queueSaveFileName(QStringLiteral("/tmp/out.csv"));
    ui.queueOpenFileName(QStringLiteral("/tmp/in.csv"));

    EXPECT_EQ(ui.getOpenFileName(nullptr, QStringLiteral("Import"), {}, filter),
              QStringLiteral("/tmp/in.csv"));
    EXPECT_EQ(ui.getSaveFileName(nullptr, QStringLiteral("Export"), QStringLiteral("p.csv"), filter,
                                 QStringLiteral(".csv")),
              QStringLiteral("/tmp/out.csv"));
    EXPECT_EQ(ui.getSaveFileName(nullptr, QStringLiteral("Export"), {}, filter, {}), QString());
    ASSERT_EQ(ui.fileDialogs().size(), 3);
    EXPECT_EQ(ui.fileDialogs().at(1).kind, FileDialogCall::Kind::Save);
    EXPECT_EQ(ui.fileDialogs().at(1).proposedName, QStringLiteral("p.csv"));
    EXPECT_EQ(ui.fileDialogs().at(1).defaultExtension, QStringLiteral(".csv"));
}
