// A minimal host program: the site in memory, every component of the library on one window.
//   minimal-host                     shows the window
//   minimal-host --screenshot FILE   renders the window to FILE (PNG) and the cylinder edit
//                                    dialog beside it, names the components they show and
//                                    exits; works offscreen
#include "memorysite.h"

#include "calconfirm/widgets/dicalconfirm.h"
#include "calstart/widgets/dicalstart.h"
#include "common/widgets/uiservices.h"
#include "cylinders/widgets/disysdefcylinders.h"
#include "cylinders/widgets/frmeditcylinderinfo.h"
#include "importexport/widgets/disettingsimportexport.h"
#include "settings/widgets/disettings.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QGridLayout>
#include <QGroupBox>
#include <QSet>
#include <QTextStream>
#include <QVBoxLayout>

#include <functional>

namespace {

struct Host
{
    std::shared_ptr<MemorySite> site;
    std::shared_ptr<olvex::MessageLog> log;
};

struct Placement
{
    const char *title;
    int row, column, rowSpan;
    std::function<QWidget *(const Host &, QWidget *parent)> create;
};

// One row per component: where it goes on the window, how this host creates it and hands it
// the host objects.
const Placement kPlacements[] = {
    {"Settings", 0, 0, 2,
     [](const Host &host, QWidget *parent) -> QWidget * {
         auto *settings = new olvex::DISettings(nullptr, parent);
         settings->Setup(host.site, false);
         return settings;
     }},
    {"Settings import and export", 2, 0, 1,
     [](const Host &host, QWidget *parent) -> QWidget * {
         auto *transfer = new olvex::DISettingsImportExport(nullptr, parent);
         transfer->Setup(host.log, host.site);
         return transfer;
     }},
    {"Calibration start", 0, 1, 1,
     [](const Host &host, QWidget *parent) -> QWidget * {
         auto *calStart = new olvex::DICalStart(nullptr, parent);
         calStart->Setup(host.log, host.site);
         calStart->setMinimumWidth(calStart->DesiredWidth());
         return calStart;
     }},
    {"Calibration confirmation", 1, 1, 1,
     [](const Host &host, QWidget *parent) -> QWidget * {
         // The rows of the pending calibrations are DICalConfirmSingle components.
         auto *confirm = new olvex::DICalConfirm(parent);
         if (confirm->Setup(host.log, host.site, host.site)) {
             confirm->RefreshWindow();
         }
         return confirm;
     }},
    {"Gas cylinders", 2, 1, 1,
     [](const Host &host, QWidget *parent) -> QWidget * {
         auto *cylinders = new olvex::DISysDefCylinders(nullptr, parent);
         cylinders->Setup(host.log, host.site, QString());
         return cylinders;
     }},
};

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption shot(QStringLiteral("screenshot"),
                                  QStringLiteral("Render the window to FILE and exit."),
                                  QStringLiteral("FILE"));
    parser.addOption(shot);
    parser.process(app);

    olvex::setSecurityFactory([] { return std::make_shared<OpenSecurity>(); });
    const Host host{makeDemoSite(), std::make_shared<StderrLog>()};

    QWidget window;
    window.setWindowTitle(QStringLiteral("Minimal host"));
    auto *layout = new QGridLayout(&window);
    for (const Placement &placement : kPlacements) {
        auto *box = new QGroupBox(QString::fromUtf8(placement.title), &window);
        auto *boxLayout = new QVBoxLayout(box);
        boxLayout->addWidget(placement.create(host, box));
        layout->addWidget(box, placement.row, placement.column, placement.rowSpan, 1);
    }
    layout->setRowStretch(0, 3);
    layout->setRowStretch(1, 2);
    layout->setRowStretch(2, 2);
    layout->setColumnStretch(0, 1);
    layout->setColumnStretch(1, 1);
    window.resize(1800, 1080);

    if (parser.isSet(shot)) {
        window.show();
        QApplication::processEvents();
        QTextStream out(stdout);
        // What the window really shows, so that a component that failed to appear is missed.
        QSet<QString> shown;
        for (const QWidget *widget : window.findChildren<QWidget *>()) {
            const QString name = QString::fromLatin1(widget->metaObject()->className());
            if (widget->isVisible() && name.startsWith(QStringLiteral("olvex::"))
                && !shown.contains(name)) {
                shown.insert(name);
                out << "shows " << name << '\n';
            }
        }
        bool saved = window.grab().save(parser.value(shot), "PNG");
        out << (saved ? "saved " : "could not save ") << parser.value(shot) << '\n';

        // The dialog the cylinder list opens on Edit, as the host may open it itself.
        olvex::frmEditCylinderInfo dialog;
        const auto cylinders = host.site->GetPidsOfTypes({olvex::ParameterTypes::GasCylinder});
        if (!cylinders.isEmpty() && dialog.Setup(cylinders.constFirst(), host.site, host.log)) {
            dialog.show();
            QApplication::processEvents();
            out << "shows " << dialog.metaObject()->className() << '\n';
            QString dialogShot = parser.value(shot);
            if (dialogShot.endsWith(QStringLiteral(".png"))) {
                dialogShot.chop(4);
            }
            dialogShot += QStringLiteral("-cylinder-edit.png");
            saved = dialog.grab().save(dialogShot, "PNG") && saved;
            out << "saved " << dialogShot << '\n';
        }
        return saved ? 0 : 1;
    }
    window.show();
    return QApplication::exec();
}
