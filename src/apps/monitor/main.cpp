// The operator window: the components on one site, as the user given. Without a display,
// --screenshot DIR renders each tab to DIR/<tab>.png and exits, which is how `make run` shows it
// on a machine without one.
#include "calconfirmdock.h"
#include "common/error.h"
#include "common/pid.h"
#include "common/widgets/uiservices.h"
#include "das/dasrunner.h"
#include "host/connectiontext.h"
#include "host/demosite.h"
#include "host/sitedatainterface.h"
#include "host/sitesecurity.h"
#include "host/sitestore.h"
#include "monitortabs.h"
#include "monitorwindow.h"
#include "servicestatus.h"
#include "settings/widgets/disettings.h"
#include "statuslog.h"
#include "windowmemory.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QStandardPaths>
#include <QTextStream>

#include <memory>
#include <optional>

using namespace olvex;

namespace {

// The demo site of this user, made on first use.
QString defaultDemoSite()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
                           + QStringLiteral("/olvex");
    return QDir(folder).absoluteFilePath(QStringLiteral("demo-site.db"));
}

QString backendText(const SiteStore &store)
{
    const ConnectionTarget &target = store.target();
    if (target.isSqlite()) {
        return u"SQLite (" + QDir::toNativeSeparators(target.filePath) + u')';
    }
    return u"PostgreSQL (" + target.displayText() + u')';
}

// Whether a message box can reach the operator: someone who started the window from a desktop
// icon never sees stderr.
bool interactive = false;

int fail(const QString &line)
{
    QTextStream(stderr) << "olvex-monitor: " << line << '\n';
    if (interactive) {
        QMessageBox::critical(nullptr, QApplication::applicationDisplayName(),
                              u"The window cannot start.\n\n" + line);
    }
    return 1;
}

// The window's command line. --help and --version are answered before the window system is
// touched, so that they work without a display.
struct MonitorOptions
{
    QCommandLineOption site{
        QStringLiteral("site"),
        QStringLiteral("The site: an SQLite file or a postgresql:// URL (default: the demo site "
                       "in your data folder, created on first use)."),
        QStringLiteral("SITE")};
    QCommandLineOption user{QStringLiteral("user"),
                            QStringLiteral("Work as this user (default: operator)."),
                            QStringLiteral("NAME"), QStringLiteral("operator")};
    QCommandLineOption shot{QStringLiteral("screenshot"),
                            QStringLiteral("Render each tab to DIR/<tab>.png and exit."),
                            QStringLiteral("DIR")};
    QCommandLineOption noService{
        QStringLiteral("no-das"),
        QStringLiteral("Do not carry out queued changes in this window (an olvex-das process "
                       "beside the site does).")};
    QCommandLineOption group{QStringLiteral("group"),
                             QStringLiteral("Show this setting group first (its PID)."),
                             QStringLiteral("PID")};

    void describe(QCommandLineParser &parser) const
    {
        parser.setApplicationDescription(QStringLiteral("Olvex operator window"));
        parser.addHelpOption();
        parser.addVersionOption();
        parser.addOptions({site, user, shot, noService, group});
    }
};

void setApplicationNames()
{
    QCoreApplication::setApplicationName(QStringLiteral("olvex-monitor"));
    QCoreApplication::setApplicationVersion(QStringLiteral(OLVEX_VERSION));
    QCoreApplication::setOrganizationName(QStringLiteral("Olvex"));
}

bool asksHelpOrVersion(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        const QLatin1StringView arg(argv[i]);
        if (arg == "--help" || arg == "-h" || arg == "-?" || arg == "--help-all"
            || arg == "--version" || arg == "-v") {
            return true;
        }
    }
    return false;
}

} // namespace

int main(int argc, char **argv)
{
    const MonitorOptions options;
    if (asksHelpOrVersion(argc, argv)) {
        QCoreApplication app(argc, argv);
        setApplicationNames();
        QCommandLineParser parser;
        options.describe(parser);
        parser.process(app); // prints the help or the version and exits
        return 0;
    }

    QApplication app(argc, argv);
    setApplicationNames();
    QApplication::setApplicationDisplayName(QStringLiteral("Olvex Monitor"));

    QCommandLineParser parser;
    options.describe(parser);
    if (!parser.parse(QApplication::arguments())) {
        QTextStream(stderr) << "olvex-monitor: " << parser.errorText() << '\n';
        return 2;
    }
    parser.process(app);
    interactive = !parser.isSet(options.shot)
                  && !QApplication::platformName().startsWith(u"offscreen")
                  && QApplication::platformName() != u"minimal";

    const QString userName = parser.value(options.user);
    std::shared_ptr<SiteStore> store;
    std::shared_ptr<SiteDataInterface> dataInterface;
    try {
        QString site = parser.value(options.site);
        if (site.isEmpty()) {
            site = defaultDemoSite();
            if (!QFileInfo::exists(site)) {
                QDir().mkpath(QFileInfo(site).absolutePath());
                QTextStream(stdout)
                    << "Creating the demo site " << QDir::toNativeSeparators(site) << '\n';
                createDemoSite(site);
            }
        }
        store = SiteStore::open(site);
        dataInterface = std::make_shared<SiteDataInterface>(store, HostSession(userName));
    } catch (...) {
        return fail(currentError().description);
    }
    // Security objects of the string library answer for this user from the site.
    setSecurityFactory(
        [store, userName] { return std::make_shared<SiteSecurity>(userName, store); });

    MonitorContext context;
    context.store = store;
    context.dataInterface = dataInterface;
    context.userName = userName;
    context.serviceInProcess = store->isSqlite() && !parser.isSet(options.noService);
    if (parser.isSet(options.group)) {
        context.startGroup = ParsePid(parser.value(options.group));
        if (context.startGroup == 0) {
            return fail(u"--group wants a PID, not '" + parser.value(options.group) + u'\'');
        }
    }
    context.preferFilledGroup = parser.isSet(options.shot);

    MonitorWindow window;
    try {
        const SiteInfo info = store->site();
        window.setSite(info.siteId, info.name);
    } catch (...) {
        return fail(currentError().description);
    }
    window.setUser(userName);
    window.setBackend(backendText(*store));
    context.messageLog = std::make_shared<StatusBarLog>(dataInterface->MessageLog(), &window);
    addComponentTabs(window, context);
    addCalConfirmDock(window, context);

    if (parser.isSet(options.shot)) {
        // A still picture of the site as it stands: no service runs, pending changes show so.
        new ServiceStatus(window, store, nullptr, window.findChild<DISettings *>()); // window's
        window.show();
        try {
            for (const QString &file : window.saveScreenshots(parser.value(options.shot))) {
                QTextStream(stdout) << file << '\n';
            }
        } catch (...) {
            return fail(currentError().description);
        }
        return 0;
    }

    std::optional<DasRunner> service;
    if (context.serviceInProcess) {
        service.emplace(store);
        service->start();
    }
    auto *settings = window.findChild<DISettings *>();
    new ServiceStatus(window, store, service ? &*service : nullptr, settings); // owned by window
    const QString siteId = store->siteId();
    restoreWindowMemory(window, settings, siteId, context.startGroup == 0);
    window.show();
    const int result = QApplication::exec();
    saveWindowMemory(window, settings, siteId);
    if (service) {
        service->stop();
    }
    return result;
}
