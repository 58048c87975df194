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
        throw Error(kInternalError, u"No parameter " + QString::number(pid));
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
    m_posted.append(siteId + u' ' + recordType + u' ' + sourceCode + u' ' + text);
    errorText.clear();
    ok = true;
}

namespace {

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

void StderrLog::LogMessage(int severity, const QString &text)
{
    QTextStream(stderr) << "log " << severity << ": " << text << '\n';
}

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
    return site;
}
