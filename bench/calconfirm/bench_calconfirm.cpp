// The confirmation panel's minute refresh over 500 pending calibrations, none of them changing
// (what the panel does nearly every minute), against the least the same work can cost: parse
// each of the 500 records with libxml2 and read its five fields by XPath.
#include "calconfirm/widgets/dicalconfirm.h"
#include "common/error.h"
#include "widgetbenchmain.h"

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <QApplication>
#include <QHash>

#include <memory>

namespace {

using namespace olvex;

constexpr int kCalibrations = 500;

QString record(int i)
{
    return u"<XValue>\n  <CalStart>\n    <Unit>Unit " + QString::number(i % 4 + 1)
           + u"</Unit>\n    <CalEnabled>1</CalEnabled>\n    <CalStartTimeUser>06:50"
             u"</CalStartTimeUser>\n    <SkipIfOffline>1</SkipIfOffline>\n    <CalDelayMinutes>30"
             u"</CalDelayMinutes>\n    <CalConfirmEnabled>1</CalConfirmEnabled>\n"
             u"    <UserFriendlyStatus>Daily cal check waiting for operator confirmation"
             u"</UserFriendlyStatus>\n    <OpHoursSinceOnlineCal>12</OpHoursSinceOnlineCal>\n"
             u"    <CalConfirmPending>1</CalConfirmPending>\n    <CalConfirmPendingCalType>Daily "
             u"calibration</CalConfirmPendingCalType>\n    <CalConfirmScheduledStartTime>"
             u"2026/03/01 06:50 AM</CalConfirmScheduledStartTime>\n    <CalConfirmDefaultConfirm>"
             u"1</CalConfirmDefaultConfirm>\n    <CalConfirmExpirationTime>2026/03/01 07:20 AM"
             u"</CalConfirmExpirationTime>\n  </CalStart>\n</XValue>";
}

qint32 pidOf(int i)
{
    return 101030000 + i; // group C 3: a valid PID for every i below 10000
}

class Item final : public CurrentDataItem
{
public:
    explicit Item(QString text)
        : m_text(std::move(text))
    {}
    // A fresh copy each time, as a host reading its store returns: nothing is recognised by
    // sharing the same string.
    QString Text() const override { return QString(m_text.constData(), m_text.size()); }
    int Status() const override { return 0; }

private:
    QString m_text;
};

class Reader final : public CurrentDataReader
{
public:
    Reader()
    {
        for (int i = 0; i < kCalibrations; ++i) {
            m_items.insert(pidOf(i), std::make_shared<Item>(record(i)));
        }
    }
    std::shared_ptr<CurrentDataItem> GetCurrentDataItem(qint32 pid, const QString &) override
    {
        return m_items.value(pid);
    }
    QStringList texts() const
    {
        QStringList all;
        for (int i = 0; i < kCalibrations; ++i) {
            all << m_items.value(pidOf(i))->Text();
        }
        return all;
    }

private:
    QHash<qint32, std::shared_ptr<CurrentDataItem>> m_items;
};

class Calibration final : public Parameter
{
public:
    explicit Calibration(qint32 pid)
        : m_pid(pid)
    {}
    QString GetName(int) const override { return u"Cal " + QString::number(m_pid); }
    int ParameterType() const override { return ParameterTypes::Calibration; }
    qint32 PidNumber() const override { return m_pid; }
    Value GetAttribute(int number) const override
    {
        return number == CalibrationAttr::SupportsConfirmation ? Value(true) : Value::null();
    }
    void SetAttribute(int, const Value &) override {}
    CurrentValue GetCurrentValue() const override { return {}; }
    void SetValues(int, const Value &) override {}
    bool InError() const override { return false; }
    QString UnitName() const override { return {}; }

private:
    qint32 m_pid;
};

class Directory final : public PidDirectory
{
public:
    bool PidExists(qint32) const override { return true; }
    ParameterPtr GetPid(qint32 pid, bool) const override
    {
        return std::make_shared<Calibration>(pid);
    }
};

// The refresh timer of a clock that never fires: the benchmark calls the refresh itself.
class IdleInterval final : public Interval
{
public:
    void Stop() override {}
    void SetMessageLog(std::shared_ptr<MessageLog>) override {}
    QString Name() const override { return {}; }
};

class IdleClock final : public ClockLibrary
{
public:
    QDateTime Now() const override { return QDateTime(QDate(2026, 3, 1), QTime(6, 40)); }
    IntervalPtr CreateInterval(const IntervalSpec &) override
    {
        return std::make_shared<IdleInterval>();
    }
};

class Records final : public MessageRecords
{
public:
    void PostMessageRecord(QString &, const QString &, const QString &, const QString &,
                           const QString &, const QString &, const QString &, bool &ok) override
    {
        ok = true;
    }
};

class Site final : public DataInterface
{
public:
    QString ClientName() const override { return QStringLiteral("WS1"); }
    QString ClientAddress() const override { return QStringLiteral("10.0.0.5"); }
    ConnectionDescription ConnectionSettings() const override { return {}; }
    std::shared_ptr<ClockLibrary> Clock() override { return m_clock; }
    QString GetSiteId() const override { return QStringLiteral("BENCH"); }
    ParameterList GetPidsOfTypes(const QList<int> &) override
    {
        ParameterList all;
        for (int i = 0; i < kCalibrations; ++i) {
            all.append(std::make_shared<Calibration>(pidOf(i)));
        }
        return all;
    }
    std::shared_ptr<PidDirectory> GetPidDirectory() override { return m_directory; }
    std::shared_ptr<UnitsLookup> GetUnitsLookup() override { return nullptr; }
    std::shared_ptr<User> GetUser() override { return nullptr; }
    std::shared_ptr<MessageRecords> GetMessageRecords() override { return m_records; }
    int GetChannelKind(int) override { return 0; }
    std::shared_ptr<olvex::MessageLog> MessageLog() override { return nullptr; }
    bool AlternativeState() const override { return false; }

private:
    std::shared_ptr<ClockLibrary> m_clock = std::make_shared<IdleClock>();
    std::shared_ptr<PidDirectory> m_directory = std::make_shared<Directory>();
    std::shared_ptr<MessageRecords> m_records = std::make_shared<Records>();
};

void candidate(benchmark::State &state)
{
    DICalConfirm panel;
    panel.resize(360, 600);
    panel.Setup(nullptr, std::make_shared<Site>(), std::make_shared<Reader>());
    panel.RefreshWindow(); // adds the 500 rows; every later refresh finds them unchanged
    if (panel.visibleRows().size() != kCalibrations) {
        state.SkipWithError("the rows were not added");
        return;
    }
    for (auto _ : state) {
        panel.RefreshWindow();
    }
}

QString fieldText(xmlXPathContext *context, const char *path)
{
    xmlXPathObject *result
        = xmlXPathEvalExpression(reinterpret_cast<const xmlChar *>(path), context);
    QString text;
    if (result && result->nodesetval && result->nodesetval->nodeNr > 0) {
        xmlChar *content = xmlNodeGetContent(result->nodesetval->nodeTab[0]);
        text = QString::fromUtf8(reinterpret_cast<const char *>(content)).trimmed();
        xmlFree(content);
    }
    xmlXPathFreeObject(result);
    return text;
}

void baseline(benchmark::State &state)
{
    const QStringList texts = Reader().texts();
    const char *const paths[]
        = {"//CalStart/CalConfirmPending", "//CalStart/CalConfirmPendingCalType",
           "//CalStart/CalConfirmScheduledStartTime", "//CalStart/CalConfirmDefaultConfirm",
           "//CalStart/CalConfirmExpirationTime"};
    for (auto _ : state) {
        qsizetype total = 0;
        for (const QString &text : texts) {
            const QByteArray utf8 = text.toUtf8();
            xmlDoc *doc = xmlReadMemory(utf8.constData(), int(utf8.size()), nullptr, nullptr,
                                        XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING
                                            | XML_PARSE_NOBLANKS);
            xmlXPathContext *context = xmlXPathNewContext(doc);
            for (const char *path : paths) {
                total += fieldText(context, path).size();
            }
            xmlXPathFreeContext(context);
            xmlFreeDoc(doc);
        }
        benchmark::DoNotOptimize(total);
    }
}

} // namespace

BENCHMARK(candidate)->Name("calconfirm_refresh_vs_xpath/candidate")->Unit(benchmark::kMillisecond);
BENCHMARK(baseline)->Name("calconfirm_refresh_vs_xpath/baseline")->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    return olvex::bench::runWidgetBenchmarks(argc, argv);
}
