// The calibration side of the demo site: calibration parameters with their calibration start
// records, the channels they name, gas cylinders with their component gases, and the
// calibration checks made with them.
#include "common/pid.h"
#include "common/vocabulary.h"
#include "host/demosite_p.h"

namespace olvex::demo {

namespace {

constexpr int kCylinderSystem = 201;

QString flag(bool on)
{
    return on ? QStringLiteral("1") : QStringLiteral("0");
}

QString stamp(const QDateTime &t)
{
    return t.toString(QStringLiteral("yyyy/MM/dd hh:mm AP"));
}

struct Gas
{
    QString code;
    double value;
    QString units;
};

struct Cylinder
{
    QString name;
    QString id;
    int expiresInDays;
    QString vendor;
    QString codes;
    Value pressure;
    QList<Gas> gases;
};

} // namespace

QString calStartRecord(const CalRecordSpec &s, const QDateTime &now)
{
    const QDateTime lastOnline = now.addSecs(-3600 * (s.opHours + 3));
    const QDateTime scheduled = now.addSecs(10 * 60);
    QStringList lines;
    auto element
        = [&lines](const QString &name, const QString &text, const QString &ioid = QString()) {
              const QString attribute = ioid.isNull() ? QString() : u" ioid=\"" + ioid + u'"';
              lines.append(u"    <" + name + attribute + u'>' + text + u"</" + name + u'>');
          };
    lines.append(QStringLiteral("<XValue>"));
    lines.append(QStringLiteral("  <CalStart>"));
    element(QStringLiteral("Unit"), s.unitName);
    element(QStringLiteral("CalEnabled"), flag(true), s.enableIoid);
    element(QStringLiteral("CalStartTimeUser"), s.startTime);
    element(QStringLiteral("CalStartTimePLC"), s.startTime);
    element(QStringLiteral("CalStartTimePLCIsTransient"), flag(false));
    element(QStringLiteral("WhenToOverwriteTransientCalStartTimePLC"), QString());
    element(QStringLiteral("SkipIfOffline"), flag(true));
    element(QStringLiteral("SkipDailyCalIfOnlineCalExists"), flag(false));
    element(QStringLiteral("CalDelayMinutes"), QStringLiteral("30"));
    element(QStringLiteral("CalAfterStartup"), flag(true));
    element(QStringLiteral("CalAfterEnterNormalOps"), flag(false));
    element(QStringLiteral("SkipStartupCalIfOnlineCalExists"), flag(true));
    element(QStringLiteral("CalEvery26OpHours"), flag(s.canDetermineOpHours));
    element(QStringLiteral("CalConfirmEnabled"), flag(s.confirmEnabled));
    element(QStringLiteral("CalConfirmTimeout"), QStringLiteral("30"));
    element(QStringLiteral("CalConfirmDefaultConfirm"), flag(true));
    element(QStringLiteral("NormalOpSupported"), flag(s.normalOpSupported));
    element(QStringLiteral("CanDetermineOpHours"), flag(s.canDetermineOpHours));
    element(QStringLiteral("CalConfirmSupported"), flag(s.confirmSupported));
    element(QStringLiteral("AutoCalStartSupported"), flag(true));
    element(QStringLiteral("ManualCalStartSupported"), flag(s.startSupported), s.startIoid);
    element(QStringLiteral("ManualCalAbortSupported"), flag(s.abortSupported), s.abortIoid);
    element(QStringLiteral("CalCancel"), flag(false));
    element(QStringLiteral("UserFriendlyStatus"),
            s.pending ? QStringLiteral("Daily cal check waiting for operator confirmation")
                      : u"Idle; next daily cal check at " + s.startTime);
    element(QStringLiteral("OpHoursSinceOnlineCal"), QString::number(s.opHours));
    element(QStringLiteral("ClockHoursSinceOnlineCal"), QString::number(s.opHours + 3));
    element(QStringLiteral("ClockHoursSinceCal"), QString::number(s.opHours + 3));
    element(QStringLiteral("OpHoursStatusString"),
            QString::number(s.opHours)
                + u" unit operating hours have passed since the most recent online cal check at "
                + stamp(lastOnline) + u'.');
    element(QStringLiteral("CalConfirmPending"), flag(s.pending));
    element(QStringLiteral("CalConfirmPendingCalType"),
            s.pending ? QStringLiteral("Daily calibration") : QString());
    element(QStringLiteral("CalConfirmScheduledStartTime"),
            s.pending ? stamp(scheduled) : QString());
    element(QStringLiteral("CalConfirmExpirationTime"),
            s.pending ? stamp(scheduled.addSecs(30 * 60)) : QString());
    lines.append(QStringLiteral("  </CalStart>"));
    lines.append(QStringLiteral("</XValue>"));
    return lines.join(u'\n');
}

QList<qint32> addCalibration(SiteBuilder &builder, const QDateTime &now)
{
    // Channels: the enable bits and the manual start and abort bits of the calibration
    // parameters, of every kind the I/O system has.
    builder.addChannel(12, 1, QStringLiteral("U1 SO2/NOx auto cal enable"));
    builder.addChannel(17, 3, QStringLiteral("U1 CO2/O2 auto cal enable"));
    builder.addChannel(21, 1, QStringLiteral("U1 SO2/NOx manual cal start"));
    builder.addChannel(22, 1, QStringLiteral("U1 SO2/NOx cal abort"));
    builder.addChannel(23, 3, QStringLiteral("U1 CO2/O2 manual cal start"));
    builder.addChannel(24, 3, QStringLiteral("U1 CO2/O2 cal abort"));
    builder.addChannel(33, 3, QStringLiteral("U2 NOx manual cal start"));
    builder.addChannel(34, 4, QStringLiteral("U2 NOx cal abort (multivalue CSV)"));
    builder.addChannel(35, 5, QStringLiteral("U2 CO cal abort (multivalue UDT)"));
    builder.addChannel(40, 1, QStringLiteral("Plant horn"));
    builder.addChannel(41, 2, QStringLiteral("Plant horn reset (implicit)"));

    struct Cal
    {
        qint32 pid;
        QString name;
        int unit;
        bool confirmation;
        bool inError;
        CalRecordSpec record;
        int dataStatus;
        bool dataEmpty;
    };
    const QList<Cal> cals{
        {DemoPids::unit1SO2NOxCal(),
         QStringLiteral("SO2/NOx Cal"),
         1,
         true,
         false,
         {QStringLiteral("Unit 1"), QStringLiteral("C12"), QStringLiteral("C21"), true,
          QStringLiteral("22"), true, true, true, true, true, true, 27, QStringLiteral("06:50")},
         0,
         false},
        {BuildPid(1, 103, 3, 0, 1),
         QStringLiteral("Unit 1 CO2/O2 Cal"),
         1,
         true,
         false,
         {QStringLiteral("Unit 1"), QStringLiteral("17"), QStringLiteral("C23"), true,
          QStringLiteral("C24"), true, true, true, true, false, false, 25, QStringLiteral("06:30")},
         71,
         true},
        {DemoPids::unit2NOxCal(),
         QStringLiteral("NOx Cal"),
         2,
         false,
         false,
         {QStringLiteral("Unit 2"), QStringLiteral("C0"), QStringLiteral("33"), true,
          QStringLiteral("34"), true, true, true, false, false, false, 3, QStringLiteral("07:15")},
         0,
         false},
        {BuildPid(2, 105, 3, 0, 1),
         QStringLiteral("CO Cal"),
         2,
         true,
         true,
         {QStringLiteral("Unit 2"), QStringLiteral("Cx"), QString(), false, QStringLiteral("C35"),
          true, false, false, true, false, false, 0, QStringLiteral("00:05")},
         0,
         false},
    };
    for (const Cal &cal : cals) {
        builder.addParameter(cal.pid, cal.name, ParameterTypes::Calibration, cal.unit, QString(),
                             cal.inError);
        builder.setAttribute(cal.pid, CalibrationAttr::SupportsConfirmation,
                             Value(cal.confirmation));
        const QString record = calStartRecord(cal.record, now);
        builder.setCurrentValue(cal.pid, Value(record));
        builder.setCurrentData(cal.pid, QStringLiteral("1m"), cal.dataEmpty ? QString() : record,
                               cal.dataStatus);
    }

    const QList<Cylinder> cylinders{
        {QStringLiteral("Cylinder A (SO2/NO/CO2 high)"),
         QStringLiteral("CC412233"),
         410,
         QStringLiteral("B22014"),
         QStringLiteral("SO2,NO,CO2,BALN"),
         Value(1850),
         {{QStringLiteral("SO2"), 450.5, QStringLiteral("ppm")},
          {QStringLiteral("NO"), 250, QStringLiteral("ppm")},
          {QStringLiteral("CO2"), 12.0, QStringLiteral("%")}}},
        {QStringLiteral("Cylinder B (O2 mid)"),
         QStringLiteral("EB0091774"),
         -12,
         QStringLiteral("A73311"),
         QStringLiteral("O2,BALN"),
         Value(620),
         {{QStringLiteral("O2"), 10.95, QStringLiteral("%")}}},
        {QStringLiteral("Cylinder C (CO/NO2)"),
         QStringLiteral("XL55012"),
         730,
         QStringLiteral("B22014"),
         QStringLiteral("CO,NO2,BALN"),
         Value::null(),
         {{QStringLiteral("CO"), 900, QStringLiteral("ppm")},
          {QStringLiteral("NO2"), 45.2, QStringLiteral("ppm")}}},
        {QStringLiteral("Cylinder D (protocol blend)"),
         QStringLiteral("SG9047812"),
         21,
         QStringLiteral("C40918"),
         QStringLiteral("SO2,NO,NO2,CO,CO2,O2,BALN"),
         Value(2015.5),
         {{QStringLiteral("SO2"), 240, QStringLiteral("ppm")},
          {QStringLiteral("NO"), 120, QStringLiteral("ppm")},
          {QStringLiteral("NO2"), 20.1, QStringLiteral("ppm")},
          {QStringLiteral("CO"), 500, QStringLiteral("ppm")},
          {QStringLiteral("CO2"), 6.02, QStringLiteral("%")},
          {QStringLiteral("O2"), 5.01, QStringLiteral("%")}}},
    };
    QList<qint32> gasSettings;
    for (int c = 0; c < cylinders.size(); ++c) {
        const Cylinder &cyl = cylinders[c];
        const qint32 pid = BuildPid(0, kCylinderSystem, 7, 0, c + 1);
        builder.addParameter(pid, cyl.name, ParameterTypes::GasCylinder);
        const QDateTime expiration(now.date().addDays(cyl.expiresInDays), QTime(0, 0));
        builder.setAttribute(pid, CylinderAttr::CylinderId, Value(cyl.id));
        builder.setAttribute(pid, CylinderAttr::Expiration, Value(expiration));
        builder.setAttribute(pid, CylinderAttr::VendorId, Value(cyl.vendor));
        builder.setAttribute(pid, CylinderAttr::GasCodes, Value(cyl.codes));
        builder.setAttribute(pid, CylinderAttr::Pressure, cyl.pressure);
        builder.setAttribute(pid, CylinderAttr::PressureUnit, Value(QStringLiteral("psig")));
        QStringList entries;
        QList<Value> members;
        for (int g = 0; g < cyl.gases.size(); ++g) {
            const Gas &gas = cyl.gases[g];
            const qint32 gasPid = BuildPid(0, kCylinderSystem, 4, c + 1, g + 1);
            const QString valueText = QString::number(gas.value);
            entries.append(gas.code + u',' + valueText + u',' + gas.units);
            members.append(Value(gasPid));
            SettingSpec spec;
            spec.name = cyl.name.section(u' ', 0, 1) + u' ' + gas.code;
            spec.units = gas.units;
            spec.value = Value(gas.value);
            spec.low = Value(0);
            spec.level = 40;
            addSetting(builder, gasPid, 0, spec);
            gasSettings.append(gasPid);
        }
        builder.setAttribute(pid, CylinderAttr::ComponentGases, Value(entries.join(u';')));
        builder.setAttribute(pid, GroupAttr::Members, Value(std::move(members)));
        builder.setCurrentValue(pid, Value(cyl.id));

        // Daily checks of the last week made with this cylinder.
        const qint32 calPid = cals[c % cals.size()].pid;
        for (int day = 7; day >= 1; --day) {
            const QDateTime started(now.date().addDays(-day), QTime(6, 50));
            builder.addCalCheck(calPid, pid, started, started.addSecs(14 * 60),
                                day == 3 ? QStringLiteral("failed") : QStringLiteral("passed"),
                                cyl.id, expiration, cyl.vendor, cyl.codes);
        }
    }
    return gasSettings;
}

} // namespace olvex::demo
