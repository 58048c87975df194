// The host objects over the store, on each backend: batched reads, value writes through the
// service's queue, attribute writes with their audit rows, users, privileges and security.
#include "testsite.h"

#include "common/error.h"
#include "common/pid.h"
#include "host/commandqueue.h"
#include "host/demosite.h"
#include "host/sitedatainterface.h"
#include "host/sitesecurity.h"
#include "host/siteservices.h"
#include "host/storeerrors.h"
#include "settings/settingattributes.h"
#include "settings/settingdisplay.h"

#include <QSqlQuery>

#include <chrono>

using namespace olvex;
using namespace olvex::test;
using namespace std::chrono_literals;

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
    int auditRows(qint32 pid, const QString &where = QString())
    {
        QSqlQuery q
            = m_store->sql().prepare(u"SELECT count(*) FROM audit_trail WHERE pid = ?" + where);
        q.addBindValue(pid);
        m_store->sql().exec(q);
        return q.next() ? q.value(0).toInt() : -1;
    }
};

TEST_P(DataInterfaceTest, ListsComeAscendingByPidWithTheirTypes)
{
    demo();
    auto di = as(QStringLiteral("viewer"));
    const SiteCounts counts = m_store->counts();
    for (const QList<int> &types :
         QList<QList<int>>{{4}, {5}, {62}, {79}, {62, 79}, {79, 62, 79}}) {
        const ParameterList list = di->GetPidsOfTypes(types);
        int expected = 0;
        for (const int type : QSet<int>(types.begin(), types.end())) {
            expected += counts.parametersByType.value(type);
        }
        ASSERT_EQ(list.size(), expected);
        for (int i = 0; i < list.size(); ++i) {
            EXPECT_TRUE(types.contains(list[i]->ParameterType()));
            if (i > 0) {
                EXPECT_LT(list[i - 1]->PidNumber(), list[i]->PidNumber());
            }
        }
    }
    EXPECT_TRUE(di->GetPidsOfTypes({12345}).isEmpty());
}

TEST_P(DataInterfaceTest, AListFillCostsAFewQueriesWhateverItsLength)
{
    demo();
    auto di = as(QStringLiteral("viewer"));
    const quint64 start = statements();
    const ParameterList settings = di->GetPidsOfTypes({ParameterTypes::Setting});
    const quint64 afterList = statements();
    EXPECT_LE(afterList - start, 10u) << "definitions and live states come in batches";
    for (const ParameterPtr &p : settings) {
        p->GetName(0);
        for (const int number : kSettingAttributes) {
            p->GetAttribute(number);
        }
        p->GetCurrentValue();
    }
    EXPECT_EQ(statements(), afterList) << "reading the list's objects costs no query";

    // The settings editor's group fill: the definitions come from the cache; each row costs one
    // query for its live state (value and change-pending together).
    auto directory = di->GetPidDirectory();
    const ParameterPtr group = directory->GetPid(DemoPids::unit1SO2Group(), true);
    const QList<Value> members = group->GetAttribute(GroupAttr::Members).toArray();
    ASSERT_EQ(members.size(), 16);
    const quint64 beforeRows = statements();
    for (const Value &member : members) {
        const qint32 pid = qint32(*member.toInteger());
        ASSERT_TRUE(directory->PidExists(pid));
        settingRowState(*directory->GetPid(pid, true), di->AlternativeState(), nullptr);
        for (const int number : kSettingAttributes) {
            directory->GetPid(pid, true)->GetAttribute(number);
        }
    }
    EXPECT_LE(statements() - beforeRows, quint64(members.size()) * 2);
}

// A group's members as PIDs, with an undefined member and a repeated one at the end.
QList<qint32> groupRows(PidDirectory &directory)
{
    QList<qint32> pids;
    const Value members
        = directory.GetPid(DemoPids::unit1SO2Group(), true)->GetAttribute(GroupAttr::Members);
    for (const Value &member : members.toArray()) {
        pids.append(qint32(*member.toInteger()));
    }
    pids << DemoPids::undefinedMember() << DemoPids::unit1SO2Span();
    return pids;
}

TEST_P(DataInterfaceTest, AGroupsRowsComeInOneCallWhateverItsLength)
{
    demo();
    const QList<qint32> rows = groupRows(*as(QStringLiteral("viewer"))->GetPidDirectory());
    ASSERT_GE(rows.size(), 10);
    // A fresh data interface each, so that no definition is cached: a short list and the whole
    // group cost the same few statements, and reading every row's state costs none.
    std::optional<quint64> cost;
    for (const qsizetype length : {qsizetype(2), rows.size()}) {
        SCOPED_TRACE(length);
        auto di = as(QStringLiteral("viewer"));
        auto directory = di->GetPidDirectory();
        const QList<qint32> pids = rows.mid(rows.size() - length);
        const quint64 start = statements();
        const ParameterList parameters = directory->GetPids(pids);
        const quint64 afterList = statements();
        ASSERT_EQ(parameters.size(), pids.size());
        for (qsizetype i = 0; i < pids.size(); ++i) {
            const ParameterPtr &p = parameters[i];
            ASSERT_EQ(p != nullptr, pids[i] != DemoPids::undefinedMember()) << pids[i];
            if (p) {
                EXPECT_EQ(p->PidNumber(), pids[i]);
                p->GetName(0);
                // What the editor reads of a row: the value, change-pending and definition.
                settingRowState(*p, di->AlternativeState(), nullptr);
                p->GetAttribute(SettingAttr::DefaultValue);
            }
        }
        EXPECT_EQ(statements(), afterList) << "the rows' first reads come with the list";
        EXPECT_LE(afterList - start, 6u);
        if (cost) {
            EXPECT_EQ(afterList - start, *cost) << "the cost does not grow with the list";
        }
        cost = afterList - start;
    }
}

TEST_P(DataInterfaceTest, AGroupsRowsShowWhatTheSiteHoldsAtEachCall)
{
    demo();
    auto di = as(QStringLiteral("operator"));
    auto directory = di->GetPidDirectory();
    const QList<qint32> pids = groupRows(*directory);
    // The same as asking one by one.
    const ParameterList together = directory->GetPids(pids);
    for (qsizetype i = 0; i < pids.size(); ++i) {
        if (!together[i]) {
            EXPECT_FALSE(directory->PidExists(pids[i]));
            continue;
        }
        const ParameterPtr alone = directory->GetPid(pids[i], true);
        EXPECT_EQ(together[i]->GetName(0), alone->GetName(0));
        EXPECT_EQ(together[i]->GetCurrentValue().Value.debugText(),
                  alone->GetCurrentValue().Value.debugText());
        EXPECT_EQ(together[i]->GetAttribute(SettingAttr::ChangePending),
                  alone->GetAttribute(SettingAttr::ChangePending))
            << pids[i];
    }

    // Another program changes values between two fills.
    const qint32 span = DemoPids::unit1SO2Span();
    const qint32 serial = DemoPids::unit1SO2SerialNumber();
    auto other = SiteStore::open(site());
    other->setCurrentValue(span, Value(432), 0, Actor{}, QStringLiteral("test"));
    other->queueValueWrite(serial, Value(QStringLiteral("SN-2")), Actor{});

    struct Case
    {
        qint32 pid;
        Value value; // Empty: not checked
        bool pending;
    };
    const QList<Case> cases{{span, Value(432), false}, {serial, Value(), true}};
    const ParameterList again = di->GetPidDirectory()->GetPids(pids);
    for (const Case &c : cases) {
        SCOPED_TRACE(c.pid);
        const qsizetype at = pids.indexOf(c.pid);
        ASSERT_GE(at, 0);
        if (!c.value.isEmpty()) {
            EXPECT_EQ(again[at]->GetCurrentValue().Value, c.value) << "the next fill";
            EXPECT_EQ(together[at]->GetCurrentValue().Value, c.value)
                << "a row of the earlier fill, read again";
        }
        EXPECT_EQ(again[at]->GetAttribute(SettingAttr::ChangePending).isTrue(), c.pending);
        EXPECT_EQ(together[at]->GetAttribute(SettingAttr::ChangePending).isTrue(), c.pending);
    }
    EXPECT_TRUE(di->GetPidDirectory()->GetPids({}).isEmpty());
}

TEST_P(DataInterfaceTest, AnotherProgramsDefinitionChangeShowsAtTheNextFill)
{
    demo();
    auto di = as(QStringLiteral("viewer"));
    const qint32 pid = DemoPids::unit1SO2Span();
    ParameterPtr held = di->GetPidDirectory()->GetPid(pid, true);
    EXPECT_EQ(held->GetAttribute(SettingAttr::RecommendedHigh), Value(1000));

    auto other = SiteStore::open(site());
    other->setAttribute(pid, SettingAttr::RecommendedHigh, Value(900), Actor{});
    // A new fill checks the revision once and then sees the change, also through objects it
    // handed out before.
    di->GetPidDirectory();
    EXPECT_EQ(held->GetAttribute(SettingAttr::RecommendedHigh), Value(900));
    EXPECT_EQ(di->GetPidsOfTypes({4}).first()->ParameterType(), 4);
}

TEST_P(DataInterfaceTest, ValueWriteIsPendingUntilTheServiceAppliesIt)
{
    demo();
    auto di = as(QStringLiteral("operator"));
    const qint32 pid = DemoPids::unit1SO2Span();
    ParameterPtr span = di->GetPidDirectory()->GetPid(pid, true);
    EXPECT_FALSE(span->GetAttribute(SettingAttr::ChangePending).isTrue());
    EXPECT_EQ(span->GetCurrentValue().Value, Value(500));

    span->SetValues(3, Value(450));
    EXPECT_TRUE(span->GetAttribute(SettingAttr::ChangePending).isTrue());
    EXPECT_EQ(span->GetCurrentValue().Value, Value(500)) << "nothing applied yet";
    EXPECT_EQ(settingRowState(*span, false, nullptr).valueText, QStringLiteral("Updating..."));
    // Every other program sees it pending too.
    auto viewer = std::make_unique<SiteDataInterface>(SiteStore::open(site()),
                                                      HostSession(QStringLiteral("viewer")));
    EXPECT_TRUE(viewer->GetPidDirectory()->GetPid(pid)->GetAttribute(-91).isTrue());

    CommandQueue queue(*m_store);
    std::optional<PendingWrite> write;
    while ((write = queue.claimPendingWrite(QStringLiteral("das"), 30s))) {
        if (write->pid == pid) {
            break;
        }
        ASSERT_TRUE(queue.applyPendingWrite(*write, QStringLiteral("das")));
    }
    ASSERT_TRUE(write);
    EXPECT_EQ(write->value, Value(450));
    EXPECT_EQ(write->userName, QStringLiteral("operator"));
    ASSERT_TRUE(queue.applyPendingWrite(*write, QStringLiteral("das")));

    ParameterPtr after = viewer->GetPidDirectory()->GetPid(pid);
    EXPECT_FALSE(after->GetAttribute(SettingAttr::ChangePending).isTrue());
    EXPECT_EQ(after->GetCurrentValue().Value, Value(450));
    EXPECT_FALSE(span->GetAttribute(SettingAttr::ChangePending).isTrue());
    EXPECT_EQ(auditRows(pid, QStringLiteral(" AND attribute IS NULL AND user_name = 'operator'")),
              1);
}

TEST_P(DataInterfaceTest, AnAppliedGasValueUpdatesItsCylindersGasList)
{
    demo();
    auto di = as(QStringLiteral("operator"));
    const qint32 no = BuildPid(0, 201, 4, 1, 2); // cylinder A's second gas, NO
    di->GetPidDirectory()->GetPid(no)->SetValues(3, Value(QStringLiteral("260.25")));
    CommandQueue queue(*m_store);
    while (auto write = queue.claimPendingWrite(QStringLiteral("das"), 30s)) {
        ASSERT_TRUE(queue.applyPendingWrite(*write, QStringLiteral("das")));
    }
    auto fresh = std::make_unique<SiteDataInterface>(SiteStore::open(site()),
                                                     HostSession(QStringLiteral("viewer")));
    auto directory = fresh->GetPidDirectory();
    EXPECT_EQ(directory->GetPid(DemoPids::cylinderA())->GetAttribute(-312).toText(),
              QStringLiteral("SO2,450.5,ppm;NO,260.25,ppm;CO2,12,%"));
    EXPECT_TRUE(directory->GetPid(DemoPids::cylinderD())
                    ->GetAttribute(-312)
                    .toText()
                    .contains(QStringLiteral("NO,120,ppm")))
        << "another cylinder's NO stays as it was";
}

TEST_P(DataInterfaceTest, WrittenValuesTakeTheSettingsDataType)
{
    demo();
    auto di = as(QStringLiteral("admin"));
    auto directory = di->GetPidDirectory();
    struct Case
    {
        qint32 pid;
        Value written;
        std::optional<Value> queued; // nullopt: refused as a type mismatch
    };
    const qint32 number = DemoPids::unit1SO2Span();
    const qint32 yesNo = BuildPid(1, 101, 1, 0, 10);
    const qint32 time = BuildPid(1, 101, 1, 0, 8);
    const qint32 text = BuildPid(1, 101, 1, 0, 12);
    const QList<Case> cases{
        {number, Value(QStringLiteral("12.5")), Value(12.5)},
        {number, Value(QStringLiteral(" 40 ")), Value(40)},
        {number, Value(QList<Value>{Value(QStringLiteral("7"))}), Value(7)}, // as the import does
        {number, Value(true), Value(-1)},
        {number, Value(QStringLiteral("12x")), std::nullopt},
        {number, Value(QList<Value>{Value(1), Value(2)}), std::nullopt},
        {yesNo, Value(QStringLiteral("No")), Value(false)},
        {yesNo, Value(QStringLiteral("True")), Value(true)},
        {yesNo, Value(-1), Value(true)},
        {yesNo, Value(QStringLiteral("maybe")), std::nullopt},
        {time, Value(QStringLiteral("12:05 AM")),
         Value(QDateTime(QDate(1899, 12, 30), QTime(0, 5)))},
        {time, Value(QStringLiteral("2024-13-45")), std::nullopt},
        {text, Value(42), Value(QStringLiteral("42"))},
        {text, Value::null(), Value::null()},
    };
    CommandQueue queue(*m_store);
    const int before = int(queue.pendingWrites().size());
    int queued = 0;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.written.debugText().toStdString());
        ParameterPtr p = directory->GetPid(c.pid);
        if (!c.queued) {
            try {
                p->SetValues(3, c.written);
                ADD_FAILURE() << "accepted";
            } catch (const Error &error) {
                EXPECT_EQ(error.number(), StoreError::TypeMismatch);
            }
            continue;
        }
        p->SetValues(3, c.written);
        ++queued;
        const QList<PendingWrite> writes = queue.pendingWrites();
        ASSERT_EQ(writes.size(), before + queued);
        EXPECT_EQ(writes.last().value.debugText(), c.queued->debugText());
    }
}

TEST_P(DataInterfaceTest, OnlyTheServicesWriteModeIsAccepted)
{
    demo();
    ParameterPtr p
        = as(QStringLiteral("admin"))->GetPidDirectory()->GetPid(DemoPids::unit1SO2Span());
    for (const int mode : {0, 1, 2, 4}) {
        EXPECT_THROW(p->SetValues(mode, Value(1)), Error);
    }
    EXPECT_THROW(p->SetAttribute(SettingAttr::ChangePending, Value(true)), Error);
}

TEST_P(DataInterfaceTest, AttributeWritesAreImmediateAndAudited)
{
    demo();
    auto di = as(QStringLiteral("operator"));
    const qint32 pid = BuildPid(1, 101, 0, 0, 1); // SO2 1-minute average, an alarm parameter
    ParameterPtr alarm = di->GetPidDirectory()->GetPid(pid);
    const Value before = alarm->GetAttribute(SettingAttr::SetpointH);
    alarm->SetAttribute(SettingAttr::SetpointH, Value(475.5));
    alarm->SetAttribute(SettingAttr::SetpointLL, Value());
    EXPECT_EQ(alarm->GetAttribute(SettingAttr::SetpointH), Value(475.5));
    EXPECT_TRUE(alarm->GetAttribute(SettingAttr::SetpointLL).isEmpty());

    auto fresh = SiteStore::open(site())->parameter(pid);
    EXPECT_EQ(*fresh->attribute(SettingAttr::SetpointH), Value(475.5));
    QSqlQuery q = m_store->sql().prepare(QStringLiteral(
        "SELECT user_name, client_name, old_vkind, old_val, new_vkind, new_val FROM audit_trail"
        " WHERE pid = ? AND attribute = ?"));
    q.addBindValue(pid);
    q.addBindValue(SettingAttr::SetpointH);
    m_store->sql().exec(q);
    ASSERT_TRUE(q.next());
    EXPECT_EQ(q.value(0).toString(), QStringLiteral("operator"));
    EXPECT_EQ(q.value(1).toString(), di->ClientName());
    EXPECT_EQ(q.value(3).toString(),
              before.isNull() ? QString() : QString::number(*before.toInteger()));
    EXPECT_EQ(q.value(5).toString(), QStringLiteral("475.5"));
    EXPECT_EQ(auditRows(pid), 2);
}

TEST_P(DataInterfaceTest, UndefinedPidsAreReportedNotInvented)
{
    demo();
    auto directory = as(QStringLiteral("viewer"))->GetPidDirectory();
    const qint32 missing = DemoPids::undefinedMember();
    EXPECT_FALSE(directory->PidExists(missing));
    try {
        directory->GetPid(missing);
        ADD_FAILURE() << "an undefined PID gave a parameter";
    } catch (const Error &error) {
        EXPECT_EQ(error.number(), StoreError::UnknownPid);
        EXPECT_TRUE(error.description().contains(FormatPid(missing)));
    }
    const QList<Value> members = directory->GetPid(DemoPids::dataAcquisitionGroup())
                                     ->GetAttribute(GroupAttr::Members)
                                     .toArray();
    EXPECT_TRUE(members.contains(Value(missing)));
}

TEST_P(DataInterfaceTest, UsersHoldTheirPrivileges)
{
    demo();
    struct Case
    {
        QString user;
        bool changes;
        bool imports;
    };
    for (const Case &c :
         {Case{QStringLiteral("admin"), true, true}, Case{QStringLiteral("operator"), true, false},
          Case{QStringLiteral("viewer"), false, false},
          Case{QStringLiteral("OPERATOR"), true, false}}) {
        SCOPED_TRACE(c.user.toStdString());
        auto di = as(c.user);
        auto user = di->GetUser();
        EXPECT_EQ(user->UserName().toLower(), c.user.toLower());
        EXPECT_EQ(user->HasPrivilege(HostPrivileges::ChangeSettings), c.changes);
        EXPECT_EQ(user->HasPrivilege(Privileges::ImportSettings), c.imports);

        SiteSecurity security(c.user);
        EXPECT_FALSE(security.CanChangeSetting(DemoPids::unit1SO2Span(), true))
            << "refuses before Initialize";
        const ConnectionDescription cd = di->ConnectionSettings();
        security.Initialize(cd.DataConnection, cd.SecondaryDataConnection, cd.DasConnection,
                            cd.SecondaryDasConnection, di->ClientName(), 0);
        EXPECT_EQ(security.CanChangeSetting(DemoPids::unit1SO2Span(), true), c.changes);
        EXPECT_FALSE(security.CanChangeSetting(DemoPids::unit1SO2Span(), false));
        EXPECT_FALSE(security.CanChangeSetting(DemoPids::undefinedMember(), true));
    }
    EXPECT_THROW(as(QStringLiteral("nobody")), Error);
}

TEST_P(DataInterfaceTest, SecurityFailsClosed)
{
    demo();
    SiteSecurity badSite(QStringLiteral("admin"));
    badSite.Initialize(QStringLiteral("mysql://nowhere"), {}, {}, {}, {}, 0);
    EXPECT_FALSE(badSite.CanChangeSetting(DemoPids::unit1SO2Span(), true));

    SiteSecurity unknownUser(QStringLiteral("intruder"), m_store);
    unknownUser.Initialize(site(), {}, {}, {}, {}, 0);
    EXPECT_FALSE(unknownUser.CanChangeSetting(DemoPids::unit1SO2Span(), true));

    // A privilege taken away after Initialize counts at once.
    SiteSecurity security(QStringLiteral("operator"), m_store);
    security.Initialize(site(), {}, {}, {}, {}, 0);
    ASSERT_TRUE(security.CanChangeSetting(DemoPids::unit1SO2Span(), true));
    m_store->sql().execute(
        QStringLiteral("DELETE FROM user_privileges WHERE user_name = 'operator'"));
    EXPECT_FALSE(security.CanChangeSetting(DemoPids::unit1SO2Span(), true));
}

TEST_P(DataInterfaceTest, MessageRecordsGoIntoTheQueueWithTheirSender)
{
    demo();
    auto di = as(QStringLiteral("operator"));
    auto records = di->GetMessageRecords();
    QString errorText = QStringLiteral("stale");
    bool ok = false;
    const QString text = QStringLiteral("<Command action=\"RaiseMsg\" msg=\"a &amp; b\" />");
    records->PostMessageRecord(errorText, di->GetSiteId(), QStringLiteral("Q1DRCOMMAND-CAL"), text,
                               QString(), QString(), QStringLiteral("CSET-0096"), ok);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(errorText.isEmpty());
    records->PostMessageRecord(errorText, QStringLiteral("OTHERSITE"),
                               QStringLiteral("Q1DRCOMMAND-CAL"), text, QString(), QString(),
                               QStringLiteral("CSET-0096"), ok);
    EXPECT_FALSE(ok);
    EXPECT_TRUE(errorText.contains(QStringLiteral("OTHERSITE")));

    const QList<CommandRecord> queued = CommandQueue(*m_store).commands();
    ASSERT_EQ(queued.size(), 1);
    EXPECT_EQ(queued[0].text, text);
    EXPECT_EQ(queued[0].recordType, QStringLiteral("Q1DRCOMMAND-CAL"));
    EXPECT_EQ(queued[0].sourceCode, QStringLiteral("CSET-0096"));
    EXPECT_EQ(queued[0].userName, QStringLiteral("operator"));
    EXPECT_EQ(queued[0].clientAddress, di->ClientAddress());
    EXPECT_EQ(queued[0].state, QueueItem::State::Queued);
}

TEST_P(DataInterfaceTest, CurrentDataChannelsAndLogAnswerFromTheSite)
{
    demo();
    SiteCurrentDataReader reader(m_store);
    auto pending = reader.GetCurrentDataItem(DemoPids::unit1SO2NOxCal(), QStringLiteral("1m"));
    ASSERT_TRUE(pending);
    EXPECT_TRUE(
        pending->Text().contains(QStringLiteral("<CalConfirmPending>1</CalConfirmPending>")));
    auto expired = reader.GetCurrentDataItem(BuildPid(1, 103, 3, 0, 1), QStringLiteral("1m"));
    ASSERT_TRUE(expired);
    EXPECT_TRUE(expired->Text().isEmpty());
    EXPECT_EQ(expired->Status(), kStatusExpired);
    EXPECT_FALSE(reader.GetCurrentDataItem(DemoPids::unit1SO2NOxCal(), QStringLiteral("1h")));
    EXPECT_FALSE(reader.GetCurrentDataItem(DemoPids::unit1SO2Span(), QStringLiteral("1m")));

    auto di = as(QStringLiteral("viewer"));
    const QList<std::pair<int, int>> channels{{12, 1}, {22, 2}, {33, 3}, {34, 4}, {35, 5}, {99, 0}};
    for (const auto &[channel, kind] : channels) {
        EXPECT_EQ(di->GetChannelKind(channel), kind) << channel;
    }
    di->MessageLog()->LogMessage(Severity::Error, QStringLiteral("CSET-0041: test line"));
    EXPECT_EQ(m_store->sql()
                  .scalar(QStringLiteral("SELECT count(*) FROM message_log WHERE severity = 4"
                                         " AND text = 'CSET-0041: test line'"))
                  .toInt(),
              1);
    EXPECT_EQ(di->ConnectionSettings().DataConnection, site());
    EXPECT_EQ(di->GetSiteId(), QStringLiteral("MILLCREEK"));

    EXPECT_FALSE(di->AlternativeState());
    m_store->setAlternativeState(true);
    di->GetPidDirectory();
    EXPECT_TRUE(di->AlternativeState());
}

INSTANTIATE_TEST_SUITE_P(Host, DataInterfaceTest, OLVEX_TEST_BACKENDS, backendName);

} // namespace
