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
#include "statuslog.h"
#include "servicestatus.h"
#include "settings/widgets/disettings.h"
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

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("olvex-monitor"));
    QApplication::setApplicationDisplayName(QStringLiteral("Olvex Monitor"));
    QApplication::setOrganizationName(QStringLiteral("Olvex"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Olvex operator window"));
    parser.addHelpOption();
    const QCommandLineOption siteOption(
        QStringLiteral("site"),
        QStringLiteral("The site: an SQLite file or a postgresql:// URL (default: the demo site "
                       "in your data folder, created on first use)."),
        QStringLiteral("SITE"));
    const QCommandLineOption userOption(QStringLiteral("user"),
                                        QStringLiteral("Work as this user (default: operator)."),
                                        QStringLiteral("NAME"), QStringLiteral("operator"));
    const QCommandLineOption shotOption(
        QStringLiteral("screenshot"), QStringLiteral("Render each tab to DIR/<tab>.png and exit."),
        QStringLiteral("DIR"));
    const QCommandLineOption noServiceOption(
        QStringLiteral("no-das"),
        QStringLiteral("Do not carry out queued changes in this window (an olvex-das process "
                       "beside the site does)."));
    const QCommandLineOption groupOption(QStringLiteral("group"),
                                         QStringLiteral("Show this setting group first (its PID)."),
                                         QStringLiteral("PID"));
    parser.addOptions({siteOption, userOption, shotOption, noServiceOption, groupOption});
    if (!parser.parse(QApplication::arguments())) {
        QTextStream(stderr) << "olvex-monitor: " << parser.errorText() << '\n';
        return 2;
    }
    parser.process(app);
    interactive = !parser.isSet(shotOption)
                  && !QApplication::platformName().startsWith(u"offscreen")
                  && QApplication::platformName() != u"minimal";

    const QString userName = parser.value(userOption);
    std::shared_ptr<SiteStore> store;
    std::shared_ptr<SiteDataInterface> dataInterface;
    try {
        QString site = parser.value(siteOption);
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
    context.serviceInProcess = store->isSqlite() && !parser.isSet(noServiceOption);
    if (parser.isSet(groupOption)) {
        context.startGroup = ParsePid(parser.value(groupOption));
        if (context.startGroup == 0) {
            return fail(u"--group wants a PID, not '" + parser.value(groupOption) + u'\'');
        }
    }
    context.preferFilledGroup = parser.isSet(shotOption);

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

    if (parser.isSet(shotOption)) {
        // A still picture of the site as it stands: no service runs, pending changes show so.
        new ServiceStatus(window, store, nullptr, window.findChild<DISettings *>()); // window's
        window.show();
        try {
            for (const QString &file : window.saveScreenshots(parser.value(shotOption))) {
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
