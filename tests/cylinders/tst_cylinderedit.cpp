// The cylinder edit dialog's logic: what it opens with and what OK writes and posts.
#include "cylinders/cylinderedit.h"

#include "common/error.h"
#include "cylinders/cylinder_fixture.h"
#include "support/fake_log.h"

#include <gtest/gtest.h>

using namespace olvex;
using namespace olvex::test;
using namespace Qt::StringLiterals;

namespace {

const QDateTime kExpiration(QDate(2027, 1, 5), QTime(0, 0));

// A cylinder with two gases on a fresh data interface, and the dialog's data of it.
struct Site
{
    Site()
        : cylinder(addCylinder(di, 1, u"CC412233"_s, Value(kExpiration),
                               {{u"SO2"_s, 450.5, u"ppm"_s}, {u"NO"_s, 250, u"ppm"_s}}))
        , current(loadCylinderEdit(*cylinder, di))
    {}

    // The input as the dialog opens: every new box holds the current value.
    CylinderEditInput unchanged() const
    {
        CylinderEditInput input;
        input.cylinderId = current.cylinderId;
        input.expiration = current.expirationText;
        input.vendorId = current.vendorId;
        input.gasCodes = current.gasCodes;
        for (const CylinderGas &gas : current.gases) {
            input.gasValues << gas.value;
        }
        return input;
    }

    CylinderEditResult save(const CylinderEditInput &input)
    {
        return saveCylinderEdit(*cylinder, di, &log, current, input,
                                [this](const QString &text) { warnings << text; });
    }

    FakeDataInterface di;
    FakeParameterPtr cylinder;
    CylinderEditData current;
    RecordingLog log;
    QStringList warnings;
};

class CylinderEditTest : public testing::Test, protected Site
{
};

TEST_F(CylinderEditTest, OpensWithTheCylinderAndItsGases)
{
    EXPECT_EQ(current.cylinderId, u"CC412233"_s);
    EXPECT_EQ(current.expirationText, u"2027-01-05"_s);
    ASSERT_EQ(current.gases.size(), 2);
    EXPECT_EQ(current.gases[0].name, u"SO2"_s);
    EXPECT_EQ(current.gases[0].value, u"450.5"_s);
    EXPECT_EQ(current.gases[1].units, u"ppm"_s);
    EXPECT_EQ(tooManyGasesMessage(current), QString());

    QList<FakeGas> six;
    for (const char *code : {"SO2", "NO", "NO2", "CO", "CO2", "O2"}) {
        six.append({QString::fromLatin1(code), 1, u"ppm"_s});
    }
    const CylinderEditData big
        = loadCylinderEdit(*addCylinder(di, 4, u"SG1"_s, Value(kExpiration), six), di);
    EXPECT_EQ(big.gases.size(), kCylinderGasRows);
    EXPECT_EQ(big.gases.last().name, u"CO2"_s);
    EXPECT_TRUE(big.gasProblems.isEmpty());
    EXPECT_EQ(
        tooManyGasesMessage(big),
        u"CSET-0006: Cylinder has more gases than the form can display (PID=0-201-7-00-04)"_s);
}

TEST_F(CylinderEditTest, AGasThatCannotBeReadIsLeftOut)
{
    di.setFailure(gasPid(1, 1), FakeParameter::Op::GetCurrentValue, Error(3010, u"gone"_s));
    const CylinderEditData data = loadCylinderEdit(*cylinder, di);
    ASSERT_EQ(data.gases.size(), 1);
    EXPECT_EQ(data.gases[0].name, u"NO"_s);
    EXPECT_EQ(data.gasProblems, QStringList{u"CSET-0007: gone"_s});
}

TEST_F(CylinderEditTest, WritesOnlyWhatChanged)
{
    const QList<std::tuple<const char *, std::function<void(CylinderEditInput &)>,
                           QList<FakeParameter::AttributeWrite>>>
        cases{
            {"nothing", [](CylinderEditInput &) {}, {}},
            {"same day, another time",
             [](CylinderEditInput &i) { i.expiration = u" 2027-01-05 17:30 "_s; },
             {}},
            {"blanks and case only",
             [](CylinderEditInput &i) {
                 i.cylinderId = u" cc412233 "_s;
                 i.gasCodes = u"so2,no,baln"_s;
             },
             {}},
            {"not a date", [](CylinderEditInput &i) { i.expiration = u"next year"_s; }, {}},
            {"lower case",
             [](CylinderEditInput &i) {
                 i.cylinderId = u"  xl55012 "_s;
                 i.vendorId = u"c40918"_s;
             },
             {{CylinderAttr::CylinderId, Value(u"XL55012"_s)},
              {CylinderAttr::VendorId, Value(u"C40918"_s)}}},
            {"another day, codes",
             [](CylinderEditInput &i) {
                 i.expiration = u"2028-02-29"_s;
                 i.gasCodes = u"nx,bogus"_s; // stored as typed, not checked
             },
             {{CylinderAttr::Expiration, Value(QDateTime(QDate(2028, 2, 29), QTime(0, 0)))},
              {CylinderAttr::GasCodes, Value(u"NX,BOGUS"_s)}}},
        };
    for (const auto &[name, edit, writes] : cases) {
        SCOPED_TRACE(name);
        Site site;
        CylinderEditInput input = site.unchanged();
        edit(input);
        site.save(input);
        EXPECT_EQ(site.cylinder->attributeWrites(), writes);
        EXPECT_TRUE(site.di.messageRecords()->posts().isEmpty());
        EXPECT_TRUE(site.warnings.isEmpty());
    }
}

TEST_F(CylinderEditTest, QueuesChangedGasValuesAndGoesOnAfterAFailure)
{
    di.setFailure(gasPid(1, 1), FakeParameter::Op::SetValues, Error(13, u"Type mismatch"_s));
    CylinderEditInput input = unchanged();
    input.gasValues = {u"455"_s, u" 260.25 "_s};
    const CylinderEditResult result = save(input);
    EXPECT_EQ(log.texts(),
              QStringList{
                  u"CSET-0009: could not set component gas value for 'SO2' (PID=0-201-4-01-01)"_s});
    EXPECT_EQ(result.gasesWritten, QList<qint32>{gasPid(1, 2)});
    EXPECT_EQ(di.parameter(gasPid(1, 2))->valueWrites(),
              (QList<FakeParameter::ValueWrite>{{3, Value(260.25)}}));

    Site again;
    again.save(again.unchanged());
    EXPECT_TRUE(again.di.parameter(gasPid(1, 2))->valueWrites().isEmpty());
}

TEST_F(CylinderEditTest, EarlierDatePostsTheFixCommand)
{
    di.user()->setName(u"O'Neil & \"Sons\" <ops>"_s);
    CylinderEditInput input = unchanged();
    input.cylinderId = u"new&1"_s;
    input.gasCodes = u"no,baln"_s;
    input.effectiveEarlier = true;
    input.installationDate = u"2026-02-27 08:15"_s;
    const CylinderEditResult result = save(input);
    EXPECT_TRUE(warnings.isEmpty());
    ASSERT_EQ(di.messageRecords()->posts().size(), 1);
    const PostedRecord post = di.messageRecords()->posts().first();
    EXPECT_EQ(post.recordType, u"Q1DRCOMMAND-CAL"_s);
    EXPECT_EQ(post.sourceCode, u"CSET-0040"_s);
    EXPECT_EQ(post.text,
              u"<Command action=\"FixOldCalCylinderInfo\" pid=\"020170001\" "
              "user=\"O'Neil &amp; &quot;Sons&quot; &lt;ops&gt;\" clientIP=\"10.0.0.5\" "
              "start=\"2026/02/27 08:15\" end=\"2026/03/01 14:05\" newcylid=\"NEW&amp;1\" "
              "newexpdate=\"2027/01/05 00:00\" newvendorid=\"B22014\" newgaslist=\"NO,BALN\" />"_s);
    EXPECT_TRUE(result.commandPosted);
    // The fields are written too, at once.
    EXPECT_EQ(result.attributesWritten,
              (QList<int>{CylinderAttr::CylinderId, CylinderAttr::GasCodes}));
}

TEST_F(CylinderEditTest, BadInstallationDateWarnsAndTheSaveGoesOn)
{
    for (const QString &typed : {QString(), u"last tuesday"_s}) {
        Site site;
        site.di.messageRecords()->setFailure(u"queue full"_s);
        CylinderEditInput input = site.unchanged();
        input.cylinderId = u"XL1"_s;
        input.effectiveEarlier = true;
        input.installationDate = typed;
        const CylinderEditResult result = site.save(input);
        EXPECT_EQ(site.warnings, QStringList{u"Enter a valid date/time."_s});
        EXPECT_TRUE(result.invalidInstallationDate);
        EXPECT_EQ(site.cylinder->attributeWrites().size(), 1);
        EXPECT_TRUE(result.command.contains(u" start=\"\" "_s)) << result.command.toStdString();
        EXPECT_FALSE(result.commandPosted);
        EXPECT_EQ(site.log.texts(),
                  QStringList{u"CSET-0041: can't write msg record to update cal cylinder info"_s});
    }
}

} // namespace
