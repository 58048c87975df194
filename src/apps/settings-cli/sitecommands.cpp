// Commands on a whole site: create the demo site, show what a site holds.
#include "cliutil.h"
#include "commands.h"

#include "common/error.h"
#include "host/demosite.h"
#include "host/storeerrors.h"

#include <QElapsedTimer>

namespace olvex::cli {

int initDemoCommand(const QStringList &args, QTextStream &out, QTextStream &err)
{
    QCommandLineParser parser;
    parser.addOption(siteOption());
    const QCommandLineOption scale(
        QStringLiteral("scale"),
        QStringLiteral("Makes a large site of N settings (N/20 groups, the rest in proportion)."),
        QStringLiteral("N"));
    const QCommandLineOption force(QStringLiteral("force"),
                                   QStringLiteral("Replaces a site that is already there."));
    const QCommandLineOption siteId(QStringLiteral("site-id"),
                                    QStringLiteral("The new site's id (default MILLCREEK)."),
                                    QStringLiteral("ID"));
    parser.addOptions({scale, force, siteId});
    if (auto done = parseArguments(parser, args,
                                   QStringLiteral("Creates the demo site: a two-unit plant with "
                                                  "its settings, calibrations and cylinders."),
                                   QString(), 0, 0, out, err)) {
        return *done;
    }
    const QString site = parser.value(QStringLiteral("site"));
    if (site.isEmpty()) {
        return complain(err, QStringLiteral("init-demo: no site given (use --site SITE)"),
                        ExitCode::Usage);
    }
    DemoOptions options;
    if (parser.isSet(scale)) {
        bool ok = false;
        options.scale = parser.value(scale).toInt(&ok);
        if (!ok || options.scale < 0 || options.scale > 5000000) {
            return complain(err,
                            u"init-demo: --scale wants a number of settings up to 5000000, not '"
                                + parser.value(scale) + u'\'',
                            ExitCode::Usage);
        }
    }
    if (parser.isSet(siteId)) {
        options.siteId = parser.value(siteId);
    }
    try {
        QElapsedTimer timer;
        timer.start();
        auto store = createDemoSite(site, options, parser.isSet(force));
        const SiteCounts counts = store->counts();
        out << "created site " << store->siteId() << " at " << store->target().displayText()
            << " in " << QString::number(double(timer.elapsed()) / 1000.0, 'f', 1)
            << " s: " << counts.parametersByType.value(4) << " settings, "
            << counts.parametersByType.value(5) << " groups, " << counts.parametersByType.value(62)
            << " calibration parameters, " << counts.parametersByType.value(79) << " cylinders"
            << Qt::endl;
        return ExitCode::Ok;
    } catch (const Error &error) {
        QString text = error.description();
        if (error.number() == StoreError::SiteExists) {
            text += QStringLiteral(" (use --force to replace it)");
        }
        return complain(err, text, ExitCode::Failed);
    } catch (...) {
        return complain(err, currentError().description, ExitCode::Failed);
    }
}

int infoCommand(const QStringList &args, QTextStream &out, QTextStream &err)
{
    QCommandLineParser parser;
    parser.addOption(siteOption());
    if (auto done = parseArguments(parser, args,
                                   QStringLiteral("Shows the site id and how many parameters of "
                                                  "each parameter type the site holds."),
                                   QString(), 0, 0, out, err)) {
        return *done;
    }
    std::shared_ptr<SiteStore> store;
    if (const int code = openSite(parser, err, store); code != ExitCode::Ok) {
        return code;
    }
    try {
        const SiteCounts counts = store->counts();
        out << "site: " << store->siteId() << '\n';
        for (auto it = counts.parametersByType.cbegin(); it != counts.parametersByType.cend();
             ++it) {
            out << "type " << it.key() << ": " << it.value() << '\n';
        }
        out.flush();
        return ExitCode::Ok;
    } catch (...) {
        return complain(err, currentError().description, ExitCode::Failed);
    }
}

} // namespace olvex::cli
