#pragma once

// The parts of the demo site, shared by its source files.

#include "common/value.h"
#include "host/demosite.h"
#include "host/sitebuilder.h"

#include <QDateTime>
#include <QList>
#include <QString>

namespace olvex::demo {

struct SettingSpec
{
    SettingSpec() = default;
    SettingSpec(QString n, int type, QString u, Value v, Value def = Value::null(),
                Value lo = Value::null(), Value hi = Value::null())
        : name(std::move(n))
        , dataType(type)
        , units(std::move(u))
        , value(std::move(v))
        , defaultValue(std::move(def))
        , low(std::move(lo))
        , high(std::move(hi))
    {}
    SettingSpec &readOnly()
    {
        changeable = false;
        return *this;
    }
    // Readable and changeable flags, in the normal and the alternative state.
    SettingSpec &access(bool read, bool change, bool altRead, bool altChange)
    {
        readable = read;
        changeable = change;
        altReadable = altRead;
        altChangeable = altChange;
        return *this;
    }
    SettingSpec &withLevel(int n)
    {
        level = n;
        return *this;
    }
    SettingSpec &withFormat(const QString &format)
    {
        displayFormat = format;
        return *this;
    }

    QString name;
    int dataType = 1;
    QString units;
    Value value;
    Value defaultValue = Value::null();
    Value low = Value::null();
    Value high = Value::null();
    bool readable = true;
    bool changeable = true;
    // In the alternative state; unset: as readable and changeable.
    std::optional<bool> altReadable;
    std::optional<bool> altChangeable;
    int level = 10;
    QString displayFormat;
};

void addSetting(SiteBuilder &builder, qint32 pid, int plantUnit, const SettingSpec &spec);

struct GroupSpec
{
    qint32 pid = 0;
    QString name;
    int order = 1;
    qint32 parent = 0;
    int plantUnit = 0;
    bool alarmGroup = false;
    // Unset: the group has no member attribute at all.
    std::optional<QList<qint32>> members;
    QString instructions;
};

void addGroup(SiteBuilder &builder, const GroupSpec &spec);

// Calibration parameters and cylinders with their gases, cal checks and channels; returns the
// PIDs of the component gas settings it made, in the order they were made.
QList<qint32> addCalibration(SiteBuilder &builder, const QDateTime &now);

// The calibration start record of one calibration parameter.
struct CalRecordSpec
{
    QString unitName;
    QString enableIoid;
    QString startIoid;
    bool startSupported = true;
    QString abortIoid;
    bool abortSupported = true;
    bool normalOpSupported = true;
    bool canDetermineOpHours = true;
    bool confirmSupported = true;
    bool confirmEnabled = false;
    bool pending = false;
    int opHours = 12;
    QString startTime = QStringLiteral("06:50");
};
QString calStartRecord(const CalRecordSpec &spec, const QDateTime &now);

// The extra groups, settings, calibration parameters and cylinders of a scaled site.
void addScale(SiteBuilder &builder, int extraSettings, int extraGroups, int extraCalibrations,
              const QDateTime &now);

} // namespace olvex::demo
