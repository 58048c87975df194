// A minimal host program: the site in memory, every component of the library on one window.
//   minimal-host                     shows the window
//   minimal-host --screenshot FILE   renders the window to FILE (PNG) and exits; works offscreen
#include "memorysite.h"

#include "common/widgets/uiservices.h"
#include "importexport/widgets/disettingsimportexport.h"
#include "settings/widgets/disettings.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QGroupBox>
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
    std::function<QWidget *(const Host &, QWidget *parent)> create;
};

// One row per component: how this host creates it and hands it the host objects.
const Placement kPlacements[] = {
    {"Settings",
     [](const Host &host, QWidget *parent) -> QWidget * {
         auto *settings = new olvex::DISettings(nullptr, parent);
         settings->Setup(host.site, false);
         return settings;
     }},
    {"Settings import and export",
     [](const Host &host, QWidget *parent) -> QWidget * {
         auto *transfer = new olvex::DISettingsImportExport(nullptr, parent);
         transfer->Setup(host.log, host.site);
         return transfer;
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
    auto *layout = new QVBoxLayout(&window);
    QTextStream out(stdout);
    for (const Placement &placement : kPlacements) {
        auto *box = new QGroupBox(QString::fromUtf8(placement.title), &window);
        auto *boxLayout = new QVBoxLayout(box);
        QWidget *component = placement.create(host, box);
        boxLayout->addWidget(component);
        layout->addWidget(box, 1);
        out << "placed " << component->metaObject()->className() << '\n';
    }
    window.resize(900, 760);

    if (parser.isSet(shot)) {
        window.show();
        QApplication::processEvents();
        const bool saved = window.grab().save(parser.value(shot), "PNG");
        out << (saved ? "saved " : "could not save ") << parser.value(shot) << '\n';
        return saved ? 0 : 1;
    }
    window.show();
    return QApplication::exec();
}
