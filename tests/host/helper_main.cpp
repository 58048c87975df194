// The second process of the store's concurrency tests:
//   olvex_host_test_helper post SITE WORKER COUNT PID
//       posts COUNT command records and writes attribute -(1000 + WORKER) of PID COUNT times,
//       one transaction each, as a second workstation would;
//   olvex_host_test_helper claim SITE WORKER
//       claims and completes command records until none is left, printing each claimed id.
#include "common/error.h"
#include "host/commandqueue.h"
#include "host/sitestore.h"

#include <QCoreApplication>
#include <QTextStream>

#include <chrono>

using namespace olvex;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    QTextStream out(stdout);
    QTextStream err(stderr);
    try {
        const QString mode = args.value(1);
        auto store = SiteStore::open(args.value(2));
        const QString worker = args.value(3);
        CommandQueue queue(*store);
        const Actor actor{u"helper-" + worker, u"HOST-" + worker, QStringLiteral("10.0.0.9")};
        if (mode == u"post") {
            const int count = args.value(4).toInt();
            const qint32 pid = args.value(5).toInt();
            for (int i = 0; i < count; ++i) {
                queue.postCommand(store->siteId(), QStringLiteral("Q1DRCOMMAND-CAL"),
                                  u"<Command action=\"RaiseMsg\" worker=\"" + worker + u"\" n=\""
                                      + QString::number(i) + u"\" />",
                                  QStringLiteral("TEST-0001"), actor);
                store->setAttribute(pid, -(1000 + worker.toInt()), Value(i), actor,
                                    QStringLiteral("helper"));
            }
            return 0;
        }
        if (mode == u"claim") {
            while (auto record = queue.claimCommand(worker, std::chrono::seconds(60))) {
                if (!queue.completeCommand(record->id, worker, true, QStringLiteral("done"))) {
                    err << "lost claim " << record->id << Qt::endl;
                    return 1;
                }
                out << record->id << '\n';
            }
            return 0;
        }
        err << "unknown mode " << mode << Qt::endl;
        return 2;
    } catch (...) {
        err << currentError().description << Qt::endl;
        return 1;
    }
}
