// The second process of the store's concurrency tests, writing as a second workstation would:
//   olvex_host_test_helper SITE WORKER COUNT PID
// posts COUNT command records and writes attribute -(1000 + WORKER) of PID COUNT times, one
// transaction each.
#include "common/error.h"
#include "host/commandqueue.h"
#include "host/sitestore.h"

#include <QCoreApplication>
#include <QTextStream>

using namespace olvex;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    try {
        auto store = SiteStore::open(args.value(1));
        const QString worker = args.value(2);
        const int count = args.value(3).toInt();
        const qint32 pid = args.value(4).toInt();
        CommandQueue queue(*store);
        const Actor actor{u"helper-" + worker, u"HOST-" + worker, QStringLiteral("10.0.0.9")};
        for (int i = 0; i < count; ++i) {
            queue.postCommand(store->siteId(), QStringLiteral("Q1DRCOMMAND-CAL"),
                              u"<Command action=\"RaiseMsg\" worker=\"" + worker + u"\" n=\""
                                  + QString::number(i) + u"\" />",
                              QStringLiteral("TEST-0001"), actor);
            store->setAttribute(pid, -(1000 + worker.toInt()), Value(i), actor,
                                QStringLiteral("helper"));
        }
        return 0;
    } catch (...) {
        QTextStream(stderr) << currentError().description << Qt::endl;
        return 1;
    }
}
