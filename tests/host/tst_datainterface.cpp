// The host objects over the store, on each backend: batched reads, value writes through the
// service's queue, attribute writes with their audit rows, users, privileges and security.
#include "testsite.h"

#include "common/error.h"
#include "common/pid.h"
#include "common/vocabulary.h"
#include "host/commandqueue.h"
#include "host/demosite.h"
#include "host/sitedatainterface.h"
#include "host/sitesecurity.h"
#include "host/siteservices.h"
#include "host/storeerrors.h"
#include "settings/settingdisplay.h"

#include <chrono>

using namespace olvex;
using namespace olvex::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const QList<int> kSettingAttributes{
    SettingAttr::Readable,        SettingAttr::Changeable,   SettingAttr::DataType,
    SettingAttr::DisplayFormat,   SettingAttr::DefaultValue, SettingAttr::RecommendedLow,
    SettingAttr::RecommendedHigh, SettingAttr::Level,        SettingAttr::ChangePending,
    SettingAttr::AltReadable,     SettingAttr::AltChangeable};

class DataInterfaceTest : public BackendTest
{
protected:
    std::unique_ptr<SiteDataInterface> as(const QString &user)
    {
        return std::make_unique<SiteDataInterface>(m_store, HostSession(user));
    }
    quint64 statements() { return m_store->sql().statementCount(); }
    qint64 auditRows(qint32 pid, const QString &where = QString())
    {
        return count(u"audit_trail WHERE pid = "_s + QString::number(pid) + where);
    }
};

// Lists come ascending by PID with their types; an undefined PID is reported, never invented.
TEST_P(DataInterfaceTest, ListsComeAscendingByPidAndUndefinedPidsAreReported)
{
    demo();
    auto di = as(QStringLiteral("viewer"));
    const SiteCounts counts = m_store->counts();
    for (const QList<int> &types : QList<QList<int>>{{4}, {5}, {79, 62, 79}, {12345}}) {
        const ParameterList list = di->GetPidsOfTypes(types);
        int expected = 0;
        for (const int type : QSet<int>(types.begin(), types.end()))
            expected += counts.parametersByType.value(type);
        ASSERT_EQ(list.size(), expected);
        for (int i = 0; i < list.size(); ++i) {
            EXPECT_TRUE(types.contains(list[i]->ParameterType()));
            EXPECT_TRUE(i == 0 || list[i - 1]->PidNumber() < list[i]->PidNumber());
        }
    }
    auto directory = di->GetPidDirectory();
    const qint32 missing = DemoPids::undefinedMember();
    EXPECT_FALSE(directory->PidExists(missing));
    const Error error = errorOf([&] { directory->GetPid(missing); });
    EXPECT_EQ(error.number(), StoreError::UnknownPid);
    EXPECT_TRUE(error.description().contains(FormatPid(missing)));
}

// A group's members as PIDs, with an undefined member and a repeated one at the end.
QList<qint32> groupRows(PidDirectory &directory)
{
    QList<qint32> pids;
    const Value members
        = directory.GetPid(DemoPids::unit1SO2Group(), true)->GetAttribute(GroupAttr::Members);
    for (const Value &member : members.toArray())
        pids.append(qint32(*member.toInteger()));
    pids << DemoPids::undefinedMember() << DemoPids::unit1SO2Span();
    return pids;
}

// On a site across the network each statement costs a round trip: a list of a type and a
// group's rows come in a few statements whatever their length, and reading what the editor
// shows of them costs none.
TEST_P(DataInterfaceTest, FillsCostAFewStatementsWhateverTheirLength)
{
    demo();
    auto di = as(QStringLiteral("viewer"));
    const quint64 start = statements();
    const ParameterList settings = di->GetPidsOfTypes({ParameterTypes::Setting});
    const quint64 afterList = statements();
    EXPECT_LE(afterList - start, 10u);
    for (const ParameterPtr &p : settings) {
        p->GetName(0);
        for (const int number : kSettingAttributes)
            p->GetAttribute(number);
        p->GetCurrentValue();
    }
    EXPECT_EQ(statements(), afterList);

    const QList<qint32> rows = groupRows(*di->GetPidDirectory());
    ASSERT_GE(rows.size(), 10);
    // A fresh data interface each, so that no definition is cached.
    std::optional<quint64> cost;
    for (const qsizetype length : {qsizetype(2), rows.size()}) {
        SCOPED_TRACE(length);
        auto fresh = as(QStringLiteral("viewer"));
        const QList<qint32> pids = rows.mid(rows.size() - length);
        const quint64 before = statements();
        const ParameterList parameters = fresh->GetPidDirectory()->GetPids(pids);
        const quint64 after = statements();
        ASSERT_EQ(parameters.size(), pids.size());
        for (qsizetype i = 0; i < pids.size(); ++i) {
            ASSERT_EQ(parameters[i] != nullptr, pids[i] != DemoPids::undefinedMember());
            if (parameters[i]) {
                EXPECT_EQ(parameters[i]->PidNumber(), pids[i]);
                settingRowState(*parameters[i], false, nullptr);
                parameters[i]->GetAttribute(SettingAttr::DefaultValue);
            }
        }
        EXPECT_EQ(statements(), after) << "the rows' first reads come with the list";
        EXPECT_LE(after - before, 6u);
        EXPECT_TRUE(!cost || after - before == *cost) << "the cost does not grow with the list";
        cost = after - before;
    }
}

// Each fill shows what the site holds now, also through the rows of an earlier fill: values and
// change-pending set by another program, and a definition it changed.
TEST_P(DataInterfaceTest, FillsShowWhatTheSiteHoldsAtEachCall)
{
    demo();
    auto di = as(QStringLiteral("operator"));
    auto directory = di->GetPidDirectory();
    const QList<qint32> pids = groupRows(*directory);
    const ParameterList together = directory->GetPids(pids);
    // The same as asking one by one. This reads each row's batched live state, so that what
    // follows reads the site afresh.
    for (qsizetype i = 0; i < pids.size(); ++i) {
        if (!together[i]) {
            EXPECT_FALSE(directory->PidExists(pids[i]));
            continue;
        }
        const ParameterPtr alone = directory->GetPid(pids[i], true);
        EXPECT_EQ(together[i]->GetCurrentValue().Value.debugText(),
                  alone->GetCurrentValue().Value.debugText());
        EXPECT_EQ(together[i]->GetAttribute(SettingAttr::ChangePending),
                  alone->GetAttribute(SettingAttr::ChangePending));
    }
    const qint32 span = DemoPids::unit1SO2Span();
    const qint32 serial = DemoPids::unit1SO2SerialNumber();
    const qsizetype spanAt = pids.indexOf(span);
    const qsizetype serialAt = pids.indexOf(serial);
    ASSERT_TRUE(spanAt >= 0 && serialAt >= 0);
    EXPECT_EQ(together[spanAt]->GetAttribute(SettingAttr::RecommendedHigh), Value(1000));

    auto other = SiteStore::open(site());
    other->setCurrentValue(span, Value(432), 0, Actor{}, QStringLiteral("test"));
    other->queueValueWrite(serial, Value(QStringLiteral("SN-2")), Actor{});
    other->setAttribute(span, SettingAttr::RecommendedHigh, Value(900), Actor{});

    const ParameterList again = di->GetPidDirectory()->GetPids(pids);
    for (const ParameterList &fill : {again, together}) {
        EXPECT_EQ(fill[spanAt]->GetCurrentValue().Value, Value(432));
        EXPECT_EQ(fill[spanAt]->GetAttribute(SettingAttr::RecommendedHigh), Value(900));
        EXPECT_FALSE(fill[spanAt]->GetAttribute(SettingAttr::ChangePending).isTrue());
        EXPECT_TRUE(fill[serialAt]->GetAttribute(SettingAttr::ChangePending).isTrue());
    }
    EXPECT_TRUE(di->GetPidDirectory()->GetPids({}).isEmpty());
}

TEST_P(DataInterfaceTest, ValueWritesArePendingUntilTheServiceAppliesThem)
{
    demo();
    auto di = as(u"operator"_s);
    const qint32 pid = DemoPids::unit1SO2Span();
    ParameterPtr span = di->GetPidDirectory()->GetPid(pid, true);
    EXPECT_FALSE(span->GetAttribute(SettingAttr::ChangePending).isTrue());
    EXPECT_EQ(span->GetCurrentValue().Value, Value(500));

    span->SetValues(3, Value(450));
    const qint32 no = BuildPid(0, 201, 4, 1, 2); // cylinder A's second gas, NO
    di->GetPidDirectory()->GetPid(no)->SetValues(3, Value(u"260.25"_s));
    EXPECT_TRUE(span->GetAttribute(SettingAttr::ChangePending).isTrue());
    EXPECT_EQ(span->GetCurrentValue().Value, Value(500)) << "nothing applied yet";
    EXPECT_EQ(settingRowState(*span, false, nullptr).valueText, u"Updating..."_s);
    // Every other program sees it pending too.
    auto viewer
        = std::make_unique<SiteDataInterface>(SiteStore::open(site()), HostSession(u"viewer"_s));
    EXPECT_TRUE(viewer->GetPidDirectory()->GetPid(pid)->GetAttribute(-91).isTrue());

    CommandQueue queue(*m_store);
    const QList<PendingWrite> writes = queue.pendingWrites();
    const auto write = std::find_if(writes.cbegin(), writes.cend(),
                                    [&](const PendingWrite &w) { return w.pid == pid; });
    ASSERT_NE(write, writes.cend());
    EXPECT_EQ(write->value, Value(450));
    EXPECT_EQ(write->userName, u"operator"_s);
    while (auto claimed = queue.claimPendingWrite(u"das"_s, 30s)) {
        ASSERT_TRUE(queue.applyPendingWrite(*claimed, u"das"_s));
    }

    auto directory = viewer->GetPidDirectory();
    ParameterPtr after = directory->GetPid(pid);
    EXPECT_FALSE(after->GetAttribute(SettingAttr::ChangePending).isTrue());
    EXPECT_EQ(after->GetCurrentValue().Value, Value(450));
    EXPECT_FALSE(span->GetAttribute(SettingAttr::ChangePending).isTrue());
    EXPECT_EQ(auditRows(pid, u" AND attribute IS NULL AND user_name = 'operator'"_s), 1);
    // An applied gas value updates its cylinder's gas list, and no other cylinder's.
    EXPECT_EQ(directory->GetPid(DemoPids::cylinderA())->GetAttribute(-312).toText(),
              u"SO2,450.5,ppm;NO,260.25,ppm;CO2,12,%"_s);
    EXPECT_TRUE(directory->GetPid(DemoPids::cylinderD())
                    ->GetAttribute(-312)
                    .toText()
                    .contains(u"NO,120,ppm"_s));
}

TEST_P(DataInterfaceTest, WrittenValuesTakeTheSettingsDataType)
{
    demo();
    auto directory = as(u"admin"_s)->GetPidDirectory();
    // pid, written, expected (nullopt: refused as a type mismatch).
    const qint32 number = DemoPids::unit1SO2Span();
    const qint32 yesNo = BuildPid(1, 101, 1, 0, 10);
    const qint32 time = BuildPid(1, 101, 1, 0, 8);
    const qint32 text = BuildPid(1, 101, 1, 0, 12);
    const QList<std::tuple<qint32, Value, std::optional<Value>>> cases{
        {number, Value(u"12.5"_s), Value(12.5)},
        {number, Value(QList<Value>{Value(u"7"_s)}), Value(7)}, // as the import does
        {number, Value(true), Value(-1)},
        {number, Value(u"12x"_s), std::nullopt},
        {number, Value(QList<Value>{Value(1), Value(2)}), std::nullopt},
        {yesNo, Value(u"No"_s), Value(false)},
        {yesNo, Value(-1), Value(true)},
        {yesNo, Value(u"maybe"_s), std::nullopt},
        {time, Value(u"12:05 AM"_s), Value(QDateTime(QDate(1899, 12, 30), QTime(0, 5)))},
        {time, Value(u"2024-13-45"_s), std::nullopt},
        {text, Value(42), Value(u"42"_s)},
        {text, Value::null(), Value::null()},
    };
    CommandQueue queue(*m_store);
    const int before = int(queue.pendingWrites().size());
    int queued = 0;
    for (const auto &[pid, written, expected] : cases) {
        SCOPED_TRACE(written.debugText().toStdString());
        ParameterPtr p = directory->GetPid(pid);
        const Error error = errorOf([&] { p->SetValues(3, written); });
        if (!expected) {
            EXPECT_EQ(error.number(), StoreError::TypeMismatch);
            continue;
        }
        EXPECT_EQ(error.number(), 0) << error.description().toStdString();
        const QList<PendingWrite> writes = queue.pendingWrites();
        ASSERT_EQ(writes.size(), before + ++queued);
        EXPECT_EQ(writes.last().value.debugText(), expected->debugText());
    }
    // Only the service's write mode is accepted, and change-pending is the queue's to set.
    ParameterPtr p = directory->GetPid(number);
    for (const int mode : {0, 1, 2, 4}) {
        EXPECT_THROW(p->SetValues(mode, Value(1)), Error);
    }
    EXPECT_THROW(p->SetAttribute(SettingAttr::ChangePending, Value(true)), Error);
    EXPECT_EQ(queue.pendingWrites().size(), before + queued);
}

TEST_P(DataInterfaceTest, AttributeWritesAreImmediateAndAudited)
{
    demo();
    auto di = as(u"operator"_s);
    const qint32 pid = BuildPid(1, 101, 0, 0, 1); // SO2 1-minute average, an alarm parameter
    ParameterPtr alarm = di->GetPidDirectory()->GetPid(pid);
    const Value before = alarm->GetAttribute(SettingAttr::SetpointH);
    alarm->SetAttribute(SettingAttr::SetpointH, Value(475.5));
    alarm->SetAttribute(SettingAttr::SetpointLL, Value());
    EXPECT_EQ(alarm->GetAttribute(SettingAttr::SetpointH), Value(475.5));
    EXPECT_TRUE(alarm->GetAttribute(SettingAttr::SetpointLL).isEmpty());

    auto fresh = SiteStore::open(site())->parameter(pid);
    EXPECT_EQ(*fresh->attribute(SettingAttr::SetpointH), Value(475.5));
    EXPECT_EQ(rows(u"SELECT user_name || '|' || client_name || '|' || COALESCE(old_val, '')"
                   u" || '|' || new_val FROM audit_trail WHERE pid = "_s
                   + QString::number(pid) + u" AND attribute = "_s
                   + QString::number(SettingAttr::SetpointH)),
              QStringList{u"operator|"_s + di->ClientName() + u'|'
                          + (before.isNull() ? QString() : QString::number(*before.toInteger()))
                          + u"|475.5"_s});
    EXPECT_EQ(auditRows(pid), 2);
}

TEST_P(DataInterfaceTest, UsersHoldTheirPrivilegesAndSecurityFailsClosed)
{
    demo();
    const qint32 span = DemoPids::unit1SO2Span();
    const std::tuple<QString, bool, bool> cases[] = {{u"admin"_s, true, true},
                                                     {u"operator"_s, true, false},
                                                     {u"viewer"_s, false, false},
                                                     {u"OPERATOR"_s, true, false}};
    for (const auto &[name, changes, imports] : cases) {
        SCOPED_TRACE(name.toStdString());
        auto di = as(name);
        auto user = di->GetUser();
        EXPECT_EQ(user->UserName().toLower(), name.toLower());
        EXPECT_EQ(user->HasPrivilege(Privileges::ChangeSettings), changes);
        EXPECT_EQ(user->HasPrivilege(Privileges::ImportSettings), imports);

        SiteSecurity security(name);
        EXPECT_FALSE(security.CanChangeSetting(span, true)) << "refuses before Initialize";
        const ConnectionDescription cd = di->ConnectionSettings();
        security.Initialize(cd.DataConnection, cd.SecondaryDataConnection, cd.DasConnection,
                            cd.SecondaryDasConnection, di->ClientName(), 0);
        EXPECT_EQ(security.CanChangeSetting(span, true), changes);
        EXPECT_FALSE(security.CanChangeSetting(span, false));
        EXPECT_FALSE(security.CanChangeSetting(DemoPids::undefinedMember(), true));
    }
    EXPECT_THROW(as(u"nobody"_s), Error);

    SiteSecurity badSite(u"admin"_s);
    badSite.Initialize(u"mysql://nowhere"_s, {}, {}, {}, {}, 0);
    EXPECT_FALSE(badSite.CanChangeSetting(span, true));
    SiteSecurity unknownUser(u"intruder"_s, m_store);
    unknownUser.Initialize(site(), {}, {}, {}, {}, 0);
    EXPECT_FALSE(unknownUser.CanChangeSetting(span, true));
    // A privilege taken away after Initialize counts at once.
    SiteSecurity security(u"operator"_s, m_store);
    security.Initialize(site(), {}, {}, {}, {}, 0);
    ASSERT_TRUE(security.CanChangeSetting(span, true));
    m_store->sql().execute(u"DELETE FROM user_privileges WHERE user_name = 'operator'"_s);
    EXPECT_FALSE(security.CanChangeSetting(span, true));
}

TEST_P(DataInterfaceTest, MessageRecordsGoIntoTheQueueWithTheirSender)
{
    demo();
    auto di = as(u"operator"_s);
    auto records = di->GetMessageRecords();
    QString errorText = u"stale"_s;
    bool ok = false;
    const QString text = u"<Command action=\"RaiseMsg\" msg=\"a &amp; b\" />"_s;
    for (const QString &siteId : {di->GetSiteId(), u"OTHERSITE"_s}) {
        records->PostMessageRecord(errorText, siteId, u"Q1DRCOMMAND-CAL"_s, text, QString(),
                                   QString(), u"CSET-0096"_s, ok);
        EXPECT_EQ(ok, siteId == di->GetSiteId());
        EXPECT_EQ(errorText.isEmpty(), ok);
    }
    EXPECT_TRUE(errorText.contains(u"OTHERSITE"_s));

    const QList<CommandRecord> queued = CommandQueue(*m_store).commands();
    ASSERT_EQ(queued.size(), 1);
    const CommandRecord &q = queued[0];
    EXPECT_EQ((QStringList{q.text, q.recordType, q.sourceCode, q.userName, q.clientAddress}),
              (QStringList{text, u"Q1DRCOMMAND-CAL"_s, u"CSET-0096"_s, u"operator"_s,
                           di->ClientAddress()}));
    EXPECT_EQ(q.state, QueueItem::State::Queued);
}

TEST_P(DataInterfaceTest, CurrentDataChannelsAndLogAnswerFromTheSite)
{
    demo();
    SiteCurrentDataReader reader(m_store);
    auto pending = reader.GetCurrentDataItem(DemoPids::unit1SO2NOxCal(), u"1m"_s);
    ASSERT_TRUE(pending);
    EXPECT_TRUE(pending->Text().contains(u"<CalConfirmPending>1</CalConfirmPending>"_s));
    auto expired = reader.GetCurrentDataItem(BuildPid(1, 103, 3, 0, 1), u"1m"_s);
    ASSERT_TRUE(expired);
    EXPECT_TRUE(expired->Text().isEmpty());
    EXPECT_EQ(expired->Status(), kStatusExpired);
    EXPECT_FALSE(reader.GetCurrentDataItem(DemoPids::unit1SO2NOxCal(), u"1h"_s));
    EXPECT_FALSE(reader.GetCurrentDataItem(DemoPids::unit1SO2Span(), u"1m"_s));

    auto di = as(u"viewer"_s);
    EXPECT_EQ(di->GetChannelKind(34), 4);
    EXPECT_EQ(di->GetChannelKind(99), 0) << "no such channel";
    di->MessageLog()->LogMessage(Severity::Error, u"CSET-0041: test line"_s);
    EXPECT_EQ(m_store->sql()
                  .scalar(u"SELECT count(*) FROM message_log WHERE severity = 4"
                          u" AND text = 'CSET-0041: test line'"_s)
                  .toInt(),
              1);
    EXPECT_FALSE(di->AlternativeState());
    m_store->setAlternativeState(true);
    di->GetPidDirectory();
    EXPECT_TRUE(di->AlternativeState());
}

INSTANTIATE_TEST_SUITE_P(Host, DataInterfaceTest, OLVEX_TEST_BACKENDS, backendName);

} // namespace
