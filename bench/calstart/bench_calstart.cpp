// calstart_load_vs_xpath: DICalStart selects each of 200 calibration parameters in turn (the
// value read through the reference host, parsed, every field shown, both status lines filled)
// against libxml2 parsing the same 200 values and evaluating the same XPaths, nothing else.
#include "calstart/widgets/dicalstart.h"
#include "common/pid.h"
#include "common/vocabulary.h"
#include "host/sitebuilder.h"
#include "host/sitedatainterface.h"
#include "host/sitestore.h"
#include "widgetbenchmain.h"

#include <benchmark/benchmark.h>

#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <QApplication>
#include <QTemporaryDir>

#include <memory>
#include <vector>

using namespace olvex;

namespace {

constexpr int kParameters = 200;

// The elements the control reads (record and status lines), as the service writes a record.
const char *const kFields[] = {"CalEnabled",
                               "CalStartTimeUser",
                               "SkipIfOffline",
                               "SkipDailyCalIfOnlineCalExists",
                               "CalDelayMinutes",
                               "CalAfterStartup",
                               "CalAfterEnterNormalOps",
                               "SkipStartupCalIfOnlineCalExists",
                               "CalEvery26OpHours",
                               "CalConfirmEnabled",
                               "CalConfirmTimeout",
                               "CalConfirmDefaultConfirm",
                               "NormalOpSupported",
                               "CanDetermineOpHours",
                               "CalConfirmSupported",
                               "ManualCalStartSupported",
                               "ManualCalAbortSupported",
                               "UserFriendlyStatus",
                               "OpHoursSinceOnlineCal",
                               "OpHoursStatusString"};

QString record(int i)
{
    const auto e = [](const char *name, const QString &text, const QString &ioid = {}) -> QString {
        return u"    <" + QLatin1StringView(name)
               + (ioid.isEmpty() ? QString() : u" ioid=\"" + ioid + u'"') + u'>' + text + u"</"
               + QLatin1StringView(name) + u">\n";
    };
    const QString flag = QString::number(i % 2);
    return u"<XValue>\n  <CalStart>\n" + e("Unit", u"Unit " + QString::number(1 + i % 2))
           + e("CalEnabled", QStringLiteral("1"), u"C" + QString::number(100 + i))
           + e("CalStartTimeUser", QStringLiteral("06:%1").arg(i % 60, 2, 10, QChar(u'0')))
           + e("CalStartTimePLC", QStringLiteral("06:50"))
           + e("CalStartTimePLCIsTransient", QStringLiteral("0"))
           + e("WhenToOverwriteTransientCalStartTimePLC", {}) + e("SkipIfOffline", flag)
           + e("SkipDailyCalIfOnlineCalExists", flag)
           + e("CalDelayMinutes", QString::number(i % 90)) + e("CalAfterStartup", flag)
           + e("CalAfterEnterNormalOps", QStringLiteral("0"))
           + e("SkipStartupCalIfOnlineCalExists", QStringLiteral("1"))
           + e("CalEvery26OpHours", QStringLiteral("1")) + e("CalConfirmEnabled", flag)
           + e("CalConfirmTimeout", QStringLiteral("30"))
           + e("CalConfirmDefaultConfirm", QStringLiteral("1"))
           + e("NormalOpSupported", QStringLiteral("1"))
           + e("CanDetermineOpHours", QStringLiteral("1"))
           + e("CalConfirmSupported", QStringLiteral("1"))
           + e("AutoCalStartSupported", QStringLiteral("1"))
           + e("ManualCalStartSupported", QStringLiteral("1"), u"C" + QString::number(300 + i))
           + e("ManualCalAbortSupported", QStringLiteral("1"), u"C" + QString::number(500 + i))
           + e("CalCancel", QStringLiteral("0"))
           + e("UserFriendlyStatus", QStringLiteral("Idle; next daily cal check at 06:50"))
           + e("OpHoursSinceOnlineCal", QString::number(i % 30))
           + e("ClockHoursSinceOnlineCal", QString::number(i % 30 + 3))
           + e("ClockHoursSinceCal", QString::number(i % 30 + 3))
           + e("OpHoursStatusString",
               QString::number(i % 30)
                   + u" unit operating hours have passed since the most recent online cal check "
                     u"at 2026/03/01 06:50 AM.")
           + e("CalConfirmPending", QStringLiteral("0")) + e("CalConfirmPendingCalType", {})
           + e("CalConfirmScheduledStartTime", {}) + e("CalConfirmExpirationTime", {})
           + u"  </CalStart>\n</XValue>";
}

struct Site
{
    QTemporaryDir dir;
    std::shared_ptr<SiteDataInterface> di;
    std::vector<QString> values;
};

Site &site()
{
    static Site s = [] {
        Site made;
        const QString path = made.dir.filePath(QStringLiteral("calstart.db"));
        SiteStore::create(
            path, SiteInfo{QStringLiteral("BENCH"), QStringLiteral("Bench"), {}, false}, true,
            [&](SiteStore &store) {
                SiteBuilder b(store);
                b.addUser(QStringLiteral("operator"), QStringLiteral("Operator"), true);
                b.addPlantUnit(1, QStringLiteral("Unit 1"));
                b.addPlantUnit(2, QStringLiteral("Unit 2"));
                for (int i = 0; i < kParameters; ++i) {
                    const int unit = 1 + i % 2;
                    const qint32 pid = BuildPid(unit, 100 + i, 3, 0, 1);
                    b.addParameter(pid, u"Cal " + QString::number(i), ParameterTypes::Calibration,
                                   unit);
                    made.values.push_back(record(i));
                    b.setCurrentValue(pid, Value(made.values.back()));
                }
                b.flush();
            });
        made.di = std::make_shared<SiteDataInterface>(SiteStore::open(path),
                                                      HostSession(QStringLiteral("operator")));
        return made;
    }();
    return s;
}

void candidate(benchmark::State &state)
{
    DICalStart control;
    control.resize(control.DesiredWidth(), 700);
    control.show();
    control.Setup(nullptr, site().di);
    if (control.rowCount() != kParameters) {
        state.SkipWithError("the parameters are not listed");
        return;
    }
    for (auto _ : state) {
        for (int i = 1; i <= kParameters; ++i) {
            control.SelectParameter(i % kParameters);
        }
        QApplication::processEvents();
    }
    control.Teardown();
}

void baseline(benchmark::State &state)
{
    std::vector<QByteArray> texts;
    for (const QString &value : site().values) {
        texts.push_back(value.toUtf8());
    }
    std::vector<QByteArray> paths;
    for (const char *field : kFields) {
        paths.push_back(QByteArray("//CalStart/") + field);
    }
    paths.push_back("//CalStart/CalEnabled/@ioid");
    paths.push_back("//CalStart/ManualCalStartSupported/@ioid");
    paths.push_back("//CalStart/ManualCalAbortSupported/@ioid");
    for (auto _ : state) {
        for (const QByteArray &text : texts) {
            xmlDocPtr doc = xmlReadMemory(text.constData(), int(text.size()), nullptr, nullptr,
                                          XML_PARSE_NONET | XML_PARSE_NOBLANKS);
            xmlXPathContextPtr context = xmlXPathNewContext(doc);
            for (const QByteArray &path : paths) {
                xmlXPathObjectPtr found = xmlXPathEvalExpression(
                    reinterpret_cast<const xmlChar *>(path.constData()), context);
                if (found && found->nodesetval && found->nodesetval->nodeNr > 0) {
                    xmlChar *content = xmlNodeGetContent(found->nodesetval->nodeTab[0]);
                    benchmark::DoNotOptimize(content);
                    xmlFree(content);
                }
                xmlXPathFreeObject(found);
            }
            xmlXPathFreeContext(context);
            xmlFreeDoc(doc);
        }
    }
}

} // namespace

BENCHMARK(candidate)->Name("calstart_load_vs_xpath/candidate")->Unit(benchmark::kMillisecond);
BENCHMARK(baseline)->Name("calstart_load_vs_xpath/baseline")->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    return olvex::bench::runWidgetBenchmarks(argc, argv);
}
