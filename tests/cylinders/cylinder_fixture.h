#pragma once

// A cylinder on the in-memory data interface, as the site keeps one: its attributes, and one
// setting per component gas listed in -312 and -46.

#include "common/pid.h"
#include "common/vocabulary.h"
#include "support/fake_data_interface.h"

#include <QDateTime>

namespace olvex::test {

struct FakeGas
{
    QString code;
    double value;
    QString units;
};

inline qint32 cylinderPid(int n)
{
    return BuildPid(0, 201, 7, 0, n);
}
inline qint32 gasPid(int cylinder, int gas)
{
    return BuildPid(0, 201, 4, cylinder, gas);
}

inline FakeParameterPtr addCylinder(FakeDataInterface &di, int n, const QString &id,
                                    const Value &expiration, const QList<FakeGas> &gases = {})
{
    const FakeParameterPtr cylinder = di.addParameter(cylinderPid(n), ParameterTypes::GasCylinder,
                                                      u"Cylinder " + QString::number(n));
    cylinder->setAttributeValue(CylinderAttr::CylinderId, Value(id));
    cylinder->setAttributeValue(CylinderAttr::Expiration, expiration);
    cylinder->setAttributeValue(CylinderAttr::VendorId, Value(QStringLiteral("B22014")));
    cylinder->setAttributeValue(CylinderAttr::GasCodes, Value(QStringLiteral("SO2,NO,BALN")));
    cylinder->setAttributeValue(CylinderAttr::Pressure, Value(1850));
    cylinder->setAttributeValue(CylinderAttr::PressureUnit, Value(QStringLiteral("psig")));
    QStringList entries;
    QList<Value> members;
    for (int g = 0; g < gases.size(); ++g) {
        const FakeGas &gas = gases[g];
        const qint32 pid = gasPid(n, g + 1);
        di.addSetting(pid, u"Cylinder " + QString::number(n) + u' ' + gas.code, 1,
                      Value(gas.value));
        di.setUnitsText(pid, gas.units);
        entries << gas.code + u',' + QString::number(gas.value) + u',' + gas.units;
        members << Value(pid);
    }
    cylinder->setAttributeValue(CylinderAttr::ComponentGases, Value(entries.join(u';')));
    cylinder->setAttributeValue(CylinderAttr::GasPids, Value(std::move(members)));
    return cylinder;
}

} // namespace olvex::test
