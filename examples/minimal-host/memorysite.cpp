#include "memorysite.h"

#include "common/error.h"

#include <QDir>
#include <QTextStream>
#include <QTimer>

using namespace olvex;

MemoryParameter::MemoryParameter(qint32 pid, QString name, int type, Value value)
    : m_pid(pid)
    , m_name(std::move(name))
    , m_type(type)
    , m_value(std::move(value))
{}

Value MemoryParameter::GetAttribute(int number) const
{
    return m_attributes.value(number, Value::null());
}

void MemoryParameter::SetAttribute(int number, const Value &value)
{
    m_attributes.insert(number, value);
}

CurrentValue MemoryParameter::GetCurrentValue() const
{
    return {m_value, 0, QDateTime::currentDateTime()};
}

void MemoryParameter::SetValues(int, const Value &value)
{
    // Nothing stands between this host and its data, so a write applies at once.
    m_value = value;
}

std::shared_ptr<MemoryParameter> MemorySite::add(qint32 pid, const QString &name, int type,
                                                 const Value &value)
{
    auto parameter = std::make_shared<MemoryParameter>(pid, name, type, value);
    m_order.append(pid);
    m_parameters.insert(pid, parameter);
    return parameter;
}

ConnectionDescription MemorySite::ConnectionSettings() const
{
    ConnectionDescription description;
    description.ExportFolder = QDir::tempPath();
    return description;
}

ParameterList MemorySite::GetPidsOfTypes(const QList<int> &types)
{
    ParameterList list;
    for (const qint32 pid : std::as_const(m_order)) {
        const auto &parameter = m_parameters[pid];
        if (types.contains(parameter->ParameterType())) {
            list.append(parameter);
        }
    }
    return list;
}

ParameterPtr MemorySite::GetPid(qint32 pid, bool) const
{
    const auto found = m_parameters.constFind(pid);
    if (found == m_parameters.constEnd()) {
        throw Error(kInternalError, QStringLiteral("No parameter %1").arg(pid));
    }
    return *found;
}

QString MemorySite::UnitsText(qint32 pid) const
{
    return m_units.value(pid);
}

void MemorySite::PostMessageRecord(QString &errorText, const QString &siteId,
                                   const QString &recordType, const QString &text, const QString &,
                                   const QString &, const QString &sourceCode, bool &ok)
{
    m_posted.append(QStringList{siteId, recordType, sourceCode, text}.join(QLatin1Char(' ')));
    errorText.clear();
    ok = true;
}

namespace {

class TextItem : public CurrentDataItem
{
public:
    explicit TextItem(QString text)
        : m_text(std::move(text))
    {}
    QString Text() const override { return m_text; }
    int Status() const override { return 0; }

private:
    QString m_text;
};

class TimerInterval : public Interval
{
public:
    explicit TimerInterval(const IntervalSpec &spec)
        : m_name(spec.name)
    {
        m_timer.setSingleShot(!spec.repeat);
        connect(&m_timer, &QTimer::timeout, this, &Interval::IntervalExpired);
        m_timer.start(spec.periodSeconds * 1000);
    }
    void Stop() override { m_timer.stop(); }
    void SetMessageLog(std::shared_ptr<olvex::MessageLog>) override {}
    QString Name() const override { return m_name; }

private:
    QString m_name;
    QTimer m_timer;
};

} // namespace

IntervalPtr MemorySite::CreateInterval(const IntervalSpec &spec)
{
    return std::make_shared<TimerInterval>(spec);
}

std::shared_ptr<CurrentDataItem> MemorySite::GetCurrentDataItem(qint32 pid, const QString &)
{
    const auto found = m_parameters.constFind(pid);
    if (found == m_parameters.constEnd()
        || (*found)->ParameterType() != ParameterTypes::Calibration) {
        return nullptr;
    }
    return std::make_shared<TextItem>((*found)->GetCurrentValue().Value.toText());
}

void StderrLog::LogMessage(int severity, const QString &text)
{
    QTextStream(stderr) << "log " << severity << ": " << text << '\n';
}

namespace {

// The record the data acquisition service keeps in a calibration parameter's value: its
// calibration start settings, what the plant supports and the service's status texts.
QString calStartRecord(const QString &enableChannel, const QString &startChannel,
                       const QString &startTime, bool pending)
{
    const QString stampFormat = QStringLiteral("yyyy/MM/dd hh:mm AP");
    const QDateTime scheduled = QDateTime::currentDateTime().addSecs(10 * 60);
    const QList<std::pair<QString, QString>> elements{
        {QStringLiteral("CalEnabled ioid=\"%1\"").arg(enableChannel), QStringLiteral("1")},
        {QStringLiteral("CalStartTimeUser"), startTime},
        {QStringLiteral("SkipIfOffline"), QStringLiteral("1")},
        {QStringLiteral("CalDelayMinutes"), QStringLiteral("30")},
        {QStringLiteral("CalAfterStartup"), QStringLiteral("1")},
        {QStringLiteral("CalEvery26OpHours"), QStringLiteral("1")},
        {QStringLiteral("CalConfirmEnabled"), QStringLiteral("1")},
        {QStringLiteral("CalConfirmTimeout"), QStringLiteral("30")},
        {QStringLiteral("CalConfirmDefaultConfirm"), QStringLiteral("1")},
        {QStringLiteral("NormalOpSupported"), QStringLiteral("1")},
        {QStringLiteral("CanDetermineOpHours"), QStringLiteral("1")},
        {QStringLiteral("CalConfirmSupported"), QStringLiteral("1")},
        {QStringLiteral("ManualCalStartSupported ioid=\"%1\"").arg(startChannel),
         QStringLiteral("1")},
        {QStringLiteral("UserFriendlyStatus"),
         pending ? QStringLiteral("Daily cal check waiting for operator confirmation")
                 : QStringLiteral("Idle; next daily cal check at %1").arg(startTime)},
        {QStringLiteral("OpHoursSinceOnlineCal"), QStringLiteral("14")},
        {QStringLiteral("OpHoursStatusString"),
         QStringLiteral("14 unit operating hours have passed since the most recent online cal "
                        "check.")},
        {QStringLiteral("CalConfirmPending"), pending ? QStringLiteral("1") : QStringLiteral("0")},
        {QStringLiteral("CalConfirmPendingCalType"),
         pending ? QStringLiteral("Daily calibration") : QString()},
        {QStringLiteral("CalConfirmScheduledStartTime"),
         pending ? scheduled.toString(stampFormat) : QString()},
        {QStringLiteral("CalConfirmExpirationTime"),
         pending ? scheduled.addSecs(30 * 60).toString(stampFormat) : QString()},
    };
    QString record = QStringLiteral("<XValue><CalStart>");
    for (const auto &[element, text] : elements) {
        const QString name = element.section(QLatin1Char(' '), 0, 0);
        record += QStringLiteral("<%1>%2</%3>").arg(element, text.toHtmlEscaped(), name);
    }
    return record + QStringLiteral("</CalStart></XValue>");
}

} // namespace

std::shared_ptr<MemorySite> makeDemoSite()
{
    // PIDs are five digit groups; group C is never 6 or 9.
    constexpr qint32 kStackGroup = 100100;
    constexpr qint32 kAlarmGroup = 100200;
    const QList<qint32> stackSettings{100101, 100102, 100103};
    constexpr qint32 kOpacityAlarm = 100201;

    auto site = std::make_shared<MemorySite>();
    const auto setting = [&](qint32 pid, const QString &name, int dataType, const Value &value,
                             const Value &defaultValue) {
        const auto parameter = site->add(pid, name, ParameterTypes::Setting, value);
        parameter->SetAttribute(SettingAttr::Readable, true);
        parameter->SetAttribute(SettingAttr::Changeable, true);
        parameter->SetAttribute(SettingAttr::DataType, dataType);
        parameter->SetAttribute(SettingAttr::DefaultValue, defaultValue);
        parameter->SetAttribute(SettingAttr::Level, 10);
        return parameter;
    };
    const auto flow = setting(stackSettings[0], QStringLiteral("Stack Flow Span"),
                              SettingType::Number, 1250.0, 1200.0);
    flow->SetAttribute(SettingAttr::DisplayFormat, QStringLiteral("0.0"));
    flow->SetAttribute(SettingAttr::RecommendedLow, 1000.0);
    flow->SetAttribute(SettingAttr::RecommendedHigh, 1500.0);
    setting(stackSettings[1], QStringLiteral("Substitute Missing Data"), SettingType::YesNo, true,
            true);
    setting(stackSettings[2], QStringLiteral("Stack Name"), SettingType::Text,
            QStringLiteral("Main stack"), QStringLiteral("Stack 1"));

    const auto alarm = setting(kOpacityAlarm, QStringLiteral("Opacity Alarm"), SettingType::Number,
                               Value(), Value());
    alarm->SetAttribute(SettingAttr::SetpointHH, 30.0);
    alarm->SetAttribute(SettingAttr::SetpointH, 20.0);
    alarm->SetAttribute(SettingAttr::SetpointL, 2.0);
    alarm->SetAttribute(SettingAttr::SetpointLL, 1.0);

    const auto group = [&](qint32 pid, const QString &name, int order, bool alarmGroup,
                           const QList<qint32> &members) {
        const auto parameter = site->add(pid, name, ParameterTypes::SettingGroup);
        QList<Value> pids;
        for (const qint32 member : members) {
            pids.append(Value(member));
        }
        parameter->SetAttribute(GroupAttr::Order, order);
        parameter->SetAttribute(GroupAttr::HasParent, 0);
        parameter->SetAttribute(GroupAttr::ParentPid, 0);
        parameter->SetAttribute(GroupAttr::AlarmGroup, alarmGroup);
        parameter->SetAttribute(GroupAttr::Members, Value(pids));
    };
    group(kStackGroup, QStringLiteral("Stack"), 1, false, stackSettings);
    group(kAlarmGroup, QStringLiteral("Alarms"), 2, true, {kOpacityAlarm});

    // Calibration parameters name the channels that enable them and start them by hand.
    site->addChannel(12, 1);
    site->addChannel(21, 1);
    site->addChannel(17, 1);
    site->addChannel(23, 1);
    const auto calibration = [&](qint32 pid, const QString &name, const QString &record) {
        site->add(pid, name, ParameterTypes::Calibration, record)
            ->SetAttribute(CalibrationAttr::SupportsConfirmation, true);
    };
    calibration(101301, QStringLiteral("SO2/NOx Cal"),
                calStartRecord(QStringLiteral("C12"), QStringLiteral("C21"),
                               QStringLiteral("06:50"), true));
    calibration(101302, QStringLiteral("CO2/O2 Cal"),
                calStartRecord(QStringLiteral("C17"), QStringLiteral("C23"),
                               QStringLiteral("07:30"), false));

    // A gas cylinder and the settings that hold its certified gas values.
    constexpr qint32 kCylinder = 201701;
    const QList<std::tuple<qint32, QString, double, QString>> gases{
        {201401, QStringLiteral("SO2"), 450.5, QStringLiteral("ppm")},
        {201402, QStringLiteral("NO"), 250.0, QStringLiteral("ppm")},
        {201403, QStringLiteral("CO2"), 12.0, QStringLiteral("%")}};
    QStringList entries;
    QList<Value> gasPids;
    for (const auto &[pid, code, value, units] : gases) {
        setting(pid, QStringLiteral("Cylinder A ") + code, SettingType::Number, value, Value());
        site->setUnits(pid, units);
        entries.append(QStringList{code, QString::number(value), units}.join(QLatin1Char(',')));
        gasPids.append(Value(pid));
    }
    const auto cylinder = site->add(kCylinder, QStringLiteral("Cylinder A (SO2/NO/CO2 high)"),
                                    ParameterTypes::GasCylinder, QStringLiteral("CC412233"));
    cylinder->SetAttribute(CylinderAttr::CylinderId, QStringLiteral("CC412233"));
    cylinder->SetAttribute(CylinderAttr::Expiration,
                           QDateTime(QDate::currentDate().addDays(410), QTime(0, 0)));
    cylinder->SetAttribute(CylinderAttr::VendorId, QStringLiteral("B22014"));
    cylinder->SetAttribute(CylinderAttr::GasCodes, QStringLiteral("SO2,NO,CO2,BALN"));
    cylinder->SetAttribute(CylinderAttr::Pressure, 1850);
    cylinder->SetAttribute(CylinderAttr::PressureUnit, QStringLiteral("psig"));
    cylinder->SetAttribute(CylinderAttr::ComponentGases, entries.join(QLatin1Char(';')));
    cylinder->SetAttribute(CylinderAttr::GasPids, Value(gasPids));
    return site;
}
