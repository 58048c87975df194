// Lists read with the attributes their caller names (GetPidsOfTypesWith): the same objects as a
// full list, the other attributes read per number for the whole list on first use, writes seen
// at once, and stored local times read back as before, also around daylight saving changes.
#include "testsite.h"

#include "common/pid.h"
#include "common/vocabulary.h"
#include "host/demosite.h"
#include "host/sitedatainterface.h"
#include "host/storedvalue.h"

#include <ctime>

using namespace olvex;
using namespace olvex::test;

namespace {

class BatchReadTest : public BackendTest
{
protected:
    std::unique_ptr<SiteDataInterface> viewer()
    {
        return std::make_unique<SiteDataInterface>(m_store, HostSession(QStringLiteral("viewer")));
    }
    quint64 statements() { return m_store->sql().statementCount(); }
    // Every attribute number the site holds for parameters of the types.
    QList<int> storedNumbers(const QList<int> &types)
    {
        QStringList in;
        for (const int type : types)
            in.append(QString::number(type));
        QList<int> numbers;
        for (const QString &number :
             rows(u"SELECT DISTINCT a.number FROM attributes a JOIN parameters p ON p.pid = a.pid"
                  u" WHERE p.ptype IN ("
                  + in.join(u',') + u") ORDER BY a.number"))
            numbers.append(number.toInt());
        return numbers;
    }
};

// Sets TZ for the scope, so that local times have daylight saving changes.
class TimeZoneScope
{
public:
    explicit TimeZoneScope(const char *zone)
        : m_had(qEnvironmentVariableIsSet("TZ"))
        , m_old(qgetenv("TZ"))
    {
        qputenv("TZ", zone);
        tzset();
    }
    ~TimeZoneScope()
    {
        if (m_had)
            qputenv("TZ", m_old);
        else
            qunsetenv("TZ");
        tzset();
    }

private:
    bool m_had;
    QByteArray m_old;
};

QString shown(const QDateTime &t)
{
    return t.isValid() ? t.toString(Qt::ISODateWithMs) + u' ' + QString::number(t.timeSpec()) + u' '
                             + QString::number(t.offsetFromUtc())
                       : QStringLiteral("invalid");
}

TEST_P(BatchReadTest, NamedAttributeListsReadLikeFullLists)
{
    demo();
    const QList<std::tuple<QList<int>, QList<int>>> cases{
        {{ParameterTypes::Setting},
         {SettingAttr::DefaultValue, SettingAttr::DataType, SettingAttr::Changeable}},
        {{ParameterTypes::Setting, ParameterTypes::SettingGroup}, {SettingAttr::Changeable}},
        {{79, 62}, {-306, -312, -306}},
        {{ParameterTypes::SettingGroup}, {SettingAttr::DefaultValue}}, // held by no group
    };
    for (const auto &[types, asked] : cases) {
        const QString what = u"types " + QString::number(types.first()) + u", named "
                             + QString::number(asked.first());
        SCOPED_TRACE(what.toStdString());
        const ParameterList full = viewer()->GetPidsOfTypes(types);
        auto di = viewer();
        const ParameterList named = di->GetPidsOfTypesWith(types, asked);
        ASSERT_EQ(named.size(), full.size());
        ASSERT_FALSE(named.isEmpty());

        const quint64 afterList = statements();
        for (const ParameterPtr &p : named) {
            for (const int number : asked)
                p->GetAttribute(number);
            p->GetCurrentValue();
        }
        EXPECT_EQ(statements(), afterList) << "the named attributes come with the list";

        const QList<int> numbers = storedNumbers(types);
        const quint64 beforeOthers = statements();
        for (const ParameterPtr &p : named) {
            for (const int number : numbers)
                p->GetAttribute(number);
        }
        EXPECT_LE(statements() - beforeOthers, quint64(numbers.size()))
            << "an attribute not named costs one query for the whole list";

        const auto units = di->GetUnitsLookup();
        for (qsizetype i = 0; i < named.size(); ++i) {
            const Parameter &a = *named[i];
            const Parameter &b = *full[i];
            ASSERT_EQ(a.PidNumber(), b.PidNumber());
            // What a row shows of a parameter: name, type, units, error, value, status and time.
            const auto row = [&](const Parameter &p) {
                const CurrentValue v = p.GetCurrentValue();
                return QStringList{p.GetName(0),
                                   QString::number(p.ParameterType()),
                                   p.UnitName(),
                                   QString::number(p.InError()),
                                   units->UnitsText(p.PidNumber()),
                                   v.Value.debugText(),
                                   QString::number(v.Status),
                                   shown(v.Time)};
            };
            EXPECT_EQ(row(a), row(b));
            for (const int number : numbers) {
                EXPECT_EQ(a.GetAttribute(number).debugText(), b.GetAttribute(number).debugText())
                    << FormatPid(a.PidNumber()).toStdString() << " attribute " << number;
            }
        }
    }
}

TEST_P(BatchReadTest, LazilyReadAttributesFollowWrites)
{
    demo();
    const QList<int> types{ParameterTypes::Setting};
    const QList<int> named{SettingAttr::Changeable};
    const qint32 target = DemoPids::unit1SO2Span();
    const qint32 neighbour = DemoPids::unit1SO2ZeroDriftLimit();
    // what, number, value, readFirst (the list has read the number before the write),
    // byOtherProgram.
    const QList<std::tuple<const char *, int, Value, bool, bool>> cases{
        {"named, own write", SettingAttr::Changeable, Value(false), true, false},
        {"not read yet, own write", SettingAttr::DisplayFormat, Value(QStringLiteral("0.0000")),
         false, false},
        {"read before, own write", SettingAttr::DisplayFormat, Value(QStringLiteral("0.000")), true,
         false},
        {"named, other program", SettingAttr::Changeable, Value(false), true, true},
        {"read before, other program", SettingAttr::RecommendedHigh, Value(77.5), true, true},
        {"not read yet, other program", SettingAttr::Level, Value(11), false, true},
    };
    for (const auto &[what, number, value, readFirst, byOtherProgram] : cases) {
        SCOPED_TRACE(what);
        const Value original = viewer()->GetPidDirectory()->GetPid(target)->GetAttribute(number);
        auto di = viewer();
        const ParameterList list = di->GetPidsOfTypesWith(types, named);
        ParameterPtr p;
        ParameterPtr q;
        for (const ParameterPtr &each : list) {
            if (each->PidNumber() == target)
                p = each;
            if (each->PidNumber() == neighbour)
                q = each;
        }
        ASSERT_TRUE(p && q);
        // From another data interface, so that this list has not read the number yet.
        const QString neighbourBefore
            = viewer()->GetPidDirectory()->GetPid(neighbour)->GetAttribute(number).debugText();
        if (readFirst) {
            ASSERT_NE(p->GetAttribute(number).debugText(), value.debugText());
        }

        if (byOtherProgram) {
            SiteStore::open(site())->setAttribute(target, number, value, Actor{});
            const ParameterList again = di->GetPidsOfTypesWith(types, named);
            for (const ParameterPtr &each : again) {
                if (each->PidNumber() == target) {
                    EXPECT_EQ(each->GetAttribute(number).debugText(), value.debugText())
                        << "the next list";
                }
            }
        } else {
            p->SetAttribute(number, value);
        }
        EXPECT_EQ(p->GetAttribute(number).debugText(), value.debugText());
        EXPECT_EQ(q->GetAttribute(number).debugText(), neighbourBefore);
        // What a list of all attributes, read afresh, finds.
        auto fresh = viewer()->GetPidDirectory();
        EXPECT_EQ(fresh->GetPid(target)->GetAttribute(number).debugText(), value.debugText());
        m_store->setAttribute(target, number, original, Actor{}); // for the next case
    }
}

TEST_P(BatchReadTest, StoredLocalTimesReadBackAsBeforeAcrossDaylightSaving)
{
    const TimeZoneScope zone("Europe/Berlin");
    // Around both changes of 2024 (02:00-03:00 on 31 March does not exist, on 27 October it
    // comes twice), a UTC time, repeats (read from the batch's cache) and texts that are no
    // date-time, including one whose fields overflow into a valid date.
    const QStringList texts{
        QStringLiteral("2024-03-31T01:59:59.999"),  QStringLiteral("2024-03-31T02:30:00.000"),
        QStringLiteral("2024-10-27T02:30:00.000"),  QStringLiteral("2024-10-27T01:59:59.000"),
        QStringLiteral("2024-10-27T02:30:00.000Z"), QStringLiteral("2024-03-31T02:30:00.000"),
        QStringLiteral("1899-12-30T06:00:00.000"),  QStringLiteral("2024-01-40T00:00:00.000"),
        QStringLiteral("2024-02-30T00:00:00.000"),  QStringLiteral("2024-02-09T00:00:00"),
        QStringLiteral("2024-02-09T24:00:00.000"),  QString()};
    DateTimeTexts batch;
    for (const QString &text : texts) {
        SCOPED_TRACE(text.toStdString());
        EXPECT_EQ(shown(batch.fromUtf8(text.toUtf8())), shown(dateTimeFromText(text)));
    }

    // Through the store: current values and their times, a list against single reads.
    demo();
    auto other = SiteStore::open(site());
    const QList<qint32> pids{DemoPids::unit1SO2Span(), DemoPids::unit1SO2ZeroDriftLimit(),
                             DemoPids::unit1SO2SerialNumber()};
    const QList<QDateTime> values{QDateTime(QDate(2024, 10, 27), QTime(2, 30)),
                                  QDateTime(QDate(2024, 3, 31), QTime(1, 59, 59, 999)),
                                  QDateTime(QDate(2024, 10, 27), QTime(2, 30), Qt::UTC)};
    for (qsizetype i = 0; i < pids.size(); ++i)
        other->setCurrentValue(pids[i], Value(values[i]), 0, Actor{}, QStringLiteral("test"));
    auto di = viewer();
    const ParameterList list
        = di->GetPidsOfTypesWith({ParameterTypes::Setting}, {SettingAttr::DataType});
    auto directory = viewer()->GetPidDirectory();
    int found = 0;
    for (const ParameterPtr &p : list) {
        const qsizetype at = pids.indexOf(p->PidNumber());
        if (at < 0)
            continue;
        ++found;
        const CurrentValue batch = p->GetCurrentValue();
        const CurrentValue single = directory->GetPid(p->PidNumber())->GetCurrentValue();
        // The ambiguous wall-clock time reads as its first occurrence, summer time.
        EXPECT_EQ(batch.Value.toDateTime()->toString(Qt::ISODateWithMs),
                  values[at].toString(Qt::ISODateWithMs));
        if (at == 0) {
            EXPECT_EQ(batch.Value.toDateTime()->offsetFromUtc(), 7200);
        }
        EXPECT_EQ(shown(*batch.Value.toDateTime()), shown(*single.Value.toDateTime()));
        EXPECT_EQ(shown(batch.Time), shown(single.Time));
    }
    EXPECT_EQ(found, pids.size());
}

INSTANTIATE_TEST_SUITE_P(Host, BatchReadTest, OLVEX_TEST_BACKENDS, backendName);

} // namespace
