// The demo site holds every state a component must show, on each backend alike.
#include "testsite.h"

#include "common/pid.h"
#include "common/vocabulary.h"
#include "common/xml.h"
#include "host/demosite.h"
#include "host/sitedatainterface.h"

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
    ParameterList all(int type) { return di().GetPidsOfTypes({type}); }
    SiteDataInterface &di()
    {
        if (!m_di) {
            m_di = std::make_unique<SiteDataInterface>(m_store, HostSession(u"viewer"_s));
        }
        return *m_di;
    }
    std::unique_ptr<SiteDataInterface> m_di;
};

// The counts per type are pinned by olvex-settings info; the groups hold the cases the editor
// must show: alarm groups, an undefined member, a member list that is no list.
TEST_P(DemoSiteTest, SettingsAndGroupsCoverEveryDataTypeAndState)
{
    demo();
    const SiteCounts counts = m_store->counts();
    EXPECT_EQ(std::pair(counts.users, counts.queuedWrites), std::pair(3, 3));

    QSet<qint64> dataTypes;
    QMap<QString, int> seen; // how many settings or groups show each case
    for (const ParameterPtr &p : all(ParameterTypes::Setting)) {
        const auto is = [&](int number) {
            return p->GetAttribute(number).isTrue();
        };
        dataTypes.insert(*p->GetAttribute(SettingAttr::DataType).toInteger());
        seen[u"read-only"_s] += is(SettingAttr::Readable) && !is(SettingAttr::Changeable);
        seen[u"write-only"_s] += !is(SettingAttr::Readable) && is(SettingAttr::Changeable);
        seen[u"neither"_s] += !is(SettingAttr::Readable) && !is(SettingAttr::Changeable);
        seen[u"high level"_s] += p->GetAttribute(SettingAttr::Level).toInteger().value_or(0) > 50;
        seen[u"offline"_s] += !is(SettingAttr::AltReadable) && !is(SettingAttr::AltChangeable);
        seen[u"null value"_s] += p->GetCurrentValue().Value.isNull();
        seen[u"pending"_s] += is(SettingAttr::ChangePending);
        seen[u"no unit"_s] += p->UnitName().isEmpty();
    }
    auto directory = di().GetPidDirectory();
    for (const ParameterPtr &g : all(ParameterTypes::SettingGroup)) {
        const Value members = g->GetAttribute(GroupAttr::Members);
        seen[u"alarm group"_s] += g->GetAttribute(GroupAttr::AlarmGroup).isTrue();
        seen[u"no member list"_s] += members.isNull();
        seen[u"empty member list"_s] += members.isArray() && members.toArray().isEmpty();
        for (const Value &member : members.toArray())
            seen[u"undefined member"_s] += !directory->PidExists(qint32(*member.toInteger()));
    }
    EXPECT_EQ(dataTypes, (QSet<qint64>{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(seen.value(u"pending"_s), 3);
    EXPECT_EQ(seen.value(u"alarm group"_s), 10);
    EXPECT_EQ(seen.value(u"undefined member"_s), 1);
    for (auto it = seen.cbegin(); it != seen.cend(); ++it)
        EXPECT_GT(it.value(), 0) << it.key().toStdString();
}

// A start record the start dialog can read on every calibration, and gas lists that agree with
// the cylinders' gas parameters.
TEST_P(DemoSiteTest, CalibrationsAndCylindersCarryWhatTheirComponentsRead)
{
    demo();
    QSet<bool> confirmation;
    for (const ParameterPtr &cal : all(ParameterTypes::Calibration)) {
        confirmation.insert(cal->GetAttribute(CalibrationAttr::SupportsConfirmation).isTrue());
        const QString xml = cal->GetCurrentValue().Value.toText();
        const XmlDocument doc = LoadXmlDocument(nullptr, xml);
        ASSERT_TRUE(doc) << cal->GetName(0).toStdString();
        EXPECT_FALSE(GetNodeText(doc, u"//CalStart/UserFriendlyStatus"_s).isEmpty());
        for (const QString &element : kCalStartElements)
            EXPECT_TRUE(xml.contains(u'<' + element)) << element.toStdString();
    }
    EXPECT_EQ(confirmation, (QSet<bool>{true, false}));

    for (const ParameterPtr &cylinder : all(ParameterTypes::GasCylinder)) {
        const QStringList entries
            = cylinder->GetAttribute(CylinderAttr::ComponentGases).toText().split(u';');
        const QList<Value> gases = cylinder->GetAttribute(CylinderAttr::GasPids).toArray();
        ASSERT_EQ(entries.size(), gases.size());
        for (int i = 0; i < gases.size(); ++i) {
            const ParameterPtr gas = di().GetPidDirectory()->GetPid(qint32(*gases[i].toInteger()));
            const QStringList parts = entries[i].split(u',');
            ASSERT_EQ(parts.size(), 3);
            EXPECT_TRUE(gas->GetName(0).endsWith(parts[0]));
            EXPECT_EQ(gas->GetCurrentValue().Value.toDouble(), Value(parts[1]).toDouble());
            EXPECT_EQ(di().GetUnitsLookup()->UnitsText(gas->PidNumber()), parts[2]);
        }
    }
}

TEST_P(DemoSiteTest, ScaleMakesTheAskedNumberOfSettingsAndGroups)
{
    DemoOptions options;
    options.scale = 3000;
    m_store = createDemoSite(site(), options);
    const SiteCounts counts = m_store->counts();
    EXPECT_EQ(counts.parametersByType.value(ParameterTypes::Setting), 3000);
    EXPECT_EQ(counts.parametersByType.value(ParameterTypes::SettingGroup), 150);
    // Every member of every group is a defined, valid PID.
    auto directory = di().GetPidDirectory();
    int members = 0;
    for (const ParameterPtr &g : all(ParameterTypes::SettingGroup)) {
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
