#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace olvex {

class SiteStore;

// The state of one plant unit as the service plays it: the calibration scheduler starts checks
// when a unit comes online or enters normal operation, and counts operating hours while it is
// online.
struct PlantUnitState
{
    int unit = 0;
    QString name;
    bool online = true;
    bool normalOps = true;
    double opHours = 0;
};

QList<PlantUnitState> readPlantUnits(SiteStore &store);

// What a plant command changes; unset fields stay as they are.
struct PlantUnitChange
{
    std::optional<bool> online;
    std::optional<bool> normalOps;
    std::optional<double> opHours;
};

// Adds hours to the operating hours of every online unit.
void countOperatingHours(SiteStore &store, double hours);

// Throws olvex::Error when the unit does not exist.
void changePlantUnit(SiteStore &store, int unit, const PlantUnitChange &change);

} // namespace olvex
