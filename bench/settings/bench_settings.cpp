// ShowGroup of a 2,000-setting group and LoadSettingGroups of 5,000 groups, each on a SQLite
// site read through the reference host, against filling a bare QTreeWidget with the same texts
// and shape. The bare fill is the floor: what any list of that size costs Qt alone.
#include "common/pid.h"
#include "common/vocabulary.h"
#include "common/widgets/keyedtree.h"
#include "common/widgets/reportlist.h"
#include "common/widgets/uiservices.h"
#include "host/sitebuilder.h"
#include "host/sitedatainterface.h"
#include "host/sitestore.h"
#include "settings/widgets/disettings.h"
#include "settings/widgets/settinggroups.h"
#include "widgetbenchmain.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <memory>
#include <vector>

using namespace olvex;

namespace {

constexpr int kRows = 2000;
constexpr qint32 kBigGroup = 100100;

// Valid PIDs from start on, in ascending order.
std::vector<qint32> pids(qint32 start, int count)
{
    std::vector<qint32> out;
    for (qint32 pid = start; int(out.size()) < count; ++pid) {
        if (IsValidPid(pid)) {
            out.push_back(pid);
        }
    }
    return out;
}

QTemporaryDir &scratch()
{
    static QTemporaryDir dir;
    return dir;
}

std::shared_ptr<SiteDataInterface> openSite(const QString &file,
                                            const std::function<void(SiteBuilder &)> &fill)
{
    const QString path = scratch().filePath(file);
    SiteStore::create(path, SiteInfo{QStringLiteral("BENCH"), QStringLiteral("Bench"), {}, false},
                      true, [&](SiteStore &store) {
                          SiteBuilder builder(store);
                          builder.addUser(QStringLiteral("operator"), QStringLiteral("Operator"),
                                          true);
                          fill(builder);
                          builder.flush();
                      });
    return std::make_shared<SiteDataInterface>(SiteStore::open(path),
                                               HostSession(QStringLiteral("operator")));
}

// One group of kRows settings of mixed types, ranges, defaults and flags.
void bigGroup(SiteBuilder &b)
{
    const std::vector<qint32> settings = pids(2000000, kRows);
    QList<Value> members;
    for (int i = 0; i < kRows; ++i) {
        const qint32 pid = settings[size_t(i)];
        members << Value(qint64(pid));
        const int type = i % 10 == 7   ? SettingType::YesNo
                         : i % 10 == 8 ? SettingType::Text
                                       : SettingType::Number;
        b.addParameter(pid, u"Setting " + QString::number(i) + u" of the big group",
                       ParameterTypes::Setting);
        b.setAttribute(pid, SettingAttr::DataType, type);
        b.setAttribute(pid, SettingAttr::Readable, true);
        b.setAttribute(pid, SettingAttr::Changeable, i % 13 != 0);
        b.setAttribute(pid, SettingAttr::Level, i % 17 == 0 ? 60 : 10);
        if (type == SettingType::Number) {
            b.setAttribute(pid, SettingAttr::DefaultValue, double(i) / 4.0);
            b.setAttribute(pid, SettingAttr::RecommendedLow, 0);
            b.setAttribute(pid, SettingAttr::RecommendedHigh, 1000 + i);
            b.setCurrentValue(pid, double(i) * 1.25);
        } else if (type == SettingType::YesNo) {
            b.setAttribute(pid, SettingAttr::DefaultValue, 0);
            b.setCurrentValue(pid, -1);
        } else {
            b.setAttribute(pid, SettingAttr::DefaultValue, QStringLiteral("none"));
            b.setCurrentValue(pid, QString(u"text " + QString::number(i)));
        }
    }
    b.addParameter(kBigGroup, QStringLiteral("Big group"), ParameterTypes::SettingGroup);
    b.setAttribute(kBigGroup, GroupAttr::Order, 1);
    b.setAttribute(kBigGroup, GroupAttr::Members, Value(members));
}

// 5,000 groups three deep: 50 roots, 9 children each, 10 grandchildren each.
void manyGroups(SiteBuilder &b)
{
    const std::vector<qint32> groups = pids(100100, 5000);
    size_t next = 0;
    const auto add = [&](qint32 parent, int order, const QString &name) {
        const qint32 pid = groups[next++];
        b.addParameter(pid, name, ParameterTypes::SettingGroup);
        b.setAttribute(pid, GroupAttr::Order, order);
        b.setAttribute(pid, GroupAttr::HasParent, parent != 0 ? 1 : 0);
        b.setAttribute(pid, GroupAttr::ParentPid, qint64(parent));
        b.setAttribute(pid, GroupAttr::AlarmGroup, order % 7 == 0);
        return pid;
    };
    for (int r = 0; r < 50; ++r) {
        const qint32 root = add(0, 50 - r, u"Unit " + QString::number(r));
        for (int c = 0; c < 9; ++c) {
            const qint32 child = add(root, c % 4, u"Monitor " + QString::number(c));
            for (int g = 0; g < 10; ++g) {
                add(child, 10 - g, u"Alarms " + QString::number(g));
            }
        }
    }
}

void showGroupCandidate(benchmark::State &state)
{
    const auto di = openSite(QStringLiteral("showgroup.db"), bigGroup);
    DISettings editor;
    editor.resize(1100, 700);
    editor.show();
    editor.Setup(di, false);
    for (auto _ : state) {
        editor.ShowGroup(kBigGroup, true);
        QApplication::processEvents();
    }
    if (editor.lsvSettings()->rowCount() != kRows) {
        state.SkipWithError("the group was not shown");
    }
}

void showGroupBaseline(benchmark::State &state)
{
    // The same texts the editor shows, taken from one fill.
    const auto di = openSite(QStringLiteral("showgroup-texts.db"), bigGroup);
    std::vector<QStringList> rows;
    {
        DISettings editor;
        editor.Setup(di, false);
        editor.ShowGroup(kBigGroup, true);
        for (int i = 0; i < editor.lsvSettings()->rowCount(); ++i) {
            const QTreeWidgetItem *row = editor.lsvSettings()->row(i);
            rows.push_back({row->text(0), row->text(1), row->text(2), row->text(3)});
        }
    }
    QTreeWidget tree;
    tree.setColumnCount(4);
    tree.setHeaderLabels({"Setting", "Value", "Default Value", "Value Range"});
    tree.resize(1100, 700);
    tree.show();
    for (auto _ : state) {
        tree.clear();
        for (const QStringList &texts : rows) {
            new QTreeWidgetItem(&tree, texts);
        }
        tree.setCurrentItem(tree.topLevelItem(0));
        QApplication::processEvents();
    }
}

void loadGroupsCandidate(benchmark::State &state)
{
    const auto di = openSite(QStringLiteral("groups.db"), manyGroups);
    KeyedTree tree;
    tree.resize(300, 700);
    tree.show();
    for (auto _ : state) {
        tree.clearNodes();
        LoadSettingGroups(*di, tree, false);
        QApplication::processEvents();
    }
    if (tree.nodeCount() != 5000) {
        state.SkipWithError("the tree is incomplete");
    }
}

void loadGroupsBaseline(benchmark::State &state)
{
    // The same names and shape, in the order the editor shows them.
    const auto di = openSite(QStringLiteral("groups-texts.db"), manyGroups);
    struct Node
    {
        QString text;
        int parent; // index into the nodes, -1 for a root
    };
    std::vector<Node> nodes;
    {
        KeyedTree tree;
        LoadSettingGroups(*di, tree, false);
        QHash<const QTreeWidgetItem *, int> index;
        std::function<void(QTreeWidgetItem *, int)> walk = [&](QTreeWidgetItem *item, int parent) {
            index.insert(item, int(nodes.size()));
            nodes.push_back({item->text(0), parent});
            const int self = int(nodes.size()) - 1;
            for (int c = 0; c < item->childCount(); ++c) {
                walk(item->child(c), self);
            }
        };
        for (int i = 0; i < tree.topLevelItemCount(); ++i) {
            walk(tree.topLevelItem(i), -1);
        }
    }
    QTreeWidget tree;
    tree.setHeaderHidden(true);
    tree.resize(300, 700);
    tree.show();
    std::vector<QTreeWidgetItem *> items(nodes.size());
    for (auto _ : state) {
        tree.clear();
        for (size_t i = 0; i < nodes.size(); ++i) {
            const Node &node = nodes[i];
            items[i] = node.parent < 0
                           ? new QTreeWidgetItem(&tree, {node.text})
                           : new QTreeWidgetItem(items[size_t(node.parent)], {node.text});
        }
        QApplication::processEvents();
    }
}

} // namespace

BENCHMARK(showGroupCandidate)
    ->Name("showgroup_vs_raw_fill/candidate")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(showGroupBaseline)->Name("showgroup_vs_raw_fill/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(loadGroupsCandidate)
    ->Name("load_groups_vs_raw_tree/candidate")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(loadGroupsBaseline)
    ->Name("load_groups_vs_raw_tree/baseline")
    ->Unit(benchmark::kMillisecond);

// The editor's security answers from the site; with the Qt services it refuses, which
// costs the same per row.
int main(int argc, char **argv)
{
    return olvex::bench::runWidgetBenchmarks(argc, argv);
}
