// The data acquisition service's side of the queues as its own process: carries out pending
// value writes and command records of one site until stopped, or with --drain until the queue
// is empty.
//
// Exit codes: 0 stopped by SIGTERM/SIGINT or drained; 1 failure (the site cannot be opened, the
// store keeps failing while draining); 2 bad command line.
#include "common/error.h"
#include "das/dasrunner.h"
#include "das/scaledclock.h"
#include "host/sitestore.h"
#include "plantcommand.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QTextStream>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;
// While draining, this many failed steps in a row mean the store is gone.
constexpr int kDrainFailureLimit = 5;

int signalPipe[2] = {-1, -1};

// Only writes one byte: the event loop does the rest, after the group in hand is finished.
extern "C" void onStopSignal(int)
{
    const int saved = errno;
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(signalPipe[0], &byte, 1);
    errno = saved;
}

bool installStopSignals()
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalPipe) != 0) {
        return false;
    }
    struct sigaction action = {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    return ::sigaction(SIGTERM, &action, nullptr) == 0
           && ::sigaction(SIGINT, &action, nullptr) == 0;
}

void printLine(const QString &line)
{
    QTextStream err(stderr);
    err << line << '\n';
    err.flush();
}

void logLine(int severity, const QString &line)
{
    printLine(QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"))
              + (severity >= 4 ? u" error " : u" note  ") + line);
}

int usage(const QString &problem)
{
    printLine(u"olvex-das: " + problem);
    printLine(QStringLiteral("Try 'olvex-das --help'."));
    return kExitUsage;
}

// A positive number of milliseconds, or nullopt.
std::optional<std::chrono::milliseconds> milliseconds(const QString &text)
{
    bool ok = false;
    const int value = text.toInt(&ok);
    if (!ok || value <= 0) {
        return std::nullopt;
    }
    return std::chrono::milliseconds(value);
}

// What a run carried out, for its last line.
struct Tally
{
    qint64 done = 0;
    qint64 failed = 0;
    QElapsedTimer clock;

    QString summary() const
    {
        const double seconds = std::max(clock.nsecsElapsed() / 1e9, 1e-3);
        const qint64 items = done + failed;
        return QString::number(items) + (items == 1 ? u" item" : u" items") + u" carried out ("
               + QString::number(done) + u" done, " + QString::number(failed) + u" failed) in "
               + QString::number(seconds, 'f', 1) + u" s, "
               + QString::number(qRound64(items / seconds)) + u" items a second";
    }
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("olvex-das"));
    QCoreApplication::setApplicationVersion(QStringLiteral(OLVEX_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Carries out the pending value writes and command records of a site.\n"
                       "Runs until SIGTERM or SIGINT (the items in hand are finished first)."));
    const QCommandLineOption helpOption = parser.addHelpOption();
    const QCommandLineOption versionOption = parser.addVersionOption();
    const QCommandLineOption siteOption(
        QStringLiteral("site"), QStringLiteral("The site: an SQLite file or a postgresql:// URI."),
        QStringLiteral("SITE"));
    const QCommandLineOption drainOption(QStringLiteral("drain"),
                                         QStringLiteral("Exit once the queue is empty."));
    const QCommandLineOption intervalOption(
        QStringLiteral("interval"),
        QStringLiteral("How often an idle service looks for work (default 1000)."),
        QStringLiteral("MS"), QStringLiteral("1000"));
    const QCommandLineOption leaseOption(
        QStringLiteral("lease"),
        QStringLiteral("How long a claim holds before another service may take the item "
                       "again (default 30000)."),
        QStringLiteral("MS"), QStringLiteral("30000"));
    const QCommandLineOption speedOption(
        QStringLiteral("speed"),
        QStringLiteral("Simulated time runs X times faster (calibration checks, schedules, "
                       "confirmation deadlines; default 1)."),
        QStringLiteral("X"), QStringLiteral("1"));
    const QCommandLineOption unitOption(
        QStringLiteral("unit"),
        QStringLiteral("With plant: only this plant unit (default: every unit)."),
        QStringLiteral("N"));
    parser.addOptions(
        {siteOption, drainOption, intervalOption, leaseOption, speedOption, unitOption});
    parser.addPositionalArgument(
        QStringLiteral("plant"),
        QStringLiteral("plant [--unit N] start|stop|normal-ops|hours H: set the plant state "
                       "that the service follows, and exit."),
        QStringLiteral("[plant ...]"));

    if (!parser.parse(QCoreApplication::arguments())) {
        return usage(parser.errorText());
    }
    if (parser.isSet(helpOption)) {
        QTextStream(stdout) << parser.helpText();
        return 0;
    }
    if (parser.isSet(versionOption)) {
        QTextStream(stdout) << "olvex-das " << QCoreApplication::applicationVersion() << '\n';
        return 0;
    }
    const QStringList positional = parser.positionalArguments();
    if (!positional.isEmpty() && positional.constFirst() != u"plant") {
        return usage(u"unexpected argument '" + positional.constFirst() + u'\'');
    }
    if (!parser.isSet(siteOption) || parser.value(siteOption).trimmed().isEmpty()) {
        return usage(QStringLiteral("no site given (--site SITE)"));
    }
    if (!positional.isEmpty()) {
        bool ok = true;
        const int unit = parser.isSet(unitOption) ? parser.value(unitOption).toInt(&ok) : 0;
        if (!ok || unit < 0) {
            return usage(u"--unit wants a unit number, not '" + parser.value(unitOption) + u'\'');
        }
        return olvex::runPlantCommand(parser.value(siteOption), unit, positional.mid(1));
    }
    bool speedOk = false;
    const double speed = parser.value(speedOption).toDouble(&speedOk);
    if (!speedOk || speed <= 0 || speed > 100000) {
        return usage(u"--speed wants a factor above 0 (up to 100000), not '"
                     + parser.value(speedOption) + u'\'');
    }
    const auto interval = milliseconds(parser.value(intervalOption));
    if (!interval) {
        return usage(u"--interval wants a positive number of milliseconds, not '"
                     + parser.value(intervalOption) + u'\'');
    }
    const auto lease = milliseconds(parser.value(leaseOption));
    if (!lease) {
        return usage(u"--lease wants a positive number of milliseconds, not '"
                     + parser.value(leaseOption) + u'\'');
    }
    if (!installStopSignals()) {
        printLine(QStringLiteral("olvex-das: cannot set up the stop signals"));
        return kExitFailure;
    }

    std::shared_ptr<olvex::SiteStore> store;
    try {
        store = olvex::SiteStore::open(parser.value(siteOption));
    } catch (...) {
        printLine(u"olvex-das: " + olvex::currentError().description);
        return kExitFailure;
    }

    olvex::DasOptions options;
    options.lease = *lease;
    options.logSink = logLine;
    options.reopenStore = true;
    if (speed != 1) {
        options.clock = std::make_shared<olvex::ScaledClock>(speed);
    }
    olvex::DasRunner runner(store, *interval, options);
    const QString site = store->target().displayText();
    const bool draining = parser.isSet(drainOption);
    logLine(1, u"DAS: service " + runner.service().workerId() + u" started on " + site
                   + (draining ? u" (until the queue is empty)" : u""));

    Tally tally;
    tally.clock.start();
    QObject::connect(
        &runner, &olvex::DasRunner::itemFinished, &app,
        [&](const olvex::DasResult &result) { ++(result.succeeded ? tally.done : tally.failed); });

    QSocketNotifier stopNotifier(signalPipe[1], QSocketNotifier::Read);
    QObject::connect(&stopNotifier, &QSocketNotifier::activated, &app, [&] {
        char byte = 0;
        [[maybe_unused]] const auto read = ::read(signalPipe[1], &byte, 1);
        runner.stop();
        logLine(1,
                u"DAS: service " + runner.service().workerId() + u" stopped: " + tally.summary());
        QCoreApplication::exit(0);
    });
    QObject::connect(&runner, &olvex::DasRunner::drained, &app, [&] {
        logLine(1, u"DAS: service " + runner.service().workerId() + u" drained the queue: "
                       + tally.summary());
        QCoreApplication::exit(0);
    });
    QObject::connect(&runner, &olvex::DasRunner::stepFailed, &app, [&](const QString &error) {
        if (draining && runner.consecutiveFailures() >= kDrainFailureLimit) {
            runner.stop();
            printLine(u"olvex-das: the queue of " + site + u" cannot be drained: " + error);
            QCoreApplication::exit(kExitFailure);
        }
    });

    if (draining) {
        runner.drain();
    } else {
        runner.start();
    }
    return QCoreApplication::exec();
}
