#include "plantcommand.h"

#include "common/error.h"
#include "common/vocabulary.h"
#include "das/calrecord.h"
#include "host/plantstate.h"
#include "host/sitestore.h"

#include <QTextStream>

namespace olvex {

namespace {

int complain(const QString &line, int code)
{
    QTextStream(stderr) << "olvex-das: " << line << '\n';
    return code;
}

} // namespace

int runPlantCommand(const QString &site, int unit, const QStringList &args)
{
    const QString usage = QStringLiteral("plant wants start, stop, normal-ops or hours H");
    if (args.isEmpty()) {
        return complain(usage, 2);
    }
    PlantUnitChange change;
    const QString what = args.first();
    if (what == u"start" && args.size() == 1) {
        change.online = true;
        change.normalOps = false;
    } else if (what == u"stop" && args.size() == 1) {
        change.online = false;
        change.normalOps = false;
    } else if (what == u"normal-ops" && args.size() == 1) {
        change.online = true;
        change.normalOps = true;
    } else if (what == u"hours" && args.size() == 2) {
        bool ok = false;
        const double hours = args.at(1).toDouble(&ok);
        if (!ok || hours < 0) {
            return complain(u"hours wants a number of hours, not '" + args.at(1) + u'\'', 2);
        }
        change.opHours = hours;
    } else {
        return complain(usage, 2);
    }
    try {
        const std::shared_ptr<SiteStore> store = SiteStore::open(site);
        QList<int> units;
        for (const PlantUnitState &state : readPlantUnits(*store)) {
            if (unit == 0 || state.unit == unit) {
                units.append(state.unit);
            }
        }
        if (units.isEmpty()) {
            return complain(u"there is no plant unit " + QString::number(unit), 1);
        }
        Transaction transaction(store->sql(), SqlConnection::TransactionKind::Write);
        for (const int number : std::as_const(units)) {
            changePlantUnit(*store, number, change);
        }
        // The hours count toward the 26-operating-hour rule of the units' calibrations.
        if (change.opHours) {
            const Actor who{QStringLiteral("olvex-das plant"), QString(), QString()};
            for (const ParameterRecord &cal :
                 store->parametersOfTypes({ParameterTypes::Calibration})) {
                if (units.contains(cal.plantUnit) && !readCalRecord(*store, cal.pid).isEmpty()) {
                    editCalRecord(*store, cal.pid,
                                  {{QStringLiteral("OpHoursSinceOnlineCal"),
                                    QString::number(*change.opHours, 'f', 1)}},
                                  who, QStringLiteral("plant command"));
                }
            }
        }
        transaction.commit();
        QTextStream out(stdout);
        for (const PlantUnitState &state : readPlantUnits(*store)) {
            if (units.contains(state.unit)) {
                out << "unit " << state.unit << " (" << state.name
                    << "): " << (state.online ? "online" : "offline")
                    << (state.normalOps ? ", normal operation" : "") << ", "
                    << QString::number(state.opHours, 'f', 1) << " operating hours\n";
            }
        }
        return 0;
    } catch (...) {
        return complain(currentError().description, 1);
    }
}

} // namespace olvex
