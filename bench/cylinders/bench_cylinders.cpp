// RefreshCylinderList of 2,000 cylinders on a SQLite site read through the reference host,
// against filling a bare QTreeWidget with the same six texts per row: what the list costs
// beyond Qt's own.
#include "common/pid.h"
#include "common/vocabulary.h"
#include "common/widgets/reportlist.h"
#include "cylinders/cylinderrow.h"
#include "cylinders/widgets/disysdefcylinders.h"
#include "host/sitebuilder.h"
#include "host/sitedatainterface.h"
#include "host/sitestore.h"
#include "widgetbenchmain.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <memory>
#include <vector>

using namespace olvex;

namespace {

constexpr int kCylinders = 2000;

std::shared_ptr<SiteDataInterface> openSite()
{
    static QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("cylinders.db"));
    if (!QFile::exists(path)) {
        SiteStore::create(
            path, SiteInfo{QStringLiteral("BENCH"), QStringLiteral("Bench"), {}, false}, true,
            [](SiteStore &store) {
                SiteBuilder b(store);
                b.addUser(QStringLiteral("operator"), QStringLiteral("Operator"), true);
                const QDateTime now = QDateTime::currentDateTime();
                for (int i = 0; i < kCylinders; ++i) {
                    const qint32 pid = BuildPid(0, 300 + i / 100, 7, 0, i % 100);
                    b.addParameter(pid, u"Cylinder " + QString::number(i),
                                   ParameterTypes::GasCylinder);
                    b.setAttribute(pid, CylinderAttr::CylinderId,
                                   QString(u"CC" + QString::number(400000 + i)));
                    // Some expired, some expiring, most valid.
                    b.setAttribute(pid, CylinderAttr::Expiration,
                                   now.addDays(i % 10 == 0   ? -5
                                               : i % 10 == 1 ? 12
                                                             : 400));
                    b.setAttribute(pid, CylinderAttr::VendorId, QStringLiteral("B22014"));
                    b.setAttribute(pid, CylinderAttr::GasCodes, QStringLiteral("SO2,NO,CO2,BALN"));
                    b.setAttribute(pid, CylinderAttr::Pressure, 1000 + i);
                    b.setAttribute(pid, CylinderAttr::PressureUnit, QStringLiteral("psig"));
                    b.setAttribute(pid, CylinderAttr::ComponentGases,
                                   QStringLiteral("SO2,450.5,ppm;NO,250,ppm;CO2,12,%"));
                }
                b.flush();
            });
    }
    return std::make_shared<SiteDataInterface>(SiteStore::open(path),
                                               HostSession(QStringLiteral("operator")));
}

void refreshCandidate(benchmark::State &state)
{
    const auto di = openSite();
    DISysDefCylinders list;
    list.resize(1100, 700);
    list.show();
    list.Setup(nullptr, di, QString());
    for (auto _ : state) {
        list.RefreshCylinderList();
        QApplication::processEvents();
    }
    if (list.lsvCylinders()->rowCount() != kCylinders) {
        state.SkipWithError("the list is incomplete");
    }
}

void refreshBaseline(benchmark::State &state)
{
    // The texts the list shows, taken from one fill.
    const auto di = openSite();
    std::vector<QStringList> rows;
    {
        DISysDefCylinders list;
        list.Setup(nullptr, di, QString());
        for (int i = 0; i < list.lsvCylinders()->rowCount(); ++i) {
            const QTreeWidgetItem *row = list.lsvCylinders()->row(i);
            QStringList texts;
            for (int c = 0; c < 6; ++c) {
                texts << row->text(c);
            }
            rows.push_back(texts);
        }
    }
    QTreeWidget tree;
    tree.setColumnCount(6);
    tree.setHeaderLabels(cylinderColumns());
    tree.resize(1100, 700);
    tree.show();
    for (auto _ : state) {
        tree.clear();
        for (const QStringList &texts : rows) {
            new QTreeWidgetItem(&tree, texts);
        }
        QApplication::processEvents();
    }
}

} // namespace

BENCHMARK(refreshCandidate)->Name("cylinders_fill_vs_raw/candidate")->Unit(benchmark::kMillisecond);
BENCHMARK(refreshBaseline)->Name("cylinders_fill_vs_raw/baseline")->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    return olvex::bench::runWidgetBenchmarks(argc, argv);
}
