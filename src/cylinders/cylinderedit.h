#pragma once

#include "common/olvexexport.h"

// The logic of the cylinder edit dialog, apart from its widgets: what the dialog shows when it
// opens, and what its OK button writes, so that both can be exercised (and reused) without a
// screen.

#include "common/host.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace olvex {

// The dialog shows this many component gases.
inline constexpr int kCylinderGasRows = 5;

// One component gas of a cylinder, as its row shows it.
struct CylinderGas
{
    qint32 pid = 0;
    ParameterPtr parameter;
    QString name;  // the gas code of the cylinder's list, else the parameter's name
    QString value; // its current value as text
    QString units;
};

// What the dialog opens with.
struct CylinderEditData
{
    qint32 pid = 0;
    QString description; // the cylinder parameter's name
    QString cylinderId;
    Value expiration;
    QString expirationText; // as the edit box shows it
    QString vendorId;
    QString gasCodes;
    QList<CylinderGas> gases; // the first kCylinderGasRows that could be read
    int totalGases = 0;       // all the cylinder has
    // "CSET-0007: ..." for each gas that could not be read (its row is left out).
    QStringList gasProblems;
};

// Reads the cylinder and its component gases (PIDs of attribute -46, in order). Errors reading
// the cylinder propagate; a gas that cannot be read is left out and named in gasProblems.
OLVEX_CORE_EXPORT CylinderEditData loadCylinderEdit(const Parameter &cylinder,
                                                    DataInterface &dataInterface);

// "CSET-0006: Cylinder has more gases than the form can display (PID=...)", or empty.
OLVEX_CORE_EXPORT QString tooManyGasesMessage(const CylinderEditData &data);

// The edit boxes' text of a date: "yyyy-MM-dd", with " HH:mm" when it has a time of day.
OLVEX_CORE_EXPORT QString cylinderDateText(const QDateTime &value);

// What the operator typed in the new column.
struct CylinderEditInput
{
    QString cylinderId;
    QString expiration;
    QString vendorId;
    QString gasCodes;
    QStringList gasValues; // parallel to CylinderEditData::gases
    bool effectiveEarlier = false;
    QString installationDate;
};

// What OK did.
struct CylinderEditResult
{
    bool invalidInstallationDate = false; // the warning was shown, and the save went on
    QList<int> attributesWritten;         // in the order written
    QList<qint32> gasesWritten;
    QString command; // the fix command posted (or tried); empty without one
    bool commandPosted = false;
};

// The OK step. Trims the new texts and upper-cases ID, vendor and codes; writes each field that
// changed at once (an expiration date counts as changed only when its day differs), queues each
// changed gas value for the service (a failure is logged as CSET-0009 and the others go on),
// and with effectiveEarlier posts the FixOldCalCylinderInfo command (CSET-0040; a refused post
// is logged as CSET-0041). warn shows "Enter a valid date/time." when the installation date is
// no date: it is a warning only, and the save carries on. Other host errors propagate.
OLVEX_CORE_EXPORT CylinderEditResult
saveCylinderEdit(Parameter &cylinder, DataInterface &dataInterface, MessageLog *log,
                 const CylinderEditData &current, const CylinderEditInput &input,
                 const std::function<void(const QString &)> &warn);

// The text of the fix command (attributes in their order, texts escaped, dates as
// "yyyy/MM/dd HH:mm"); an expiration date that is no date goes as typed.
OLVEX_CORE_EXPORT QString fixOldCalCylinderInfoCommand(
    DataInterface &dataInterface, qint32 pid, const std::optional<QDateTime> &start,
    const QDateTime &end, const QString &cylinderId, const QString &expiration,
    const QString &vendorId, const QString &gasCodes);

} // namespace olvex
