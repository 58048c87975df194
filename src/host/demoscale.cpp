// A scaled demo site: groups, settings, calibration parameters and cylinders beyond the plant's
// own, for benchmarks and for trying the programs on a site of a large plant.
#include "common/datetime.h"
#include "common/pid.h"
#include "host/demosite_p.h"
#include "common/vocabulary.h"

namespace olvex::demo {

namespace {

constexpr int kFirstScaleSystem = 400;

// The j-th PID of a parameter class in the scaled part: spread over both units, ten thousand
// per system code.
qint32 scalePid(int parameterClass, int j)
{
    const int unit = 1 + (j / 10000) % 2;
    const int system = kFirstScaleSystem + j / 20000;
    return BuildPid(unit, system, parameterClass, (j / 100) % 100, j % 100);
}

SettingSpec scaledSetting(int k, const QDateTime &now)
{
    SettingSpec spec;
    spec.dataType = 1 + k % 7;
    spec.level = (k % 10) * 10;
    spec.readable = k % 97 != 3;
    spec.changeable = k % 50 != 7;
    switch (spec.dataType) {
    case 1:
        spec.name = u"Limit " + QString::number(k);
        spec.units = QStringLiteral("ppm");
        spec.value = k % 3 == 0 ? Value(k % 1000) : Value((k % 1000) / 4.0);
        spec.defaultValue = Value(100);
        spec.low = Value(0);
        spec.high = Value(1000);
        spec.displayFormat = QStringLiteral("0.00");
        break;
    case 2:
        spec.name = u"Check Date " + QString::number(k);
        spec.value = Value(QDateTime(now.date().addDays(-(k % 400)), QTime(0, 0)));
        break;
    case 3:
        spec.name = u"Start Time " + QString::number(k);
        spec.value = Value(QDateTime(zeroDate().date(), QTime(k % 24, (k * 7) % 60)));
        spec.defaultValue = Value(QDateTime(zeroDate().date(), QTime(6, 0)));
        break;
    case 4:
        spec.name = u"Last Event " + QString::number(k);
        spec.value = Value(now.addSecs(-qint64(k % 100000) * 60));
        break;
    case 5:
        spec.name = u"Check Enabled " + QString::number(k);
        spec.value = Value(k % 2 == 0);
        spec.defaultValue = Value(true);
        break;
    case 6:
        spec.name = u"Heater " + QString::number(k);
        spec.value = Value(k % 3 != 0);
        spec.defaultValue = Value(true);
        break;
    default:
        spec.name = u"Tag " + QString::number(k);
        spec.value = k % 11 == 0 ? Value::null() : Value(u"TAG-" + QString::number(k * 13));
        break;
    }
    return spec;
}

} // namespace

void addScale(SiteBuilder &builder, int extraSettings, int extraGroups, int extraCalibrations,
              const QDateTime &now)
{
    // Extra cylinders carry two gases each; the gases count among the settings.
    const int extraCylinders = std::min(extraCalibrations, extraSettings / 4);
    const int leafSettings = extraSettings - 2 * extraCylinders;

    // Three levels: areas hold up to ten sections, sections up to ten blocks, blocks the
    // settings.
    auto levelsFor = [](int blocks) {
        const int sections = (blocks + 9) / 10;
        return std::pair{sections, (sections + 9) / 10};
    };
    int leaves = 1;
    while (true) {
        const auto [s, a] = levelsFor(leaves + 1);
        if (leaves + 1 + s + a > extraGroups) {
            break;
        }
        ++leaves;
    }
    const auto [sections, areas] = levelsFor(leaves);
    // The count of groups asked for, exactly: the last section takes a block or two more.
    leaves = std::max(leaves, extraGroups - sections - areas);
    int groupSlot = 0;
    QList<qint32> sectionPids;
    for (int a = 0; a < areas; ++a) {
        const qint32 pid = scalePid(5, groupSlot++);
        addGroup(builder, {pid, u"Area " + QString::number(a + 1), 20 + a, 0, GetPidPart(pid, 1),
                           false, std::nullopt, QString()});
        for (int s = a * 10; s < std::min(sections, a * 10 + 10); ++s) {
            const qint32 section = scalePid(5, groupSlot++);
            // Every fifth section shares its order number with the one before.
            addGroup(builder, {section, u"Section " + QString::number(s + 1), 1 + s - s / 5, pid,
                               GetPidPart(section, 1), false, std::nullopt, QString()});
            sectionPids.append(section);
        }
    }
    QList<QList<qint32>> members(leaves);
    for (int k = 0; k < leafSettings; ++k) {
        const qint32 pid = scalePid(1, k);
        addSetting(builder, pid, GetPidPart(pid, 1), scaledSetting(k, now));
        members[k % leaves].append(pid);
    }
    for (int b = 0; b < leaves; ++b) {
        const qint32 pid = scalePid(5, groupSlot++);
        addGroup(builder, {pid, u"Block " + QString::number(b + 1), 1 + b % 10,
                           sectionPids[std::min(b / 10, sections - 1)], GetPidPart(pid, 1), false,
                           members[b],
                           b % 25 == 0 ? QStringLiteral("Settings of this block follow the "
                                                        "plant's standard values.")
                                       : QString()});
    }

    for (int c = 0; c < extraCalibrations; ++c) {
        const qint32 pid = scalePid(3, c);
        const int unit = GetPidPart(pid, 1);
        builder.addParameter(pid, u"Analyzer " + QString::number(c + 1) + u" Cal",
                             ParameterTypes::Calibration, unit);
        builder.setAttribute(pid, -159, Value(c % 2 == 0));
        CalRecordSpec spec;
        spec.unitName = u"Unit " + QString::number(unit);
        spec.enableIoid = u'C' + QString::number(12);
        spec.startIoid = QStringLiteral("21");
        spec.abortIoid = QStringLiteral("C24");
        spec.opHours = c % 30;
        const QString record = calStartRecord(spec, now);
        builder.setCurrentValue(pid, Value(record));
        builder.setCurrentData(pid, QStringLiteral("1m"), record, 0);
    }
    for (int c = 0; c < extraCylinders; ++c) {
        const qint32 pid = scalePid(7, c);
        builder.addParameter(pid, u"Cylinder " + QString::number(c + 5),
                             ParameterTypes::GasCylinder);
        builder.setAttribute(pid, -306, Value(u"CC" + QString::number(500000 + c)));
        builder.setAttribute(pid, -307,
                             Value(QDateTime(now.date().addDays(30 + c % 700), QTime(0, 0))));
        builder.setAttribute(pid, -308, Value(QStringLiteral("B22014")));
        builder.setAttribute(pid, -309, Value(QStringLiteral("SO2,NO,BALN")));
        builder.setAttribute(pid, -310, Value(1000 + c % 1000));
        builder.setAttribute(pid, -311, Value(QStringLiteral("psig")));
        QList<Value> gasPids;
        const qint32 so2 = scalePid(4, 2 * c);
        const qint32 no = scalePid(4, 2 * c + 1);
        for (const auto &[gasPid, code, value] :
             {std::tuple{so2, QStringLiteral("SO2"), 200.0 + c % 300},
              std::tuple{no, QStringLiteral("NO"), 100.0 + c % 150}}) {
            SettingSpec gas;
            gas.name = u"Cylinder " + QString::number(c + 5) + u' ' + code;
            gas.units = QStringLiteral("ppm");
            gas.value = Value(value);
            addSetting(builder, gasPid, 0, gas);
            gasPids.append(Value(gasPid));
        }
        builder.setAttribute(pid, -312,
                             Value(u"SO2," + QString::number(200.0 + c % 300) + u",ppm;NO,"
                                   + QString::number(100.0 + c % 150) + u",ppm"));
        builder.setAttribute(pid, GroupAttr::Members, Value(std::move(gasPids)));
    }
}

} // namespace olvex::demo
