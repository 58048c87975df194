// The demo site holds what every component needs to show, on each backend alike.
#include "testsite.h"

#include "common/pid.h"
#include "common/xml.h"
#include "host/demosite.h"
#include "host/sitedatainterface.h"
#include "common/vocabulary.h"

#include <QSet>

using namespace olvex;
using namespace olvex::test;
using namespace Qt::StringLiterals;

namespace {

// What a calibration's start record must hold for the start dialog.
const QStringList kCalStartElements
    = u"CalEnabled CalStartTimeUser SkipIfOffline SkipDailyCalIfOnlineCalExists CalDelayMinutes"
      u" CalAfterStartup CalAfterEnterNormalOps SkipStartupCalIfOnlineCalExists CalEvery26OpHours"
      u" CalConfirmEnabled CalConfirmTimeout CalConfirmDefaultConfirm NormalOpSupported"
      u" CanDetermineOpHours CalConfirmSupported ManualCalStartSupported ManualCalAbortSupported"
      u" UserFriendlyStatus OpHoursSinceOnlineCal OpHoursStatusString CalConfirmPending"_s.split(
          u' ');

class DemoSiteTest : public BackendTest
{
protected:
    ParameterList all(int type)
    {
        if (!m_di) {
            m_di = std::make_unique<SiteDataInterface>(m_store, HostSession(u"viewer"_s));
        }
        return m_di->GetPidsOfTypes({type});
    }
    std::unique_ptr<SiteDataInterface> m_di;
};

TEST_P(DemoSiteTest, CountsAreTheSameOnEveryBackend)
{
    demo();
    const SiteCounts counts = m_store->counts();
    const QMap<int, int> expected{{2, 30}, {4, 206}, {5, 31}, {62, 4}, {79, 4}};
    EXPECT_EQ(counts.parametersByType, expected);
    EXPECT_EQ(counts.users, 3);
    EXPECT_EQ(counts.queuedWrites, 3);
    EXPECT_EQ(m_store->siteId(), u"MILLCREEK"_s);
}

TEST_P(DemoSiteTest, GroupsFormATreeThreeDeepWithTheOrderCasesOfAPlant)
{
    demo();
    const ParameterList groups = all(ParameterTypes::SettingGroup);
    QHash<qint32, ParameterPtr> byPid;
    for (const ParameterPtr &g : groups) {
        byPid.insert(g->PidNumber(), g);
    }
    int deepest = 0;
    int alarmGroups = 0;
    bool orderTenOrMore = false;
    QHash<std::pair<qint32, qint64>, int> siblingsByOrder;
    int undefinedMembers = 0;
    bool noMemberAttribute = false;
    bool emptyMemberList = false;
    for (const ParameterPtr &g : groups) {
        int depth = 1;
        qint32 parent = qint32(g->GetAttribute(GroupAttr::ParentPid).toInteger().value_or(0));
        EXPECT_EQ(g->GetAttribute(GroupAttr::HasParent).isTrue(), parent != 0);
        while (parent != 0) {
            ASSERT_TRUE(byPid.contains(parent)) << "a parent is itself a group";
            ++depth;
            parent
                = qint32(byPid[parent]->GetAttribute(GroupAttr::ParentPid).toInteger().value_or(0));
        }
        deepest = std::max(deepest, depth);
        const qint64 order = *g->GetAttribute(GroupAttr::Order).toInteger();
        orderTenOrMore = orderTenOrMore || order >= 10;
        ++siblingsByOrder[{qint32(*g->GetAttribute(GroupAttr::ParentPid).toInteger()), order}];
        const Value members = g->GetAttribute(GroupAttr::Members);
        noMemberAttribute = noMemberAttribute || members.isNull();
        emptyMemberList = emptyMemberList || (members.isArray() && members.toArray().isEmpty());
        const bool alarm = g->GetAttribute(GroupAttr::AlarmGroup).isTrue();
        alarmGroups += alarm ? 1 : 0;
        for (const Value &member : members.toArray()) {
            const qint32 pid = qint32(*member.toInteger());
            EXPECT_TRUE(IsValidPid(pid));
            if (!m_di->GetPidDirectory()->PidExists(pid)) {
                ++undefinedMembers;
                continue;
            }
            const ParameterPtr p = m_di->GetPidDirectory()->GetPid(pid);
            if (alarm) {
                EXPECT_FALSE(p->GetAttribute(SettingAttr::SetpointHH).isNull());
            } else {
                EXPECT_EQ(p->ParameterType(), ParameterTypes::Setting);
            }
        }
    }
    EXPECT_EQ(deepest, 3);
    EXPECT_EQ(alarmGroups, 10);
    EXPECT_TRUE(orderTenOrMore);
    EXPECT_TRUE(std::any_of(siblingsByOrder.cbegin(), siblingsByOrder.cend(), [](int n) {
        return n > 1;
    })) << "some siblings share an order number";
    EXPECT_EQ(undefinedMembers, 1);
    EXPECT_TRUE(noMemberAttribute);
    EXPECT_TRUE(emptyMemberList);
}

TEST_P(DemoSiteTest, SettingsCoverEveryDataTypeAndState)
{
    demo();
    QSet<qint64> dataTypes;
    QMap<QString, int> seen; // how many settings show each case
    for (const ParameterPtr &p : all(ParameterTypes::Setting)) {
        const auto is = [&](int number) {
            return p->GetAttribute(number).isTrue();
        };
        EXPECT_TRUE(IsValidPid(p->PidNumber()));
        dataTypes.insert(*p->GetAttribute(SettingAttr::DataType).toInteger());
        seen[u"read-only"_s] += is(SettingAttr::Readable) && !is(SettingAttr::Changeable);
        seen[u"write-only"_s] += !is(SettingAttr::Readable) && is(SettingAttr::Changeable);
        seen[u"neither"_s] += !is(SettingAttr::Readable) && !is(SettingAttr::Changeable);
        seen[u"high level"_s] += p->GetAttribute(SettingAttr::Level).toInteger().value_or(0) > 50;
        seen[u"offline"_s] += !is(SettingAttr::AltReadable) && !is(SettingAttr::AltChangeable);
        seen[u"null value"_s] += p->GetCurrentValue().Value.isNull();
        seen[u"no unit"_s] += p->UnitName().isEmpty();
        seen[u"pending"_s] += is(SettingAttr::ChangePending);
    }
    EXPECT_EQ(dataTypes, (QSet<qint64>{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(seen.value(u"pending"_s), 3);
    for (auto it = seen.cbegin(); it != seen.cend(); ++it) {
        EXPECT_GT(it.value(), 0) << it.key().toStdString();
    }
}

TEST_P(DemoSiteTest, CalibrationParametersCarryFullStartRecords)
{
    demo();
    const ParameterList cals = all(ParameterTypes::Calibration);
    ASSERT_EQ(cals.size(), 4);
    QSet<bool> confirmation;
    QSet<QString> units;
    int inError = 0;
    for (const ParameterPtr &cal : cals) {
        confirmation.insert(cal->GetAttribute(-159).isTrue());
        units.insert(cal->UnitName());
        inError += cal->InError();
        const QString xml = cal->GetCurrentValue().Value.toText();
        const XmlDocument doc = LoadXmlDocument(nullptr, xml);
        ASSERT_TRUE(doc) << "the record is well-formed XML";
        EXPECT_FALSE(GetNodeText(doc, u"//CalStart/UserFriendlyStatus"_s).isEmpty());
        for (const QString &element : kCalStartElements) {
            EXPECT_TRUE(xml.contains(u'<' + element))
                << element.toStdString() << " in " << cal->GetName(0).toStdString();
        }
    }
    EXPECT_EQ(confirmation, (QSet<bool>{true, false}));
    EXPECT_EQ(units.size(), 2);
    EXPECT_EQ(inError, 1);
}

TEST_P(DemoSiteTest, CylindersNameTheirComponentGases)
{
    demo();
    QList<int> gasCounts;
    for (const ParameterPtr &cylinder : all(ParameterTypes::GasCylinder)) {
        const QStringList entries = cylinder->GetAttribute(-312).toText().split(u';');
        const QList<Value> gases = cylinder->GetAttribute(GroupAttr::Members).toArray();
        ASSERT_EQ(entries.size(), gases.size());
        gasCounts.append(int(gases.size()));
        EXPECT_TRUE(cylinder->GetAttribute(-307).isDateTime());
        for (const int number : {-306, -308, -309, -311}) {
            EXPECT_FALSE(cylinder->GetAttribute(number).toText().isEmpty()) << number;
        }
        for (int i = 0; i < gases.size(); ++i) {
            const ParameterPtr gas = m_di->GetPidDirectory()->GetPid(qint32(*gases[i].toInteger()));
            const QStringList parts = entries[i].split(u',');
            ASSERT_EQ(parts.size(), 3);
            EXPECT_TRUE(gas->GetName(0).endsWith(parts[0]));
            EXPECT_EQ(gas->GetCurrentValue().Value.toDouble(), Value(parts[1]).toDouble());
            EXPECT_EQ(m_di->GetUnitsLookup()->UnitsText(gas->PidNumber()), parts[2]);
        }
    }
    std::sort(gasCounts.begin(), gasCounts.end());
    EXPECT_EQ(gasCounts, (QList<int>{1, 2, 3, 6}));
}

TEST_P(DemoSiteTest, ScaleMakesTheAskedNumberOfSettingsAndGroups)
{
    DemoOptions options;
    options.scale = 3000;
    m_store = createDemoSite(site(), options);
    const SiteCounts counts = m_store->counts();
    EXPECT_EQ(counts.parametersByType.value(ParameterTypes::Setting), 3000);
    EXPECT_EQ(counts.parametersByType.value(ParameterTypes::SettingGroup), 150);
    EXPECT_GE(counts.parametersByType.value(ParameterTypes::Calibration), 4);
    // Every member of every group is a defined, valid PID.
    SiteDataInterface di(m_store, HostSession(u"viewer"_s));
    auto directory = di.GetPidDirectory();
    int members = 0;
    for (const ParameterPtr &g : di.GetPidsOfTypes({ParameterTypes::SettingGroup})) {
        for (const Value &member : g->GetAttribute(GroupAttr::Members).toArray()) {
            const qint32 pid = qint32(*member.toInteger());
            members += directory->PidExists(pid) ? 1 : 0;
            EXPECT_TRUE(IsValidPid(pid) || pid == DemoPids::undefinedMember());
        }
    }
    EXPECT_GE(members, 2900);
}

INSTANTIATE_TEST_SUITE_P(Demo, DemoSiteTest, OLVEX_TEST_BACKENDS, backendName);

} // namespace
