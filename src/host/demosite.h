#pragma once

#include "host/sitestore.h"

#include <QString>

#include <memory>

namespace olvex {

// The demo site: a two-unit coal plant ("Mill Creek Station", site MILLCREEK) with SO2, NOx,
// CO2, O2, CO and stack flow monitors, as an operator would find it:
// - setting groups (type 5) three deep: units, monitors, the monitors' alarm groups; order
//   numbers with equal values and values of 10 and more; a group without members, one with an
//   empty member list, one with an undefined PID among its members; plain and rich-text (RTF)
//   instructions;
// - settings (type 4) of every data type 1 to 7, read-only, write-only, offline in the
//   alternative state (-92/-93), level above 50 (-30), Null values and defaults, and a few
//   change-pending (queued value writes);
// - alarm parameters (type 2) with high-high/high/low/low-low setpoints, some levels unused;
// - calibration parameters (type 62) whose current value is a full calibration start record
//   (XML), with usable and unusable channel ids, attribute -159 true and false, and "1m"
//   current data (one pending confirmation, one expired);
// - gas cylinders (type 79) with one to six component gases;
// - channels of every kind 1 to 5; users admin (every privilege), operator (changes settings,
//   lacks privilege 250) and viewer (no privilege).
//
// A cylinder (type 79) keeps: -306 cylinder id, -307 expiration date, -308 EPA vendor id, -309
// EPA gas type codes, -310 pressure, -311 pressure unit, -312 its component gases as text
// ("SO2,450.5,ppm;NO,250,ppm": gas, certified value, unit; entries separated by ";"), and -46
// the PIDs of its component gas parameters (an array, in the order of -312). Each component gas
// is a number setting (type 4) whose value is the certified concentration.
struct DemoOptions
{
    // Settings wanted in all; 0 (or fewer than the plant itself has) builds the plant alone.
    // A larger number adds groups (one per 20 settings, three deep), settings, calibration
    // parameters and cylinders in the plant's proportions.
    int scale = 0;
    QString siteId = QStringLiteral("MILLCREEK");
    QString siteName = QStringLiteral("Mill Creek Station");
};

// Fills an empty site (the fill of SiteStore::create).
void buildDemoSite(SiteStore &store, const DemoOptions &options = DemoOptions());

// Creates the demo site at the connection text; see SiteStore::create for replace.
std::shared_ptr<SiteStore> createDemoSite(const QString &connectionText,
                                          const DemoOptions &options = DemoOptions(),
                                          bool replace = false);

// A few PIDs of the demo site that tests and examples refer to.
namespace DemoPids {
qint32 unit1SO2Span();            // number, changeable, level above 50
qint32 unit1SO2ZeroDriftLimit();  // number with recommended range 0 ... 5, change pending
qint32 unit1SO2SerialNumber();    // text, read-only
qint32 unit1SO2ResetCounters();   // yes/no, write-only
qint32 unit1SO2SubstituteValue(); // number whose value is Null
qint32 unit1SO2Group();
qint32 dataAcquisitionGroup(); // holds an undefined PID
qint32 undefinedMember();
qint32 unit1SO2NOxCal(); // calibration, confirmation supported, pending
qint32 unit2NOxCal();    // calibration, -159 false
qint32 cylinderA();      // three component gases
qint32 cylinderD();      // six component gases
} // namespace DemoPids

} // namespace olvex
