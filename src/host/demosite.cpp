#include "host/demosite.h"

#include "common/datetime.h"
#include "common/pid.h"
#include "common/vocabulary.h"
#include "host/demosite_p.h"
#include "host/sitesecurity.h"

#include <cmath>

namespace olvex {

namespace demo {

namespace {

// System codes: group B of a PID.
constexpr int kSO2 = 101;
constexpr int kNOx = 102;
constexpr int kCO2 = 103;
constexpr int kO2 = 104;
constexpr int kCO = 105;
constexpr int kFlow = 106;
constexpr int kUnitOperation = 110;
constexpr int kCalibration = 202;
constexpr int kDataAcquisition = 301;
constexpr int kCommunications = 302;
constexpr int kReporting = 303;
constexpr int kGroups = 900;

// Group C of a PID: what kind of parameter it is.
constexpr int kValueClass = 0;
constexpr int kSettingClass = 1;
constexpr int kGroupClass = 5;

qint32 settingPid(int unit, int system, int n)
{
    return BuildPid(unit, system, kSettingClass, 0, n);
}

qint32 groupPid(int unit, int system, int n)
{
    return BuildPid(unit, system, kGroupClass, 0, n);
}

Value number(double d)
{
    return d == std::floor(d) && std::abs(d) < 1e15 ? Value(qint64(d)) : Value(d);
}

Value timeOfDay(int hour, int minute)
{
    return Value(QDateTime(zeroDate().date(), QTime(hour, minute)));
}

Value dateOnly(const QDateTime &now, int daysAgo)
{
    return Value(QDateTime(now.date().addDays(-daysAgo), QTime(0, 0)));
}

Value dateAndTime(const QDateTime &now, int daysAgo, int hour, int minute)
{
    return Value(QDateTime(now.date().addDays(-daysAgo), QTime(hour, minute)));
}

struct Monitor
{
    int system;
    QString gas;
    QString groupName;
    QString units;
    double span;
    double fullScale;
    int order;
    QString model;
};

const Monitor &monitor(int system)
{
    static const QList<Monitor> all{
        {kSO2, QStringLiteral("SO2"), QStringLiteral("SO2 Monitor"), QStringLiteral("ppm"), 500,
         1000, 1, QStringLiteral("UV fluorescence UVF-10")},
        {kNOx, QStringLiteral("NOx"), QStringLiteral("NOx Monitor"), QStringLiteral("ppm"), 250,
         500, 2, QStringLiteral("Chemiluminescence CL-20")},
        {kCO2, QStringLiteral("CO2"), QStringLiteral("CO2 Monitor"), QStringLiteral("%"), 20, 25, 3,
         QStringLiteral("NDIR IR-30")},
        {kO2, QStringLiteral("O2"), QStringLiteral("O2 Monitor"), QStringLiteral("%"), 25, 25, 4,
         QStringLiteral("Paramagnetic PM-40")},
        {kCO, QStringLiteral("CO"), QStringLiteral("CO Monitor"), QStringLiteral("ppm"), 1000, 2000,
         5, QStringLiteral("Gas filter correlation GFC-50")},
        {kFlow, QStringLiteral("Stack Flow"), QStringLiteral("Stack Flow"), QStringLiteral("scfh"),
         4500000, 6000000, 10, QStringLiteral("Ultrasonic US-60")},
    };
    for (const Monitor &m : all) {
        if (m.system == system) {
            return m;
        }
    }
    return all.first();
}

// The sixteen settings of one monitor. Unit 2 is down for an outage: in the alternative state
// its analyser settings read offline.
QList<SettingSpec> monitorSettings(const Monitor &m, int unit, const QDateTime &now)
{
    const QString g = m.gas;
    const bool offline = unit == 2;
    const bool flow = m.system == kFlow;
    QList<SettingSpec> list;
    const QString percent = QStringLiteral("% of span");
    list.append(SettingSpec(g + u" Span Value", 1, m.units, number(m.span), number(m.span),
                            Value(0), number(m.fullScale))
                    .withLevel(60)
                    .withFormat(QStringLiteral("0")));
    list.append(
        SettingSpec(g + u" Full Scale Range", 1, m.units, number(m.fullScale), number(m.fullScale))
            .readOnly()
            .withLevel(70)
            .withFormat(QStringLiteral("0")));
    list.append(SettingSpec(g + u" Zero Drift Limit", 1, percent, Value(2.5), Value(2.5), Value(0),
                            Value(5))
                    .withLevel(20)
                    .withFormat(QStringLiteral("0.0")));
    list.append(SettingSpec(g + u" Span Drift Limit", 1, percent, Value(2.5), Value(2.5), Value(0),
                            Value(5))
                    .withLevel(20)
                    .withFormat(QStringLiteral("0.0")));
    list.append(SettingSpec(g + u" Bias Adjustment Factor", 1, QString(),
                            Value(unit == 1 ? 1.012 : 1.0), Value(1.0), Value(1), Value(1.111))
                    .withLevel(55)
                    .withFormat(QStringLiteral("0.000")));
    list.append(SettingSpec(g + u" Substitute Data Value", 1, m.units, Value::null()));
    list.append(SettingSpec(g + u" Last Linearity Check", 2, QString(), dateOnly(now, 41 + unit)));
    list.append(
        SettingSpec(g + u" Daily Cal Time", 3, QString(), timeOfDay(6, 50), timeOfDay(6, 50)));
    list.append(SettingSpec(g + u" Last RATA", 4, QString(), dateAndTime(now, 97, 13, 40)));
    list.append(SettingSpec(g + u" Bias Test Passed", 5, QString(), Value(true), Value(true)));
    list.append(SettingSpec(g + u" Analyzer Heater", 6, QString(), Value(!offline), Value(true)));
    list.append(
        SettingSpec(g + u" Analyzer Model", 7, QString(), Value(m.model), Value(QString())));
    list.append(SettingSpec(g + u" Analyzer Serial Number", 7, QString(),
                            Value(u"SN" + QString::number(m.system * 1000 + unit * 37)))
                    .readOnly());
    list.append(SettingSpec(g + u" Reset Drift Counters", 5, QString(), Value(false), Value(false))
                    .access(false, !flow, false, !flow));
    list.append(SettingSpec(g + u" Averaging Minutes", 1, QStringLiteral("min"), Value(15),
                            Value(15), Value(1)));
    list.append(SettingSpec(g + u" Maximum Valid Reading", 1, m.units, number(m.fullScale * 1.1),
                            number(m.fullScale * 1.1), Value::null(), number(m.fullScale * 1.2)));
    if (offline) {
        for (SettingSpec &spec : list) {
            if (!spec.altReadable) {
                spec.altReadable = false;
                spec.altChangeable = false;
            }
        }
    }
    return list;
}

struct AlarmSpec
{
    QString name;
    QString units;
    Value hh, h, l, ll;
    int level;
    double reading;
};

QList<AlarmSpec> monitorAlarms(const Monitor &m)
{
    const Value unused = Value::null();
    return {
        {m.gas + u" 1-Minute Average", m.units, number(m.fullScale * 0.9), number(m.span), unused,
         Value(), 20, m.span * 0.31},
        {m.gas + u" 1-Hour Average", m.units, number(m.span * 0.8), number(m.span * 0.7),
         number(m.span * 0.05), Value(0), 60, m.span * 0.28},
        {m.gas + u" Analyzer Cell Temperature", QStringLiteral("\u00b0F"), Value(140), Value(130),
         Value(100), Value(90), 10, 121.5},
    };
}

void addAlarm(SiteBuilder &builder, qint32 pid, int unit, const AlarmSpec &spec)
{
    builder.addParameter(pid, spec.name, ParameterTypes::Alarm, unit, spec.units);
    builder.setAttribute(pid, SettingAttr::SetpointHH, spec.hh);
    builder.setAttribute(pid, SettingAttr::SetpointH, spec.h);
    builder.setAttribute(pid, SettingAttr::SetpointL, spec.l);
    builder.setAttribute(pid, SettingAttr::SetpointLL, spec.ll);
    builder.setAttribute(pid, SettingAttr::Level, Value(spec.level));
    builder.setCurrentValue(pid, Value(spec.reading));
}

QList<qint32> addSettings(SiteBuilder &builder, int unit, int system,
                          const QList<SettingSpec> &specs)
{
    QList<qint32> pids;
    for (int i = 0; i < specs.size(); ++i) {
        const qint32 pid = settingPid(unit, system, i + 1);
        addSetting(builder, pid, unit, specs[i]);
        pids.append(pid);
    }
    return pids;
}

void addUnit(SiteBuilder &builder, int unit, const QList<std::pair<int, int>> &monitors,
             int operationOrder, const QDateTime &now)
{
    const qint32 root = groupPid(unit, kGroups, 1);
    addGroup(builder, {root, u"Unit " + QString::number(unit), unit, 0, unit, false, std::nullopt,
                       QString()});
    for (const auto &[system, order] : monitors) {
        const Monitor &m = monitor(system);
        const QList<qint32> members
            = addSettings(builder, unit, system, monitorSettings(m, unit, now));
        const qint32 group = groupPid(unit, system, 1);
        QString instructions;
        if (system == kSO2) {
            instructions = QStringLiteral(
                "  Span and drift limits come from the monitoring plan. A change takes effect "
                "once the data acquisition service applies it (up to 2 minutes).  \n");
        } else if (system == kFlow) {
            instructions = QStringLiteral(
                "Flow settings are in standard cubic feet per hour at 68 \u00b0F.");
        }
        addGroup(builder, {group, m.groupName, order, root, unit, false, members, instructions});
        QList<qint32> alarmMembers;
        const QList<AlarmSpec> alarms = monitorAlarms(m);
        for (int i = 0; i < alarms.size(); ++i) {
            const qint32 pid = BuildPid(unit, system, kValueClass, 0, i + 1);
            addAlarm(builder, pid, unit, alarms[i]);
            alarmMembers.append(pid);
        }
        addGroup(builder,
                 {groupPid(unit, system, 2), m.gas + u" Alarms", 1, group, unit, true, alarmMembers,
                  QStringLiteral("Alarm setpoints are in the units of the monitored "
                                 "value. Leave a level empty when it is not used.")});
    }
    const QString u = u"Unit " + QString::number(unit);
    const QList<qint32> members = addSettings(
        builder, unit, kUnitOperation,
        {
            {u + u" Load Threshold", 1, QStringLiteral("MW"), Value(25), Value(25), Value(0),
             Value(600)},
            {u + u" Startup Flow Threshold", 1, QStringLiteral("scfh"), Value(500000),
             Value(500000), Value(100000), Value(2000000)},
            {u + u" Normal Operation Load", 1, QStringLiteral("%"), Value(40), Value(40), Value(20),
             Value(100)},
            SettingSpec(u + u" Online", 5, QString(), Value(unit == 1)).readOnly(),
            {u + u" Fuel Type", 7, QString(),
             Value(unit == 1 ? QStringLiteral("Bituminous coal") : QStringLiteral("Natural gas")),
             Value(QStringLiteral("Bituminous coal"))},
            SettingSpec(u + u" Operating Hours Counter", 1, QStringLiteral("h"),
                        Value(unit == 1 ? 61234.5 : 48811.25))
                .readOnly()
                .withLevel(80)
                .withFormat(QStringLiteral("0.00")),
        });
    addGroup(builder, {groupPid(unit, kUnitOperation, 1), QStringLiteral("Unit Operation"),
                       operationOrder, root, unit, false, members, QString()});
}

void addCommon(SiteBuilder &builder, const QList<qint32> &gasSettings, const QDateTime &now)
{
    const qint32 plant = groupPid(0, kGroups, 1);
    const qint32 dahs = groupPid(0, kGroups, 2);
    const qint32 reporting = groupPid(0, kGroups, 3);
    addGroup(builder,
             {plant, QStringLiteral("Plant Common"), 3, 0, 0, false, QList<qint32>{}, QString()});
    addGroup(builder, {groupPid(0, 201, 1), QStringLiteral("Calibration Gas Cylinders"), 1, plant,
                       0, false, gasSettings,
                       QStringLiteral("Certified concentrations of the installed cylinders. "
                                      "Use the cylinder list to record a new cylinder.")});
    const QList<qint32> cal
        = addSettings(builder, 0, kCalibration,
                      {
                          {QStringLiteral("Cal Gas Purge Time"), 1, QStringLiteral("s"), Value(90),
                           Value(90), Value(30), Value(300)},
                          {QStringLiteral("Maximum Cal Duration"), 1, QStringLiteral("min"),
                           Value(20), Value(20), Value(5), Value(60)},
                          {QStringLiteral("Cal Response Window"), 1, QStringLiteral("s"),
                           Value(120), Value(120), Value(60), Value(600)},
                          {QStringLiteral("Automatic Cal Checks Enabled"), 5, QString(),
                           Value(true), Value(true)},
                          SettingSpec(QStringLiteral("Cal Results Retention"), 1,
                                      QStringLiteral("days"), Value(1095), Value(1095), Value(1095))
                              .withLevel(60),
                          {QStringLiteral("Last Cal Gas Audit"), 2, QString(), dateOnly(now, 60)},
                      });
    addGroup(builder,
             {groupPid(0, kCalibration, 1), QStringLiteral("Calibration"), 2, plant, 0, false, cal,
              QStringLiteral("{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}}\\f0\\fs20 "
                             "{\\b Calibration settings}\\par "
                             "These settings apply to every automatic calibration check. "
                             "Daily check times are set per monitor.\\par}")});

    addGroup(builder, {dahs, QStringLiteral("DAHS"), 10, 0, 0, false, QList<qint32>(), QString()});
    QList<qint32> acquisition = addSettings(
        builder, 0, kDataAcquisition,
        {
            {QStringLiteral("Polling Interval"), 1, QStringLiteral("s"), Value(10), Value(10),
             Value(1), Value(60)},
            SettingSpec(QStringLiteral("Data Retention"), 1, QStringLiteral("days"), Value(3650),
                        Value(3650), Value(1095))
                .withLevel(90),
            {QStringLiteral("Historian Enabled"), 6, QString(), Value(true), Value(true)},
            {QStringLiteral("Site Description"), 7, QString(),
             Value(QStringLiteral("Mill Creek Station, two coal-fired units")), Value::null()},
            {QStringLiteral("Last Database Backup"), 4, QString(), dateAndTime(now, 1, 2, 30)},
            {QStringLiteral("Nightly Backup Time"), 3, QString(), timeOfDay(2, 30),
             timeOfDay(2, 30)},
        });
    acquisition.insert(3, DemoPids::undefinedMember());
    addGroup(builder, {groupPid(0, kDataAcquisition, 1), QStringLiteral("Data Acquisition"), 1,
                       dahs, 0, false, acquisition, QString()});
    const QList<qint32> comms = addSettings(
        builder, 0, kCommunications,
        {
            {QStringLiteral("Modbus Timeout"), 1, QStringLiteral("ms"), Value(500), Value(500),
             Value(100), Value(5000)},
            {QStringLiteral("Time Server"), 7, QString(),
             Value(QStringLiteral("ntp.millcreek.local")), Value(QStringLiteral("pool.ntp.org"))},
            {QStringLiteral("Alarm Horn Enabled"), 5, QString(), Value(true), Value(true)},
            {QStringLiteral("Maximum Message Log Lines"), 1, QString(), Value(100000),
             Value(100000), Value(1000), Value(10000000)},
        });
    addGroup(builder, {groupPid(0, kCommunications, 1), QStringLiteral("Communications"), 2, dahs,
                       0, false, comms, QString()});

    const QList<qint32> report = addSettings(
        builder, 0, kReporting,
        {
            SettingSpec(QStringLiteral("Facility ID"), 7, QString(),
                        Value(QStringLiteral("ORIS 3497")))
                .readOnly(),
            {QStringLiteral("Quarterly Report Due"), 2, QString(), dateOnly(now, -25)},
            {QStringLiteral("Report Contact"), 7, QString(), Value(QStringLiteral("J. Alvarez"))},
            {QStringLiteral("Include Substitute Data"), 5, QString(), Value(true), Value(true)},
            SettingSpec(QStringLiteral("Operating Hours This Year"), 1, QStringLiteral("h"),
                        Value(1873.5))
                .readOnly(),
            {QStringLiteral("Last EDR Submission"), 4, QString(), dateAndTime(now, 33, 16, 5)},
        });
    addGroup(builder, {reporting, QStringLiteral("Reporting"), 10, 0, 0, false, report, QString()});
}

} // namespace

void addSetting(SiteBuilder &builder, qint32 pid, int plantUnit, const SettingSpec &spec)
{
    builder.addParameter(pid, spec.name, ParameterTypes::Setting, plantUnit, spec.units);
    builder.setAttribute(pid, SettingAttr::Readable, Value(spec.readable));
    builder.setAttribute(pid, SettingAttr::Changeable, Value(spec.changeable));
    builder.setAttribute(pid, SettingAttr::DataType, Value(spec.dataType));
    if (!spec.displayFormat.isEmpty()) {
        builder.setAttribute(pid, SettingAttr::DisplayFormat, Value(spec.displayFormat));
    }
    builder.setAttribute(pid, SettingAttr::DefaultValue, spec.defaultValue);
    if (!spec.low.isNull()) {
        builder.setAttribute(pid, SettingAttr::RecommendedLow, spec.low);
    }
    if (!spec.high.isNull()) {
        builder.setAttribute(pid, SettingAttr::RecommendedHigh, spec.high);
    }
    builder.setAttribute(pid, SettingAttr::Level, Value(spec.level));
    builder.setAttribute(pid, SettingAttr::AltReadable,
                         Value(spec.altReadable.value_or(spec.readable)));
    builder.setAttribute(pid, SettingAttr::AltChangeable,
                         Value(spec.altChangeable.value_or(spec.changeable)));
    builder.setCurrentValue(pid, spec.value);
}

void addGroup(SiteBuilder &builder, const GroupSpec &spec)
{
    builder.addParameter(spec.pid, spec.name, ParameterTypes::SettingGroup, spec.plantUnit);
    builder.setAttribute(spec.pid, GroupAttr::Order, Value(spec.order));
    builder.setAttribute(spec.pid, GroupAttr::HasParent, Value(spec.parent != 0 ? 1 : 0));
    builder.setAttribute(spec.pid, GroupAttr::ParentPid, Value(spec.parent));
    builder.setAttribute(spec.pid, GroupAttr::AlarmGroup, Value(spec.alarmGroup));
    if (spec.members) {
        QList<Value> members;
        members.reserve(spec.members->size());
        for (const qint32 pid : *spec.members) {
            members.append(Value(pid));
        }
        builder.setAttribute(spec.pid, GroupAttr::Members, Value(std::move(members)));
    }
    if (!spec.instructions.isEmpty()) {
        builder.setAttribute(spec.pid, GroupAttr::Instructions, Value(spec.instructions));
    }
}

} // namespace demo

namespace DemoPids {
qint32 unit1SO2Span()
{
    return demo::settingPid(1, demo::kSO2, 1);
}
qint32 unit1SO2ZeroDriftLimit()
{
    return demo::settingPid(1, demo::kSO2, 3);
}
qint32 unit1SO2SerialNumber()
{
    return demo::settingPid(1, demo::kSO2, 13);
}
qint32 unit1SO2ResetCounters()
{
    return demo::settingPid(1, demo::kSO2, 14);
}
qint32 unit1SO2SubstituteValue()
{
    return demo::settingPid(1, demo::kSO2, 6);
}
qint32 unit1SO2Group()
{
    return demo::groupPid(1, demo::kSO2, 1);
}
qint32 dataAcquisitionGroup()
{
    return demo::groupPid(0, demo::kDataAcquisition, 1);
}
qint32 undefinedMember()
{
    return demo::settingPid(0, demo::kDataAcquisition, 99);
}
qint32 unit1SO2NOxCal()
{
    return BuildPid(1, demo::kSO2, 3, 0, 1);
}
qint32 unit2NOxCal()
{
    return BuildPid(2, demo::kNOx, 3, 0, 1);
}
qint32 cylinderA()
{
    return BuildPid(0, 201, 7, 0, 1);
}
qint32 cylinderD()
{
    return BuildPid(0, 201, 7, 0, 4);
}
} // namespace DemoPids

void buildDemoSite(SiteStore &store, const DemoOptions &options)
{
    using namespace demo;
    const QDateTime now
        = QDateTime(Now().date(), QTime(Now().time().hour(), Now().time().minute()));
    SiteBuilder builder(store);
    builder.addPlantUnit(1, QStringLiteral("Unit 1"));
    builder.addPlantUnit(2, QStringLiteral("Unit 2"));
    builder.addUser(QStringLiteral("admin"), QStringLiteral("Site Administrator"), true);
    builder.addUser(QStringLiteral("operator"), QStringLiteral("Control Room Operator"), false,
                    {Privileges::ChangeSettings});
    builder.addUser(QStringLiteral("viewer"), QStringLiteral("Read-Only Viewer"), false);

    addUnit(builder, 1, {{kSO2, 1}, {kNOx, 2}, {kCO2, 3}, {kO2, 4}, {kCO, 5}, {kFlow, 10}}, 10,
            now);
    addUnit(builder, 2, {{kNOx, 2}, {kCO, 2}, {kO2, 4}, {kFlow, 12}}, 12, now);
    const QList<qint32> gases = addCalibration(builder, now);
    addCommon(builder, gases, now);

    const int plantSettings = 6 * 16 + 4 * 16 + 2 * 6 + int(gases.size()) + 6 + 6 + 4 + 6;
    if (options.scale > plantSettings) {
        const int extraSettings = options.scale - plantSettings;
        const int extraGroups = std::max(0, options.scale / 20 - 31);
        const int extraCalibrations = std::max(0, options.scale / 1000 - 4);
        addScale(builder, extraSettings, extraGroups, extraCalibrations, now);
    }
    builder.flush();
    // Short calibration checks, so that a demonstration sees one run to its end.
    store.sql().execute(QStringLiteral("UPDATE site SET cal_check_seconds = 120"));

    // A few changes wait for the service, as on any working day.
    const Actor operatorAtConsole{QStringLiteral("operator"), QStringLiteral("CONTROL-ROOM-1"),
                                  QStringLiteral("10.20.1.15")};
    store.queueValueWrite(DemoPids::unit1SO2ZeroDriftLimit(), Value(3.0), operatorAtConsole);
    store.queueValueWrite(settingPid(0, kDataAcquisition, 1), Value(15), operatorAtConsole);
    store.queueValueWrite(settingPid(2, kNOx, 15), Value(60), operatorAtConsole);
    store.logMessage(1, u"Demo site " + options.siteId + u" created",
                     Actor{QStringLiteral("admin"), QStringLiteral("olvex-settings"),
                           QStringLiteral("127.0.0.1")});
}

std::shared_ptr<SiteStore> createDemoSite(const QString &connectionText, const DemoOptions &options,
                                          bool replace)
{
    SiteInfo info;
    info.siteId = options.siteId;
    info.name = options.siteName;
    return SiteStore::create(connectionText, info, replace,
                             [&options](SiteStore &store) { buildDemoSite(store, options); });
}

} // namespace olvex
