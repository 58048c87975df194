#include "cylinders/cylinderedit.h"

#include "common/command.h"
#include "common/datetime.h"
#include "common/error.h"
#include "common/pid.h"
#include "common/vocabulary.h"

namespace olvex {

namespace {

QString text(const Value &value)
{
    return value.isNullOrEmpty() ? QString() : value.toText();
}

// "SO2,450.5,ppm;NO,250,ppm" -> the code and unit of each entry.
QList<QStringList> gasEntries(const Value &componentGases)
{
    QList<QStringList> entries;
    for (const QString &entry : text(componentGases).split(u';', Qt::SkipEmptyParts)) {
        entries.append(entry.split(u','));
    }
    return entries;
}

void logError(MessageLog *log, const QString &line)
{
    if (!log) {
        return;
    }
    try {
        log->LogMessage(Severity::Error, line);
    } catch (...) {
        // The log is the only place the line could go; the save itself goes on.
    }
}

// A gas value as the operator typed it: a number when it reads as one, else the text (which
// the data interface refuses for a number setting, as it would from the settings editor).
Value gasValue(const QString &typed)
{
    bool ok = false;
    const double number = typed.toDouble(&ok);
    return ok ? Value(number) : Value(typed);
}

} // namespace

QString cylinderDateText(const QDateTime &value)
{
    if (!value.isValid()) {
        return {};
    }
    return value.time() == QTime(0, 0) ? value.toString(QStringLiteral("yyyy-MM-dd"))
                                       : value.toString(QStringLiteral("yyyy-MM-dd HH:mm"));
}

CylinderEditData loadCylinderEdit(const Parameter &cylinder, DataInterface &dataInterface)
{
    CylinderEditData data;
    data.pid = cylinder.PidNumber();
    data.description = cylinder.GetName(0);
    data.cylinderId = text(cylinder.GetAttribute(CylinderAttr::CylinderId));
    data.expiration = cylinder.GetAttribute(CylinderAttr::Expiration);
    data.expirationText = data.expiration.isDateTime()
                              ? cylinderDateText(*data.expiration.toDateTime())
                              : text(data.expiration);
    data.vendorId = text(cylinder.GetAttribute(CylinderAttr::VendorId));
    data.gasCodes = text(cylinder.GetAttribute(CylinderAttr::GasCodes));

    const QList<Value> members = cylinder.GetAttribute(CylinderAttr::GasPids).toArray();
    const QList<QStringList> entries
        = gasEntries(cylinder.GetAttribute(CylinderAttr::ComponentGases));
    data.totalGases = int(members.size());
    const std::shared_ptr<PidDirectory> directory = dataInterface.GetPidDirectory();
    const std::shared_ptr<UnitsLookup> units = dataInterface.GetUnitsLookup();
    for (qsizetype i = 0; i < members.size() && i < kCylinderGasRows; ++i) {
        CylinderGas gas;
        gas.pid = qint32(members[i].toInteger().value_or(0));
        try {
            gas.parameter = directory->GetPid(gas.pid, true);
            const QStringList entry = entries.value(i);
            gas.name = entry.value(0).trimmed().isEmpty() ? gas.parameter->GetName(0)
                                                          : entry.value(0).trimmed();
            gas.value = text(gas.parameter->GetCurrentValue().Value);
            gas.units = units ? units->UnitsText(gas.pid) : QString();
            if (gas.units.isEmpty()) {
                gas.units = entry.value(2).trimmed();
            }
            data.gases.append(gas);
        } catch (...) {
            // The other gases and the cylinder itself can still be edited.
            data.gasProblems.append(u"CSET-0007: " + currentError().description);
        }
    }
    return data;
}

QString tooManyGasesMessage(const CylinderEditData &data)
{
    if (data.totalGases <= kCylinderGasRows) {
        return {};
    }
    return u"CSET-0006: Cylinder has more gases than the form can display (PID="
           + FormatPid(data.pid) + u')';
}

QString fixOldCalCylinderInfoCommand(DataInterface &dataInterface, qint32 pid,
                                     const std::optional<QDateTime> &start, const QDateTime &end,
                                     const QString &cylinderId, const QString &expiration,
                                     const QString &vendorId, const QString &gasCodes)
{
    CommandBuilder command(QStringLiteral("FixOldCalCylinderInfo"));
    command.addPid(QStringLiteral("pid"), pid).addEnvelope(dataInterface);
    command.addDate(QStringLiteral("start"), start.value_or(QDateTime()));
    command.addDate(QStringLiteral("end"), end);
    command.addText(QStringLiteral("newcylid"), cylinderId);
    if (const std::optional<QDateTime> date = parseDateText(expiration)) {
        command.addDate(QStringLiteral("newexpdate"), *date);
    } else {
        command.addText(QStringLiteral("newexpdate"), expiration);
    }
    command.addText(QStringLiteral("newvendorid"), vendorId);
    command.addText(QStringLiteral("newgaslist"), gasCodes);
    return command.singleLine();
}

CylinderEditResult saveCylinderEdit(Parameter &cylinder, DataInterface &dataInterface,
                                    MessageLog *log, const CylinderEditData &current,
                                    const CylinderEditInput &input,
                                    const std::function<void(const QString &)> &warn)
{
    CylinderEditResult result;
    const std::optional<QDateTime> installed
        = input.effectiveEarlier ? parseDateText(input.installationDate.trimmed()) : std::nullopt;
    if (input.effectiveEarlier && !installed) {
        result.invalidInstallationDate = true;
        if (warn) {
            warn(QStringLiteral("Enter a valid date/time."));
        }
        // A warning only: the new cylinder data is saved all the same.
    }

    const QString expirationTyped = input.expiration.trimmed();
    const QString cylinderId = input.cylinderId.trimmed().toUpper();
    const QString vendorId = input.vendorId.trimmed().toUpper();
    const QString gasCodes = input.gasCodes.trimmed().toUpper();

    const auto write = [&](int number, const Value &value) {
        cylinder.SetAttribute(number, value);
        result.attributesWritten.append(number);
    };
    if (const std::optional<QDateTime> expiration = parseDateText(expirationTyped)) {
        const std::optional<QDateTime> old
            = current.expiration.isDate() ? current.expiration.toDateTime() : std::nullopt;
        if (!old || old->date() != expiration->date()) {
            write(CylinderAttr::Expiration, Value(*expiration));
        }
    }
    if (cylinderId != current.cylinderId) {
        write(CylinderAttr::CylinderId, Value(cylinderId));
    }
    if (vendorId != current.vendorId) {
        write(CylinderAttr::VendorId, Value(vendorId));
    }
    if (gasCodes != current.gasCodes) {
        write(CylinderAttr::GasCodes, Value(gasCodes));
    }

    for (qsizetype i = 0; i < current.gases.size() && i < input.gasValues.size(); ++i) {
        const CylinderGas &gas = current.gases[i];
        const QString typed = input.gasValues[i].trimmed();
        if (typed == gas.value || !gas.parameter) {
            continue;
        }
        try {
            gas.parameter->SetValues(WriteMode::Queued, gasValue(typed));
            result.gasesWritten.append(gas.pid);
        } catch (...) {
            logError(log, u"CSET-0009: could not set component gas value for '" + gas.name
                              + u"' (PID=" + FormatPid(gas.pid) + u')');
        }
    }

    if (input.effectiveEarlier) {
        result.command = fixOldCalCylinderInfoCommand(dataInterface, current.pid, installed,
                                                      dataInterface.Clock()->Now(), cylinderId,
                                                      expirationTyped, vendorId, gasCodes);
        result.commandPosted = PostCommand(
            dataInterface, log, RecordType::Calibration, result.command,
            QStringLiteral("CSET-0040"),
            QStringLiteral("CSET-0041: can't write msg record to update cal cylinder info"));
    }
    return result;
}

} // namespace olvex
